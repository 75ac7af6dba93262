#pragma once
// A change of the first value of a file that leaves all bytes but those of the change as they are.

#include "tools/qrv/editing/rewrite.h"
#include "tools/qrv/process/apart.h"

// Reads the bytes, makes the change, and puts the new text into the reply, with status exit_done if
// it reads as the changed value. Else the messages say why not.
void splice(std::string const &bytes, cChange const &change, cMessages &messages, cReply &reply);
