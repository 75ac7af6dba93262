#pragma once
// A file that is read in pieces, so that memory does not grow with it.

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

    // The next bytes, until the next call. Empty at the end and after an error.
    std::string_view next();
    std::string const &error() const { return error_; } // empty if there was none
    std::uint64_t size() const { return size_; }        // of a regular file; else 0

  private:
    void test_size(std::uint64_t size);

    int descriptor_;
    bool is_standard_;
    std::uint64_t size_ = 0, done_ = 0;
    std::string error_;
    std::vector<char> buffer_;
};

// Pieces as what a stream reads. A piece is used until the next one is asked for.
class cPieces : public std::streambuf {
  public:
    explicit cPieces(std::function<std::string_view()> next) : next_(std::move(next)) {}

  private:
    int_type underflow() override;
    // Only returns the position: from the current one, by 0.
    pos_type seekoff(off_type offset, std::ios::seekdir from, std::ios::openmode which) override;

    std::function<std::string_view()> next_;
    off_type before_ = 0; // bytes in the pieces before
};
