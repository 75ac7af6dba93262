#pragma once
// Whether the tests run under AddressSanitizer, where a program takes several times as long. Tests
// of very many similar cases take fewer of them there: the other builds run them all.

namespace test {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool sanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif
#else
constexpr bool sanitized = false;
#endif

} // namespace test
