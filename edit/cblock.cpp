// The blocks of the new text. A block that keeps its entries and comments is copied, except for
// changed keys and values. BlockWriter writes every other block entry by entry.

#include "edit/cnewtext.h"

#include <algorithm>

namespace qrv::edit {

namespace {

using Where = cat::SourceComment::Where;

size_t after_key(cat::SourceEntry const &entry) {
    return entry.key.empty() ? entry.value.begin : entry.separator.begin;
}

} // namespace

void NewText::add_block(std::string &out, Item const &item) {
    cat::SourceEntry const entry = entries_.entry(item.source), frame = entries_.frame(item.source);
    out += page_.text(entry.value.begin, frame.open.end);
    add_inner(out, item, frame);
    out += page_.text(frame.close.begin, entry.value.end);
}

void NewText::add_inner(std::string &out, Item const &item, cat::SourceEntry const &frame) {
    std::vector<Item *> const &children = item.children;
    size_t written = 0; // entries that have a node
    for (cat::SourceEntry const &part : entries_.inside(item.source))
        if (entries_.anid(part.number)) ++written;
    bool const same = written == children.size() &&
                      std::none_of(children.begin(), children.end(), [&](Item const *child) {
                          return child->is_new() || !comments_.lenders(*child).empty();
                      });
    if (!same) {
        out += changed_inner(item, frame);
        return;
    }
    size_t copied = frame.open.end;
    for (Item const *const child : children) {
        cat::SourceEntry const entry = entries_.entry(child->old);
        if (has_other_key(*child)) {
            out += page_.text(copied, entry.all().begin);
            out += renamed(*child, entry);
            copied = after_key(entry);
        }
        if (child->how == Item::as_it_was && child->source == child->old) continue;
        out += page_.text(copied, entry.value.begin);
        add_value_here(out, *child);
        copied = entry.value.end;
    }
    out += page_.text(copied, frame.close.begin);
}

// Writes a block from which entries were removed, or into which entries are inserted.
class NewText::BlockWriter {
  public:
    BlockWriter(NewText &text, Item const &item, cat::SourceEntry const &frame)
        : text_(text), page_(text.page_), item_(item), frame_(frame),
          parts_(text.layouts_.parts_of(item)), layout_(text.layouts_.of(item)),
          copied_(frame.open.end) {
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
        if (children.empty() && leaves_half_lines()) out_.clear();
        return std::move(out_);
    }

  private:
    void copy_to(size_t offset) {
        if (offset <= copied_) return;
        out_ += page_.text(copied_, offset);
        copied_ = offset;
    }

    // Do brackets that had entries on their own lines contain only white space now? Then the lines
    // are not needed.
    bool leaves_half_lines() const {
        if (parts_.empty() || out_.find('\n') == out_.npos) return false;
        std::string_view const before = page_.text(frame_.open.end, parts_.front().extent.begin);
        return out_.find_first_not_of(" \t\r\n") == out_.npos && is_blank(before);
    }

    // Removes all parts before `end` that were not copied or removed yet.
    void remove_up_to(size_t end) {
        for (; next_ < end; ++next_) {
            Extent const &extent = parts_[next_].extent;
            bool const last_on_line = page_.ends_line(extent.tail);
            bool const after_others = end == parts_.size() && !page_.begins_line(extent.begin) &&
                                      (last_kept_ || next_ + 1 == parts_.size());
            if (extent.whole_lines || !(last_on_line || after_others)) {
                copy_to(extent.begin);
                copied_ =
                    std::max(copied_, extent.whole_lines
                                          ? extent.end
                                          : page_.after_blanks(after_empty_item(extent.tail)));
            } else {
                copy_to(page_.before_blanks(extent.begin));
                if (!begins_line()) out_.erase(out_.find_last_not_of(" \t") + 1);
                copied_ = std::max(copied_, after_empty_item(extent.tail));
                remove_empty_line();
            }
        }
    }

    // Removes the current line if all of its entries were removed.
    void remove_empty_line() {
        if (!begins_line() || !page_.ends_line(copied_)) return;
        out_.erase(out_.find_last_not_of(" \t") + 1);
        copied_ = page_.line_end(copied_);
    }

    // The offset after a second delimiter, as in "1,, 2", or `offset` without a second one. Three
    // delimiters cannot be read.
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
        std::vector<size_t> const lenders = text_.comments_.lenders(item);
        if (!lenders.empty()) comments_above(lenders, entry.all().begin);
        if (text_.has_other_key(item)) {
            copy_to(entry.all().begin);
            out_ += text_.renamed(item, entry);
            copied_ = after_key(entry);
        }
        copy_to(entry.value.begin);
        text_.add_value_here(out_, item);
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

