#include "base/platform/clink.h"

#include "base/platform/os_calls.h"
#include "qrv/base/platform/cplatform.h"
#include "tests/support/os_faults.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <utility>
#include <vector>

namespace {

// Every name contains the process id, so that test runs do not disturb each other.
std::string own_prefix() { return "qrv-test-" + std::to_string(::getpid()) + "-"; }

// A socket that knows the sender of each datagram.
class cReceiver {
  public:
    explicit cReceiver(std::string const &name)
        : descriptor_(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        name.copy(address.sun_path + 1, sizeof address.sun_path - 1);
        auto const length = offsetof(sockaddr_un, sun_path) + 1 + name.size();
        int const on = 1;
        bound_ = ::bind(descriptor_, reinterpret_cast<sockaddr *>(&address),
                        static_cast<socklen_t>(length)) == 0 &&
                 ::setsockopt(descriptor_, SOL_SOCKET, SO_PASSCRED, &on, sizeof on) == 0;
    }
    cReceiver(cReceiver const &) = delete;
    cReceiver &operator=(cReceiver const &) = delete;
    ~cReceiver() { ::close(descriptor_); }

    bool bound() const { return bound_; }

    // Returns the next datagram, or an empty string without one. `sender` is set to its sender.
    std::string take() {
        char bytes[64];
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(ucred))];
        iovec part{bytes, sizeof bytes};
        msghdr message{};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        ssize_t const size = ::recvmsg(descriptor_, &message, 0);
        sender = {0, static_cast<uid_t>(-1), static_cast<gid_t>(-1)};
        if (size < 0) return {};
        cmsghdr const *const head = CMSG_FIRSTHDR(&message);
        if (head && head->cmsg_type == SCM_CREDENTIALS)
            std::memcpy(&sender, CMSG_DATA(head), sizeof sender);
        return {bytes, static_cast<std::size_t>(size)};
    }

    ucred sender{};

  private:
    int descriptor_;
    bool bound_ = false;
};

std::string const datagram("\x03\x04\0\0\x02\x01\0\0\xFE\xFF\xFF\xFF", 12); // 0x403, 0x102, -2

class Link : public testing::Test {
  protected:
    ~Link() override {
        cat::os = calls_;
        ::unsetenv("QRV_TEST_VALUE");
    }
    static void post(std::string const &prefix, std::uint32_t id) {
        cat::post_message(prefix.c_str(), id, 0x403, 0x102, -2);
    }

  private:
    cat::os_calls const calls_ = cat::os;
};

using Event = Link;

// ---- messages ----

TEST_F(Link, a_message_is_one_datagram_of_three_numbers_lowest_byte_first) {
    std::string const prefix = own_prefix();
    cReceiver receiver(prefix + "42");
    ASSERT_TRUE(receiver.bound());
    post(prefix, 42);
    EXPECT_EQ(receiver.take(), datagram);
    EXPECT_EQ(receiver.sender.uid, ::getuid());
    EXPECT_EQ(receiver.sender.pid, ::getpid());
    EXPECT_EQ(receiver.take(), "");
}

TEST_F(Link, the_name_contains_the_id_as_an_unsigned_number) {
    std::string const prefix = own_prefix();
    cReceiver largest(prefix + "4294967294");
    cReceiver least(prefix + "1");
    ASSERT_TRUE(largest.bound() && least.bound());
    post(prefix, 4294967294u);
    post(prefix, 1);
    EXPECT_EQ(largest.take(), datagram);
    EXPECT_EQ(largest.take(), "");
    EXPECT_EQ(least.take(), datagram);
}

TEST_F(Link, a_name_that_fills_the_address_works_and_a_longer_one_drops_the_message) {
    constexpr std::size_t most = sizeof(sockaddr_un::sun_path) - 1;
    std::string prefix = own_prefix();
    prefix.resize(most - 2, 'x');
    cReceiver receiver(prefix + "42");
    ASSERT_TRUE(receiver.bound());
    post(prefix, 42);
    EXPECT_EQ(receiver.take(), datagram);
    post(prefix, 421);
    post(prefix + std::string(3, 'x'), 42);
    post(prefix + std::string(1000, 'x'), 42);
    EXPECT_EQ(receiver.take(), "");
}

