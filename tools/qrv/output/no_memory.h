#pragma once
// When memory runs out, the tool ends at once, with exit_failed and one message that names the
// current file. An exception would not do: the library and the modules catch some, and would report
// a faulty file instead, or nothing. A file that is being replaced is then complete, old or new, as
// when the tool is killed.

#include <string>

// Switches this on, for this process and its worker processes.
void end_when_memory_ends();

// For a worker process, whose parent prints the message: it ends with this status.
void end_silently_when_memory_ends();
constexpr int status_without_memory = 12;

constexpr char const *out_of_memory = "out of memory";

// Guard: until the end of the scope, messages about the end of memory name this file.
class cWorkOn {
  public:
    explicit cWorkOn(std::string const &name);
    cWorkOn(cWorkOn const &) = delete;
    cWorkOn &operator=(cWorkOn const &) = delete;
    ~cWorkOn();

    std::string const &message() const { return message_; }

  private:
    std::string const message_;
    cWorkOn const *const outer_;
};
