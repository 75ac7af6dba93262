#pragma once
// The type "intf" for start-up and tear-down.

#include "qrv/core/cmodifier.h"
#include "qrv/modules/crepository.h"

// Creating it starts the object core. While it exists, a look-up of the type name "intf" makes it
// create the type, or register it again.
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
// Releases it, also from the registry; the next use creates it again. True if it existed.
// RUNS USER CODE: members that a program gave it.
bool drop_intf_type();
} // namespace cat
