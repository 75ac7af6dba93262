#pragma once
// Signals as values: a signal that can stand in a map, be found by name and be called like an
// executable, and slots that are objects themselves.
//
//   cSignalRef    an executable without arguments: calling it fires a signal that lives elsewhere
//   cSignalObj    the same, with a signal of its own, which goes with the object
//   cSignalRef1, cSignalObj1   the same with one object as the argument
//   cObjSlot, cObjSlot1        an object that calls a function with a target object when it is
//   fired
//
// The signal that every object can have, cObj::changed(), is a cSignalObj among its own members
// under the key "changed". It exists only when somebody asked for it, so it costs the others
// nothing. set_omember() and the replacing of the member map fire it too.
//
// A firing is an emission of csignal.h: anything may be connected, cut and destroyed meanwhile, the
// signal, its object and the slots as well. Nobody holds the fired signal: destroyed by one of its
// own targets it calls none of the later ones. What a target throws goes through to whoever fired.
// Limits: references to signals and slots' targets are plain pointers that hold no count; they must
// not outlive what they point to.

#include "qrv/base/csignal.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"

// The types. Each is made and registered when it is first asked for. If a program has taken its
// name before, the three lines of a duplicate type are printed and the type works unregistered.
// While the core is not there yet, or not any more, it is the type of executables instead.
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
    cSignal *signal_ptr() const noexcept { return sig_; } // null only in a subclass that set none

    // The signal of the attribute, which becomes a cSignalObj if it isn't of cat::type_signal().
    // Borrowed from the attribute. If that refuses: a scratch signal, disconnected at each such
    // call.
    static cSignal &force(cAttr &attr);

    using cExeObj::oexecute;
    objref oexecute() const override; // RUNS USER CODE

  protected:
    cSignalRef(); // without a signal yet: firing does nothing
    void set_signal(cSignal *signal) noexcept { sig_ = signal; } // borrows

  private:
    cSignal *sig_ = nullptr;
};

// A signal that is an object. All its links go with it.
class QRV_API cSignalObj : public cSignalRef {
  public:
    cSignalObj();
    cSignalObj(cSignalObj const &) = delete;
    cSignalObj &operator=(cSignalObj const &) = delete;
    ~cSignalObj() override;

  private:
    cSignal own_;
};

// An executable that fires a signal with one object: with `s` the one that it is called on, without
// the argument of the call.
class QRV_API cSignalRef1 : public cExeObj {
  public:
    cSignalRef1(cSignal1<cObj &> &signal, bool s); // borrows
    cSignalRef1(cSignalRef1 &other);               // on the same signal, borrowed
    cSignalRef1(cSignalRef1 const &) = delete;
    cSignalRef1 &operator=(cSignalRef1 const &) = delete;
    ~cSignalRef1() override;

    cSignal1<cObj &> &signal() noexcept { return *sig_; }
    cSignal1<cObj &> const &signal() const noexcept { return *sig_; }
    cSignal1<cObj &> *signal_ptr() const noexcept { return sig_; }

    // As cSignalRef::force. A new signal has s false.
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
    explicit cSignalObj1(bool s);
    cSignalObj1(cSignalObj1 const &) = delete;
    cSignalObj1 &operator=(cSignalObj1 const &) = delete;
    ~cSignalObj1() override;

  private:
    cSignal1<cObj &> own_;
};

// A slot that is an object. Fired, it calls fn(target) and drops the result; a null fn is not
// called. The target is borrowed, so a target that owns its slot makes no cycle. begin() and end()
// are those of the object; the connections are walked through its base cSSBase.
class QRV_API cObjSlot : public cObj, public cSlot<cObjSlot> {
  public:
    cObjSlot(cObj &target, cProcedure1 fn);
    cObjSlot(cObj &target, cProcedure1 fn, cSignal const &signal); // connected to it
    cObjSlot(cObjSlot const &) = delete;
    cObjSlot &operator=(cObjSlot const &) = delete;
    ~cObjSlot() override;

    using cObj::begin;
    using cObj::end;

    cProcedure1 function() const noexcept { return fn_; }
    void function(cProcedure1 fn) noexcept { fn_ = fn; }

  private:
    void do_slot();

    cProcedure1 fn_;
    cObj *target_;
};

// A slot for signals with one object: calls fn(target, argument). The argument is held for the
// length of the call.
class QRV_API cObjSlot1 : public cObj, public cSlot1<cObjSlot1, cObj &> {
  public:
    cObjSlot1(cObj &target, cProcedure2 fn);
    cObjSlot1(cObj &target, cProcedure2 fn, cSignal1<cObj &> const &signal); // connected to it
    cObjSlot1(cObjSlot1 const &) = delete;
    cObjSlot1 &operator=(cObjSlot1 const &) = delete;
    ~cObjSlot1() override;

    using cObj::begin;
    using cObj::end;

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
