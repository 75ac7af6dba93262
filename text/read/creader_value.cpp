// cAttrScan::scan_obj and the skipping of text: one value, from its first token to the token that
// ends it. The steps by first token:
//   constant or #cRef | literal | identifier, alone or as the name of a type | opening bracket
// A container's `read` continues on the same stream; the text of any other typed value is collected
// up to its closing bracket and read from a separate stream.
//
// Limits: the nesting of values and of typed values is limited; deeper ones are skipped with one
// error.

#include "text/read/creader_value.h"
#include "qrv/base/platform/cstack.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/ctypes.h"
#include "qrv/core/ctypescope.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"
#include "text/read/creader_errors.h"
#include "text/read/creader_hash.h"
#include "text/read/creader_session.h"
#include "text/read/ctext_methods.h"
#include "text/scan/cenclosed_text.h"
#include "text/scan/cmemory_stream.h"
#include "text/state/ctext_state.h"

#include <locale>
#include <sstream>

int cat::max_read_depth = 1000;

bool cat::is_reading() noexcept { return cReadSession::current() != nullptr; }

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
        cReadSession::current()->runs().end_value(scan_.current());
        return code;
    } catch (...) {
        cReadSession *const session = cReadSession::current();
        if (session) session->value_place(first_);
        scan_.errs(cAttrScan::asrSyntax) << err_read_exception.text;
        scan_.err_->set_code(err_read_exception.code);
        scan_.err_->set_kind(err_read_exception.kind);
        scan_.about(first_);
        scan_.fire();
        if (session) session->runs().end_value(scan_.current());
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
    } catch (...) { // thrown by an error handler, for example
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
    cToken const &bracket = scan.current();
    reader.first_.line = bracket.line;
    reader.first_.position = bracket.position;
    reader.first_.outer_line = bracket.outer_line;
    reader.first_.outer_column = bracket.outer_column;
    return reader.run(&cValueReader::read_bracket);
}

template <class... Parts> void cValueReader::report(cErrText const &error, Parts const &...parts) {
    [[maybe_unused]] std::ostream &text = begin_error(scan_, error);
    ((text << parts), ...);
    scan_.about(first_);
    scan_.fire();
}

// The first token of the value. One separator before it is legal.
int cValueReader::next_token() {
    cErrorRuns &runs = cReadSession::current()->runs();
    for (int separators = std::exchange(scan_.separator_passed_, false);;) {
        int const t = scan_.gettok(first_);
        if (cat::is_separator(t)) {
            if (source_) source_->delimiter(source_->begin_of(first_));
            if (++separators > 1) report(err_read_separator, cNamed::name(first_.text));
            runs.delimited(true);
            continue;
        }
        if (ends_container(t)) return t;
        if ((t >= tkInt && t <= tkIdent) || t == tkBadIdent || t == '<' || t == '[' || t == '{') {
            runs.begin_value();
            return t;
        }
        separators = 0;
        runs.delimited(false);
        if (t == '=')
            report(err_read_equals, shown_path());
        else
            report(err_read_token, cNamed::name(first_.text));
    }
}

int cValueReader::read() {
    int const t = next_token();
    end_ = t;
    if (ends_container(t)) {
        scan_.note_object(nullptr);
        return -1;
    }
    if (source_) source_->begin(first_);
    if (t == tkConst) return first_.text == "#cRef" ? read_reference() : read_constant();
    if (t == tkIdent) return read_word();
    if (t == tkBadIdent) {
        report(err_read_bad_ident, cNamed::name(first_.text), "  String is assumed.");
        return read_word();
    }
    if (t >= tkInt && t <= tkString) return read_literal();
    return read_opened();
}

int cValueReader::read_bracket() {
    if (source_) source_->begin(first_);
    return read_opened();
}

// Reads a container whose opening bracket is the current token.
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
    cReadSession::current()->runs().delimited(true);
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
    report(err_read_constant, cNamed::name(first_.text));
    return cAttrScan::asrConst;
}

