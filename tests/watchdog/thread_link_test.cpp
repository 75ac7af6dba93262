// The receiver of messages: which datagrams it accepts as messages. Some datagrams are fabricated,
// others are sent through a socket.

#include "tools/watchdog/thread_link.h"

#include "tests/support/paths.h"
#include "tools/watchdog/abstract_socket.h"
#include "tools/watchdog/report.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

using namespace watchdog;
using cKind = cDatagram::cKind;

namespace {

constexpr unsigned char bytes_of_a_message[12] = {3,    4,    0,    0,    0xFF, 0xFE,
                                                  0xFD, 0xFC, 0xFE, 0xFF, 0xFF, 0xFF};

// A datagram as recvmsg returns it, with any credentials.
class cForged {
  public:
    explicit cForged(unsigned int user) {
        std::memcpy(bytes_.data(), bytes_of_a_message, sizeof bytes_of_a_message);
        part_ = {bytes_.data(), bytes_.size()};
        header.msg_iov = &part_;
        header.msg_iovlen = 1;
        header.msg_control = control_.data();
        header.msg_controllen = control_.size();
        cmsghdr *const control = CMSG_FIRSTHDR(&header);
        control->cmsg_level = SOL_SOCKET;
        control->cmsg_type = SCM_CREDENTIALS;
        control->cmsg_len = CMSG_LEN(sizeof(ucred));
        ucred const sender{1, user, user};
        std::memcpy(CMSG_DATA(control), &sender, sizeof sender);
    }
    cForged(cForged const &) = delete;
    cForged &operator=(cForged const &) = delete;
    ~cForged() = default;

    cmsghdr &control() { return *CMSG_FIRSTHDR(&header); }
    msghdr header{};

  private:
    std::array<unsigned char, 12> bytes_{};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(ucred))> control_{};
    iovec part_{};
};

TEST(WatchdogJudge, twelve_bytes_of_our_own_user_are_a_message_lowest_byte_first) {
    cForged const forged(1000);
    cDatagram const datagram = judge(forged.header, 12, 1000);
    EXPECT_EQ(datagram.kind, cKind::message);
    EXPECT_EQ(datagram.message, (cMessage{1027, 0xFCFDFEFFu, -2}));
}

TEST(WatchdogJudge, datagrams_of_another_user_are_foreign_even_of_the_superuser) {
    for (unsigned int user : {1001u, 0u, 65534u, 0xFFFFFFFFu}) {
        cForged const forged(user);
        cDatagram const datagram = judge(forged.header, 12, 1000);
        EXPECT_EQ(datagram.kind, cKind::foreign);
        EXPECT_EQ(datagram.user, user);
    }
}

TEST(WatchdogJudge, other_lengths_are_wrong) {
    cForged const forged(1000);
    for (size_t length : {0u, 1u, 11u, 13u, 24u})
        EXPECT_EQ(judge(forged.header, length, 1000).kind, cKind::wrong_length) << length;
}

TEST(WatchdogJudge, a_datagram_cut_to_the_right_length_is_wrong) {
    cForged forged(1000);
    forged.header.msg_flags = MSG_TRUNC;
    EXPECT_EQ(judge(forged.header, 12, 1000).kind, cKind::wrong_length);
}

TEST(WatchdogJudge, a_datagram_without_credentials_has_no_sender) {
    cForged none(1000);
    none.header.msg_controllen = 0;
    EXPECT_EQ(judge(none.header, 12, 1000).kind, cKind::no_sender);
    cForged other(1000);
    other.control().cmsg_type = SCM_RIGHTS;
    EXPECT_EQ(judge(other.header, 12, 1000).kind, cKind::no_sender);
    cForged level(1000);
    level.control().cmsg_level = SOL_SOCKET + 1;
    EXPECT_EQ(judge(level.header, 12, 1000).kind, cKind::no_sender);
    cForged shorter(1000);
    shorter.control().cmsg_len = CMSG_LEN(sizeof(ucred)) - 1;
    EXPECT_EQ(judge(shorter.header, 12, 1000).kind, cKind::no_sender);
    cForged cut(1000);
    cut.header.msg_flags = MSG_CTRUNC;
    EXPECT_EQ(judge(cut.header, 12, 1000).kind, cKind::no_sender);
}

