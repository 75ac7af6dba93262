// The row: the words of a hash whose keys are 0, 1, 2... Once values are read by index, the row has
// the values too, so that such a read needs no node.
//
//   0             the node of each key
//   capacity      its value, or 0: then the node's value counts |  if has_values_
//   2 * capacity  replaced_unseen_ when the values were copied  |
//
// A value is 0 if it is null, and from the moment when cAttrNode::valref_() returns the reference.
// Code that replaces a value without its node (cat::detach) invalidates the values of all rows. The
// values are copied after reads of nodes, a quarter as many as there are nodes; so a read takes
// constant time on average, and a vector that is only walked or appended to has no values.

#include "core/cattrhash_detail.h"
#include "core/ctable_growth.h"

#include <algorithm>
#include <new>

namespace {

constexpr std::uint32_t first_row = 16;

constexpr std::size_t words_of(std::uint32_t capacity, bool with_values) {
    return with_values ? 2 * std::size_t{capacity} + 1 : capacity;
}

} // namespace

constinit std::uint32_t cAttrHash::replaced_unseen_ = 0;

// Appends to a vector that has no table. No search is needed: the next key cannot exist yet.
void cAttrHash::append_next(objref const &value) {
    if (used_ >= (form_ == cHashForm::row ? capacity_ : most_few)) rebuild_row();
    ++cAttrNode::ob_lstid_; // the id of the key object that mapitem's caller would have created
    cAttrNode &node = *cAttrNode::lazy_number(value);
    node.hash_ = used_;
    node.table_ = this;
    node.mapped_ = true;
    node.link_before(anchor_);
    greatest_ = static_cast<int>(used_);
    if (form_ == cHashForm::row) add_to_row(node);
    ++used_;
    ++changes_;
    if (is_too_full(used_, size_)) size_ = hash_grown_size(size_, hash_primes());
    if (set_index_) [[unlikely]]
        set_index_->enter(node);
    check();
}

void cAttrHash::rebuild_row() {
    bool const is_row = form_ == cHashForm::row;
    std::uint32_t const capacity = std::max({first_row, capacity_ + capacity_ / 2, used_});
    auto words = std::make_unique_for_overwrite<cSlotWord[]>(words_of(capacity, has_values_));
    if (is_row) {
        std::copy_n(words_.get(), used_, words.get()); // reads no node
    } else {
        cSlotWord *word = words.get();
        for (cAttrNode *node = first(); node; node = next(node))
            *word++ = reinterpret_cast<cSlotWord>(node);
    }
    if (has_values_) {
        std::copy_n(known_values(), used_, &words[capacity]);
        words[2 * std::size_t{capacity}] = known_values()[capacity_];
    }
    words_ = std::move(words);
    form_ = cHashForm::row;
    capacity_ = capacity;
}

// Needs room for the node, which must be the last one.
void cAttrHash::add_to_row(cAttrNode const &node) noexcept {
    words_[node.hash_] = reinterpret_cast<cSlotWord>(&node);
    note_value(node, node.value_);
}

// If there is no memory for the values, reads continue to use the nodes.
void cAttrHash::copy_values() const noexcept {
    unused_ = 0;
    if (!has_values_) {
        auto *const words = new (std::nothrow) cSlotWord[words_of(capacity_, true)];
        if (!words) return;
        std::copy_n(words_.get(), used_, words);
        words_.reset(words);
        has_values_ = true;
    }
    cSlotWord *const values = known_values();
    for (std::uint32_t i = 0; i < used_; ++i) {
        cAttrNode const &node = *node_of(words_[i]);
        values[i] = node.given_out_ ? 0 : reinterpret_cast<cSlotWord>(node.value_.get());
    }
    values[capacity_] = replaced_unseen_;
}

cObj *cAttrHash::value_of_node(int key) const {
    if (form_ == cHashForm::row && ++unused_ > used_ / 4) copy_values();
    cAttrNode const *const node = find(key);
    return node ? node->value_.get() : nullptr;
}

// For the rules: is each value in the row the value of its node?
bool cAttrHash::has_right_values() const noexcept {
    if (!has_values_) return true;
    if (form_ != cHashForm::row) return false;
    cSlotWord const *const values = known_values();
    if (values[capacity_] != replaced_unseen_) return true;
    for (std::uint32_t i = 0; i < used_; ++i) {
        cAttrNode const &node = *node_of(words_[i]);
        auto const value = reinterpret_cast<cSlotWord>(node.value_.get());
        if (values[i] != (node.given_out_ ? 0 : value)) return false;
    }
    return true;
}
