#pragma once
// Whether the program runs under AddressSanitizer, which makes it several times slower. Tests of
// very many similar cases use fewer of them there: the other builds run them all.

extern "C" void __asan_init() __attribute__((weak));

namespace test {

inline bool const sanitized = &__asan_init != nullptr;

} // namespace test
