#pragma once
// The records of a cat::SourceMap, and the events that the reader reports to it.
//
//   begin()  the first token of a value; bracket(), reference() add details
//   end()    the value was read, and perhaps the delimiter after it
//   key()    the value that ended last is a key; the next value belongs to its entry
//   stored() the entry that ended last is now in this node
//   moved()  the contents of one container were copied into another
//
// Values begin and end like brackets; the open ones are the frames. The offset of a token is
// computed from its `position`, which counts all characters but newlines, and its `line`, which
// counts these. The text of a typed value is collected without comments; shifts map its offsets to
// those of the outer text.

#include "qrv/containers/cmapobj.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/csourcemap.h"
#include "text/scan/cenclosed_text.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace cat {

class cSourceRecorder : public std::enable_shared_from_this<cSourceRecorder> {
  public:
    static constexpr std::uint32_t absent = 0xFFFFFFFFu;
    static constexpr std::size_t none = SourceEntry::none;

    // 48 bytes for each entry. The flags belong to the value.
    struct cRecord {
        cAttrNode const *node = nullptr; // held
        std::uint32_t key_begin = absent;
        std::uint32_t key_end = absent;
        std::uint32_t separator = absent;
        std::uint32_t value_begin = absent;
        std::uint32_t value_end = absent;
        std::uint32_t delimiter = absent;
        std::uint32_t parent = absent;
        std::uint32_t open = absent;
        std::uint32_t name_end = absent;
        bool closed = false;
        bool reference = false;

        std::uint32_t begin() const { return key_begin != absent ? key_begin : value_begin; }
        std::uint32_t end() const { return delimiter != absent ? delimiter + 1 : value_end; }
    };
    struct cComment {
        Span span;
        std::uint32_t before = 0; // the end of the previous token or comment
        std::uint32_t next = 0;   // the start of the next one
        unsigned lines_before = 0;
        unsigned lines_after = 0;
        unsigned column = 0;
        bool pending = false; // not attached to a value yet
        bool kept = false;
        std::uint32_t obid = 0; // of the value whose comment it became
    };

    cSourceRecorder() = default;
    cSourceRecorder(cSourceRecorder const &) = delete;
    cSourceRecorder &operator=(cSourceRecorder const &) = delete;
    ~cSourceRecorder();

    // The recorder of the innermost existing map; null without one.
    static cSourceRecorder *current() noexcept { return living_; }
    static void current(cSourceRecorder *recorder) noexcept { living_ = recorder; }
    // The recorder of this scan's reading; null if it isn't recorded.
    static cSourceRecorder *at(cAttrScan const &scan) noexcept {
        return reading_ ? reading_->of(scan) : nullptr;
    }
    // The same, also after the reading: for comments after the outermost value.
    static cSourceRecorder *watching(cAttrScan const &scan) noexcept {
        return reading_ ? reading_->of(scan) : living_ ? living_->of(scan) : nullptr;
    }

    // The start and end of an outermost reading. True if it is the recorded one.
    bool start(cAttrScan const &outer);
    void finish();

    std::size_t depth() const noexcept { return frames_.size(); }
    void begin(cAttrLiteral const &first) { begin(begin_of(first)); }
    void begin(std::uint32_t offset);
    void literal(cToken const &token); // a value of one token begins and ends
    void after(cToken const &token) {  // the token after a value
        if (cat::is_separator(token.code)) delimiter(begin_of(token));
    }
    void bracket(std::uint32_t offset, int code, std::uint32_t name_end = absent);
    void reference();
    void end(cAttrScan const &scan, std::size_t depth, cAttrLiteral const &first, int delimiter,
             objref const &value);
    void unwind(std::size_t depth); // an exception has left open values
    void delimiter(std::uint32_t offset);
    void key(std::uint32_t separator);
    void no_value(); // the entry whose key was read has no value
    void stored(cAttrNode const *node);
    void stored(cAttrNode const *node, cToken const &next) {
        after(next);
        stored(node);
    }
    void moved(cObj const &from, cObj const &to);        // of the entry that ended last
    void moved_inside(cObj const &from, cObj const &to); // of the innermost open value

    // The outermost value is a list of entries: without brackets, or with an opening one that the
    // program has read.
    void begin_list(cAttrScan const &scan);
    void end_list(cAttrScan const &scan, std::size_t depth, cObj const *holder);
    // The value that ended last is the key of the first entry. The caller closes the frame.
    void begin_list_at_key();
    void root(cObj const &value);

    void comment(cToken const &token, bool collected);
    void after_comments(cToken const &token);
    void handed(cObj const *holder); // null: the comments collected so far are discarded

    // The text of a typed value, collected token by token and read from a separate stream.
    class cGathering final : public cTokenWatch {
      public:
        explicit cGathering(cSourceRecorder *recorder) : recorder_(recorder) {}
        void token(cToken const &token, std::size_t size) override;

      private:
        friend class cSourceRecorder;
        struct cShift {
            std::uint32_t offset; // from this offset in the collected text on
            std::uint32_t by;     // add this to get the outer offset, modulo 2^32
        };
        cSourceRecorder *recorder_;
        std::vector<cShift> shifts_;
    };
    void enter(std::istream const &is, cGathering &gathering);
    void leave();

