#pragma once
// Reading a file as the commands need it: all bytes, the first value with its comments, every error
// with its place, and what is around the value.

#include "qrv/core/cobj.h"
#include "tools/qrv/output/messages.h"

#include <optional>
#include <string>

// All bytes of a file; "-" is the standard input. False with the reason as an error.
bool read_bytes(std::string const &name, std::string &bytes, cMessages &messages);

// Removes a byte order mark from the front. What was removed.
std::string cut_mark(std::string &bytes);

struct cReading {
    objref value;                 // null if the text has no value
    bool clean = false;           // read without an error, and not null
    bool empty = false;           // nothing is there that could be a value
    std::optional<cPlace> behind; // where text after the value begins. One separator there belongs
                                  // to the value. Null if the value was not closed.
};

// How long a text may become that is made from the values of a file of that size, where shared
// values are written in full at each place. `find` and `to-json` stop there.
constexpr size_t longest_text_from(size_t file_size) { return 16000000 + 16 * file_size; }

// Reads the first value of the text, with its comments. Errors go to messages.
cReading read_value(std::string const &bytes, cMessages &messages);

// An error if there is text after the value.
void report_text_after(std::string const &bytes, cReading const &reading, cMessages &messages);
