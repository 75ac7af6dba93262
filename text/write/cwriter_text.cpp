// Objects as text, alone and as steps of the path. Keys and paths are made of this all the time, so
// scalars take no stream.

#include "qrv/text/write/cwriter.h"

#include "qrv/core/cattrhash.h"
#include "qrv/core/cobjd.h"
#include "text/state/ctext_state.h"
#include "text/write/cscalar_text.h"
#include "text/write/cwriter_exact.h"
#include "text/write/cwriter_parts.h"
#include "text/write/cwriter_stream.h"

#include <typeinfo>

namespace {
// Like writeobj, but for the scalars' short way.
void append_object(std::string &out, cObj const &obj) {
    if (exact_text() && !exact_writable(obj)) return report_unwritable();
    if (cat::find_const(&obj)) {
        cTextStream os(out);
        obj.write_constname(os);
        return;
    }
    bool const wrapped = !obj.typeflags_of(tf_bare);
    if (wrapped) out.append(obj.type().name()).append(1, '(');
    if (!append_scalar(out, obj)) {
        cTextStream os(out);
        cComposer composer(os);
        if (!stack_ends(composer)) write_value(obj, composer); // RUNS USER CODE
    }
    if (wrapped) out += ')';
}
} // namespace

std::string cat::as_text(objref const &ref) {
    std::string text;
    if (ref) append_object(text, *ref);
    return text;
}

std::string cat::as_string(objref const &ref) {
    if (!ref) return {};
    if (std::string const *const text = string_of(*ref)) return *text;
    return as_text(ref);
}

std::string path_text(objref const &key, bool exact) {
    cTextForm const form(exact);
    return cat::as_text(key);
}

// --- a key as a step of the path ---

namespace {
bool has_line_end_or_is_bool(std::string const &text) {
    return text == "true" || text == "false" || text.find('\n') != std::string::npos;
}

// Can the plain and the exact text of this key differ? Cheap for the usual types.
bool may_have_two_texts(objref const &key) {
    if (!key) return false;
    cTypeObj const *const type = &key->type();
    if (type == &cat::type_int() || type == &cat::type_bool()) return false;
    if (type != &cat::type_string()) return true;
    auto const *const text = dynamic_cast<cObjDR<std::string> const *>(key.get());
    return !text || has_line_end_or_is_bool(text->val());
}

// Is the text of this key made by the library alone, and without an error?
bool is_plain_key(objref const &key) {
    if (!key || key->flags_of(of_exe_member) || !key->typeflags_of(tf_bare)) return false;
    cTypeObj const *const type = &key->type();
    std::type_info const &exact = typeid(*key);
    bool const plain =
        type == &cat::type_string()
            ? exact == typeid(cObjD<std::string>) && writes_by(*key, cat::write_string)
            : type == &cat::type_int() && exact == typeid(cObjD<int>) &&
                  writes_by(*key, cat::write_int);
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
