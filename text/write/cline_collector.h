#pragma once
// One-line containers in exact text. If the entries of a container contain a line end, it must be
// written over many lines, or the next reading would assign another layout and the next writing
// would differ. This is known only after its last entry was written.
//
// So the outermost one-line container collects its text, and all one-line containers inside it
// write to the same text. Parts that depend on the layout are not in that text; they are recorded
// as marks, in the order of the text, and inserted at the end. Each container decides at its close:
// it spans many lines if its part of the text has a line end, or if an inner container spans many
// lines. So the work is linear at any depth of nesting.

#include "qrv/core/cobj.h"
#include "text/write/ccomposer.h"
#include "text/write/cwriter_stream.h"

#include <string>
#include <vector>

class cLineCollector {
  public:
    // stream() has the flags and locale of the target.
    explicit cLineCollector(std::ostream &target);
    cLineCollector(cLineCollector const &) = delete;
    cLineCollector &operator=(cLineCollector const &) = delete;
    ~cLineCollector() = default;

    std::ostream &stream() noexcept { return stream_; }

    // A comment that may have to be written; the path is for the error if it can't be.
    struct cComment {
        std::string text;
        std::string path;
    };

    size_t open(cComment const &comment); // a container, with the comment of its opening bracket
    // An entry begins; apart: not directly after the opening bracket.
    void entry(size_t container, int indent, bool apart);
    // An entry and its separator have been written.
    void after(size_t container, bool many_lines_child, cComment const &comment);
    bool close(size_t container, int indent); // true: it spans many lines

    void deliver(cComposer &target); // once, at the end

  private:
    enum class cKind : unsigned char { open, entry, entry_apart, after, after_child, close };
    static constexpr std::uint32_t no_comment = 0xFFFFFFFFu;

    struct cMark {
        size_t offset;
        std::uint32_t container;
        std::uint32_t comment;
        cKind kind;
    };
    struct cContainer {
        size_t start;
        int indent = 0;       // of its entries
        int close_indent = 0; // of its closing bracket
        bool lines = false;
    };

    void mark(size_t container, cKind kind, cComment const *comment = nullptr);
    static void fill_one_line(cMark const &mark, cComposer &target);
    void fill_many_lines(cMark const &mark, cComposer &target);
    void put_comment(std::uint32_t index, cComposer &target);

    std::string text_;
    cTextStream stream_;
    std::vector<cMark> marks_;
    std::vector<cContainer> containers_;
    std::vector<cComment> comments_;
    size_t searched_ = 0;                 // line ends before this offset are found
    size_t line_end_ = std::string::npos; // the last one, including one that will be inserted
};
