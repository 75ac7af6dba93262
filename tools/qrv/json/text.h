#pragma once
// Writes the values of a JSON file as text of the file format, without creating objects. The text
// equals the exact text of the library's writer: one entry on each line, but arrays of scalars
// without line ends on one line.

#include "qrv/text/write/cexacttext.h"
#include "tools/qrv/json/value_print.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Receives the text piece by piece; returns false to end the work. A token is never divided between
// two pieces.
using cPutPiece = std::function<bool(std::string_view piece)>;

class cJsonText {
  public:
    explicit cJsonText(cPutPiece put) : put_(std::move(put)) {}
    cJsonText(cJsonText const &) = delete;
    cJsonText &operator=(cJsonText const &) = delete;
    ~cJsonText() = default;

    void open_map() { open({'{', '}', ';', true}); }
    void open_vector(bool has_lines) { open({'[', ']', ',', has_lines}); }
    void close();
    void key(std::string const &key); // the key of the next value
    void value(cScalar const &value);
    void end();                                  // after the outermost value
    bool is_wanted() const { return !refused_; } // false if the receiver has ended the work

    cValuePrint const &given() const { return given_; } // of the values given so far

  private:
    struct cLevel {
        char opening, closing, separator;
        bool has_lines;
        bool is_empty = true;
    };

    void open(cLevel const &level);
    void begin_entry();
    void begin_value();
    void end_value();
    void begin_line();
    void put(cScalar const &value);
    void put(char mark);
    void flush();

    cat::ExactText const exact_;
    cPutPiece put_;
    std::string text_; // not passed to the receiver yet
    std::vector<cLevel> levels_;
    cValuePrint given_;
    bool refused_ = false;
};
