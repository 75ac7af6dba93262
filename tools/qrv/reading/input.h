#pragma once
// A file that is read in pieces, so that the use of memory does not depend on its size.

#include <cstdint>
#include <functional>
#include <ios>
#include <streambuf>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class cInput {
  public:
    explicit cInput(std::string const &name); // "-" is the standard input
    cInput(cInput const &) = delete;
    cInput &operator=(cInput const &) = delete;
    ~cInput();

    // The next bytes, valid until the next call. Empty at the end and after an error.
    std::string_view next();
    std::string const &error() const { return error_; } // empty without an error
    // Memory for so many bytes may be reserved: 0 if it isn't a regular file, or is too large.
    std::uint64_t size() const { return size_; }

  private:
    void test_size(std::uint64_t size);

    int descriptor_;
    bool is_standard_;
    std::uint64_t size_ = 0, done_ = 0;
    std::string error_;
    std::vector<char> buffer_;
};

// The input of a stream in pieces. A piece must be valid until the next one is requested.
class cPieces : public std::streambuf {
  public:
    explicit cPieces(std::function<std::string_view()> next) : next_(std::move(next)) {}

  private:
    int_type underflow() override;
    // Supports only the query of the position: offset 0 from the current one.
    pos_type seekoff(off_type offset, std::ios::seekdir from, std::ios::openmode which) override;

    std::function<std::string_view()> next_;
    off_type before_ = 0; // the number of bytes in earlier pieces
};
