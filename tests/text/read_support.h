#pragma once
// Shared by the tests of the reader: one reading with everything that it reports.

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "text/state/ctext_state.h"

#include <algorithm>
#include <cstdio>
#include <locale>
#include <sstream>
#include <string>
#include <tuple>

namespace reader_test {

// The object in written form; "null" for null.
inline std::string written(objref const &value) {
    if (!value) return "null";
    std::ostringstream os;
    os.imbue(std::locale::classic());
    value->writeobj(os);
    return os.str();
}

inline std::string hex(unsigned code) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", code);
    return text;
}

// Reads one value on construction, unless it is constructed to wait. `log` has a line "code text"
// for each report of the scanner, in order.
class Reading {
  public:
    explicit Reading(std::string const &text, bool now = true)
        : is(text), scan(is, false), slot_(this, &Reading::keep) {
        scan.sig().connect(slot_);
        if (now) next();
    }
    Reading(Reading const &) = delete;
    Reading &operator=(Reading const &) = delete;
    ~Reading() = default;

    int next() {
        delim = -99;
        return code = scan.scan_obj(value, &delim);
    }
    std::string text() const { return written(value); }
    objref at(char const *path) const { return value->getattrp(path); }
    std::string text_at(char const *path) const { return written(at(path)); }

    std::istringstream is;
    cAttrScan scan;
    objref value;
    int delim = -99;
    int code = -99;
    std::string log;

  private:
    void keep(cErr &error) { log += hex(error.code()) + " " + error.as_string() + "\n"; }

    cSlot1<Reading, cErr &> slot_;
};

inline std::string read_back(std::string const &text) { return Reading(text).text(); }

// "line:column path code text" for each entry.
inline std::string shown(cat::ReadReport const &report) {
    std::string all;
    for (cat::ReadError const &e : report.entries())
        all += std::to_string(e.line) + ":" + std::to_string(e.column) + " " + e.path + " " +
               hex(e.code) + " " + e.text + "\n";
    return all;
}

// Returns whether the position is in the text. The last line may be empty, and the column may be
// one past the end of its line.
inline bool is_in_text(unsigned line, unsigned column, std::string const &text) {
    size_t begin = 0;
    for (unsigned n = 1; n < line; ++n) {
        size_t const end = text.find('\n', begin);
        if (end == std::string::npos) return false;
        begin = end + 1;
    }
    size_t const length = std::min(text.find('\n', begin), text.size()) - begin;
    return line >= 1 && column >= 1 && column <= length + 1;
}

// The first entry whose position isn't in the text, or whose container ends before it begins. Empty
// if all positions are valid.
inline std::string misplaced(cat::ReadReport const &report, std::string const &text) {
    for (cat::ReadError const &e : report.entries()) {
        bool good = is_in_text(e.line, e.column, text);
        if (e.end_line || e.end_column)
            good = good && is_in_text(e.end_line, e.end_column, text) &&
                   std::tie(e.line, e.column) < std::tie(e.end_line, e.end_column);
        if (!good)
            return std::to_string(e.line) + ":" + std::to_string(e.column) + " to " +
                   std::to_string(e.end_line) + ":" + std::to_string(e.end_column) + " " + e.text;
    }
    return {};
}

// Returns whether each entry that follows from another one refers to an earlier entry, the first of
// its run.
inline bool are_runs(cat::ReadReport const &report) {
    auto const &entries = report.entries();
    for (std::size_t i = 0; i < entries.size(); ++i) {
        std::size_t const first = entries[i].follows;
        if (first == cat::ReadError::none) continue;
        if (first >= i || entries[first].follows != cat::ReadError::none) return false;
    }
    return true;
}

} // namespace reader_test
