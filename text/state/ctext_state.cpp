#include "text/state/ctext_state.h"

// The first use creates the state object; only the core's tear-down destroys it, by
// reset_text_state(). The hashes of the trie depend on a seed that is different in each process, so
// that nobody can construct text whose paths all collide.

#include "qrv/base/platform/cplatform.h"
#include "qrv/text/state/cwriteindent.h"
#include "text/state/cchannels.h"

#include <cstring>

namespace {
// The number of slots is always a power of two, so a mask of the hash selects a slot. The table
// grows when half of them are used; this size has room for the paths of a small file.
constexpr size_t first_slots = 64;

std::uint64_t mix(std::uint64_t h) noexcept {
    h ^= h >> 32;
    h *= 0xD6E8FEB86659FD93u;
    return h ^ (h >> 32);
}

std::uint64_t hash_seed() noexcept {
    static constinit std::uint64_t seed = 0;
    if (seed == 0)
        seed = mix(reinterpret_cast<std::uintptr_t>(&text_state()) ^
                   static_cast<std::uint64_t>(cat::counter())) |
               1;
    return seed;
}
} // namespace

// --- the trie ---

cPathTrie::cPathTrie() : nodes_(1) {}

std::uint32_t cPathTrie::hash_of(node_id parent, std::string_view piece) const noexcept {
    std::uint64_t h = mix(hash_seed() + parent) + piece.size();
    while (!piece.empty()) {
        std::uint64_t word = 0;
        size_t const n = piece.size() < sizeof word ? piece.size() : sizeof word;
        std::memcpy(&word, piece.data(), n);
        h = mix(h ^ word) * hash_seed();
        piece.remove_prefix(n);
    }
    return static_cast<std::uint32_t>(mix(h));
}

cPathTrie::node_id cPathTrie::probe(node_id parent, std::string_view piece, std::uint32_t hash,
                                    size_t &slot) const {
    size_t const mask = slots_.size() - 1;
    for (slot = hash & mask; slots_[slot] != none; slot = (slot + 1) & mask) {
        cPiece const &node = nodes_[slots_[slot]];
        if (node.hash == hash && node.parent == parent && node.text == piece) return slots_[slot];
    }
    return none;
}

void cPathTrie::grow() {
    slots_.assign(slots_.empty() ? first_slots : slots_.size() * 2, none);
    size_t const mask = slots_.size() - 1;
    for (node_id id = 1; id < nodes_.size(); ++id) {
        size_t slot = nodes_[id].hash & mask;
        while (slots_[slot] != none) slot = (slot + 1) & mask;
        slots_[slot] = id;
    }
}

cPathTrie::node_id cPathTrie::child(node_id parent, std::string_view piece) {
    if (nodes_.size() * 2 >= slots_.size()) grow();
    std::uint32_t const hash = hash_of(parent, piece);
    size_t slot = 0;
    node_id const found = probe(parent, piece, hash, slot);
    if (found != none) return found;
    auto const id = static_cast<node_id>(nodes_.size());
    nodes_.push_back({parent, hash, false, std::string(piece), nullptr});
    slots_[slot] = id;
    return id;
}

cPathTrie::node_id cPathTrie::find_child(node_id parent, std::string_view piece) const {
    if (slots_.empty()) return none;
    size_t slot = 0;
    return probe(parent, piece, hash_of(parent, piece), slot);
}

cPathTrie::node_id cPathTrie::descend(node_id from, std::string_view key) {
    for (;;) {
        size_t const end = key.find('/');
        from = child(from, key.substr(0, end));
        if (end == std::string_view::npos) return from;
        key.remove_prefix(end + 1);
    }
}

cPathTrie::node_id cPathTrie::find(std::string_view path) const {
    if (path.empty()) return root;
    if (path.front() != '/') return none;
    node_id at = root;
    while (at != none && !path.empty()) {
        path.remove_prefix(1);
        size_t const end = path.find('/');
        std::string_view const piece = path.substr(0, end);
        at = find_child(at, piece);
        path = end == std::string_view::npos ? std::string_view() : path.substr(end);
    }
    return at;
}

