#pragma once
// Forward declarations of the classes that many headers name, and the handles to them.
// One thread at a time: no part of the library may be used by two threads at once.

#include "qrv/ccomp.h"

class cShared;
class cObjBase;
class cObj;
class cTypeObj;
class cExeObj;
class cExeFunction;
class cAttrNode;
class cAttrHash;
class cMapObj;
class cVectorObj;
class cSetObj;
class cIterObj;
class cAttr;
class cAttspec;
class cSSBase;
class cConnection;
class cErr;
class cErrStream;
class cErrHandler;

template <class T> class cRefTraits;
template <class T, class Traits = cRefTraits<T>> class cRef;

using objref = cRef<cObj, cRefTraits<cObj>>;
using typeref = cRef<cTypeObj, cRefTraits<cTypeObj>>;
using hashref = cRef<cAttrHash, cRefTraits<cAttrHash>>;
