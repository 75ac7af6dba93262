// The scanner's work for each character of text without typed values: how often it fetches the
// character from the stream, and how often the matcher compares it.
#include "tests/counted/counted.h"
#include "tests/support/fixture.h"

#include "qrv/text/read/cattrscan.h"
#include "text/scan/cattrscanner_rules.h"

#include <algorithm>
#include <istream>
#include <streambuf>

namespace {

// A stream that delivers its text in pieces, or, for pieces of 0, character by character without a
// get area. It counts the characters delivered and the attempts to go back.
class cCountingBuf : public std::streambuf {
  public:
    cCountingBuf(std::string text, std::size_t piece) : text_(std::move(text)), piece_(piece) {}
    std::size_t given() const { return given_; }
    unsigned steps_back() const { return steps_back_; }

  protected:
    int underflow() override {
        if (place_ == text_.size()) return traits_type::eof();
        char *const first = text_.data() + place_;
        std::size_t const n = std::min(std::max<std::size_t>(piece_, 1), text_.size() - place_);
        given_ += n;
        if (piece_ == 0) return traits_type::to_int_type(*first);
        place_ += n;
        setg(first, first, first + n);
        return traits_type::to_int_type(*first);
    }
    int uflow() override {
        if (piece_ != 0) return std::streambuf::uflow();
        int const c = underflow();
        if (c != traits_type::eof()) ++place_;
        return c;
    }
    int pbackfail(int) override {
        ++steps_back_;
        return traits_type::eof();
    }

  private:
    std::string text_;
    std::size_t const piece_;
    std::size_t place_ = 0; // the offset after the characters delivered
    std::size_t given_ = 0;
    unsigned steps_back_ = 0;
};

} // namespace

class CountedMatcher : public QrvTest {};

TEST_F(CountedMatcher, a_character_is_fetched_from_the_stream_once) {
    std::string const text = data_of("100k").attr;
    for (std::size_t const piece :
         {std::size_t{0}, std::size_t{1}, std::size_t{7}, std::size_t{4096}, text.size()}) {
        cCountingBuf buffer(text, piece);
        std::istream is(&buffer);
        objref tree;
        EXPECT_EQ(cObj::readobj(is, tree), 0);
        while (is.get() != std::istream::traits_type::eof())
            continue; // skips characters that are not scanned
        EXPECT_EQ(buffer.given(), text.size()) << "in pieces of " << piece;
        EXPECT_EQ(buffer.steps_back(), 0u) << "in pieces of " << piece;
    }
}

#ifdef QRV_CHECKS // the scanner counts in these builds only

TEST_F(CountedMatcher, a_character_is_compared_at_most_2_2_times) {
    for (char const *name : {"100k", "100kv", "16000"}) {
        std::string const text = data_of(name).attr;
        auto const before = scan::compared;
        counted::read(text);
        auto const count = static_cast<double>(scan::compared - before);
        EXPECT_GE(count, static_cast<double>(text.size())) << name;
        EXPECT_LE(count, 2.2 * static_cast<double>(text.size())) << name;
    }
}

#endif
