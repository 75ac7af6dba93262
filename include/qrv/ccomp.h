#pragma once
// Differences of compilers. Only standard C++20 on x86-64 Linux with g++ or clang is supported.

// The macro names a file that does not exist, so the compiler stops here, next to the error.
#if __cplusplus < 202002L
#error "qrv needs C++20: compile with -std=c++20 or a later one"
#define QRV_STOP "qrv/needs_cxx20"
#include QRV_STOP
#endif

// QRV_API marks what the shared library exports; everything else is hidden.
#define QRV_API __attribute__((visibility("default")))

// Checks the arguments of a printf-like function: the positions, from 1, of the format and of its
// first argument.
#define QRV_PRINTF(format_at, first_at) __attribute__((format(printf, format_at, first_at)))