int cValueReader::read_reference() {
    cAttrLiteral token;
    if (scan_.gettok(token) != '(') {
        if (token.code != tkEof) scan_.ungettoken(token);
        scan_.note_object(nullptr);
        report(err_read_ref_bracket);
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
        report(err_read_ref, cNamed::name(path), "): Referenced value is not defined before.");
    else if (value_->is_bad())
        report(err_read_ref_path, cNamed::name(path), ")");
    if (cObj::is_bad(value_)) value_ = nullptr;
    scan_.note_object(value_);
    return value_ ? 0 : cAttrScan::asrRef;
}

// Reads the token after a value. If it does not end the value, reports a missing delimiter and
// pushes the token back for the next value.
void cValueReader::expect_end(cErrText const &missing) {
    cAttrLiteral token;
    end_ = scan_.gettok(token);
    if (ends_value(end_)) return;
    text_state().settle();
    report(missing, cNamed::name(cat::as_text(value_)));
    scan_.ungettoken(token);
}

int cValueReader::read_unended() {
    cAttrLiteral const token(scan_.current());
    text_state().settle();
    report(err_read_no_delimiter, cNamed::name(cat::as_text(value_)));
    scan_.ungettoken(token);
    return 0;
}

int cValueReader::read_literal() {
    bool const good = literal_value(first_.code, first_.text, value_);
    if (!good && text_state().reading_key())
        report(err_read_key_scalar, cNamed::name(first_.text));
    else if (!good)
        report(err_read_scalar, shown_path(),
               " Input of standard type: ", cNamed::name(first_.text));
    scan_.note_object(value_);
    expect_end(err_read_no_delimiter);
    return good ? 0 : cAttrScan::asrSyntax;
}

int cValueReader::read_word() {
    cAttrLiteral token;
    int const t = scan_.gettok(token);
    if (cat::is_opening(t)) return read_typed(token);
    if (t != tkEof) scan_.ungettoken(token);
    value_ = cat::of(first_.text);
    scan_.note_object(value_);
    expect_end(err_read_word_end);
    return 0;
}

// --- limits ---

bool cValueReader::report_depth(int limit) {
    report(err_read_too_deep, cNamed::name(std::to_string(limit)), ", path : ", shown_path());
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
    typeref const held = typeref::share(&cat::find_type(name)); // RUNS USER CODE
    cTypeObj const &type = *held;
    if (&type == &cat::type_nil() && name != type.name()) {
        if (text_state().reading_key())
            report(err_read_key_unknown, cNamed::type(name));
        else
            report(err_read_value_unknown, cNamed::type(name));
        return skip_typed(brackets, cAttrScan::asrUnknownType);
    }
    if (too_deep_typed()) return skip_typed(brackets, cAttrScan::asrSyntax);
    bool const made = instantiate(type);
    scan_.note_object(value_);
    if (!made) return skip_typed(brackets, cAttrScan::asrType);
    cReadSession::current()->runs().delimited(true);
    return value_->is_container() ? read_container() : read_text(bracket, type.name());
}

bool cValueReader::unmade(cErrText const &error, cTypeObj const &type) {
    report(error, cNamed::type(type.name()));
    return false;
}

bool cValueReader::instantiate(cTypeObj const &type) {
    auto const has = [&type](char const *method) {
        return dynamic_cast<cExeObj *>(type.tmember(std::string(method)).get()) != nullptr;
    };
    if (!has("newobj")) return unmade(err_read_no_newobj, type);
    if (!has("read")) return unmade(err_read_no_read, type);
    value_ = type.newobj(); // RUNS USER CODE
    auto *const new_type =
        cat::TypeScope::current() ? dynamic_cast<cTypeObj *>(value_.get()) : nullptr;
    if (new_type) new_type->count_objects();
    if (!cObj::is_bad(value_)) return true;
    value_ = nullptr;
    return unmade(err_read_bad_newobj, type);
}

// The type's `read` consumes the closing bracket. A map or a set has reported its errors itself.
int cValueReader::read_container() {
    objref const held = value_;
    text_state().settle();
    return held->read(scan_.is()) ? 0 : unread_container(); // RUNS USER CODE
}

// The same for a container created by its bracket. If the type's `read` is the library's, the scan
// itself reads the contents.
int cValueReader::read_own_container(cTypeObj &type) {
    if (!cAttrScan::reads_entries(type)) return read_container();
    objref const held = value_;
    return scan_.read_inner(static_cast<cMapObj &>(*held), type) ? 0 : unread_container();
}

int cValueReader::unread_container() {
    objref const held = value_;
    if (&held->type() != &cat::type_vector()) return 0;
    begin_error(scan_, err_read_container) << cNamed::type(held->type().name());
    if (scan_.current().code <= tkEof)
        scan_.unclosed(first_);
    else
        scan_.about(first_);
    scan_.fire();
    return cAttrScan::asrSyntax;
}

namespace {
cToken token_of(cAttrLiteral const &literal) {
    return {literal.text,     literal.code,       literal.line,        literal.column,
            literal.position, literal.outer_line, literal.outer_column};
}

// Passes the tokens of a typed value to the source recorder and to the watch of the report.
class cTypedText final : public cTokenWatch {
  public:
    cTypedText(cTokenWatch *source, bool inside_another, cAttrLiteral const &name,
               cAttrLiteral const &bracket)
        : source_(source) {
        cat::ReadReport const *const report = cat::ReadReport::current();
        if (!report || inside_another) return;
        watch_ = report->watch();
        if (!watch_) return;
        watch_->typed_token(token_of(name));
        watch_->typed_token(token_of(bracket));
    }
    bool is_watched() const { return source_ || watch_; }

    void token(cToken const &token, size_t size) override {
        if (source_) source_->token(token, size);
        if (watch_ && token.code != tkComment) watch_->typed_token(token);
    }

  private:
    cTokenWatch *source_;
    cat::ReadWatch *watch_ = nullptr;
};
} // namespace

int cValueReader::read_text(cAttrLiteral const &bracket, std::string const &name) {
    cEnclosedText enclosed;
    enclosed.with_places = cat::ReadReport::current() != nullptr;
    cat::cSourceRecorder::cGathering gathering(source_);
    cTypedText shown(source_ ? &gathering : nullptr, text_state().typed_nesting() > 0, first_,
                     bracket);
    if (shown.is_watched()) enclosed.watch = &shown;
    end_ = scan_.enclose(cat::Brackets(bracket.code), enclosed) ? ')' : 0;
    if (end_ == 0) {
        begin_error(scan_, err_read_unclosed_type)
            << cNamed::type(name) << ", path: " << shown_path();
        scan_.unclosed(bracket);
        scan_.fire();
    }
    bool good = false;
    if (cat::is_read_by_library(value_->type())) {
        cMemoryStream is(enclosed.text);
        cat::cSourceText const recorded(source_, is, gathering);
        good = read_enclosed(is, enclosed);
    } else {
        std::istringstream is{std::string(enclosed.text)};
        is.imbue(std::locale::classic());
        cat::cSourceText const recorded(source_, is, gathering);
        good = read_enclosed(is, enclosed);
    }
    if (good) return 0;
    if (text_state().reading_key())
        report(err_read_key, cNamed::type(name));
    else
        report(err_read_value, cNamed::type(name));
    return cAttrScan::asrSyntax;
}

// Calls the type's `read` with a stream of the text. The stream must outlive its scanners.
bool cValueReader::read_enclosed(std::istream &is, cEnclosedText &enclosed) {
    std::optional<cSubText> origin;
    if (enclosed.with_places) origin.emplace(is, scan_);
    cAttrScan inner(is, false);
    inner.return_com(false);
    if (enclosed.with_places)
        inner.outer_places(std::move(enclosed.places));
    else
        inner.sig().connect(scan_.sig());
    cTypedNesting const nesting;
    cReadSession::current()->value_place(first_); // for errors of `read` about the whole value
    return value_->read(is);                      // RUNS USER CODE
}

// --- skipping ---

int cAttrScan::enclose(cat::Brackets const &brackets, cEnclosedText &to) {
    if (eof_seen_) return tkEof;
    int const close = read_enclosed(brackets.open, brackets.close, to);
    eof_seen_ = close == tkEof;
    return close;
}

int cAttrScan::read_subentry(cat::Brackets const &brackets, std::string &text) {
    return read_subentry(brackets, &text);
}

int cAttrScan::read_subentry(cat::Brackets const &brackets, std::string *text) {
    if (!text) {
        cSetTmp<bool> keep_ws, keep_com;
        return_ws(false, &keep_ws);
        return_com(false, &keep_com);
        return skip_to_close(brackets);
    }
    cEnclosedText enclosed;
    int const close = enclose(brackets, enclosed);
    *text += enclosed.text;
    return close;
}

int cAttrScan::skip_to_close(cat::Brackets const &brackets) {
    for (int depth = 1;;) {
        int const t = next();
        if (t == tkEof) return tkEof;
        if (t == brackets.open) ++depth;
        if (t == brackets.close && --depth == 0) return t;
    }
}

int cAttrScan::read_to_delimiter(std::string const &set) {
    cAttrLiteral token;
    for (;;) {
        int const t = gettok(token);
        if (cat::is_separator(t) || t == tkEof) return t;
        if (t < 256 && set.find(static_cast<char>(t)) != std::string::npos) return t;
    }
}

void cAttrScan::read_to_endcontainer(int open) {
    cAttrLiteral token;
    while (!cat::is_opening(open)) {
        open = gettok(token);
        if (open == tkEof) return;
    }
    skip_to_close(cat::Brackets(open));
}
