#pragma once
// Only --module loads code into the tool. Files and statements cannot.

#include <string>
#include <vector>

class cTypeObj;

// Loads modules by cModule::load, in order. A module whose name has no slash is first searched for
// in the folder "modules" next to the program. Afterwards no other module can be loaded, not even
// by a name in a file. False, with a message, if a module can't be loaded.
bool load_modules(std::vector<std::string> const &names);

bool modules_are_loaded();

// The module that registered this type, as named by --module; empty if no module did.
std::string module_of(cTypeObj const &type);

// The names of types that factories create on first use.
std::vector<std::string> factories();
