#pragma once
// Runs work in a worker process, which may crash, and returns the result as a reply.

#include "tools/qrv/output/diagnostic.h"
#include "tools/qrv/output/exit_code.h"

#include <functional>
#include <string>

struct cReply {
    int status = exit_failed; // an exit_code
    std::string text;         // the requested text
    cFindings found;          // the diagnostics of the file
    std::string messages;     // more lines for descriptor 2
    std::string extra;        // a second text, if the work has one
    std::string fingerprint;  // of a value, if the work has one
    bool is_stable = false;   // reading and writing `text` again produces the same text
};

// Runs the work on the file `name` and returns its reply. If the process crashes, the reply has an
// error in `found`, and status exit_failed.
cReply in_worker(std::string const &name, std::function<void(cReply &)> const &work);

// Prints the messages to descriptor 2.
void put_messages(cReply const &reply);

// The reply for work on the file `name` that failed.
cReply failed(std::string const &name, std::string const &text);
