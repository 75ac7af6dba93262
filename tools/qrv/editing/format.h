#pragma once
// A whole file in the writer's layout, with all of its comments.

#include "tools/qrv/output/messages.h"
#include "tools/qrv/process/worker.h"

#include <string>

struct cFormat {
    bool trailing_blanks = false; // as the writer leaves them
    bool either = false;          // the bytes stay if they are the text with them or without
    bool replaces = false;        // the file: values of repeated keys must not disappear from it
};

// Reads the first value and gives the new text in the reply. What is lost is an error. Status
// exit_failed: there is no text. `comes_back`: the text reads as the same value and would be
// written again as it is.
void format(std::string const &bytes, cFormat const &how, cMessages &messages, cReply &reply);
