// A module that reading text must never load.
#include "qrv/core/cmodifier.h"
#include "tests/modules/shared/module.h"

namespace {
class Factory : public cTypeCtor {
  public:
    Factory() {
        note("evil is there");
        entry_ = cRepoImpl::create(cRepoImpl::get(typeid(cTypeCtor)), "evil",
                                   static_cast<cTypeCtor *>(this), typeid(cTypeCtor),
                                   typeid(Factory), "");
    }
    Factory(Factory const &) = delete;
    Factory &operator=(Factory const &) = delete;
    ~Factory() override { cRepoImpl::release(entry_); }
    typeref make() override {
        note("evil is asked");
        return nullptr;
    }

  private:
    cRepositoryEntry *entry_ = nullptr;
};
Factory const factory;
} // namespace
