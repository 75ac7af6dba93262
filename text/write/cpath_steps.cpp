// The path: keys as steps of it, and what is at a path. In this folder because steps are texts of
// keys.
//
// Entries of which no path is known yet (cLateEntries) are found by a walk from the outermost
// container: each piece is the text of a key of the container at hand, or of the step that is open
// in it. That gives what the table would have, since a late container has been changed by nothing
// but appending: each key was read once, each value is in it since it was read, and a container
// among its values was read at that place. No two of its keys have the same text.

#include "core/cbuiltin.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "text/state/ctext_state.h"
#include "text/write/cscalar_text.h"
#include "text/write/cwriter_exact.h"

#include <charconv>
#include <typeinfo>

std::string cTextState::shown_path(bool shorten) const { return ::shown_path(path(), shorten); }

// --- a key as a step ---

namespace {
bool is_bool_text(std::string_view text) { return text == "true" || text == "false"; }

// Can the plain and the exact text of this key differ? Cheap for the usual types.
bool may_have_two_texts(objref const &key) {
    if (!key) return false;
    cTypeObj const *const type = &key->type();
    if (type == &cat::type_int() || type == &cat::type_bool()) return false;
    if (type != &cat::type_string()) return true;
    auto const *const text = dynamic_cast<cObjDR<std::string> const *>(key.get());
    return !text || is_bool_text(text->val()) || text->val().find('\n') != std::string::npos;
}

// Does the library alone make the texts of such values, without the name of the type?
bool is_plain_type(cTypeObj const &type, bool (*method)(cObj &, objref &)) {
    return type.method(mid_write) == reinterpret_cast<cVoidFunction>(method) &&
           type.flags_of(tf_bare);
}

// Is the text of this key made by the library alone, and without an error?
bool is_plain_key(objref const &key) {
    if (!key || key->flags_of(of_exe_member)) return false;
    cTypeObj const *const type = &key->type();
    cObj const &object = *key;
    std::type_info const &exact = typeid(object);
    bool const plain =
        type == &cat::type_string()
            ? exact == typeid(cObjD<std::string>) && is_plain_type(*type, cat::write_string)
            : type == &cat::type_int() && exact == typeid(cObjD<int>) &&
                  is_plain_type(*type, cat::write_int);
    return plain && (!exact_text() || !cat::find_const(key.get()));
}
} // namespace

// The texts of one key, and the step as far as it follows from them.
cTextState::cStep cTextState::make_step(objref const &key, std::string &text) const {
    text = cat::as_text(key); // RUNS FOREIGN CODE
    cStep step{path_.size()};
    if (may_have_two_texts(key)) {
        std::string exact = path_text(key, true);
        std::string plain = path_text(key, false);
        step.shown_exact = text == exact;
        step.has_other = plain != exact;
        step.other = std::move(step.shown_exact ? plain : exact);
    }
    return step;
}

void cTextState::append_step(cStep &&step, std::string const &text) const {
    bool const nested = !steps_.empty();
    bool const shown_exact = step.shown_exact;
    step.length_before = path_.size();
    step.forked = (nested && steps_.back().forked) || step.has_other;
    step.shown_exact = (!nested || steps_.back().shown_exact) && shown_exact;
    step.other_exact = (!nested || steps_.back().other_exact) && (!step.has_other || !shown_exact);
    steps_.push_back(std::move(step));
    path_.append(1, '/').append(text);
}

void cTextState::push_step(objref const &key) {
    make_steps();
    std::string text;
    cStep step = make_step(key, text);
    open_.push_back({});
    append_step(std::move(step), text);
}

void cTextState::push_later(objref const &key) {
    if (is_plain_key(key))
        open_.push_back({key, exact_text()});
    else
        push_step(key);
}

void cTextState::make_waiting_steps() const {
    for (size_t i = steps_.size(); i < open_.size(); ++i) {
        cTextForm const form(open_[i].exact);
        std::string text;
        append_step(make_step(open_[i].key, text), text);
        open_[i].key = nullptr;
    }
}

cPathStep::cPathStep(objref const &key) { text_state().push_step(key); }
cPathStep::cPathStep(objref const &key, cOnDemand) { text_state().push_later(key); }

// --- the table ---

std::string_view cTextState::step_text(size_t i) const noexcept {
    size_t const begin = steps_[i].length_before + 1;
    size_t const end = i + 1 < steps_.size() ? steps_[i + 1].length_before : path_.size();
    return std::string_view(path_).substr(begin, end - begin);
}

bool cTextState::resolve_steps() {
    make_steps();
    size_t i = steps_.size();
    while (i > 0 && steps_[i - 1].node == cPathTrie::none) --i;
    for (; i < steps_.size(); ++i) {
        cStep &step = steps_[i];
        std::string_view const text = step_text(i);
        step.node = trie_.descend(i ? steps_[i - 1].node : cPathTrie::root, text);
        step.other_node = step.node;
        if (step.forked)
            step.other_node = trie_.descend(i ? steps_[i - 1].other_node : cPathTrie::root,
                                            step.has_other ? std::string_view(step.other) : text);
    }
    return !steps_.empty();
}

void cTextState::enter_value(objref const &value) {
    if (!resolve_steps()) return;
    cStep const &last = steps_.back();
    cPathTrie::node_id const node = last.node, other = last.other_node;
    bool const forked = last.forked, shown_own = last.shown_exact, other_own = last.other_exact;
    trie_.enter(node, value, shown_own || !forked); // RE-ENTERS: `last` may be gone
    if (forked) trie_.enter(other, value, other_own);
}

