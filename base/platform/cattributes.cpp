#include "base/platform/cattributes.h"

#include "base/platform/os_calls.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t most_bytes = 65536; // the system's limit for a list of names or one value

using cBuffer = std::unique_ptr<char[]>;

bool has_no_attributes(int error) { return error == ENOTSUP || error == ENOSYS; }

// Stores the bytes that a system call writes to a buffer. False if the call fails.
template <class Call> bool fill(std::string &bytes, Call const &call) {
    cBuffer const buffer = std::make_unique_for_overwrite<char[]>(most_bytes);
    ssize_t const size = call(buffer.get(), most_bytes);
    if (size < 0) return false;
    bytes.assign(buffer.get(), static_cast<std::size_t>(size));
    return true;
}

// Stores the names of a list in which each ends in a NUL.
template <class Call> bool list(std::vector<std::string> &names, Call const &call) {
    std::string bytes;
    if (!fill(bytes, call)) return has_no_attributes(errno);
    for (std::size_t at = 0; at < bytes.size(); at += names.back().size() + 1)
        names.emplace_back(bytes.c_str() + at);
    return true;
}

// The system derives these from the content.
bool is_derived(std::string const &name) {
    return name == "security.ima" || name == "security.evm";
}

bool is_access_list(std::string const &name) { return name.starts_with("system."); }

bool copy_attribute(std::string const &from, int to, char const *name) {
    std::string value, present;
    bool const known = fill(value, [&](char *bytes, std::size_t size) {
        return cat::os.getxattr(from.c_str(), name, bytes, size);
    });
    if (!known) return errno == ENODATA; // another process removed it meanwhile
    bool const same =
        fill(present, [&](char *bytes,
                          std::size_t size) { return cat::os.fgetxattr(to, name, bytes, size); }) &&
        present == value;
    return same || cat::os.fsetxattr(to, name, value.data(), value.size(), 0) == 0;
}

} // namespace

bool cat::copy_attributes(std::string const &from, int to) {
    std::vector<std::string> wanted, inherited;
    bool const listed =
        list(wanted, [&](char *names,
                         std::size_t size) { return os.listxattr(from.c_str(), names, size); }) &&
        list(inherited,
             [&](char *names, std::size_t size) { return os.flistxattr(to, names, size); });
    if (!listed) return false;
    bool const removed = std::all_of(inherited.begin(), inherited.end(), [&](auto const &name) {
        bool const stays =
            !is_access_list(name) || std::find(wanted.begin(), wanted.end(), name) != wanted.end();
        return stays || os.fremovexattr(to, name.c_str()) == 0;
    });
    return removed && std::all_of(wanted.begin(), wanted.end(), [&](auto const &name) {
               return is_derived(name) || copy_attribute(from, to, name.c_str());
           });
}
