#include "tools/qrv/json/repetitions.h"

#include "tools/qrv/json/places.h"

namespace {

// The end of the value that begins with the current token.
size_t end_of_value(cJsonPlaces places, std::string const &bytes) {
    for (size_t depth = 0;; places.next()) {
        char const c = bytes[places.start()];
        if (c == '{' || c == '[') ++depth;
        if (c == '}' || c == ']') --depth;
        if (depth == 0) return places.end();
    }
}

// The first token of an entry's value. The key is the first token after the offset.
cJsonPlaces value_after(std::string const &bytes, size_t offset) {
    cJsonPlaces places(bytes, offset);
    places.next();
    places.next();
    return places;
}

} // namespace

void cRepetitions::add(size_t first, size_t before, size_t end) {
    parts_.insert_or_assign(first, cPart{true, before});
    parts_.insert_or_assign(before, cPart{false, end});
}

std::string cRepetitions::removed_from(std::string const &bytes) const {
    std::string text;
    text.reserve(bytes.size());
    copy(bytes, 0, bytes.size(), text);
    return text;
}

// The recursion is as deep as the nesting of objects with repetitions, which the reader limits.
void cRepetitions::copy(std::string const &bytes, size_t from, size_t to, std::string &text) const {
    for (auto next = parts_.lower_bound(from); next != parts_.end() && next->first < to;
         next = parts_.lower_bound(from)) {
        auto const [offset, part] = *next;
        if (!part.is_key) {
            text.append(bytes, from, offset - from);
            from = part.other;
            continue;
        }
        cJsonPlaces const replaced = value_after(bytes, offset);
        text.append(bytes, from, replaced.start() - from);
        copy(bytes, value_after(bytes, part.other).start(), parts_.at(part.other).other, text);
        from = end_of_value(replaced, bytes);
    }
    text.append(bytes, from, to - from);
}
