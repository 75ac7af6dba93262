// cAttrScan::scan_obj and the skipping of text: one value, from its first token to the token that
// ends it. The steps by first token:
//   constant or #cRef | literal | identifier, alone or as the name of a type | opening bracket
// A container's `read` goes on with the same stream; the text of any other typed value is gathered
// up to its bracket and read from a stream of its own.
//
// Limits: values in values and typed values in typed values go so deep and no deeper; what stands
// below is skipped with one error.

#include "text/read/creader_value.h"
#include "qrv/base/platform/cstack.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/cattrscan.h"
#include "text/read/creader_errors.h"
#include "text/read/creader_hash.h"
#include "text/read/creader_session.h"
#include "text/state/ctext_state.h"

#include <locale>
#include <sstream>

int cat::max_read_depth = 1000;

bool cat::is_reading() noexcept { return cReadSession::current() != nullptr; }

namespace {
bool is_separator(int t) { return t == ';' || t == ','; }
bool is_opening(int t) { return t == '(' || t == '<' || t == '[' || t == '{'; }
bool is_closing(int t) { return t == '}' || t == ']' || t == '>' || t == tkEof; }

std::string shown_path() { return text_state().shown_path(cat::ReadReport::current() != nullptr); }

// The written form, made before an error is begun: it may run foreign code.
std::string written(objref const &value) {
    if (!value) return {};
    std::ostringstream os;
    os.imbue(std::locale::classic());
    value->writeobj(os);
    return os.str();
}

// Where the tokens of a gathered text come from, the one that ends it included. A record is needed
// where the place doesn't follow from the one before: after a line end and after what was left out.
class cPlaces {
  public:
    void note(cAttrLiteral const &token, size_t offset) {
        if (places_.empty() || token.outer_line != line_ || token.outer_column != column_)
            places_.push_back({offset, token.outer_line, token.outer_column});
        line_ = token.text.find('\n') == std::string::npos ? token.outer_line : 0;
        column_ = token.outer_column + static_cast<unsigned>(token.text.size());
    }
    std::vector<cAttrPlace> take() { return std::move(places_); }

  private:
    std::vector<cAttrPlace> places_;
    unsigned line_ = 0; // expected for the next token; 0 after a line end
    unsigned column_ = 0;
};

// Reads up to the closing bracket.
int gather(cAttrScan &scan, cat::Brackets const &brackets, std::string *text, cPlaces *places,
           cat::cSourceRecorder *source = nullptr,
           cat::cSourceRecorder::cGathering *gathering = nullptr) {
    cSetTmp<bool> keep_ws, keep_com;
    scan.return_ws(text != nullptr, &keep_ws);
    scan.return_com(false, &keep_com);
    cAttrLiteral token;
    for (int depth = 1;;) {
        int const t = scan.gettok(token);
        if (places) places->note(token, text->size());
        if (source) gathering->note(*source, token, text->size());
        if (t == tkEof) return 0;
        if (t == brackets.open) ++depth;
        if (t == brackets.close && --depth == 0) return t;
        if (text) *text += token.text;
    }
}
} // namespace

// --- one value ---

int cValueReader::run(int (cValueReader::*steps)()) {
    scan_.made_ = nullptr;
    try {
        cReading const reading(scan_);
        source_ = cat::cSourceRecorder::at(scan_);
        cat::cSourceFrames const frames(source_);
        cNesting const nesting;
        int const code = (this->*steps)();
        if (source_) source_->end(scan_, frames.depth(), first_, end_, value_);
        cReadSession::current()->value_place(first_);
        return code;
    } catch (...) {
        if (cReadSession *const session = cReadSession::current()) session->value_place(first_);
        scan_.errs(cAttrScan::asrSyntax) << err_read_exception.text;
        scan_.err_->set_code(err_read_exception.code);
        scan_.about(first_);
        scan_.fire();
        return cAttrScan::asrSyntax;
    }
}

