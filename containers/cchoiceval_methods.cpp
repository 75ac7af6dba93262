// The standard methods of choice types and of their values.

#include "containers/cmergebudget.h"
#include "containers/csetup.h"
#include "core/cscalar.h"
#include "core/ctext_hooks.h"
#include "qrv/base/csignal.h"
#include "qrv/containers/cchoiceval.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"

namespace {

// Methods can be called by name on any object; null for other objects.
cChoiceVal *value_of(cObj *obj) { return dynamic_cast<cChoiceVal *>(obj); }

cTypeObj *type_of(cObj *obj) { return dynamic_cast<cTypeObj *>(obj); }

bool is_word(objref const &key, char const *word) {
    return cat::is_string(key) && cat::is_equal(key, word);
}

objref choices_of(cObj const &type) {
    auto const *const choice = dynamic_cast<cTypeObj const *>(&type);
    objref const choices = choice ? choice->tmember(std::string("choices")) : cat::badfind();
    return choices ? choices : cat::badfind();
}

bool equal(cObj &obj, objref &other) {
    auto const *const a = value_of(&obj);
    auto const *const b = value_of(other.get());
    return a && b && static_cast<cIterObj const &>(*a) == *b;
}

} // namespace

// --- values

objref cTomChoiceVal::newobj(objref type) {
    cTypeObj *const choice = type_of(type.get());
    return choice ? objref(make<cChoiceVal>(choice, true)) : cat::bad();
}

objref cTomChoiceVal::getattr(objref obj, objref key) {
    cChoiceVal const *const value = value_of(obj.get());
    if (!value) return cat::bad();
    return is_word(key, "choices") ? choices_of(value->type()) : cTomIterator::getattr(obj, key);
}

// DELIBERATE: for a choice whose key is "choices", the type's setattr gets that key and replaces
// all choices.   Pinned: the_value_of_a_choice_called_choices_replaces_them_all
bool cTomChoiceVal::setattr(cObj &obj, objref &key, objref &value) {
    cChoiceVal const *const choice = value_of(&obj);
    if (!choice || !is_word(key, "value") || !choice->valid()) return false;
    objref const type = objref::share(&choice->type());
    return type->setattr(objref(choice->key()), value); // RE-ENTERS: obj may be updated
}

bool cTomChoiceVal::m_assign(cObj &obj, objref &arg) {
    cChoiceVal *const choice = value_of(&obj);
    if (!choice) return false;
    objref const keep = objref::share(&obj);
    auto const *const other = dynamic_cast<cIterObj const *>(arg.get());
    choice->setkey(other ? objref(other->key()) : arg); // RUNS USER CODE
    return true;
}

// --- types

namespace {

bool set_choices(cTypeObj &type, objref const &key, objref const &choices) {
    if (!cat::merge_allows(type, key, choices)) return false;
    type.set_tmember(key, choices); // RE-ENTERS
    return true;
}

bool set_choice(cTypeObj &type, objref const &key, objref const &value) {
    if (!cat::merge_allows(type, key, value)) return false;
    objref choices = choices_of(type);
    if (cObj::is_void(choices)) {
        choices = make<cMapObj>();
        type.set_tmember("choices", choices); // RE-ENTERS
    }
    return choices->setattr(key, value); // RUNS USER CODE
}

} // namespace

bool cTomChoice::setattr(cObj &type, objref &key, objref &value) {
    cTypeObj *const choice = type_of(&type);
    if (!choice) return false;
    objref const keep = objref::share(&type);
    bool const all = is_word(key, "choices");
    if (!(all ? set_choices(*choice, key, value) : set_choice(*choice, key, value))) return false;
    type.changed(); // RE-ENTERS: updates the values of the type
    return true;
}

objref cTomChoice::getattr(objref type, objref key) {
    if (!type_of(type.get())) return cat::bad();
    objref const choices = choices_of(*type);
    return is_word(key, "choices") ? choices : choices->getattr(key);
}

namespace {

objref new_type(objref) {
    return objref::adopt(new cTypeObj(&cat::typetype_choice(), nullptr, nullptr));
}

// Fills a new type; does not change one that is in use.
bool fill_type(cObj &obj) {
    cTypeObj *const type = type_of(&obj);
    if (!type || type->method(mid_newobj)) return true;
    type->set_tmember("newobj", make<cExeMember>(cTomChoiceVal::newobj));
    type->set_tmember("assign", make<cExeMember>(cTomChoiceVal::m_assign));
    type->set_tmember("getattr", make<cExeMember>(cTomChoiceVal::getattr));
    type->set_tmember("setattr", make<cExeMember>(cTomChoiceVal::setattr));
    type->set_tmember("write", make<cExeMember>(text_hooks.choiceval.write));
    type->set_tmember("read", make<cExeMember>(text_hooks.choiceval.read));
    type->set_tmember("equal", make<cExeMember>(equal));
    type->force_changed_signal();
    return true;
}

objref iterobj_of_choices(objref type) { return type ? choices_of(*type)->iterobj() : cat::bad(); }

bool append_choice(cObj &type, objref &item) { return choices_of(type)->append(item); }

} // namespace

void cat::setup_choice(cTypeObj &type) {
    type.set_tmember("newobj", make<cExeMember>(new_type));
    type.set_tmember("create", make<cExeMember>(fill_type));
    type.set_tmember("setattr", make<cExeMember>(cTomChoice::setattr));
    type.set_tmember("getattr", make<cExeMember>(cTomChoice::getattr));
    type.set_tmember("write", make<cExeMember>(text_hooks.choice.write));
    type.set_tmember("read", make<cExeMember>(text_hooks.choice.read));
    type.set_tmember("iterobj", make<cExeMember>(iterobj_of_choices));
    type.set_tmember("append", make<cExeMember>(append_choice));
}
