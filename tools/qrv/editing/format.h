#pragma once
// Formats a whole file in the writer's layout, with all of its comments.

#include "tools/qrv/output/messages.h"
#include "tools/qrv/process/worker.h"

#include <string>

struct cFormat {
    bool trailing_blanks = false; // keep the trailing blanks that the writer produces
    bool either = false;          // keep bytes that are this text with or without these blanks
    bool replaces = false;        // replaces the file: values of repeated keys must not be lost
};

// Reads the first value and returns the new text in the reply. Lost data is an error. Status
// exit_failed means that there is no text; `comes_back`, that the text reads as the same value and
// that writing it again produces the same bytes.
void format(std::string const &bytes, cFormat const &how, cMessages &messages, cReply &reply);