int cAttrScan::scan_obj(objref &result, int *delim) {
    objref value;
    int end = delim ? *delim : 0;
    cValueReader reader(*this, value, end);
    int code;
    try {
        code = reader.run(&cValueReader::read);
    } catch (...) { // the handler of a report
        if (delim) *delim = end;
        throw;
    }
    if (delim) *delim = end;
    if (code == 0) result = std::move(value); // RE-ENTERS
    return code;
}

int cValueReader::finish_literal(cAttrScan &scan, objref &value, int &end,
                                 cReadSession::cPlace place) {
    cValueReader reader(scan, value, end);
    reader.first_.outer_line = place.line;
    reader.first_.outer_column = place.column;
    return reader.run(&cValueReader::read_unended);
}

int cValueReader::finish_container(cAttrScan &scan, objref &value, int &end) {
    cValueReader reader(scan, value, end);
    reader.first_.outer_line = scan.current().outer_line;
    reader.first_.outer_column = scan.current().outer_column;
    return reader.run(&cValueReader::read_opened);
}

void cValueReader::report(cErrText const &error, std::string const &what) {
    begin_error(scan_, error) << what;
    scan_.about(first_);
    scan_.fire();
}

// The first token of the value. One separator in front is legal.
int cValueReader::next_token() {
    for (int separators = std::exchange(scan_.separator_passed_, false);;) {
        int const t = scan_.gettok(first_);
        if (is_separator(t)) {
            if (source_) source_->delimiter(source_->begin_of(first_));
            if (++separators > 1) report(err_read_separator, first_.text);
            continue;
        }
        if (is_closing(t) || (t >= tkInt && t <= tkIdent) || t == tkBadIdent || t == '<' ||
            t == '[' || t == '{')
            return t;
        separators = 0;
        if (t == '=')
            report(err_read_equals, shown_path());
        else
            report(err_read_token, first_.text);
    }
}

int cValueReader::read() {
    int const t = next_token();
    end_ = t;
    if (is_closing(t)) {
        scan_.note_object(nullptr);
        return -1;
    }
    if (source_) source_->begin(first_);
    if (t == tkConst) return first_.text == "#cRef" ? read_reference() : read_constant();
    if (t == tkIdent) return read_word();
    if (t == tkBadIdent) {
        report(err_read_bad_ident, first_.text + "  String is assumed.");
        return read_word();
    }
    if (t >= tkInt && t <= tkString) return read_literal();
    return read_opened();
}

// A container whose opening bracket is the current token.
int cValueReader::read_opened() {
    int const t = end_ = scan_.current().code;
    if (source_) source_->bracket(source_->begin_of(first_), t);
    if (t == '<')
        value_ = make<cSetObj>();
    else if (t == '[')
        value_ = make<cVectorObj>();
    else
        value_ = make<cMapObj>();
    scan_.note_new(value_);
    if (too_deep()) {
        scan_.read_to_endcontainer(t);
        return cAttrScan::asrSyntax;
    }
    int const code = t == '{'   ? read_own_container(cat::type_map())
                     : t == '[' ? read_own_container(cat::type_vector())
                                : read_own_container(cat::type_set());
    if (code == 0) scan_.made_ = value_.get();
    return code;
}

int cValueReader::read_constant() {
    cMapObj *const constants = cat::constmap_ptr();
    cAttrNode *const node = constants ? constants->datamap().find(first_.text.substr(1)) : nullptr;
    scan_.note_object(nullptr);
    if (node && node->valref()) {
        value_ = node->valref();
        return 0;
    }
    report(err_read_constant, first_.text);
    return cAttrScan::asrConst;
}

