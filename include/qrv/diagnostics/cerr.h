#pragma once
// Errors. A failure is a value first: a code and a text, composed on the process-wide stream eros()
// and sent as a copy over the signal cat::sig_error() (qrv/core/ceros.h). The handlers connected to
// that signal decide what comes of it: a line on the message route, an exception, or forgiveness.
// The first one is cat::errhandler(). The detecting code looks at the code afterwards.
// Composing is not reentrant: whatever text a message needs from foreign code (a key's or a value's
// written form) is made before clear(), since that code may itself compose an error.

#include "qrv/base/csignal.h"
#include "qrv/ccomp.h"
#include "qrv/diagnostics/ccout.h"
#include "qrv/diagnostics/cerrkind.h"
#include "qrv/qrvdefs.h"

#include <exception>
#include <memory>
#include <string>

// The base of everything the library throws. what() is the text, good until the text changes.
class QRV_API cException : public std::exception {
  public:
    explicit cException(std::string const &text = {});
    // Copies take the text by as_string() and hand it on by set_string(), so that a copy of a
    // stream carries the text that still stands in its buffer.
    cException(cException const &other);
    cException &operator=(cException const &other);
    ~cException() override;

    char const *what() const noexcept override;
    virtual std::string as_string() const;
    virtual void set_string(std::string const &text);

  protected:
    std::string text_;
};

// A code and a text. Code 0 is no error; bit 30 or 31 makes it bad.
class QRV_API cErr : public cException {
  public:
    // The smallest bad code; a code below it is forgiven, and the operation goes on.
    static constexpr unsigned int bad_code = 0x40000000U;

    cErr();
    cErr(unsigned int code, char const *text); // null counts as empty
    cErr(unsigned int code, std::string const &text);
    cErr(cErr const &other);
    cErr &operator=(cErr const &other);
    ~cErr() override;

    unsigned int code() const { return code_; }
    void set_code(unsigned int code) { code_ = code; }
    // Set by whoever treats the error; the library leaves it false.
    bool handled() const { return handled_; }
    void set_handled(bool handled) { handled_ = handled; }
    bool isbad() const { return code_ >= bad_code; }
    // Which error of the library it is. What changes the code on the way leaves the kind.
    cat::ErrorKind kind() const noexcept { return kind_; }
    void set_kind(cat::ErrorKind kind) noexcept { kind_ = kind; }
    // What the text names. The library fills it in only while a cat::ReadReport lives.
    cat::ErrorNames const &names() const noexcept;
    void set_name(std::string cat::ErrorNames::*role, std::string text);
    // Sets code and text of an error of other kind; `handled` is left alone.
    void set(unsigned int code, std::string const &text);

    // Code 0, of other kind, not handled, no text, no names.
    virtual void clear();

  private:
    void forget_kind() noexcept;

    unsigned int code_ = 0;
    bool handled_ = false;
    cat::ErrorKind kind_ = cat::ErrorKind::other;
    std::shared_ptr<cat::ErrorNames> names_; // null: none
};

// An error that is also an output stream: what is streamed in lands in its text.
class QRV_API cErrStream : public cErr, public cOstringstream {
  public:
    explicit cErrStream(unsigned int code);
    cErrStream(unsigned int code, std::string const &text);
    // A stream is not copied; `cErr copy = stream;` takes code and text.
    cErrStream(cErrStream const &) = delete;
    cErrStream &operator=(cErrStream const &) = delete;
    ~cErrStream() override;

    // Each flushes first (a flush that fails sets the stream's bad state) and then does what the
    // operation of cErr does. clear() also restores the stream's error state, number format and
    // locale: one bad insertion does not silence the errors to come, and one std::hex does not
    // change their numbers.
    void set(unsigned int code, std::string const &text);
    char const *what() const noexcept override;
    std::string as_string() const override;
    void set_string(std::string const &text) override;
    void clear() override;
};

// What becomes of an error, by three masks on its code: it is printed on the standard error stream
// unless silenced, then thrown as a cErr by value, or else forgiven (both top bits are cleared).
// A derived class takes over by its own dohandler(). A slot that composes and raises errors itself
// is reached again by them: such a slot sets blockoncall(true) or ends the chain by itself.
class QRV_API cErrHandler : public cSlot1<cErrHandler, cErr &> {
  public:
    explicit cErrHandler(unsigned int throw_mask = 0x80000000U, unsigned int clear_mask = 0,
                         unsigned int silent_mask = 0);
    // Copies take the masks and no connections.
    cErrHandler(cErrHandler const &other);
    cErrHandler &operator=(cErrHandler const &other);
    ~cErrHandler() override;

    unsigned int throw_mask() const { return throw_mask_; }
    void throw_mask(unsigned int mask) { throw_mask_ = mask; }
    unsigned int clear_mask() const { return clear_mask_; }
    void clear_mask(unsigned int mask) { clear_mask_ = mask; }
    unsigned int silent_mask() const { return silent_mask_; }
    void silent_mask(unsigned int mask) { silent_mask_ = mask; }

    // Throws cErr by the mask; so every emission that reaches a handler may throw.
    virtual void dohandler(cErr &error);

  private:
    unsigned int throw_mask_;
    unsigned int clear_mask_;
    unsigned int silent_mask_;
};
