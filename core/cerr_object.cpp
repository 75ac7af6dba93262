// Errors that tell of an object, and the one way of sending what was composed.

#include "core/cregistry.h"
#include "core/ctext_hooks.h"
#include "qrv/base/csignal.h"
#include "qrv/core/cobjd.h"
#include "qrv/diagnostics/cerr.h"

#include <ostream>

cErrStream &eros(unsigned int code, cObj const &object) {
    cErrStream &err = eros();
    err.clear();
    err.set_code(code | 0x40000000);
    err << "Attr value, type '" << object.type().name() << "': ";
    return err;
}

cErrStream &eros_setattr(cObj const &object, objref const &key) {
    std::string const text =
        text_hooks.as_text(key); // writing a key may compose an error of its own
    cErrStream &err = eros();
    err.clear();
    err.set_code(0x40020000);
    err << "Setattr in object type '" << object.type().name() << "', key '" << text << "': ";
    return err;
}

bool raise_eros() {
    cErr travelling(eros()); // the stream stays free for errors that arise in the slots
    cat::sig_error()(travelling);
    return (travelling.code() & 0xC0000000u) == 0;
}
