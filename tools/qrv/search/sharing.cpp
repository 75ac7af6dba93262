#include "tools/qrv/search/sharing.h"

#include "qrv/containers/cattspec.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"

#include <utility>

namespace {

// The member in which a type stores its declaration; null for other objects.
char const *declarations_of(objref const &object) {
    if (!object->is_type()) return nullptr;
    if (&object->type() == &cat::typetype_attlist()) return "attspec";
    return &object->type() == &cat::typetype_choice() ? "choices" : nullptr;
}

bool has_parts(objref const &object) {
    return as_map(object) || declarations_of(object) ||
           dynamic_cast<cAttspec const *>(object.get());
}

} // namespace

cMapObj const *as_map(objref const &value) { return dynamic_cast<cMapObj const *>(value.get()); }

cSharing::cSharing(objref const &top, std::unordered_set<cObj const *> wanted)
    : wanted_(std::move(wanted)) {
    number_of(top);
    for (size_t i = 0; i < parts_.size(); ++i) add_parts_of(i);
}

size_t cSharing::number_of(objref const &object) {
    auto const [known, fresh] = numbers_.emplace(object.get(), parts_.size());
    if (fresh) parts_.push_back({object, {}});
    return known->second;
}

void cSharing::add(objref const &object, size_t parent, objref const &key) {
    if (!object || (!wanted_.count(object.get()) && !has_parts(object))) return;
    parts_[number_of(object)].ways.push_back({parent, key});
}

void cSharing::add_ring(objref const &map, size_t parent) {
    auto const *const entries = as_map(map);
    if (!entries) return;
    cAttrHash const &hash = entries->datamap();
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node))
        add(node->valref(), parent, node->key());
}

void cSharing::add_parts_of(size_t parent) {
    objref const object = parts_[parent].object; // a copy, since parts_ grows
    if (char const *const member = declarations_of(object))
        add_ring(static_cast<cTypeObj const &>(*object).tmember(member), parent);
    else if (auto const *const spec = dynamic_cast<cAttspec const *>(object.get()))
        add(spec->get_default(), parent, own_key("default"));
    else
        add_ring(object, parent);
}

// Every path back from the value reaches the root, since reading creates no cycles. The limit on
// steps ends the loop even if there is a cycle.
std::vector<std::string> cSharing::paths(cObj const *object, size_t most) const {
    std::vector<std::string> found;
    auto const known = numbers_.find(object);
    if (known == numbers_.end()) return found;
    cat::ExactText const exact;
    std::vector<std::pair<size_t, size_t>> chain{{known->second, 0}}; // a part and its next way
    size_t steps = 2 * (most + 1) * (parts_.size() + 1);
    while (!chain.empty() && found.size() < most && steps-- > 0) {
        auto &[part, next] = chain.back();
        std::vector<cWay> const &ways = parts_[part].ways;
        if (part == 0 && chain.size() > 1) {
            std::string path;
            for (size_t i = chain.size() - 1; i-- > 0;) {
                cWay const &way = parts_[chain[i].first].ways[chain[i].second - 1];
                path += '/' + cat::as_text(way.key);
            }
            found.push_back(std::move(path));
            chain.pop_back();
        } else if (next < ways.size()) {
            size_t const parent = ways[next++].parent;
            chain.emplace_back(parent, 0);
        } else {
            chain.pop_back();
        }
    }
    return found;
}
