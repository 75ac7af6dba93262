#pragma once
// Reads a file for the commands: all bytes, the first value with its comments, every error with its
// position, and the text around the value.

#include "qrv/core/cobj.h"
#include "tools/qrv/output/messages.h"

#include <optional>
#include <string>

// Reads all bytes of a file; "-" is the standard input. False, with an error, if that fails.
bool read_bytes(std::string const &name, std::string &bytes, cMessages &messages);

// Removes a byte order mark from the front. Returns it.
std::string cut_mark(std::string &bytes);

struct cReading {
    objref value;       // null if the text has no value
    bool clean = false; // read without an error, and not null
    bool empty = false; // the text has nothing that could be a value
    // The position of the text after the value; one separator belongs to the value. Empty if there
    // is no such text, or if errors, such as an unclosed bracket, hide where the value ends.
    std::optional<cPlace> after;
};

// The limit for text that `find` and `to-json` produce from a file of this size, since they write a
// shared value in full at each of its positions.
constexpr size_t longest_text_from(size_t file_size) { return 16000000 + 16 * file_size; }

// Reads the first value of the text, with its comments. Errors go to messages.
cReading read_value(std::string const &bytes, cMessages &messages);

// Adds an error if there is text after the value.
void report_text_after(std::string const &bytes, cReading const &reading, cMessages &messages);
