#pragma once
// The text of one call of the writer, on its way to a stream.
//
// Where nobody can see the difference, the text is composed in a string, and the stream gets it in
// a few large pieces, without flushes: in the library's own buffers, whose string is appended to
// directly, and in a std::stringbuf, if the stream is good and formats as a fresh classic one does.
// Every other stream gets each piece and each flush by itself, since its buffer may count them.
//
// User code runs inside a cUserCode: it finds all text before it in the stream, and every value
// that was written entered as written.

#include <ostream>
#include <string>
#include <string_view>

class cComposer {
  public:
    explicit cComposer(std::ostream &os) : os_(&os) {}
    cComposer(cComposer const &) = delete;
    cComposer &operator=(cComposer const &) = delete;
    ~cComposer() { hand_over(); }

    // Composes from here on, if the stream allows it. Only the first call looks at the stream.
    void begin() {
        if (!begun_) look_again();
    }
    bool composing() const noexcept { return text_ != nullptr; }
    std::string &text() noexcept { return *text_; } // while composing: to be appended to

    void put(char c) {
        if (text_)
            text_->push_back(c);
        else
            *os_ << c;
    }
    void put(std::string_view text) {
        if (text_)
            text_->append(text);
        else
            *os_ << text;
    }
    void put_unformatted(std::string_view text); // ignores the stream's width
    void put_blanks(int count);
    void end_line() {
        if (text_)
            end_composed_line();
        else
            *os_ << std::endl;
    }
    void flush() {
        if (!text_) os_->flush();
    }

    // The stream itself. What is written to it comes after text that was handed over.
    std::ostream &stream() const noexcept { return *os_; }
    void hand_over();
    void look_again(); // something may have changed the stream

  private:
    friend class cUserCode;

    void end_composed_line();

    std::ostream *os_;
    std::string *text_ = nullptr; // own_, or that of the library's buffer; null: not composing
    bool begun_ = false;
    std::string own_;
};

// Around everything that can run user code: methods of other types, converters, slots of errors.
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