void cTextState::enter_written(cObj const *obj) {
    if (resolve_steps()) written_[obj] = {obj->obid(), steps_.back().node};
}

bool cTextState::enter_written(cObj const *obj, cPathTrie::node_id path) {
    cWritten const fresh{obj->obid(), path};
    cWritten &entry = written_.try_emplace(obj, fresh).first->second;
    if (entry.obid != fresh.obid) entry = fresh;
    return entry.node == path;
}

cPathTrie::node_id cTextState::path_node(size_t keys) {
    resolve_steps();
    return keys ? steps_[keys - 1].node : cPathTrie::root;
}

objref cTextState::value_at(std::string_view path) const {
    if (late_) return find_late(path);
    cPathTrie::node_id const node = trie_.find(path);
    return node == cPathTrie::none ? objref() : trie_.value(node);
}

// --- late entries ---

namespace {
// The container whose entries have paths below its own.
cAttrHash const *entries_of(objref const &value) {
    if (!cObj::is_map(value) && !cObj::is_vector(value) && !cObj::is_set(value)) return nullptr;
    auto *const map = dynamic_cast<cMapObj *>(value.get());
    return map ? &map->datamap() : nullptr;
}

// The key of a late container whose text this is. Only an int has a text of digits, and the text
// of a string is bare or in quotes.
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

bool cLateEntries::is_key(objref const &key) {
    if (!is_plain_key(key)) return false;
    if (&key->type() == &cat::type_int()) return true;
    std::string const &text = static_cast<cObjDR<std::string> const &>(*key).val();
    return !is_bool_text(text) && text.find_first_of("/\n") == std::string::npos;
}

bool cLateEntries::are_possible(cAttrHash const &hash) {
    cTextState const &state = text_state();
    bool const outermost = state.depth() == 0 && state.path_keys() == 0;
    bool const dropping = state.last_noted_ && state.last_noted_->refs() == 1;
    bool const asking = cat::constmap_ptr()->datamap().has_foreign_keys() ||
                        cat::gmmap_ptr()->datamap().has_foreign_keys() ||
                        cat::type_map().tmmap().has_foreign_keys() ||
                        cat::type_vector().tmmap().has_foreign_keys() ||
                        cat::type_set().tmmap().has_foreign_keys();
    bool creating = false;
    for (cTypeObj const *type : {&cat::type_int(), &cat::type_string(), &cat::type_bool(),
                                 &cat::type_float(), &cat::type_double()})
        if (!cat::is_builtin(*type, cat::method_bit(mid_create))) creating = true;
    return outermost && !dropping && !asking && !creating && hash.empty() &&
           is_plain_type(cat::type_int(), cat::write_int) &&
           is_plain_type(cat::type_string(), cat::write_string);
}

objref cTextState::find_late(std::string_view path) const {
    make_steps();
    std::vector<cLateEntries const *> open;
    for (cLateEntries const *at = late_; at; at = at->outer_) open.push_back(at);
    cAttrHash const *hash = &open.back()->hash_;
    for (bool last = path.empty(); !last;) {
        if (!hash || path.front() != '/') return {};
        path.remove_prefix(1);
        size_t const end = path.find('/');
        std::string_view const piece = path.substr(0, end);
        last = end == std::string_view::npos;
        if (!last) path.remove_prefix(end);
        if (cAttrNode const *const node = find_text(*hash, piece)) {
            if (last) return node->valref();
            hash = entries_of(node->valref());
            open.clear();
            continue;
        }
        if (last || open.size() < 2 || step_text(open.back()->steps_) != piece) return {};
        open.pop_back();
        hash = &open.back()->hash_;
    }
    return {};
}

// From the outermost container on, each with what is below its values. Nothing is entered twice,
// so nothing dies, and no user code runs.
void cTextState::enter_late() {
    std::vector<cLateEntries const *> open;
    for (cLateEntries const *at = std::exchange(late_, nullptr); at; at = at->outer_)
        open.push_back(at);
    resolve_steps();
    struct cPlace {
        cAttrHash const *hash;
        cPathTrie::node_id node;
    };
    std::vector<cPlace> waiting;
    auto const node_of = [this](size_t steps) {
        return steps ? steps_[steps - 1].node : cPathTrie::root;
    };
    for (cLateEntries const *at : open) waiting.push_back({&at->hash_, node_of(at->steps_)});
    hashref const read = std::exchange(late_read_, nullptr);
    if (read && late_read_steps_ <= steps_.size())
        waiting.push_back({read.get(), node_of(late_read_steps_)});
    while (!waiting.empty()) {
        cPlace const place = waiting.back();
        waiting.pop_back();
        for (cAttrNode const *node = place.hash->first(); node; node = place.hash->next(node)) {
            cPathTrie::node_id const id = trie_.descend(place.node, path_text(node->key(), false));
            trie_.enter(id, node->valref(), true);
            if (cAttrHash const *const below = entries_of(node->valref()))
                waiting.push_back({below, id});
        }
    }
}

void cTextState::settle_all() {
    make_steps();
    if (late_) enter_late();
}

cLateEntries::cLateEntries(cAttrHash &hash, bool wanted)
    : hash_(hash), outer_(text_state().late_), steps_(text_state().path_keys()) {
    if (wanted) text_state().late_ = this;
}

cLateEntries::~cLateEntries() {
    cTextState &state = text_state();
    if (state.late_ != this) return;
    state.late_ = outer_;
    state.late_read_ = outer_ ? hashref::share(&hash_) : nullptr;
    state.late_read_steps_ = steps_;
}
