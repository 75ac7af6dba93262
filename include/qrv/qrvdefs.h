#pragma once
// Forward declarations of the classes that many headers name, and their handles. They have the
// export mark, so that an instance of a template with such a class is exported even if its file
// includes only the declaration.
//
// One thread at a time: no part of the library may be used by two threads at once. Counts of owners
// are plain integers, and reading a value changes them too.

#include "qrv/ccomp.h"

class QRV_API cShared;
class QRV_API cObjBase;
class QRV_API cObj;
class QRV_API cTypeObj;
class QRV_API cExeObj;
class QRV_API cExeFunction;
class QRV_API cAttrNode;
class QRV_API cAttrHash;
class QRV_API cMapObj;
class QRV_API cVectorObj;
class QRV_API cSetObj;
class QRV_API cIterObj;
class QRV_API cAttr;
class QRV_API cAttspec;
class QRV_API cSSBase;
class QRV_API cConnection;
class QRV_API cSignal;
class QRV_API cSigInfo;
class QRV_API cErr;
class QRV_API cErrStream;
class QRV_API cErrHandler;

template <class T> class QRV_API cSignal1;

template <class T> class QRV_API cRefTraits;
template <class T, class Traits = cRefTraits<T>> class QRV_API cRef;

using objref = cRef<cObj, cRefTraits<cObj>>;
using typeref = cRef<cTypeObj, cRefTraits<cTypeObj>>;
using hashref = cRef<cAttrHash, cRefTraits<cAttrHash>>;
