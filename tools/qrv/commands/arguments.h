#pragma once
// The arguments of one command, which is defined without the parser's headers: they take seconds to
// compile.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

// All variables are borrowed until the command line is parsed; their values before are the
// defaults. A name is "FILE" for a positional argument, "--text" or "-o,--output" for an option.
// The help calls the value of an option TEXT, or FILE if the name is "--output=FILE".
class cArguments {
  public:
    struct cRange {
        int lowest;
        int highest;
    };
    struct cTest {
        char const *kind;                               // the kind of value, for the help
        std::string (*wrong)(std::string const &value); // what is wrong with it, or empty
    };

    explicit cArguments(CLI::App &command) : command_(command) {}

    void required(char const *name, std::string &value, char const *help);
    void required(char const *name, std::vector<std::string> &values, char const *help);
    void required(char const *name, std::string &value, cTest test, char const *help);
    // Needs a number of values in this range.
    void required(char const *name, std::vector<std::string> &values, cRange count,
                  char const *help);

    // Accepts any number of values; an option has one value each time it is given.
    void repeated(char const *name, std::vector<std::string> &values, char const *help);
    void repeated(char const *name, std::vector<std::string> &values, cTest test, char const *help);

    void flag(char const *name, bool &value, char const *help);
    void option(char const *name, std::string &value, char const *help);
    void option(char const *name, std::optional<std::string> &value, char const *help);
    void option(char const *name, int &value, cRange range, char const *help);
    void option(char const *name, std::string &value, std::vector<std::string> const &choices,
                char const *help);
    void option(char const *name, std::string &value, cTest test, char const *help);
    // "--name" for `usual`, or "--name=value": a flag, so the next argument is never its value.
    void flag(char const *name, std::string &value, char const *usual, cTest test,
              char const *help);

    // The two options cannot be given together. Both must have been added.
    void exclude(char const *option, char const *other);
    // `option` needs `other`. Both must have been added.
    void need(char const *option, char const *other);
    // After parsing, reports "OPTION requires WHAT" if `is_missing` returns true.
    void need(char const *option, char const *what, std::function<bool()> is_missing);

  private:
    using cChecks = std::vector<std::function<void()>>;

    CLI::App &command_;
    std::shared_ptr<cChecks> checks_; // run after parsing; shared with the parser, may be null
};
