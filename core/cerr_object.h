#pragma once
// These begin an error on eros(): each clears the stream, sets the code and writes the beginning of
// the message. The caller writes the rest and calls raise_eros().

#include "diagnostics/cerr_names.h"
#include "qrv/core/ceros.h"

cErrStream &begin_error(cErrText const &error);
// For an error about an object; begins with "Attr value, type '...': ".
cErrStream &begin_error(cErrText const &error, cObj const &object);
// For an error about a refused attribute; begins with "Setattr in object type '...', key '...': ".
// RUNS USER CODE (to write the key) before it changes the stream.
cErrStream &begin_error(cErrText const &error, cObj const &object, objref const &key);