TEST_F(Link, a_missing_receiver_is_not_an_error_and_a_later_receiver_gets_later_messages) {
    std::string const prefix = own_prefix();
    errno = EDOM;
    post(prefix, 42);
    EXPECT_EQ(errno, EDOM);
    cReceiver receiver(prefix + "42");
    ASSERT_TRUE(receiver.bound());
    EXPECT_EQ(receiver.take(), "");
    post(prefix, 42);
    EXPECT_EQ(receiver.take(), datagram);
}

TEST_F(Link, sending_does_not_wait_for_a_full_receiver) {
    std::string const prefix = own_prefix();
    cReceiver receiver(prefix + "42");
    ASSERT_TRUE(receiver.bound());
    static int refused;
    static ssize_t (*real)(int, void const *, size_t, int, sockaddr const *, socklen_t);
    refused = 0;
    real = cat::os.sendto;
    cat::os.sendto = [](int descriptor, void const *bytes, size_t count, int flags,
                        sockaddr const *address, socklen_t length) {
        ssize_t const sent = real(descriptor, bytes, count, flags, address, length);
        refused += sent < 0 && errno == EAGAIN;
        return sent;
    };
    constexpr int many = 100'000;
    errno = EDOM;
    for (int i = 0; i < many; ++i) post(prefix, 42);
    EXPECT_EQ(errno, EDOM);
    EXPECT_GT(refused, 0);
    int received = 0;
    while (receiver.take() == datagram) ++received;
    EXPECT_EQ(received + refused, many);
    post(prefix, 42);
    EXPECT_EQ(receiver.take(), datagram);
}

