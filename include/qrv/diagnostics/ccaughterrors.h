#pragma once
// cat::CaughtErrors stores errors as data, for code that converts them to exceptions or results.
// The innermost one that exists receives every error that the library raises, on cat::sig_error()
// and on the signals of scanners, and every line that the library would print about a failure. No
// error is printed, thrown or forgiven, and no slot is called:
//
//     cat::CaughtErrors const caught;
//     map.setattr(key, value);
//     if (!caught.empty()) throw refused(caught.entries().front().as_string());
//
// The operation fails as it does when no handler forgives. The masks of cat::errhandler(), and the
// connections and blocks of all signals, are neither used nor changed. So they keep the program's
// settings even if an exception leaves the scope, and user code inside may change them.
//
// Errors of user code that runs inside, such as a slot or a method of a program's type, are caught,
// too. It may use its own CaughtErrors, or a cat::ReadReport, which then receives the errors of
// readings inside it. Exceptions of user code pass.
//
// Guards nest, and are destroyed in reverse order of their construction.

#include "qrv/ccomp.h"
#include "qrv/diagnostics/cerr.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace cat {

// The existing guards and reports of readings, innermost first. Errors are offered to them before
// any slot is called.
class QRV_API ErrorTaker {
  public:
    // The destination of an error: the slots of a signal, or the message output, as a line with
    // code 0. `reading` is a line that reports of readings receive, too.
    enum class Route : unsigned char { signal, line, reading };

    ErrorTaker(ErrorTaker const &) = delete;
    ErrorTaker &operator=(ErrorTaker const &) = delete;

    // True if one has received the error; nothing remains to be done then.
    static bool offer(cErr const &error, Route route);
    static bool any() noexcept { return innermost_ != nullptr; }

  protected:
    // What a taker does with an error: it stores it, passes it to the next outer one, or lets it
    // continue to its destination, which the taker has prepared.
    enum class Answer : unsigned char { taken, passed_on, let_through };

    ErrorTaker() noexcept : outer_(innermost_) { innermost_ = this; }
    virtual ~ErrorTaker() { innermost_ = outer_; }
    bool is_innermost() const noexcept { return innermost_ == this; }

  private:
    virtual Answer take(cErr const &error, Route route) = 0;

    static ErrorTaker *innermost_;
    ErrorTaker *const outer_;
};

// Allocates nothing until there is an error.
class QRV_API CaughtErrors final : private ErrorTaker {
  public:
    // More errors are counted, but not stored.
    static constexpr std::size_t limit = 1000;

    CaughtErrors() noexcept = default;
    ~CaughtErrors() override = default;

    bool empty() const noexcept { return !caught_; }
    // In the order in which they were raised, with kind and names; the code of a line is 0.
    std::vector<cErr> const &entries() const noexcept;
    std::size_t count() const noexcept; // including those beyond the limit
    void clear() noexcept { caught_ = nullptr; }

  private:
    struct cCaught {
        std::vector<cErr> entries;
        std::size_t dropped = 0;
    };

    Answer take(cErr const &error, Route route) override;

    std::unique_ptr<cCaught> caught_; // null: no errors
};

} // namespace cat

// A signal of errors: calls its slots only for errors that no guard or report has received.
class QRV_API cErrorSignal final : public cSignal1<cErr &> {
  public:
    cErrorSignal() noexcept = default;
    cErrorSignal(cErrorSignal const &) noexcept = default;
    cErrorSignal &operator=(cErrorSignal const &) noexcept = default;
    ~cErrorSignal() override;

    void operator()(cErr &error) const override;
};
