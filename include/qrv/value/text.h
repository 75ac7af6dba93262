#pragma once
// Reading values from text and files, and writing them.
//
//   qrv::value device = qrv::load("device.attr");
//   std::vector<cat::ReadError> errors;
//   qrv::value draft = qrv::load("draft.attr", errors); // what could be read of it
//   qrv::save(device, "copy.attr");
//   std::cout << qrv::dump(device.at("limits"), {.one_line = true}) << '\n';
//
// To change a file that a person wrote, see qrv/value/document.h: save() here replaces the whole
// text.

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
    bool comments = true; // values have the comments of the text, and are written with them
    int depth = 1000;     // of values inside each other; deeper ones are errors. Below 1 the limit
                          // is cat::max_read_depth
    // Returns whether this module may be loaded. Reading itself loads nothing, but a type of the
    // program that the text names may load modules. If there is no function, the filter of
    // qrv_set_module_filter() decides; without that filter no module is loaded.
    std::function<bool(std::string const &module)> modules = {};
};

// Reads one value. Skips a byte order mark. The types that the text declares stay registered. If
// the text has errors, they do not: the registered types are then unchanged, and values of the
// text's types keep those alive. Text that declares a name again changes the registered type, even
// a type of the program, as qrv::declare() does; such text is read twice. A program that reads
// untrusted text should use a qrv::document, which has separate types, or a cat::TypeScope.
// parse_error: the text has errors, no value, or something after the value. error: the file can't
// be read; what() has the file's name and the reason. Runs user code: types of the program that the
// text names.   O(size)
QRV_API value parse(std::string_view text, options const &how = {});
QRV_API value load(std::string const &path, options const &how = {});

// The same, but replaces the content of `errors` by all errors. The result is the value as far as
// it could be read; #nil if nothing could be read. error: the file can't be read.
QRV_API value parse(std::string_view text, std::vector<cat::ReadError> &errors,
                    options const &how = {});
QRV_API value load(std::string const &path, std::vector<cat::ReadError> &errors,
                   options const &how = {});

// How a value is written.
struct style {
    bool exact = true;     // reading gives the same value: all digits, and strings with line feeds
    bool one_line = false; // without comments; a string with a line feed still takes two lines
    std::optional<int> indent = {}; // columns of each level; if empty, 2 for the first, then 4
};

// The written form, without a line feed at its end. An inexact one has six digits of each
// double and float. Borrows the value.
// error: part of the value has no text, such as an infinity or a value inside itself.
// Runs user code: types of the program write their objects.   O(size)
QRV_API std::string dump(value const &v, style const &how = {});

// Writes the written form and a line feed to a file. If that fails, an existing file is unchanged.
// Mode, owner and symbolic links are preserved. Waits up to 30 seconds for other programs that lock
// the folder (cat::FileLock). error: part of the value has no text, or the file can't be written;
// what() has the file's name and the reason. Borrows the value.   O(size)
QRV_API void save(value const &v, std::string const &path, style const &how = {});

} // namespace qrv
