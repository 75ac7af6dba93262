#pragma once
// Whether the tests run under AddressSanitizer, which makes a program several times slower. Tests
// of very many similar cases use fewer of them there: the other builds run them all.

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
