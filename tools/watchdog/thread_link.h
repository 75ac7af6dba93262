#pragma once
// The receiving end of thread messages: a socket "qrv-thread-<id>". Each message is a datagram of
// 12 bytes. A datagram from another user, of another length or without its sender is not a message.
//
// Limits: the system drops datagrams when the socket is full, and every user can fill it. Then only
// the event (event.h) shows that the program is alive.

#include "descriptor.h"

#include <cstdint>
#include <string>
#include <sys/socket.h>

namespace watchdog {

struct cMessage {
    std::uint32_t message = 0;
    std::uint32_t w_param = 0;
    std::int32_t l_param = 0;
    bool operator==(cMessage const &) const = default;
};

struct cDatagram {
    enum class cKind { nothing, message, foreign, wrong_length, no_sender };
    cKind kind = cKind::nothing;
    cMessage message{};    // for kind message
    unsigned int user = 0; // the sender, for kind foreign
};

// Classifies the datagram that recvmsg has read into `header`, for a receiver that runs as user
// `own`.
cDatagram judge(msghdr const &header, size_t length, unsigned int own);

class cThreadLink {
  public:
    // Uses the wanted id. If its name is in use, adds 0x400000 until one is free; no process has
    // such an id. Throws cFailure.
    explicit cThreadLink(std::uint32_t wanted);
    cThreadLink(cThreadLink const &) = delete;
    cThreadLink &operator=(cThreadLink const &) = delete;

    std::uint32_t id() const { return id_; }
    int descriptor() const { return socket_.number(); }
    // The next waiting datagram; its kind is `nothing` if no datagram waits. Throws cFailure.
    cDatagram take();

  private:
    std::uint32_t id_ = 0;
    cDescriptor socket_;
};

} // namespace watchdog
