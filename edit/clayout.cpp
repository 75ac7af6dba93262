#include "edit/clayout.h"

namespace qrv::edit {

Layout const &Layouts::of(Item const &item) {
    auto const known = layouts_.find(&item);
    return known != layouts_.end() ? known->second
                                   : layouts_.emplace(&item, new_layout_of(item)).first->second;
}

Layout Layouts::new_layout_of(Item const &item) {
    Parts const parts = parts_of(item);
    Layout layout = item.parent ? of(*item.parent) : Layout();
    layout.delimiter = is_list(*item.value) ? ',' : ';';
    layout.width = 0;
    layout.gap.assign(1, ' ');
    layout.key.clear();
    if (item.how != Item::block) return layout;
    cat::SourceEntry const frame = entries_.frame(item.source);
    std::string const outer(page_.indent(frame.open.empty() ? 0 : frame.open.begin));
    if (parts.empty()) {
        size_t const close = frame.close.begin;
        layout.multiline = page_.begins_line(close) && page_.line_begin(close) > frame.open.end;
        layout.indent = layout.multiline ? outer + layout.unit : outer;
        layout.ended = layout.multiline;
        return layout;
    }
    Part const *sample = nullptr; // the last part that begins a line, or else the last part
    for (Part const &part : parts)
        if (page_.begins_line(part.extent.core)) sample = &part;
    layout.multiline = sample != nullptr;
    if (!sample) sample = &parts.back();
    layout.indent = layout.multiline ? page_.indent(sample->extent.core) : outer;
    if (layout.multiline && layout.indent.size() > outer.size() && layout.indent.starts_with(outer))
        layout.unit = layout.indent.substr(outer.size());
    for (Part const &part : parts)
        if (!part.entry.delimiter.empty()) layout.delimiter = page_.text(part.entry.delimiter)[0];
    layout.ended = !parts.back().entry.delimiter.empty();
    layout.key = hexadecimal_key(parts);
    if (!layout.multiline) layout.gap = gap_of(parts);
    for (Part const &part : parts)
        if (sample->entry.separator.empty() && !part.entry.separator.empty()) sample = &part;
    if (sample->entry.key.empty() || sample->entry.separator.empty()) return layout;
    cat::SourceEntry const &entry = sample->entry;
    std::string_view const before = page_.text(entry.key.end, entry.separator.begin);
    std::string_view const after = page_.text(entry.separator.end, entry.value.begin);
    layout.known = true;
    layout.separator =
        std::string(before.empty() ? "" : " ") + '=' + std::string(is_blank(after) ? after : " ");
    size_t const column = entry.separator.begin - entry.key.begin;
    for (Part const &part : parts) // is "=" in one column although keys have different lengths?
        if (in_column(part, column) && part.entry.key.size() != entry.key.size())
            layout.width = column;
    return layout;
}

// The blanks between entries, taken from the last two that have any. Empty if most neighbours have
// nothing between them.
std::string Layouts::gap_of(Parts const &parts) const {
    std::string gap = " ";
    size_t narrow = 0, wide = 0;
    for (size_t i = 1; i < parts.size(); ++i) {
        std::string_view const text = page_.text(parts[i - 1].extent.tail, parts[i].extent.begin);
        if (text.empty())
            ++narrow;
        else if (is_blank(text) && ++wide)
            gap = text;
    }
    return narrow > wide ? "" : gap;
}

// The last key if all keys are hexadecimal, else "".
std::string Layouts::hexadecimal_key(Parts const &parts) const {
    for (Part const &part : parts) {
        std::string_view const key = page_.text(part.entry.key);
        if (!key.starts_with("0x") && !key.starts_with("0X")) return "";
    }
    return std::string(page_.text(parts.back().entry.key));
}

Parts Layouts::parts_of(Item const &item) const {
    Parts parts;
    if (item.source == none || item.how != Item::block) return parts;
    for (cat::SourceEntry const &entry : entries_.inside(item.source))
        if (entries_.anid(entry.number))
            parts.push_back({entry, extent_of(page_, entry, entries_.comments(entry.number))});
    return parts;
}

bool Layouts::in_column(Part const &part, size_t column) const {
    return page_.begins_line(part.extent.core) && !part.entry.key.empty() &&
           part.entry.separator.begin - part.entry.key.begin == column;
}

} // namespace qrv::edit
