#pragma once
// Work in a child process, which may crash. What the work finds comes back as a reply.

#include "tools/qrv/output/diagnostic.h"
#include "tools/qrv/output/exit_code.h"

#include <functional>
#include <string>

struct cReply {
    int status = exit_failed; // an exit_code
    std::string text;         // what was asked for
    cFindings found;          // in the file
    std::string messages;     // more lines for descriptor 2
    std::string extra;        // a second text, where the work has one
    std::string image;        // of a value, where the work has one
    bool comes_back = false;  // the text, when it is read and written again
};

// Runs the work on the file of that name and returns its reply. If the process dies, that is an
// error in `found`, with status exit_failed.
cReply in_child(std::string const &name, std::function<void(cReply &)> const &work);

// To descriptor 2.
void put_messages(cReply const &reply);

// The reply of a work on that file which could not be done.
cReply failed(std::string const &name, std::string const &text);
