// Assigns comments to entries. A group is a run of comments without other tokens between them.
//
//   a = 1; // after a            on the line on which the token before the group ends
//          // also after a       below such a comment, in its column
//
//   // apart                     neither: belongs to the inside of the enclosing entry
//
//   // above b                   on lines directly above the token after the group, without a gap
//   b = 2;

#include "text/read/csource_recorder.h"

namespace {

using cat::cSourceRecorder;
using cat::SourceComment;

bool is_own_line(cSourceRecorder::cComment const &comment, std::uint32_t text_begin) {
    return comment.lines_before > 0 || comment.before == text_begin;
}

// Assigns the comments of one group.
class cGroup {
  public:
    cGroup(cSourceRecorder const &source, std::size_t first, std::size_t end)
        : source_(source), first_(first), end_(end) {}

    void attach(std::vector<SourceComment> &to) const {
        std::size_t const before = entry_before(), after = entry_after();
        std::size_t const below = first_after_those_of(before), above = first_of_those_above(after);
        for (std::size_t i = first_; i < end_; ++i) {
            SourceComment comment;
            comment.span = comments()[i].span;
            comment.own_line = own_line(i);
            comment.kept = comments()[i].kept;
            comment.obid = comments()[i].obid;
            if (i < below) {
                comment.entry = before;
                comment.where = SourceComment::after;
            } else if (i >= above) {
                comment.entry = after;
                comment.where = SourceComment::above;
            } else {
                comment.entry = source_.at(comments()[i].span.begin);
                comment.where = comment.entry == cSourceRecorder::none ? SourceComment::outside
                                                                       : SourceComment::inside;
            }
            to.push_back(comment);
        }
    }

  private:
    std::vector<cSourceRecorder::cComment> const &comments() const { return source_.comments(); }
    cSourceRecorder::cRecord const &record(std::size_t i) const { return source_.records()[i]; }
    bool own_line(std::size_t i) const { return is_own_line(comments()[i], source_.text_begin()); }

    // The entry whose last token is before the group.
    std::size_t entry_before() const {
        std::uint32_t const end = comments()[first_].before;
        std::size_t const entry = end > 0 ? source_.at(end - 1) : cSourceRecorder::none;
        return entry != cSourceRecorder::none && record(entry).end() == end ? entry
                                                                            : cSourceRecorder::none;
    }

    // The entry whose first token is after the group.
    std::size_t entry_after() const {
        std::uint32_t const begin = comments()[end_ - 1].next;
        std::size_t const entry = source_.at(begin);
        return entry != cSourceRecorder::none && record(entry).begin() == begin
                   ? entry
                   : cSourceRecorder::none;
    }

    std::size_t first_after_those_of(std::size_t entry) const {
        std::size_t i = first_;
        if (entry == cSourceRecorder::none) return i;
        while (i < end_ && !own_line(i)) ++i;
        if (i == first_) return i;
        unsigned const column = comments()[i - 1].column;
        while (i < end_ && comments()[i].lines_before == 1 && comments()[i].column == column) ++i;
        return i;
    }

    std::size_t first_of_those_above(std::size_t entry) const {
        std::size_t i = end_;
        if (entry == cSourceRecorder::none) return i;
        while (i > first_ && comments()[i - 1].lines_after <= 1 &&
               (own_line(i - 1) || comments()[i - 1].lines_after == 0))
            --i;
        return i;
    }

    cSourceRecorder const &source_;
    std::size_t first_, end_;
};

} // namespace

std::vector<cat::SourceComment> const &cat::cSourceRecorder::attached() const {
    if (is_attached_) return attached_;
    attached_.clear();
    for (std::size_t first = 0; first < comments_.size();) {
        std::size_t end = first + 1;
        while (end < comments_.size() && comments_[end - 1].next == comments_[end].span.begin)
            ++end;
        cGroup(*this, first, end).attach(attached_);
        first = end;
    }
    is_attached_ = true;
    return attached_;
}
