#pragma once
// Resolves symbolic links.

#include <optional>
#include <string>

namespace cat {

std::string folder_of(std::string const &path); // ends in a slash
std::string name_of(std::string const &path);

// Follows the links and returns the path to which they lead; a file need not exist there. Returns
// nullopt and sets errno if a link cannot be read, so that the caller does not replace the link by
// a new file.
std::optional<std::string> follow_links(std::string path);

} // namespace cat
