#pragma once
// A JSON file as text of the file format: object to map, array to vector, string, true and false to
// themselves, a whole number that fits to int, every other number to double, null to #nil.
//
// Values that the file format cannot hold are errors with position and path, and all are reported:
// a whole number that is neither an int nor exactly a double, a key that occurs twice in an object,
// a character 0 in a string or key, and nesting deeper than the reader accepts. Rules can replace
// the first two errors by another value.
//
// Memory is the bytes of the file, and the keys of the objects that contain the current position.

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

    cBig big = cBig::error; // what a whole number becomes that is neither an int nor a double
    bool last_wins = false; // of equal keys; the value is at the position of the first
};

class cJsonFile {
  public:
    // Moves the bytes. All errors are reported here, one too if the scanner would read the text as
    // other values.   O(size)
    cJsonFile(std::string &bytes, cJsonRules const &rules, cMessages &messages);

    bool is_good() const { return is_good_; } // nothing was reported
    // Of a good file: the size of its text, and the text, the same each time. False if a piece was
    // refused.   O(size)
    std::uint64_t size() const { return size_; }
    bool write(cPutPiece const &put) const;

  private:
    // Gets a piece of the text, and how many bytes of the file were read for it.
    using cPut = std::function<bool(std::string_view piece, size_t bytes)>;
    struct cConverted {
        cValuePrint given;
        cRepetitions repetitions;
    };

    cRepetitions check(cMessages &messages);
    cConverted convert(cMessages &messages, cPut const &put) const;

    std::string bytes_;
    std::string in_range_; // the bytes as the parser accepts them, if it would not
    cJsonRules const rules_;
    std::uint64_t size_ = 0;
    bool is_good_ = false;
};
