#pragma once
// When memory runs out the tool ends at once, with exit_failed and one message that names the file
// it works on. An exception could not do that: the library and the modules catch some, and would
// report a faulty file instead, or nothing. A file that is being written in place is then as a
// killed tool leaves it: the old one or the new one, whole.

#include <string>

// From now on, in this process and those that it starts.
void end_when_memory_ends();

// Instead, in a process whose parent prints the message: it ends with this status.
void end_silently_when_memory_ends();
constexpr int status_without_memory = 12;

constexpr char const *out_of_memory = "out of memory";

// While it lives, messages about the end of memory name that file.
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
