// Where the short way is taken, no foreign code runs: the value is plain, and `append` is that of
// the type set. Everything else goes by cObj::append.

#include "containers/cappending.h"

#include "containers/ccompare.h"
#include "qrv/containers/csetobj.h"
#include "qrv/core/cexe.h"

cat::cAppending::cAppending(cObj &holder)
    : holder_(holder), set_(cObj::is_set(&holder) ? as_map(&holder) : nullptr) {
    if (!set_) return;
    hash_ = set_->datamap_ref();
    index_.emplace(*hash_);
}

// Nobody has put an `append` of their own before that of the type, or in its place.
bool cat::cAppending::is_plain_set() const {
    if (!set_ || (set_->has_ommap() && cObj::is_good(set_->omember("append")))) return false;
    objref const member = set_->type().tmember("append");
    auto const *const exe = dynamic_cast<cExeFunction const *>(member.get());
    return exe && exe->function() == reinterpret_cast<cVoidFunction>(&cTomSet::m_append);
}

bool cat::cAppending::append(objref const &value) {
    if (value && cValueIndex::is_plain(*value) && is_plain_set())
        return !index_->find(*value) && hash_->vect_append(value);
    disturb();
    return holder_.append(value);
}
