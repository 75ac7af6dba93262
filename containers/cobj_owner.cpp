// is_owner_of: is an object anywhere below another? The walk is iterative and visits each container
// once, so it ends on cycles and takes linear time on shared parts. It skips values that can hold
// nothing without a call, and walks the library's own containers in their rings.
//
// Before text stores a value, the walk visits all that the value keeps alive: the hash of an
// iterator, the type of a choice value, the members of a type, the default and the type of a
// specification, and the value's own members. For a program it visits only what can be reached by
// begin().

#include "containers/as_map.h"
#include "containers/cmergebudget.h"
#include "containers/cringwalk.h"
#include "containers/csetup.h"
#include "qrv/containers/cattspec.h"
#include "qrv/containers/cchoiceval.h"
#include "qrv/core/ctypeobj.h"

#include <unordered_set>
#include <vector>

namespace {

constinit cVoidFunction default_iterobj = nullptr;

class cOwnerWalk {
  public:
    enum cReach { anything, plain_only };
    cOwnerWalk(cObj const &other, cat::cMergeBudget *budget, cReach reach = anything)
        : other_(other), budget_(budget), reach_(reach) {}
    cOwnerWalk(cOwnerWalk const &) = delete;
    cOwnerWalk &operator=(cOwnerWalk const &) = delete;
    ~cOwnerWalk() = default;

    // Breadth first. held_ keeps all visited objects alive, so that their addresses stay unique.
    bool finds_from(cObj &root) {
        visit(objref::share(&root));
        return finds_in_visited();
    }
    bool finds_from(cAttrHash const &root) { return finds_in_ring(root) || finds_in_visited(); }

    // Does the object hold values that begin() doesn't reach? Most don't.
    static bool keeps_values(cObj const &obj) {
        if (obj.typeflags_of(tf_bare)) return false;
        return obj.is_type() || dynamic_cast<cIterObj const *>(&obj) ||
               dynamic_cast<cAttspec const *>(&obj);
    }

  private:
    bool finds_in_visited() {
        for (size_t i = 0; i < held_.size(); ++i)
            if (finds_in(*objref(held_[i]))) return true;
        return false;
    }

    void visit(objref const &value) {
        bool const holds = cat::may_hold_values(*value) || (budget_ && keeps_values(*value));
        if (holds && seen_.insert(value.get()).second) held_.push_back(value);
    }

    // Visits the values that begin() doesn't reach.
    bool finds_kept(cObj &holder) {
        if (holder.has_ommap() && finds_in_ring(holder.ommap())) return true;
        if (auto const *const type = dynamic_cast<cTypeObj const *>(&holder))
            return finds_in_ring(type->tmmap());
        if (auto *const spec = dynamic_cast<cAttspec *>(&holder))
            return is_it(spec->get_default()) || finds_type_of(*spec);
        auto const *const it = dynamic_cast<cIterObj const *>(&holder);
        if (!it) return false;
        if (dynamic_cast<cChoiceVal const *>(it) && is_it(objref::share(&it->type()))) return true;
        auto const *const map = cat::as_map(&other_);
        hashref const hash = it->hash_ref();
        return hash && ((map && map->datamap_ref() == hash) || finds_in_ring(*hash));
    }

    // A type may name itself in its declaration.
    bool finds_type_of(cAttspec const &spec) {
        typeref const &type = spec.held_type();
        return type && !cAttspec::is_registered(*type) && is_it(type);
    }

    // Is this the searched object? If not, adds the value to those that are visited later.
    bool is_it(objref const &value) {
        if (!value) return false;
        if (value == &other_) return true;
        visit(value);
        return false;
    }

    bool may_continue() { return !budget_ || budget_->charge(1); }

    bool finds_in(cObj &holder) {
        if (budget_ && finds_kept(holder)) return true;
        if (!cat::may_hold_values(holder)) return false;
        auto const iterobj = reinterpret_cast<cVoidFunction>(&cTomMap::iterobj);
        auto *const map = cat::as_map(&holder);
        bool const plain =
            map && !holder.flags_of(of_exe_member) && holder.type().method(mid_iterobj) == iterobj;
        if (!plain && reach_ == plain_only) return true; // the object may be below this value
        return plain ? finds_in_ring(map->datamap()) : finds_by_iterator(holder);
    }

    bool finds_in_ring(cAttrHash const &hash) {
        for (cAttrNode const *node = hash.first(); node && may_continue(); node = hash.next(node))
            if (is_it(node->valref())) return true;
        return false;
    }

    bool finds_by_iterator(cObj &holder) {
        for (cIterObj it = holder.begin(); it.valid() && may_continue(); ++it)
            if (is_it(it.valref())) return true;
        return false;
    }

    cObj const &other_;
    cat::cMergeBudget *budget_;
    cReach reach_;
    std::unordered_set<cObj const *> seen_;
    std::vector<objref> held_;
};

} // namespace

void cat::note_default_iterobj(cTypeObj const &type) noexcept {
    default_iterobj = type.method(mid_iterobj);
}

bool cat::may_hold_values(cObj const &obj) noexcept {
    return obj.flags_of(of_exe_member) || obj.type().method(mid_iterobj) != default_iterobj;
}

bool cObj::is_owner_of(cObj const &other) {
    return cat::may_hold_values(*this) && other.may_be_a_value() &&
           cOwnerWalk(other, nullptr).finds_from(*this);
}

bool cat::is_plainly_apart(cAttrHash const &values, cObj const &other) {
    return !cOwnerWalk(other, nullptr, cOwnerWalk::plain_only).finds_from(values);
}

bool cat::owns_charged(objref const &value, cObj const &other) {
    if (cObj::is_void(value)) return false;
    if (!may_hold_values(*value) && !cOwnerWalk::keeps_values(*value)) return false;
    return cOwnerWalk(other, cMergeBudget::current()).finds_from(*value);
}
