#pragma once
// Datagram sockets with a name that stands in no file system: the system frees it with the last
// descriptor, also when the process is killed. So holding such a name proves that one lives.
//
// Limits: such names are known within one network namespace, and every user may take any.

#include "descriptor.h"

#include <string>

namespace watchdog {

// A socket bound to that name, CLOEXEC and non-blocking, each datagram with its sender's
// credentials. Without one, errno tells why: EADDRINUSE where somebody holds the name.
cDescriptor bind_abstract(std::string const &name);

} // namespace watchdog
