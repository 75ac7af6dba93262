#include "tools/qrv/rules/doubtful.h"

#include "qrv/text/write/cwriter.h"
#include "tools/qrv/rules/literals.h"

#include <charconv>
#include <deque>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

using cat::SourceEntry;
using cat::SourceMap;
using cat::Span;

bool is_closing(char c) { return c == ')' || c == '}' || c == ']' || c == '>'; }
bool is_word_byte(char c) {
    return c == '_' || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c & 0x80) != 0;
}
// A string without quotes, as a key.
bool is_word(std::string_view text) {
    return is_word_byte(text[0]) && !is_closing(text.back()) && text != "true" && text != "false";
}
bool is_quote(char c) { return c == '"' || c == '\''; }
bool is_separator(char c) { return c == ';' || c == ','; }

// What the reader does with a repeated key depends on the kinds of both values.
enum class cKind : unsigned char { map, vector, set, other };

bool is_list(cKind kind) { return kind == cKind::vector || kind == cKind::set; }
bool is_mergeable(cKind kind) { return kind == cKind::map || kind == cKind::set; }

// Walks over the entries in file order, and finds in one pass all that may not be meant.
class cWalk {
  public:
    cWalk(std::string const &bytes, SourceMap const &map,
          std::function<void(cDoubtful const &)> const &found)
        : bytes_(bytes), map_(map), found_(found) {}

    void walk() {
        for (size_t number = 0; number < map_.size(); ++number) take(map_.entry(number));
        while (!open_.empty()) close();
    }

  private:
    // A container whose entries come. Where maps are merged, `home` is the first of them.
    struct cOpen {
        SourceEntry entry;
        size_t home;
        cKind kind;
        std::uint32_t end;                                 // of its last entry so far
        std::unordered_map<std::uint32_t, Span> members{}; // of a set, by anid
    };
    // A key of a map: keys that are equal have the same letter and text.
    struct cKey {
        size_t home;
        char letter;
        std::string_view text;
        bool operator==(cKey const &) const = default;
    };
    struct cHash {
        size_t operator()(cKey const &key) const {
            return std::hash<std::string_view>()(key.text) ^
                   (key.home * 0x9E3779B97F4A7C15u + static_cast<unsigned char>(key.letter));
        }
    };
    // The value that a key has so far.
    struct cHolder {
        Span first; // key
        Span value;
        size_t home;
        size_t written_in; // the container
        cKind kind;
    };

    void take(SourceEntry const &entry) {
        while (!open_.empty() && open_.back().entry.number != entry.parent) close();
        size_t home = entry.number;
        if (!open_.empty()) {
            find_empty_item(entry.all().begin);
            open_.back().end = entry.all().end;
            if (!entry.key.empty()) {
                check_literal(entry.key);
                home = check_key(entry);
            } else if (open_.back().kind == cKind::set) {
                check_member(entry);
            }
        }
        if (entry.reference || entry.value.empty()) return;
        if (entry.open.empty()) {
            check_literal(entry.value);
            check_word(entry);
        } else {
            open_.push_back({entry, home, kind_of(entry), entry.open.end});
        }
    }

    void close() {
        find_empty_item(open_.back().entry.close.begin);
        open_.pop_back();
    }

    std::string_view text_of(Span span) const {
        return std::string_view(bytes_).substr(span.begin, span.size());
    }

    cKind kind_of(SourceEntry const &entry) const {
        if (entry.reference) return cKind::other;
        if (!entry.type.empty()) return kind_named(text_of(entry.type));
        switch (entry.open.empty() ? ' ' : bytes_[entry.open.begin]) {
        case '{':
            return cKind::map;
        case '[':
            return cKind::vector;
        case '<':
            return cKind::set;
        default:
            return cKind::other;
        }
    }
    static cKind kind_named(std::string_view type) {
        return type == "map"      ? cKind::map
               : type == "vector" ? cKind::vector
               : type == "set"    ? cKind::set
                                  : cKind::other;
    }

    void check_literal(Span span) const {
        std::string_view const text = text_of(span);
        if (is_quote(text[0])) {
            size_t const at = needless_escape(text);
            if (at != text.npos)
                found_({cWarning::unknown_escape, escape_at(span.begin + at), span});
        } else if (is_integer(text)) {
            if (without_leading_zeros(text)) found_({cWarning::leading_zero, span, span});
            if (wrapped(text)) found_({cWarning::wrapped_number, span, span});
        }
    }

    // The \ and the whole character after it.
    Span escape_at(size_t offset) const {
        size_t end = offset + 2;
        while (end < bytes_.size() && (bytes_[end] & 0xC0) == 0x80) ++end;
        return {static_cast<std::uint32_t>(offset), static_cast<std::uint32_t>(end)};
    }

