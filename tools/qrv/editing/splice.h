#pragma once
// Changes the first value of a file and leaves all other bytes as they are.

#include "tools/qrv/editing/rewrite.h"
#include "tools/qrv/process/apart.h"

// Reads the bytes, makes the change, and puts the new text into the reply. The status is exit_done
// if the text reads as the changed value; otherwise the messages give the reason.
void splice(std::string const &bytes, cChange const &change, cMessages &messages, cReply &reply);
