#include "edit/cmatching.h"

#include "qrv/core/ctypes.h"

#include <algorithm>

namespace qrv::edit {
namespace {

std::vector<cAttrNode const *> nodes_of(cMapObj const &container) {
    cAttrHash const &hash = container.datamap();
    std::vector<cAttrNode const *> nodes;
    nodes.reserve(hash.used());
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node)) nodes.push_back(node);
    return nodes;
}

} // namespace

Matching::Matching(Snapshot const &before, objref const &root, bool by_parts)
    : before_(before), donation_(before, root), by_parts_(by_parts) {
    walk(root);
    if (by_parts_) find_changed();
    match_alive(false);
    for (size_t i = 0; i < bound_.size(); ++i) match_replaced(*bound_[i].first, *bound_[i].second);
    match_alive(true);
    for (auto const &[container, entries] : before.containers()) {
        if (by_parts_ && !changed_.count(container) && is_in_tree(container)) continue;
        for (WasEntry const &entry : entries)
            if (!is_bound(entry)) removed_[entry.value.get()].push_back(&entry);
    }
}

// Collects containers and values. Clears by_parts_ if a value other than a constant is shared.
void Matching::walk(objref const &root) {
    if (container_in(root)) alive_.push_back(root);
    values_.push_back(root.get());
    std::unordered_set<cObj const *> met{root.get()}; // containers
    for (size_t i = 0; i < alive_.size(); ++i) {
        objref const container = alive_[i];
        for (cAttrNode const *const node : nodes_of(*container_in(container))) {
            objref const &value = node->valref();
            values_.push_back(value.get());
            if (container_in(value) && met.insert(value.get()).second) alive_.push_back(value);
        }
    }
    std::sort(values_.begin(), values_.end());
    for (auto it = values_.begin(); by_parts_ && it != values_.end();) {
        it = std::adjacent_find(it, values_.end());
        if (it == values_.end()) break;
        cObj const *const shared = *it;
        by_parts_ = !shared || cat::find_const(shared);
        it = std::upper_bound(it, values_.end(), shared);
    }
}

// Walks backwards, from inner to outer containers: nothing is shared, so each container comes after
// the one around it. A container of the donor counts as changed.
void Matching::find_changed() {
    for (size_t i = alive_.size(); i > 0; --i) {
        objref const &container = alive_[i - 1];
        Was const *const was = before_.entries(container.get());
        bool changed = !was || before_.is_donated(container.get()) ||
                       !before_.is_still(*was, *container_in(container));
        if (!changed && !changed_.empty())
            changed = std::any_of(was->begin(), was->end(), [&](WasEntry const &entry) {
                return entry.is_container() && changed_.count(entry.value.get());
            });
        if (changed) changed_.insert(container.get());
    }
}

bool Matching::is_in_tree(cObj const *value) const {
    return std::binary_search(values_.begin(), values_.end(), value);
}

bool Matching::is_left_out(objref const &container) const {
    return by_parts_ && !changed_.count(container.get());
}

void Matching::match_alive(bool donated) {
    for (objref const &container : alive_)
        if (Was const *const was = before_.entries(container.get());
            was && before_.is_donated(container.get()) == donated && !is_left_out(container))
            match(*was, *container_in(container));
}

void Matching::match(Was const &was, cMapObj const &now) {
    Nodes const nodes = nodes_of(now);
    if (is_list(now))
        match_by_value(was, nodes, now.is_set());
    else
        match_by_node(was, nodes);
}

void Matching::bind(WasEntry const &was, cAttrNode const &node) {
    if (is_bound(node)) return;
    bound_anids_.insert(was.anid);
    was_.emplace(&node, &was);
    bound_.emplace_back(&was, &node);
}

// Matches by node, then by value: a renamed key has a new node with the old value.
void Matching::match_by_node(Was const &was, Nodes const &nodes) {
    std::unordered_map<std::uint32_t, WasEntry const *> by_anid;
    std::unordered_map<cObj const *, WasEntry const *> by_value;
    for (WasEntry const &entry : was) by_anid.emplace(entry.anid, &entry);
    for (cAttrNode const *const node : nodes)
        if (auto const found = by_anid.find(node->anid()); found != by_anid.end())
            bind(*found->second, *node);
    for (WasEntry const &entry : was)
        if (!is_bound(entry) && !is_constant(entry.value))
            by_value.emplace(entry.value.get(), &entry);
    for (cAttrNode const *const node : nodes)
        if (auto const found = by_value.find(node->valref().get());
            !is_bound(*node) && found != by_value.end() && !is_bound(*found->second))
            bind(*found->second, *node);
}

