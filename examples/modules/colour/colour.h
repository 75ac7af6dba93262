#pragma once
// What the module "colour" offers besides its two types: names of colours, as an entry of the
// repository for the interface cColourNames, under "web".
//
//     cModule::load("colour");
//     auto *names = cat::find_entry<cColourNames>("web");
//
// A type of another library is found by its name alone, so this class needs no code of the module.
// One thread at a time.

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
