#pragma once
// Signals and slots: typed calls along connections.
//
// A signal calls its targets in the order in which they were connected. A slot calls a function or
// a member function. Both may be connected, cut and destroyed during a call (qrv/base/cconnection.h
// has the rules).
//
// Limits: a slot does not own its object, so the slot must be destroyed before or with the object.
// An exception of a slot reaches the caller of the signal, and the remaining targets are not
// called.

#include "qrv/base/cconnection.h"

#include <array>
#include <bit>
#include <cstdarg>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>

// The bases, by number of arguments: what a signal can call. The destructor of a derived class must
// call disconnect() first, so that no emission reaches a partly destroyed object.
class QRV_API cSSBase0 : public cSSBase {
  public:
    ~cSSBase0() override;
    // The call that a signal makes. RUNS USER CODE, as in cSSBase1 and cSSBase2.
    virtual void operator()() const = 0;

  protected:
    constexpr cSSBase0() noexcept {}
    cSSBase0(cSSBase0 const &) noexcept = default;
    cSSBase0 &operator=(cSSBase0 const &) noexcept = default;

  private:
    int arguments() const final { return 0; }
};

template <class T> class QRV_API cSSBase1 : public cSSBase {
  public:
    ~cSSBase1() override = default;
    // RUNS USER CODE
    virtual void operator()(T argument) const = 0;

  protected:
    constexpr cSSBase1() noexcept {}
    cSSBase1(cSSBase1 const &) noexcept = default;
    cSSBase1 &operator=(cSSBase1 const &) noexcept = default;

  private:
    int arguments() const final { return 1; }
};

template <class T, class U> class QRV_API cSSBase2 : public cSSBase {
  public:
    ~cSSBase2() override = default;
    // RUNS USER CODE
    virtual void operator()(T first, U second) const = 0;

  protected:
    constexpr cSSBase2() noexcept {}
    cSSBase2(cSSBase2 const &) noexcept = default;
    cSSBase2 &operator=(cSSBase2 const &) noexcept = default;

  private:
    int arguments() const final { return 2; }
};

// A signal without arguments. Firing it calls its targets in the order of connection.
class QRV_API cSignal : public cSSBase0 {
  public:
    constexpr cSignal() noexcept {}
    // Connects to `target`. Another cSignal is copied instead, which connects nothing: pass it as a
    // cSSBase0 to connect to it.
    explicit cSignal(cSSBase0 const &target);
    cSignal(cSignal const &) noexcept = default;
    cSignal &operator=(cSignal const &) noexcept = default;
    ~cSignal() override;

    // Connects `target` and returns this signal's end of the link, borrowed: see cSSBase::connect.
    // With `exclusive`, all targets connected so far are blocked until the link is cut. The new
    // ends are inserted before the nodes `mine` and `theirs`, by default at the end. If the two are
    // connected already, only a count increases.
    cConnection *connect(cSSBase0 const &target, bool exclusive = false,
                         cConnection *mine = nullptr, cConnection *theirs = nullptr) const {
        return cSSBase::connect(target, exclusive, mine, theirs);
    }
    // Undoes one connect(), or with `force` all of them. Without a target: cuts all links, in both
    // directions.
    void disconnect(cSSBase0 const &target, bool force = false) const {
        cSSBase::disconnect(target, force);
    }
    void disconnect() const { cSSBase::disconnect(); }

    void operator()() const override;
    // Calls only the first target, then moves it to the end: repeated calls serve all targets in
    // turn.
    void oneshot() const;
};

// A signal with one argument. A target without arguments is called without it.
template <class T> class QRV_API cSignal1 : public cSSBase1<T> {
  public:
    constexpr cSignal1() noexcept {}
    cSignal1(cSignal1 const &) noexcept = default;
    cSignal1 &operator=(cSignal1 const &) noexcept = default;
    ~cSignal1() override { cSSBase::disconnect(); }

    // These are as in cSignal.
    cConnection *connect(cSSBase1<T> const &target, bool exclusive = false,
                         cConnection *mine = nullptr, cConnection *theirs = nullptr) const {
        return cSSBase::connect(target, exclusive, mine, theirs);
    }
    cConnection *connect(cSSBase0 const &target, bool exclusive = false,
                         cConnection *mine = nullptr, cConnection *theirs = nullptr) const {
        return cSSBase::connect(target, exclusive, mine, theirs);
    }
    void disconnect(cSSBase1<T> const &target, bool force = false) const {
        cSSBase::disconnect(target, force);
    }
    void disconnect(cSSBase0 const &target, bool force = false) const {
        cSSBase::disconnect(target, force);
    }
    void disconnect() const { cSSBase::disconnect(); }

    void operator()(T argument) const override {
        if (this->untouched()) return;
        this->fire([&argument](cSSBase const &target, int arguments) {
            if (arguments == 0)
                static_cast<cSSBase0 const &>(target)();
            else
                static_cast<cSSBase1<T> const &>(target)(argument);
        });
    }
};

