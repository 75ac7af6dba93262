#include "tools/qrv/json/value_print.h"

#include "qrv/text/scan/cattrscanner.h"
#include "qrv/text/write/cwriter.h"

#include <bit>
#include <charconv>
#include <functional>
#include <sstream>
#include <string>

namespace {

struct cBits {
    std::uint64_t operator()(std::nullptr_t) const { return 0; }
    std::uint64_t operator()(bool value) const { return value ? 1 : 0; }
    std::uint64_t operator()(int value) const { return static_cast<std::uint32_t>(value); }
    std::uint64_t operator()(double value) const { return std::bit_cast<std::uint64_t>(value); }
    std::uint64_t operator()(std::string_view value) const {
        return std::hash<std::string_view>()(value);
    }
};

template <class T> T number(std::string_view text) {
    T value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

} // namespace

void cValuePrint::add(cScalar const &value) { mix(value.index(), std::visit(cBits(), value)); }

void cValuePrint::add_mark(char mark) {
    mix(std::variant_size_v<cScalar>, static_cast<unsigned char>(mark));
}

void cValuePrint::add_text(std::string_view text) {
    std::istringstream is{std::string(text)};
    cAttrScanner const tokens(is);
    for (cToken token = tokens.next_token(); !cat::is_end(token); token = tokens.next_token())
        add_token(token.code, token.text);
}

void cValuePrint::add_token(int code, std::string_view text) {
    if (code == tkInt) return add(number<int>(text));
    if (code == tkDouble) return add(number<double>(text));
    if (code == tkBool) return add(text == "true");
    if (code == tkIdent) return add(text);
    if (code == tkConst && text == "#nil") return add(nullptr);
    if (code == tkString) {
        std::string plain(text.substr(1, text.size() - 2));
        cat::unescape(plain);
        return add(std::string_view(plain));
    }
    mix(std::variant_size_v<cScalar>, static_cast<std::uint64_t>(code));
}

void cValuePrint::mix(std::size_t kind, std::uint64_t value) {
    for (std::uint64_t const part : {static_cast<std::uint64_t>(kind), value}) {
        hash_ = (hash_ ^ part) * 0x9E3779B97F4A7C15u;
        hash_ ^= hash_ >> 32;
    }
}
