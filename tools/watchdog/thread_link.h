#pragma once
// The receiving end of thread messages: a socket "qrv-thread-<id>", on which each message is a
// datagram of 12 bytes. What another user sent, has another length or tells no sender is not a
// message.
//
// Limits: the system drops datagrams when the socket is full, and everybody can fill it. The event
// (event.h) is for that.

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
    cMessage message{};    // of kind message
    unsigned int user = 0; // of kind foreign
};

// What the bytes that recvmsg has put into `header` are, for a receiver of the user `own`.
cDatagram judge(msghdr const &header, size_t length, unsigned int own);

class cThreadLink {
  public:
    // Takes that id, or one that is a number of times 0x400000 above it, where the name is in use:
    // no process has one of these. Throws cFailure.
    explicit cThreadLink(std::uint32_t wanted);
    cThreadLink(cThreadLink const &) = delete;
    cThreadLink &operator=(cThreadLink const &) = delete;

    std::uint32_t id() const { return id_; }
    int descriptor() const { return socket_.number(); }
    // The next that waits; kind nothing if none does. Throws cFailure.
    cDatagram take();

  private:
    std::uint32_t id_ = 0;
    cDescriptor socket_;
};

} // namespace watchdog
