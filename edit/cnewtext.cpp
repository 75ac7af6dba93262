#include "edit/cnewtext.h"

#include "edit/cspelling.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"

#include <algorithm>

namespace qrv::edit {
namespace {

using Where = cat::SourceComment::Where;

bool on_one_line(objref const &value) { return cat::wformat(*value)[0] == 's'; }

// The text before the first entry; its last character is the bracket.
std::string opening(objref const &value) {
    return value->is_map()      ? "{"
           : value->is_vector() ? "["
           : value->is_set()    ? "<"
                                : value->type().name() + '(';
}

char closing(char bracket) {
    return bracket == '{' ? '}' : bracket == '[' ? ']' : bracket == '<' ? '>' : ')';
}

std::string blanks(size_t count) { return std::string(count, ' '); }

bool is_floating(cObj const &value) {
    return &value.type() == &cat::type_double() || &value.type() == &cat::type_float();
}

size_t digits_after_point(std::string_view literal) {
    size_t const point = std::min(literal.find('.'), literal.size());
    return std::min(literal.find_first_not_of("0123456789", point + 1), literal.size()) - point;
}

// The literal as a style for other entries. The sign, leading zeros and u of "+5", "007" and "12u"
// belong to that one number only, so they are removed.
std::string as_sample(std::string_view literal, cObj const &value) {
    if (&value.type() == &cat::type_int() && !is_hexadecimal(literal)) return "";
    if (literal.starts_with('+') || literal.starts_with('-')) literal.remove_prefix(1);
    return std::string(literal);
}

// Do two neighbouring numbers have the same style?
bool same_style(std::string_view a, std::string_view b, cObj const &value) {
    if (is_floating(value)) return digits_after_point(a) == digits_after_point(b);
    return &value.type() != &cat::type_int() || is_hexadecimal(a) == is_hexadecimal(b);
}

} // namespace

std::string NewText::all() {
    std::string text;
    Item const &root = plan_.root();
    cat::SourceEntry const entry = entries_.entry(0);
    if (root.how == Item::block && entries_.frame(0).open.empty()) { // entries without brackets
        cat::SourceEntry whole;
        whole.open = {0, 0};
        whole.close.begin = static_cast<std::uint32_t>(page_.size());
        add_inner(text, root, whole);
        return text;
    }
    text += page_.text(0, entry.value.begin);
    add_value_here(text, root);
    text += page_.text(entry.value.end, page_.size());
    return text;
}

// --- values ---

// The value of an item that stays where it is.
void NewText::add_value_here(std::string &out, Item const &item) {
    if (item.how == Item::block && item.source == item.old) return add_block(out, item);
    if (item.how == Item::as_it_was && item.source == item.old) {
        out += page_.text(entries_.entry(item.old).value);
        return;
    }
    if (item.how == Item::literal) {
        if (auto const inner = literal_inside(item)) {
            out += *inner;
            return;
        }
    }
    Layout layout = item.parent ? layouts_.of(*item.parent) : Layout();
    layout.indent = page_.indent(entries_.entry(item.old).all().begin);
    add_value(out, item, layout);
}

// A scalar in the brackets of its type, such as double(1.5): only the literal in them changes.
std::optional<std::string> NewText::literal_inside(Item const &item) const {
    cat::SourceEntry const entry = entries_.entry(item.old);
    cTypeObj const *const type = &item.value->type();
    bool const scalar = type == &cat::type_int() || type == &cat::type_double() ||
                        type == &cat::type_float() || type == &cat::type_string() ||
                        type == &cat::type_bool();
    if (page_.text(entry.type) != type->name()) return std::nullopt;
    if (!scalar) return word_inside(item, page_.text(entry.value));
    std::vector<cat::SourceEntry> const parts = entries_.inside(item.old);
    if (parts.size() != 1 || !parts[0].open.empty()) return std::nullopt;
    cat::Span const inner = parts[0].value;
    return std::string(page_.text(entry.value.begin, inner.begin)) +
           spelt(item.value, page_.text(inner)) +
           std::string(page_.text(inner.end, entry.value.end));
}

// A value of another type that has one word in its brackets, such as intf(0x1F).
std::optional<std::string> NewText::word_inside(Item const &item, std::string_view old) {
    std::string const text = spelt(item.value, old);
    cat::Span const word = word_in_brackets(text), before = word_in_brackets(old);
    if (word.empty() || before.empty()) return std::nullopt;
    return std::string(old.substr(0, before.begin)) + text.substr(word.begin, word.size()) +
           std::string(old.substr(before.end));
}

// The value of an item that is moved or new. The layout is that of the entries around it.
void NewText::add_value(std::string &out, Item const &item, Layout const &layout) {
    switch (item.how) {
    case Item::literal:
        out += literal(item, layout);
        return;
    case Item::fresh:
        return add_fresh(out, item, layout);
    case Item::absent:
        return;
    case Item::reference: {
        std::string const path = Plan::path(*item.target);
        out += "#cRef(" + (path.empty() ? "/" : path) + ")";
        return;
    }
    case Item::as_it_was:
    case Item::block:
        break;
    }
    cat::SourceEntry const entry = entries_.entry(item.source);
    std::string text;
    if (item.how == Item::block)
        add_block(text, item);
    else
        text = page_.text(entry.value);
    out += comments_.brought(item.source,
                             indented(text, page_.indent(entry.all().begin), layout.indent));
}

// The literal whose style the new one follows: the item's former one, or that of a neighbour. A
// floating number without such a literal gets the digits that it needs.
std::string NewText::like(Item const &item) {
    std::string own;
    if (item.old != none && entries_.entry(item.old).open.empty())
        own = page_.text(entries_.entry(item.old).value);
    else if (item.parent)
        own = sample_for(item);
    return is_floating(*item.value) && own.find('.') == own.npos ? "0.0" : own;
}

std::string NewText::sample_for(Item const &item) {
    auto const [samples, fresh] = samples_.try_emplace(item.parent);
    if (fresh) samples->second = samples_in(*item.parent);
    Item const *const sample = samples->second[&item];
    return sample ? as_sample(page_.text(entries_.entry(sample->old).value), *sample->value) : "";
}

// For each child, the nearest unchanged child of its type before it, or else the last one after it.
// Numbers follow a style only if all of them have it, and in a map only if there are at least two.
NewText::Samples NewText::samples_in(Item const &parent) const {
    struct Neighbours {
        Item const *last = nullptr;
        size_t count = 0;
        bool alike = true;
    };
    Samples samples;
    std::unordered_map<cObj const *, Neighbours> by_type;
    auto const text_of = [&](Item const &item) {
        return page_.text(entries_.entry(item.old).value);
    };
    auto const set_samples = [&](bool only_missing) {
        for (Item const *const child : parent.children) {
            Neighbours &type = by_type[&child->value->type()];
            Item const *&sample = samples[child];
            if (!sample || !only_missing) sample = type.last;
            bool const literal = child->how == Item::as_it_was && !container_in(child->value);
            if (child->old == none || !literal) continue;
            ++type.count;
            type.alike &=
                !type.last || same_style(text_of(*type.last), text_of(*child), *child->value);
            type.last = child;
        }
    };
    set_samples(false);
    set_samples(true);
    size_t const visits = 2; // of each child
    for (auto &[child, sample] : samples) {
        Neighbours const &type = by_type[&child->value->type()];
        bool const number = is_floating(*child->value) || &child->value->type() == &cat::type_int();
        if (number && !(type.alike && (type.count > visits || is_list(*parent.value))))
            sample = nullptr;
    }
    return samples;
}

std::string NewText::literal(Item const &item, Layout const &layout) {
    std::string const text = spelt(item.value, like(item));
    return with_line_ends(indented(text, "", layout.indent), page_.eol());
}

// A typed value does not store its layout, so it is laid out like the nearest value of its type.
bool NewText::typed_on_lines(Item const &item, Layout const &layout) {
    if (!layout.multiline || !item.parent) return layout.multiline;
    cTypeObj const *const type = &item.value->type();
    auto const [lines, fresh] = typed_on_lines_.try_emplace({item.parent, type}, true);
    if (!fresh) return lines->second;
    for (Item const *const child : item.parent->children) {
        if (child->source == none || &child->value->type() != type) continue;
        lines->second =
            page_.text(entries_.entry(child->source).value).find('\n') != std::string::npos;
        break;
    }
    return lines->second;
}

void NewText::add_fresh(std::string &out, Item const &item, Layout const &layout) {
    bool const set_in_set = item.value->is_set() && item.parent && item.parent->value->is_set();
    if (set_in_set && (out.empty() || out.back() == '<')) out += ' '; // << would be one token
    out += opening(item.value);
    char const open = out.back();
    Layout inside = layout;
    inside.multiline = open == '(' ? typed_on_lines(item, layout) : !on_one_line(item.value);
    inside.indent += layout.unit;
    inside.delimiter = is_list(*item.value) ? ',' : ';';
    inside.width = 0;
    inside.key.clear();
    std::string const padding = inside.multiline || item.children.empty() ? "" : padding_like(item);
    out += padding;
    for (Item const *const child : item.children) {
        bool const last = child == item.children.back();
        if (inside.multiline) out += page_.eol() + inside.indent;
        size_t const begin = out.size();
        add_new_entry(out, *child, inside, inside.multiline || !last);
        if (inside.multiline) continue;
        if (ends_in_line_comment(std::string_view(out).substr(begin)))
            out += page_.eol() + (last ? layout : inside).indent;
        else if (!last)
            out += ' ';
    }
    if (inside.multiline && !item.children.empty()) out += page_.eol() + layout.indent;
    out += padding + closing(open);
}

// The blank between brackets and entries, as in a neighbour of the same type.
std::string NewText::padding_like(Item const &item) const {
    if (!item.parent) return "";
    for (Item const *const child : item.parent->children) {
        bool const alike = child->source != none && &child->value->type() == &item.value->type();
        cat::SourceEntry const frame = alike ? entries_.frame(child->source) : cat::SourceEntry();
        if (frame.open.empty() || frame.close.begin == frame.open.end) continue;
        bool const padded = page_.text(frame.open.end, frame.close.begin).starts_with(' ') &&
                            page_.text()[frame.close.begin - 1] == ' ';
        return padded ? " " : "";
    }
    return "";
}

// --- entries ---

std::string NewText::key(Item const &item, Layout const &layout) {
    if (!item.parent || is_list(*item.parent->value)) return "";
    std::string_view const like =
        item.old == none ? layout.key : page_.text(entries_.entry(item.old).key);
    std::string const text = spelt(item.node->key(), like);
    std::string separator = layout.separator;
    if (layout.width > 0) {
        size_t const width = std::max(text.size() + 1, layout.width);
        separator = blanks(width - text.size()) + separator.substr(separator.find('='));
    }
    return text + separator;
}

// Does an item that stays have another key than its text?
bool NewText::has_other_key(Item const &item) const {
    bool const keyed = !entries_.entry(item.old).key.empty();
    return keyed ? item.node->anid() != entries_.anid(item.old) : item.needs_key;
}

// The renamed key, up to its "=". The "=" stays in its column if keys of other lengths have theirs
// there too.
std::string NewText::renamed(Item const &item, cat::SourceEntry const &entry) {
    if (entry.key.empty()) return key(item, layouts_.of(*item.parent));
    std::string const text = spelt(item.node->key(), page_.text(entry.key));
    std::string const gap(page_.text(entry.key.end, entry.separator.begin));
    if (text == page_.text(entry.key)) return text + gap;
    size_t const column = entry.separator.begin - entry.key.begin;
    Parts const parts = layouts_.parts_of(*item.parent);
    bool const aligned = std::any_of(parts.begin(), parts.end(), [&](Part const &part) {
        return layouts_.in_column(part, column) && part.entry.key.size() != entry.key.size();
    });
    if (!is_blank(gap) || !aligned || !page_.begins_line(entry.key.begin)) return text + gap;
    return text + blanks(text.size() < column ? column - text.size() : 1);
}

// Is the former text between key and value used again? Yes if it has a comment.
bool NewText::keeps_separator(Item const &item, Layout const &layout) const {
    if (item.old == none || !item.parent || is_list(*item.parent->value)) return false;
    cat::SourceEntry const entry = entries_.entry(item.old);
    if (entry.key.empty()) return false;
    if (page_.text(entry.key.end, entry.value.begin).find('/') != std::string_view::npos)
        return true;
    return entries_.is_donated(item.old) ? !layout.known : layout.width == 0;
}

// Key, value, delimiter and comments of an entry, without the indent of its first line.
void NewText::add_new_entry(std::string &out, Item const &item, Layout const &layout,
                            bool delimiter) {
    out += comments_.of(item, Where::above, layout.indent);
    if (keeps_separator(item, layout)) {
        cat::SourceEntry const entry = entries_.entry(item.old);
        out += spelt(item.node->key(), page_.text(entry.key));
        out +=
            comments_.brought(item.old, std::string(page_.text(entry.key.end, entry.value.begin)));
    } else {
        out += key(item, layout) + comments_.at_separator(item, layout.indent);
    }
    add_value(out, item, layout);
    std::string const before = comments_.before_delimiter(item);
    if (delimiter)
        out += before + layout.delimiter;
    else
        out += before.substr(0, before.find_last_not_of(" \t") + 1);
    out += comments_.of(item, Where::after, layout.indent);
}

} // namespace qrv::edit