std::string cPathTrie::path(node_id node) const {
    size_t length = 0;
    for (node_id at = node; at != root; at = nodes_[at].parent)
        length += nodes_[at].text.size() + 1;
    std::string result(length, '/');
    for (node_id at = node; at != root; at = nodes_[at].parent) {
        length -= nodes_[at].text.size();
        nodes_[at].text.copy(result.data() + length, nodes_[at].text.size());
        --length;
    }
    return result;
}

void cPathTrie::enter(node_id node, objref const &value, bool own) {
    cPiece &piece = nodes_[node];
    if (piece.own && !own) return;
    piece.own = own;
    objref const before = std::exchange(piece.value, value); // RE-ENTERS when it is destroyed here
}

void cPathTrie::clear() {
    if (nodes_.size() == 1) return;
    std::vector<cPiece> const released = std::exchange(nodes_, std::vector<cPiece>(1));
    slots_ = {};
} // RE-ENTERS: the values are destroyed here, after the trie is empty

// --- the state ---

constinit cTextState *the_text_state = nullptr;

cTextState &make_text_state() {
    the_text_state = new cTextState;
    return *the_text_state;
}

void reset_text_state() {
    cTextState const *const old = std::exchange(the_text_state, nullptr);
    delete old; // RE-ENTERS: for a destructor, text_state() creates a new state
}

std::string shown_path(std::string const &path, bool shorten) {
    constexpr size_t limit = 1000;
    constexpr std::string_view gap = "...";
    if (!shorten || path.size() <= limit) return path;
    constexpr size_t head = (limit - gap.size()) / 2;
    constexpr size_t tail = limit - gap.size() - head;
    return path.substr(0, head).append(gap).append(path, path.size() - tail, tail);
}

void cTextState::cut_step() noexcept {
    path_.resize(steps_.back().length_before);
    steps_.pop_back();
}

bool cTextState::written_path(cObj const *obj, std::string &path) const {
    auto const found = written_.find(obj);
    if (found == written_.end() || found->second.obid != obj->obid()) return false;
    path = trie_.path(found->second.node);
    return true;
}

void cTextState::collect_comment(std::string const &token) {
    size_t const begin = token.find_first_not_of(" \t\r\n");
    bool const line = begin != std::string::npos && token.compare(begin, 2, "//") == 0;
    bool const starts_line = token.compare(0, 1, "\n") == 0 || token.compare(0, 2, "\r\n") == 0;
    if (line_comment_open_ && !com_collected_.empty() && !starts_line) com_collected_ += '\n';
    com_collected_ += token;
    line_comment_open_ = line;
}

void cTextState::forget_comments() {
    com_collected_.clear();
    last_noted_ = nullptr; // RE-ENTERS
}

bool cTextState::idle() const noexcept {
    return depth_ == -1 && nesting_ == 0 && typed_nesting_ == 0 && !reading_key_ && path_.empty() &&
           open_.empty() && trie_.empty() && written_.empty() && readers_.empty() && !late_;
}

void cTextState::clear_references() {
    written_.clear();
    for (cStep &step : steps_) step.node = step.other_node = cPathTrie::none;
    late_ = false;
    late_read_.hash = nullptr;
    if (!late_below_.empty()) late_below_.clear();
    trie_.clear(); // RE-ENTERS
}

// --- the settings of the indent ---

namespace cat {
constinit int write_indent = 4;
constinit int write_indent0 = 2;

DoWriteIndent::DoWriteIndent(int columns) : columns_(columns) { text_state().add_indent(columns_); }
DoWriteIndent &DoWriteIndent::operator=(DoWriteIndent const &other) noexcept {
    columns_ = other.columns_;
    return *this;
}
DoWriteIndent::~DoWriteIndent() { text_state().take_indent(columns_); }
} // namespace cat

constinit cTracer *cat::io_channel = nullptr;
constinit cTracer *cat::lex_channel = nullptr;

// --- the guards ---

cWriteLevel::cWriteLevel() {
    cTextState &state = text_state();
    ++state.depth_;
    if (state.depth_ == 0)
        state.indent_ = cat::write_indent0;
    else
        state.add_indent(cat::write_indent);
}

cWriteLevel::~cWriteLevel() {
    cTextState &state = text_state();
    --state.depth_;
    if (state.depth_ > 0)
        state.take_indent(cat::write_indent);
    else
        state.indent_ = state.depth_ == 0 ? cat::write_indent0 : 0;
    if (state.depth_ < 0) state.clear_references(); // RE-ENTERS
}
