#pragma once
// The error channel of the process: the stream on which an error is composed, the signal that sends
// it and the handler at its start. All start the object core on first use.

#include "qrv/diagnostics/cerr.h"

// The process-wide error stream, as it is.
QRV_API cErrStream &eros();

// Begins an error about `object`: clears the stream, sets `code` | 0x40000000 and writes
// "Attr value, type '", the type's name and "': ". The caller writes the rest.
QRV_API cErrStream &eros(unsigned int code, cObj const &object);

// Begins the error 0x40020000 of a refused attribute: "Setattr in object type '", the type's name,
// "', key '", the key in object notation and "': ". RUNS USER CODE (the key's written form)
// before the stream is touched.
QRV_API cErrStream &eros_setattr(cObj const &object, objref const &key);

// Sends a copy of the error on eros() over cat::sig_error(). True when the code was lowered below
// 0x40000000 on the way, that is, when the operation may continue. Throws what the handlers throw.
QRV_API bool raise_eros();

namespace cat {

// Slots are reached in order of connection, the handler first; each may change the code.
QRV_API cSignal1<cErr &> &sig_error();

// The library's own handler; its masks at the start are 0x90000000, 0, 0.
QRV_API cErrHandler &errhandler();

} // namespace cat
