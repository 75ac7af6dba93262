// The accessors of the process-wide state. Those that return a reference to a part of the core
// start the core if it was not started. While the core is being created, each step stores its
// result at once for the next one, so no accessor starts the core again.

#include "core/cregistry.h"
#include "qrv/base/csignal.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/ceros.h"

constinit cCore core{};

namespace {

template <class T> T &ready(T *&held) {
    if (!held) core_bootstrap();
    return *held;
}

cMapObj &ready_map(cMapObj *&held) {
    if (!core.nil) core_bootstrap();
    return *held;
}

} // namespace

// The parts of the core are defined in higher layers, and so are the steps that create them.
void core_bootstrap() {
    if (core.state == cat::cCoreState::none) cat::create_core();
}

cErrStream &eros() { return ready(core.eros); }

namespace cat {

cCoreState core_state() noexcept { return core.state; }

#define QRV_ACCESSOR(name, accessor, text)                                                         \
    cTypeObj &accessor() { return ready(core.name); }
QRV_CORE_TYPES(QRV_ACCESSOR)
#undef QRV_ACCESSOR

#define QRV_ACCESSOR(name)                                                                         \
    objref const &name() { return ready(core.name); }
QRV_CORE_CONSTANTS(QRV_ACCESSOR)
#undef QRV_ACCESSOR

cMapObj &typemap() { return ready_map(core.typemap); }
cMapObj &constmap() { return ready_map(core.constmap); }
cMapObj &gmmap() { return ready_map(core.gmmap); }
cMapObj &dbase() { return ready_map(core.dbase); }
cMapObj *typemap_ptr() noexcept { return core.typemap; }
cMapObj *constmap_ptr() noexcept { return core.constmap; }
cMapObj *gmmap_ptr() noexcept { return core.gmmap; }
cAttrHash *type_hash_ptr() noexcept { return core.type_hash; }

cSignal1<cErr &> &sig_error() { return ready(core.sig_error); }
cErrHandler &errhandler() { return ready(core.errhandler); }

cAttrNode const *find_const(cObj const *obj) noexcept {
    return core.const_hash ? core.const_hash->findvalref(obj) : nullptr;
}

} // namespace cat
