#pragma once
// Datagram sockets with a name that is not in a file system. The system frees the name with the
// last descriptor, even if the process is killed. So a bound name proves that its process is
// running.
//
// Limits: such a name is valid within one network namespace, and every user may bind any name.

#include "descriptor.h"

#include <string>

namespace watchdog {

// A socket bound to the name, CLOEXEC and non-blocking; each datagram has its sender's credentials.
// On failure the descriptor is empty and errno has the reason: EADDRINUSE if the name is bound
// already.
cDescriptor bind_abstract(std::string const &name);

} // namespace watchdog
