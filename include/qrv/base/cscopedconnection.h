#pragma once
// A connection that ends with its scope: calls a function or a lambda for as long as it lives.
//
//     cScopedConnection const seen(signal, [](int bar) { std::cout << bar << '\n'; });
//
// The function takes the arguments of the signal, or the first ones of them. Signal and connection
// may end in any order, and both during the call: the function then finishes, with what it
// captured.

#include "qrv/base/csignal.h"

#include <concepts>
#include <memory>
#include <utility>

class QRV_API cScopedConnection {
  public:
    cScopedConnection() noexcept = default; // of nothing
    // Connects behind what is connected already. Allocates.
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
    // The source is connected to nothing afterwards.
    cScopedConnection(cScopedConnection &&) noexcept = default;
    cScopedConnection &operator=(cScopedConnection &&) noexcept = default; // ends the former one
    ~cScopedConnection() = default;

    // False after disconnect(), and when the signal has ended.
    bool isconnected() const { return slot_ && slot_->isconnected(); }
    void disconnect() noexcept { slot_ = nullptr; }
    // While somebody holds the result, the function is not called. Null if nothing is connected.
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
