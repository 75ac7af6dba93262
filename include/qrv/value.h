#pragma once
// The header for application programs: qrv::value and what works with it. The object system
// underneath is in qrv/qrv.h.

#include "qrv/diagnostics/cconsole.h"
#include "qrv/value/build.h"
#include "qrv/value/change.h"
#include "qrv/value/convert.h"
#include "qrv/value/declare.h"
#include "qrv/value/document.h"
#include "qrv/value/errors.h"
#include "qrv/value/format.h"
#include "qrv/value/items.h"
#include "qrv/value/kind.h"
#include "qrv/value/reference.h"
#include "qrv/value/text.h"
#include "qrv/value/value.h"
