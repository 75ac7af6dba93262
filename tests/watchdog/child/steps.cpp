// A watched program that performs the steps in its arguments, one after the other. It is built
// twice: with the library's objects and a separate event (own_event.cpp), and with the unchanged
// shared library.
//
//   init           fires sig_init
//   take           connects to the watchdog; prints whether this succeeded
//   step N         sends N signs of life
//   post M W L     sends a message
//   raw N          sends a datagram of N bytes to the watchdog, without the library
//   busy           sends a sign of life every few milliseconds until its standard input ends
//   id             prints the watchdog's id
//   open           prints the open descriptors
//   mask           prints the signals that are blocked or have another action than the default
//   say TEXT       prints a line
//   wait           waits until its standard input ends
//   user N         becomes another user
//   stop           stops itself, as a debugger would
//   deaf           ignores SIGTERM
//   hang           does nothing from now on
//   exit N         ends
//   raise N        ends by a signal
//
// It ends by itself after two minutes, even if the process that started it is killed.

#include "qrv/base/csignal.h"
#include "qrv/util/cwatchdog.h"

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

void say(std::string const &line) {
    std::string const text = line + "\n";
    if (::write(STDOUT_FILENO, text.data(), text.size()) < 0) std::_Exit(90);
}

// Waits at most this long; returns whether the input has ended.
bool input_ended(int milliseconds) {
    pollfd input{STDIN_FILENO, POLLIN, 0};
    char byte = 0;
    return ::poll(&input, 1, milliseconds) == 1 && ::read(STDIN_FILENO, &byte, 1) <= 0;
}

void send_raw(std::size_t size) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::string const name = watchdog_socket_prefix + std::to_string(idWatchDog);
    std::memcpy(address.sun_path + 1, name.data(), name.size());
    int const socket = ::socket(AF_UNIX, SOCK_DGRAM, 0);
    std::string const bytes(size, '\x01');
    socklen_t const length =
        static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    ssize_t const sent = ::sendto(socket, bytes.data(), bytes.size(), 0,
                                  reinterpret_cast<sockaddr const *>(&address), length);
    if (sent != static_cast<ssize_t>(size)) say("not sent");
    ::close(socket);
}

void say_open() {
    std::string list = "open";
    for (int i = 0; i < 1024; ++i)
        if (::fcntl(i, F_GETFD) >= 0) list += " " + std::to_string(i);
    say(list);
}

void say_mask() {
    std::string list = "not as by default";
    sigset_t mask;
    ::sigprocmask(SIG_BLOCK, nullptr, &mask);
    for (int i = 1; i < SIGRTMIN; ++i) {
        struct sigaction action {};
        if (i != SIGKILL && i != SIGSTOP) ::sigaction(i, nullptr, &action);
        bool const sanitizer =
            i == SIGSEGV || i == SIGBUS || i == SIGFPE; // these may have handlers
        bool const other = action.sa_handler != SIG_DFL && !sanitizer;
        if (::sigismember(&mask, i) == 1 || other) list += " " + std::to_string(i);
    }
    say(list);
}

void become(unsigned int user) {
    if (::setgroups(0, nullptr) != 0 || ::setgid(user) != 0 || ::setuid(user) != 0)
        say("no other user");
}

// Performs the steps in the arguments.
class cSteps {
  public:
    explicit cSteps(char **arguments) : next_(arguments) {}
    cSteps(cSteps const &) = delete;
    cSteps &operator=(cSteps const &) = delete;
    ~cSteps() = default;

    void run() {
        while (*next_) {
            std::string_view const word = *next_++;
            if (!run_link_step(word) && !run_output_step(word)) run_process_step(word);
        }
    }

  private:
    int number() { return std::atoi(*next_++); }

    bool run_link_step(std::string_view word) {
        if (word == "init") return sig_init(), true;
        if (word == "take") return say(qrv_take_watchdog_id() ? "linked" : "not linked"), true;
        if (word == "post") {
            auto const message = static_cast<std::uint32_t>(number());
            auto const w_param = static_cast<std::uint32_t>(number());
            PostWatchDog(message, w_param, number());
            return true;
        }
        if (word == "step") {
            for (int i = number(); i > 0; --i) sig_progstep();
            return true;
        }
        if (word == "busy") {
            while (!input_ended(5)) sig_progstep();
            return true;
        }
        if (word == "raw") return send_raw(static_cast<std::size_t>(number())), true;
        return false;
    }

    bool run_output_step(std::string_view word) {
        if (word == "id") return say("id " + std::to_string(idWatchDog)), true;
        if (word == "open") return say_open(), true;
        if (word == "mask") return say_mask(), true;
        if (word == "say") return say(*next_++), true;
        return false;
    }

    void run_process_step(std::string_view word) {
        if (word == "wait")
            while (!input_ended(-1)) {
            }
        else if (word == "user")
            become(static_cast<unsigned int>(number()));
        else if (word == "deaf")
            std::signal(SIGTERM, SIG_IGN);
        else if (word == "stop")
            std::raise(SIGSTOP);
        else if (word == "hang")
            for (;;) ::pause();
        else if (word == "exit")
            std::exit(number());
        else if (word == "raise")
            std::raise(number());
        else
            std::exit(91);
    }

    char **next_;
};

} // namespace

int main(int, char **argv) {
    ::alarm(120);
    cSteps(argv + 1).run();
}
