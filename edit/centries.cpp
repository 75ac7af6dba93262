#include "edit/centries.h"

#include <algorithm>

namespace qrv::edit {

Entries::Entries(cat::SourceMap const &map) : map_(map) {
    anids_.reserve(map.size());
    for (size_t i = 0; i < map.size(); ++i) add(map.entry(i));
    sort_numbers();
    if (any_repeated_) leave_out_equal_members();
    for (cat::SourceComment const &comment : map.comments()) add(comment);
}

void Entries::add(cat::SourceEntry const &entry) {
    anids_.push_back(entry.anid);
    any_reference_ |= entry.reference;
    if (entry.anid) numbers_.emplace_back(entry.anid, static_cast<std::uint32_t>(entry.number));
}

void Entries::sort_numbers() {
    std::sort(numbers_.begin(), numbers_.end());
    any_repeated_ =
        std::adjacent_find(numbers_.begin(), numbers_.end(), [](auto const &a, auto const &b) {
            return a.first == b.first;
        }) != numbers_.end();
}

// The reader drops a repeated value of a set, so the entries inside it were never in the tree.
void Entries::leave_out_equal_members() {
    std::vector<bool> left_out(anids_.size());
    for (size_t i = 1; i < numbers_.size(); ++i)
        if (numbers_[i].first == numbers_[i - 1].first)
            left_out[numbers_[i].second] = map_.entry(numbers_[i].second).key.empty();
    for (size_t i = 0; i < anids_.size(); ++i) {
        size_t const parent = map_.entry(i).parent;
        if (parent == none || !left_out[parent]) continue;
        left_out[i] = true;
        anids_[i] = 0;
    }
    std::erase_if(numbers_, [this](auto const &number) { return anids_[number.second] == 0; });
}

void Entries::add(cat::SourceComment const &comment) {
    if (comment.where == cat::SourceComment::above || comment.where == cat::SourceComment::after)
        comments_[comment.entry].push_back(comment);
}

void Entries::add_donor(cat::SourceMap const &map, size_t offset) {
    auto const by = static_cast<std::uint32_t>(offset);
    auto const shift = [by](cat::Span &span) {
        if (!span.empty()) span = {span.begin + by, span.end + by};
    };
    for (size_t i = 0; i < map.size(); ++i) {
        cat::SourceEntry entry = map.entry(i);
        entry.number += donor();
        if (entry.parent != none) entry.parent += donor();
        shift(entry.key);
        shift(entry.separator);
        entry.value = {entry.value.begin + by, entry.value.end + by};
        shift(entry.type);
        shift(entry.open);
        shift(entry.close);
        shift(entry.delimiter);
        add(entry);
        if (entry.parent != none) inside_[entry.parent].push_back(entry);
        donated_.push_back(entry);
    }
    for (cat::SourceComment comment : map.comments()) {
        shift(comment.span);
        if (comment.entry != none) comment.entry += donor();
        add(comment);
    }
    sort_numbers();
}

std::vector<cat::SourceComment> const &Entries::comments(size_t number) const {
    static std::vector<cat::SourceComment> const nothing;
    auto const found = comments_.find(number);
    return found == comments_.end() ? nothing : found->second;
}

bool Entries::is_repeated(size_t number) const {
    return any_repeated_ && of(anids_[number]).size() > 1;
}

std::vector<size_t> Entries::of(std::uint32_t anid) const {
    std::vector<size_t> found;
    auto it = std::lower_bound(numbers_.begin(), numbers_.end(), std::pair(anid, std::uint32_t{0}));
    for (; it != numbers_.end() && it->first == anid; ++it) found.push_back(it->second);
    return found;
}

cat::SourceEntry Entries::frame(size_t number) const {
    std::vector<cat::SourceEntry> const parts = directly_inside(number);
    bool const whole = parts.size() == 1 && anids_[parts[0].number] == 0 && parts[0].key.empty() &&
                       !parts[0].open.empty();
    return whole ? frame(parts[0].number) : entry(number);
}

std::vector<cat::SourceEntry> Entries::inside(size_t number) const {
    return directly_inside(frame(number).number);
}

std::vector<cat::SourceEntry> Entries::directly_inside(size_t number) const {
    if (!is_donated(number)) return map_.inside(number);
    auto const found = inside_.find(number);
    return found == inside_.end() ? std::vector<cat::SourceEntry>() : found->second;
}

} // namespace qrv::edit
