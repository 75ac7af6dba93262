#pragma once
// The process-wide state that the reader and the writer of object text share: nesting depth and
// indent, the path of the current value, the tables of back references, the collected comment.
//
// Rules
//   - Every paired change is a guard object: cWriteLevel, cPathStep, cReadingKey, cNesting. An
//     exception leaves depth, indent and path as they were.
//   - Depth is -1 outside. When the end of a level resets it to -1, both tables of back references
//     are cleared, so they never outlive the outermost container.
//   - The current path is one string: a step appends its key, and truncates the string at its end.
//     In the tables a path is a node of a trie of its pieces between slashes, so the cost of
//     entering a value depends on its key, not on its depth. Two path strings are equal if and only
//     if their nodes are.
//   - Most entries are never referred to, so the reader enters them late, if at all: cLateEntries.
//   - A key can have two texts: the plain one and the exact one. A step knows both; a value is
//     entered under both, and found under either.
//   - The text of an on-demand step is created when the path is requested, or by settle(). User
//     code could change the key or its written form, so a reader or writer that opens such steps
//     calls settle() before user code may run: before methods of a program's types, errors, signals
//     and a program's streams.
//   - The state is created on first use and held by plain pointers, so that none of it is destroyed
//     before the objects of a program are.

#include "qrv/core/cobjd.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// All paths seen so far, as nodes. Node 0 is the empty path.
class cPathTrie {
  public:
    using node_id = std::uint32_t;
    static constexpr node_id root = 0;
    static constexpr node_id none = 0xFFFFFFFFu;

    cPathTrie();
    cPathTrie(cPathTrie const &) = delete;
    cPathTrie &operator=(cPathTrie const &) = delete;
    ~cPathTrie() = default;

    // The node of from + "/" + key, created if necessary. A key with slashes passes several nodes.
    node_id descend(node_id from, std::string_view key);
    node_id find(std::string_view path) const; // "" or begins with "/"; none if absent
    std::string path(node_id node) const;      // assembled from the pieces

    bool empty() const noexcept { return nodes_.size() == 1; }

    // The node of the parent's path + "/" + piece, where the piece has no slash. If it does not
    // exist, child() creates it and find_child() returns none.
    node_id child(node_id parent, std::string_view piece);
    node_id find_child(node_id parent, std::string_view piece) const;

    // The object entered at a node, or null.
    objref const &value(node_id node) const { return nodes_[node].value; }
    // With `own` the node is the value's exact path: only a call with `own` replaces such an entry.
    void enter(node_id node, objref const &value, bool own);
    void clear(); // RUNS USER CODE: the values are released

  private:
    struct cPiece {
        node_id parent = none;
        std::uint32_t hash = 0;
        bool own = false;
        std::string text;
        objref value;
    };
    node_id probe(node_id parent, std::string_view piece, std::uint32_t hash, size_t &slot) const;
    std::uint32_t hash_of(node_id parent, std::string_view piece) const noexcept;
    void grow();

    std::vector<cPiece> nodes_;
    std::vector<node_id> slots_; // their number is a power of two; free: none
};

class cAttrScan;
class cLateEntries;

class cTextState {
  public:
    cTextState() = default;
    cTextState(cTextState const &) = delete;
    cTextState &operator=(cTextState const &) = delete;
    ~cTextState() = default;

    int depth() const noexcept { return depth_; }
    int indent() const noexcept { return indent_; } // columns of the current level
    void add_indent(int n) noexcept {               // for cat::DoWriteIndent; wraps around
        indent_ = static_cast<int>(static_cast<unsigned>(indent_) + static_cast<unsigned>(n));
    }
    void take_indent(int n) noexcept {
        indent_ = static_cast<int>(static_cast<unsigned>(indent_) - static_cast<unsigned>(n));
    }
    bool reading_key() const noexcept { return reading_key_; }
    int nesting() const noexcept { return nesting_; }
    int typed_nesting() const noexcept { return typed_nesting_; }

    // "/a/b"; empty outside of every container.
    std::string const &path() const {
        make_steps();
        return path_;
    }
    // The same for a message: with `shorten`, the middle of a path above 1,000 characters is
    // omitted.
    std::string shown_path(bool shorten) const;
    size_t path_keys() const noexcept { return open_.size(); }

    // Before user code runs: creates all texts that depend on data which that code could change.
    void settle() {
        if (late_ || steps_.size() != open_.size()) settle_all();
    }
    // Whether there can be entries that were read, but not entered. No user code has run since this
    // became true; late_round() counts how often it became true.
    bool is_late() const noexcept { return late_; }
    unsigned late_round() const noexcept { return late_round_; }

    // Reader: the value at a path. enter_value() is for the current path.
    void enter_value(objref const &value);
    objref value_at(std::string_view path) const; // null if nothing was entered there

