// Entries that are not in the table of paths: finding them, and entering them. The file is in this
// folder since the pieces of a path are texts of keys.
//
// A path is followed in the table as far as possible. Below that, each piece is the text of a key
// of the current container, or of the step that is open in it. The result equals that of the table,
// since a late container has changed only by appending: each key was read once, each value is in it
// since it was read, and a container among its values was read at that position. All its keys have
// different texts.

#include "core/cscalar.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "text/state/ctext_state.h"
#include "text/write/cscalar_text.h"

#include <charconv>
#include <utility>

namespace {
// The container whose entries have paths below its own.
cMapObj *container_of(objref const &value) {
    if (!cObj::is_map(value) && !cObj::is_vector(value) && !cObj::is_set(value)) return nullptr;
    return dynamic_cast<cMapObj *>(value.get());
}

cAttrHash const *entries_of(objref const &value) {
    cMapObj const *const map = container_of(value);
    return map ? &map->datamap() : nullptr;
}

// The text of the key of a late entry.
std::string const &text_of(cObj const &key, std::string &text) {
    text.clear();
    if (auto const *const string = cat::value_in<std::string>(&key))
        append_string(text, *string, false);
    else
        append_number(text, *cat::value_in<int>(&key));
    return text;
}

// The key of a late container with this text. Only ints have texts of digits, and the text of a
// string is bare or in quotes.
cAttrNode const *find_text(cAttrHash const &hash, std::string_view text) {
    if (text.empty()) return nullptr;
    std::string form;
    char const *const end = text.data() + text.size();
    if (int number = 0; std::from_chars(text.data(), end, number).ptr == end) {
        append_number(form, number);
        return form == text ? hash.find(number) : nullptr;
    }
    std::string key(text);
    if (text.size() > 1 && text.front() == '"') {
        key = text.substr(1, text.size() - 2);
        cat::unescape(key);
    }
    append_string(form, key, false);
    return form == text ? hash.find(key) : nullptr;
}
} // namespace

// --- finding ---

objref cTextState::find_late(std::string_view path) const {
    cPathTrie::node_id node = cPathTrie::root; // none: the search is below the table
    cAttrHash const *hash = nullptr;           // the container of the search below the table
    size_t reader = first_late_;               // the reader of that container
    bool is_open = false;                      // and whether it is open
    auto const open_step = [this](size_t i, std::string_view piece) {
        if (i >= open_.size()) return false;
        make_steps(i + 1);
        return step_text(i) == piece;
    };
    for (bool last = path.empty(); !last;) {
        if (path.front() != '/') return {};
        path.remove_prefix(1);
        size_t const end = path.find('/');
        std::string_view const piece = path.substr(0, end);
        last = end == std::string_view::npos;
        if (!last) path.remove_prefix(end);
        if (node != cPathTrie::none) {
            cPathTrie::node_id const below = trie_.find_child(node, piece);
            if (below != cPathTrie::none) {
                if (last) return trie_.value(below);
                node = below;
                continue;
            }
            cLateEntries const *const open = reader < readers_.size() ? readers_[reader] : nullptr;
            size_t const steps = open ? open->steps_ : 0;
            bool const opens = steps && node == node_of(steps - 1) && open_step(steps - 1, piece);
            is_open = opens || (open && steps == 0 && node == cPathTrie::root);
            auto const late = late_below_.find(node);
            if (!is_open && late == late_below_.end()) return {};
            hash = is_open ? open->hash_ : late->second.get();
            node = cPathTrie::none;
            if (opens && last) return {};
            if (opens) continue;
        }
        if (!hash) return {};
        if (cAttrNode const *const found = find_text(*hash, piece)) {
            if (last) return found->valref();
            hash = entries_of(found->valref());
            is_open = false;
            continue;
        }
        if (!is_open || last || reader + 1 >= readers_.size() ||
            !open_step(readers_[reader]->steps_, piece))
            return {};
        hash = readers_[++reader]->hash_;
    }
    return {};
}

// --- entering ---

