// The standard methods of the type "attspec", by which programs and text fill and read a
// specification. The words #REQUIRED, #IMPLIED and #FIXED are constants that are compared by
// identity. They are fetched and stored when the first specification is created, so later changes
// of the map of constants have no effect here.

#include "containers/cattspec_nil.h"
#include "containers/cattspec_words.h"
#include "containers/csetup.h"
#include "core/cerr_object.h"
#include "core/cscalar.h"
#include "core/ctext_hooks.h"
#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"

#include <ostream>
#include <utility>

namespace {

constinit cat::cAttspecWords *the_words = nullptr;

bool is_word(objref const &value, objref const &word) { return value && value == word; }

bool refuse_type(cObj const &obj, objref const &key, objref const &value) {
    std::string const type = value ? value->type().name() : std::string();
    begin_error(err_attspec_type, obj, key) << cNamed::found(type);
    return raise_eros();
}

bool refuse_bad(cObj const &obj, objref const &key) {
    begin_error(err_attspec_attribute, obj, key);
    return raise_eros();
}

bool set_flag(cAttspec &spec, objref const &key, objref const &value) {
    cat::cAttspecWords const &words = cat::attspec_words();
    if (is_word(value, words.fixed) && !spec.is_default()) return refuse_type(spec, key, value);
    if (cat::flags_of_word(value) == 0) return refuse_type(spec, key, value);
    spec.set_flags(cat::flags_of_word(value));
    return true;
}

bool set_type(cAttspec &spec, objref const &key, objref const &value) {
    objref const found = cat::type_of_key(value); // may load a type
    auto *const type = dynamic_cast<cTypeObj *>(found.get());
    if (cObj::is_bad(found) || !type) {
        std::string const text = text_hooks.as_text(value); // RUNS USER CODE
        begin_error(err_attspec_unknown, spec, key) << cNamed::name(text);
        return raise_eros();
    }
    if (spec.is_default() && &spec.get_default()->type() != type)
        return refuse_type(spec, key, value);
    spec.share_type(typeref::share(type));
    return true;
}

bool set_default(cAttspec &spec, objref const &key, objref const &value) {
    if (spec.is_fixtype() && &value->type() != spec.get_type())
        return refuse_type(spec, key, value);
    spec.set_default(value, true); // changes nothing if the value is void
    return true;
}

} // namespace

cat::cAttspecWords const &cat::attspec_words() {
    if (!the_words) {
        cAttrHash const &constants = constmap().datamap();
        the_words = new cAttspecWords{constants.getitem("REQUIRED"), constants.getitem("IMPLIED"),
                                      constants.getitem("FIXED")};
    }
    return *the_words;
}

int cat::flags_of_word(objref const &word) {
    cAttspecWords const &words = attspec_words();
    if (is_word(word, words.required)) return asf_required;
    if (is_word(word, words.implied)) return asf_implied;
    if (is_word(word, words.fixed)) return asf_fixref;
    return 0;
}

void cat::drop_attspec_words() { delete std::exchange(the_words, nullptr); }

objref cTomAttspec::newobj(objref) {
    return make<cAttspec>(static_cast<int>(asf_required), nullptr);
}

bool cTomAttspec::create(cObj &) {
    cat::attspec_words();
    return true;
}

bool cTomAttspec::setattr(cObj &obj, objref &key, objref &value) {
    auto *const spec = dynamic_cast<cAttspec *>(&obj);
    if (!spec) return false;
    objref const keep = objref::share(&obj);
    if (!cat::is_string(key)) return refuse_type(obj, key, value);
    if (cObj::is_bad(value)) return refuse_bad(obj, key);
    if (cat::is_equal(key, "flag")) return set_flag(*spec, key, value);
    if (cat::is_equal(key, "type")) return set_type(*spec, key, value);
    if (cat::is_equal(key, "default")) return set_default(*spec, key, value);
    return refuse_type(obj, key, value);
}

objref cTomAttspec::getattr(objref obj, objref key) {
    if (!cat::is_string(key)) return cat::badfind();
    auto const *const spec = dynamic_cast<cAttspec const *>(obj.get());
    if (!spec) return cat::bad();
    cat::cAttspecWords const &words = cat::attspec_words();
    if (cat::is_equal(key, "flag")) {
        if (spec->is_required()) return words.required;
        if (spec->is_implied()) return words.implied;
        return spec->is_fixref() ? words.fixed : cat::nil();
    }
    if (cat::is_equal(key, "type"))
        return spec->get_type() ? objref::share(spec->get_type()) : cat::nil();
    if (cat::is_equal(key, "default")) return spec->is_default() ? spec->get_default() : cat::nil();
    return cat::bad();
}

void cat::setup_attspec(cTypeObj &type) {
    type.set_tmember("newobj", make<cExeMember>(cTomAttspec::newobj));
    type.set_tmember("create", make<cExeMember>(cTomAttspec::create));
    type.set_tmember("setattr", make<cExeMember>(cTomAttspec::setattr));
    type.set_tmember("getattr", make<cExeMember>(cTomAttspec::getattr));
    type.set_tmember("write", make<cExeMember>(text_hooks.attspec.write));
    type.set_tmember("read", make<cExeMember>(text_hooks.attspec.read));
}
