#pragma once
// The streams from which generated text is read.

#include <fstream>
#include <memory>
#include <sstream>
#include <streambuf>
#include <string>

namespace reference {

// Delivers one character at a time and can't seek.
class cOneByOne : public std::streambuf {
  public:
    explicit cOneByOne(std::string text) : text_(std::move(text)) {}

  protected:
    int underflow() override {
        if (at_ >= text_.size()) return traits_type::eof();
        setg(&text_[at_], &text_[at_], &text_[at_] + 1);
        ++at_;
        return traits_type::to_int_type(*gptr());
    }

  private:
    std::string text_;
    size_t at_ = 0;
};

class cSource {
  public:
    cSource(std::string const &text, unsigned kind) {
        if (kind == 0) {
            buffer_ = std::make_unique<cOneByOne>(text);
            stream_ = std::make_unique<std::istream>(buffer_.get());
        } else if (kind == 1) {
            std::ofstream("text.attr", std::ios::binary) << text;
            stream_ = std::make_unique<std::ifstream>("text.attr", std::ios::binary);
        } else {
            stream_ = std::make_unique<std::istringstream>(text);
        }
    }
    std::istream &operator*() { return *stream_; }

  private:
    std::unique_ptr<std::streambuf> buffer_;
    std::unique_ptr<std::istream> stream_;
};

} // namespace reference
