#pragma once
// Code comes into the tool by --module and in no other way, whatever a file or a statement names.

#include <string>
#include <vector>

class cTypeObj;

// Loads modules by cModule::load, in order; one whose name has no slash from the folder "modules"
// beside the program, if it is there. From then on no others may be loaded, by a name in a
// file neither. False if one fails, told by messages.
bool load_modules(std::vector<std::string> const &names);

bool modules_are_loaded();

// The module that brought this type: as it was given to --module; empty if none did.
std::string module_of(cTypeObj const &type);

// The types that are made when they are asked for.
std::vector<std::string> factories();
