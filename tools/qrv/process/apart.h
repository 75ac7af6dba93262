#pragma once
// Isolates the work on each file from all other work: the types that a file declares are known only
// to the work on that file. If --module has loaded code, a crash of that code ends the work on one
// file, and not the tool.

#include "tools/qrv/process/worker.h"

// Runs the work on the file `name` in a cat::TypeScope, or in a worker process if modules are
// loaded, and returns its reply. An exception becomes an error in `found`, with status exit_failed.
cReply apart(std::string const &name, std::function<void(cReply &)> const &work);
