#pragma once
// Random trees with sharing, comments, layouts and unusual strings, the same for the same seed.

#include "tests/text/write_support.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace test {

inline double random_double(std::mt19937_64 &random) {
    auto const value = std::bit_cast<double>(static_cast<std::uint64_t>(random()));
    return std::isfinite(value) ? value : 0.5;
}

inline float random_float(std::mt19937_64 &random) {
    auto const value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    return std::isfinite(value) ? value : 0.5f;
}

class cRandomTree {
  public:
    // With `plain` only values that plain text preserves.
    explicit cRandomTree(std::uint64_t seed, bool plain = false) : random_(seed), plain_(plain) {}

    objref tree(int depth) {
        if (depth > 0 && below(3) != 0) return container(depth);
        if (!made_.empty() && below(6) == 0) return made_[below(made_.size())];
        objref const value = scalar();
        if (below(8) == 0 && !cat::find_const(value.get())) value->set_comment(comment(), true);
        made_.push_back(value);
        return value;
    }

    objref container(int depth) {
        auto const kind = below(3);
        objref const made = kind == 0   ? new_map(layout())
                            : kind == 1 ? new_vector(layout())
                                        : new_set(layout());
        if (below(6) == 0) made->set_comment(comment(), true);
        for (auto n = below(6); n; --n) {
            objref const value = plain_ && kind == 2 ? scalar() : tree(depth - 1);
            if (kind == 0)
                put(made, key(), value);
            else
                made->append(value);
        }
        made_.push_back(made);
        return made;
    }

  private:
    size_t below(size_t n) { return static_cast<size_t>(random_() % n); }

    char const *layout() {
        static constexpr char const *layouts[] = {nullptr, "sc", "wc", "sc", "wc", ""};
        return layouts[below(6)];
    }
    std::string comment() {
        static constexpr char const *comments[] = {" // a", " /* b */", "\n  // c\n  // d",
                                                   "\t// \xE4", " /* two\n lines */ // e"};
        return comments[below(5)];
    }
    std::string text() {
        static constexpr char const *pieces[] = {
            "a", "B_9", " ", "\n", "\\", "\"", "'",  "true", "/", "//", "/*",       "*/",
            ")", "(",   "#", "\t", "\r", ";",  "<<", "9",    "-", ".",  "\xC3\xA4", "\x01"};
        std::string result;
        for (auto n = below(5); n; --n) result += pieces[below(std::size(pieces))];
        if (!plain_) return result;
        std::erase(result, '\n');
        return result == "true" ? "truth" : result;
    }
    double wide() {
        return plain_ ? static_cast<double>(below(4000)) / 4 - 500 : random_double(random_);
    }
    float narrow() {
        return plain_ ? static_cast<float>(below(4000)) / 4 - 500 : random_float(random_);
    }
    objref key() {
        switch (below(6)) {
        case 0:
            return cat::of(static_cast<int>(random_()));
        case 1:
            return cat::of(wide());
        case 2:
            return cat::of(narrow());
        default: {
            std::string const name = text();
            return cat::of(plain_ && name.starts_with('#') ? "x" + name : name);
        }
        }
    }
    objref scalar() {
        switch (below(7)) {
        case 0:
            return cat::of(static_cast<int>(random_()));
        case 1:
            return cat::of(wide());
        case 2:
            return cat::of(narrow());
        case 3:
            return cat::of(below(2) == 0);
        case 4: {
            objref const constants[] = {cat::nil(), cat::btrue(), cat::bfalse()};
            return constants[below(3)];
        }
        default:
            return cat::of(text());
        }
    }

    std::mt19937_64 random_;
    bool plain_;
    std::vector<objref> made_;
};

} // namespace test
