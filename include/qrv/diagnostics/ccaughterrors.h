#pragma once
// cat::CaughtErrors keeps errors as data: for code that makes exceptions or results of its own of
// them. While one lives, the innermost takes every error that the library raises, on
// cat::sig_error() and on the signals of scanners, and every line that it would print about a
// failure. None is printed, thrown or forgiven, and no slot is called:
//
//     cat::CaughtErrors const caught;
//     map.setattr(key, value);
//     if (!caught.empty()) throw refused(caught.entries().front().as_string());
//
// The operation fails as it does when nobody forgives. The masks of cat::errhandler(), and the
// connections and blocks of all signals, are neither asked nor changed. So they are the program's
// own also when an exception passes, and user code inside may change them.
//
// User code that runs inside, such as a slot, or a method of a program's type, is no exception:
// what it raises is caught too, and it may have a CaughtErrors of its own, or a cat::ReadReport,
// which then takes the errors of readings inside. What user code throws passes.
//
// Guards nest, and end in the reverse order of their beginning.

#include "qrv/ccomp.h"
#include "qrv/diagnostics/cerr.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace cat {

// The living guards and reports of readings, innermost first, which errors are offered to before
// any slot is called.
class QRV_API ErrorTaker {
  public:
    // Where an error is on its way to: the slots of a signal, or the message output as a line, with
    // code 0. `reading` is a line that reports of readings take too.
    enum class Route : unsigned char { signal, line, reading };

    ErrorTaker(ErrorTaker const &) = delete;
    ErrorTaker &operator=(ErrorTaker const &) = delete;

    // True if one has taken the error, so that nothing is left to do.
    static bool offer(cErr const &error, Route route);
    static bool any() noexcept { return innermost_ != nullptr; }

  protected:
    // What a taker does with an error: it keeps it, lets the next outer one look, or wants it to
    // take its way, which the taker has prepared.
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
    // So many errors are kept, more are counted.
    static constexpr std::size_t limit = 1000;

    CaughtErrors() noexcept = default;
    ~CaughtErrors() override = default;

    bool empty() const noexcept { return !caught_; }
    // In the order in which they arose, with kind and names; the code of a line is 0.
    std::vector<cErr> const &entries() const noexcept;
    std::size_t count() const noexcept; // with those beyond the limit
    void clear() noexcept { caught_ = nullptr; }

  private:
    struct cCaught {
        std::vector<cErr> entries;
        std::size_t dropped = 0;
    };

    Answer take(cErr const &error, Route route) override;

    std::unique_ptr<cCaught> caught_; // null: none
};

} // namespace cat

// A signal of errors: its slots are called for those that nobody has taken.
class QRV_API cErrorSignal final : public cSignal1<cErr &> {
  public:
    cErrorSignal() noexcept = default;
    cErrorSignal(cErrorSignal const &) noexcept = default;
    cErrorSignal &operator=(cErrorSignal const &) noexcept = default;
    ~cErrorSignal() override;

    void operator()(cErr &error) const override;
};
