#include "base/platform/cloader.h"

#include "base/platform/cchars.h"
#include "base/platform/os_calls.h"
#include "qrv/base/platform/cplatform.h"

#include <algorithm>
#include <climits>
#include <link.h>

namespace {

constinit cat::module_filter the_filter = nullptr;

constexpr std::string_view separators = "\\/:";

// A name that consists of the suffix alone has no suffix.
bool has_suffix(std::string_view name) {
    std::string_view const suffix = cat::module_suffixes.front();
    return name.size() > suffix.size() &&
           std::equal(suffix.rbegin(), suffix.rend(), name.rbegin(),
                      [](char a, char b) { return a == to_lower(b); });
}

bool is_absolute(std::string_view name) {
    if (name.size() > 2 && name[1] == ':') name.remove_prefix(2);
    return name.starts_with('\\') || name.starts_with('/');
}

// The reason why the system must not see this path: it would block on a pipe, for example. The
// system itself reports a missing file or a folder; it searches its own folders for a path without
// a slash.
std::string refusal_reason(std::string const &path, cat::path_refusal refusal) {
    if (path.find('\0') != std::string::npos) return "a zero byte in the name";
    if (path.size() >= PATH_MAX) return "File name too long"; // the loader copies it to the stack
    struct stat info {};
    if (path.find('/') == std::string::npos || cat::os.stat(path.c_str(), &info) != 0) return {};
    if (!S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode)) return "not a regular file";
    return refusal ? refusal(path) : std::string();
}

// Null on failure, with the system's message in `words`.
void *open_library(std::string const &path, std::string &words, cat::path_refusal refusal) {
    words = refusal_reason(path, refusal);
    if (!words.empty()) return nullptr;
    if (void *const library = cat::os.dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) return library;
    char const *const text = cat::os.dlerror();
    words = text ? text : "cannot be loaded";
    return nullptr;
}

void add_failure(std::string &failures, std::string const &path, std::string const &words) {
    if (!failures.empty()) failures += '\n';
    if (!words.starts_with(path + ": ")) failures += path + ": ";
    failures += words;
}

link_map const *map_of(void *library) {
    link_map *map = nullptr;
    return cat::os.dlinfo(library, RTLD_DI_LINKMAP, &map) == 0 ? map : nullptr;
}

// Whether this address is in the file itself, not in another one that it needs.
bool is_in(void const *address, void *library) {
    Dl_info info{};
    void *map = nullptr;
    return ::dladdr1(address, &info, &map, RTLD_DL_LINKMAP) != 0 && map == map_of(library);
}

} // namespace

void qrv_set_module_filter(bool (*filter)(std::string const &name)) { the_filter = filter; }

cat::module_filter cat::the_module_filter() noexcept { return the_filter; }

std::string cat::module_base_name(std::string const &name) {
    std::string_view base(name);
    if (has_suffix(base)) base.remove_suffix(module_suffixes.front().size());
    return std::string(base.substr(base.find_last_of(separators) + 1)); // npos + 1 is 0
}

// DELIBERATE: the name is used unchanged, so a name with the suffix is tried with a second one.
// Pinned: a_name_with_the_suffix_is_searched_only_with_a_second_one
void *cat::open_module(std::string const &name, std::string &failures, path_refusal refusal) {
    if (name.size() >= PATH_MAX) {
        failures = "A name of " + std::to_string(name.size()) + " characters is too long";
        return nullptr;
    }
    std::size_t const directories = is_absolute(name) ? 1 : module_directories.size();
    std::size_t const suffixes = has_suffix(name) ? 1 : module_suffixes.size();
    std::string words;
    for (std::size_t d = 0; d < directories; ++d)
        for (std::size_t s = 0; s < suffixes; ++s) {
            std::string path(module_directories[d]);
            path.append(name).append(module_suffixes[s]);
            if (void *const library = open_library(path, words, refusal)) return library;
            add_failure(failures, path, words);
        }
    return nullptr;
}

cat::module_function cat::function_in(void *library, char const *name) {
    void *const address = os.dlsym(library, name);
    if (!address || !is_in(address, library)) return nullptr;
    return reinterpret_cast<module_function>(address);
}

std::string cat::library_path(void *library) {
    link_map const *const map = map_of(library);
    return map ? map->l_name : "";
}

void cat::close_library(void *library) { os.dlclose(library); } // RUNS USER CODE

bool cat::is_loaded(std::string const &path) {
    void *const library = os.dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (library) os.dlclose(library);
    return library != nullptr;
}

bool cat::is_same_file(std::string const &path, std::string const &other) {
    struct stat a {
    }, b{};
    if (os.stat(path.c_str(), &a) != 0 || os.stat(other.c_str(), &b) != 0) return false;
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}
