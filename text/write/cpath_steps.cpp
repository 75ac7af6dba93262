// The functions of cTextState for the steps of the path, and for the values at a path. This file is
// not in text/state, since steps need the texts of keys, which are written here.

#include "core/cbuiltin.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "text/state/ctext_state.h"
#include "text/write/cwriter_exact.h"

#include <typeinfo>

std::string cTextState::shown_path(bool shorten) const { return ::shown_path(path(), shorten); }

// --- a key as a step ---

namespace {
bool is_bool_text(std::string_view text) { return text == "true" || text == "false"; }

// Whether the plain and the exact text of this key can differ. Cheap for the usual types.
bool may_have_two_texts(objref const &key) {
    if (!key) return false;
    cTypeObj const *const type = &key->type();
    if (type == &cat::type_int() || type == &cat::type_bool()) return false;
    if (type != &cat::type_string()) return true;
    auto const *const text = dynamic_cast<cObjDR<std::string> const *>(key.get());
    return !text || is_bool_text(text->val()) || text->val().find('\n') != std::string::npos;
}

// Whether only the library writes such values, without the name of the type.
bool is_plain_type(cTypeObj const &type, bool (*method)(cObj &, objref &)) {
    return type.method(mid_write) == reinterpret_cast<cVoidFunction>(method) &&
           type.flags_of(tf_bare);
}

// Whether only the library writes this key, and without an error.
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

// The texts of one key, and the part of the step that follows from them.
cTextState::cStep cTextState::make_step(objref const &key, std::string &text) const {
    text = cat::as_text(key); // RUNS USER CODE
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

void cTextState::make_steps(size_t count) const {
    for (size_t i = steps_.size(); i < count; ++i) {
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
    trie_.enter(node, value, shown_own || !forked); // RE-ENTERS: `last` may be invalid
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

void cTextState::settle_all() {
    make_steps();
    if (late_) enter_late();
}

// --- what late entries need ---

bool cLateEntries::is_key(objref const &key) {
    if (!is_plain_key(key)) return false;
    if (&key->type() == &cat::type_int()) return true;
    std::string const &text = static_cast<cObjDR<std::string> const &>(*key).val();
    return !is_bool_text(text) && text.find_first_of("/\n") == std::string::npos;
}

bool cLateEntries::are_possible() {
    cTextState const &state = text_state();
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
    return !dropping && !asking && !creating && is_plain_type(cat::type_int(), cat::write_int) &&
           is_plain_type(cat::type_string(), cat::write_string);
}
