// One pass over the tokens finds the closing bracket. Nothing is copied as long as the tokens are
// contiguous in memory.

#include "text/scan/cenclosed_text.h"

namespace {

// Adds a record if the position doesn't follow from the previous one: after a line end and after an
// omitted comment.
class cPlaces {
  public:
    explicit cPlaces(cEnclosedText &to) : to_(to) {}

    void note(cToken const &token) {
        if (to_.places.empty() || token.outer_line != line_ || token.outer_column != column_)
            to_.places.push_back({offset_, token.outer_line, token.outer_column});
        bool const ends_line = token.text.find('\n') != std::string_view::npos;
        line_ = ends_line ? 0 : token.outer_line;
        column_ = token.outer_column + static_cast<unsigned>(token.text.size());
        offset_ += token.text.size();
    }

  private:
    cEnclosedText &to_;
    std::size_t offset_ = 0; // in the text
    unsigned line_ = 0;      // expected for the next token; 0 after a line end
    unsigned column_ = 0;
};

// The text so far: a part of the input, or a copy.
class cGathered {
  public:
    cGathered(cEnclosedText &to, char const *begin) : to_(to), begin_(begin), end_(begin) {}
    cGathered(cGathered const &) = delete;
    cGathered &operator=(cGathered const &) = delete;
    ~cGathered() {
        if (end_)
            to_.text = {begin_, static_cast<std::size_t>(end_ - begin_)};
        else
            to_.text = to_.copy;
    }

    // `place`: the scanner's position in memory after the token.
    void append(std::string_view token, char const *place) {
        if (end_ && place != end_ + token.size()) {
            to_.copy.assign(begin_, end_);
            end_ = nullptr;
        }
        if (end_)
            end_ = place;
        else
            to_.copy += token;
    }

  private:
    cEnclosedText &to_;
    char const *begin_;
    char const *end_; // null after copying has begun
};

} // namespace

int cAttrScanner::read_enclosed(int open, int close, cEnclosedText &to) const {
    cSetTmp<bool> keep_ws, keep_com;
    return_ws(true, &keep_ws);
    return_com(false, &keep_com);
    cPlaces places(to);
    cGathered gathered(to, memory_place());
    std::size_t size = 0;
    for (int depth = 1;;) {
        cToken const &token = next_token();
        if (to.watch) to.watch->token(token, size);
        if (token.code == tkComment) continue; // pushed back by a caller, or watched
        if (to.with_places) places.note(token);
        if (token.code <= tkEof) return tkEof;
        if (token.code == open) ++depth;
        if (token.code == close && --depth == 0) return close;
        size += token.text.size();
        gathered.append(token.text, memory_place());
    }
}
