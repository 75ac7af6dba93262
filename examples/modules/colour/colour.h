#pragma once
// The module "colour" also has the names of some colours. Its entry "web" in the repository is an
// object with the interface cColourNames:
//
//     cModule::load("colour");
//     auto *names = cat::find_entry<cColourNames>("web");
//
// The repository compares interfaces by the names of their types. So a program that uses this
// header need not link the module. One thread at a time.

#include <string>

class __attribute__((visibility("default"))) cColourNames {
  public:
    cColourNames() = default;
    cColourNames(cColourNames const &) = delete;
    cColourNames &operator=(cColourNames const &) = delete;
    virtual ~cColourNames() = default;

    // "orange" for 0xFFA500; empty if it has no name.
    virtual std::string name_of(int rgb) const = 0;
};