    // Writes the comments of the donor's value that replaced another one.
    void comments_above(std::vector<size_t> const &lenders, size_t begin) {
        copy_to(begin);
        std::string text;
        for (size_t const number : lenders)
            text += text_.comments_.at(number, Where::above, layout_.indent);
        if (text.find('\n') != text.npos && !page_.begins_line(begin)) {
            out_.erase(out_.find_last_not_of(" \t") + 1);
            out_ += page_.eol() + layout_.indent;
        }
        out_ += text;
    }
    void comment_after(size_t lender, Extent const &extent) {
        std::string const text = text_.comments_.at(lender, Where::after, layout_.indent);
        if (text.empty()) return;
        copy_to(extent.tail);
        out_ += text;
        if (!ends_in_line_comment(text) || page_.ends_line(copied_)) return;
        out_ += page_.eol() + layout_.indent;
        copied_ = page_.after_blanks(copied_);
    }

    std::string new_entry(Item const &item, Layout const &layout, bool delimiter) {
        std::string text;
        text_.add_new_entry(text, item, layout, delimiter);
        return text;
    }

    void insert(Item const &item, Item const *next) {
        bool const alone = !last_kept_ && !first_kept_;
        bool const donated = text_.entries_.is_donated(item.old);
        if (!layout_.multiline && ((donated && (begins_line() || text_.needs_lines(item, alone))) ||
                                   (alone && text_.needs_lines(item, false))))
            return insert_line(item, next);
        bool const delimiter = next || layout_.ended;
        std::string const text = new_entry(item, layout_, delimiter);
        if (next && !next->is_new() && text_.entries_.is_below(next->old))
            insert_before(part_of(*next), item, text);
        else if (last_kept_)
            insert_after(last_kept_->extent, item, text);
        else if (first_kept_)
            insert_before(part_of(*first_kept_), item, text);
        else
            insert_alone(item, text);
    }

    void insert_after(Extent const &extent, Item const &item, std::string const &text) {
        if (page_.ends_line(extent.tail)) {
            copy_to(page_.line_end(extent.tail));
            if (!out_.empty() && out_.back() != '\n') out_ += page_.eol();
            add_lines(item, text, layout_);
        } else {
            copy_to(extent.tail);
            inline_text(text, true);
        }
    }

    void insert_before(size_t part, Item const &item, std::string const &text) {
        remove_up_to(part);
        Extent const &extent = parts_[part].extent;
        copy_to(extent.begin);
        if (extent.whole_lines)
            add_lines(item, text, layout_);
        else
            out_ +=
                text + (ends_in_line_comment(text) ? page_.eol() + layout_.indent : layout_.gap);
    }

    // Writes an item on its own lines, with the comments of its section after one empty line.
    void add_lines(Item const &item, std::string const &text, Layout const &layout) {
        std::string_view const eol = page_.eol();
        std::string section = text_.comments_.section_above(item, layout.indent);
        std::string_view lines = out_;
        bool const first = is_blank(lines.substr(0, lines.find_last_not_of("\r\n") + 1));
        if (lines.ends_with(eol)) lines.remove_suffix(eol.size());
        if (section.starts_with(eol) && (first || lines.ends_with(eol)))
            section.erase(0, eol.size());
        out_ += section + layout.indent + text + page_.eol();
    }

    // Inserts an item on a new line into a block that was on one line.
    void insert_line(Item const &item, Item const *next) {
        Layout layout = layout_;
        layout.multiline = true;
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
        add_lines(item, new_entry(item, layout, delimiter), layout);
        if (page_.begins_line(copied_) && copied_ > frame_.open.end) return;
        out_ += next ? layout.indent : outer;
        copied_ = page_.after_blanks(copied_);
    }

    // Inserts an item into a block that has no other entry.
    void insert_alone(Item const &item, std::string const &text) {
        remove_up_to(parts_.size());
        size_t const close = frame_.close.begin;
        if (page_.begins_line(close) && page_.line_begin(close) > frame_.open.end) {
            copy_to(page_.line_begin(close));
            add_lines(item, text, layout_);
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

    // Writes text within a line; a line comment at its end needs a new line after it.
    void inline_text(std::string const &text, bool blank) {
        if (!ends_in_line_comment(text) && !text.starts_with("//")) {
            out_ += (blank && !begins_line() ? layout_.gap : "") + text;
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
    size_t copied_;   // offset in the old text up to which it is copied or removed
    size_t next_ = 0; // the first part that is not handled yet
    Item const *first_kept_ = nullptr;
    Part const *last_kept_ = nullptr;
    std::string out_;
};

std::string NewText::changed_inner(Item const &item, cat::SourceEntry const &frame) {
    return BlockWriter(*this, item, frame).run();
}

// Does an item in a block on one line have a comment on separate lines, or one that ends its line?
// The only item of a block also needs lines if it had them before.
bool NewText::needs_lines(Item const &item, bool alone) const {
    if (alone && page_.begins_line(entries_.entry(item.old).all().begin)) return true;
    std::string const above = comments_.of(item, Where::above, "");
    return above.find('\n') != above.npos ||
           ends_in_line_comment(comments_.before_delimiter(item)) ||
           ends_in_line_comment(comments_.of(item, Where::after, ""));
}

} // namespace qrv::edit