    // In the brackets of a type, such as those of a choice, a word may be more than a string.
    void check_word(SourceEntry const &entry) const {
        bool const in_type =
            entry.key.empty() && !open_.empty() && !open_.back().entry.type.empty();
        if (is_word_byte(bytes_[entry.value.begin]) && !in_type &&
            !looks_like(text_of(entry.value)).empty())
            found_({cWarning::strings, entry.value, entry.value});
    }

    void check_member(SourceEntry const &entry) {
        if (entry.anid == 0) return; // it was refused
        auto const [member, is_new] = open_.back().members.try_emplace(entry.anid, entry.value);
        if (!is_new) found_({cWarning::duplicate_member, entry.value, entry.value, member->second});
    }

    // One separator after an item belongs to it. Brackets that are not closed are an error, and
    // what is inside may be read out of step.
    void find_empty_item(std::uint32_t end) const {
        if (!is_list(open_.back().kind) || open_.back().entry.close.empty()) return;
        std::uint32_t const begin = open_.back().end;
        for (std::uint32_t at = begin; at < end; ++at) {
            if (is_separator(bytes_[at]))
                return found_({cWarning::empty_item, {at, at + 1}, {begin, end}});
            std::string_view const start = std::string_view(bytes_).substr(at, 2);
            size_t after = bytes_.npos;
            if (start == "//")
                after = bytes_.find('\n', at);
            else if (start == "/*")
                after = bytes_.find("*/", at + 2);
            else
                continue;
            if (after >= end) return;
            at = static_cast<std::uint32_t>(after) + (start == "/*" ? 1 : 0);
        }
    }

    // --- repeated keys ---

    // Returns the home of the value's entries.
    size_t check_key(SourceEntry const &entry) {
        cOpen const &open = open_.back();
        cHolder const now{entry.key, entry.value, entry.number, open.entry.number, kind_of(entry)};
        auto const [place, is_new] = keys_.try_emplace(key_of(open.home, entry.key), now);
        if (is_new) return entry.number;
        cHolder &holder = place->second;
        bool const same_map = std::exchange(holder.written_in, now.written_in) == now.written_in;
        if (merges(holder.kind, now.kind, same_map)) return holder.home;
        // The entry of a map that is merged into another one.
        bool const is_refused = !same_map && holder.kind == cKind::map;
        found_({cWarning::duplicate_key,
                entry.key,
                {entry.key.begin, entry.value.begin + 1},
                holder.first,
                is_refused ? now.value : holder.value});
        if (is_refused) return entry.number;
        holder.value = now.value;
        holder.home = now.home;
        holder.kind = now.kind;
        return holder.home;
    }

    // In one map, maps and sets are merged. What is written in two maps that are merged is copied
    // from one into the other: lists take all values, and maps take lists and maps.
    static bool merges(cKind before, cKind now, bool same_map) {
        if (same_map) return is_mergeable(before) && is_mergeable(now);
        return is_list(before) || (before == cKind::map && now != cKind::other);
    }

    cKey key_of(size_t home, Span span) {
        std::string_view const text = text_of(span);
        if (is_word(text)) return {home, 's', text};
        if (is_quote(text[0])) {
            std::string_view const inside = text.substr(1, text.size() - 2);
            if (inside.find('\\') == inside.npos) return {home, 's', inside};
            std::string plain(inside);
            cat::unescape(plain);
            return {home, 's', keep(std::move(plain))};
        }
        if (is_integer(text)) return {home, 'i', keep(std::to_string(number_of(text)))};
        return {home, 'o', text};
    }

    std::string_view keep(std::string text) { return kept_.emplace_back(std::move(text)); }

    static int number_of(std::string_view text) {
        if (std::optional<int> const stored = wrapped(text)) return *stored;
        bool const is_hexadecimal = text.size() > 2 && (text[1] | 0x20) == 'x';
        if (is_hexadecimal) text.remove_prefix(2);
        if (text[0] == '+') text.remove_prefix(1);
        int number = 0;
        std::from_chars(text.data(), text.data() + text.size(), number, is_hexadecimal ? 16 : 10);
        return number;
    }

    std::string const &bytes_;
    SourceMap const &map_;
    std::function<void(cDoubtful const &)> const &found_;
    std::vector<cOpen> open_;
    std::unordered_map<cKey, cHolder, cHash> keys_;
    std::deque<std::string> kept_; // keys that are not written as they are
};

} // namespace

void find_doubtful(std::string const &bytes, cat::SourceMap const &map,
                   std::function<void(cDoubtful const &)> const &found) {
    cWalk(bytes, map, found).walk();
}
