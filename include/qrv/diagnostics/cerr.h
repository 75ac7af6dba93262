#pragma once
// Errors. A failure is first a value: code and text, composed on the process-wide stream eros() and
// sent as a copy over the signal cat::sig_error() (qrv/core/ceros.h). The handlers connected to
// that signal decide on its effect: they print it as a line of the message output, throw it, or
// forgive it. The first handler is cat::errhandler(). Then the code that detected the failure
// examines the error's code. Composing is not reentrant: create all text that a message needs from
// user code (the written form of a key or value) before clear(), since that code may itself compose
// an error.

#include "qrv/base/csignal.h"
#include "qrv/ccomp.h"
#include "qrv/diagnostics/ccout.h"
#include "qrv/diagnostics/cerrkind.h"
#include "qrv/qrvdefs.h"

#include <exception>
#include <memory>
#include <string>

// The base of all exceptions of the library. what() is valid until the text changes.
class QRV_API cException : public std::exception {
  public:
    explicit cException(std::string const &text = {});
    // Both get the text by as_string(), so that a copy of a stream includes the text that is still
    // in the stream's buffer. An assignment stores it by set_string().
    cException(cException const &other);
    cException &operator=(cException const &other);
    ~cException() override;

    char const *what() const noexcept override;
    // The text. A class that buffers text overrides both.
    virtual std::string as_string() const;
    virtual void set_string(std::string const &text);

  protected:
    std::string text_;
};

// Code and text of an error. Code 0 means no error; bit 30 or 31 makes it bad.
class QRV_API cErr : public cException {
  public:
    // The smallest bad code; an error with a smaller code is forgiven, and the operation continues.
    static constexpr unsigned int bad_code = 0x40000000U;

    cErr();
    cErr(unsigned int code, char const *text); // null counts as empty
    cErr(unsigned int code, std::string const &text);
    cErr(cErr const &other);
    cErr &operator=(cErr const &other);
    ~cErr() override;

    unsigned int code() const { return code_; }
    void set_code(unsigned int code) { code_ = code; }
    // A mark for the code that treats the error. The library sets it only for errors of a scanner
    // that have no code when they begin: cAttrScan::errs().
    bool handled() const { return handled_; }
    void set_handled(bool handled) { handled_ = handled; }
    bool isbad() const { return code_ >= bad_code; }
    // Identifies the library's error. Changes of the code leave the kind unchanged.
    cat::ErrorKind kind() const noexcept { return kind_; }
    void set_kind(cat::ErrorKind kind) noexcept { kind_ = kind; }
    // The names in the text. The library sets them only while a cat::ReadReport or a
    // cat::CaughtErrors exists.
    cat::ErrorNames const &names() const noexcept;
    void set_name(std::string cat::ErrorNames::*role, std::string text);
    // Sets code and text, and the kind `other`; removes the names. Leaves `handled` unchanged.
    void set(unsigned int code, std::string const &text);

    // Code 0, kind `other`, not handled, no text, no names.
    virtual void clear();

  private:
    void forget_kind() noexcept;

    unsigned int code_ = 0;
    bool handled_ = false;
    cat::ErrorKind kind_ = cat::ErrorKind::other;
    std::shared_ptr<cat::ErrorNames> names_; // null: empty
};

// An error that is also an output stream: insertions append to its text.
class QRV_API cErrStream : public cErr, public cOstringstream {
  public:
    explicit cErrStream(unsigned int code);
    cErrStream(unsigned int code, std::string const &text);
    // A stream cannot be copied; `cErr copy = stream;` copies code and text.
    cErrStream(cErrStream const &) = delete;
    cErrStream &operator=(cErrStream const &) = delete;
    ~cErrStream() override;

    // Each of these flushes first (a failure sets the stream's bad state) and then does what the
    // operation of cErr does. clear() also restores the stream's error state, number format and
    // locale: so a failed insertion does not silence later errors, and a std::hex does not change
    // their numbers.
    void set(unsigned int code, std::string const &text);
    char const *what() const noexcept override;
    std::string as_string() const override;
    void set_string(std::string const &text) override;
    void clear() override;
};

// Treats an error by three masks on its code: prints it as a line of the message output, then
// throws it as a cErr by value or forgives it (clears both top bits). A derived class replaces this
// in its own dohandler(). A slot that composes and raises errors itself also receives those: it
// must call blockoncall(true) or end the recursion itself.
class QRV_API cErrHandler : public cSlot1<cErrHandler, cErr &> {
  public:
    // The standard masks throw errors with bit 31 and forgive none. Connected to nothing.
    explicit cErrHandler(unsigned int throw_mask = 0x80000000U, unsigned int clear_mask = 0,
                         unsigned int silent_mask = 0);
    // Both copy the masks, but not the connections.
    cErrHandler(cErrHandler const &other);
    cErrHandler &operator=(cErrHandler const &other);
    ~cErrHandler() override;

    // An error is not printed if its code has a bit of the silent mask. It is thrown if the code
    // has a bit of the throw mask, and otherwise forgiven if it has a bit of the clear mask.
    unsigned int throw_mask() const { return throw_mask_; }
    void throw_mask(unsigned int mask) { throw_mask_ = mask; }
    unsigned int clear_mask() const { return clear_mask_; }
    void clear_mask(unsigned int mask) { clear_mask_ = mask; }
    unsigned int silent_mask() const { return silent_mask_; }
    void silent_mask(unsigned int mask) { silent_mask_ = mask; }

    // Throws cErr, depending on the mask; so every emission that reaches a handler may throw.
    virtual void dohandler(cErr &error);

  private:
    unsigned int throw_mask_;
    unsigned int clear_mask_;
    unsigned int silent_mask_;
};
