// A factory of a type. The type stays in the registry, so this file must stay in memory: its module
// object isn't counted.
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cmodifier.h"
#include "tests/modules/shared/module.h"

namespace {

cModule own("types", "the type Temperature", true);

class Factory : public cTypeCtor {
  public:
    Factory()
        : entry_(cRepoImpl::create(cRepoImpl::get(typeid(cTypeCtor)), "Temperature",
                                   static_cast<cTypeCtor *>(this), typeid(cTypeCtor),
                                   typeid(Factory), "")) {}
    Factory(Factory const &) = delete;
    Factory &operator=(Factory const &) = delete;
    ~Factory() override { cRepoImpl::release(entry_); }

    typeref make() override {
        note("a type is made");
        return typeref::adopt(new cTypeObj("Temperature"));
    }

  private:
    cRepositoryEntry *entry_;
};
Factory const factory;

} // namespace
