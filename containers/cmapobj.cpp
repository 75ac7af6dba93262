// Map objects: construction, access to the hash, sub-maps, empty children. The standard methods
// are in cmapobj_methods.cpp, private copies in cmapobj_detach.cpp.

#include "qrv/containers/cmapobj.h"

#include "containers/as_map.h"
#include "containers/ccompare.h"
#include "containers/cringwalk.h"
#include "qrv/base/platform/cstack.h"
#include "qrv/containers/cattr.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"

#include <algorithm>
#include <unordered_map>

cMapObj::cMapObj() : cMapObj(hashref()) {}

cMapObj::cMapObj(hashref hash)
    : cObj(cat::cBuiltinType{&cat::type_map()}, cObjClass::map),
      hash_(hash ? std::move(hash) : make<cAttrHash>(this)) {
    hash_->father(this, false);
}

cMapObj::cMapObj(cMapObj const &other) : cMapObj(&cat::type_map(), true) {
    assign(other);
    flags(other.flags());
}

cMapObj::cMapObj(cObj const &other) : cMapObj() {
    assign(other);
    flags(other.flags());
}

cMapObj::cMapObj(cTypeObj *type, bool create)
    : cObj(type, cObjClass::map), hash_(make<cAttrHash>(this)) {
    if (create) cObj::create();
}

cMapObj::~cMapObj() {
    if (hash_->father() == this) hash_->father(nullptr, true); // others may still share the hash
    end_class();
    if (entrytype_ & holds_entrytype) set_entrytype(nullptr); // RE-ENTERS
}

void cMapObj::set_entrytype(cTypeObj *type) noexcept {
    typeref const old =
        entrytype_ & holds_entrytype ? typeref::adopt(entrytype()) : typeref(); // released last
    entrytype_ = reinterpret_cast<std::uintptr_t>(type);
    if (!type || !type->counts_objects()) return;
    type->incref();
    entrytype_ |= holds_entrytype;
} // RE-ENTERS: old

cMapObj &cMapObj::operator=(cMapObj const &other) {
    assign(other);
    return *this;
}

cMapObj &cMapObj::operator=(cObj const &other) {
    assign(other);
    return *this;
}

int cMapObj::size() const noexcept { return static_cast<int>(hash_->used()); }

void cMapObj::clear() { hash_->clear(); }

// Never destroyed: static objects of clients may use it at any time.
namespace {

constinit objref *scratch_value = nullptr;
constinit cMapObj *scratch_map = nullptr;

// A value that is written here is never read.
objref &empty_scratch_value() {
    if (!scratch_value) scratch_value = new objref;
    *scratch_value = nullptr;
    return *scratch_value;
}

cMapObj &empty_scratch_map() {
    if (scratch_map && &scratch_map->type() != &cat::type_map()) { // of a core that was torn down
        delete scratch_map;
        scratch_map = nullptr;
    }
    if (!scratch_map) {
        scratch_map = new cMapObj;
        scratch_map->obid(0);
    }
    scratch_map->clear();
    return *scratch_map;
}

objref value_or_badfind(cAttrNode const *node) { return node ? node->valref() : cat::badfind(); }

} // namespace

objref &cMapObj::valref_(objref const &key) {
    cAttrNode *node = hash_->find(key);
    if (!node && hash_->mapitem(key, cat::nil())) node = hash_->find(key);
    return node ? node->valref_() : empty_scratch_value();
}

objref &cMapObj::valref_(std::string const &key) { return valref_(make_key(key)); }

objref cMapObj::findvalue(cObj const &value) { return value_or_badfind(hash_->findvalue(value)); }

objref cMapObj::findvalref(cObj const *value) { return value_or_badfind(hash_->findvalref(value)); }

objref cMapObj::findvalref(objref const &value) { return findvalref(value.get()); }

cMapObj *cMapObj::submap_ptr(objref const &key) {
    hashref const hash = hash_; // the old value may own this map
    auto const stored = [&]() -> cMapObj * {
        objref const value = hash->getitem(key);
        return is_map(value) ? cat::as_map(value) : nullptr;
    };
    if (cMapObj *const map = stored()) return map;
    hash->mapitem(key, make<cMapObj>());
    return stored();
}

cMapObj *cMapObj::submap_ptr(std::string const &key) { return submap_ptr(own_key(key)); }

cMapObj &cMapObj::submap(objref const &key) {
    cMapObj *const map = submap_ptr(key);
    return map ? *map : empty_scratch_map();
}

cMapObj &cMapObj::submap(std::string const &key) { return submap(own_key(key)); }

namespace {

// One call of remove_emptychilds with its recursion. It skips a map if nothing was removed anywhere
// since the last pass over that map, and a map whose pass is still running in an outer call. So
// shared parts are cheap, and cycles end.
class cEmptyChilds {
  public:
    explicit cEmptyChilds(bool recursive) : recursive_(recursive) {}
    cEmptyChilds(cEmptyChilds const &) = delete;
    cEmptyChilds &operator=(cEmptyChilds const &) = delete;
    ~cEmptyChilds() = default;

    void run(cMapObj &map) {
        while (pass(map)) {
        }
    }

  private:
    static constexpr std::uint64_t in_progress = ~std::uint64_t{0};

    // True if a key was removed and the walk must start again.
    bool pass(cMapObj &map) {
        hashref const hash = map.datamap_ref();
        for (cRingWalk walk(*hash); walk.valid(); walk.step()) {
            if (!cObj::is_map(walk.valref())) continue;
            objref const held = walk.valref();
            cMapObj *const child = cat::as_map(held);
            if (!child) continue;
            if (child->datamap().empty()) {
                objref const key = walk.key();
                std::uint32_t const before = hash->used();
                hash->delitem(key); // RUNS USER CODE
                // A key that no search finds cannot be removed.
                if (walk.valid() && hash->used() >= before) continue;
                ++removals_;
                return true;
            }
            if (recursive_) descend(*child);
        }
        return false;
    }

    void descend(cMapObj &child) {
        auto const [place, is_new] = done_.try_emplace(&child, in_progress);
        if (!is_new && (place->second == in_progress || place->second == removals_)) return;
        if (cat::stack_low()) {
            cat::too_deep(child);
            return;
        }
        if (is_new) held_.push_back(objref::share(&child)); // so its address is not used again
        place->second = in_progress;
        std::uint64_t const before = removals_;
        run(child);
        // After a pass that removed something another pass may remove more.
        done_[&child] = removals_ == before ? before : in_progress - 1;
    }

    bool recursive_;
    std::uint64_t removals_ = 0;
    std::unordered_map<cMapObj const *, std::uint64_t> done_; // removals_ at a pass without effect
    std::vector<objref> held_;
};

} // namespace

void cMapObj::remove_emptychilds(bool recursive) {
    objref const self = objref::share(this);
    cEmptyChilds(recursive).run(*this);
}

// Splits like std::getline: a delimiter at the end produces no empty last piece.
void cMapObj::append_keys(std::string const &text, char delimiter) {
    if (is_vector()) return;
    for (size_t begin = 0; begin < text.size();) {
        size_t const end = std::min(text.find(delimiter, begin), text.size());
        cAttr attr = (*this)[text.substr(begin, end - begin)];
        if (attr.getattr() == cat::badfind()) attr = cat::nil();
        begin = end + 1;
    }
}
