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

// Nothing of another run's is touched: every name holds the process's number.
std::string own_prefix() { return "qrv-test-" + std::to_string(::getpid()) + "-"; }

// A socket that tells who sent what.
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

    // The next datagram's bytes; empty when there is none. `sender` is who sent it.
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

std::string const abc("\x03\x04\0\0\x02\x01\0\0\xFE\xFF\xFF\xFF", 12); // 0x403, 0x102, -2

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
    EXPECT_EQ(receiver.take(), abc);
    EXPECT_EQ(receiver.sender.uid, ::getuid());
    EXPECT_EQ(receiver.sender.pid, ::getpid());
    EXPECT_EQ(receiver.take(), "");
}

TEST_F(Link, the_id_is_a_number_without_sign_in_the_name) {
    std::string const prefix = own_prefix();
    cReceiver largest(prefix + "4294967294");
    cReceiver least(prefix + "1");
    ASSERT_TRUE(largest.bound() && least.bound());
    post(prefix, 4294967294u);
    post(prefix, 1);
    EXPECT_EQ(largest.take(), abc);
    EXPECT_EQ(largest.take(), "");
    EXPECT_EQ(least.take(), abc);
}

TEST_F(Link, a_name_that_fills_the_address_reaches_and_a_longer_one_is_dropped) {
    constexpr std::size_t most = sizeof(sockaddr_un::sun_path) - 1;
    std::string prefix = own_prefix();
    prefix.resize(most - 2, 'x');
    cReceiver receiver(prefix + "42");
    ASSERT_TRUE(receiver.bound());
    post(prefix, 42);
    EXPECT_EQ(receiver.take(), abc);
    post(prefix, 421);
    post(prefix + std::string(3, 'x'), 42);
    post(prefix + std::string(1000, 'x'), 42);
    EXPECT_EQ(receiver.take(), "");
}

TEST_F(Link, nobody_there_is_no_failure_and_a_later_receiver_gets_the_later_messages) {
    std::string const prefix = own_prefix();
    errno = EDOM;
    post(prefix, 42);
    EXPECT_EQ(errno, EDOM);
    cReceiver receiver(prefix + "42");
    ASSERT_TRUE(receiver.bound());
    EXPECT_EQ(receiver.take(), "");
    post(prefix, 42);
    EXPECT_EQ(receiver.take(), abc);
}

TEST_F(Link, a_full_receiver_is_not_waited_for) {
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
    while (receiver.take() == abc) ++received;
    EXPECT_EQ(received + refused, many);
    post(prefix, 42);
    EXPECT_EQ(receiver.take(), abc);
}

std::size_t open_descriptors() {
    namespace fs = std::filesystem;
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

TEST_F(Link, one_socket_serves_all_and_is_not_handed_on) {
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

// The descriptor that the next message would use.
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

TEST_F(Link, a_socket_that_somebody_closed_is_made_again) {
    std::string const prefix = own_prefix();
    cReceiver receiver(prefix + "42");
    ASSERT_TRUE(receiver.bound());
    ASSERT_EQ(::close(kept_socket(prefix)), 0);
    post(prefix, 42);
    EXPECT_EQ(receiver.take(), abc);
}

TEST_F(Link, what_has_taken_the_number_of_a_closed_socket_is_left_alone) {
    std::string const prefix = own_prefix();
    cReceiver receiver(prefix + "42");
    ASSERT_TRUE(receiver.bound());
    int const kept = kept_socket(prefix);
    ASSERT_EQ(::close(kept), 0);
    int ends[2]; // a stream of somebody else's, into which three numbers would be written
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends), 0);
    int &taken = ends[0] == kept ? ends[0] : ends[1];
    if (taken != kept) {
        ASSERT_EQ(::dup2(taken, kept), kept);
        ::close(taken);
        taken = kept;
    }
    post(prefix, 42);
    EXPECT_EQ(receiver.take(), abc);
    char byte = 0;
    EXPECT_EQ(::recv(taken == ends[0] ? ends[1] : ends[0], &byte, 1, 0), -1);
    EXPECT_EQ(::fcntl(kept, F_GETFD), 0) << "still open, and no socket of ours";
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(Link, a_child_sends_for_itself_and_its_parent_goes_on) {
    std::string const prefix = own_prefix();
    cReceiver receiver(prefix + "42");
    ASSERT_TRUE(receiver.bound());
    post(prefix, 42);
    EXPECT_EQ(receiver.take(), abc);
    pid_t const child = ::fork();
    if (child == 0) {
        post(prefix, 42);
        ::_exit(0);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(receiver.take(), abc);
    EXPECT_EQ(receiver.sender.pid, child);
    post(prefix, 42);
    EXPECT_EQ(receiver.take(), abc);
    EXPECT_EQ(receiver.sender.pid, ::getpid());
}

TEST_F(Link, the_hook_takes_the_place_of_the_socket_until_it_is_null) {
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
    EXPECT_EQ(receiver.take(), abc);
}

// Each call in turn, with a socket to be made and with one that is kept: the message is lost at
// most, no descriptor is, and the next message arrives.
TEST_F(Link, a_refusal_of_the_system_costs_one_message_at_most) {
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
            EXPECT_EQ(receiver.take(), abc) << cOsFaults::hit();
            if (cOsFaults::hit().empty()) break;
            failed += cOsFaults::hit() + "; ";
        }
        EXPECT_EQ(failed, made ? "fstat; sendto; " : "fstat; socket; fstat; sendto; ");
    }
}

// ---- the starter ----

TEST_F(Link, what_the_starter_left_is_read_when_it_is_asked_for) {
    EXPECT_EQ(cat::start_value("QRV_TEST_VALUE"), nullptr);
    ::setenv("QRV_TEST_VALUE", "", 1);
    EXPECT_STREQ(cat::start_value("QRV_TEST_VALUE"), "");
    ::setenv("QRV_TEST_VALUE", "one", 1);
    EXPECT_STREQ(cat::start_value("QRV_TEST_VALUE"), "one");
}

// ---- events ----

// A semaphore of this process's own.
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

TEST_F(Event, an_event_that_is_there_is_raised) {
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

TEST_F(Event, an_event_that_is_not_there_is_null_and_none_is_made) {
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

TEST_F(Event, a_name_that_the_system_refuses_is_null) {
    for (char const *name : {"", "/", "a/b", "/a/b"})
        EXPECT_EQ(cat::open_event(name), nullptr) << name;
    EXPECT_EQ(cat::open_event(("/" + std::string(5000, 'x')).c_str()), nullptr);
}

// Everybody may make files there; the first use of a semaphore in a short one ends the process.
TEST_F(Event, a_file_too_short_for_an_event_is_none) {
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

TEST_F(Event, links_and_folders_are_no_events) {
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

TEST_F(Event, the_owner_is_the_user_or_root) {
    constexpr uid_t us = 1000, somebody = 1001, root = 0;
    EXPECT_TRUE(cat::trusts_owner(us, us));
    EXPECT_TRUE(cat::trusts_owner(root, us));
    EXPECT_TRUE(cat::trusts_owner(root, root));
    EXPECT_FALSE(cat::trusts_owner(somebody, us));
    EXPECT_FALSE(cat::trusts_owner(us, root));
    cOwnSemaphore const own;
    bool const given_away = ::chown(own.file().c_str(), ::geteuid() + 1, getegid()) == 0;
    void *const event = cat::open_event(own.name.c_str()); // only root can give a file away
    EXPECT_EQ(event == nullptr, given_away);
    cat::close_event(event);
}

TEST_F(Event, refusals_of_the_system_are_not_told) {
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
