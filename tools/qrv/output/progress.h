#pragma once
// A line on the terminal that shows how much of a large file is read. It is removed at the end.

#include <cstdint>
#include <string>

class cProgress {
  public:
    // The size in bytes; 0 if it is not known. Prints nothing for a file that is not large, nor if
    // standard error is not a terminal.
    cProgress(std::string const &name, std::uint64_t size);
    cProgress(cProgress const &) = delete;
    cProgress &operator=(cProgress const &) = delete;
    ~cProgress() { show(""); }

    bool is_shown() const { return !name_.empty(); }
    void add(std::uint64_t bytes); // counts bytes that were read

  private:
    void show(std::string const &line);

    std::string name_; // empty if nothing is shown
    std::uint64_t size_;
    std::uint64_t done_ = 0;
    std::string line_; // the line on the terminal
};
