#pragma once
// Shared objects: where they are looked for, loading, finding a function in one, unloading; and the
// filter that a program may set on their names.

#include <array>
#include <string>
#include <string_view>

namespace cat {

// What goes before and behind the name of a module to make a path, in the order in which it is
// tried. A path without a slash is looked for where the system keeps shared objects.
inline constexpr std::array<std::string_view, 3> module_directories{"", "./", "modules/"};
inline constexpr std::array<std::string_view, 2> module_suffixes{".so", ""};

// The part behind the last of "\/:", without ".so" in any case.
std::string module_base_name(std::string const &name);

// Why the file of a path must not be loaded; empty if it may be.
using path_refusal = std::string (*)(std::string const &path);

// Loads the first path of a module's name that can be. Null if there is none: `failures` then has a
// line for each, with the system's words. A path with a slash that leads to a pipe, a device or a
// socket fails at once. RUNS FOREIGN CODE: static code of the file.
void *open_module(std::string const &name, std::string &failures, path_refusal refusal = nullptr);

// The function of that name that the file itself exports; null if it has none.
using module_function = void (*)();
module_function function_in(void *library, char const *name);

// Takes one load back. RUNS FOREIGN CODE: static destructors of the file. If it is called by such
// a destructor itself, its own come later, when the outer call ends.
void close_library(void *library);

// The file's path as the system knows it, empty if it can't tell; and is that file in memory?
std::string library_path(void *library);
bool is_loaded(std::string const &path);
bool is_same_file(std::string const &path, std::string const &other); // both exist and are one

using module_filter = bool (*)(std::string const &name);
module_filter the_module_filter() noexcept; // null when none is set

} // namespace cat
