// Private copies: cat::detach, copy on write for one value, and cMapObj::detach for all values of
// a map.
//
// A deep detach copies each container once, however often it is held, and gives the copy to all
// places; so a map that holds itself holds its own copy afterwards. The copies made so far are
// known to the whole call.

#include "containers/ccompare.h"
#include "containers/cringwalk.h"
#include "core/cregistry.h"
#include "qrv/base/platform/cstack.h"
#include "qrv/containers/cattspec.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/ctypes.h"

#include <unordered_map>
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

// A plain map into a fresh one. The same as assign, which would walk all that stands below each
// value to see that the fresh map isn't there.
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

// One deep detach with all that it recurses into.
class cDeepDetach {
  public:
    explicit cDeepDetach(cMapObj &outermost) {
        objref const self = objref::share(&outermost);
        copies_[&outermost] = {self, self};
    }
    cDeepDetach(cDeepDetach const &) = delete;
    cDeepDetach &operator=(cDeepDetach const &) = delete;
    ~cDeepDetach() = default;

    // The copy of a container, into new_copy unless one was made before.
    bool copy(objref const &value, objref &new_copy);

  private:
    struct cCopy {
        objref old; // held, so that its address stays its own
        objref copy;
    };
    std::unordered_map<cObj const *, cCopy> copies_;
};

// Not a container: a clone. The reference handed in is a second owner, so a value is never taken
// for private.
bool clone_item(cAttrHash &hash, objref const &key, objref value) {
    bool const done = cat::detach(value, false);
    hash.setitem(key, value);
    return done;
}

bool detach_item(cAttrHash &hash, objref const &key, cDeepDetach *deep) {
    objref const value = hash.getitem(key);
    if (cObj::is_void(value) || !value->is_container()) return clone_item(hash, key, value);
    objref copy = new_container(value);
    if (!copy) return true;
    bool done = true;
    if (deep)
        done = deep->copy(value, copy);
    else
        copy->assign(value);
    hash.setitem(key, copy);
    return done;
}

bool detach_all(cMapObj &map, cDeepDetach *deep) {
    if (deep && cat::stack_low()) return cat::too_deep(map);
    hashref const hash = map.datamap_ref();
    std::vector<objref> keys; // fixed: replacing values runs foreign code
    for (cAttrNode const *node = hash->first(); node; node = hash->next(node))
        keys.push_back(node->key());
    bool done = true;
    for (objref const &key : keys)
        if (hash->find(key)) done &= detach_item(*hash, key, deep);
    return done;
}

bool cDeepDetach::copy(objref const &value, objref &new_copy) {
    auto const [place, is_new] = copies_.try_emplace(value.get(), cCopy{value, new_copy});
    if (!is_new) {
        new_copy = place->second.copy;
        return true;
    }
    cMapObj *const map = cat::as_map(new_copy);
    if (!map) return false;
    if (!fill_plainly(*value, *map)) map->assign(value);
    return detach_all(*map, this);
}

} // namespace

bool cat::detach(objref const &ref, bool deep) {
    if (!detach_value(ref)) return false;
    if (!deep || !ref->is_container()) return true;
    objref const held = ref;
    cMapObj *const map = as_map(held);
    return !map || map->detach(true);
}

bool cMapObj::detach(bool deep) {
    if (!deep) return detach_all(*this, nullptr);
    cDeepDetach copies(*this);
    return detach_all(*this, &copies);
}
