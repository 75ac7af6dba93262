#pragma once
// std::format of values, if the standard library has std::format:
//
//   std::format("{} is too high, the limits are {:m}", high, device["limits"])
//
// {} is the text on one line without comments, {:m} the text on many lines; dump() describes both.

#include "qrv/value/text.h"

#include <version>

#ifdef __cpp_lib_format

#include <algorithm>
#include <concepts>
#include <format>

// parse() throws std::format_error for any other specification. format() throws error if a part of
// the value has no text, as dump() does, and path_error for a reference without a value.   O(size)
template <class T>
requires(std::derived_from<T, qrv::value> ||
         std::same_as<T, qrv::reference>) struct std::formatter<T, char> {
    template <class Context> constexpr auto parse(Context &context) {
        auto at = context.begin();
        if (at != context.end() && *at == 'm') {
            one_line_ = false;
            ++at;
        }
        if (at != context.end() && *at != '}')
            throw std::format_error("a qrv::value has {} and {:m}");
        return at;
    }
    template <class Context> auto format(T const &v, Context &context) const {
        return std::ranges::copy(qrv::dump(v, {.one_line = one_line_}), context.out()).out;
    }

  private:
    bool one_line_ = true;
};

#ifdef __cpp_lib_format_ranges // formats all ranges, and a value is a range
template <class T>
requires(std::derived_from<T, qrv::value>) inline constexpr std::range_format std::format_kind<T> =
    std::range_format::disabled;
#endif

#endif
