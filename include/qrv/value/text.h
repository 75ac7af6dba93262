#pragma once
// Text and files: values that are read, and values that are written.
//
//   qrv::value device = qrv::load("device.attr");
//   std::vector<cat::ReadError> errors;
//   qrv::value draft = qrv::load("draft.attr", errors); // what could be read of it
//   qrv::save(device, "copy.attr");
//   std::cout << qrv::dump(device.at("limits"), {.one_line = true}) << '\n';
//
// To change a file that a person wrote, see qrv/value/document.h: save() writes all of it anew.

#include "qrv/text/file/creadtext.h"
#include "qrv/value/items.h"
#include "qrv/value/reference.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qrv {

// How text is read.
struct options {
    bool comments = true; // values keep theirs, and are written with them
    int depth = 1000;     // of values inside each other; deeper ones are errors. Below 1 the limit
                          // is cat::max_read_depth
    // May this module be loaded? Reading itself loads nothing, but a type of the program that the
    // text names may load modules. Without a function the filter of qrv_set_module_filter()
    // decides; without that filter no module is loaded.
    std::function<bool(std::string const &module)> modules = {};
};

// Reads one value. A byte order mark in front is accepted. The types that the text declares stay
// registered, unless it has errors: then the program's types are as they were, while values of the
// text's types keep these alive. Text that declares a name again changes the registered type, also
// one of the program, as qrv::declare() does; such text is read twice. A program that reads text of
// others should use a qrv::document, which has separate types, or a cat::TypeScope.
// parse_error: the text has errors, or no value, or something after it. error: the file can't be
// read; what() has its name and why.
// Runs user code: types of the program that the text names.   O(size)
QRV_API value parse(std::string_view text, options const &how = {});
QRV_API value load(std::string const &path, options const &how = {});

// The same, and all errors are stored in `errors`, which is cleared before. The result is what
// could be read; #nil if nothing could. error: the file can't be read.
QRV_API value parse(std::string_view text, std::vector<cat::ReadError> &errors,
                    options const &how = {});
QRV_API value load(std::string const &path, std::vector<cat::ReadError> &errors,
                   options const &how = {});

// How a value is written.
struct style {
    bool exact = true;     // reads as the same value: all digits, and strings with line feeds
    bool one_line = false; // without comments; a string with a line feed still takes two lines
    std::optional<int> indent = {}; // columns for each level instead of 4, and 2 for the first one
};

// The written form, without a line feed at its end. An inexact one has six digits of each number.
// Borrows the value.
// error: part of the value has no text, such as an infinity or a value inside itself.
// Runs user code: types of the program write their objects.   O(size)
QRV_API std::string dump(value const &v, style const &how = {});

// Writes the written form and a line feed to a file, whole or not at all: if that fails, the old
// file stays as it is. Mode, owner and symbolic links stay. Waits up to 30 seconds for other
// programs that lock the folder (cat::FileLock).
// error: part of the value has no text, or the file can't be written; what() has its name and why.
// Borrows the value.   O(size)
QRV_API void save(value const &v, std::string const &path, style const &how = {});

} // namespace qrv
