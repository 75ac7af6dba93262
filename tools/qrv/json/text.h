#pragma once
// The text of a value of a JSON file, equal to what the library's writer writes for such an object
// in exact text: one entry a line, but arrays of scalars without line ends on one line. It is
// written part by part, so that no object is created.

#include "qrv/text/write/cexacttext.h"
#include "tools/qrv/json/value_print.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Gets the text piece by piece; false ends the work. No token is divided between two pieces.
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
    void key(std::string const &key); // of the next value
    void value(cScalar const &value);
    void end();                                  // after the outermost value
    bool is_wanted() const { return !refused_; } // the rest of the text

    cValuePrint const &given() const { return given_; } // of what was written

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
    std::string text_; // not handed over yet
    std::vector<cLevel> levels_;
    cValuePrint given_;
    bool refused_ = false;
};
