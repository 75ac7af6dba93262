#pragma once
// Runs the built watchdog as a process, and exchanges text with it and its program while they run.
// Every wait has a limit, and no name is fixed: each run has its own event.
//
//   cDog dog({"--timeout", "1"}, child({"init", "take", "wait"}));
//   EXPECT_EQ(dog.line(), "linked");
//   dog.end_input();
//   EXPECT_EQ(dog.finish(), (cRun{0, "", ""}));

#include "tests/support/numbers.h"
#include "tests/support/paths.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <ostream>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace dog_test {

using cWords = std::vector<std::string>;

struct cRun {
    int status = 0; // for a signal 128 and its number
    std::string out;
    std::string err; // process ids are shown as N
    bool operator==(cRun const &) const = default;
};

inline void PrintTo(cRun const &run, std::ostream *os) {
    *os << "status " << run.status << "\n--- out\n" << run.out << "--- err\n" << run.err << "---";
}

// The program of tests/watchdog/child with its steps; `shared`: linked with the shared library.
inline cWords child(cWords steps) {
    steps.insert(steps.begin(), test::binary_file("tests/watchdog_child"));
    return steps;
}
inline cWords shared_child(cWords steps) {
    steps.insert(steps.begin(), test::binary_file("tests/watchdog_shared_child"));
    return steps;
}
inline cWords shell(std::string const &script) { return {"/bin/sh", "-c", script}; }

// A name that no other test uses, in this process or another.
inline std::string own_name() {
    static std::atomic<int> count = 0;
    return "test-" + std::to_string(::getpid()) + "-" + std::to_string(++count);
}

inline std::string without_ids(std::string const &text) {
    return test::hide_numbers(text, "id ", "N");
}

class cDog {
  public:
    // The options of the watchdog, and the command after the `--`.
    cDog(cWords options, cWords const &command, std::string event = own_name())
        : event_(std::move(event)) {
        options.insert(options.begin(), {"--event", event_});
        options.emplace_back("--");
        options.insert(options.end(), command.begin(), command.end());
        start(options);
    }
    explicit cDog(cWords const &arguments) { start(arguments); }
    cDog(cDog const &) = delete;
    cDog &operator=(cDog const &) = delete;
    ~cDog() {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
        for (int descriptor : {input_, out_.descriptor, err_.descriptor})
            if (descriptor >= 0) ::close(descriptor);
    }

    std::string const &event() const { return event_; }
    pid_t pid() const { return pid_; }
    void signal(int number) const { ::kill(pid_, number); }
    void write(std::string const &text) const {
        EXPECT_EQ(::write(input_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void end_input() { ::close(std::exchange(input_, -1)); }
    // The next unread line of standard output or standard error.
    std::string line() { return line_of(out_); }
    std::string error_line() { return without_ids(line_of(err_)); }

    // The unread output, after all processes that could write have ended.
    cRun finish() {
        rest();
        return {status(), out_.text, without_ids(err_.text)};
    }
    // Standard output, after all processes that could write have ended.
    std::string rest() {
        auto const limit = std::chrono::steady_clock::now() + patience;
        while ((out_.is_open() || err_.is_open()) && std::chrono::steady_clock::now() < limit)
            read_some(limit);
        EXPECT_FALSE(out_.is_open() || err_.is_open()) << "a process still writes";
        return out_.text;
    }
    // Waits only for the watchdog's end; its program may continue.
    int status() { return wait(std::chrono::steady_clock::now() + patience); }

  private:
    static constexpr std::chrono::seconds patience{60};
    using cTime = std::chrono::steady_clock::time_point;

    struct cPipe {
        int descriptor = -1;
        std::string text{};
        bool is_open() const { return descriptor >= 0; }
        void take() {
            char bytes[4096];
            ssize_t const count = ::read(descriptor, bytes, sizeof bytes);
            if (count > 0)
                text.append(bytes, static_cast<std::size_t>(count));
            else if (count == 0 || errno != EINTR)
                ::close(std::exchange(descriptor, -1));
        }
    };

    void start(cWords words) {
        words.insert(words.begin(), test::binary_file("bin/qrv-watchdog"));
        std::vector<char *> pointers;
        for (std::string &word : words) pointers.push_back(word.data());
        pointers.push_back(nullptr);
        std::string const variable = "/" + event_;
        int in[2], out[2], err[2];
        if (::pipe2(in, O_CLOEXEC) != 0 || ::pipe2(out, O_CLOEXEC) != 0 ||
            ::pipe2(err, O_CLOEXEC) != 0)
            throw std::runtime_error("no pipes");
        pid_ = ::fork();
        if (pid_ == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGTERM);
            ::dup2(in[0], 0);
            ::dup2(out[1], 1);
            ::dup2(err[1], 2);
            ::close_range(3, ~0u, 0); // closes all descriptors that the tests inherited
            if (!event_.empty()) ::setenv("QRV_TEST_EVENT", variable.c_str(), 1);
            ::execv(pointers[0], pointers.data());
            ::_exit(127);
        }
        for (int other : {in[0], out[1], err[1]}) ::close(other);
        input_ = in[1];
        out_.descriptor = out[0];
        err_.descriptor = err[0];
    }

    void read_some(cTime limit) {
        auto const rest = std::chrono::duration_cast<std::chrono::milliseconds>(
            limit - std::chrono::steady_clock::now());
        pollfd pipes[] = {{out_.descriptor, POLLIN, 0}, {err_.descriptor, POLLIN, 0}};
        if (rest.count() <= 0 || ::poll(pipes, 2, static_cast<int>(rest.count())) <= 0) return;
        if (pipes[0].revents != 0) out_.take();
        if (pipes[1].revents != 0) err_.take();
    }

    std::string line_of(cPipe &pipe) {
        auto const limit = std::chrono::steady_clock::now() + patience;
        std::size_t end = std::string::npos;
        while ((end = pipe.text.find('\n')) == std::string::npos) {
            if (!pipe.is_open() || std::chrono::steady_clock::now() >= limit) {
                ADD_FAILURE() << "no line came, only: " << pipe.text
                              << "\non standard error: " << err_.text;
                return "";
            }
            read_some(limit);
        }
        std::string line = pipe.text.substr(0, end);
        pipe.text.erase(0, end + 1);
        return line;
    }

    int wait(cTime limit) {
        int status = 0;
        while (::waitpid(pid_, &status, WNOHANG) == 0) {
            if (std::chrono::steady_clock::now() >= limit) {
                ADD_FAILURE() << "the watchdog does not end";
                return -1;
            }
            ::usleep(1000);
        }
        pid_ = -1;
        return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }

    std::string event_;
    pid_t pid_ = -1;
    int input_ = -1;
    cPipe out_, err_;
};

// The result of a run without interaction; its standard input is empty.
inline cRun run(cWords const &options, cWords const &command) {
    cDog dog(options, command);
    dog.end_input();
    return dog.finish();
}

} // namespace dog_test
