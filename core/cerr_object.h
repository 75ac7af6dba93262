#pragma once
// Beginning an error of the list on eros(): each clears the stream, sets the code and writes what
// the message begins with. The caller writes the rest and calls raise_eros().

#include "diagnostics/cerr_names.h"
#include "qrv/core/ceros.h"

cErrStream &begin_error(cErrText const &error);
// About an object: "Attr value, type '...': " first.
cErrStream &begin_error(cErrText const &error, cObj const &object);
// About a refused attribute: "Setattr in object type '...', key '...': " first.
// RUNS USER CODE (the key's written form) before the stream is touched.
cErrStream &begin_error(cErrText const &error, cObj const &object, objref const &key);
