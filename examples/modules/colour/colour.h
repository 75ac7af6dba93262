#pragma once
// The module "colour" also has names of colours, as an entry of the repository for the interface
// cColourNames, with the name "web".
//
//     cModule::load("colour");
//     auto *names = cat::find_entry<cColourNames>("web");
//
// The repository finds a type of another library by its name, so this class needs no code of the
// module. One thread at a time.

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