// Enters nothing twice, so no value is released and no user code runs.
void cTextState::enter_open() {
    resolve_steps();
    for (; first_late_ < readers_.size(); ++first_late_) {
        cLateEntries &late = *readers_[first_late_];
        late.late_ = false;
        enter_entries(*late.hash_, late.after_, node_of(late.steps_));
    }
    first_late_ = no_reader;
    cLateRead const read = std::exchange(late_read_, {});
    if (!read.hash || read.steps > steps_.size()) return;
    if (read.after)
        enter_entries(*read.hash, read.after, node_of(read.steps));
    else
        late_below_[node_of(read.steps)] = read.hash;
}

// The entries of one container; those below are late.
void cTextState::enter_entries(cAttrHash const &hash, cAttrNode const *after,
                               cPathTrie::node_id path) {
    for (auto const *node = after ? hash.next(after) : hash.first(); node; node = hash.next(node)) {
        cPathTrie::node_id const id = trie_.child(path, text_of(*node->key(), late_text_));
        trie_.enter(id, node->valref(), true);
        if (cMapObj *const below = container_of(node->valref()))
            late_below_[id] = below->datamap_ref();
    }
}

void cTextState::enter_late() {
    enter_open();
    late_ = false;
    while (!late_below_.empty()) {
        auto const all = std::exchange(late_below_, {});
        for (auto const &[path, hash] : all) enter_entries(*hash, nullptr, path);
    }
}

// --- the containers being read ---

cLateEntries::cLateEntries(cAttrHash *hash, cAttrScan const *scan, bool can_be, int depth)
    : hash_(hash), scan_(scan), steps_(text_state().path_keys()), can_be_(can_be) {
    auto &readers = text_state().readers_;
    if (!readers.empty()) {
        cLateEntries const &outer = *readers.back();
        can_be_ = can_be && outer.can_be_ && outer.scan_ == scan && steps_ == outer.steps_ + 1;
    } else {
        can_be_ = can_be && steps_ == 0 && text_state().depth() == depth;
    }
    readers.push_back(this);
}

cLateEntries::~cLateEntries() {
    cTextState &state = text_state();
    state.readers_.pop_back();
    if (!late_) return;
    bool const outermost = state.readers_.empty();
    if (state.first_late_ == state.readers_.size()) state.first_late_ = cTextState::no_reader;
    if (!outermost || state.depth_ > 0) state.late_read_ = {hashref::share(hash_), steps_, after_};
}

void cLateEntries::begin(cAttrNode const *after) {
    cTextState &state = text_state();
    after_ = after;
    if (after) state.trie_.child(cPathTrie::root, text_of(*after->key(), state.late_text_));
    if (!state.late_) ++state.late_round_;
    state.late_ = late_ = true;
    state.first_late_ = state.readers_.size() - 1;
}

void cLateEntries::resume() {
    cTextState &state = text_state();
    if (state.resolve_steps() && state.steps_.back().forked) return;
    ++state.late_round_;
    state.late_ = true;
}

void cLateEntries::open() {
    cTextState &state = text_state();
    size_t const outer = state.readers_.size() - 2;
    if (state.readers_[outer]->late_) {
        late_ = true;
        return;
    }
    state.make_steps();
    auto const around = state.node_of(steps_ - 1);
    late_ = state.trie_.find_child(around, state.step_text(steps_ - 1)) == cPathTrie::none;
    if (late_)
        state.first_late_ = outer + 1;
    else
        state.resolve_steps();
}

bool cLateEntries::find_room(objref const &key) {
    return find_room(text_of(*key, text_state().late_text_));
}

bool cLateEntries::find_room(int index) {
    std::string &text = text_state().late_text_;
    text.clear();
    append_number(text, index);
    return find_room(text);
}

bool cLateEntries::find_room(std::string const &text) {
    cTextState &state = text_state();
    room_ = state.trie_.child(state.node_of(steps_), text);
    return !state.trie_.value(room_);
}

void cLateEntries::enter_stored(objref const &value) {
    cTextState &state = text_state();
    state.trie_.enter(room_, value, true);
    if (state.late_read_.hash) state.late_below_[room_] = std::exchange(state.late_read_, {}).hash;
}

void cLateEntries::pass() {
    cTextState &state = text_state();
    if (!state.late_ || !state.late_read_.hash) return;
    state.resolve_steps();
    state.late_below_[state.steps_.back().node] = std::exchange(state.late_read_, {}).hash;
}

void cLateEntries::enter_open() { text_state().enter_open(); }
