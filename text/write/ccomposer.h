#pragma once
// The text of one call of the writer, on its way to a stream.
//
// If nobody can observe the difference, the text is composed in a buffer, and the stream receives
// it in large pieces, without flushes: for the library's own streams into strings, and for a
// std::stringbuf, if the stream is good and formats as a fresh classic one does. Every other stream
// receives each piece and each flush separately, since its buffer may count them.
//
// User code runs inside a cUserCode: then the stream contains all previous text, and every written
// value is in the table of written objects.

#include <algorithm>
#include <cstddef>
#include <memory>
#include <ostream>
#include <string_view>

class cComposer {
  public:
    explicit cComposer(std::ostream &os) : os_(&os) {}
    cComposer(cComposer const &) = delete;
    cComposer &operator=(cComposer const &) = delete;
    ~cComposer() { hand_over(); }

    // Composes from here on, if the stream allows it. Only the first call examines the stream.
    void begin() {
        if (!begun_) look_again();
    }
    bool composing() const noexcept { return at_ != nullptr; }
    static constexpr size_t most_space = size_t{1} << 11;
    // While composing: space for `count` characters, at most `most_space`. Pass the end of those
    // that were written there to use_to().
    char *space(size_t count) {
        if (static_cast<size_t>(end_ - at_) < count) hand_over();
        return at_;
    }
    void use_to(char *end) noexcept { at_ = end; }

    void put(char c) {
        if (at_ != end_)
            *at_++ = c;
        else
            put_slowly(c);
    }
    void put(std::string_view text) {
        if (text.size() < static_cast<size_t>(end_ - at_))
            at_ = std::copy(text.begin(), text.end(), at_);
        else
            put_slowly(text);
    }
    void put_unformatted(std::string_view text); // ignores the stream's width
    void put_blanks(int count);
    void end_line() {
        if (composing())
            put('\n');
        else
            *os_ << std::endl;
    }
    void flush() {
        if (!composing()) os_->flush();
    }

    // The stream itself. Call hand_over() before writing to it.
    std::ostream &stream() const noexcept { return *os_; }
    void hand_over();
    void look_again(); // re-examines the stream, after something may have changed it

  private:
    friend class cUserCode;

    void put_slowly(char c);
    void put_slowly(std::string_view text);

    std::ostream *os_;
    std::unique_ptr<char[]> buffer_;
    char *at_ = nullptr; // the free part of the buffer; null: not composing
    char *end_ = nullptr;
    bool begun_ = false;
};

// Encloses everything that can run user code: methods of other types, converters, slots of errors.
class cUserCode {
  public:
    explicit cUserCode(cComposer &out);
    cUserCode(cUserCode const &) = delete;
    cUserCode &operator=(cUserCode const &) = delete;
    ~cUserCode();

  private:
    cComposer *out_;
    bool composing_;
};
