#include "value/place.h"

#include "base/platform/cchars.h"
#include "value/guard.h"
#include "value/making.h"
#include "value/notify.h"

#include "qrv/containers/cattspec.h"
#include "qrv/containers/citerobj.h"
#include "qrv/core/ctypes.h"

#include <array>
#include <charconv>

namespace qrv::detail {

bool uses_library_method(cObj const &object, method_id method, int other) noexcept {
    return (object.type().library_methods() & 1U << method) != 0 &&
           object.object_class() == cObjClass::map && !object.flags_of(of_exe_member | other);
}

namespace {

cAttrNode *node_of(cAttrHash const &hash, step const &key) {
    switch (key.is) {
    case step::form::text:
        return hash.find(key.text);
    case step::form::number:
        return hash.find(key.number);
    case step::form::object:
        break;
    }
    return hash.find(key.key);
}

bool has_method(cObj const &object, method_id method) {
    return object.type().method(method) || object.flags_of(of_exe_member);
}

// Calls the type's method, for rules of declared types and for types of the program. For a missing
// required attribute the method raises an error; this function returns null.
cObj *asked(cObj &object, step const &key, objref &keep) {
    if (!has_method(object, mid_getattr)) return nullptr;
    cat::CaughtErrors const caught;
    objref found = object.getattr(key_object(key));
    if (!caught.empty() && caught.entries().front().kind() != cat::ErrorKind::required)
        throw_caught(caught);
    if (cObj::is_bad(found)) return nullptr;
    keep = std::move(found);
    return keep.get();
}

cObj *find_as_it_is(cObj &object, step const &key, objref &keep) {
    if (!uses_library_method(object, mid_getattr)) return asked(object, key, keep);
    cAttrNode const *const node = node_of(static_cast<cMapObj &>(object).datamap(), key);
    cObj *const found = node ? node->valref().get() : nullptr;
    bool const has_rules = object.flags_of(asf_all) != 0;
    if (has_rules && cObj::is_void(found)) [[unlikely]]
        return asked(object, key, keep);
    return found;
}

// For an entry that the container did not accept, without raising an error: its type is not the one
// that the container requires.
[[noreturn]] void refuse_entry(objref const &owner, value const &x) {
    cMapObj const *const map = cat::as_map(owner);
    bool const has_type = map && map->entrytype();
    throw type_error(
        {}, has_type ? map->entrytype()->name() : "what " + owner->type().name() + " accepts",
        description(x));
}

bool is_present(objref const &owner, step &key) {
    objref keep;
    return entry_of(*owner, key, keep) != nullptr;
}

// A report about this key.
change_report report_of(objref const &owner, step const &key, written how) {
    if (key.is == step::form::number) return {owner, key.number, how};
    if (key.is == step::form::text) return {owner, key.text, how};
    return change_report(owner);
}

} // namespace

void refuse_cycle(objref const &owner, value const &x, unsigned handles) {
    objref const &stored = value_access::object(x);
    if (!cat::as_map(stored)) return;
    if (stored == owner || (owner->refs() != handles && stored->is_owner_of(*owner)))
        throw error("the value would be a part of itself");
}

cObj *entry_of(cObj &object, step &key, objref &keep) {
    cObj *const found = find_as_it_is(object, key, keep);
    if (found || key.is != step::form::number || object.is_vector() || object.is_set())
        return found;
    step const as_text(own_key(std::to_string(key.number)));
    cObj *const other = find_as_it_is(object, as_text, keep);
    if (other) key = as_text;
    return other;
}

namespace {

constexpr std::array<bool, 256> word_characters = [] {
    std::array<bool, 256> result{};
    for (unsigned c = 0; c < result.size(); ++c)
        result[c] = is_letter(static_cast<char>(c)) || is_digit(static_cast<char>(c));
    return result;
}();

bool is_word_character(char c) noexcept { return word_characters[static_cast<unsigned char>(c)]; }

// Null also if the word is not simply a key, such as a number with leading zeros.
cAttrNode *node_of_word(cAttrHash const &hash, char const *begin, char const *end) {
    std::string_view const word(begin, static_cast<std::size_t>(end - begin));
    if (*begin > '9') return hash.find(word);
    int number = 0;
    bool const is_short = word.size() < 10 && (*begin != '0' || word.size() == 1);
    bool const is_number = is_short && std::from_chars(begin, end, number).ptr == end;
    return is_number ? hash.find(number) : nullptr;
}

} // namespace

cObj *walk_plainly(cObj *root, std::string_view path) {
    char const *p = path.data();
    char const *const end = p + path.size();
    for (cObj *at = root;; ++p) {
        char const *const begin = p;
        if (p == end || !is_word_character(*p)) return nullptr;
        do ++p;
        while (p != end && is_word_character(*p));
        if (p != end && *p != '/') return nullptr;
        if (!at || !uses_library_method(*at, mid_getattr, asf_all)) return nullptr;
        cAttrNode const *const node = node_of_word(static_cast<cMapObj *>(at)->datamap(), begin, p);
        if (!node) return nullptr;
        at = node->valref().get();
        if (p == end) return at;
    }
}

bool is_choice_type(cTypeObj const &type) noexcept {
    return &type.type() == &cat::typetype_choice();
}

bool is_attribute_set_type(cTypeObj const &type) noexcept {
    return &type.type() == &cat::typetype_attlist();
}

objref choice_key_of(cObj const *object) {
    auto const *const choice = dynamic_cast<cIterObj const *>(object);
    return choice && is_choice_type(object->type()) ? choice->key() : objref();
}

// The library's assign ignores an unknown key.
void assign_choice(cObj &choice, objref const &x) {
    auto const *const other = dynamic_cast<cIterObj const *>(x.get());
    objref const wanted = other ? other->key() : x;
    bool const assigned = guarded([&] {
        if (cObj::is_void(wanted) || !wanted->type().is_keytype() || !choice.assign(wanted))
            return false;
        objref const key = choice_key_of(&choice);
        return key && key->equal(wanted);
    });
    if (!assigned)
        throw type_error({}, "a choice of type '" + choice.type().name() + "'",
                         description(value_of(x)));
}

namespace {

// Throws if the set has an equal value at another position: its setattr then returns true without
// storing.
void refuse_second(cObj &set, step key, objref const &stored) {
    objref keep;
    cObj *const present = entry_of(set, key, keep);
    if (!present || (present != stored.get() && !present->equal(stored)))
        throw error("the set has an equal value already");
}

} // namespace

bool is_writable(cObj const &object) { return has_method(object, mid_setattr); }

namespace {

// The object to store if an attribute of a declared type is set to x: for the key of a choice that
// choice, and for a number the same number with the attribute's wider type. RUNS USER CODE
objref fitted(objref const &owner, objref const &key, value const &x) {
    if (x.is_nil() || !is_attribute_set_type(owner->type())) return x.object();
    objref declared;
    {
        cat::CaughtErrors const ignored; // setattr reports a key that is not declared
        declared = owner->type().getattr(key);
    }
    auto const *const spec = dynamic_cast<cAttspec const *>(declared.get());
    typeref const wanted = spec ? typeref::share(spec->get_type()) : typeref();
    objref const &given = value_access::object(x);
    if (!wanted || &given->type() == wanted.get()) return given;
    if (objref const number = widened(given, *wanted)) return number;
    if (!is_choice_type(*wanted) || !given->type().is_keytype()) return given;
    objref const choice = guarded([&] { return wanted->newobj(); });
    if (cObj::is_bad(choice)) return given;
    assign_choice(*choice, given);
    return choice;
}

} // namespace

void write_entry(objref const &owner, step const &key, value const &x) {
    if (key.is == step::form::object && !(key.key && key.key->type().is_keytype()))
        throw type_error({}, "a key", description(value_of(key.key)));
    refuse_cycle(owner, x, 1);
    change_report report = report_of(owner, key, written::replaced);
    objref const name = key_object(key);
    objref const stored = fitted(owner, name, x);
    if (!guarded([&] { return owner->setattr(name, stored); })) refuse_entry(owner, x);
    if (owner->is_set()) refuse_second(*owner, key, stored);
    report.fire();
}

bool remove_entry(objref const &owner, step key) {
    if (!is_present(owner, key)) return false;
    change_report report = report_of(owner, key, written::erased);
    if (!guarded([&] { return owner->setattr(key_object(key), cat::badfind()); }))
        throw type_error("the entry can't be removed", 0);
    // If the type has a default, the value is now the default object itself: changing it would
    // change the type.
    if (cMapObj const *const map = cat::as_map(owner); map && owner->flags_of(asf_all) != 0)
        static_cast<void>(map->datamap().detach(key_object(key)));
    report.fire();
    return true;
}

bool append_value(objref const &owner, value const &x) {
    refuse_cycle(owner, x, 2);
    change_report report(owner, cat::as_map(owner)->size(), written::inserted);
    bool const appended = guarded([&] {
        if (owner->is_vector() && uses_library_method(*owner, mid_setattr))
            return cat::as_map(owner)->datamap().vect_append(x.object());
        return owner->append(x.object());
    });
    if (appended) report.fire();
    return appended;
}

void insert_value(objref const &owner, int position, value const &x) {
    refuse_cycle(owner, x, 2);
    change_report report(owner, position, written::inserted);
    if (!guarded([&] { return cat::as_map(owner)->datamap().vect_insert(position, x.object()); }))
        refuse_entry(owner, x);
    report.fire();
}

} // namespace qrv::detail
