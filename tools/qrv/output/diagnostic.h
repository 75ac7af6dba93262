#pragma once
// A message about a file, as data. text_of() turns it into the lines that a person reads:
//
//   settings.attr:3:5: warning: key 'a' is repeated [duplicate-key]
//   settings.attr:1:5: note: it is first here
//
// Long texts are shortened, and control characters are escaped.

#include <cstddef>
#include <string>
#include <vector>

// A position in a file. Line and column begin with 1, columns count bytes. Line 0 means the whole
// file.
struct cPlace {
    unsigned line = 1;
    unsigned column = 1;
    auto operator<=>(cPlace const &) const = default;
};

constexpr cPlace no_place{0, 0};

std::string line_and_column(cPlace place); // "3:5"

struct cNote {
    cPlace place = no_place;
    std::string text = {};
};

struct cDiagnostic {
    enum cSeverity : unsigned char { error, warning };

    cSeverity severity = error;
    std::string name = {}; // the short and stable name of a warning, such as duplicate-key
    unsigned code = 0;     // the code of the library's error; 0 if it has none
    std::string file = {};
    cPlace place = no_place;
    size_t begin = 0, end = 0; // the bytes of the file that are wrong; equal if unknown
    std::string text = {};
    std::vector<cNote> notes = {};
    std::string line = {}; // the line of the file, or the part of it around the mistake
    size_t mark = 0;       // offset in that line
    size_t following = 0;  // number of errors that follow from this one and are not shown
};

// The diagnostics of one file. Beyond a limit, they are only counted.
struct cFindings {
    std::string file = {};
    std::vector<cDiagnostic> diagnostics;
    size_t more_errors = 0;
    size_t more_warnings = 0;
    bool strict = false; // warnings are printed as errors
};

std::string code_of(cDiagnostic const &diagnostic);  // "0x40000001", or empty without a code
std::string label_of(cDiagnostic const &diagnostic); // the name, or else the code

// The diagnostic as lines, each with a line feed.
std::string text_of(cDiagnostic const &diagnostic);
std::string text_of(cFindings const &findings);
