#include "edit/cdonation.h"

namespace qrv::edit {

Donation::Donation(Snapshot const &before, objref const &root) : before_(before) {
    if (!before.donor()) return;
    for (auto const &[container, entries] : before.containers())
        if (before.is_donated(container))
            for (WasEntry const &entry : entries) own_.emplace(entry.anid, &entry);
    visit(root, before.donor());
    while (!todo_.empty()) {
        auto const [now, donated] = todo_.back();
        todo_.pop_back();
        walk(now, *before.entries(donated));
    }
}

// Skips a container that is the same object in both trees: `own_` has its nodes.
void Donation::visit(objref const &now, objref const &donated) {
    if (now == donated || !container_in(now) || !container_in(donated)) return;
    if (before_.entries(donated.get()) && met_.emplace(now.get(), donated.get()).second)
        todo_.emplace_back(now.get(), donated.get());
}

void Donation::walk(cObj const *now, Entries const &entries) {
    auto const &container = dynamic_cast<cMapObj const &>(*now);
    if (is_list(*now))
        walk_list(container, entries);
    else
        walk_map(container, entries);
}

void Donation::walk_map(cMapObj const &now, Entries const &entries) {
    for (WasEntry const &entry : entries) {
        cAttrNode const *const node = now.datamap().find(before_.key(entry));
        if (!node) continue;
        pair(*node, entry);
        visit(node->valref(), entry.value);
    }
}

void Donation::walk_list(cMapObj const &now, Entries const &entries) {
    cAttrHash const &hash = now.datamap();
    std::vector<cAttrNode const *> nodes;
    nodes.reserve(hash.used());
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node)) nodes.push_back(node);
    size_t left = nodes.size();
    for (size_t i = entries.size(); i > 0 && left > 0; --i) {
        if (nodes[left - 1]->valref() != entries[i - 1].value) continue;
        pair(*nodes[--left], entries[i - 1]);
    }
    if (!now.is_vector()) return;
    for (size_t i = 0; i < nodes.size() && i < entries.size(); ++i)
        visit(nodes[i]->valref(), entries[i].value);
}

void Donation::pair(cAttrNode const &node, WasEntry const &entry) {
    WasEntry const *&known = entries_[&node];
    if (!known || (known->value != node.valref() && entry.value == node.valref())) known = &entry;
}

WasEntry const *Donation::of(cAttrNode const &node) const {
    auto const found = entries_.find(&node);
    if (found != entries_.end()) return found->second;
    auto const own = own_.find(node.anid());
    return own == own_.end() ? nullptr : own->second;
}

} // namespace qrv::edit