// Matches equal values at both ends first; then each value, from the front, with its first former
// entry. A set that was assigned has new objects, which may be equal to the old ones. Of the rest,
// entries with the same node were replaced.
void Matching::match_by_value(Was const &was, Nodes const &nodes, bool is_set) {
    size_t const most = std::min(was.size(), nodes.size());
    auto const same = [](WasEntry const &entry, cAttrNode const *node) {
        return entry.value == node->valref();
    };
    size_t first = 0, last = 0;
    while (first < most && same(was[first], nodes[first])) ++first;
    while (last < most - first && same(was[was.size() - 1 - last], nodes[nodes.size() - 1 - last]))
        ++last;
    for (size_t i = 0; i < first; ++i) bind(was[i], *nodes[i]);
    for (size_t i = last; i > 0; --i) bind(was[was.size() - i], *nodes[nodes.size() - i]);
    std::unordered_map<cObj const *, std::vector<WasEntry const *>> by_value; // in reverse order
    for (size_t i = was.size() - last; i > first; --i)
        by_value[was[i - 1].value.get()].push_back(&was[i - 1]);
    std::unordered_map<std::uint32_t, cAttrNode const *> left;
    for (size_t i = first; i < nodes.size() - last; ++i) {
        auto const found = by_value.find(nodes[i]->valref().get());
        if (found == by_value.end() || found->second.empty()) {
            left.emplace(nodes[i]->anid(), nodes[i]);
            continue;
        }
        bind(*found->second.back(), *nodes[i]);
        found->second.pop_back();
    }
    if (is_set) match_equal(was, nodes);
    for (size_t i = first; i < was.size() - last; ++i)
        if (auto const found = left.find(was[i].anid); found != left.end() && !is_bound(was[i]))
            bind(was[i], *found->second);
}

void Matching::match_equal(Was const &was, Nodes const &nodes) {
    auto const text_of = [](objref const &value) {
        return value->type().name() + ' ' + exact_text(value);
    };
    std::unordered_map<std::string, cAttrNode const *> left;
    for (cAttrNode const *const node : nodes)
        if (!is_bound(*node)) left.emplace(text_of(node->valref()), node);
    if (left.empty()) return;
    for (WasEntry const &entry : was)
        if (auto const found = is_bound(entry) ? left.end() : left.find(text_of(entry.value));
            found != left.end() && !is_bound(*found->second))
            bind(entry, *found->second);
}

// --- containers that replaced others ---

bool Matching::alike(WasEntry const &was, objref const &now) const {
    if (!was.value || !now || &was.value->type() != &now->type()) return false;
    if (was.is_container()) return container_in(now) != nullptr;
    return !container_in(now) && before_.is_still(was, now);
}

void Matching::match_replaced(WasEntry const &was, cAttrNode const &node) {
    objref const &now = node.valref();
    Was const *const entries = before_.entries(was.value.get());
    cMapObj const *const container = container_in(now);
    if (!entries || !container || now == was.value || &now->type() != &was.value->type()) return;
    if (before_.entries(now.get()) && !before_.is_donated(now.get())) return;
    if (is_in_tree(was.value.get())) return;
    if (instead_.count(now.get()) || !replaced_.insert(was.value.get()).second) return;
    instead_.emplace(now.get(), was.value);
    Nodes const nodes = nodes_of(*container);
    if (is_list(*now))
        match_by_place(*entries, nodes);
    else
        match_by_key(*entries, nodes);
}

void Matching::match_by_key(Was const &was, Nodes const &nodes) {
    std::unordered_map<std::string, WasEntry const *> by_key;
    for (WasEntry const &entry : was) by_key.emplace(exact_text(before_.key(entry)), &entry);
    for (cAttrNode const *const node : nodes)
        if (auto const found = by_key.find(exact_text(node->key()));
            found != by_key.end() && !is_bound(*found->second))
            bind(*found->second, *node);
}

// Matches equal values at both ends, and the entries between them by position.
void Matching::match_by_place(Was const &was, Nodes const &nodes) {
    size_t const most = std::min(was.size(), nodes.size());
    size_t last = 0;
    while (last < most &&
           alike(was[was.size() - 1 - last], nodes[nodes.size() - 1 - last]->valref()))
        ++last;
    for (size_t i = 0; i < most - last; ++i) bind(was[i], *nodes[i]);
    for (size_t i = last; i > 0; --i) bind(was[was.size() - i], *nodes[nodes.size() - i]);
}

// --- questions ---

WasEntry const *Matching::was(cAttrNode const &node) const {
    auto const found = was_.find(&node);
    return found == was_.end() ? nullptr : found->second;
}

bool Matching::continues(objref const &now, objref const &was) const {
    if (now == was) return true;
    objref const *const replaced = replaced_by(now);
    return replaced && *replaced == was;
}

objref const *Matching::replaced_by(objref const &now) const {
    auto const found = instead_.find(now.get());
    return found == instead_.end() ? nullptr : &found->second;
}

unsigned Matching::places(objref const &value) const {
    auto const [first, last] = std::equal_range(values_.begin(), values_.end(), value.get());
    return static_cast<unsigned>(last - first);
}

WasEntry const *Matching::take_removed(cAttrNode const &node) {
    WasEntry const *const donated = donation_.of(node);
    auto const found = removed_.find(node.valref().get());
    if (found == removed_.end() || found->second.empty()) return donated;
    if (donated) {
        std::erase(found->second, donated);
        return donated;
    }
    if (is_constant(node.valref()) && found->second.size() > 1) return nullptr; // ambiguous
    WasEntry const *const entry = found->second.back();
    found->second.pop_back();
    return entry;
}

WasEntry const *Matching::donated(WasEntry const &was, cAttrNode const &node) const {
    WasEntry const *const entry = donation_.of(node);
    bool const given = entry && entry->value == node.valref() && was.value != node.valref();
    return given ? entry : nullptr;
}

} // namespace qrv::edit
