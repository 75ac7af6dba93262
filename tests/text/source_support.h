#pragma once
// Text with marks for the spans that a cat::SourceMap must contain, and a class that reads text
// into such a map.

#include "qrv/text/read/csourcemap.h"
#include "tests/text/read_support.h"

#include <algorithm>
#include <tuple>
#include <vector>

namespace source_test {

// One span and its kind: k key, s separator, v value, r value that is a reference, t name of a
// type, o and c brackets, d delimiter; for comments A above, B after, I inside, O outside.
struct Mark {
    char what;
    std::uint32_t begin;
    std::uint32_t end;
};

inline std::string shown(std::vector<Mark> marks, std::string const &text) {
    std::sort(marks.begin(), marks.end(), [](Mark const &a, Mark const &b) {
        return std::tuple(a.begin, ~a.end, a.what) < std::tuple(b.begin, ~b.end, b.what);
    });
    std::string all;
    for (Mark const &m : marks)
        all += std::string(1, m.what) + " " + std::to_string(m.begin) + "-" +
               std::to_string(m.end) + " " + text.substr(m.begin, m.end - m.begin) + "\n";
    return all;
}

// Text in which «k:name» means the bytes `name`, found as a key.
class Marked {
  public:
    explicit Marked(std::string const &with_marks) {
        std::vector<std::size_t> open;
        for (std::size_t i = 0; i < with_marks.size();) {
            auto const here = static_cast<std::uint32_t>(text.size());
            if (with_marks.compare(i, 2, "«") == 0) {
                open.push_back(marks.size());
                marks.push_back({with_marks[i + 2], here, here});
                i += 4;
            } else if (with_marks.compare(i, 2, "»") == 0) {
                marks[open.back()].end = here;
                open.pop_back();
                i += 2;
            } else {
                text += with_marks[i++];
            }
        }
    }
    std::string shown() const { return source_test::shown(marks, text); }

    std::string text;
    std::vector<Mark> marks;
};

inline std::vector<Mark> marks_of(cat::SourceMap const &map) {
    std::vector<Mark> marks;
    auto const add = [&](char what, cat::Span span) {
        if (!span.empty()) marks.push_back({what, span.begin, span.end});
    };
    for (std::size_t i = 0; i < map.size(); ++i) {
        cat::SourceEntry const entry = map.entry(i);
        add('k', entry.key);
        add('s', entry.separator);
        add(entry.reference ? 'r' : 'v', entry.value);
        add('t', entry.type);
        add('o', entry.open);
        add('c', entry.close);
        add('d', entry.delimiter);
    }
    for (cat::SourceComment const &comment : map.comments())
        add("ABIO"[comment.where], comment.span);
    return marks;
}

// Reads the first value of a string, with its comments, into a value and a map.
class Mapped {
  public:
    explicit Mapped(std::string const &text_read) : text(text_read), is(text), scan(is, false) {
        scan.return_com(true);
        code = scan.scan_obj(root, nullptr);
    }
    Mapped(Mapped const &) = delete;
    Mapped &operator=(Mapped const &) = delete;
    ~Mapped() = default;

    std::string text_of(cat::Span span) const { return text.substr(span.begin, span.size()); }
    void read_rest() { // reads comments up to the next token
        if (scan.gettok() != tkEof) scan.ungettoken();
    }
    // The values of all entries at a path, each with its number.
    std::string at(std::string const &path) const {
        std::string all;
        for (cat::SourceEntry const &entry : map.spans(*root, path))
            all += (all.empty() ? "" : " ") + std::to_string(entry.number) + ":" +
                   text_of(entry.value);
        return all;
    }
    std::uint32_t find(std::string const &part) const {
        return static_cast<std::uint32_t>(text.find(part));
    }

    cat::SourceMap map;
    std::string text;
    std::istringstream is;
    objref root;
    cAttrScan scan;
    int code = -99;
};

} // namespace source_test
