#pragma once
// A value as the text of a file, and the text's way out.

#include "qrv/core/cobj.h"
#include "tools/qrv/output/messages.h"

#include <string>

// The text: `head`, the value, and a line feed; the plain writer's bytes alone if canonical. What
// can't be written is told.
std::string written(objref const &value, std::string const &head, bool canonical,
                    cMessages &messages);

// Gives the file that content, or tells that it stayed as it was; an exit_code.
int replace(std::string const &name, std::string const &text);

// The output of a command: into that file, or to standard output if the name is empty; an
// exit_code.
int put_out(std::string const &file, std::string const &text);
