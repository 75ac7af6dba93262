// A module that does not release its entries: two of a thing, and a module object on the heap.
#include "tests/modules/shared/module.h"

namespace {
Mortal const mortal("leaves");
Thing left{10};
} // namespace

QRV_SET_UP {
    cRepoImpl::create(things(), "left", &left, typeid(Thing), typeid(Thing), "a comment");
    struct Own : Thing {};
    cRepoImpl::create(things(), "own", &left, typeid(Thing), typeid(Own), "");
    static cModule *const module = new cModule("left module", "", false);
    note(module->name());
}
