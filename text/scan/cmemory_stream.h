#pragma once
// An input stream on characters in memory, which are read in place. The scanner recognises its
// buffer and returns tokens that are views of the text itself.
//
// Other users can read and seek as in a std::istringstream. The text does not change.

#include <istream>
#include <streambuf>
#include <string_view>

class cMemoryBuf final : public std::streambuf {
  public:
    // Borrows the text. With `broken`, reading fails at its end, as in a file that can't be read
    // any further.
    explicit cMemoryBuf(std::string_view text, bool broken = false);
    cMemoryBuf(cMemoryBuf const &) = delete;
    cMemoryBuf &operator=(cMemoryBuf const &) = delete;
    ~cMemoryBuf() override;

    bool broken() const noexcept { return broken_; }

  protected:
    int_type underflow() override;
    pos_type seekoff(off_type offset, std::ios::seekdir from, std::ios::openmode which) override;
    pos_type seekpos(pos_type position, std::ios::openmode which) override;

  private:
    pos_type go_to(off_type position);
    bool broken_;
};

// Uses the classic locale. The text must outlive the stream, and the stream its scanners.
class cMemoryStream final : public std::istream {
  public:
    explicit cMemoryStream(std::string_view text, bool broken = false);
    cMemoryStream(cMemoryStream const &) = delete;
    cMemoryStream &operator=(cMemoryStream const &) = delete;
    ~cMemoryStream() override;

  private:
    cMemoryBuf buffer_;
};
