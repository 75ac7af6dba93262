#include "tools/qrv/rules/doubtful.h"

#include "qrv/text/scan/cattrscanner.h"
#include "qrv/text/write/cwriter.h"
#include "qrv/util/cintformat.h"
#include "tools/qrv/output/characters.h"
#include "tools/qrv/output/escaped.h"
#include "tools/qrv/rules/literals.h"

#include <algorithm>
#include <charconv>
#include <deque>
#include <iterator>
#include <optional>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace {

using cat::SourceEntry;
using cat::SourceMap;
using cat::Span;

bool is_word_byte(char c) {
    return c == '_' || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c & 0x80) != 0;
}
// Is this a string without quotes that could be a key?
bool is_word(std::string_view text) {
    return is_word_byte(text[0]) && !cat::is_closing(text.back()) && text != "true" &&
           text != "false";
}

// Does the number begin with 0 or end with u? All other numbers are read as they look.
bool may_mislead(std::string_view number) {
    size_t const first = number[0] == '-' || number[0] == '+' ? 1 : 0;
    return number.size() > first + 1 && (number[first] == '0' || (number.back() | 0x20) == 'u');
}

// The reader's treatment of a repeated key depends on the kinds of both values.
enum class cKind : unsigned char { map, vector, set, other };

bool is_list(cKind kind) { return kind == cKind::vector || kind == cKind::set; }
bool is_mergeable(cKind kind) { return kind == cKind::map || kind == cKind::set; }

// Walks over the entries in file order, and finds everything in one pass.
class cWalk {
  public:
    cWalk(std::string const &bytes, SourceMap const &map,
          std::function<void(cDoubtful const &)> const &found)
        : bytes_(bytes), map_(map), found_(found) {}

    void walk() {
        has_repeated_keys_ = has_repeated_keys();
        for (size_t number = 0; number < map_.size(); ++number) take(map_.entry(number));
        while (!open_.empty()) close();
        find_comments_inside();
    }

  private:
    static constexpr std::uint32_t none = 0xFFFFFFFFu;

    // The keys of a map, as a linked list in keys_.
    struct cList {
        std::uint32_t first = none;
        std::uint32_t last = none;
    };
    // Equal keys have the same letter and text.
    struct cKey {
        std::uint32_t home; // the number of its map
        char letter;
        std::string_view text;
        bool operator==(cKey const &) const = default;
    };
    struct cHash {
        size_t operator()(cKey const &key) const {
            return std::hash<std::string_view>()(key.text) ^
                   (size_t{key.home} * 0x9E3779B97F4A7C15u +
                    static_cast<unsigned char>(key.letter));
        }
    };
    // A key with its value so far, which may be written in several parts.
    struct cHolder {
        cKey key;
        Span first;         // the first occurrence of the key
        std::uint32_t part; // the last part, in parts_
        std::uint32_t home; // the home of the keys inside the value
        cKind kind;
        cList inside = {};
        std::uint32_t next = none;
    };
    // The first occurrence of a value in a set.
    struct cMember {
        size_t set = SourceEntry::none;
        Span value = {};
    };
    struct cPart {
        Span value;
        std::uint32_t before; // the previous part
    };
    // A container whose entries come next.
    struct cOpen {
        SourceEntry entry;
        cKind kind;
        std::uint32_t end;           // the end of its last entry so far
        std::uint32_t holder = none; // the holder that gets the keys
        bool continues = false;      // it adds to the holder's present value
        cList keys = {};
        std::uint32_t without_key = 0; // the number of entries so far without a key
        Span before = {};              // in a list, the previous item
        bool is_after_semicolon = false;
        bool is_after_comma = false; // the item follows a comma without a blank
        Span comma = {};             // two numbers with only a comma between them
        bool has_semicolon = false;  // there is a semicolon between items
    };

    void take(SourceEntry const &entry) {
        while (!open_.empty() && open_.back().entry.number != entry.parent) close();
        cOpen open{entry, kind_of(entry), entry.open.end};
        if (!open_.empty()) {
            find_empty_item(entry.all().begin);
            open_.back().end = entry.all().end;
            if (is_list(open_.back().kind)) note_separator(entry);
            if (!entry.key.empty()) {
                check_literal(entry.key);
                if (has_repeated_keys_)
                    check_key(open, entry.key, key_of(number_of(open_.back().entry), entry.key));
            } else if (open_.back().kind == cKind::map && open.kind == cKind::map) {
                if (has_repeated_keys_) check_key(open, entry.open, next_number());
            } else if (open_.back().kind == cKind::set) {
                check_member(entry);
            }
        }
        if (entry.reference || entry.value.empty()) return;
        if (entry.open.empty()) {
            check_literal(entry.value);
            check_word(entry);
        } else {
            open_.push_back(open);
            find_mixed_brackets(open);
        }
    }

