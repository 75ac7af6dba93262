#pragma once
// The messages about one file, each a line: "name:3:5: error: text [0x40000001]". They are
// gathered, and put out when the work on the file is done. Beyond the limit they are only counted,
// errors and warnings each for itself, and a last line tells how many. A line holds no control
// characters and no more than a person would read.

#include <cstddef>
#include <string>

// A place in a file: both from 1, the column in bytes.
struct cPlace {
    unsigned line = 1;
    unsigned column = 1;
    auto operator<=>(cPlace const &) const = default;
};

// The place behind the first `count` characters of a text that begins at `place`.
cPlace behind(cPlace place, std::string const &text, size_t count);

// The text with its control characters but tabs spelt out: a name of a file may have any.
std::string without_controls(std::string const &text);

constexpr size_t longest_path = 120; // of characters in a message

// The text cut in the middle, between characters, where it is longer.
std::string shortened(std::string const &text, size_t longest = longest_path);

// The text with that path in it shortened.
std::string with_short_path(std::string text, std::string const &path);

constexpr int default_max_errors = 100; // messages about one file

class cMessages {
  public:
    cMessages(std::string name, int limit) : name_(std::move(name)), limit_(limit) {}

    void error(std::string const &text, unsigned code = 0);               // about the file
    void error(cPlace place, std::string const &text, unsigned code = 0); // about a place, as said
    void warning(std::string const &text);
    void warning(cPlace place, std::string const &text);
    void note(cPlace place, std::string const &text);    // belongs to the error before
    void more(size_t count) { errors_.beyond += count; } // errors that were counted elsewhere
    size_t count() const { return errors_.count(); }     // errors
    size_t warnings() const { return warnings_.count(); }
    void call_warnings(char const *word) { warning_ = word; } // counted as warnings all the same
    bool tells_errors() const { return has_room(errors_); }   // would the next one be told?
    bool tells_warnings() const { return has_room(warnings_); }
    // Of another one: its lines, and how many errors it had. Either this one has none yet, and the
    // other has the same limit, or the other has one.
    void take(std::string const &lines, size_t count);
    std::string const &lines() const { return lines_; } // without how many more there were
    int limit() const { return limit_; }
    std::string const &name() const { return name_; }
    std::string text() const; // all lines, and how many more there were

  private:
    struct cTally {
        size_t told = 0;
        size_t beyond = 0; // counted only
        size_t count() const { return told + beyond; }
    };

    void add_error(std::string const &where, std::string const &text, unsigned code);
    void add_warning(std::string const &where, std::string const &text);
    bool has_room(cTally const &tally) const;
    bool may_tell(cTally &tally) const; // counts one more
    void add(std::string const &where, std::string const &text);
    std::string at(cPlace place) const;

    std::string name_;
    int limit_;
    cTally errors_, warnings_;
    std::string warning_ = "warning";
    std::string lines_;
};
