#pragma once
// The entries of the text, and those of the donor, by number.

#include "qrv/text/read/csourcemap.h"

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace qrv::edit {

constexpr size_t none = cat::SourceEntry::none;

// The entries by number, with the anids of their nodes before the change.
class Entries {
  public:
    explicit Entries(cat::SourceMap const &map);
    // Adds the entries of a donor, whose text begins at this offset of the page. Their numbers
    // follow those of the text; the first is the donor's outermost value. Copies from the map.
    void add_donor(cat::SourceMap const &map, size_t offset);
    bool is_donated(size_t number) const { return number != none && number >= donor(); }
    size_t donor() const { return map_.size(); }
    // Entries of these nodes are written once, even if the text repeats their keys. Entries of a
    // donor are always written once.
    void write_once(std::unordered_set<std::uint32_t> anids) { once_ = std::move(anids); }
    bool is_once(size_t number) const {
        return is_donated(number) || (number != none && once_.contains(anids_[number]));
    }

    cat::SourceEntry entry(size_t number) const {
        return is_donated(number) ? donated_[number - donor()] : map_.entry(number);
    }
    std::uint32_t anid(size_t number) const { return anids_[number]; }
    // If a new entry is directly before the entry of this node, it is written above that entry, and
    // not after its own predecessor.
    void write_above(std::uint32_t anid) { below_ = anid; }
    bool is_below(size_t number) const { return below_ != 0 && anids_[number] == below_; }
    size_t size() const { return anids_.size(); }
    // Does the text repeat the key of this entry, or its value in its set?
    bool is_repeated(size_t number) const;
    bool any_repeated() const { return any_repeated_; }
    bool any_reference() const { return any_reference_; }
    // All entries of a node, in file order.
    std::vector<size_t> of(std::uint32_t anid) const;
    // The entry whose brackets enclose the entries of this entry's value. Usually that is this
    // entry. If the brackets of a type contain just one whole value, as in Type({...}), it is the
    // entry of that value.
    cat::SourceEntry frame(size_t number) const;
    std::vector<cat::SourceEntry> inside(size_t number) const;
    // The comments above and after an entry.
    std::vector<cat::SourceComment> const &comments(size_t number) const;

  private:
    void add(cat::SourceEntry const &entry);
    void sort_numbers();
    void leave_out_equal_members();
    std::vector<cat::SourceEntry> directly_inside(size_t number) const;
    void add(cat::SourceComment const &comment);

    cat::SourceMap const &map_;
    std::vector<cat::SourceEntry> donated_;
    std::unordered_map<size_t, std::vector<cat::SourceEntry>> inside_; // for the donor's entries
    std::vector<std::uint32_t> anids_;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> numbers_; // anid and number, sorted
    std::unordered_map<size_t, std::vector<cat::SourceComment>> comments_;
    std::unordered_set<std::uint32_t> once_;
    std::uint32_t below_ = 0;
    bool any_repeated_ = false;
    bool any_reference_ = false;
};

} // namespace qrv::edit
