#pragma once
// Resolves symbolic links.

#include <optional>
#include <string>

namespace cat {

std::string folder_of(std::string const &path); // ends in a slash
std::string name_of(std::string const &path);

// The path of the content, or the path that it will have if the links lead to a missing file.
// nullopt, with errno, if a link cannot be read: a new file must not replace the link.
std::optional<std::string> follow_links(std::string path);

} // namespace cat
