#pragma once
// A command registers itself. Its file contains its options, its help and its work, and one object,
// which no other file uses:
//
//   cCommand const check(70, "check", "Print every error of a file", help,
//                          define<cOptions, add_arguments, run>);
//
// The constructor only links the object into a list, so it does not matter in which order these
// objects are created.

#include "tools/qrv/commands/arguments.h"

#include <functional>
#include <memory>
#include <vector>

class cCommand {
  public:
    // Adds the command's arguments. Returns the function that does the work after the command line
    // was parsed, and returns an exit code.
    using cDefine = std::function<int()> (*)(cArguments &arguments);

    // The help lists the commands by rank. The strings are borrowed.
    cCommand(int rank, char const *name, char const *summary, char const *help,
             cDefine define) noexcept;
    cCommand(cCommand const &) = delete;
    cCommand &operator=(cCommand const &) = delete;
    ~cCommand() = default;

    char const *name() const { return name_; }
    char const *summary() const { return summary_; }
    char const *help() const { return help_; } // printed after the arguments
    std::function<int()> add_to(cArguments &arguments) const { return define_(arguments); }

    static std::vector<cCommand const *> all(); // by rank

  private:
    int rank_;
    char const *name_, *summary_, *help_;
    cDefine define_;
    cCommand const *next_;
};

// The usual definition: a type with the options, and functions that add the options and do the
// work.
template <class Options, void (*add_arguments)(cArguments &, Options &),
          int (*run)(Options const &)>
std::function<int()> define(cArguments &arguments) {
    auto const options = std::make_shared<Options>();
    add_arguments(arguments, *options);
    return [options] { return run(*options); };
}
