#pragma once
// The type "intf" for start and tear-down.

#include "qrv/core/cmodifier.h"
#include "qrv/modules/crepository.h"

// Making it starts the object core. While it lives, a type that is looked up by the name "intf" is
// made, or registered again, by it.
class cIntfTypeCtor final : public cTypeCtor {
  public:
    cIntfTypeCtor();
    cIntfTypeCtor(cIntfTypeCtor const &) = delete;
    cIntfTypeCtor &operator=(cIntfTypeCtor const &) = delete;
    ~cIntfTypeCtor() override;

    typeref make() override;

  private:
    cRepositoryEntry *entry_;
};

namespace cat {
bool is_intf_type(cObj const *type); // the type object that the library holds
// Gives it up, in the registry too; the next use makes it anew. True if there was one. RUNS FOREIGN
// CODE: members that a program gave it.
bool drop_intf_type();
} // namespace cat
