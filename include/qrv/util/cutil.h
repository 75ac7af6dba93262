#pragma once
// Small helpers: the version text, and questions about the stack.
// What is asked about the stack means that of the thread that loaded the library; on any other the
// answers are worth nothing.
//
//   low addresses                                                          high addresses
//   ...  | frame of cIsOnStack | its caller | ... | main | what came before main |
//                              here                                              base
// Guards against deep recursion take cat::stack_low() instead, which knows the running thread.

#include "qrv/ccomp.h"

// The end at which the stack began: all frames lie below. Asked once, when the library is loaded.
QRV_API void const *cGetStackBase();

// An address in the call's own frame: near the stack's other end for as long as the caller runs.
QRV_API void const *cGetStackAddress();

// Does `p` lie between the call's own frame, itself left out, and the base, the base included? True
// for every local of a running function; false for static and allocated objects and for null. Stays
// right on a stack that grows upwards.   O(1)
QRV_API bool cIsOnStack(void const *p);

// Product and version, and on a second line its makers, without a line end behind: what is printed
// when the library is loaded. Borrowed, for good; not to be written to.
QRV_API char *cversionstring();
