#pragma once
// Shared by the tests of signal objects. A target is a string object with a name; the function
// `note` logs the name and then runs the action that the test has planned for it.

#include "qrv/containers/cattr.h"
#include "qrv/containers/citerobj.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csignalobj.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"

#include <functional>
#include <map>
#include <string>

inline std::string calls;
inline std::map<std::string, std::function<void()>> plans;

inline std::string take_calls() { return std::exchange(calls, std::string()); }

inline void run_plan(std::string const &name) {
    auto const found = plans.find(name);
    if (found == plans.end()) return;
    auto const plan = found->second; // a copy: it may be replaced while it runs
    plan();
}

inline bool note(cObj &target) {
    std::string const name = static_cast<cObjDR<std::string> &>(target).val();
    calls += name + ";";
    run_plan(name);
    return false;
}

inline bool note_argument(cObj &target, objref &argument) {
    std::string const name = static_cast<cObjDR<std::string> &>(target).val();
    calls += name + "(" + cat::as_text(argument) + ");";
    run_plan(name);
    return false;
}

// A slot object with its own target.
class NamedSlot {
  public:
    explicit NamedSlot(std::string const &name)
        : target_(cat::of(name)), slot_(make<cObjSlot>(*target_, note)) {}
    NamedSlot(std::string const &name, cSignal const &signal)
        : target_(cat::of(name)), slot_(make<cObjSlot>(*target_, note, signal)) {}
    NamedSlot(NamedSlot const &) = delete;
    NamedSlot &operator=(NamedSlot const &) = delete;
    ~NamedSlot() = default;

    cObjSlot &operator*() const { return *slot_; }
    cObjSlot *operator->() const { return slot_.get(); }
    void destroy() { slot_ = nullptr; }

  private:
    objref target_; // outlives the slot
    cRef<cObjSlot> slot_;
};

class SignalObjTest : public QrvTest {
  protected:
    SignalObjTest() { calls.clear(); }
    ~SignalObjTest() override {
        plans.clear();
        EXPECT_EQ(cConnection::lock_count(), 0);
        EXPECT_EQ(cConnection::queue_length(), 0u);
    }
};

// The signal under "changed" as an object.
inline objref changed_object(cObj const &obj) { return obj.omember("changed"); }

inline objref executable(cTypeObj const &type, char const *method) {
    return type.tmember(std::string(method));
}

inline objref call_method(cTypeObj const &type, char const *method, objref const &source) {
    objref const exe = executable(type, method);
    return dynamic_cast<cExeObj const &>(*exe).oexecute(source);
}
