// The rules that hold for every cAttrHash between operations:
//   H1 used == nodes on the ring == node words in the table, and the ring is linked both ways
//   H2 each ring node n: its word in the table or the index is n, n.table is this, n is alive
//   H3 no two keys are hasheq (deep only: it calls hooks; not asked of float and double, where
//      NaN equals everything)
//   H4 no nil key
//   H5 the table is not too full, and enough slots were never used (core/ctable_growth.h)
//   H6 the number of never-used slots is right
//   H7 what is known about the keys is right: counts of kinds, greatest index, vector or not
//   H8 each key is found again under its cached hash (deep only)
//   H10 the index of a set knows each node
//   H11 the values after the nodes of a row are those of the nodes (core/cattrhash_row.cpp)
//   H9 while no node was moved, the ring is in the order in which the nodes were made
// Debug builds check the cheap rules after each of the first changes of a small table, after some
// later changes, and in every table after each change whose number is a power of two.

#include "core/cattrhash_detail.h"
#include "core/cset_index.h"
#include "core/ctable_growth.h"
#include "core/ctext_hooks.h"
#include "qrv/core/cobjd.h"

#ifdef QRV_CHECKS
#include <cstdio>
#include <cstdlib>
#endif

namespace {

std::string broken(char const *rule, cAttrNode const *node = nullptr) {
    std::string text = rule;
    if (node) text += " key=" + text_hooks.as_text(node->key());
    return text;
}

bool is_floating(cKeyKind kind) noexcept {
    return kind == cKeyKind::float_key || kind == cKeyKind::double_key;
}

// What the walk over the ring has found about the keys.
struct cSeen {
    std::uint32_t nodes = 0, others = 0, no_ints = 0, anid = 0;
    int greatest = -1;
    bool is_vector = true;

    void take(cKeyKind kind, std::uint32_t hash) noexcept {
        bool const is_int = kind == cKeyKind::int_key;
        if (is_int) greatest = std::max(greatest, static_cast<int>(hash));
        is_vector = is_vector && is_int && hash == nodes;
        no_ints += !is_int;
        others += kind == cKeyKind::other;
        ++nodes;
    }
};

} // namespace

std::string cAttrHash::broken_rule(bool deep) const {
    cSeen seen;
    for (cLink *link = anchor_.next(); link != &anchor_; link = link->next()) {
        if (!link || link->next() == link || link->prev()->next() != link ||
            link->next()->prev() != link || seen.nodes > used_)
            return broken("H1");
        auto const *const node = static_cast<cAttrNode *>(link);
        if (!node->lazy_ && cObj::is_void(node->key_)) return broken("H4");
        if (node->table_ != this || node->dead_ || !has_word(*node)) return broken("H2", node);
        if (!moved_ && node->anid_ < seen.anid) return broken("H9", node);
        seen.anid = node->anid_;
        seen.take(node->kind_, node->hash_);
    }
    if (seen.nodes != used_) return broken("H1");
    std::string const table = broken_table();
    if (!table.empty()) return table;
    if (seen.others != others_ || seen.no_ints != no_ints_ || (is_vector_ && !seen.is_vector) ||
        (greatest_known_ && greatest_ != seen.greatest))
        return broken("H7");
    if (set_index_ && !set_index_->is_whole(*this)) return broken("H10");
    if (!has_right_values()) return broken("H11");
    return deep ? broken_deep() : std::string();
}

bool cAttrHash::has_word(cAttrNode const &node) const {
    if (form_ != cHashForm::table) return fits_index(node.kind_) && index_holds(node);
    return node.slot_ < size_ && node_of(words_[node.slot_]) == &node;
}

std::string cAttrHash::broken_table() const {
    if (is_too_full(used_, size_)) return broken("H5");
    if (form_ != cHashForm::table) return {};
    std::uint32_t words = 0, unused = 0;
    for (std::uint32_t i = 0; i < size_; ++i) {
        words += words_[i] > slot_deleted;
        unused += words_[i] == slot_unused;
    }
    if (words != used_) return broken("H1");
    if (is_worn(unused, size_)) return broken("H5");
    return unused == unused_ ? std::string() : broken("H6");
}

std::string cAttrHash::broken_deep() const {
    for (cAttrNode *node = first(); node; node = next(node)) {
        if (is_floating(node->kind_)) continue;
        if (node->key()->type().is_keytype() && locate(node->key()) != node) {
            for (cAttrNode *other = first(); other; other = next(other))
                if (other != node && other->key()->type().hasheq(other->key(), node->key()))
                    return broken("H3", node);
            return broken("H8", node);
        }
    }
    return {};
}

#ifdef QRV_CHECKS
void cAttrHash::check() const {
    bool const is_small = used_ <= 32 && (changes_ < 4096 || changes_ % 64 == 0);
    if (!is_small && (changes_ & (changes_ - 1)) != 0) return;
    std::string const rule = broken_rule(false);
    if (rule.empty()) return;
    std::fprintf(stderr, "cAttrHash: broken rule %s\n", rule.c_str());
    std::abort();
}
#else
void cAttrHash::check() const {}
#endif
