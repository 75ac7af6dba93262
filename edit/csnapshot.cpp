#include "edit/csnapshot.h"

#include "qrv/containers/cattspec.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"

#include <utility>

namespace qrv::edit {

cMapObj const *container_in(objref const &value) {
    if (!value || value->is_type() || dynamic_cast<cAttspec const *>(value.get())) return nullptr;
    return dynamic_cast<cMapObj const *>(value.get());
}

std::string exact_text(objref const &value) {
    cat::ExactText const exact;
    return cat::as_text(value);
}

bool is_constant(objref const &value) { return value && cat::find_const(value.get()); }

Snapshot::Snapshot(objref const &root) { add(root); }

void Snapshot::add_donor(objref const &root) {
    donor_ = root;
    Containers target = std::exchange(containers_, {});
    add(root);
    for (auto const &[container, entries] : containers_) donated_.insert(container);
    containers_.merge(target);
}

void Snapshot::add(objref const &root) {
    if (!container_in(root)) {
        add_leaf(root);
        return;
    }
    std::vector<objref> todo{root};
    containers_[root.get()];
    while (!todo.empty()) {
        objref const container = std::move(todo.back());
        todo.pop_back();
        std::vector<WasEntry> entries;
        cAttrHash const &hash = container_in(container)->datamap();
        entries.reserve(hash.used());
        for (cAttrNode const *node = hash.first(); node; node = hash.next(node)) {
            objref const &value = node->valref();
            entries.push_back({node->anid(), node->key(), value});
            values_.emplace(node->anid(), value);
            if (!container_in(value))
                add_leaf(value);
            else if (containers_.try_emplace(value.get()).second)
                todo.push_back(value);
        }
        containers_[container.get()] = std::move(entries);
    }
}

void Snapshot::add_leaf(objref const &value) {
    if (!value || is_constant(value)) return;
    auto const [place, fresh] = texts_.try_emplace(value.get());
    if (fresh) place->second = exact_text(value); // RUNS USER CODE
}

std::vector<WasEntry> const *Snapshot::entries(cObj const *container) const {
    auto const found = containers_.find(container);
    return found == containers_.end() ? nullptr : &found->second;
}

objref const &Snapshot::value(std::uint32_t anid) const {
    static objref const none;
    auto const found = values_.find(anid);
    return found == values_.end() ? none : found->second;
}

std::string Snapshot::text(objref const &value) const {
    auto const found = texts_.find(value.get());
    return found == texts_.end() ? exact_text(value) : found->second;
}

} // namespace qrv::edit
