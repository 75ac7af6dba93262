#pragma once
// Shared objects: searching, loading, finding a function, unloading; and the filter that a program
// may set on their names.

#include <array>
#include <string>
#include <string_view>

namespace cat {

// The parts before and after a module's name that form a path, in the order of the attempts. The
// system searches its folders for a path without a slash.
inline constexpr std::array<std::string_view, 3> module_directories{"", "./", "modules/"};
inline constexpr std::array<std::string_view, 2> module_suffixes{".so", ""};

// The part after the last of "\/:", without ".so" in any case.
std::string module_base_name(std::string const &name);

// Returns why the file of a path must not be loaded; empty if it may be loaded.
using path_refusal = std::string (*)(std::string const &path);

// Loads the first path of a module's name that can be loaded. Null if none can: `failures` then has
// a line for each, with the system's message. A path with a slash that leads to a pipe, a device or
// a socket fails at once. RUNS USER CODE: static initialisers of the file.
void *open_module(std::string const &name, std::string &failures, path_refusal refusal = nullptr);

// The function of that name that the file itself exports; null if it does not export one.
using module_function = void (*)();
module_function function_in(void *library, char const *name);

// Undoes one load. RUNS USER CODE: static destructors of the file. If such a destructor calls
// this, the static destructors of `library` run later, when the outer call ends.
void close_library(void *library);

// The file's path according to the system, empty if unknown; and whether that file is in memory.
std::string library_path(void *library);
bool is_loaded(std::string const &path);
bool is_same_file(std::string const &path, std::string const &other); // false if one is missing

using module_filter = bool (*)(std::string const &name);
module_filter the_module_filter() noexcept; // null if no filter is set

} // namespace cat
