#pragma once
// The version text, and functions about the stack. These refer to the stack of the thread that
// loaded the library; on any other thread their results are meaningless.
//
//   low addresses                                                          high addresses
//   ...  | frame of cIsOnStack | its caller | ... | main | what came before main |
//                              here                                              base
// Guards against deep recursion use cat::stack_low() instead, which knows the running thread.

#include "qrv/ccomp.h"

// The address at which the stack began: all frames are below. Determined once, when the library is
// loaded.
QRV_API void const *cGetStackBase();

// An address in the call's own frame: near the stack's other end while the caller runs.
QRV_API void const *cGetStackAddress();

// Whether `p` is between the call's own frame (exclusive) and the base (inclusive). True for every
// local of a running function; false for static and allocated objects and for null. Also correct on
// a stack that grows upwards.   O(1)
QRV_API bool cIsOnStack(void const *p);

// Product and version, and on a second line its makers, without a line end after it: the text that
// is printed when the library is loaded. Borrowed, valid for the whole process; do not write to it.
QRV_API char *cversionstring();
