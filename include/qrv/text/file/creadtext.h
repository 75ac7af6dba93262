#pragma once
// Reading whole text or a whole file, with all errors as data. These functions print nothing and
// throw only what user code throws.
//
//     cat::ReadReport report;
//     objref value;
//     if (!cat::read_file("device.attr", value, report))
//         for (cat::ReadError const &error : report.entries()) show(cat::format(error));

#include "qrv/core/cobj.h"
#include "qrv/text/read/creadreport.h"

#include <string>
#include <string_view>

namespace cat {

// Numbers are always read exactly; cat::ExactText writes them exactly.
struct QRV_API ReadOptions {
    bool comments = true; // values get the comments that belong to them
    int max_depth = 0;    // replaces cat::max_read_depth; 0: no change
    // Decides which modules may be loaded during the reading, in place of the filter of
    // qrv_set_module_filter(); null: that filter applies.
    bool (*module_filter)(std::string const &name) = nullptr;
    std::string name = {}; // of the file, for the errors of read_text()
};

// Reads one value, or a list of entries without brackets as a map. Skips a byte order mark;
// positions do not count it. True if there are no errors. These are also errors: text after the
// value, 0x40000002 "Text after the value: ", and no value at all, 0x40000001 "Text without a
// value".
//
// Adds the errors to `report`, whether or not it is the innermost one, and passes each to its
// watch. `result` becomes the value as far as it could be read, or null. RUNS USER CODE of types
QRV_API bool read_text(std::string_view text, objref &result, ReadReport &report,
                       ReadOptions const &options = {});
// The same for a file, or for everything that a pipe or a device delivers. A folder, or a file that
// cannot be read, causes one error, which has no line: 1 "Cannot open file: " and the path.
QRV_API bool read_file(std::string const &path, objref &result, ReadReport &report,
                       ReadOptions const &options = {});

// The text without an initial byte order mark of UTF-8.
QRV_API std::string_view without_mark(std::string_view text) noexcept;

// "file:line:column: error: text", without a line end; omits file name and line if the error has
// none. The text is unchanged and may contain line feeds.
QRV_API std::string format(ReadError const &error);

} // namespace cat