std::size_t open_descriptors() {
    namespace fs = std::filesystem;
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

TEST_F(Link, one_socket_sends_all_messages_and_is_closed_on_exec) {
    std::string const prefix = own_prefix();
    static int used;
    static ssize_t (*real)(int, void const *, size_t, int, sockaddr const *, socklen_t);
    used = -1;
    real = cat::os.sendto;
    cat::os.sendto = [](int descriptor, void const *bytes, size_t count, int flags,
                        sockaddr const *address, socklen_t length) {
        used = descriptor;
        EXPECT_EQ(flags, MSG_DONTWAIT | MSG_NOSIGNAL);
        return real(descriptor, bytes, count, flags, address, length);
    };
    post(prefix, 1);
    int const first = used;
    std::size_t const before = open_descriptors();
    for (std::uint32_t id = 2; id < 100; ++id) {
        post(prefix, id);
        EXPECT_EQ(used, first);
    }
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(::fcntl(first, F_GETFD), FD_CLOEXEC);
    EXPECT_NE(::fcntl(first, F_GETFL) & O_NONBLOCK, 0);
}

// The descriptor of the socket on which messages are sent, which is created if necessary.
int kept_socket(std::string const &prefix) {
    static int used;
    static ssize_t (*real)(int, void const *, size_t, int, sockaddr const *, socklen_t);
    real = cat::os.sendto;
    used = -1;
    cat::os.sendto = [](int descriptor, void const *, size_t count, int, sockaddr const *,
                        socklen_t) {
        used = descriptor;
        return static_cast<ssize_t>(count);
    };
    cat::post_message(prefix.c_str(), 1, 0, 0, 0);
    cat::os.sendto = real;
    return used;
}

TEST_F(Link, a_socket_that_other_code_closed_is_created_again) {
    std::string const prefix = own_prefix();
    cReceiver receiver(prefix + "42");
    ASSERT_TRUE(receiver.bound());
    ASSERT_EQ(::close(kept_socket(prefix)), 0);
    post(prefix, 42);
    EXPECT_EQ(receiver.take(), datagram);
}

TEST_F(Link, a_reused_descriptor_of_a_closed_socket_is_left_alone) {
    std::string const prefix = own_prefix();
    cReceiver receiver(prefix + "42");
    ASSERT_TRUE(receiver.bound());
    int const kept = kept_socket(prefix);
    ASSERT_EQ(::close(kept), 0);
    int ends[2]; // a stream that belongs to other code; a message must not be written into it
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends), 0);
    int &taken = ends[0] == kept ? ends[0] : ends[1];
    if (taken != kept) {
        ASSERT_EQ(::dup2(taken, kept), kept);
        ::close(taken);
        taken = kept;
    }
    post(prefix, 42);
    EXPECT_EQ(receiver.take(), datagram);
    char byte = 0;
    EXPECT_EQ(::recv(taken == ends[0] ? ends[1] : ends[0], &byte, 1, 0), -1);
    EXPECT_EQ(::fcntl(kept, F_GETFD), 0)
        << "the stream must stay open, without the close-on-exec flag of the link's sockets";
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(Link, a_child_process_sends_on_its_own_socket_and_the_parent_continues) {
    std::string const prefix = own_prefix();
    cReceiver receiver(prefix + "42");
    ASSERT_TRUE(receiver.bound());
    post(prefix, 42);
    EXPECT_EQ(receiver.take(), datagram);
    pid_t const child = ::fork();
    if (child == 0) {
        post(prefix, 42);
        ::_exit(0);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(receiver.take(), datagram);
    EXPECT_EQ(receiver.sender.pid, child);
    post(prefix, 42);
    EXPECT_EQ(receiver.take(), datagram);
    EXPECT_EQ(receiver.sender.pid, ::getpid());
}

TEST_F(Link, the_hook_replaces_the_socket_until_it_is_null) {
    static std::string posted;
    posted.clear();
    std::string const prefix = own_prefix();
    cReceiver receiver(prefix + "42");
    ASSERT_TRUE(receiver.bound());
    qrv_set_post_message(
        [](std::uint32_t id, std::uint32_t message, std::uint32_t wParam, std::int32_t lParam) {
            posted += std::to_string(id) + " " + std::to_string(message) + " " +
                      std::to_string(wParam) + " " + std::to_string(lParam) + "; ";
        });
    post(prefix, 42);
    qrv_set_post_message(nullptr);
    EXPECT_EQ(posted, "42 1027 258 -2; ");
    EXPECT_EQ(receiver.take(), "");
    post(prefix, 42);
    EXPECT_EQ(posted, "42 1027 258 -2; ");
    EXPECT_EQ(receiver.take(), datagram);
}

// Each system call fails in turn, with a new socket and with an existing one. At most the message
// is lost; no descriptor leaks, and the next message arrives.
TEST_F(Link, a_failed_system_call_loses_at_most_one_message) {
    std::string const prefix = own_prefix();
    cReceiver receiver(prefix + "42");
    ASSERT_TRUE(receiver.bound());
    for (bool const made : {false, true}) {
        std::string failed;
        for (int n = 0;; ++n) {
            int const kept = kept_socket(prefix);
            if (!made) ::close(kept);
            std::size_t const before = open_descriptors();
            {
                cOsFaults const faults(n, EMFILE);
                errno = EDOM;
                post(prefix, 42);
                EXPECT_EQ(errno, EDOM);
            }
            while (!receiver.take().empty()) continue;
            EXPECT_LE(open_descriptors(), before + 1);
            post(prefix, 42);
            EXPECT_EQ(receiver.take(), datagram) << cOsFaults::hit();
            if (cOsFaults::hit().empty()) break;
            failed += cOsFaults::hit() + "; ";
        }
        EXPECT_EQ(failed, made ? "fstat; sendto; " : "fstat; socket; fstat; sendto; ");
    }
}

// ---- environment values ----

TEST_F(Link, an_environment_value_is_read_at_each_call) {
    EXPECT_EQ(cat::start_value("QRV_TEST_VALUE"), nullptr);
    ::setenv("QRV_TEST_VALUE", "", 1);
    EXPECT_STREQ(cat::start_value("QRV_TEST_VALUE"), "");
    ::setenv("QRV_TEST_VALUE", "one", 1);
    EXPECT_STREQ(cat::start_value("QRV_TEST_VALUE"), "one");
}

// ---- events ----

// A semaphore of this test process.
class cOwnSemaphore {
  public:
    cOwnSemaphore()
        : name("/" + own_prefix() + "event"),
          semaphore_(::sem_open(name.c_str(), O_CREAT | O_EXCL, 0600, 0)) {}
    cOwnSemaphore(cOwnSemaphore const &) = delete;
    cOwnSemaphore &operator=(cOwnSemaphore const &) = delete;
    ~cOwnSemaphore() {
        if (semaphore_ == SEM_FAILED) return;
        ::sem_close(semaphore_);
        ::sem_unlink(name.c_str());
    }
    int value() const {
        int value = -1;
        return semaphore_ != SEM_FAILED && ::sem_getvalue(semaphore_, &value) == 0 ? value : -1;
    }
    std::string file() const { return "/dev/shm/sem." + name.substr(1); }

    std::string const name;

  private:
    sem_t *const semaphore_;
};

TEST_F(Event, an_existing_event_is_raised) {
    cOwnSemaphore const own;
    ASSERT_EQ(own.value(), 0);
    void *const event = cat::open_event(own.name.c_str());
    ASSERT_NE(event, nullptr);
    cat::set_event(event);
    cat::set_event(event);
    EXPECT_EQ(own.value(), 2);
    cat::close_event(event);
    EXPECT_EQ(own.value(), 2);
}

TEST_F(Event, a_missing_event_is_null_and_is_not_created) {
    std::string const name = "/" + own_prefix() + "none";
    errno = EDOM;
    EXPECT_EQ(cat::open_event(name.c_str()), nullptr);
    EXPECT_EQ(::access(("/dev/shm/sem." + name.substr(1)).c_str(), F_OK), -1);
    errno = EDOM;
    EXPECT_EQ(cat::open_event(name.c_str()), nullptr);
    cat::set_event(nullptr);
    cat::close_event(nullptr);
    EXPECT_EQ(errno, EDOM);
}

TEST_F(Event, an_event_with_a_refused_name_is_null) {
    for (char const *name : {"", "/", "a/b", "/a/b"})
        EXPECT_EQ(cat::open_event(name), nullptr) << name;
    EXPECT_EQ(cat::open_event(("/" + std::string(5000, 'x')).c_str()), nullptr);
}

// Every user may create files in /dev/shm, and using a semaphore in a file that is too short
// would end the process.
TEST_F(Event, a_file_too_short_for_an_event_is_refused) {
    std::string const name = "/" + own_prefix() + "short";
    std::string const file = "/dev/shm/sem." + name.substr(1);
    for (std::size_t size : {std::size_t{0}, sizeof(sem_t) - 1}) {
        std::ofstream(file) << std::string(size, '\0');
        EXPECT_EQ(cat::open_event(name.c_str()), nullptr) << size;
    }
    std::ofstream(file) << std::string(sizeof(sem_t), '\0');
    void *const event = cat::open_event(name.c_str());
    EXPECT_NE(event, nullptr);
    cat::close_event(event);
    ::unlink(file.c_str());
}

TEST_F(Event, links_and_folders_are_refused_as_events) {
    cOwnSemaphore const own;
    std::string const name = "/" + own_prefix() + "other";
    std::string const file = "/dev/shm/sem." + name.substr(1);
    ASSERT_EQ(::symlink(own.file().c_str(), file.c_str()), 0);
    EXPECT_EQ(cat::open_event(name.c_str()), nullptr);
    ASSERT_EQ(::unlink(file.c_str()), 0);
    ASSERT_EQ(::mkdir(file.c_str(), 0700), 0);
    EXPECT_EQ(cat::open_event(name.c_str()), nullptr);
    ASSERT_EQ(::rmdir(file.c_str()), 0);
}

TEST_F(Event, the_owner_must_be_the_user_or_root) {
    constexpr uid_t us = 1000, somebody = 1001, root = 0;
    EXPECT_TRUE(cat::trusts_owner(us, us));
    EXPECT_TRUE(cat::trusts_owner(root, us));
    EXPECT_TRUE(cat::trusts_owner(root, root));
    EXPECT_FALSE(cat::trusts_owner(somebody, us));
    EXPECT_FALSE(cat::trusts_owner(us, root));
    cOwnSemaphore const own;
    // Only root can change the owner of a file.
    bool const given_away = ::chown(own.file().c_str(), ::geteuid() + 1, getegid()) == 0;
    void *const event = cat::open_event(own.name.c_str());
    EXPECT_EQ(event == nullptr, given_away);
    cat::close_event(event);
}

TEST_F(Event, failed_system_calls_are_not_reported) {
    cOwnSemaphore const own;
    std::string failed;
    for (int n = 0;; ++n) {
        cOsFaults const faults(n, EOVERFLOW);
        errno = EDOM;
        void *const event = cat::open_event(own.name.c_str());
        cat::set_event(event);
        cat::close_event(event);
        EXPECT_EQ(errno, EDOM);
        if (cOsFaults::hit().empty()) break;
        EXPECT_EQ(event == nullptr, cOsFaults::hit() == "sem_open");
        failed += cOsFaults::hit() + "; ";
        if (cOsFaults::hit() == "sem_close") ::sem_close(static_cast<sem_t *>(event));
    }
    EXPECT_EQ(failed, "sem_open; sem_post; sem_close; ");
    EXPECT_EQ(own.value(), 2);
}

} // namespace