int cValueReader::read_reference() {
    cAttrLiteral token;
    if (scan_.gettok(token) != '(') {
        if (token.code != tkEof) scan_.ungettoken(token);
        scan_.note_object(nullptr);
        report(err_read_ref_bracket, {});
        end_ = scan_.read_to_delimiter("}])>");
        return cAttrScan::asrToken;
    }
    if (source_) source_->reference();
    std::string path;
    while (scan_.gettok(token) != ')' && token.code != tkEof) path += token.text;
    end_ = token.code;
    bool const rooted = !path.empty() && path.front() == '/';
    value_ = text_state().value_at(rooted ? path : '/' + path);
    if (!value_)
        report(err_read_ref, path + "): Referenced value is not defined before.");
    else if (value_->is_bad())
        report(err_read_ref_path, path + ")");
    if (cObj::is_bad(value_)) value_ = nullptr;
    scan_.note_object(value_);
    return value_ ? 0 : cAttrScan::asrRef;
}

// Reads the token behind a value: without a delimiter between them it belongs to the next value.
void cValueReader::expect_end(cErrText const &missing) {
    cAttrLiteral token;
    end_ = scan_.gettok(token);
    if (ends_value(end_)) return;
    text_state().settle();
    report(missing, written(value_));
    scan_.ungettoken(token);
}

int cValueReader::read_unended() {
    cAttrLiteral const token(scan_.current());
    text_state().settle();
    report(err_read_no_delimiter, written(value_));
    scan_.ungettoken(token);
    return 0;
}

int cValueReader::read_literal() {
    bool const good = literal_value(first_.code, first_.text, value_);
    if (!good && text_state().reading_key())
        report(err_read_key_scalar, first_.text);
    else if (!good)
        report(err_read_scalar, shown_path() + " Input of standard type: " + first_.text);
    scan_.note_object(value_);
    expect_end(err_read_no_delimiter);
    return good ? 0 : cAttrScan::asrSyntax;
}

int cValueReader::read_word() {
    cAttrLiteral token;
    int const t = scan_.gettok(token);
    if (is_opening(t)) return read_typed(token);
    if (t != tkEof) scan_.ungettoken(token);
    value_ = cat::of(first_.text);
    scan_.note_object(value_);
    expect_end(err_read_word_end);
    return 0;
}

// --- limits ---

bool cValueReader::report_depth(int limit) {
    report(err_read_too_deep, std::to_string(limit) + ", path : " + shown_path());
    return true;
}

bool cValueReader::too_deep() {
    int const depth = text_state().nesting();
    if (depth > cat::max_read_depth) return report_depth(cat::max_read_depth);
    return cat::stack_low() && report_depth(depth - 1);
}

bool cValueReader::too_deep_typed() {
    if (text_state().typed_nesting() >= cat::max_typed_depth)
        return report_depth(cat::max_typed_depth);
    return too_deep();
}

// --- brackets ---

int cValueReader::skip_typed(cat::Brackets const &brackets, int result) {
    end_ = scan_.read_subentry(brackets, nullptr) ? ')' : 0;
    return result;
}

int cValueReader::read_typed(cAttrLiteral const &bracket) {
    cat::Brackets const brackets(bracket.code);
    std::string const name = first_.text;
    end_ = bracket.code;
    if (source_)
        source_->bracket(source_->begin_of(bracket), bracket.code, source_->end_of(first_));
    text_state().settle();
    cTypeObj const &type = cat::find_type(name); // RUNS FOREIGN CODE
    if (&type == &cat::type_nil() && name != type.name()) {
        if (text_state().reading_key())
            report(err_read_key_unknown, name);
        else
            report(err_read_value_unknown, name);
        return skip_typed(brackets, cAttrScan::asrUnknownType);
    }
    if (too_deep_typed()) return skip_typed(brackets, cAttrScan::asrSyntax);
    bool const made = instantiate(type);
    scan_.note_object(value_);
    if (!made) return skip_typed(brackets, cAttrScan::asrType);
    return value_->is_container() ? read_container() : read_text(bracket, type.name());
}

bool cValueReader::unmade(cErrText const &error, cTypeObj const &type) {
    report(error, type.name());
    return false;
}

