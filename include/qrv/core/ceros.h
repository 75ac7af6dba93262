#pragma once
// The error channel of the process: the stream on which an error is composed, the signal that sends
// it, and the handler that is connected first. Each starts the object core on first use.

#include "qrv/diagnostics/cerr.h"

// The process-wide error stream, unchanged.
QRV_API cErrStream &eros();

// Begins an error about `object`: clears the stream, sets the code to `code` | 0x40000000 and
// writes "Attr value, type '", the type's name and "': ". The caller appends the rest.
QRV_API cErrStream &eros(unsigned int code, cObj const &object);

// Begins the error 0x40020000 of a refused attribute: "Setattr in object type '", the type's name,
// "', key '", the key in object notation and "': ". RUNS USER CODE (writing the key) before it
// accesses the stream.
QRV_API cErrStream &eros_setattr(cObj const &object, objref const &key);

// Sends a copy of the error on eros() by cat::sig_error(). True if a handler has lowered the code
// below 0x40000000, which means that the operation may continue. Throws what the handlers throw.
// RUNS USER CODE
QRV_API bool raise_eros();

namespace cat {

// Calls its slots in the order of connection, the handler first; each may change the code.
QRV_API cSignal1<cErr &> &sig_error();

// The library's own handler; its initial masks are 0x90000000, 0, 0.
QRV_API cErrHandler &errhandler();

} // namespace cat
