#pragma once
// The watched program as a process. It starts with environment variables about the watchdog, with
// default signal handling except for signals of a terminal that our caller ignores, and with the
// standard streams of the watchdog. Only the program itself is ended, not the processes that it
// has started.

#include "life.h"

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace watchdog {

// The environment `ours`, with the title and this id in place of earlier values.
std::vector<std::string> environment_of(char const *const *ours, std::uint32_t id);

class cProgram {
  public:
    // `command`: the program, which is searched for in PATH if it has no slash, and its arguments.
    cProgram(std::vector<std::string> command, std::uint32_t id);
    cProgram(cProgram const &) = delete;
    cProgram &operator=(cProgram const &) = delete;

    // Starts the program. Returns 0 or the error number of the system call.
    int start();
    // After the program has ended, the first call returns how; empty while it runs, and later. Also
    // waits for orphans, which the first process of a container inherits. Throws cFailure.
    std::optional<cEnd> ended();
    void signal(int number) const; // does nothing if the program isn't running
    bool is_running() const { return pid_ > 0; }
    std::string name() const;      // without folders
    std::string full_name() const; // with the process id while it runs

  private:
    std::vector<std::string> command_;
    std::vector<std::string> environment_;
    pid_t pid_ = 0;
};

} // namespace watchdog
