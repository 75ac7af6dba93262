#pragma once
// A connection that ends with its scope: while it exists, the signal calls a function or a lambda.
//
//     cScopedConnection const seen(signal, [](int bar) { std::cout << bar << '\n'; });
//
// The function accepts the arguments of the signal, or only the first ones. Signal and connection
// may be destroyed in any order, also during the call: the function then finishes, and what it
// captured stays valid until it returns.

#include "qrv/base/csignal.h"

#include <concepts>
#include <memory>
#include <utility>

class QRV_API cScopedConnection {
  public:
    cScopedConnection() noexcept = default; // connected to nothing
    // Connects after the existing connections. Moves the function to the heap.
    template <class F> cScopedConnection(cSignal const &signal, F function) {
        connect(signal, std::make_unique<cFunctionSlot<F>>(std::move(function)));
    }
    template <class T, class F> cScopedConnection(cSignal1<T> const &signal, F function) {
        connect_first<T>(signal, std::move(function));
    }
    template <class T, class U, class F>
    cScopedConnection(cSignal2<T, U> const &signal, F function) {
        if constexpr (std::invocable<F &, T, U>)
            connect(signal, std::make_unique<cFunctionSlot2<T, U, F>>(std::move(function)));
        else
            connect_first<T>(signal, std::move(function));
    }
    // The source is then connected to nothing.
    cScopedConnection(cScopedConnection &&) noexcept = default;
    cScopedConnection &operator=(cScopedConnection &&) noexcept = default; // ends the former one
    ~cScopedConnection() = default;

    // False after disconnect(), and when the signal has been destroyed.
    bool isconnected() const { return slot_ && slot_->isconnected(); }
    void disconnect() noexcept { slot_ = nullptr; }
    // The function is not called until the result and its copies are destroyed. Null if nothing is
    // connected.
    cRef<cShared> block() const { return slot_ ? slot_->block() : cRef<cShared>(); }

  private:
    template <class T, class Signal, class F> void connect_first(Signal const &signal, F function) {
        if constexpr (std::invocable<F &, T>)
            connect(signal, std::make_unique<cFunctionSlot1<T, F>>(std::move(function)));
        else
            connect(signal, std::make_unique<cFunctionSlot<F>>(std::move(function)));
    }
    template <class Signal, class Slot>
    void connect(Signal const &signal, std::unique_ptr<Slot> slot) {
        signal.connect(*slot);
        slot_ = std::move(slot);
    }

    std::unique_ptr<cSSBase> slot_;
};
