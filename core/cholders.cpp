#include "core/cholders.h"

#include "core/cattrhash_detail.h"
#include "core/cscalar.h"

#include <algorithm>

constinit bool cObj::holders_known_ = true;

namespace {

constinit cVoidFunction of_library[8] = {}; // its types' `iterobj` functions; null at the end

bool is_bootstrap() noexcept { return core.state == cat::cCoreState::running; }

} // namespace

void cHolders::note_type_method(cVoidFunction iterobj) noexcept {
    auto *const found = std::ranges::find_if(
        of_library, [&](cVoidFunction known) { return !known || known == iterobj; });
    if (found == std::end(of_library) || (!*found && !is_bootstrap())) return forget();
    *found = iterobj;
}

void cHolders::note_own_method(cObj const *father, objref const &key) noexcept {
    if (!father || father->is_type() || !key || is_bootstrap()) return;
    auto const *const text = cat::value_in<std::string>(key.get());
    if (text && *text == "iterobj") forget();
}

void cHolders::note_members(cAttrHash const &members) noexcept {
    if (members.has_foreign_keys() || members.find(std::string("iterobj"))) forget();
}