// A signal with two arguments. Targets with fewer arguments receive only the first one, or none.
template <class T, class U> class QRV_API cSignal2 : public cSSBase2<T, U> {
  public:
    constexpr cSignal2() noexcept {}
    cSignal2(cSignal2 const &) noexcept = default;
    cSignal2 &operator=(cSignal2 const &) noexcept = default;
    ~cSignal2() override { cSSBase::disconnect(); }

    // These are as in cSignal.
    cConnection *connect(cSSBase2<T, U> const &target, bool exclusive = false,
                         cConnection *mine = nullptr, cConnection *theirs = nullptr) const {
        return cSSBase::connect(target, exclusive, mine, theirs);
    }
    cConnection *connect(cSSBase1<T> const &target, bool exclusive = false,
                         cConnection *mine = nullptr, cConnection *theirs = nullptr) const {
        return cSSBase::connect(target, exclusive, mine, theirs);
    }
    cConnection *connect(cSSBase0 const &target, bool exclusive = false,
                         cConnection *mine = nullptr, cConnection *theirs = nullptr) const {
        return cSSBase::connect(target, exclusive, mine, theirs);
    }
    void disconnect(cSSBase2<T, U> const &target, bool force = false) const {
        cSSBase::disconnect(target, force);
    }
    void disconnect(cSSBase1<T> const &target, bool force = false) const {
        cSSBase::disconnect(target, force);
    }
    void disconnect(cSSBase0 const &target, bool force = false) const {
        cSSBase::disconnect(target, force);
    }
    void disconnect() const { cSSBase::disconnect(); }

    void operator()(T first, U second) const override {
        if (this->untouched()) return;
        this->fire([&first, &second](cSSBase const &target, int arguments) {
            if (arguments == 0)
                static_cast<cSSBase0 const &>(target)();
            else if (arguments == 1)
                static_cast<cSSBase1<T> const &>(target)(first);
            else
                static_cast<cSSBase2<T, U> const &>(target)(first, second);
        });
    }
};

// Instances that the library itself uses are compiled once, in the library.
extern template class cSignal1<bool &>;
extern template class cSignal1<char const *>;
extern template class cSignal1<cObj &>;
extern template class cSignal1<cErr &>;
extern template class cSignal2<int, int>;

// A signal whose destructor fires it. As a member it announces the destruction of its owner.
// Exceptions of targets are discarded, since they would leave a destructor.
class QRV_API cDeleteSignal : public cSignal {
  public:
    constexpr cDeleteSignal() noexcept {}
    // Connects to `target`.
    explicit cDeleteSignal(cSSBase0 const &target) : cSignal(target) {}
    cDeleteSignal(cDeleteSignal const &) noexcept = default;
    cDeleteSignal &operator=(cDeleteSignal const &) noexcept = default;
    ~cDeleteSignal() override;
};

// Matches only the type that a parameter of type va_list has.
template <class List>
concept cArgumentList =
    !std::is_null_pointer_v<List> && requires(List list, void (*take)(std::va_list)) {
    take(list);
};

// A signal that passes a formatted string. Without a connection, and for a null format, a call has
// no effect. The string is in one buffer of the process, is cut at 1023 characters and is valid
// only during the call.
class QRV_API cSigInfo : public cSignal1<char const *> {
  public:
    constexpr cSigInfo() noexcept {}
    cSigInfo(cSigInfo const &) noexcept = default;
    cSigInfo &operator=(cSigInfo const &) noexcept = default;
    ~cSigInfo() override;

    // DELIBERATE: a single string is not a format, it is passed unchanged.
    // Pinned: a_single_string_is_sent_unformatted
    using cSignal1<char const *>::operator();
    // A template, so that a call with only a string selects the inherited operator.
    template <class = void> void operator()(char const *format, ...) const QRV_PRINTF(2, 3);
    // Accepts only a va_list. That is a plain pointer as a parameter, so 0 and nullptr are
    // excluded: they are arguments of the format. The caller's list is not changed.
    template <cArgumentList List> void operator()(char const *format, List args) const {
        fire_format(format, args);
    }

