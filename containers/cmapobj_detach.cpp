// Private copies: cat::detach, copy on write for one value, and cMapObj::detach for all values of
// a map.
//
// A deep detach copies each container once, however often it is held, and stores the copy in all
// its places. So the copy of a map that holds itself holds itself. The whole call shares the list
// of copies.

#include "containers/as_map.h"
#include "containers/ccompare.h"
#include "containers/cplain_copy.h"
#include "containers/cringwalk.h"
#include "core/cattrhash_insert.h"
#include "core/cregistry.h"
#include "qrv/base/platform/cstack.h"
#include "qrv/containers/cattspec.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/ctypes.h"

#include <unordered_map>
#include <utility>
#include <vector>

namespace {

objref new_container(objref const &value) {
    if (cObj::is_map(value)) return make<cMapObj>();
    if (cObj::is_vector(value)) return make<cVectorObj>();
    if (cObj::is_set(value)) return make<cSetObj>();
    return nullptr;
}

bool has_library_methods(cTypeObj const &type) {
    return type.method(mid_assign) == reinterpret_cast<cVoidFunction>(&cTomMap::m_assign) &&
           type.method(mid_setattr) == reinterpret_cast<cVoidFunction>(&cTomMap::setattr) &&
           type.method(mid_getattr) == reinterpret_cast<cVoidFunction>(&cTomMap::getattr);
}

// Copies a plain map into a new one. Has the effect of assign, but does not search all values for
// the new map.
bool fill_plainly(cObj const &source, cMapObj &fresh) {
    bool const plain = cObj::is_map(&source) && has_library_methods(source.type()) &&
                       !source.flags_of(int{asf_all} | int{of_exe_member}) && fresh.flags() == 0 &&
                       !fresh.entrytype() && fresh.datamap().empty();
    cMapObj const *const map = plain ? cat::as_map(&source) : nullptr;
    if (!map) return false;
    hashref const to = fresh.datamap_ref();
    hashref const from = map->datamap_ref();
    for (cRingWalk walk(*from); walk.valid(); walk.step()) to->mapitem(walk.key(), walk.valref());
    return true;
}

// One call of detach with its recursion.
class cDetach {
  public:
    explicit cDetach(bool deep) noexcept : deep_(deep) {}
    cDetach(cDetach const &) = delete;
    cDetach &operator=(cDetach const &) = delete;
    ~cDetach() = default;

    bool outermost(cMapObj &map) {
        if (deep_) remember(objref::share(&map), objref::share(&map));
        return all(map);
    }

  private:
    struct cCopy {
        objref old; // held, so that its address is not used again
        objref copy;
    };

    // The remaining work in one map.
    class cRest {
      public:
        cRest(cDetach &call, cAttrHash const &hash)
            : call_(call), hash_(hash), outer_(call.rests_) {
            call.rests_ = this;
            node = hash.first();
            if (!call.quiet_) list_keys();
        }
        cRest(cRest const &) = delete;
        cRest &operator=(cRest const &) = delete;
        ~cRest() { call_.rests_ = outer_; }

        cRest *outer() const noexcept { return outer_; }
        void list_keys() {
            if (copied) copied_key = copied->key();
            for (; node; node = hash_.next(node)) keys.push_back(node->key());
        }

        // While the call is quiet: the node whose container is being copied, and the next one.
        cAttrNode const *copied = nullptr;
        cAttrNode *node = nullptr;
        // When the call is no longer quiet.
        objref copied_key;
        std::vector<objref> keys;

      private:
        cDetach &call_;
        cAttrHash const &hash_;
        cRest *outer_;
    };

    bool all(cMapObj &map);
    bool item_quietly(cAttrHash &hash, cRest &rest, bool &done);
    bool container_quietly(cAttrHash &hash, cRest &rest, cAttrNode &node);
    void expect_user_code();
    bool is_quiet(cObj const &container) const;
    bool item(cAttrHash &hash, objref const &key);
    bool container(cAttrHash &hash, objref key, objref value);
    bool copy(objref const &value, objref &new_copy);
    bool remember(objref const &value, objref const &copy) {
        return copies_.try_emplace(value.get(), cCopy{value, copy}).second;
    }

