#include "tools/qrv/rules/broken_rules.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/edit/cfingerprint.h"
#include "qrv/text/write/cwriter.h"
#include "tools/qrv/rules/ignored.h"
#include "tools/qrv/rules/suggestion.h"
#include "tools/qrv/verify/mismatch.h"

#include <algorithm>

namespace {

using qrv::edit::BrokenRule;
using qrv::edit::Rule;

std::string quoted_key(objref const &key) { return quoted(cat::as_string(key)); }

std::string name_of_key(objref const &key) {
    return key->type().name() + " " + cat::as_string(key);
}

// The key that is closest to an unknown one.
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

void cBrokenRules::report_all() {
    for (BrokenRule const &broken : qrv::edit::broken_rules(objref::share(&object_), type_))
        report(broken);
    auto const before = [](auto const &a, auto const &b) {
        return std::pair(a.line, a.column) < std::pair(b.line, b.column);
    };
    if (!std::is_sorted(found_.begin(), found_.end(), before))
        std::stable_sort(found_.begin(), found_.end(), before);
    for (cat::ReadError &error : found_) report_.keep(std::move(error));
    for (; counted_ > 0; --counted_) report_.keep({});
}

void cBrokenRules::report(BrokenRule const &broken) {
    if (broken.rule == Rule::required && entries_.empty() && !has_room(report_)) {
        ++counted_;
        return;
    }
    if (broken.rule == Rule::declared) return report_undeclared(broken.key);
    if (is_mistaken(broken.key)) return;
    if (broken.rule == Rule::required) report_void(broken.key);
    if (broken.rule == Rule::type) report_type(broken);
    if (broken.rule == Rule::fixed) report_fixed(broken);
}

void cBrokenRules::report_undeclared(objref const &key) {
    cSource::cEntry const *const entry = entry_of(key);
    add(entry ? entry->place : place_, key,
        "type " + name_of(type_) + " has no key " + quoted_key(key),
        has_room(report_) ? known_keys(type_, "attspec", cat::as_string(key)) : "");
}

void cBrokenRules::report_void(objref const &key) {
    cSource::cEntry const *const entry = entry_of(key);
    add(entry ? entry->place : place_, key,
        "required key " + quoted_key(key) + " of type " + name_of(type_) +
            (entry ? " is nil" : " is missing"));
}

void cBrokenRules::report_type(BrokenRule const &broken) {
    cSource::cEntry const *const entry = entry_of(broken.key);
    if (!entry && has_wrong_default(broken.key)) return;
    auto const &expected = static_cast<cTypeObj const &>(*broken.expected);
    add(entry ? entry->place : place_, broken.key,
        "key " + quoted_key(broken.key) + " of type " + name_of(type_) + " must be " +
            with_article(expected.name()) + ", not " +
            (broken.actual ? kind_of(broken.actual) : std::string("nothing")));
}

void cBrokenRules::report_fixed(BrokenRule const &broken) {
    cSource::cEntry const *const entry = entry_of(broken.key);
    bool const reported = std::exchange(unreadable_, true);
    std::string const why = "only the default itself is valid, and reading creates a copy";
    if (entry && qrv::edit::fingerprint(broken.actual) != qrv::edit::fingerprint(broken.expected))
        add(entry->place, broken.key,
            "key " + quoted_key(broken.key) + " of type " + name_of(type_) + " is fixed to " +
                shown(broken.expected) + ", not " + shown(broken.actual) +
                (reported ? "" : "; and no object of the type can be read: " + why));
    else if (!reported)
        add(place_, broken.key,
            "no object of type " + name_of(type_) + " can be read, because its key " +
                quoted_key(broken.key) + " is #FIXED: " + why);
}

// The last entry of this key, whose value counts.
cSource::cEntry const *cBrokenRules::entry_of(objref const &key) const {
    if (by_key_.empty()) return nullptr;
    auto const found = by_key_.find(name_of_key(key));
    return found == by_key_.end() ? nullptr : &entries_[found->second];
}

// Does the value have an error, or is it missing after its key?
bool cBrokenRules::is_mistaken(objref const &key) const {
    cSource::cEntry const *const entry = entry_of(key);
    return entry && (!entry->value || mistaken_.count(*entry->value) != 0);
}

// Does the declaration have an error about the type of its default?
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

cTypeObj const *known_type(std::string const &name) {
    cAttrNode const *const node = cat::typemap().datamap().find(name);
    return node ? dynamic_cast<cTypeObj const *>(node->valref().get()) : nullptr;
}

// --- parts of messages ---

bool has_room(cat::ReadReport const &report) { return report.count() < report.limit(); }

std::string declared_at(std::optional<cPlace> place) {
    return place ? ", declared at " + line_and_column(*place) : "";
}

std::string known_types(std::string const &unknown) {
    return closest(&cat::typemap().datamap(), unknown);
}

std::string known_keys(cTypeObj const &type, char const *member, std::string const &unknown) {
    objref const keys = type.tmember(member);
    auto const *const map = dynamic_cast<cMapObj const *>(keys.get());
    return closest(map ? &map->datamap() : nullptr, unknown);
}
