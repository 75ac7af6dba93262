#pragma once
// An input stream on characters in memory, read where they are. The scanner recognises its buffer
// and returns tokens that are views into the text itself.
//
// For everybody else the stream is like a std::istringstream: the get pointer moves over the text
// with each character taken, seeking works by the same rules, and the text does not change.

#include <istream>
#include <streambuf>
#include <string_view>

class cMemoryBuf final : public std::streambuf {
  public:
    // Borrows the text. With `broken` its end is a read error, as of a file that failed there.
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

// With the classic locale. The text must outlive the stream, and the stream its scanners.
class cMemoryStream final : public std::istream {
  public:
    explicit cMemoryStream(std::string_view text, bool broken = false);
    cMemoryStream(cMemoryStream const &) = delete;
    cMemoryStream &operator=(cMemoryStream const &) = delete;
    ~cMemoryStream() override;

  private:
    cMemoryBuf buffer_;
};
