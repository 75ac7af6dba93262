// The system's side of the link: datagrams to abstract Unix sockets, and a named semaphore.
//
// One unconnected socket serves all receivers. It is created for the first message, stays open, and
// is closed on exec. A child of fork() shares it safely, since each datagram carries its own
// sender. A program that closes all descriptors, as a daemon does, closes it too, and its number
// may then mean something else. So it is checked before each use; if it is not our socket any more,
// a new one replaces it and the other file is left alone.

#include "base/platform/clink.h"

#include "base/platform/os_calls.h"
#include "qrv/base/platform/cplatform.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <string_view>
#include <sys/un.h>

namespace {

using cPostHook = void (*)(std::uint32_t id, std::uint32_t message, std::uint32_t wParam,
                           std::int32_t lParam);
constinit cPostHook post_hook = nullptr;

constexpr int none = -1;

struct cKeptSocket {
    int descriptor;
    dev_t device; // with `node`: the identity of the socket
    ino_t node;
};

constinit cKeptSocket kept{none, 0, 0};

bool is_kept(struct stat const &info) {
    return S_ISSOCK(info.st_mode) && info.st_dev == kept.device && info.st_ino == kept.node;
}

// Our socket, created if necessary; -1 on failure.
int sending_socket() {
    struct stat info {};
    if (kept.descriptor != none && cat::os.fstat(kept.descriptor, &info) == 0 && is_kept(info))
        return kept.descriptor;
    kept.descriptor = none;
    int const made = cat::os.socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (made == none) return none;
    if (cat::os.fstat(made, &info) != 0) {
        cat::os.close(made);
        return none;
    }
    kept = {made, info.st_dev, info.st_ino};
    return made;
}

struct cAddress {
    sockaddr_un to{};
    socklen_t length = 0;
};

// The abstract name is a NUL, the prefix and the decimal number, without a terminator.
cAddress address_of(std::string_view prefix, std::uint32_t id) {
    cAddress address;
    address.to.sun_family = AF_UNIX;
    char *const name = address.to.sun_path + 1;
    char *const end = address.to.sun_path + sizeof address.to.sun_path;
    if (prefix.size() > static_cast<std::size_t>(end - name)) return address;
    auto const number = std::to_chars(name + prefix.copy(name, prefix.size()), end, id);
    if (number.ec != std::errc()) return address;
    address.length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) +
                                            static_cast<std::size_t>(number.ptr - name) + 1);
    return address;
}

using cDatagram = std::array<unsigned char, 12>;

void put(cDatagram &bytes, std::size_t at, std::uint32_t number) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[at + i] = static_cast<unsigned char>(number & 0xFF);
        number >>= 8;
    }
}

void send(cAddress const &address, cDatagram const &bytes) {
    int const descriptor = address.length ? sending_socket() : none;
    if (descriptor == none) return;
    cat::os.sendto(descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
                   reinterpret_cast<sockaddr const *>(&address.to), address.length);
}

} // namespace

cat::cKeepErrno::cKeepErrno() noexcept : before_(errno) {}

cat::cKeepErrno::~cKeepErrno() { errno = before_; }

void qrv_set_post_message(cPostHook function) { post_hook = function; }

char const *cat::start_value(char const *name) { return ::secure_getenv(name); }

void cat::post_message(char const *socket_prefix, std::uint32_t id, std::uint32_t message,
                       std::uint32_t wParam, std::int32_t lParam) {
    cKeepErrno const keep;
    if (post_hook) return post_hook(id, message, wParam, lParam); // RE-ENTERS
    cDatagram bytes;
    put(bytes, 0, message);
    put(bytes, 4, wParam);
    put(bytes, 8, static_cast<std::uint32_t>(lParam));
    send(address_of(socket_prefix, id), bytes);
}

void *cat::open_event(char const *name) noexcept {
    cKeepErrno const keep;
    return os.sem_open(name);
}

void cat::set_event(void *event) noexcept {
    cKeepErrno const keep;
    if (event) os.sem_post(static_cast<sem_t *>(event));
}

void cat::close_event(void *event) noexcept {
    cKeepErrno const keep;
    if (event) os.sem_close(static_cast<sem_t *>(event));
}
