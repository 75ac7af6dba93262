#include "base/platform/clinks.h"

#include "base/platform/os_calls.h"

#include <cerrno>
#include <climits>

namespace {

constexpr int most_links = 40; // the system's own limit

// The target of a symbolic link. Empty if `path` does not exist or is not a link; nullopt if it
// cannot be read.
std::optional<std::string> link_target(std::string const &path) {
    std::string target(PATH_MAX, '\0');
    ssize_t const length = cat::os.readlink(path.c_str(), target.data(), target.size());
    if (length < 0 && errno != EINVAL && errno != ENOENT) return {};
    if (length <= 0) return std::string();
    target.resize(static_cast<std::size_t>(length));
    return target.front() == '/' ? target : cat::folder_of(path) + target;
}

} // namespace

std::string cat::folder_of(std::string const &path) {
    auto const slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

std::string cat::name_of(std::string const &path) { return path.substr(path.rfind('/') + 1); }

std::optional<std::string> cat::follow_links(std::string path) {
    for (int i = 0; i < most_links; ++i) {
        std::optional<std::string> next = link_target(path);
        if (!next) return {};
        if (next->empty()) return path;
        path = std::move(*next);
    }
    errno = ELOOP;
    return {};
}
