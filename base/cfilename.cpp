// File names: the split that all functions use, and names with numbers.
//
// The functions that print are in diagnostics/cfilesearch.cpp, since this layer has no stream for
// messages.

#include "qrv/base/cfilename.h"

#include "base/cfilename_number.h"
#include "qrv/base/platform/cplatform.h"

#include <climits>
#include <cstdio>
#include <string_view>

namespace {

constexpr int last_version = 1000;
constexpr int last_number = 1000;

struct cPieces {
    std::string_view dir, name, ext;
};

std::string_view text_of(char const *text) { return text ? text : ""; }

cPieces split(std::string_view path) {
    auto const separator = path.find_last_of("/\\");
    auto const begin = separator == path.npos ? 0 : separator + 1;
    std::string_view const last = path.substr(begin);
    auto const dot = last.rfind('.');
    auto const end = dot == last.npos ? last.size() : dot;
    return {path.substr(0, begin), last.substr(0, end), last.substr(end)};
}

std::string joined(std::string_view a, std::string_view b, std::string_view c) {
    return std::string(a).append(b).append(c);
}

} // namespace

std::string changeExt(char const *path, char const *ext) {
    auto const [dir, name, old] = split(text_of(path));
    return joined(dir, name, ".").append(text_of(ext));
}

std::string extractFileName(char const *path, bool with_ext) {
    auto const [dir, name, ext] = split(text_of(path));
    return joined(name, with_ext ? ext : "", "");
}

std::string extractDirName(char const *path) { return std::string(split(text_of(path)).dir); }

std::string extractExtension(char const *path) { return std::string(split(text_of(path)).ext); }

std::string getNextVersion(char const *path) {
    auto const [dir, name, ext] = split(text_of(path));
    std::string candidate;
    for (int version = 1; version <= last_version; ++version) {
        candidate = joined(dir, name, "_").append(std::to_string(version)).append(ext);
        if (!cat::file_exists(candidate)) break;
    }
    return candidate;
}

// --- numbers ---

void cat::put_number(std::string &out, std::size_t place, int number, std::string_view tag) {
    char digits[16]; // INT_MIN has eleven characters
    std::string text(
        digits, static_cast<std::size_t>(std::snprintf(digits, sizeof digits, "%04d", number)));
    text += tag;
    std::size_t const end = place + text.size();
    if (end > out.size())
        out.resize(end);
    else if (end < out.size())
        out[end] = '\0'; // the following bytes stay: only c_str() ends here
    out.replace(place, text.size(), text);
}

void cat::step_number(int &number) noexcept {
    if (number < INT_MAX) ++number;
}

// DELIBERATE: a dot in the folder's name counts as the file's dot if the file name has none.
// Pinned: a_dot_in_the_folder_is_used_when_the_name_has_none
bool fNextWritName(char const *name, std::string prev, std::string &out, int &count,
                   char const *tag) {
    std::string const series(text_of(name)), ending(text_of(tag)); // both may point into `out`
    if (prev != series) count = 0;
    out = series;
    auto const dot = out.rfind('.');
    std::size_t const place = dot == out.npos ? out.size() : dot;
    do {
        cat::put_number(out, place, count, ending);
        cat::step_number(count);
        if (!cat::file_exists(out.c_str())) return true;
    } while (count <= last_number);
    return false;
}
