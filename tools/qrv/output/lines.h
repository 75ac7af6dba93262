#pragma once
// Converts positions in text to offsets, and offsets to positions.

#include "tools/qrv/output/diagnostic.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

class cLines {
  public:
    // Borrows the bytes. Finds the lines on first use.
    explicit cLines(std::string const &bytes) : bytes_(bytes) {}

    std::string const &bytes() const { return bytes_; }
    size_t offset(cPlace place) const; // the end of the text if the line does not exist
    cPlace place(size_t offset) const;
    std::string_view line(unsigned number) const; // without its end

  private:
    std::vector<size_t> const &starts() const;

    std::string const &bytes_;
    mutable std::vector<size_t> starts_;
};
