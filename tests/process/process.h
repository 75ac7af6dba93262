#pragma once
// For process tests: checks that print where they failed, and a function that runs the program
// again in a fresh process and reads its output. Descriptors 1 and 2 are reserved for this: output
// through the library's streams doesn't reach them unless a test connects it.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

inline int failures = 0;

#define CHECK(condition)                                                                           \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            ++failures;                                                                            \
            std::fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition);           \
        }                                                                                          \
    } while (false)

inline void check_text(char const *file, int line, std::string const &got,
                       std::string const &want) {
    if (got == want) return;
    ++failures;
    std::fprintf(stderr, "%s:%d: got\n%s\ninstead of\n%s\n", file, line, got.c_str(), want.c_str());
}
#define CHECK_TEXT(got, want) check_text(__FILE__, __LINE__, got, want)

inline std::string read_all(int descriptor) {
    std::string text;
    char buffer[4096];
    for (ssize_t n = 0; (n = ::read(descriptor, buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<std::size_t>(n));
    return text;
}

// The result of a process. `status` is its exit code, or -1 if a signal ended it.
struct cResult {
    int status = -1;
    std::string output; // the output on descriptor 1
};

// Runs this program again with one argument. Descriptor 2 is inherited, so that reports of
// sanitizers are visible.
inline cResult run_self(char const *argument,
                        std::vector<std::pair<std::string, std::string>> const &environment = {}) {
    cResult result;
    int ends[2];
    if (::pipe(ends) != 0) return result;
    pid_t const child = ::fork();
    if (child == 0) {
        ::dup2(ends[1], 1);
        ::close(ends[0]);
        ::close(ends[1]);
        for (auto const &[name, value] : environment) ::setenv(name.c_str(), value.c_str(), 1);
        ::execl("/proc/self/exe", "self", argument, static_cast<char *>(nullptr));
        ::_exit(127);
    }
    ::close(ends[1]);
    result.output = read_all(ends[0]);
    ::close(ends[0]);
    int status = 0;
    if (::waitpid(child, &status, 0) == child && WIFEXITED(status))
        result.status = WEXITSTATUS(status);
    return result;
}

// Writes to descriptor 1 directly, without any stream.
inline void say(std::string const &text) {
    if (::write(1, text.data(), text.size()) < 0) ::_exit(126);
}
