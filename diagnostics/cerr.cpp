// Errors: the values, the stream that composes them, and the handler that treats them.
//
// All copies of text use the virtual pair as_string()/set_string(), so that a cErr copied from a
// cErrStream includes the text that is still in the stream's buffer.

#include "qrv/diagnostics/cerr.h"

#include "diagnostics/ccout_state.h"

#include <locale>
#include <utility>

cException::cException(std::string const &text) : text_(text) {}
cException::cException(cException const &other) : std::exception(other), text_(other.as_string()) {}
cException::~cException() = default;

cException &cException::operator=(cException const &other) {
    if (this != &other) set_string(other.as_string());
    return *this;
}

char const *cException::what() const noexcept { return text_.c_str(); }

std::string cException::as_string() const { return text_; }

void cException::set_string(std::string const &text) { text_ = text; }

cErr::cErr() = default;
cErr::cErr(unsigned int code, char const *text) : cException(text ? text : ""), code_(code) {}
cErr::cErr(unsigned int code, std::string const &text) : cException(text), code_(code) {}
cErr::cErr(cErr const &other) = default; // the base copies the text by as_string()
cErr::~cErr() = default;

cErr &cErr::operator=(cErr const &other) {
    cException::operator=(other);
    code_ = other.code_;
    handled_ = other.handled_;
    kind_ = other.kind_;
    names_ = other.names_;
    return *this;
}

cat::ErrorNames const &cErr::names() const noexcept {
    // Never destroyed: errors may be read until the end of the process.
    static auto const *const none = new cat::ErrorNames;
    return names_ ? *names_ : *none;
}

// Creates a new record, since copies share the old one.
void cErr::set_name(std::string cat::ErrorNames::*role, std::string text) {
    names_ =
        names_ ? std::make_shared<cat::ErrorNames>(*names_) : std::make_shared<cat::ErrorNames>();
    (*names_).*role = std::move(text);
}

void cErr::forget_kind() noexcept {
    kind_ = cat::ErrorKind::other;
    names_ = nullptr;
}

void cErr::set(unsigned int code, std::string const &text) {
    code_ = code;
    forget_kind();
    set_string(text);
}

void cErr::clear() {
    code_ = 0;
    handled_ = false;
    forget_kind();
    text_.clear();
}

cErrStream::cErrStream(unsigned int code) : cErrStream(code, std::string()) {}
cErrStream::cErrStream(unsigned int code, std::string const &text)
    : cErr(code, text), cOstringstream(text_) {}
cErrStream::~cErrStream() = default;

void cErrStream::set(unsigned int code, std::string const &text) {
    flush_text();
    cErr::set(code, text);
}

char const *cErrStream::what() const noexcept {
    try {
        flush_text();
    } catch (...) { // the caller enabled exceptions on this stream; the text so far is valid
    }
    return cErr::what();
}

std::string cErrStream::as_string() const {
    flush_text();
    return cErr::as_string();
}

void cErrStream::set_string(std::string const &text) {
    flush_text();
    cErr::set_string(text);
}

void cErrStream::clear() {
    flush_text();
    cErr::clear();
    std::ios::clear();
    flags(std::ios::skipws | std::ios::dec);
    precision(6);
    width(0);
    fill(' ');
    if (getloc() != std::locale::classic()) imbue(std::locale::classic());
}

cErrHandler::cErrHandler(unsigned int throw_mask, unsigned int clear_mask, unsigned int silent_mask)
    : cSlot1(this, &cErrHandler::dohandler), throw_mask_(throw_mask), clear_mask_(clear_mask),
      silent_mask_(silent_mask) {}

cErrHandler::cErrHandler(cErrHandler const &other)
    : cErrHandler(other.throw_mask_, other.clear_mask_, other.silent_mask_) {}

cErrHandler &cErrHandler::operator=(cErrHandler const &other) {
    throw_mask_ = other.throw_mask_;
    clear_mask_ = other.clear_mask_;
    silent_mask_ = other.silent_mask_;
    return *this;
}

cErrHandler::~cErrHandler() {
    disconnect(); // before the members of the handler are destroyed
}

// The order is fixed: an error is printed before it is thrown, and a thrown error is not forgiven.
// The masks are copied first, since a listener may destroy the handler.
void cErrHandler::dohandler(cErr &error) {
    unsigned int const throw_mask = throw_mask_, clear_mask = clear_mask_;
    if (!(silent_mask_ & error.code())) cat::put_message(error.as_string() + '\n'); // RE-ENTERS
    if (throw_mask & error.code()) throw cErr(error);
    if (clear_mask & error.code()) error.set_code(error.code() & (cErr::bad_code - 1));
}
