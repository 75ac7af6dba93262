#include "abstract_socket.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>

namespace watchdog {

cDescriptor bind_abstract(std::string const &name) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (name.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return cDescriptor();
    }
    std::memcpy(address.sun_path + 1, name.data(), name.size()); // such names begin with a zero
    socklen_t const size =
        static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    cDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    int const on = 1;
    if (!socket ||
        ::setsockopt(socket.number(), SOL_SOCKET, SO_PASSCRED, &on, sizeof on) != 0 || // first: no
        ::bind(socket.number(), reinterpret_cast<sockaddr const *>(&address), size) != 0) { // gap
        int const error = errno;
        socket = cDescriptor();
        errno = error;
        return cDescriptor();
    }
    return socket;
}

} // namespace watchdog
