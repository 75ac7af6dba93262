#pragma once
// Reading a file as the commands need it: all bytes, the first value with comments kept, every
// error with its place, and what stands around the value.

#include "qrv/core/cobj.h"

#include <string>
#include <vector>

// A place in a file: both from 1, the column in bytes.
struct cPlace {
    unsigned line = 1;
    unsigned column = 1;
};

struct cComment {
    std::string text; // without the white space before it and without carriage returns
    cPlace place;     // of its first character
};

// The messages of one file: "name:3:5: error: text [0x40000001]", one a line. Beyond the limit
// they are counted.
class cMessages {
  public:
    cMessages(std::string name, int limit) : name_(std::move(name)), limit_(limit) {}

    void error(std::string const &text);               // about the file
    void error(cPlace place, std::string const &text); // about a place, as said
    void note(cPlace place, std::string const &text);  // belongs to the error before
    void more(size_t count) { beyond_ += count; }      // errors that were counted elsewhere
    size_t count() const { return count_ + beyond_; }  // errors
    bool room() const { return count_ < static_cast<size_t>(limit_); }
    std::string const &name() const { return name_; }
    std::string text() const; // all lines, and how many more there were

  private:
    void add(std::string const &line);

    std::string name_;
    int limit_;
    size_t count_ = 0;
    size_t beyond_ = 0;
    bool last_shown_ = false;
    std::string lines_;
};

// All bytes of a file; "-" is the standard input. False with the reason as an error.
bool read_bytes(std::string const &name, std::string &bytes, cMessages &messages);

struct cReading {
    objref value;               // null when there is none
    bool clean = false;         // no error
    std::string head;           // comments before the value, with the line ends behind them
    std::vector<cPlace> behind; // where text begins that stands behind the value: none or one
};

// Reads the first value of the text, with its comments. Errors go to messages.
cReading read_value(std::string const &bytes, cMessages &messages);

// Every comment of the text, in order; one that isn't closed too.
std::vector<cComment> comments_of(std::string const &bytes);

// The text of the tokens, in the scanner's dump form, with comments and blanks if all.
std::string dump_of(std::string const &bytes, bool all);

// The text cut in the middle where it is longer than a message should be.
std::string shortened(std::string const &text);
