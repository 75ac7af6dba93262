#pragma once
// What the compilers differ in. Standard C++20 on x86-64 Linux with g++ or clang; nothing else is
// supported.

// The macro names a file that does not exist: the compiler stops there, with the error in sight.
#if __cplusplus < 202002L
#error "qrv needs C++20: compile with -std=c++20 or a later one"
#define QRV_STOP "qrv/needs_cxx20"
#include QRV_STOP
#endif

// QRV_API marks what the shared library exports; all else is hidden.
#define QRV_API __attribute__((visibility("default")))

// Checks a printf-like call: position of the format and of its first argument, both from 1.
#define QRV_PRINTF(format_at, first_at) __attribute__((format(printf, format_at, first_at)))
