// Finds types that only cycles of references keep alive. The graph of everything that can be
// reached from some types has a node for each object and each hash that can lead to a type, and an
// edge for each reference between them. A node with more references than incoming edges is held
// from outside; it and all nodes that it leads to are alive. All other nodes are garbage.
//
// An owner that the graph does not know counts as one from outside: so a type may be freed too
// late, but never too early. Building the graph runs no user code.

#include "containers/ctype_cycles.h"

#include "containers/as_map.h"
#include "qrv/containers/cattspec.h"
#include "qrv/containers/cchoiceval.h"
#include "qrv/containers/cmapobj.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace {

using cTypes = std::vector<typeref>;

constinit cTypes *suspects = nullptr; // null without suspects

// The time of a search grows with the number of suspects. While there are few, each call searches.
// Otherwise a call searches only if there are at least twice as many as after the last search.
constexpr std::size_t few = 16;
constinit std::size_t enough = few;

class cTypeGraph {
  public:
    // Each entry of `roots` is itself a reference to its type, and not one from outside.
    explicit cTypeGraph(cTypes const &roots) {
        for (typeref const &root : roots) --nodes_[node_of(*root)].outside;
        for (std::size_t i = 0; i < nodes_.size(); ++i) {
            if (cObj *const obj = nodes_[i].obj)
                add_edges(i, *obj);
            else
                add_edges(i, *nodes_[i].hash);
        }
    }

    bool leads_to_itself(cTypeObj &root) {
        std::size_t const node = node_of(root);
        return nodes_[node].outside + 1 != owners_of(root);
    }

    cTypes garbage() {
        mark_living();
        cTypes types;
        for (cNode const &node : nodes_) {
            auto *const type = node.lives ? nullptr : dynamic_cast<cTypeObj *>(node.obj);
            if (type) types.push_back(typeref::share(type));
        }
        return types;
    }

  private:
    struct cNode {
        cObj *obj;
        cAttrHash const *hash;
        std::size_t outside; // references without an edge
        std::vector<std::size_t> edges = {};
        bool lives = false;
    };

    static std::size_t owners_of(cObj const &obj) {
        auto const *const type = dynamic_cast<cTypeObj const *>(&obj);
        return std::size_t{obj.refs()} + (type ? type->objects() : 0);
    }

    std::size_t node_of(cObj &obj) {
        auto const [found, is_new] = index_.emplace(&obj, nodes_.size());
        if (is_new) nodes_.push_back({&obj, nullptr, owners_of(obj)});
        return found->second;
    }

    std::size_t node_of(cAttrHash const &hash) {
        auto const [found, is_new] = index_.emplace(&hash, nodes_.size());
        if (is_new) nodes_.push_back({nullptr, &hash, hash.refs()});
        return found->second;
    }

    static bool leads_on(cObj const &obj) {
        return obj.is_type() || obj.holds_type() || obj.has_ommap() || cat::as_map(&obj) ||
               dynamic_cast<cAttspec const *>(&obj) || dynamic_cast<cIterObj const *>(&obj);
    }

    template <class T> void add_edge(std::size_t from, T &target) {
        std::size_t const to = node_of(target);
        --nodes_[to].outside;
        nodes_[from].edges.push_back(to);
    }

    void add_edge(std::size_t from, cObj *target) {
        if (target && leads_on(*target)) add_edge<cObj>(from, *target);
    }

    void add_hash(std::size_t from, cAttrHash const *hash) {
        if (hash) add_edge(from, *hash);
    }

    void add_edges(std::size_t from, cAttrHash const &hash) {
        for (cAttrNode const *node = hash.first(); node; node = hash.next(node))
            add_edge(from, node->valref().get());
    }

    void add_edges(std::size_t from, cObj &obj) {
        if (obj.holds_type()) add_edge<cObj>(from, obj.type());
        add_hash(from, obj.ommap_ptr());
        if (auto const *const map = cat::as_map(&obj)) {
            add_hash(from, map->datamap_ref());
        } else if (auto const *const type = dynamic_cast<cTypeObj const *>(&obj)) {
            add_edges(from, type->tmmap());
        } else if (auto const *const spec = dynamic_cast<cAttspec const *>(&obj)) {
            cObj *const value = spec->get_default().get(); // an objref here would be counted
            add_edge(from, value);
            add_edge(from, spec->held_type().get());
        } else if (auto const *const it = dynamic_cast<cIterObj const *>(&obj)) {
            add_hash(from, it->hash_ref());
            if (auto const *const choice = dynamic_cast<cChoiceVal const *>(it))
                add_edge(from, choice->held_type().get());
        }
    }

    void mark_living() {
        std::vector<std::size_t> living;
        auto const mark = [&](std::size_t node) {
            if (!std::exchange(nodes_[node].lives, true)) living.push_back(node);
        };
        for (std::size_t i = 0; i < nodes_.size(); ++i)
            if (nodes_[i].outside != 0) mark(i);
        while (!living.empty()) {
            std::size_t const node = living.back();
            living.pop_back();
            for (std::size_t const to : nodes_[node].edges) mark(to);
        }
    }

    std::vector<cNode> nodes_; // grows while edges are added
    std::unordered_map<void const *, std::size_t> index_;
};

// Adds the types that lead to themselves to the suspects, each once. `left` still holds them too.
void remember(cTypes const &left) {
    for (typeref const &type : left) {
        bool const known = suspects && std::ranges::find(*suspects, type) != suspects->end();
        if (known || !cTypeGraph({type}).leads_to_itself(*type)) continue;
        if (!suspects) suspects = new cTypes;
        suspects->push_back(type);
    }
}

// Clears the members of these types. That breaks all their cycles, since each contains one of them.
void destroy(cTypes garbage) {
    std::erase_if(*suspects, [&](typeref const &type) {
        return std::ranges::find(garbage, type) != garbage.end();
    });
    for (typeref const &type : garbage) type->tmmap().clear(); // RE-ENTERS
    garbage.clear();                                           // RE-ENTERS
}

} // namespace

void cat::free_types(cTypes &left) {
    remember(left);
    left.clear(); // RE-ENTERS
    if (!suspects || (suspects->size() > few && suspects->size() < enough)) return;
    destroy(cTypeGraph(*suspects).garbage()); // RE-ENTERS
    enough = suspects ? 2 * suspects->size() : few;
    if (suspects && suspects->empty()) delete std::exchange(suspects, nullptr);
}

void cat::cut_type_cycles() {
    if (suspects) destroy(cTypes(*suspects)); // RE-ENTERS
    delete std::exchange(suspects, nullptr);
    enough = few;
}
