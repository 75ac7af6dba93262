#include "tools/qrv/rules/broken_rules.h"

#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"
#include "tools/qrv/rules/ignored.h"
#include "tools/qrv/rules/suggestion.h"
#include "tools/qrv/verify/fingerprint.h"
#include "tools/qrv/verify/mismatch.h"

#include <algorithm>

namespace {

std::string quoted(objref const &key) { return '\'' + shortened(cat::as_string(key)) + "'"; }

std::string name_of_key(objref const &key) {
    return key->type().name() + " " + cat::as_string(key);
}

// Among the keys.
std::string closest(cAttrHash const *hash, std::string const &unknown) {
    cSuggestion suggestion(unknown);
    cAttrNode const *node = hash ? hash->first() : nullptr;
    for (; node && suggestion.wants_more(); node = hash->next(node))
        suggestion.show(node->key_as_string());
    return suggestion.text();
}

std::string name_of(cTypeObj const &type) { return shortened(type.name()); }

} // namespace

cBrokenRules::cBrokenRules(cObj &object, cat::ReadError const &error, cSource &source,
                           std::set<cPlace> const &mistaken, cat::ReadReport &report)
    : object_(object), type_(object.type()), error_(error), place_{error.line, error.column},
      source_(source), mistaken_(mistaken), report_(report), entries_(source.entries(place_)) {
    for (size_t i = 0; i < entries_.size(); ++i) by_key_[name_of_key(entries_[i].key)] = i;
}

void cBrokenRules::tell() {
    auto const *const map = dynamic_cast<cMapObj const *>(&object_);
    if (!map) return;
    cAttrHash const &hash = map->datamap();
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node))
        test(node->key(), node->valref());
    std::stable_sort(found_.begin(), found_.end(), [](auto const &a, auto const &b) {
        return std::pair(a.line, a.column) < std::pair(b.line, b.column);
    });
    for (cat::ReadError &error : found_) report_.keep(std::move(error));
}

// As the library's own test goes, but to its end.
void cBrokenRules::test(objref const &key, objref const &value) {
    objref const declared = type_.getattr(key);
    auto const *const spec = dynamic_cast<cAttspec const *>(declared.get());
    if (!spec) return tell_undeclared(key);
    if (spec->is_required() && cObj::is_void(value)) return tell_void(key);
    cTypeObj const *const type = spec->get_type();
    if (type && value != cat::nil() && (!value || &value->type() != type))
        return tell_type(key, *type, value);
    if (spec->is_fixref() && value != spec->get_default())
        tell_fixed(key, value, spec->get_default());
}

void cBrokenRules::tell_undeclared(objref const &key) {
    cSource::cEntry const *const entry = entry_of(key);
    add(entry ? entry->place : place_, key, "type " + name_of(type_) + " has no key " + quoted(key),
        has_room(report_) ? known_keys(type_, "attspec", cat::as_string(key)) : "");
}

void cBrokenRules::tell_void(objref const &key) {
    if (is_mistaken(key)) return;
    cSource::cEntry const *const entry = entry_of(key);
    add(entry ? entry->place : place_, key,
        "required key " + quoted(key) + " of type " + name_of(type_) +
            (entry ? " is nil" : " is missing"));
}

void cBrokenRules::tell_type(objref const &key, cTypeObj const &expected, objref const &value) {
    if (is_mistaken(key)) return;
    cSource::cEntry const *const entry = entry_of(key);
    if (!entry && has_wrong_default(key)) return;
    add(entry ? entry->place : place_, key,
        "key " + quoted(key) + " of type " + name_of(type_) + " must be " +
            with_article(expected.name()) + ", not " +
            (value ? kind_of(value) : std::string("nothing")));
}

void cBrokenRules::tell_fixed(objref const &key, objref const &value, objref const &fixed) {
    if (is_mistaken(key)) return;
    cSource::cEntry const *const entry = entry_of(key);
    bool const told = std::exchange(unreadable_, true);
    std::string const why = "only the default itself will do, and a text gives a copy";
    if (entry && image_of(value) != image_of(fixed))
        add(entry->place, key,
            "key " + quoted(key) + " of type " + name_of(type_) + " is fixed to " + shown(fixed) +
                ", not " + shown(value) +
                (told ? "" : "; and no object of the type can be read: " + why));
    else if (!told)
        add(place_, key,
            "no object of type " + name_of(type_) + " can be read, for its key " + quoted(key) +
                " is #FIXED: " + why);
}

// The last one of that key, which decides.
cSource::cEntry const *cBrokenRules::entry_of(objref const &key) const {
    auto const found = by_key_.find(name_of_key(key));
    return found == by_key_.end() ? nullptr : &entries_[found->second];
}

// Was the value told to be wrong, or missing behind its key?
bool cBrokenRules::is_mistaken(objref const &key) const {
    cSource::cEntry const *const entry = entry_of(key);
    return entry && (!entry->value || mistaken_.count(*entry->value) != 0);
}

// Is the type of its default told at the declaration?
bool cBrokenRules::has_wrong_default(objref const &key) const {
    std::optional<cPlace> const spec = source_.specified(type_.name(), key, place_);
    return spec && wrong_default(source_, source_.entries(*spec));
}

void cBrokenRules::add(cPlace place, objref const &key, std::string const &text,
                       std::string const &hint) {
    cat::ReadError error;
    error.file = error_.file;
    error.line = place.line;
    error.column = place.column;
    error.code = error_.code;
    if (has_room(report_)) {
        error.path = error_.path + "/" + cat::as_text(key);
        std::optional<cPlace> const declared = source_.declared(type_.name(), key, place_);
        error.text = text + ", path " + shortened(error.path) +
                     declared_at(declared ? declared : source_.declared(type_.name(), place_)) +
                     hint;
    }
    found_.push_back(std::move(error));
}

// --- pieces of messages ---

bool has_room(cat::ReadReport const &report) { return report.count() < report.limit(); }

std::string shown(cPlace place) {
    return std::to_string(place.line) + ":" + std::to_string(place.column);
}

std::string declared_at(std::optional<cPlace> place) {
    return place ? ", declared at " + shown(*place) : "";
}

std::string known_types(std::string const &unknown) {
    return closest(&cat::typemap().datamap(), unknown);
}

std::string known_keys(cTypeObj const &type, char const *member, std::string const &unknown) {
    objref const keys = type.tmember(member);
    auto const *const map = dynamic_cast<cMapObj const *>(keys.get());
    return closest(map ? &map->datamap() : nullptr, unknown);
}
