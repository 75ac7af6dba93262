#pragma once
// Work in a child process, which may crash. What the work finds comes back as a reply.

#include "tools/qrv/output/exit_code.h"

#include <cstdint>
#include <functional>
#include <string>

struct cReply {
    int status = exit_failed; // an exit_code
    std::string text;         // what was asked for
    std::string messages;     // lines for descriptor 2
    std::string extra;        // a second text, where the work has one
    std::string image;        // of a value, where the work has one
    std::uint64_t errors = 0; // among the messages, and those that were only counted
    bool comes_back = false;  // the text, when it is read and written again
};

// Runs the work on the file of that name and gives its reply; a work that dies is told in
// `messages`, with status exit_failed.
cReply in_child(std::string const &name, std::function<void(cReply &)> const &work);

// The reply of a work on that file which could not be done.
cReply failed(std::string const &name, std::string const &text);
