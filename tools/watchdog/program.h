#pragma once
// The watched program as a process: it starts with the variables that tell it about the watch dog,
// with default signal handling but for a terminal's signals that our caller ignores, and with the
// standard streams that the watch dog was given. Only the program itself is ended, not what it has
// started.

#include "life.h"

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace watchdog {

// Our environment, with the title and this id in place of what it says of them.
std::vector<std::string> environment_of(char const *const *ours, std::uint32_t id);

class cProgram {
  public:
    // `command`: the program, looked for in PATH where it has no slash, and its arguments.
    cProgram(std::vector<std::string> command, std::uint32_t id);
    cProgram(cProgram const &) = delete;
    cProgram &operator=(cProgram const &) = delete;

    // 0, or the error number of what the system said.
    int start();
    // How it ended, once; nothing as long as it lives. Takes the ends of orphans too, which come to
    // the first process of a container. Throws cFailure.
    std::optional<cEnd> ended();
    void signal(int number) const; // nothing if none runs
    bool is_running() const { return pid_ > 0; }
    std::string name() const;      // without folders
    std::string full_name() const; // with the process id, as long as it runs

  private:
    std::vector<std::string> command_;
    std::vector<std::string> environment_;
    pid_t pid_ = 0;
};

} // namespace watchdog
