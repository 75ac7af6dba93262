#pragma once
// Formats a whole file in the writer's layout, with all of its comments.

#include "tools/qrv/output/messages.h"
#include "tools/qrv/process/worker.h"

#include <string>

struct cFormat {
    bool trailing_blanks = false; // keep the trailing blanks that the writer produces
    bool either = false;          // accept the file with all of these blanks or with none
    bool replaces = false;        // the file is replaced: lost values of repeated keys are errors
};

// Reads the first value and returns the new text in the reply. Lost data is an error. Status
// exit_failed means that there is no text. `is_stable` means that reading the text without the
// comments and writing it again produces the same bytes.
void format(std::string const &bytes, cFormat const &how, cMessages &messages, cReply &reply);
