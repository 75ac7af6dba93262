#include "thread_link.h"

#include "abstract_socket.h"
#include "qrv/util/cwatchdog.h"
#include "report.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <sys/uio.h>

namespace watchdog {

namespace {

constexpr size_t message_size = 12;
constexpr std::uint32_t beyond_processes = 0x400000; // greater than all process ids
constexpr int tries = 16;
constexpr int buffer_size = 4 << 20; // the system may allow less

std::uint32_t number_at(unsigned char const *bytes) {
    return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
           static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

// Returns the sender of a datagram in `sender`; false if the datagram lacks its credentials, or has
// other control data.
bool sender_of(msghdr const &header, ucred &sender) {
    cmsghdr const *const control = CMSG_FIRSTHDR(&header);
    if ((header.msg_flags & MSG_CTRUNC) != 0 || !control || control->cmsg_level != SOL_SOCKET ||
        control->cmsg_type != SCM_CREDENTIALS || control->cmsg_len < CMSG_LEN(sizeof sender))
        return false;
    std::memcpy(&sender, CMSG_DATA(control), sizeof sender);
    return true;
}

} // namespace

cDatagram judge(msghdr const &header, size_t length, unsigned int own) {
    using cKind = cDatagram::cKind;
    ucred sender{};
    if (!sender_of(header, sender)) return {cKind::no_sender};
    if (sender.uid != own) return {cKind::foreign, {}, sender.uid};
    if (length != message_size || (header.msg_flags & MSG_TRUNC) != 0) return {cKind::wrong_length};
    auto const *const bytes = static_cast<unsigned char const *>(header.msg_iov->iov_base);
    return {
        cKind::message,
        {number_at(bytes), number_at(bytes + 4), static_cast<std::int32_t>(number_at(bytes + 8))}};
}

cThreadLink::cThreadLink(std::uint32_t wanted) : id_(wanted) {
    for (int i = 0; i < tries && !socket_; ++i) {
        id_ = wanted + static_cast<std::uint32_t>(i) * beyond_processes;
        socket_ = bind_abstract(watchdog_socket_prefix + std::to_string(id_));
        if (!socket_ && errno != EADDRINUSE) break;
    }
    if (!socket_) throw cFailure(reason("cannot bind the socket for messages", errno));
    ::setsockopt(socket_.number(), SOL_SOCKET, SO_RCVBUF, &buffer_size, sizeof buffer_size);
}

cDatagram cThreadLink::take() {
    std::array<unsigned char, message_size> bytes{};
    // Room only for the credentials, so descriptors in a datagram are never received.
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(ucred))> control{};
    iovec part{bytes.data(), bytes.size()};
    msghdr header{};
    header.msg_iov = &part;
    header.msg_iovlen = 1;
    header.msg_control = control.data();
    header.msg_controllen = control.size();
    ssize_t const length = ::recvmsg(socket_.number(), &header, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
    if (length >= 0) return judge(header, static_cast<size_t>(length), ::getuid());
    if (errno == EAGAIN || errno == EINTR) return {};
    throw cFailure(reason("cannot receive messages", errno));
}

} // namespace watchdog
