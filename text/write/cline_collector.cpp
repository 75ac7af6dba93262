// The marks are in the order of the text, so delivering is one walk over both. A container's layout
// is in its record, where close() has stored it; a container that an exception left open stays on
// one line.

#include "text/write/cline_collector.h"

#include "text/write/cwriter_exact.h"
#include "text/write/cwriter_parts.h"

#include <ostream>
#include <string_view>

cLineCollector::cLineCollector(std::ostream &target) : stream_(text_) {
    stream_.copyfmt(target);
    target.width(0);
}

void cLineCollector::mark(size_t container, cKind kind, cComment const *comment) {
    std::uint32_t index = no_comment;
    if (comment && !comment->text.empty()) {
        index = static_cast<std::uint32_t>(comments_.size());
        comments_.push_back(*comment);
    }
    marks_.push_back({text_.size(), static_cast<std::uint32_t>(container), index, kind});
}

size_t cLineCollector::open(cComment const &comment) {
    containers_.push_back({text_.size()});
    mark(containers_.size() - 1, cKind::open, &comment);
    return containers_.size() - 1;
}

void cLineCollector::entry(size_t container, int indent, bool apart) {
    containers_[container].indent = indent;
    mark(container, apart ? cKind::entry_apart : cKind::entry);
}

void cLineCollector::after(size_t container, bool many_lines_child, cComment const &comment) {
    mark(container, many_lines_child ? cKind::after_child : cKind::after, &comment);
}

bool cLineCollector::close(size_t container, int indent) {
    size_t const found = std::string_view(text_).substr(searched_).rfind('\n');
    if (found != std::string_view::npos) line_end_ = searched_ + found;
    searched_ = text_.size();
    cContainer &one = containers_[container];
    one.close_indent = indent;
    one.lines = line_end_ != std::string::npos && line_end_ >= one.start;
    if (one.lines) line_end_ = text_.size();
    mark(container, cKind::close);
    return one.lines;
}

void cLineCollector::put_comment(std::uint32_t index, cComposer &target) {
    if (index == no_comment) return;
    cComment const &comment = comments_[index];
    if (exact_comment(comment.text)) {
        target.put(comment.text);
    } else {
        cUserCode const user(target);
        try_report_unwritable(comment.path);
    }
}

void cLineCollector::fill_one_line(cMark const &mark, cComposer &target) {
    bool const blank = mark.kind == cKind::after || mark.kind == cKind::after_child ||
                       mark.kind == cKind::entry_apart;
    if (blank) target.put(' ');
}

void cLineCollector::fill_many_lines(cMark const &mark, cComposer &target) {
    cContainer const &container = containers_[mark.container];
    switch (mark.kind) {
    case cKind::entry:
    case cKind::entry_apart:
        return target.put_blanks(container.indent);
    case cKind::close:
        return target.put_blanks(container.close_indent);
    case cKind::after_child:
        target.put(' ');
        break;
    case cKind::open:
    case cKind::after:
        put_comment(mark.comment, target);
        break;
    }
    target.end_line();
}

void cLineCollector::deliver(cComposer &target) {
    std::string_view const text = text_;
    size_t written = 0;
    for (cMark const &mark : marks_) {
        target.put_unformatted(text.substr(written, mark.offset - written));
        written = mark.offset;
        if (containers_[mark.container].lines)
            fill_many_lines(mark, target);
        else
            fill_one_line(mark, target);
    }
    target.put_unformatted(text.substr(written));
    if (!stream_.fail()) return;
    cUserCode const user(target); // so that it examines the stream again
    target.stream().setstate(std::ios_base::failbit);
}
