#include "value/notify.h"

#include "qrv/containers/cmapobj.h"

#include <utility>

namespace qrv::detail {

namespace {

constinit change_report const *fired = nullptr;

} // namespace

fired_report::fired_report(change_report const *report) noexcept
    : outer_(std::exchange(fired, report)) {}

fired_report::~fired_report() { fired = outer_; }

change_report const *change_report::of(cObj const &owner) noexcept {
    return fired && fired->owner_ == &owner ? fired : nullptr;
}

// A type object fires `changed` itself if one of its attributes is set.
void change_report::watch(objref const &owner) {
    if (owner->changed_signal() && !owner->is_type()) owner_ = owner;
}

void change_report::note(objref const &key, written how) {
    if (!dynamic_cast<cMapObj const *>(owner_.get())) return;
    key_ = key;
    how_ = how;
    if (how_ != written::inserted) old_ = present();
}

objref change_report::present() const {
    auto const &map = static_cast<cMapObj const &>(*owner_);
    cAttrNode const *const node = map.datamap().find(key_); // RUNS USER CODE: keys
    return node ? node->valref() : objref();
}

void change_report::fire_changed() {
    if (key_ && how_ != written::erased) new_ = present();
    fired_report const now(this);
    owner_->changed(); // RE-ENTERS
}

} // namespace qrv::detail
