#include "qrv/text/read/cattrscan.h"

// The scanner of the reader, without the reading of values: tokens and the end-of-input flag,
// composing and sending errors, the summary, files, comments. An error is composed in three steps:
// errs() or errp(), the text, fire(). The first error creates the stream for it, since each
// container has a scan and most have no errors.

#include "qrv/core/ceros.h"
#include "qrv/core/ctypes.h"
#include "text/read/creader_errors.h"
#include "text/read/creader_session.h"
#include "text/read/csource_recorder.h"
#include "text/state/ctext_state.h"

#include <fstream>
#include <ostream>

cAttrScan::cAttrScan(std::istream &is, bool report) : cAttrScanner(is), report_(report) { start(); }

cAttrScan::cAttrScan(std::istream *is, bool report) : cAttrScanner(is), report_(report) { start(); }

void cAttrScan::start() {
    if (alone()) text_state().forget_comments(); // they belong to an earlier reading
    connect_handler();
}

// While entries are late, no user code runs that could disconnect the handler.
void cAttrScan::connect_handler() {
    cTextState const &state = text_state();
    if (state.is_late() && connected_round_ == state.late_round()) return;
    connected_round_ = state.late_round();
    cReadSession const *const session = cReadSession::current();
    if (session && session->capture())
        sig_error().connect(session->capture()->slot());
    else
        sig_error().connect(cat::errhandler());
}

cAttrScan::~cAttrScan() {
    if (!report_) return;
    try {
        scan_report(false);
    } catch (...) { // a slot's exception must not leave a destructor
    }
}

// --- tokens ---

int cAttrScan::gettok(cAttrLiteral &token) {
    int const code = next();
    token = cAttrLiteral(current()); // at the end the end's position, also if it was read before
    if (code != tkEof) return code;
    token.code = tkEof;
    token.text.clear();
    return tkEof;
}

// Continues after a token that ends the input or is a comment.
int cAttrScan::next_after(int code) {
    cat::cSourceRecorder *const source = cat::cSourceRecorder::watching(*this);
    while (code == tkComment) {
        if (source) source->comment(current(), return_com());
        if (return_com()) text_state().collect_comment(std::string(current().text));
        code = next_token().code;
    }
    if (source) source->after_comments(current());
    if (code > 0) return code;
    eof_seen_ = true;
    return tkEof;
}

int cAttrScan::gettok() {
    cAttrLiteral token;
    return gettok(token);
}

// --- errors ---

void cAttrScan::begin(ASR asr) {
    text_state().settle(); // handlers are user code
    if (err_)
        err_->clear();
    else
        err_ = std::make_unique<cErrStream>(0u);
    forget_about();
    if (asr > 0) {
        err_->set_code(cErr::bad_code + static_cast<unsigned>(asr));
        errincr();
    } else {
        err_->set_handled(true);
    }
    *err_ << posstring();
}

cErrStream &cAttrScan::errs() { return errs(ASR(0)); }

cErrStream &cAttrScan::errs(ASR asr) {
    begin(asr);
    prefix_ = cat::ReadReport::current() ? err_->as_string().size() : 0;
    return *err_;
}

cErrStream &cAttrScan::errp(ASR asr) {
    bool const reported = cat::ReadReport::current() != nullptr;
    begin(asr);
    if (text_state().path_keys() > 0) *err_ << "( " << text_state().shown_path(reported) << " )";
    *err_ << ": ";
    prefix_ = reported ? err_->as_string().size() : 0;
    return *err_;
}

void cAttrScan::about(cAttrLiteral const &token) noexcept {
    about(token.outer_line, token.outer_column);
}

void cAttrScan::about(unsigned line, unsigned column) noexcept {
    about_line_ = line;
    about_column_ = column;
}

void cAttrScan::unclosed(cAttrLiteral const &bracket) noexcept {
    unclosed(bracket.outer_line, bracket.outer_column);
}

void cAttrScan::unclosed(unsigned line, unsigned column) noexcept {
    about(line, column);
    about_unclosed_ = true;
}

void cAttrScan::forget_about() noexcept {
    about_line_ = 0;
    about_unclosed_ = false;
}

