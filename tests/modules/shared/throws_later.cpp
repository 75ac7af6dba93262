// A module that connects a slot to the error signal. The slot throws an exception of the library.
#include "tests/modules/shared/module.h"

#include "qrv/core/ceros.h"

namespace {
class Thrower {
  public:
    Thrower() { cat::sig_error().connect(slot_); }

  private:
    void refuse(cErr &) { throw cException("thrown at an error"); }

    cSlot1<Thrower, cErr &> slot_{this, &Thrower::refuse};
};
} // namespace

QRV_SET_UP { static Thrower const thrower; }
