#pragma once
// Converts a JSON file to text of the file format: an object to a map, an array to a vector,
// strings, true and false to themselves, a whole number to an int if it fits, every other number to
// a double, null to #nil.
//
// Values that the file format cannot hold are errors with position and path, and all are reported:
// a whole number that is neither an int nor exactly a double, a key that occurs twice in an object,
// a character 0 in a string or key, and nesting deeper than the reader accepts. Rules can replace
// the first two errors by another value.
//
// Needs memory for the bytes of the file, and for the keys of the objects around the current
// position.

#include "tools/qrv/json/repetitions.h"
#include "tools/qrv/json/text.h"
#include "tools/qrv/output/messages.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

// The byte order mark of UTF-8. It is ignored at the beginning of the text.
constexpr std::string_view json_mark = "\xEF\xBB\xBF";

struct cJsonRules {
    enum class cBig { error, nearest_double, string };

    cBig big = cBig::error; // for whole numbers that are neither an int nor exactly a double
    bool last_wins = false; // of equal keys, the last value is used, at the position of the first
};

class cJsonFile {
  public:
    // Moves the bytes and reports all errors. It is an error, too, if the library would read other
    // values from the new text.   O(size)
    cJsonFile(std::string &bytes, cJsonRules const &rules, cMessages &messages);

    bool is_good() const { return is_good_; } // no error was reported
    // Only for a good file: the size of the text, and the text itself. write() may be called
    // several times; it returns false if `put` refused a piece.   O(size)
    std::uint64_t size() const { return size_; }
    bool write(cPutPiece const &put) const;

  private:
    // Receives a piece of the text, and the number of bytes of the file that were read for it.
    using cPut = std::function<bool(std::string_view piece, size_t bytes)>;
    struct cConverted {
        cValuePrint given;
        cRepetitions repetitions;
    };

    cRepetitions check(cMessages &messages);
    cConverted convert(cMessages &messages, cPut const &put) const;

    std::string bytes_;
    std::string in_range_; // a copy that the parser accepts, if it does not accept the bytes
    cJsonRules const rules_;
    std::uint64_t size_ = 0;
    bool is_good_ = false;
};
