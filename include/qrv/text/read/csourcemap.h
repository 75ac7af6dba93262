#pragma once
// cat::SourceMap records the positions of entries in text, for programs that change text in place
// instead of writing all of it again. If several maps exist, the innermost one records. It records
// only the first outermost reading that begins while it exists; later readings, for example of
// values that a program receives, leave it unchanged. A map changes neither the results and errors
// of a reading nor the order in which user code runs.
//
// Find an entry by the anid() of its node. In a vector, find it by its value, since removing and
// inserting move values between nodes. Most nodes have one entry in the text; a node with a
// repeated key has several. The map holds the nodes (cAttrNode::hold), so that neither their memory
// nor their anid is reused; it does not hold their values. An entry loses its anid when its node is
// removed; an entry that was rejected with an error never has one. Both keep their byte spans.
//
// Between the brackets of a typed value, the map records entries if the library reads them. If a
// program's type reads that text itself, the map records only the typed value as a whole.

#include "qrv/ccomp.h"
#include "qrv/qrvdefs.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace cat {
class cSourceRecorder;

// Bytes of the text, including those of line ends. The offset of the first byte is the position of
// the stream when its first scanner is created: so a byte order mark that the program has read from
// the stream counts, and one that it has removed from the text does not.
struct Span {
    std::uint32_t begin = 0;
    std::uint32_t end = 0; // after the last byte
    bool empty() const noexcept { return begin == end; }
    std::uint32_t size() const noexcept { return end - begin; }
    friend bool operator==(Span, Span) = default;
};

// One occurrence of an entry in the text, or of a value that is not in an entry. Spans of missing
// parts are empty.
struct SourceEntry {
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    std::size_t number = none; // in file order: a container comes before its entries
    std::size_t parent = none; // the number of the enclosing entry; none for the outermost value
    std::uint32_t anid = 0;    // 0 if no existing node belongs to it
    std::uint32_t obid = 0;    // of the value that the node had at the end of the reading, or 0
    bool removed = false;      // its node was removed after the reading
    bool reference = false;    // the value is #cRef(...) and is written elsewhere
    Span key;                  // empty in vectors and sets
    Span separator;            // =
    Span value;                // including the name of its type and its brackets
    Span type;                 // the name of the type before the brackets
    Span open;                 // the opening bracket, also of typed values
    Span close;                // the closing bracket; empty if the text ends before it
    Span delimiter;            // ; or ,

    // From the first byte to the last, without comments above and after it.
    Span all() const noexcept {
        return {key.empty() ? value.begin : key.begin,
                delimiter.empty() ? value.end : delimiter.end};
    }
};

struct SourceComment {
    // above: on the lines directly above the entry, or before it on its line
    // after: on the line on which the entry ends, after it
    // inside: elsewhere in the entry, but not in an entry inside it
    // outside: before or after the outermost value, but not directly above it or on its line
    enum Where : unsigned char { above, after, inside, outside };

    Span span;
    std::size_t entry = SourceEntry::none; // the number of the entry that it belongs to
    Where where = outside;
    bool own_line = false;  // only blanks precede it on its line
    bool kept = false;      // the writer would write it
    std::uint32_t obid = 0; // of the value whose comment it became, or 0
};

class QRV_API SourceMap {
  public:
    SourceMap();
    SourceMap(SourceMap const &) = delete;
    SourceMap &operator=(SourceMap const &) = delete;
    ~SourceMap(); // as stop()

    // Ends the recording: the next outer map records again. The recorded data stays. A stopped map
    // may exist as long as necessary, and outlive other maps.
    void stop() noexcept;

    // False if the text has 4 GiB or more; nothing is recorded then.
    bool complete() const noexcept;

    // All entries by number. The first is the outermost value: the map, also for a list of entries
    // without brackets. Empty if nothing was read.
    std::size_t size() const noexcept;
    SourceEntry entry(std::size_t number) const;

    // All entries of a node, in file order. The last one gave the node its value, with two
    // exceptions: in sets, a value that equals an earlier one changes nothing; and a shared value
    // may have been changed under another key, by the last entry of written().
    //   O(log n), the first time O(n log n)
    std::vector<SourceEntry> spans(std::uint32_t anid) const;
    // The same for a path as in cObj::getattrp, in a tree that was read; for an empty path the
    // outermost value. A path through a reference leads to the entry inside the referenced value; a
    // path to a reference leads to the reference. Empty for a wrong path.
    std::vector<SourceEntry> spans(cObj const &root, std::string const &path) const;
    // All entries whose nodes had this value at the end of the reading, except references; for a
    // container, each entry that added to its content. Empty for constants and for values that were
    // not read.   O(n)
    std::vector<SourceEntry> written(cObj const &value) const;
    // The entries directly inside an entry, in file order. A complete value between the brackets of
    // a typed one, such as choice({...}), is an entry without key and anid.   O(entries * log n)
    std::vector<SourceEntry> inside(std::size_t number) const;

    // The innermost entry whose bytes, first to last, include this offset; SourceEntry::none
    // outside.   O(log n + depth)
    std::size_t at(std::uint32_t offset) const;
    // The path of the entry at an offset, such as /a/0, and the name of the current type of its
    // value. For an entry without a node they refer to the enclosing entry. Empty outside.
    std::string path_at(std::uint32_t offset) const;
    std::string type_at(std::uint32_t offset) const;

    // All comments in file order, including those that the scanner reads after the outermost value
    // while the map exists; and the comments above and after one entry.   O(comments)
    std::vector<SourceComment> const &comments() const;
    std::vector<SourceComment> comments(std::size_t number) const;

    // The offset after the outermost value.
    std::uint32_t end() const noexcept;

  private:
    friend class cSourceRecorder;
    std::shared_ptr<cSourceRecorder> recorder_; // shared with the reading that it records
    cSourceRecorder *before_;
    bool recording_ = true;
};
} // namespace cat
