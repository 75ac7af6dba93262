#pragma once
// Each reading of a file is apart from all others: the types that the file declares are known to
// that reading only. Where --module has loaded code, a crash of that code ends one work and not the
// tool.

#include "tools/qrv/process/worker.h"

// Runs the work on the file of that name in a cat::TypeScope, or in a child process if modules are
// loaded, and returns its reply. An exception, such as std::bad_alloc, is an error in `found`,
// with status exit_failed.
cReply apart(std::string const &name, std::function<void(cReply &)> const &work);