// Sends to a receiver in this process.
class cSender {
  public:
    explicit cSender(std::uint32_t id) : socket_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        std::string const name = "qrv-thread-" + std::to_string(id);
        address_.sun_family = AF_UNIX;
        std::memcpy(address_.sun_path + 1, name.data(), name.size());
        length_ = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    }
    cSender(cSender const &) = delete;
    cSender &operator=(cSender const &) = delete;
    ~cSender() = default;

    bool send(size_t size) {
        std::string bytes(size, '\0');
        iovec part{bytes.data(), bytes.size()};
        msghdr header = header_for(part);
        return ::sendmsg(socket_.number(), &header, MSG_DONTWAIT) == static_cast<ssize_t>(size);
    }
    bool send_with_descriptor(int descriptor) {
        std::string bytes(12, '\0');
        iovec part{bytes.data(), bytes.size()};
        msghdr header = header_for(part);
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
        header.msg_control = control;
        header.msg_controllen = sizeof control;
        *CMSG_FIRSTHDR(&header) = {CMSG_LEN(sizeof(int)), SOL_SOCKET, SCM_RIGHTS};
        std::memcpy(CMSG_DATA(CMSG_FIRSTHDR(&header)), &descriptor, sizeof descriptor);
        return ::sendmsg(socket_.number(), &header, MSG_DONTWAIT) == 12;
    }

  private:
    msghdr header_for(iovec &part) {
        msghdr header{};
        header.msg_name = &address_;
        header.msg_namelen = length_;
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        return header;
    }

    cDescriptor socket_;
    sockaddr_un address_{};
    socklen_t length_ = 0;
};

// Numbers that no other test and no process uses as an id.
std::uint32_t own_id() { return 0x80000000u + static_cast<std::uint32_t>(::getpid()); }

TEST(WatchdogLink, no_datagram_waits_at_first) {
    cThreadLink link(own_id());
    EXPECT_EQ(link.id(), own_id());
    EXPECT_EQ(link.take().kind, cKind::nothing);
}

TEST(WatchdogLink, datagrams_are_received_in_order_and_classified_by_length) {
    cThreadLink link(own_id());
    cSender sender(link.id());
    for (size_t size : {12u, 11u, 13u, 0u, 12u}) ASSERT_TRUE(sender.send(size));
    for (cKind kind : {cKind::message, cKind::wrong_length, cKind::wrong_length,
                       cKind::wrong_length, cKind::message, cKind::nothing})
        EXPECT_EQ(link.take().kind, kind);
}

TEST(WatchdogLink, an_attached_descriptor_is_never_received) {
    cThreadLink link(own_id());
    cSender sender(link.id());
    int const probe = ::dup(0);
    ::close(probe); // the lowest free number
    ASSERT_TRUE(sender.send_with_descriptor(link.descriptor()));
    EXPECT_EQ(link.take().kind, cKind::no_sender);
    int const after = ::dup(0);
    ::close(after);
    EXPECT_EQ(after, probe);
}

TEST(WatchdogLink, an_id_in_use_is_not_used_twice) {
    cThreadLink first(own_id()), second(own_id());
    EXPECT_EQ(second.id(), own_id() + 0x400000);
    cSender sender(second.id());
    ASSERT_TRUE(sender.send(12));
    EXPECT_EQ(first.take().kind, cKind::nothing);
    EXPECT_EQ(second.take().kind, cKind::message);
}

TEST(WatchdogLink, an_id_is_free_again_after_its_link_ends) {
    { cThreadLink const first(own_id()); }
    cThreadLink const second(own_id());
    EXPECT_EQ(second.id(), own_id());
}

TEST(WatchdogLink, the_link_fails_when_all_ids_are_in_use) {
    std::vector<cDescriptor> taken;
    for (std::uint32_t i = 0; i < 16; ++i) {
        taken.push_back(bind_abstract("qrv-thread-" + std::to_string(own_id() + i * 0x400000)));
        ASSERT_TRUE(taken.back());
    }
    try {
        cThreadLink const link(own_id());
        FAIL();
    } catch (cFailure const &error) {
        EXPECT_STREQ(error.what(), "cannot bind the socket for messages: Address already in use");
    }
}

TEST(WatchdogSocket, names_at_their_limit_are_accepted) {
    std::string const start = "test-" + std::to_string(::getpid()) + "-";
    EXPECT_TRUE(bind_abstract(start + std::string(107 - start.size(), 'x')));
    EXPECT_FALSE(bind_abstract(start + std::string(108 - start.size(), 'x')));
    EXPECT_EQ(errno, ENAMETOOLONG);
}

} // namespace