bool cValueReader::instantiate(cTypeObj const &type) {
    auto const has = [&type](char const *method) {
        return dynamic_cast<cExeObj *>(type.tmember(std::string(method)).get()) != nullptr;
    };
    if (!has("newobj")) return unmade(err_read_no_newobj, type);
    if (!has("read")) return unmade(err_read_no_read, type);
    value_ = type.newobj(); // RUNS FOREIGN CODE
    if (!cObj::is_bad(value_)) return true;
    value_ = nullptr;
    return unmade(err_read_bad_newobj, type);
}

// The type's `read` consumes the closing bracket. A map or a set has reported its own errors.
int cValueReader::read_container() {
    objref const held = value_;
    text_state().settle();
    return held->read(scan_.is()) ? 0 : unread_container(); // RUNS FOREIGN CODE
}

// The same for one that was made by its bracket. While the type's `read` is the library's, the scan
// reads what is inside by itself.
int cValueReader::read_own_container(cTypeObj &type) {
    if (!cAttrScan::reads_entries(type)) return read_container();
    objref const held = value_;
    return scan_.read_inner(static_cast<cMapObj &>(*held), type) ? 0 : unread_container();
}

int cValueReader::unread_container() {
    objref const held = value_;
    if (&held->type() != &cat::type_vector()) return 0;
    begin_error(scan_, err_read_container) << held->type().name();
    if (scan_.current().code <= tkEof)
        scan_.unclosed(first_);
    else
        scan_.about(first_);
    scan_.fire();
    return cAttrScan::asrSyntax;
}

int cValueReader::read_text(cAttrLiteral const &bracket, std::string const &name) {
    bool const reported = cat::ReadReport::current() != nullptr;
    std::string text;
    cPlaces places;
    cat::cSourceRecorder::cGathering gathering;
    end_ = gather(scan_, cat::Brackets(bracket.code), &text, reported ? &places : nullptr, source_,
                  &gathering)
               ? ')'
               : 0;
    if (end_ == 0) {
        begin_error(scan_, err_read_unclosed_type) << name << ", path: " << shown_path();
        scan_.unclosed(bracket);
        scan_.fire();
    }
    std::istringstream is(std::move(text)); // outlives its scanners
    is.imbue(std::locale::classic());
    std::optional<cSubText> origin;
    if (reported) origin.emplace(is, scan_);
    bool good = false;
    {
        cAttrScan inner(is, false);
        inner.return_com(false);
        if (reported)
            inner.outer_places(places.take());
        else
            inner.sig().connect(scan_.sig());
        cTypedNesting const nesting;
        cat::cSourceText const recorded(source_, is, std::move(gathering));
        cReadSession::current()->value_place(first_); // what `read` has to say of the whole
        good = value_->read(is);                      // RUNS FOREIGN CODE
    }
    if (good) return 0;
    if (text_state().reading_key())
        report(err_read_key, name);
    else
        report(err_read_value, name);
    return cAttrScan::asrSyntax;
}

// --- skipping ---

int cAttrScan::read_subentry(cat::Brackets const &brackets, std::string &text) {
    return gather(*this, brackets, &text, nullptr);
}

int cAttrScan::read_subentry(cat::Brackets const &brackets, std::string *text) {
    return gather(*this, brackets, text, nullptr);
}

int cAttrScan::read_to_delimiter(std::string const &set) {
    cAttrLiteral token;
    for (;;) {
        int const t = gettok(token);
        if (is_separator(t) || t == tkEof) return t;
        if (t < 256 && set.find(static_cast<char>(t)) != std::string::npos) return t;
    }
}

void cAttrScan::read_to_endcontainer(int open) {
    cAttrLiteral token;
    while (!is_opening(open)) {
        open = gettok(token);
        if (open == tkEof) return;
    }
    cat::Brackets const brackets(open);
    for (int depth = 1; depth > 0;) {
        int const t = gettok(token);
        if (t == tkEof) return;
        if (t == brackets.open) ++depth;
        if (t == brackets.close) --depth;
    }
}