    bool const deep_;
    bool quiet_ = true; // no user code has run
    cRest *rests_ = nullptr;
    std::unordered_map<cObj const *, cCopy> copies_;
};

// Switches to replacing values by the methods of their types. These may change any of the maps, but
// the call handles the keys that the maps have now.
void cDetach::expect_user_code() {
    if (!std::exchange(quiet_, false)) return;
    for (cRest *rest = rests_; rest; rest = rest->outer()) rest->list_keys();
}

bool cDetach::is_quiet(cObj const &container) const {
    return deep_ && (copies_.contains(&container) || cat::copies_plainly(container) ||
                     cat::is_plain_set(container));
}

// Handles the next value if that runs no user code. Replacing an old value without another holder
// would destroy it, which may run user code.
bool cDetach::item_quietly(cAttrHash &hash, cRest &rest, bool &done) {
    cAttrNode &node = *rest.node;
    objref const &value = node.valref();
    if (!cAttrInsert::has_plain_key(node)) return false;
    if (cObj::is_void(value)) {
        done = false;
    } else if (value->refs() == 1) {
        return false;
    } else if (value->type().flags_of(tf_container)) {
        if (!is_quiet(*value)) return false;
        rest.node = hash.node_at(node.next());
        done &= container_quietly(hash, rest, node);
        return true;
    } else {
        objref clone = cat::clone_plainly(*value);
        if (!clone) return false;
        cAttrInsert::swap_scalar(node, clone);
    }
    rest.node = hash.node_at(node.next());
    return true;
}

// Copies a container. Values below it may run user code, which may remove the node.
bool cDetach::container_quietly(cAttrHash &hash, cRest &rest, cAttrNode &node) {
    objref const value = node.valref();
    objref new_value = new_container(value);
    if (!new_value) return true;
    rest.copied = &node;
    bool const done = copy(value, new_value);
    if (quiet_)
        cAttrInsert::replace(node, std::move(new_value));
    else
        hash.setitem(rest.copied_key, new_value);
    rest.copied = nullptr;
    return done;
}

// Clones a value that isn't a container. `value` is a second owner, so no value counts as private
// here.
bool clone_item(cAttrHash &hash, objref const &key, objref value) {
    bool const done = cat::detach(value, false);
    hash.setitem(key, value);
    return done;
}

bool cDetach::item(cAttrHash &hash, objref const &key) {
    objref const value = hash.getitem(key);
    if (cObj::is_void(value) || !value->is_container()) return clone_item(hash, key, value);
    return container(hash, key, value);
}

bool cDetach::container(cAttrHash &hash, objref key, objref value) {
    objref new_value = new_container(value);
    if (!new_value) return true;
    bool done = true;
    if (deep_)
        done = copy(value, new_value);
    else
        new_value->assign(value);
    hash.setitem(key, new_value);
    return done;
}

bool cDetach::all(cMapObj &map) {
    hashref const hash = map.datamap_ref();
    cRest rest(*this, *hash);
    if (!cAttrInsert::is_ready(*hash)) expect_user_code();
    if (deep_ && cat::stack_low()) {
        expect_user_code();
        return cat::too_deep(map);
    }
    bool done = true;
    while (rest.node && item_quietly(*hash, rest, done)) {
    }
    if (rest.node) expect_user_code();
    for (objref const &key : rest.keys)
        if (hash->find(key)) done &= item(*hash, key);
    return done;
}

// Copies a container into new_copy, which is empty. If the call has copied this container before,
// new_copy becomes that copy instead.
bool cDetach::copy(objref const &value, objref &new_copy) {
    if (!remember(value, new_copy)) {
        new_copy = copies_.find(value.get())->second.copy;
        return true;
    }
    cMapObj *const map = cat::as_map(new_copy);
    if (!map) return false;
    if (quiet_ && !cObj::is_set(value))
        cAttrInsert::copy(map->datamap(), cat::as_map(value)->datamap());
    else if (!fill_plainly(*value, *map))
        map->assign(value);
    return all(*map);
}

} // namespace

bool cat::detach(objref const &ref, bool deep) {
    if (!detach_value(ref)) return false;
    if (!deep || !ref->is_container()) return true;
    objref const held = ref;
    cMapObj *const map = as_map(held);
    return !map || map->detach(true);
}

bool cMapObj::detach(bool deep) { return cDetach(deep).outermost(*this); }
