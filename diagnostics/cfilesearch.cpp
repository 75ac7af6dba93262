// Searches for files that are read.
//
// The result of a search is one string of the process, created by the first search and never freed,
// like the folder of the program's own file: a static object may search in its destructor.

#include "qrv/diagnostics/cfilesearch.h"

#include "base/cfilename_number.h"
#include "base/cnumber.h"
#include "diagnostics/cerrline.h"
#include "qrv/base/cfilename.h"
#include "qrv/base/platform/cplatform.h"

#include <initializer_list>

namespace {

constexpr std::size_t number_width = 4;

constinit std::string *found = nullptr;
constinit std::string *own_folder = nullptr;

std::string text_of(char const *text) { return text ? text : ""; }

// Parses white space, then a number of at most four characters including its sign.
bool read_number(std::string_view text, int &number) {
    auto const begin = text.find_first_not_of(" \t\n\v\f\r");
    return begin != text.npos && cat::parse_unsigned(text.substr(begin, number_width), number);
}

// The folder of the program's own file, with its separator; queried until it is known.
std::string const *program_folder() {
    if (!own_folder) {
        std::string const folder = extractDirName(cat::program_file().c_str());
        if (!folder.empty()) own_folder = new std::string(folder);
    }
    return own_folder;
}

bool find(std::string const &candidate, std::initializer_list<char const *> folders) {
    if (!found) found = new std::string;
    *found = candidate;
    if (cat::file_exists(*found)) return true;
    std::string const *const own = program_folder();
    if (!own) return false;
    for (char const *folder : folders) {
        *found = *own + folder + candidate;
        if (cat::file_exists(*found)) return true;
    }
    return false;
}

char const *search(std::string const &candidate, std::initializer_list<char const *> folders,
                   bool complain) {
    if (find(candidate, folders)) return found->c_str();
    if (complain) cat::put_error_line("could not open: " + candidate);
    return nullptr;
}

} // namespace

bool fNextReadName(char const *name, std::string prev, std::string &out, int &count,
                   char const *tag) {
    std::string const series = text_of(name), ending = text_of(tag); // both may point into `out`
    if (prev != series) count = 0;
    out = series;
    auto const place = out.find(ending);
    if (place == out.npos) {
        cat::put_error_line("other format required");
        return false;
    }
    int number = 0;
    if (place < number_width) return true;
    if (!read_number(std::string_view(out).substr(place - number_width), number)) return true;
    if (number < count)
        cat::put_number(out, place - number_width, count, ending);
    else
        count = number;
    cat::step_number(count);
    return true;
}

char const *pGetRuntimeFileName(char const *name, char const *subdir, bool complain) {
    std::string const folder = text_of(subdir);
    std::string const candidate = (folder.empty() ? folder : folder + '/') + text_of(name);
    return search(candidate, {"", "../", "runtime/", "../runtime/"}, complain);
}

char const *pGetCfgFileName(char const *name, bool complain) {
    return search(text_of(name), {"", "../"}, complain);
}
