#include "edit/cnewtext.h"

#include "edit/cspelling.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"

#include <algorithm>

namespace qrv::edit {
namespace {

using Where = cat::SourceComment::Where;

bool is_list(objref const &value) { return value->is_vector() || value->is_set(); }

bool on_one_line(objref const &value) { return cat::wformat(*value)[0] == 's'; }

// What is written before the first entry; the last character is the bracket.
std::string opening(objref const &value) {
    return value->is_map()      ? "{"
           : value->is_vector() ? "["
           : value->is_set()    ? "<"
                                : value->type().name() + '(';
}

char closing(char bracket) {
    return bracket == '{' ? '}' : bracket == '[' ? ']' : bracket == '<' ? '>' : ')';
}

bool is_blank(std::string_view text) {
    return text.find_first_not_of(" \t") == std::string_view::npos;
}

std::string blanks(size_t count) { return std::string(count, ' '); }

// What another entry takes from a literal: the sign, leading zeros and the u of "+5", "007" and
// "12u" say something about that number only.
std::string as_sample(std::string_view literal, cObj const &value) {
    bool const hexadecimal = literal.starts_with("0x") || literal.starts_with("0X");
    if (&value.type() == &cat::type_int() && !hexadecimal) return "";
    if (literal.starts_with('+') || literal.starts_with('-')) literal.remove_prefix(1);
    return std::string(literal);
}

} // namespace

std::string NewText::all() {
    Item const &root = plan_.root();
    cat::SourceEntry const entry = entries_.entry(0);
    if (root.how == Item::block && entries_.frame(0).open.empty()) { // entries without brackets
        cat::SourceEntry whole;
        whole.open = {0, 0};
        whole.close.begin = static_cast<std::uint32_t>(page_.size());
        return inner(root, whole);
    }
    return std::string(page_.text(0, entry.value.begin)) + value_here(root) +
           std::string(page_.text(entry.value.end, page_.size()));
}

// --- values ---

// Of an item that stays where it is.
std::string NewText::value_here(Item const &item) {
    if (item.how == Item::block && item.source == item.old) return block(item);
    if (item.how == Item::as_it_was && item.source == item.old)
        return std::string(page_.text(entries_.entry(item.old).value));
    if (item.how == Item::literal)
        if (auto const inner = literal_inside(item)) return *inner;
    Layout layout = item.parent ? layout_of(*item.parent) : Layout();
    layout.indent = page_.indent(entries_.entry(item.old).all().begin);
    return value(item, layout);
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

// Of one that comes from elsewhere, or is new. The layout is that of the entries around it.
std::string NewText::value(Item const &item, Layout const &layout) {
    switch (item.how) {
    case Item::literal:
        return literal(item, layout);
    case Item::fresh:
        return fresh(item, layout);
    case Item::absent:
        return "";
    case Item::reference: {
        std::string const path = Plan::path(*item.target);
        return "#cRef(" + (path.empty() ? "/" : path) + ")";
    }
    case Item::as_it_was:
    case Item::block:
        break;
    }
    cat::SourceEntry const entry = entries_.entry(item.source);
    std::string const text =
        item.how == Item::block ? block(item) : std::string(page_.text(entry.value));
    return brought(item.source, indented(text, page_.indent(entry.all().begin), layout.indent));
}

// A donor's text has its own line ends.
std::string NewText::brought(size_t number, std::string text) const {
    return entries_.is_donated(number) ? with_line_ends(text, page_.eol()) : std::move(text);
}

// The literal that the new one takes its style from: its own, or that of the entry next to it.
std::string NewText::like(Item const &item) {
    if (item.old != none && entries_.entry(item.old).open.empty())
        return std::string(page_.text(entries_.entry(item.old).value));
    if (!item.parent) return "";
    auto const [samples, fresh] = samples_.try_emplace(item.parent);
    if (fresh) samples->second = samples_in(*item.parent);
    Item const *const sample = samples->second[&item];
    return sample ? as_sample(page_.text(entries_.entry(sample->old).value), *sample->value) : "";
}

// For each child the nearest one before it of its type that stays as it was, or else the last one.
NewText::Samples NewText::samples_in(Item const &parent) {
    Samples samples;
    std::unordered_map<cObj const *, Item const *> by_type;
    auto const set_samples = [&](bool only_missing) {
        for (Item const *const child : parent.children) {
            Item const *&last = by_type[&child->value->type()];
            Item const *&sample = samples[child];
            if (!sample || !only_missing) sample = last;
            bool const literal = child->how == Item::as_it_was && !container_in(child->value);
            if (child->old != none && literal) last = child;
        }
    };
    set_samples(false);
    set_samples(true);
    return samples;
}

std::string NewText::literal(Item const &item, Layout const &layout) {
    std::string const text = spelt(item.value, like(item));
    return with_line_ends(indented(text, "", layout.indent), page_.eol());
}

// A typed value does not know how it was written: it is laid out like one of its type next to it.
bool NewText::typed_on_lines(Item const &item, Layout const &layout) {
    if (!layout.lines || !item.parent) return layout.lines;
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

std::string NewText::fresh(Item const &item, Layout const &layout) {
    std::string text = opening(item.value);
    char const close = closing(text.back());
    bool const first_in_set = item.value->is_set() && item.parent && item.parent->value->is_set();
    if (first_in_set) text.insert(0, 1, ' ');
    Layout inside = layout;
    inside.lines = text.back() == '(' ? typed_on_lines(item, layout) : !on_one_line(item.value);
    inside.indent += layout.unit;
    inside.delimiter = is_list(item.value) ? ',' : ';';
    inside.width = 0;
    for (Item const *const child : item.children) {
        bool const last = child == item.children.back();
        std::string const entry = new_entry(*child, inside, inside.lines || !last);
        if (inside.lines)
            text += page_.eol() + inside.indent + entry;
        else if (ends_in_line_comment(entry))
            text += entry + page_.eol() + (last ? layout : inside).indent;
        else
            text += entry + (last ? "" : " ");
    }
    if (inside.lines && !item.children.empty()) text += page_.eol() + layout.indent;
    return text += close;
}

// --- entries ---

std::string NewText::key(Item const &item, Layout const &layout) {
    if (!item.parent || is_list(item.parent->value)) return "";
    std::string_view const like = item.old == none ? "" : page_.text(entries_.entry(item.old).key);
    std::string const text = spelt(item.node->key(), like);
    std::string separator = layout.separator;
    if (layout.width > 0) {
        size_t const width = std::max(text.size() + 1, layout.width);
        separator = blanks(width - text.size()) + separator.substr(separator.find('='));
    }
    return text + separator;
}

std::string NewText::comments_of(Item const &item, Where where, std::string const &indent) const {
    std::string text;
    std::vector<size_t> numbers = lenders(item);
    if (item.old != none) numbers.push_back(item.old);
    // All places of a key that came again are removed where it was.
    if (item.old != none && item.moved && !entries_.is_donated(item.old))
        numbers = entries_.of(entries_.anid(item.old));
    std::sort(numbers.begin(), numbers.end());
    for (size_t const number : numbers) {
        std::string const more = comments_at(number, where, indent);
        if (more.find('\n') != more.npos && ends_in_line_comment(text))
            text += page_.eol() + indent; // or it would begin in that comment and end after it
        text += more;
    }
    return text;
}

std::string NewText::comments_at(size_t number, Where where, std::string const &indent) const {
    std::string text;
    for (cat::SourceComment const &comment : entries_.comments(number)) {
        if (comment.where != where) continue;
        std::string const own =
            indented(page_.text(comment.span), page_.indent(comment.span.begin), indent);
        if (where == Where::after)
            text += page_.text(page_.before_blanks(comment.span.begin), comment.span.begin);
        text += own;
        if (where == Where::above) text += comment.own_line ? page_.eol() + indent : " ";
    }
    return brought(number, std::move(text));
}

// A key with another name, up to its "=". That stays in its column if keys of other lengths have
// theirs there too.
std::string NewText::renamed(Item const &item, cat::SourceEntry const &entry) {
    std::string const text = spelt(item.node->key(), page_.text(entry.key));
    std::string const gap(page_.text(entry.key.end, entry.separator.begin));
    if (text == page_.text(entry.key)) return text + gap;
    size_t const column = entry.separator.begin - entry.key.begin;
    Parts const parts = parts_of(*item.parent);
    bool const aligned = std::any_of(parts.begin(), parts.end(), [&](Part const &part) {
        return in_column(part, column) && part.entry.key.size() != entry.key.size();
    });
    if (!is_blank(gap) || !aligned || !page_.begins_line(entry.key.begin)) return text + gap;
    return text + blanks(text.size() < column ? column - text.size() : 1);
}

// Does it begin a line, and is its "=" so far from there?
bool NewText::in_column(Part const &part, size_t column) const {
    return page_.begins_line(part.extent.core) && !part.entry.key.empty() &&
           part.entry.separator.begin - part.entry.key.begin == column;
}

// Comments between the value and its delimiter, with the blanks around them.
std::string NewText::before_delimiter(Item const &item) const {
    if (item.old == none || entries_.entry(item.old).delimiter.empty()) return "";
    cat::SourceEntry const entry = entries_.entry(item.old);
    std::string_view const text = page_.text(entry.value.end, entry.delimiter.begin);
    return text.find('/') == std::string_view::npos ? "" : brought(item.old, std::string(text));
}

// The donor's entries whose comments an item gets besides its own. A key that came again in the
// donor is written once; a value that replaced another one lends its comments to an entry without
// any.
std::vector<size_t> NewText::lenders(Item const &item) const {
    size_t const donated = entries_.is_donated(item.old) ? item.old : item.donated;
    if (donated == none) return {};
    if (donated != item.old && !entries_.comments(item.old).empty()) return {};
    std::vector<size_t> numbers = entries_.of(entries_.anid(donated));
    std::erase_if(numbers, [&](size_t number) {
        return number == item.old || entries_.comments(number).empty();
    });
    return numbers;
}

// In a block on one line: has it a comment that ends its line, or lines of its own? Alone it is
// laid out as it was.
bool NewText::needs_lines(Item const &item, bool alone) const {
    if (alone && page_.begins_line(entries_.entry(item.old).all().begin)) return true;
    std::string const above = comments_of(item, Where::above, "");
    return above.find('\n') != above.npos || ends_in_line_comment(before_delimiter(item)) ||
           ends_in_line_comment(comments_of(item, Where::after, ""));
}

// Is the text between key and value that of the entry as it was? A comment there stays in any case.
bool NewText::keeps_separator(Item const &item, Layout const &layout) const {
    if (item.old == none || !item.parent || is_list(item.parent->value)) return false;
    cat::SourceEntry const entry = entries_.entry(item.old);
    if (entry.key.empty()) return false;
    if (page_.text(entry.key.end, entry.value.begin).find('/') != std::string_view::npos)
        return true;
    return entries_.is_donated(item.old) ? !layout.known : layout.width == 0;
}

// The comments around the "=" of an entry that comes into a list, with the blanks after them.
std::string NewText::comments_at_separator(Item const &item, Layout const &layout) const {
    if (item.old == none || !item.parent || !is_list(item.parent->value)) return "";
    cat::SourceEntry const entry = entries_.entry(item.old);
    if (entry.key.empty() || entry.separator.empty()) return "";
    std::string text(page_.text(entry.key.end, entry.separator.begin));
    text += page_.text(entry.separator.end, entry.value.begin);
    if (text.find('/') == text.npos) return "";
    text.erase(0, text.find('/'));
    return brought(item.old, indented(text, page_.indent(entry.all().begin), layout.indent));
}

// Key, value, delimiter and comments; without the blanks before the first line.
std::string NewText::new_entry(Item const &item, Layout const &layout, bool delimiter) {
    std::string text = comments_of(item, Where::above, layout.indent);
    if (keeps_separator(item, layout)) {
        cat::SourceEntry const entry = entries_.entry(item.old);
        text += spelt(item.node->key(), page_.text(entry.key));
        text += brought(item.old, std::string(page_.text(entry.key.end, entry.value.begin)));
    } else {
        text += key(item, layout) + comments_at_separator(item, layout);
    }
    text += value(item, layout);
    std::string const before = before_delimiter(item);
    if (delimiter)
        text += before + layout.delimiter;
    else
        text += before.substr(0, before.find_last_not_of(" \t") + 1);
    return text += comments_of(item, Where::after, layout.indent);
}

// --- blocks ---

std::string NewText::block(Item const &item) {
    cat::SourceEntry const entry = entries_.entry(item.source), frame = entries_.frame(item.source);
    return std::string(page_.text(entry.value.begin, frame.open.end)) + inner(item, frame) +
           std::string(page_.text(frame.close.begin, entry.value.end));
}

std::string NewText::inner(Item const &item, cat::SourceEntry const &frame) {
    std::vector<Item *> const &children = item.children;
    size_t written = 0; // entries that have a node
    for (cat::SourceEntry const &part : entries_.inside(item.source))
        if (entries_.anid(part.number)) ++written;
    bool const same = written == children.size() &&
                      std::none_of(children.begin(), children.end(), [&](Item const *child) {
                          return child->is_new() || !lenders(*child).empty();
                      });
    if (!same) return changed_inner(item, frame);
    std::string text;
    size_t copied = frame.open.end;
    for (Item const *const child : children) {
        cat::SourceEntry const entry = entries_.entry(child->old);
        if (child->node->anid() != entries_.anid(child->old) && !entry.key.empty()) {
            text += page_.text(copied, entry.key.begin);
            text += renamed(*child, entry);
            copied = entry.separator.begin;
        }
        if (child->how == Item::as_it_was && child->source == child->old) continue;
        text += page_.text(copied, entry.value.begin);
        text += value_here(*child);
        copied = entry.value.end;
    }
    return text += page_.text(copied, frame.close.begin);
}

NewText::Parts NewText::parts_of(Item const &item) const {
    Parts parts;
    if (item.source == none || item.how != Item::block) return parts;
    for (cat::SourceEntry const &entry : entries_.inside(item.source))
        if (entries_.anid(entry.number))
            parts.push_back({entry, extent_of(page_, entry, entries_.comments(entry.number))});
    return parts;
}

// Writes a block of which entries were removed, or to which some came.
class NewText::BlockWriter {
  public:
    BlockWriter(NewText &text, Item const &item, cat::SourceEntry const &frame)
        : text_(text), page_(text.page_), item_(item), frame_(frame), parts_(text.parts_of(item)),
          layout_(text.layout_of(item)), copied_(frame.open.end) {
        auto const stays = [](Item const *child) { return !child->is_new(); };
        auto const first = std::find_if(item.children.begin(), item.children.end(), stays);
        if (first != item.children.end()) first_kept_ = *first;
    }

    std::string run() {
        std::vector<Item *> const &children = item_.children;
        for (size_t i = 0; i < children.size(); ++i) {
            Item const *const next = i + 1 < children.size() ? children[i + 1] : nullptr;
            if (children[i]->is_new())
                insert(*children[i], next);
            else
                keep(*children[i], next);
        }
        remove_up_to(parts_.size());
        copy_to(frame_.close.begin);
        return std::move(out_);
    }

  private:
    void copy_to(size_t offset) {
        if (offset <= copied_) return;
        out_ += page_.text(copied_, offset);
        copied_ = offset;
    }

    // Takes away the parts before that one, from the first that is neither kept nor gone.
    void remove_up_to(size_t end) {
        for (; next_ < end; ++next_) {
            Extent const &extent = parts_[next_].extent;
            bool const last_on_line = page_.ends_line(extent.tail);
            bool const after_others =
                next_ + 1 == parts_.size() && !page_.begins_line(extent.begin);
            if (extent.whole_lines || !(last_on_line || after_others)) {
                copy_to(extent.begin);
                copied_ =
                    std::max(copied_, extent.whole_lines
                                          ? extent.end
                                          : page_.after_blanks(after_empty_item(extent.tail)));
            } else {
                copy_to(page_.before_blanks(extent.begin));
                copied_ = std::max(copied_, after_empty_item(extent.tail));
                remove_empty_line();
            }
        }
    }

    // The line of which all entries were removed.
    void remove_empty_line() {
        if (!begins_line() || !page_.ends_line(copied_)) return;
        out_.erase(out_.find_last_not_of(" \t") + 1);
        copied_ = page_.line_end(copied_);
    }

    // After a second delimiter, as in "1,, 2". Three of them can't be read.
    size_t after_empty_item(size_t offset) const {
        size_t const at = page_.after_blanks(offset);
        std::string_view const next = page_.text(at, std::min<size_t>(at + 1, frame_.close.begin));
        return next == "," || next == ";" ? at + 1 : offset;
    }

    size_t part_of(Item const &item) const {
        size_t part = next_;
        while (part < parts_.size() && parts_[part].entry.number != item.old) ++part;
        return part;
    }

    void keep(Item const &item, Item const *next) {
        size_t const part = part_of(item);
        remove_up_to(part);
        cat::SourceEntry const &entry = parts_[part].entry;
        std::vector<size_t> const lenders = text_.lenders(item);
        if (!lenders.empty()) comments_above(lenders, entry.all().begin);
        if (!entry.key.empty() && item.node->anid() != text_.entries_.anid(item.old)) {
            copy_to(entry.key.begin);
            out_ += text_.renamed(item, entry);
            copied_ = entry.separator.begin;
        }
        copy_to(entry.value.begin);
        out_ += text_.value_here(item);
        copied_ = entry.value.end;
        bool const was_last = part + 1 == parts_.size();
        if (next && next->is_new() && entry.delimiter.empty()) {
            out_ += layout_.delimiter;
        } else if (!next && !was_last && parts_.back().entry.delimiter.empty() &&
                   !entry.delimiter.empty() && !page_.ends_line(parts_[part].extent.tail)) {
            copy_to(entry.delimiter.begin);
            copied_ = entry.delimiter.end;
        }
        for (size_t const number : lenders) comment_after(number, parts_[part].extent);
        last_kept_ = &parts_[part];
        next_ = part + 1;
    }

    // The comments of the value that replaced another one.
    void comments_above(std::vector<size_t> const &lenders, size_t begin) {
        copy_to(begin);
        std::string text;
        for (size_t const number : lenders)
            text += text_.comments_at(number, Where::above, layout_.indent);
        if (text.find('\n') != text.npos && !page_.begins_line(begin)) {
            out_.erase(out_.find_last_not_of(" \t") + 1);
            out_ += page_.eol() + layout_.indent;
        }
        out_ += text;
    }
    void comment_after(size_t lender, Extent const &extent) {
        std::string const text = text_.comments_at(lender, Where::after, layout_.indent);
        if (text.empty()) return;
        copy_to(extent.tail);
        out_ += text;
        if (!ends_in_line_comment(text) || page_.ends_line(copied_)) return;
        out_ += page_.eol() + layout_.indent;
        copied_ = page_.after_blanks(copied_);
    }

    void insert(Item const &item, Item const *next) {
        bool const alone = !last_kept_ && !first_kept_;
        if (!layout_.lines && text_.entries_.is_donated(item.old) &&
            (begins_line() || text_.needs_lines(item, alone)))
            return insert_line(item, next);
        bool const delimiter = next || layout_.ended;
        std::string const text = text_.new_entry(item, layout_, delimiter);
        if (last_kept_)
            insert_after(last_kept_->extent, text);
        else if (first_kept_)
            insert_before(part_of(*first_kept_), text);
        else
            insert_alone(text);
    }

    void insert_after(Extent const &extent, std::string const &text) {
        if (page_.ends_line(extent.tail)) {
            copy_to(page_.line_end(extent.tail));
            if (!out_.empty() && out_.back() != '\n') out_ += page_.eol();
            out_ += layout_.indent + text + page_.eol();
        } else {
            copy_to(extent.tail);
            inline_text(text, true);
        }
    }

    void insert_before(size_t part, std::string const &text) {
        remove_up_to(part);
        Extent const &extent = parts_[part].extent;
        copy_to(extent.begin);
        if (extent.whole_lines)
            out_ += layout_.indent + text + page_.eol();
        else
            out_ += text + (ends_in_line_comment(text) ? page_.eol() + layout_.indent : " ");
    }

    // On a line of its own, into a block that has no lines yet.
    void insert_line(Item const &item, Item const *next) {
        Layout layout = layout_;
        layout.lines = true;
        std::string const outer(page_.indent(frame_.open.begin));
        layout.indent = outer + (frame_.open.empty() ? "" : layout.unit);
        bool delimiter = next || layout.ended;
        if (last_kept_) {
            size_t const tail = last_kept_->extent.tail;
            copy_to(page_.ends_line(tail) ? page_.line_end(tail) : tail);
        } else if (first_kept_) {
            size_t const part = part_of(*first_kept_);
            remove_up_to(part);
            copy_to(parts_[part].extent.begin);
        } else {
            remove_up_to(parts_.size());
            copy_to(page_.before_blanks(frame_.close.begin));
            delimiter = true;
        }
        bool const on_new_line = begins_line();
        out_.erase(out_.find_last_not_of(" \t") + 1);
        if (!on_new_line) out_ += page_.eol();
        out_ += layout.indent + text_.new_entry(item, layout, delimiter) + page_.eol();
        if (page_.begins_line(copied_) && copied_ > frame_.open.end) return;
        out_ += next ? layout.indent : outer;
        copied_ = page_.after_blanks(copied_);
    }

    // Into a block that has no other entry.
    void insert_alone(std::string const &text) {
        remove_up_to(parts_.size());
        size_t const close = frame_.close.begin;
        if (page_.begins_line(close) && page_.line_begin(close) > frame_.open.end) {
            copy_to(page_.line_begin(close));
            out_ += layout_.indent + text + page_.eol();
        } else {
            if (copied_ == frame_.open.end && is_blank(page_.text(copied_, close))) copied_ = close;
            copy_to(page_.before_blanks(close));
            inline_text(text, !out_.empty());
        }
    }

    bool begins_line() const {
        size_t const last = out_.find_last_not_of(" \t");
        return last != out_.npos && out_[last] == '\n';
    }

    // A line comment needs the end of a line after it.
    void inline_text(std::string const &text, bool blank) {
        if (!ends_in_line_comment(text) && !text.starts_with("//")) {
            out_ += (blank && !begins_line() ? " " : "") + text;
            return;
        }
        if (!begins_line()) out_ += page_.eol() + layout_.indent;
        out_ += text;
        if (!ends_in_line_comment(text)) return;
        out_ += page_.eol() + layout_.indent;
        copied_ = page_.after_blanks(copied_);
    }

    NewText &text_;
    Page const &page_;
    Item const &item_;
    cat::SourceEntry const &frame_;
    Parts const parts_;
    Layout const layout_;
    size_t copied_;   // of the old text
    size_t next_ = 0; // the first part that was not looked at
    Item const *first_kept_ = nullptr;
    Part const *last_kept_ = nullptr;
    std::string out_;
};

std::string NewText::changed_inner(Item const &item, cat::SourceEntry const &frame) {
    return BlockWriter(*this, item, frame).run();
}

// --- layout ---

Layout const &NewText::layout_of(Item const &item) {
    auto const known = layouts_.find(&item);
    return known != layouts_.end() ? known->second
                                   : layouts_.emplace(&item, new_layout_of(item)).first->second;
}

Layout NewText::new_layout_of(Item const &item) {
    Parts const parts = parts_of(item);
    Layout layout = item.parent ? layout_of(*item.parent) : Layout();
    layout.delimiter = is_list(item.value) ? ',' : ';';
    layout.width = 0;
    if (item.how != Item::block) return layout;
    cat::SourceEntry const frame = entries_.frame(item.source);
    std::string const outer(page_.indent(frame.open.empty() ? 0 : frame.open.begin));
    if (parts.empty()) {
        size_t const close = frame.close.begin;
        layout.lines = page_.begins_line(close) && page_.line_begin(close) > frame.open.end;
        layout.indent = layout.lines ? outer + layout.unit : outer;
        layout.ended = layout.lines;
        return layout;
    }
    Part const *sample = nullptr; // the last one that begins a line, or else the last
    for (Part const &part : parts)
        if (page_.begins_line(part.extent.core)) sample = &part;
    layout.lines = sample != nullptr;
    if (!sample) sample = &parts.back();
    layout.indent = layout.lines ? page_.indent(sample->extent.core) : outer;
    if (layout.lines && layout.indent.size() > outer.size() && layout.indent.starts_with(outer))
        layout.unit = layout.indent.substr(outer.size());
    for (Part const &part : parts)
        if (!part.entry.delimiter.empty()) layout.delimiter = page_.text(part.entry.delimiter)[0];
    layout.ended = !parts.back().entry.delimiter.empty();
    if (sample->entry.key.empty() || sample->entry.separator.empty()) return layout;
    cat::SourceEntry const &entry = sample->entry;
    std::string_view const before = page_.text(entry.key.end, entry.separator.begin);
    std::string_view const after = page_.text(entry.separator.end, entry.value.begin);
    layout.known = true;
    layout.separator =
        std::string(before.empty() ? "" : " ") + '=' + std::string(is_blank(after) ? after : " ");
    size_t const column = entry.separator.begin - entry.key.begin;
    for (Part const &part : parts) // where keys of several lengths have their "=" below each other
        if (in_column(part, column) && part.entry.key.size() != entry.key.size())
            layout.width = column;
    return layout;
}

} // namespace qrv::edit
