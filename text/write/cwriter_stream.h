#pragma once
// An output stream that appends to the caller's string, with the classic locale.

#include <locale>
#include <ostream>
#include <streambuf>
#include <string>

class cTextBuffer : public std::streambuf {
  public:
    explicit cTextBuffer(std::string &text) : text_(&text) {}
    cTextBuffer(cTextBuffer const &) = delete;
    cTextBuffer &operator=(cTextBuffer const &) = delete;
    ~cTextBuffer() override = default;

  protected:
    int overflow(int c) override {
        if (c != traits_type::eof()) text_->push_back(traits_type::to_char_type(c));
        return traits_type::not_eof(c);
    }
    std::streamsize xsputn(char const *bytes, std::streamsize count) override {
        text_->append(bytes, static_cast<size_t>(count));
        return count;
    }

  private:
    std::string *text_;
};

class cTextStream : public std::ostream {
  public:
    explicit cTextStream(std::string &text) : std::ostream(nullptr), buffer_(text) {
        rdbuf(&buffer_);
        imbue(std::locale::classic());
    }
    cTextStream(cTextStream const &) = delete;
    cTextStream &operator=(cTextStream const &) = delete;
    ~cTextStream() override = default;

  private:
    cTextBuffer buffer_;
};