  private:
    void fire_format(char const *format, std::va_list args) const;
};

template <class> void cSigInfo::operator()(char const *format, ...) const {
    std::va_list args;
    va_start(args, format);
    try {
        fire_format(format, args); // RE-ENTERS: *this may be destroyed
    } catch (...) {
        va_end(args);
        throw;
    }
    va_end(args);
}

// Requires a connect() that accepts a `Target`: for the constructors of the slots.
template <class Signal, class Target>
concept cSignalFor = requires(Signal const &signal, Target const &target) {
    signal.connect(target, false, nullptr, nullptr);
};

// A pointer to a member function that can be called on a C: const or not, inherited or not, with
// any result.
template <class Member, class C, class... Args>
concept cMemberOf =
    std::is_member_function_pointer_v<Member> && std::is_invocable_v<Member, C *, Args...>;

// Holds such a pointer and calls it by its actual type.
template <class C, class... Args> class cMemberCall {
  public:
    // A null object or function makes it empty. Borrows the object.
    template <class Member> cMemberCall(C const *object, Member member) noexcept
        : call_(object && member ? &call<Member> : nullptr), member_(std::bit_cast<cBits>(member)) {
    }

    // False if it is empty; it must not be called then. The call RUNS USER CODE.
    explicit operator bool() const noexcept { return call_ != nullptr; }
    void operator()(C *object, Args... args) const {
        call_(object, std::forward<Args>(args)..., member_);
    }

  private:
    using cBits = std::array<std::uintptr_t, 2>;

    // The bits are the last argument, so that the others stay in the registers in which the slot
    // received them.
    template <class Member> static void call(C *object, Args... args, cBits bits) {
        static_cast<void>((object->*std::bit_cast<Member>(bits))(std::forward<Args>(args)...));
    }

    void (*call_)(C *, Args..., cBits);
    cBits member_;
};

// The plain type of a member function, for overloaded names and null, which have no type to deduce.
template <class C, class... Args> using cPlainMember =
    std::conditional_t<std::is_const_v<C>, void (std::remove_const_t<C>::*)(Args...) const,
                       void (std::remove_const_t<C>::*)(Args...)>;

// Calls a member function of an object and ignores its result. Borrows the object. A null object or
// function is not called. For a const object, C is const, and so is the function.
template <class C> class QRV_API cSlot : public cSSBase0 {
  public:
    using function_type = cPlainMember<C>;

    // Connected to nothing.
    cSlot(C *object, function_type function) noexcept
        : object_(object), function_(object, function) {}
    template <cMemberOf<C> Member> cSlot(C *object, Member function) noexcept
        : object_(object), function_(object, function) {}
    // Connects `signal` to this slot.
    template <cSignalFor<cSSBase0> Signal>
    cSlot(C *object, function_type function, Signal const &signal) : cSlot(object, function) {
        signal.connect(*this, false, nullptr, nullptr);
    }
    template <cMemberOf<C> Member, cSignalFor<cSSBase0> Signal>
    cSlot(C *object, Member function, Signal const &signal) : cSlot(object, function) {
        signal.connect(*this, false, nullptr, nullptr);
    }
    cSlot(cSlot const &) noexcept = default;
    cSlot &operator=(cSlot const &) noexcept { return *this; }
    ~cSlot() override { cSSBase::disconnect(); }

    void operator()() const override {
        if (!function_) return;
        if (plain_call())
            function_(object_); // RE-ENTERS: *this may be destroyed
        else
            call_guarded();
    }

  private:
    [[gnu::noinline]] void call_guarded() const {
        if (isblocked()) return;
        BlockOnCall const self_block(this);
        function_(object_); // RE-ENTERS, as above
    }

    C *object_;
    cMemberCall<C> function_;
};

