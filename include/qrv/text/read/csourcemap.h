#pragma once
// cat::SourceMap records where the entries of a text are written, for programs that change a text
// in place instead of writing all of it anew. While one lives, the innermost records the first
// outermost reading that begins. Later readings, for instance of values that a program is given,
// leave it unchanged. Results, errors and the moments at which user code runs stay the same.
//
// An entry is found by the anid() of its node, or by its value: in a vector, removing and inserting
// moves values from node to node. Most nodes have one entry in the text; a node whose key is
// repeated has several. The map keeps the memory of the nodes (cAttrNode::hold), so that
// neither the memory nor the anid is used again, but not their values. An entry whose node has been
// removed has no anid any more, and one that was refused by an error never has one; their bytes are
// known all the same.
//
// The map also follows the library's own types between the brackets of typed values. What a
// program's type reads by itself are plain bytes of the value.

#include "qrv/ccomp.h"
#include "qrv/qrvdefs.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace cat {
class cSourceRecorder;

// Bytes of the text, counted with those of line ends. The first byte has the position of the
// stream when its first scanner is created: a byte order mark that the program has read before
// counts, one that it has cut off does not.
struct Span {
    std::uint32_t begin = 0;
    std::uint32_t end = 0; // after the last byte
    bool empty() const noexcept { return begin == end; }
    std::uint32_t size() const noexcept { return end - begin; }
    friend bool operator==(Span, Span) = default;
};

// One entry, or another value, as it is written once. Spans of absent parts are empty.
struct SourceEntry {
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    std::size_t number = none; // in file order: a container comes before its entries
    std::size_t parent = none; // the number of the entry around it; none for the outermost value
    std::uint32_t anid = 0;    // 0 if no living node belongs to it
    std::uint32_t obid = 0;    // of the value that the node had at the end of the reading, or 0
    bool removed = false;      // its node was removed after the reading
    bool reference = false;    // the value is #cRef(...) and is written elsewhere
    Span key;                  // empty in vectors and sets
    Span separator;            // =
    Span value;                // with the name of its type and its brackets
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
    // above: on the lines directly above the entry, or in front of it on its line
    // after: on the line on which the entry ends, after it
    // inside: elsewhere in the entry, and in no entry inside it
    // outside: before or after the outermost value, and not directly above it or on its line
    enum Where : unsigned char { above, after, inside, outside };

    Span span;
    std::size_t entry = SourceEntry::none; // the number of the entry that it belongs to
    Where where = outside;
    bool own_line = false;  // only blanks are before it on its line
    bool kept = false;      // the writer would write it
    std::uint32_t obid = 0; // of the value that took it as its comment, or 0
};

class QRV_API SourceMap {
  public:
    SourceMap();
    SourceMap(SourceMap const &) = delete;
    SourceMap &operator=(SourceMap const &) = delete;
    ~SourceMap(); // the one before takes over again

    // False if the text has 4 GiB or more: then nothing is recorded.
    bool complete() const noexcept;

    // All entries by number. The first is the outermost value: the map, also of a list of entries
    // without brackets. Empty if nothing was read.
    std::size_t size() const noexcept;
    SourceEntry entry(std::size_t number) const;

    // All that belong to a node, in file order. The last one gave the node its value, except in
    // sets, where values that are equal to an earlier one change nothing, and where the value is
    // shared and was changed under another key: then the last one of written() did.
    //   O(log n), once O(n log n)
    std::vector<SourceEntry> spans(std::uint32_t anid) const;
    // The same for a path as cObj::getattrp takes it, in a tree that was read; for an empty path
    // the outermost value. A path through a reference leads to the entry inside the value that is
    // referred to; a path to a reference leads to the reference. Empty for a wrong path.
    std::vector<SourceEntry> spans(cObj const &root, std::string const &path) const;
    // All entries of the nodes that had this value at the end of the reading, without references:
    // of a container all that give it entries. Empty for constants and for values that are new.
    //   O(n)
    std::vector<SourceEntry> written(cObj const &value) const;
    // The entries directly inside an entry, in file order. A whole value between the brackets of a
    // typed one, such as choice({...}), is one without key and anid.   O(entries, log n each)
    std::vector<SourceEntry> inside(std::size_t number) const;

    // The innermost entry that has this offset between its first byte and its last; none outside.
    //   O(log n + depth)
    std::size_t at(std::uint32_t offset) const;
    // Its path such as /a/0, and the name of the type of its value as it is now. For an entry
    // without a node the entry around it counts. Empty outside.
    std::string path_at(std::uint32_t offset) const;
    std::string type_at(std::uint32_t offset) const;

    // All comments in file order, with those that the scanner reads after the outermost value while
    // the map lives; and the comments above and after one entry.   O(comments)
    std::vector<SourceComment> const &comments() const;
    std::vector<SourceComment> comments(std::size_t number) const;

    // Where the outermost value ended.
    std::uint32_t end() const noexcept;

  private:
    friend class cSourceRecorder;
    std::shared_ptr<cSourceRecorder> recorder_; // the reading it records shares it
    cSourceRecorder *before_;
};
} // namespace cat
