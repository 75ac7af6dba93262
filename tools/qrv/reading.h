#pragma once
// Reading a file as the commands need it: all bytes, the first value with its comments, every error
// with its place, and what stands around the value.

#include "messages.h"
#include "qrv/core/cobj.h"
#include "survey.h"

#include <optional>
#include <string>

// All bytes of a file; "-" is the standard input. False with the reason as an error.
bool read_bytes(std::string const &name, std::string &bytes, cMessages &messages);

struct cReading {
    objref value;       // null when there is none
    bool clean = false; // read without an error, and not null
    bool empty = false; // nothing is there that could be a value
    cSurvey survey;
    std::optional<cPlace> behind; // where text begins that stands behind the value. One separator
                                  // there belongs to the value. None if the value wasn't closed.
};

// Reads the first value of the text, with its comments. Errors go to messages.
cReading read_value(std::string const &bytes, cMessages &messages);
