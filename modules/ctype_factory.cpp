// Types that a factory creates: the factory is a repository entry with the name of the type. So a
// file may name a type that was not created yet.

#include "modules/ctype_factory.h"

#include "qrv/core/cmodifier.h"
#include "qrv/modules/crepository.h"

typeref cat::make_type(std::string const &name) {
    cRepositoryList *const factories = cRepoImpl::get(typeid(cTypeCtor));
    cRepositoryEntry *const entry = cRepoImpl::find(factories, name);
    auto *const factory = static_cast<cTypeCtor *>(cRepoImpl::ptr(entry));
    return factory ? factory->make() : nullptr; // RUNS USER CODE
}
