// Errors about an object, and the sending of a composed error.

#include "core/cerr_object.h"

#include "core/cregistry.h"
#include "core/ctext_hooks.h"
#include "qrv/base/csignal.h"
#include "qrv/core/cobjd.h"

#include <ostream>

cErrStream &begin_error(cErrText const &error) {
    cErrStream &err = eros();
    err.clear();
    err.set_code(error.code);
    err.set_kind(error.kind);
    err << error.text;
    return err;
}

cErrStream &begin_error(cErrText const &error, cObj const &object) {
    cErrStream &err = eros(error.code, object);
    err.set_kind(error.kind);
    err << error.text;
    return err;
}

cErrStream &begin_error(cErrText const &error, cObj const &object, objref const &key) {
    cErrStream &err = eros_setattr(object, key);
    err.set_kind(error.kind);
    err << error.text;
    return err;
}

cErrStream &eros(unsigned int code, cObj const &object) {
    cErrStream &err = eros();
    err.clear();
    err.set_code(code | cErr::bad_code);
    err << "Attr value, type '" << cNamed::type(object.type().name()) << "': ";
    return err;
}

cErrStream &eros_setattr(cObj const &object, objref const &key) {
    std::string const text =
        text_hooks.as_text(key); // first, since writing a key may itself compose an error
    cErrStream &err = eros();
    err.clear();
    err.set_code(err_setattr.code);
    err.set_kind(err_setattr.kind);
    err << "Setattr in object type '" << cNamed::type(object.type().name()) << "', key '"
        << cNamed::key(text) << "': ";
    return err;
}

bool raise_eros() {
    cErr travelling(eros()); // frees the stream for errors that slots compose
    cat::sig_error()(travelling);
    return !travelling.isbad();
}