// The same with one argument.
template <class C, class T> class QRV_API cSlot1 : public cSSBase1<T> {
  public:
    using function_type = cPlainMember<C, T>;

    // Connected to nothing.
    cSlot1(C *object, function_type function) noexcept
        : object_(object), function_(object, function) {}
    template <cMemberOf<C, T> Member> cSlot1(C *object, Member function) noexcept
        : object_(object), function_(object, function) {}
    // Connects `signal` to this slot.
    template <cSignalFor<cSSBase1<T>> Signal>
    cSlot1(C *object, function_type function, Signal const &signal) : cSlot1(object, function) {
        signal.connect(*this, false, nullptr, nullptr);
    }
    template <cMemberOf<C, T> Member, cSignalFor<cSSBase1<T>> Signal>
    cSlot1(C *object, Member function, Signal const &signal) : cSlot1(object, function) {
        signal.connect(*this, false, nullptr, nullptr);
    }
    cSlot1(cSlot1 const &) noexcept = default;
    cSlot1 &operator=(cSlot1 const &) noexcept { return *this; }
    ~cSlot1() override { cSSBase::disconnect(); }

    void operator()(T argument) const override {
        if (!function_) return;
        if (this->plain_call())
            function_(object_,
                      std::forward<T>(argument)); // RE-ENTERS: *this may be destroyed
        else
            call_guarded(std::forward<T>(argument));
    }

  private:
    [[gnu::noinline]] void call_guarded(T argument) const {
        if (this->isblocked()) return;
        cSSBase::BlockOnCall const self_block(this);
        function_(object_, std::forward<T>(argument)); // RE-ENTERS, as above
    }

    C *object_;
    cMemberCall<C, T> function_;
};

template <class C, class R, class B, class T, class... Signal>
cSlot1(C *, R (B::*)(T), Signal const &...) -> cSlot1<C, T>;
template <class C, class R, class B, class T, class... Signal>
cSlot1(C *, R (B::*)(T) const, Signal const &...) -> cSlot1<C, T>;

// The same with two arguments.
template <class C, class T, class U> class QRV_API cSlot2 : public cSSBase2<T, U> {
  public:
    using function_type = cPlainMember<C, T, U>;

    // Connected to nothing.
    cSlot2(C *object, function_type function) noexcept
        : object_(object), function_(object, function) {}
    template <cMemberOf<C, T, U> Member> cSlot2(C *object, Member function) noexcept
        : object_(object), function_(object, function) {}
    // Connects `signal` to this slot.
    template <cSignalFor<cSSBase2<T, U>> Signal>
    cSlot2(C *object, function_type function, Signal const &signal) : cSlot2(object, function) {
        signal.connect(*this, false, nullptr, nullptr);
    }
    template <cMemberOf<C, T, U> Member, cSignalFor<cSSBase2<T, U>> Signal>
    cSlot2(C *object, Member function, Signal const &signal) : cSlot2(object, function) {
        signal.connect(*this, false, nullptr, nullptr);
    }
    cSlot2(cSlot2 const &) noexcept = default;
    cSlot2 &operator=(cSlot2 const &) noexcept { return *this; }
    ~cSlot2() override { cSSBase::disconnect(); }

    void operator()(T first, U second) const override {
        if (!function_) return;
        if (this->plain_call()) // RE-ENTERS: *this may be destroyed
            function_(object_, std::forward<T>(first), std::forward<U>(second));
        else
            call_guarded(std::forward<T>(first), std::forward<U>(second));
    }

  private:
    [[gnu::noinline]] void call_guarded(T first, U second) const {
        if (this->isblocked()) return;
        cSSBase::BlockOnCall const self_block(this);
        function_(object_, std::forward<T>(first), std::forward<U>(second)); // RE-ENTERS, as above
    }

    C *object_;
    cMemberCall<C, T, U> function_;
};

template <class C, class R, class B, class T, class U, class... Signal>
cSlot2(C *, R (B::*)(T, U), Signal const &...) -> cSlot2<C, T, U>;
template <class C, class R, class B, class T, class U, class... Signal>
cSlot2(C *, R (B::*)(T, U) const, Signal const &...) -> cSlot2<C, T, U>;

// What a function slot calls: a function or a function object, such as a lambda. Copies share the
// object, so a call that holds a copy may outlive the slot.
template <class F> class cHeldFunction {
  public:
    // Moves a function object to the heap; stores a function pointer.
    explicit cHeldFunction(F &&function) : held_(hold(std::forward<F>(function))) {}

    // False if the function is null; it must not be called then. The call RUNS USER CODE.
    explicit operator bool() const { return !is_null(function()); }
    template <class... Args> void operator()(Args &&...args) const {
        static_cast<void>(function()(std::forward<Args>(args)...));
    }

  private:
    static constexpr bool shared = std::is_class_v<F>;
    using cHeld = std::conditional_t<shared, std::shared_ptr<F>, F>;

    static cHeld hold(F &&function) {
        if constexpr (shared)
            return std::make_shared<F>(std::move(function));
        else
            return function;
    }
    auto &function() const {
        if constexpr (shared)
            return *held_;
        else
            return held_;
    }
    template <class G> static bool is_null(G const &function) {
        if constexpr (!std::is_empty_v<G> && requires { function == nullptr; })
            return function == nullptr;
        else
            return false;
    }

    cHeld held_;
};

