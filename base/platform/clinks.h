#pragma once
// Where symbolic links lead.

#include <optional>
#include <string>

namespace cat {

std::string folder_of(std::string const &path); // ends in a slash
std::string name_of(std::string const &path);

// Where the content is, or will be if links lead to nothing yet. Nothing, with errno, if a link
// can't be read: a new file must not take the link's place.
std::optional<std::string> follow_links(std::string path);

} // namespace cat
