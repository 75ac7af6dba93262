#pragma once
// Reading a whole text or file, with all errors as data: nothing is printed, and nothing is thrown
// but what user code throws.
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

// Numbers are read exactly in any case; cat::ExactText writes them so.
struct QRV_API ReadOptions {
    bool comments = true; // values take the comments that belong to them
    int max_depth = 0;    // instead of cat::max_read_depth; 0: that
    // Which modules may be loaded meanwhile instead of the filter of qrv_set_module_filter(), which
    // is set again afterwards; null: that filter.
    bool (*module_filter)(std::string const &name) = nullptr;
    std::string name = {}; // of the file, in the errors of read_text()
};

// Reads one value, or a bare list of entries as a map. A byte order mark is passed over, and places
// count from behind it. True if nothing was wrong. An error, too: text after the value,
// 0x40000002 "Text after the value: ", and none at all, 0x40000001 "Text without a value".
//
// The errors are added to the report, whether or not it is the innermost, and its watch is asked.
// `result` becomes what could be read, null if nothing could.   RUNS USER CODE: of types
QRV_API bool read_text(std::string_view text, objref &result, ReadReport &report,
                       ReadOptions const &options = {});
// The same for a file, and for what a pipe or a device gives up to its end. What can't be read, a
// folder too, is one error, without a line: 1 "Cannot open file: " and the path.
QRV_API bool read_file(std::string const &path, objref &result, ReadReport &report,
                       ReadOptions const &options = {});

// The text without the byte order mark of UTF-8 in front, if there is one.
QRV_API std::string_view without_mark(std::string_view text) noexcept;

// "file:line:column: error: text", without a line end, and without the parts that the error doesn't
// have: a file name, a line. The text is as it is; it may have line feeds.
QRV_API std::string format(ReadError const &error);

} // namespace cat
