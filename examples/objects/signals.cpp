// Signals and slots: the order of calls, and what a slot may do during a call.
#include "qrv/containers/cattr.h"
#include "qrv/containers/csignalobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/diagnostics/cconsole.h"
#include "qrv/text/write/cwriter.h"

#include <iostream>
#include <memory>

namespace {
class Pump {
  public:
    explicit Pump(cSignal1<int> const &pressure) : slot_(this, &Pump::regulate, pressure) {}
    void regulate(int bar) { std::cout << "  pump: " << (bar < 5 ? "faster" : "slower") << '\n'; }

  private:
    cSlot1<Pump, int> slot_; // a member: the connection ends with the pump
};

bool show(cObj &obj) {
    std::cout << "  tank: " << cat::as_text(objref::share(&obj)) << '\n';
    return true;
}
} // namespace

int main() {
    cat::use_console();

    cSignal1<int> pressure;
    auto pump = std::make_unique<Pump>(pressure);
    cFunctionSlot1 const log([](int bar) { std::cout << "  log: " << bar << '\n'; }, pressure);
    cFunctionSlot const lamp([] { std::cout << "  lamp\n"; }); // needs no argument
    pressure.connect(lamp);

    std::cout << "Targets are called in the order of connection.\n";
    pressure(4);

    std::cout << "A slot is blocked while a token of its block() exists.\n";
    {
        auto const token = lamp.block();
        pressure(6);
    }

    std::cout << "A slot may destroy a target that is still to be called.\n";
    cFunctionSlot const guard([&pump] {
        std::cout << "  guard: destroys the pump\n";
        pump.reset();
    });
    pressure.connect(guard, false, pressure.begin()); // ahead of the first connection
    pressure(12);

    std::cout << "Any object can have a signal, which its changed() fires.\n";
    objref tank;
    cObj::readobj("{level= 3; }", tank);
    cObjSlot const watch(*tank, show, tank->force_changed_signal());
    (*tank)["level"] = cat::of(4); // fires nothing
    tank->changed();
}
