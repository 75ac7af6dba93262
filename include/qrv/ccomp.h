#pragma once
// Macros that depend on the compiler. The library supports standard C++20 on x86-64 Linux with g++
// or clang.

// After #error alone the compiler would continue and print many more errors. A missing file stops
// it.
#if __cplusplus < 202002L
#error "qrv needs C++20: compile with -std=c++20 or a later one"
#define QRV_STOP "qrv/needs_cxx20"
#include QRV_STOP
#endif

// QRV_API marks what the shared library exports; everything else is hidden.
#define QRV_API __attribute__((visibility("default")))

// Makes the compiler check the calls of a printf-like function. The two numbers are the positions,
// from 1, of the format and of the first argument that it formats; 0 if there is only a va_list.
#define QRV_PRINTF(format_at, first_at) __attribute__((format(printf, format_at, first_at)))