    // Writer: the path under which an object was first written; false if it was not written yet.
    bool written_path(cObj const *obj, std::string &path) const;
    void enter_written(cObj const *obj); // under the current path
    // The same under any path, by its node; false, without effect, if it was entered under another
    // one.
    bool enter_written(cObj const *obj, cPathTrie::node_id path);
    cPathTrie::node_id path_node(size_t keys); // of the current path's first keys
    cPathTrie::node_id node_below(cPathTrie::node_id path, std::string_view key) {
        return trie_.descend(path, key);
    }

    // Comments: the text collected since the last value, and the value to which it will belong.
    std::string &com_collected() noexcept { return com_collected_; }
    // Appends a comment token; if a line comment before it would swallow it, adds the line end.
    void collect_comment(std::string const &token);
    objref &last_noted() noexcept { return last_noted_; }
    void forget_comments(); // RUNS USER CODE: last_noted is released

    // Depth -1, empty path, no references except perhaps the last noted value.
    bool idle() const noexcept;

  private:
    friend class cWriteLevel;
    friend class cPathStep;
    friend class cReadingKey;
    friend class cNesting;
    friend class cTypedNesting;
    friend class cLateEntries;

    // A path has two chains of nodes, which are looked up on first need. The second chain uses the
    // second text of each key that has one. Both chains are equal up to the first such key.
    struct cStep {
        size_t length_before;   // of path_
        std::string other = {}; // the second text of the key, if any
        bool has_other = false;
        bool forked = false;      // this or an earlier key has a second text
        bool shown_exact = true;  // path_ up to here is in the exact form
        bool other_exact = false; // the second chain is in the exact form
        cPathTrie::node_id node = cPathTrie::none;
        cPathTrie::node_id other_node = cPathTrie::none;
    };
    struct cWritten {
        unsigned int obid;
        cPathTrie::node_id node;
    };
    // An open step. Until its text is created, this has the key and the form of the text.
    struct cOpenStep {
        objref key;
        bool exact;
    };
    void push_step(objref const &key);
    void push_later(objref const &key);
    void pop_step() noexcept {
        if (steps_.size() == open_.size()) cut_step();
        open_.pop_back();
    }
    void cut_step() noexcept;
    cStep make_step(objref const &key, std::string &text) const; // RUNS USER CODE
    void append_step(cStep &&step, std::string const &text) const;
    void make_steps() const {
        if (steps_.size() != open_.size()) make_steps(open_.size());
    }
    void make_steps(size_t count) const; // creates at least the outermost `count`
    void settle_all();
    void enter_open();
    void enter_entries(cAttrHash const &hash, cAttrNode const *after, cPathTrie::node_id path);
    void enter_late();
    objref find_late(std::string_view path) const;
    cPathTrie::node_id node_of(size_t steps) const noexcept { // after resolve_steps()
        return steps ? steps_[steps - 1].node : cPathTrie::root;
    }
    void clear_references(); // RUNS USER CODE
    bool resolve_steps();    // fills the nodes of all steps; false if there are no steps
    std::string_view step_text(size_t i) const noexcept;

    int depth_ = -1;
    int indent_ = 77; // overwritten by the first level
    int nesting_ = 0;
    int typed_nesting_ = 0;
    bool reading_key_ = false;
    mutable std::vector<cOpenStep> open_;
    mutable std::string path_; // of the steps with text, which are the outermost ones
    mutable std::vector<cStep> steps_;
    // The late entries: all entries of the containers from first_late_ on; those of late_read_,
    // which was read and isn't stored yet; and all below certain nodes of the table.
    static constexpr size_t no_reader = SIZE_MAX;
    struct cLateRead {
        hashref hash;
        size_t steps;           // of its path
        cAttrNode const *after; // its entries begin after this one, or null
    };
    bool late_ = false;
    unsigned late_round_ = 0;
    std::vector<cLateEntries *> readers_; // containers being read, outermost first
    size_t first_late_ = no_reader;
    cLateRead late_read_{};
    std::unordered_map<cPathTrie::node_id, hashref> late_below_;
    std::string late_text_; // a temporary copy of a key's text
    cPathTrie trie_;
    std::unordered_map<cObj const *, cWritten> written_;
    std::string com_collected_;
    bool line_comment_open_ = false; // com_collected_ ends in a line comment
    objref last_noted_;
};

extern constinit cTextState *the_text_state;
cTextState &make_text_state();
// Created by the first call.
inline cTextState &text_state() { return the_text_state ? *the_text_state : make_text_state(); }
// Releases everything held; the next call of text_state() starts anew. For the tear-down of the
// core and for tests, while nothing is being read or written.
void reset_text_state();

// One container being written or read: increments the depth and increases the indent. Its end
// reverses both, and at depth -1 clears the back references.
class cWriteLevel {
  public:
    cWriteLevel();
    ~cWriteLevel(); // RUNS USER CODE at depth -1
    cWriteLevel(cWriteLevel const &) = delete;
    cWriteLevel &operator=(cWriteLevel const &) = delete;
};