void cAttrScan::fire() {
    if (!err_) return;
    fire_from(*err_, prefix_);
}

void cAttrScan::fire(cErr const &error) { fire_from(error, 0); }

// Sends a copy, so that slots can compose further errors on the stream.
void cAttrScan::fire_from(cErr const &error, size_t prefix) {
    text_state().settle();
    cErr copy(error);
    cat::ReadReport *const report = cat::ReadReport::current();
    if (!report) {
        forget_about();
        return sig()(copy); // RE-ENTERS, may throw
    }
    cat::ReadError entry;
    entry.file = cSubText::file_of(*this);
    entry.line = about_line_ ? about_line_ : current().outer_line;
    entry.column = (about_line_ ? about_column_ : current().outer_column) + 1;
    if (about_unclosed_) {
        entry.end_line = current().outer_line;
        entry.end_column = current().outer_column + 1;
    }
    forget_about();
    entry.path = text_state().shown_path(true);
    entry.code = copy.code();
    entry.kind = copy.kind();
    entry.names = copy.names();
    std::string const text = copy.as_string();
    entry.text = text.substr(prefix < text.size() ? prefix : text.size());
    cErrorRuns::add(*report, std::move(entry));
}

std::string cAttrScan::posstring() const {
    if (oneline_) return {};
    std::string const line = std::to_string(lineno());
    return filename().empty() ? "Line " + line + ": " : filename() + " (" + line + ") ";
}

void cAttrScan::scan_report(bool always) {
    unsigned const count = errcount();
    if (!always && count == 0) return;
    std::string const head = posstring() + "Attributes scanner ";
    if (count == 0) {
        cat::std_out() << head + "OK" << std::endl;
        return;
    }
    errclear();
    if (!always && cat::ErrorTaker::any()) return; // which has the errors
    cat::std_out() << head + "with *** " + std::to_string(count) + " errors ***" << std::endl;
}

// --- files ---

bool cAttrScan::openfile(char const *name, bool quiet) {
    if (!name || !*name) return false;
    auto *const file = dynamic_cast<std::ifstream *>(&is());
    if (!file) return false;
    file->open(name, std::ios::in | std::ios::binary);
    bool const opened = file->good();
    if (opened) file->peek(); // a directory opens, but can't be read
    if (opened && !file->bad()) {
        reset(0, 1, 0); // positions were counted in a closed stream
        eof_seen_ = false;
        set_filename(name);
        return true;
    }
    if (opened) {
        file->close();
        file->clear(std::ios::failbit); // further reads find the end of input
    }
    if (!quiet) fire(whole_error(err_file_not_opened, cNamed::name(name)));
    return false;
}

// --- comments ---

std::string &cAttrScan::com_collected() { return text_state().com_collected(); }

namespace {
// Removes the carriage returns. One between `*` and `/` becomes a blank, since the comment would
// otherwise end there.
std::string without_returns(std::string const &text) {
    std::string result;
    result.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r')
            result += text[i];
        else if (!result.empty() && result.back() == '*' && i + 1 < text.size() &&
                 text[i + 1] == '/')
            result += ' ';
    }
    return result;
}
} // namespace

void cAttrScan::note_object(objref const &value) {
    // A constant is the same object in every file, so it has no comment.
    bool const takes = value && !cObj::is_void(value) && !cat::find_const(value);
    note_new(takes ? value : objref());
}

void cAttrScan::note_new(objref const &value) {
    if (!return_com()) return;
    cTextState &state = text_state();
    if (!state.com_collected().empty()) hand_comment();
    state.last_noted() = value;
}

void cAttrScan::hand_comment() {
    cTextState &state = text_state();
    auto *const source = cat::cSourceRecorder::at(*this);
    if (objref const noted = state.last_noted()) {
        std::string text = std::exchange(state.com_collected(), {});
        if (text.back() == '\n') text.pop_back();
        if (noted->has_ommap()) state.settle(); // a slot may wait for changes
        bool const taken = noted->set_comment(without_returns(text), false); // RUNS USER CODE
        if (source) source->handed(taken ? noted.get() : nullptr);
    } else if (source) {
        source->handed(nullptr);
    }
    state.com_collected().clear();
}
