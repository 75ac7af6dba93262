#pragma once
// A file that is scanned. A regular file is first read into memory as a whole. The first
// constructor lets the scanner read a pipe or a device piece by piece, since its size is unknown.

#include "qrv/text/read/cattrscan.h"
#include "text/scan/cmemory_stream.h"

#include <fstream>
#include <istream>
#include <optional>
#include <string>
#include <string_view>

namespace cat {
// Reads the rest of a stream. False after a read error; `text` then has the characters before it.
bool read_rest(std::istream &in, std::string &text);
} // namespace cat

class cFileScan {
  public:
    // Unless quiet, a file that can't be opened is reported as cAttrScan::openfile() does.
    cFileScan(char const *name, bool quiet);
    // Reads a file of any kind into memory, and skips a byte order mark. Reports nothing if the
    // file can't be opened.
    explicit cFileScan(char const *name);
    cFileScan(cFileScan const &) = delete;
    cFileScan &operator=(cFileScan const &) = delete;
    ~cFileScan() = default;

    bool opened() const { return opened_; }
    cAttrScan &scan() { return *scan_; } // after the second constructor: requires opened()

  private:
    bool read_whole(char const *name);
    void start(char const *name, std::string_view text);

    std::ifstream file_;
    std::string text_;
    std::optional<cMemoryStream> memory_;
    std::optional<cAttrScan> scan_;
    bool broken_ = false; // the text ends with a read error
    bool opened_ = false;
};