// Calls a function or a function object without arguments and ignores its result. A null function
// is not called. Copies share the function object.
template <class F> class QRV_API cFunctionSlot : public cSSBase0 {
  public:
    // Moves a function object to the heap; copies a function pointer. With `signal`: connects it to
    // this slot.
    explicit cFunctionSlot(F function) noexcept(!std::is_class_v<F>)
        : function_(std::forward<F>(function)) {}
    template <cSignalFor<cSSBase0> Signal> cFunctionSlot(F function, Signal const &signal)
        : cFunctionSlot(std::forward<F>(function)) {
        signal.connect(*this, false, nullptr, nullptr);
    }
    cFunctionSlot(cFunctionSlot const &) noexcept = default;
    cFunctionSlot &operator=(cFunctionSlot const &) noexcept { return *this; }
    ~cFunctionSlot() override { cSSBase::disconnect(); }

    void operator()() const override {
        if (isblocked() || !function_) return;
        BlockOnCall const self_block(this);
        auto const function = function_;
        function(); // RE-ENTERS: *this may be destroyed
    }

  private:
    cHeldFunction<F> function_;
};

// The same with one argument.
template <class T, class F> class QRV_API cFunctionSlot1 : public cSSBase1<T> {
  public:
    // As in cFunctionSlot.
    explicit cFunctionSlot1(F function) noexcept(!std::is_class_v<F>)
        : function_(std::forward<F>(function)) {}
    template <cSignalFor<cSSBase1<T>> Signal> cFunctionSlot1(F function, Signal const &signal)
        : cFunctionSlot1(std::forward<F>(function)) {
        signal.connect(*this, false, nullptr, nullptr);
    }
    cFunctionSlot1(cFunctionSlot1 const &) noexcept = default;
    cFunctionSlot1 &operator=(cFunctionSlot1 const &) noexcept { return *this; }
    ~cFunctionSlot1() override { cSSBase::disconnect(); }

    void operator()(T argument) const override {
        if (this->isblocked() || !function_) return;
        cSSBase::BlockOnCall const self_block(this);
        auto const function = function_;
        function(argument); // RE-ENTERS: *this may be destroyed
    }

  private:
    cHeldFunction<F> function_;
};

template <class F, class T> cFunctionSlot1(F, cSignal1<T> const &) -> cFunctionSlot1<T, F>;

// The same with two arguments.
template <class T, class U, class F> class QRV_API cFunctionSlot2 : public cSSBase2<T, U> {
  public:
    // As in cFunctionSlot.
    explicit cFunctionSlot2(F function) noexcept(!std::is_class_v<F>)
        : function_(std::forward<F>(function)) {}
    template <cSignalFor<cSSBase2<T, U>> Signal> cFunctionSlot2(F function, Signal const &signal)
        : cFunctionSlot2(std::forward<F>(function)) {
        signal.connect(*this, false, nullptr, nullptr);
    }
    cFunctionSlot2(cFunctionSlot2 const &) noexcept = default;
    cFunctionSlot2 &operator=(cFunctionSlot2 const &) noexcept { return *this; }
    ~cFunctionSlot2() override { cSSBase::disconnect(); }

    void operator()(T first, U second) const override {
        if (this->isblocked() || !function_) return;
        cSSBase::BlockOnCall const self_block(this);
        auto const function = function_;
        function(first, second); // RE-ENTERS: *this may be destroyed
    }

  private:
    cHeldFunction<F> function_;
};

template <class F, class T, class U> cFunctionSlot2(F, cSignal2<T, U> const &)
    -> cFunctionSlot2<T, U, F>;

extern template class cFunctionSlot<void (*)()>;
extern template class cFunctionSlot1<char const *, void (*)(char const *)>;

// Common points in a process's life. The application fires them, the library only listens:
// `sig_idle` when the application has nothing to do, `sig_init` and `sig_exit` at its start and
// end. The library does not use `sig_inittemplates` and `sig_closetemplates`, which are for
// applications. All exist before the other static objects of the library.
extern QRV_API cSignal sig_idle;
extern QRV_API cSignal sig_init;
extern QRV_API cSignal sig_exit;
extern QRV_API cSignal sig_inittemplates;
extern QRV_API cSignal1<bool &> sig_closetemplates;