// One more key in the path: "/" and cat::as_text(key).
class cPathStep {
  public:
    // Creates the text at once. RUNS USER CODE: the key's `write`.
    explicit cPathStep(objref const &key);
    // Creates the text of an int or string on demand if the library writes it, see settle();
    // creates the text of other keys at once.
    static constexpr struct cOnDemand {
    } on_demand{};
    cPathStep(objref const &key, cOnDemand);
    ~cPathStep() { text_state().pop_step(); }
    cPathStep(cPathStep const &) = delete;
    cPathStep &operator=(cPathStep const &) = delete;
};

// A container that is being read. Containers nest.
//
// Entries are late if they are stored in their container, but not entered in the table of paths:
// that saves time. A walk down the containers finds the value at a path that leads to a late entry;
// it starts at a node of the table that has no nodes below it. This is correct as long as a
// container has exactly the entries that were read, in that order, under keys with one text each.
// The entries of a new container are late if the table has no node at its path. Before a walk could
// find a wrong value, entries are entered:
//   - enter_open() enters the entries of the open containers, but not those below them: the reader
//     calls it for a container that was stored before, since the table has its paths.
//   - settle() enters all late entries. It is called before anything that isn't a plain entry: user
//     code, a repeated key, a typed value, an error. After that each entry is entered when it is
//     read, until begin() or resume() finds that the next ones can be late.
// While entries are late elsewhere, a container whose entries are in the table enters each new
// entry at once, and a new container in it begins late.
class cLateEntries {
  public:
    // Borrows the hash, which may be null while no entries are stored, and the scan, which is the
    // reader's. can_be: whether its type and position permit late entries, if the enclosing
    // container does.
    cLateEntries(cAttrHash *hash, cAttrScan const *scan, bool can_be, int depth);
    ~cLateEntries();
    cLateEntries(cLateEntries const &) = delete;
    cLateEntries &operator=(cLateEntries const &) = delete;

    // Whether the state permits late entries.
    static bool are_possible();
    // Whether the entry with this key can be late.
    static bool is_key(objref const &key);

    bool can_be() const noexcept { return can_be_; }
    bool is_outermost() const noexcept { return steps_ == 0; }
    bool is_late() const noexcept { return late_; }
    // The outermost container: its entries after this one are late.
    void begin(cAttrNode const *after);
    void resume(); // from now on entries can be late; all earlier ones are entered
    void open();   // for a container inside another one, while entries are late

    // Whether the entry may be late, or be entered without releasing another value.
    bool has_room(objref const &key) { return late_ || find_room(key); }
    bool has_room(int index) { return late_ || find_room(index); }
    // A value for which has_room() was true has been stored. If it is a container, it is the one
    // that was read last.
    void stored(objref const &value) {
        if (!late_)
            enter_stored(value);
        else if (text_state().late_read_.hash)
            text_state().late_read_.hash = nullptr;
    }
    // Called after the value of the innermost step was read. If that is a container with late
    // entries, they stay late, below the node of that step.
    static void pass();
    static void enter_open();

  private:
    friend class cTextState;

    bool find_room(objref const &key);
    bool find_room(int index);
    bool find_room(std::string const &text);
    void enter_stored(objref const &value);

    cAttrHash *const hash_;
    cAttrScan const *const scan_;
    size_t const steps_; // of the path of this container
    bool can_be_;
    bool late_ = false;
    cAttrNode const *after_ = nullptr;
    cPathTrie::node_id room_ = cPathTrie::none; // for the entry that is stored next
};

// True while a key is scanned, false while a value is.
class cReadingKey {
  public:
    explicit cReadingKey(bool on) : before_(text_state().reading_key_) {
        text_state().reading_key_ = on;
    }
    ~cReadingKey() { text_state().reading_key_ = before_; }
    cReadingKey(cReadingKey const &) = delete;
    cReadingKey &operator=(cReadingKey const &) = delete;

  private:
    bool before_;
};

// Counts the values inside each other, for which the reader has a limit.
class cNesting {
  public:
    cNesting() { ++text_state().nesting_; }
    ~cNesting() { --text_state().nesting_; }
    cNesting(cNesting const &) = delete;
    cNesting &operator=(cNesting const &) = delete;
};

// Counts the typed values inside each other: the text of each is scanned again.
class cTypedNesting {
  public:
    cTypedNesting() { ++text_state().typed_nesting_; }
    ~cTypedNesting() { --text_state().typed_nesting_; }
    cTypedNesting(cTypedNesting const &) = delete;
    cTypedNesting &operator=(cTypedNesting const &) = delete;
};

// The path for a message: with `shorten`, the middle of a path above 1,000 characters is omitted.
std::string shown_path(std::string const &path, bool shorten);
