#pragma once
// The interface that a test and the module `cross` share.

#include "qrv/base/csignal.h"
#include "qrv/core/cobj.h"

struct QRV_API Cross {
    Cross() = default;
    Cross(Cross const &) = delete;
    Cross &operator=(Cross const &) = delete;
    virtual ~Cross() = default;

    virtual void fire() = 0;                            // emits the module's signal
    virtual void fail() = 0;                            // throws a cErr
    virtual objref value() = 0;                         // an object that the module has created
    virtual void listen(cSignal1<int &> const &to) = 0; // the slot adds 1, and throws at 10

    cSignal1<char const *> signal;
};