    void close() {
        cOpen const &open = open_.back();
        find_empty_item(open.entry.close.begin);
        if (open.has_semicolon && !open.comma.empty() && !open.entry.close.empty())
            found_({cWarning::decimal_comma, open.comma, open.comma});
        if (open.continues)
            merge(open.holder, open.keys);
        else if (open.holder != none)
            holders_[open.holder].inside = open.keys;
        open_.pop_back();
    }

    // Fits into 32 bits, since text has less than 4 GiB.
    static std::uint32_t number_of(SourceEntry const &entry) {
        return static_cast<std::uint32_t>(entry.number);
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
        } else if (may_mislead(text) && is_integer(text)) {
            if (without_leading_zeros(text)) found_({cWarning::leading_zero, span, span});
            if (wrapped(text)) found_({cWarning::wrapped_number, span, span});
        }
    }

    // The \ and the whole character after it.
    Span escape_at(size_t offset) const {
        size_t end = offset + 2;
        while (end < bytes_.size() && continues_character(bytes_[end])) ++end;
        return {static_cast<std::uint32_t>(offset), static_cast<std::uint32_t>(end)};
    }

    // In the brackets of a type, such as a choice, a word may have a meaning, so it isn't checked
    // there.
    void check_word(SourceEntry const &entry) const {
        bool const in_type =
            entry.key.empty() && !open_.empty() && !open_.back().entry.type.empty();
        if (is_word_byte(bytes_[entry.value.begin]) && !in_type &&
            !looks_like(text_of(entry.value)).empty())
            found_({cWarning::strings, entry.value, entry.value});
    }

    void check_member(SourceEntry const &entry) {
        bool const is_refused = entry.anid == 0;
        if (is_refused || open_.back().entry.close.empty()) return;
        cMember &member = members_[entry.anid];
        if (std::exchange(member.set, entry.parent) == entry.parent)
            found_({cWarning::duplicate_member, entry.value, entry.value, member.value, {}});
        else
            member.value = entry.value;
    }

    // One separator after an item belongs to it. Skips unclosed brackets: they are an error, and
    // their entries may be wrong.
    void find_empty_item(std::uint32_t end) const {
        if (!is_list(open_.back().kind) || open_.back().entry.close.empty()) return;
        std::uint32_t const begin = open_.back().end;
        for (std::uint32_t at = begin; at < end; ++at) {
            if (cat::is_separator(bytes_[at]))
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

    // vector( ends with ], just as [ does. The source map has this ] as the first byte after the
    // value.
    void find_mixed_brackets(cOpen const &open) const {
        SourceEntry const &entry = open.entry;
        if (entry.type.empty() || bytes_[entry.open.begin] != '(' || !entry.close.empty()) return;
        char const expected = open.kind == cKind::vector ? ']'
                              : open.kind == cKind::set  ? '>'
                              : open.kind == cKind::map  ? '}'
                                                         : ')';
        Span const close{entry.value.end, entry.value.end + 1};
        if (close.begin < bytes_.size() && bytes_[close.begin] == expected)
            found_(
                {cWarning::mixed_brackets, close, {entry.value.begin, close.end}, entry.open, {}});
    }

    // In a list with both separators, the comma of 1,5 may be meant as a decimal point, but not in
    // 1,5,2.
    void note_separator(SourceEntry const &item) {
        cOpen &list = open_.back();
        Span const before = std::exchange(list.before, item.value);
        list.has_semicolon = list.has_semicolon || list.is_after_semicolon;
        list.is_after_semicolon = !item.delimiter.empty() && bytes_[item.delimiter.begin] == ';';
        bool const is_after_comma =
            !before.empty() && item.value.begin == before.end + 1 && bytes_[before.end] == ',';
        bool const continues = std::exchange(list.is_after_comma, is_after_comma);
        if (!is_after_comma) return;
        if (continues && list.comma.end == before.end)
            list.comma = {};
        else if (!continues && list.comma.empty() && is_integer(text_of(before)) &&
                 is_digit(bytes_[item.value.begin]))
            list.comma = {before.begin, item.value.end};
    }

    // Finds /* inside a comment, on a later line or after an entry: then that entry is not read.
    void find_comments_inside() const {
        std::string_view const text = bytes_;
        for (size_t begin = text.find("/*"); begin != text.npos;) {
            size_t const inner = text.find("/*", begin + 2);
            if (inner == text.npos) return;
            std::string_view const between = text.substr(begin, inner - begin);
            bool const is_inside = between.find("*/", 2) == between.npos &&
                                   between.find_first_of("\n=") != between.npos &&
                                   is_white(between.back());
            if (is_inside && is_comment(begin)) {
                auto const at = static_cast<std::uint32_t>(inner);
                auto const outer = static_cast<std::uint32_t>(begin);
                found_(
                    {cWarning::comment_inside, {at, at + 2}, {at, at + 2}, {outer, outer + 2}, {}});
            }
            begin = inner;
        }
    }

    bool is_comment(size_t begin) const {
        auto const &comments = map_.comments();
        auto const at = std::lower_bound(comments.begin(), comments.end(), begin,
                                         [](cat::SourceComment const &comment, size_t offset) {
                                             return comment.span.begin < offset;
                                         });
        return at != comments.end() && at->span.begin == begin;
    }

    // --- repeated keys ---

    // False only if all keys differ: then each entry has a newer node than the entry before it.
    bool has_repeated_keys() const {
        std::vector<std::uint32_t> newest(map_.size());
        for (size_t number = 1; number < map_.size(); ++number) {
            SourceEntry const entry = map_.entry(number);
            bool const has_node = entry.anid != 0 || !entry.key.empty();
            if (!has_node && kind_of(map_.entry(entry.parent)) != cKind::map) continue;
            if (entry.anid <= newest[entry.parent]) return true;
            newest[entry.parent] = entry.anid;
        }
        return false;
    }

    // The key of a map without a key: the next number, beginning with 0.
    cKey next_number() {
        cOpen &map = open_.back();
        return {number_of(map.entry), 'i', keep(std::to_string(map.without_key++))};
    }

    void check_key(cOpen &now, Span span, cKey const &key) {
        SourceEntry const &entry = now.entry;
        cOpen &map = open_.back();
        auto const [place, is_new] = keys_.try_emplace(key, next_holder());
        now.holder = place->second;
        if (is_new) {
            holders_.push_back({key, span, part(entry.value), number_of(entry), now.kind});
            return append(map.keys, now.holder);
        }
        cHolder &holder = holders_[now.holder];
        now.continues = holder.kind == now.kind && is_mergeable(now.kind);
        bool const is_mixed = is_mergeable(holder.kind) && is_mergeable(now.kind);
        if (is_mixed && holder.kind == cKind::map && now.kind == cKind::set)
            add_values(now.holder, span, part(entry.value));
        else if (!now.continues)
            report(span, entry.value, holder, is_mixed ? none : holder.part);
        if (is_mixed) {
            holder.part = part(entry.value, holder.part);
            if (!now.continues) now.holder = none; // the reader adds the values to each other
        } else {
            holder.part = part(entry.value);
            holder.home = number_of(entry);
            holder.kind = now.kind;
            holder.inside = {};
        }
    }

    // Repeats what the reader does when it merges a value into the holder's: lists accept all
    // values, maps accept lists and maps.
    void merge(std::uint32_t into, cList keys) {
        if (holders_[into].kind != cKind::map) return;
        for (std::uint32_t at = keys.first; at != none; at = holders_[at].next) {
            cHolder const &added = holders_[at];
            cKey key = added.key;
            key.home = holders_[into].home;
            auto const [place, is_new] = keys_.try_emplace(key, next_holder());
            if (is_new) {
                cHolder copy = added;
                copy.key = key;
                copy.next = none;
                holders_.push_back(copy);
                append(holders_[into].inside, place->second);
            } else {
                merge(place->second, added);
            }
        }
    }

    void merge(std::uint32_t into, cHolder const &added) {
        cHolder &holder = holders_[into];
        bool const is_map = holder.kind == cKind::map;
        bool const is_refused = is_map && added.kind == cKind::other;
        bool const is_replaced = !is_map && !is_list(holder.kind);
        if (is_refused) return report(added.first, added.first, holder, added.part);
        if (is_map && is_list(added.kind)) add_values(into, added.first, added.part);
        if (is_replaced) report(added.first, added.first, holder, holder.part);
        std::uint32_t const before = is_replaced ? none : holder.part;
        for (std::uint32_t at = added.part; at != none; at = parts_[at].before)
            holder.part = part(parts_[at].value, at == added.part ? before : holder.part);
        if (is_map && added.kind == cKind::map) merge(into, added.inside);
    }

    // Adds the values of a list to a map, under the keys 0, 1 and so on. Values that this replaces
    // belong to the finding about the key of the list.
    void add_values(std::uint32_t into, Span key, std::uint32_t list) {
        Span const scope{key.begin, std::max(key.end, parts_[list].value.begin + 1)};
        cDoubtful found{cWarning::duplicate_key, key, scope, holders_[into].first, {}};
        std::vector<Span> *const around = gathered_;
        if (!around) gathered_ = &found.lost;
        std::uint32_t index = 0;
        std::unordered_set<std::uint32_t> nodes; // a repeated value of a set has an existing node
        for (; list != none; list = parts_[list].before)
            for (SourceEntry const &value : map_.inside(map_.at(parts_[list].value.begin))) {
                if (value.anid != 0 && !nodes.insert(value.anid).second) continue;
                cKey const number{holders_[into].home, 'i', keep(std::to_string(index++))};
                if (text_of(value.value) != "#nil") add_value(into, key, number, value);
            }
        gathered_ = around;
        if (!around) found_(found);
    }

    void add_value(std::uint32_t into, Span written, cKey const &key, SourceEntry const &value) {
        cHolder const added{key, written, part(value.value), number_of(value), kind_of(value)};
        auto const [place, is_new] = keys_.try_emplace(key, next_holder());
        if (!is_new) return merge(place->second, added);
        holders_.push_back(added);
        append(holders_[into].inside, place->second);
    }

    void report(Span key, Span value, cHolder const &holder, std::uint32_t lost) const {
        Span const scope{key.begin, value.begin + 1};
        cDoubtful found{cWarning::duplicate_key, key, scope, holder.first, {}};
        std::vector<Span> &to = gathered_ ? *gathered_ : found.lost;
        for (; lost != none; lost = parts_[lost].before) to.push_back(parts_[lost].value);
        if (!gathered_) found_(found);
    }

    std::uint32_t part(Span value, std::uint32_t before = none) {
        parts_.push_back({value, before});
        return static_cast<std::uint32_t>(parts_.size() - 1);
    }

    std::uint32_t next_holder() const { return static_cast<std::uint32_t>(holders_.size()); }

    void append(cList &list, std::uint32_t holder) {
        if (list.first == none)
            list.first = holder;
        else
            holders_[list.last].next = holder;
        list.last = holder;
    }

    cKey key_of(std::uint32_t home, Span span) {
        std::string_view const text = text_of(span);
        if (is_word(text)) return {home, 's', text};
        if (is_quote(text[0])) {
            std::string_view const inside = text.substr(1, text.size() - 2);
            if (inside.find('\\') == inside.npos) return {home, 's', inside};
            std::string plain(inside);
            cat::unescape(plain);
            return {home, 's', keep(std::move(plain))};
        }
        if (is_integer(text)) return {home, 'i', keep(std::to_string(integer_in(text)))};
        bool const is_float = (text.back() | 0x20) == 'f';
        std::optional<std::string> digits =
            is_float ? shortest<float>(text) : shortest<double>(text);
        if (digits) return {home, is_float ? 'f' : 'd', keep(std::move(*digits))};
        if (text.starts_with("intf(")) return {home, 'n', keep(std::to_string(intf_in(text)))};
        return {home, 'o', text};
    }

    static int intf_in(std::string_view text) {
        constexpr std::string_view around = "\"( \t\r\n";
        text.remove_prefix(text.find('('));
        text.remove_suffix(1);
        text.remove_prefix(std::min(text.find_first_not_of(around), text.size()));
        int number = 0;
        cIntFormat(number, cIntFormat::fmtDec)
            .set_str(std::string(text.substr(0, text.find_last_not_of(around) + 1)).c_str());
        return number;
    }

    // The shortest digits of a number; the text may end with the f of a float.
    template <typename cNumber> static std::optional<std::string> shortest(std::string_view text) {
        if (text[0] == '+') text.remove_prefix(1);
        if (std::is_same_v<cNumber, float>) text.remove_suffix(1);
        cNumber number = 0;
        char const *const end = text.data() + text.size();
        auto const read = std::from_chars(text.data(), end, number);
        if (read.ec != std::errc() || read.ptr != end) return std::nullopt;
        char digits[64];
        return std::string(digits, std::to_chars(digits, std::end(digits), number).ptr);
    }

    std::string_view keep(std::string text) { return kept_.emplace_back(std::move(text)); }

    static int integer_in(std::string_view text) {
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
    bool has_repeated_keys_ = true;         // false if no key is repeated for certain
    std::vector<Span> *gathered_ = nullptr; // collects the lost parts for one finding
    std::vector<cOpen> open_;
    std::unordered_map<std::uint32_t, cMember> members_; // by anid
    std::vector<cPart> parts_;
    std::deque<cHolder> holders_;                         // a deque: references stay valid
    std::unordered_map<cKey, std::uint32_t, cHash> keys_; // indices of holders
    std::deque<std::string> kept_; // texts of keys that differ from their written form
};

} // namespace

void find_doubtful(std::string const &bytes, cat::SourceMap const &map,
                   std::function<void(cDoubtful const &)> const &found) {
    cWalk(bytes, map, found).walk();
}