    std::uint32_t offset(unsigned position, unsigned line) const;
    template <class Token> std::uint32_t begin_of(Token const &token) const {
        return offset(token.position, token.line);
    }
    template <class Token> std::uint32_t end_of(Token const &token) const {
        auto const size = static_cast<unsigned>(token.text.size());
        return size == 0 ? begin_of(token) : offset(token.position + size - 1, token.line) + 1;
    }

    // The maximum number of bytes that are recorded. Tests lower it.
    static std::size_t longest;

    bool complete() const noexcept { return complete_; }
    std::vector<cRecord> const &records() const noexcept { return records_; }
    std::vector<cComment> const &comments() const noexcept { return comments_; }
    std::vector<std::uint32_t> const &by_anid() const; // numbers of the records with nodes
    std::vector<SourceComment> const &attached() const;
    std::size_t at(std::uint32_t offset) const;
    std::size_t next_sibling(std::size_t number) const; // or of the enclosing record
    std::uint32_t obid(std::size_t number) const {      // of its value; 0 during the reading
        return number < obids_.size() ? obids_[number] : 0;
    }
    std::string const &root_type() const noexcept { return root_type_; }
    std::uint32_t root_end() const noexcept;
    std::uint32_t text_begin() const noexcept { return text_begin_; }

  private:
    struct cFrame {
        std::size_t record;
        int close = 0; // the bracket that ends it
    };
    struct cText {
        std::istream const *is;
        std::vector<cGathering::cShift> shifts;
    };
    cSourceRecorder *of(cAttrScan const &scan) noexcept {
        return !texts_.empty() && texts_.back().is == &scan.is() ? this : nullptr;
    }
    std::uint32_t add(std::uint32_t begin);
    void close(std::uint32_t end);
    void truncate(std::size_t size);
    void set_node(cRecord &record, cAttrNode const *node);
    void move(std::size_t number, std::size_t end, cObj const &from, cObj const &to);
    void find_kept();
    bool shows_comment(std::size_t number) const;
    void release() noexcept;

    static cSourceRecorder *living_;
    static cSourceRecorder *reading_; // the recorder of the current reading

    std::vector<cRecord> records_;
    std::vector<std::uint32_t> obids_; // of the values of the records
    std::vector<cComment> comments_;
    std::vector<cFrame> frames_;
    std::vector<cText> texts_;
    std::size_t last_ = none;       // the record that ended last, in the innermost frame
    std::size_t pending_ = none;    // that of the entry whose value comes next
    std::size_t first_pending_ = 0; // the first pending comment
    bool comment_open_ = false;     // the token after the last comment is unknown
    std::uint32_t text_begin_ = 0;
    std::uint32_t uncounted_ = 0;      // by the position of a stream that cannot report its own
    unsigned comment_line_ = 0;        // on which the last comment ended
    cAttrScan const *outer_ = nullptr; // while it is read
    bool complete_ = true;
    unsigned root_obid_ = 0;
    std::string root_type_;
    bool root_on_lines_ = false;
    mutable std::vector<std::uint32_t> by_anid_;
    mutable std::vector<SourceComment> attached_;
    mutable bool is_attached_ = false;
};

// Closes the frames that a function has opened, on all its exits.
class cSourceFrames {
  public:
    explicit cSourceFrames(cSourceRecorder *recorder)
        : recorder_(recorder), depth_(recorder ? recorder->depth() : 0) {}
    cSourceFrames(cSourceFrames const &) = delete;
    cSourceFrames &operator=(cSourceFrames const &) = delete;
    ~cSourceFrames() {
        if (recorder_) recorder_->unwind(depth_);
    }
    std::size_t depth() const noexcept { return depth_; }

  private:
    cSourceRecorder *recorder_;
    std::size_t depth_;
};

// A list of entries, which is the outermost value if no other is open.
class cSourceList {
  public:
    // `holder` of the entries, or null.
    cSourceList(cAttrScan const &scan, cObj const *holder)
        : scan_(scan), holder_(holder), recorder_(cSourceRecorder::at(scan)), frames_(recorder_) {
        if (recorder_) recorder_->begin_list(scan);
    }
    cSourceList(cSourceList const &) = delete;
    cSourceList &operator=(cSourceList const &) = delete;
    ~cSourceList() {
        if (recorder_) recorder_->end_list(scan_, frames_.depth(), holder_);
    }

  private:
    cAttrScan const &scan_;
    cObj const *holder_;
    cSourceRecorder *recorder_;
    cSourceFrames const frames_;
};

// During its lifetime, text read from the stream is recorded as text of the innermost open value.
class cSourceText {
  public:
    cSourceText(cSourceRecorder *recorder, std::istream const &is,
                cSourceRecorder::cGathering &gathering)
        : recorder_(recorder) {
        if (recorder_) recorder_->enter(is, gathering);
    }
    cSourceText(cSourceText const &) = delete;
    cSourceText &operator=(cSourceText const &) = delete;
    ~cSourceText() {
        if (recorder_) recorder_->leave();
    }

  private:
    cSourceRecorder *recorder_;
};

} // namespace cat
