#pragma once
// A fingerprint of scalars, brackets and separators in their order. The fingerprint of the given
// values equals that of the written text, unless the text would be read as other values.

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <variant>

using cScalar = std::variant<std::nullptr_t, bool, int, double, std::string_view>; // null is #nil

class cValuePrint {
  public:
    void add(cScalar const &value);
    void add_mark(char mark);
    void add_text(std::string_view text); // whole tokens of the file format
    bool operator==(cValuePrint const &) const = default;

  private:
    void add_token(int code, std::string_view text);
    void mix(std::size_t kind, std::uint64_t value);

    std::uint64_t hash_ = 0;
};
