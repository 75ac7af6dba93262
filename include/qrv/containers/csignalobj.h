#pragma once
// Signals as values: a signal that can be stored in a map, found by name and called like an
// executable; and slots that are objects.
//
//   cSignalRef    an executable without arguments: calling it fires a signal that exists elsewhere
//   cSignalObj    the same with its own signal, which is destroyed with the object
//   cSignalRef1, cSignalObj1   the same with one object as the argument
//   cObjSlot, cObjSlot1        an object that calls a function with a target object when fired
//
// cObj::changed(), the signal that every object can have, is a cSignalObj among its own members
// under the key "changed". It exists only after it was requested, so other objects pay nothing.
// set_omember() and the replacement of the member map fire it too.
//
// A call is an emission of csignal.h: anything may be connected, cut and destroyed during the call,
// also the signal, its object and the slots. The emission does not own the signal: if a target
// destroys it, later targets are not called. Exceptions of targets reach the caller.
//
// Limits: the references to signals and to slots' targets are plain pointers, so signals and
// targets must outlive them.

#include "qrv/base/csignal.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"

// The types. Each is created and registered at its first use. If a program has registered another
// type of that name, the error of a duplicate type is printed, and the type works unregistered.
// At the start of the core's creation and at the end of its destruction, the type of executables is
// returned instead.
namespace cat {
QRV_API cTypeObj &type_signal();  // "cSignal": cSignalRef, cSignalObj
QRV_API cTypeObj &type_signal1(); // "cSignal1": cSignalRef1, cSignalObj1
QRV_API cTypeObj &type_slot1();   // "objslot1": cObjSlot
QRV_API cTypeObj &type_slot2();   // "objslot2": cObjSlot1
} // namespace cat

QRV_API cTypeObj &cTypeOf(cSigInfo *); // "cSigInfo": cObjD<cSigInfo>, cObjDR<cSigInfo>

// An executable that fires a signal without arguments; the result of the call is cat::nil().
class QRV_API cSignalRef : public cExeObj {
  public:
    explicit cSignalRef(cSignal &signal); // borrows
    cSignalRef(cSignalRef const &) = delete;
    cSignalRef &operator=(cSignalRef const &) = delete;
    ~cSignalRef() override;

    cSignal &signal() noexcept { return *sig_; }
    cSignal const &signal() const noexcept { return *sig_; }
    // Null only if a subclass has not set one.
    cSignal *signal_ptr() const noexcept { return sig_; }

    // The signal of the attribute, whose value is replaced by a cSignalObj if it is not of
    // cat::type_signal(). Borrowed from the attribute. If the owner refuses that: a scratch signal,
    // which each such call disconnects. RUNS USER CODE
    static cSignal &force(cAttr &attr);

    using cExeObj::oexecute;
    objref oexecute() const override; // RUNS USER CODE

  protected:
    cSignalRef(); // no signal yet: firing has no effect
    void set_signal(cSignal *signal) noexcept { sig_ = signal; } // borrows

  private:
    cSignal *sig_ = nullptr;
};

// A signal that is an object. Its connections end with it.
class QRV_API cSignalObj : public cSignalRef {
  public:
    cSignalObj();
    cSignalObj(cSignalObj const &) = delete;
    cSignalObj &operator=(cSignalObj const &) = delete;
    ~cSignalObj() override;

  private:
    cSignal own_;
};

// An executable that fires a signal with one object: if `s` is true, the object on which it is
// called, without arguments; otherwise the argument of the call.
class QRV_API cSignalRef1 : public cExeObj {
  public:
    cSignalRef1(cSignal1<cObj &> &signal, bool s); // borrows
    cSignalRef1(cSignalRef1 &other);               // on the same signal, borrowed
    cSignalRef1(cSignalRef1 const &) = delete;
    cSignalRef1 &operator=(cSignalRef1 const &) = delete;
    ~cSignalRef1() override;

    // Borrowed; the pointer is null only if a subclass has not set one.
    cSignal1<cObj &> &signal() noexcept { return *sig_; }
    cSignal1<cObj &> const &signal() const noexcept { return *sig_; }
    cSignal1<cObj &> *signal_ptr() const noexcept { return sig_; }

    // As cSignalRef::force. For a new signal, s is false.
    static cSignal1<cObj &> &force(cAttr &attr);

    using cExeObj::pexecute;
    bool pexecute(cObj &arg) const override; // true. RUNS USER CODE

  protected:
    explicit cSignalRef1(bool s);
    void set_signal(cSignal1<cObj &> *signal) noexcept { sig_ = signal; } // borrows

  private:
    cSignal1<cObj &> *sig_ = nullptr;
};

class QRV_API cSignalObj1 : public cSignalRef1 {
  public:
    // As in cSignalRef1.
    explicit cSignalObj1(bool s);
    cSignalObj1(cSignalObj1 const &) = delete;
    cSignalObj1 &operator=(cSignalObj1 const &) = delete;
    ~cSignalObj1() override;

  private:
    cSignal1<cObj &> own_;
};

// A slot that is an object. When fired, it calls fn(target) and ignores the result; a null fn is
// not called. The target is borrowed, so a target that owns its slot forms no cycle. begin() and
// end() are those of cObj; use the base cSSBase to walk the connections.
class QRV_API cObjSlot : public cObj, public cSlot<cObjSlot> {
  public:
    // Borrows the target. Connected to nothing, or to `signal`.
    cObjSlot(cObj &target, cProcedure1 fn);
    cObjSlot(cObj &target, cProcedure1 fn, cSignal const &signal);
    cObjSlot(cObjSlot const &) = delete;
    cObjSlot &operator=(cObjSlot const &) = delete;
    ~cObjSlot() override;

    using cObj::begin;
    using cObj::end;

    // The function may be replaced at any time; null: nothing is called.
    cProcedure1 function() const noexcept { return fn_; }
    void function(cProcedure1 fn) noexcept { fn_ = fn; }

  private:
    void do_slot();

    cProcedure1 fn_;
    cObj *target_;
};

// A slot for signals with one object: calls fn(target, argument). Shares the argument during the
// call.
class QRV_API cObjSlot1 : public cObj, public cSlot1<cObjSlot1, cObj &> {
  public:
    // Borrows the target. Connected to nothing, or to `signal`.
    cObjSlot1(cObj &target, cProcedure2 fn);
    cObjSlot1(cObj &target, cProcedure2 fn, cSignal1<cObj &> const &signal);
    cObjSlot1(cObjSlot1 const &) = delete;
    cObjSlot1 &operator=(cObjSlot1 const &) = delete;
    ~cObjSlot1() override;

    using cObj::begin;
    using cObj::end;

    // As in cObjSlot.
    cProcedure2 function() const noexcept { return fn_; }
    void function(cProcedure2 fn) noexcept { fn_ = fn; }

  private:
    void do_slot(cObj &arg);

    cProcedure2 fn_;
    cObj *target_;
};

extern template class cSlot<cObjSlot>;
extern template class cSlot1<cObjSlot1, cObj &>;
extern template class QRV_API cObjDR<cSigInfo>;
extern template class QRV_API cObjD<cSigInfo>;
