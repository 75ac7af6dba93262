#include "tools/qrv/rules/rules.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"
#include "qrv/util/cintvalf.h"
#include "tools/qrv/rules/broken_rules.h"
#include "tools/qrv/rules/ignored.h"
#include "tools/qrv/rules/mistakes.h"
#include "tools/qrv/rules/suggestion.h"
#include "tools/qrv/verify/mismatch.h"

namespace {

using cat::ErrorKind;

// Is the error about a value, or a key, of a type that could not be read?
bool is_unread(cat::ReadError const &error) {
    return error.kind == ErrorKind::read_value || error.kind == ErrorKind::read_key;
}

} // namespace

cRules::cRules(std::string const &bytes, cat::ReadReport &report, std::string path)
    : source_(bytes), report_(report), path_(std::move(path)) {
    report_.watch(this);
}

cRules::~cRules() { report_.watch(nullptr); }

void cRules::report_ignored(cPlace end) {
    if (mistaken_.empty()) source_.reader_showed_all();
    ::report_ignored(source_, end, mistaken_, report_);
}

// Drops an error about a value. The reader reports errors inside a value before the error about the
// value, so all known errors after the value's position are inside it.
void cRules::leave_out(cat::ReadError error) {
    if (mistaken_.lower_bound(place_of(error)) != mistaken_.end()) return;
    std::string const type = source_.type_at(place_of(error)).value_or("");
    if (left_out_[type]++ < report_.limit()) unexplained_.push_back({type, std::move(error)});
}

// Declarations come before their objects, so one pass in the order of the file is enough.
void cRules::report_unexplained() {
    if (unexplained_.empty()) return;
    std::set<cPlace> explained;
    for (cat::ReadError const &error : report_.entries()) explained.insert(place_of(error));
    for (auto &[type, error] : std::exchange(unexplained_, {})) {
        bool const follows = source_.has_in_declaration(type, explained);
        explained.insert(place_of(error));
        if (!follows && has_room(report_)) report_.keep(std::move(error));
    }
}

void cRules::invalid(cObj &object) { invalid_ = objref::share(&object); }

bool cRules::error(cat::ReadError &error) {
    cat::ReadError const as_read = error;
    size_t const count = report_.count();
    bool const kept = explain(error);
    if (!kept && report_.count() == count) leave_out(as_read);
    mistaken_.insert(place_of(error));
    return kept;
}

bool cRules::explain(cat::ReadError &error) {
    if (objref const object = std::exchange(invalid_, nullptr)) {
        reported_ = place_of(error);
        error.path = path_ + error.path;
        cBrokenRules(*object, error, source_, mistaken_, report_).report_all();
        return false;
    }
    if (is_reported(error)) return false;
    if (error.kind == ErrorKind::read_container && place_of(error) < reported_) {
        reported_ = place_of(error); // an error inside the value is reported
        return false;
    }
    if (is_unread(error)) return report_failed(error, error.names.type);
    if (error.kind == ErrorKind::read_value_unknown || error.kind == ErrorKind::read_key_unknown)
        return report_unknown_type(error, error.names.type);
    if (error.kind == ErrorKind::read_type_name) report_other_metatype(error);
    if (error.kind == ErrorKind::attspec_entry) report_unknown_type_of_key(error);
    return true;
}

// Is this another error about a value whose mistake was reported?
bool cRules::is_reported(cat::ReadError const &error) const {
    return place_of(error) == reported_ &&
           (is_unread(error) || error.kind == ErrorKind::cannot_insert);
}

bool cRules::has_error_inside(cPlace value) const {
    return mistaken_.upper_bound(value) != mistaken_.end();
}

// Handles a typed value that can't be read. For declarations and objects of declared types, reports
// the error inside, or else an error for this kind of value.
bool cRules::report_failed(cat::ReadError &error, std::string const &name) {
    cTypeObj const *const type = known_type(name);
    if (!type) return true;
    cPlace const place = place_of(error);
    bool const declares = type == &cat::typetype_attlist() || type == &cat::typetype_choice();
    bool const is_set = &type->type() == &cat::typetype_attlist();
    bool const is_choice = &type->type() == &cat::typetype_choice();
    if (declares) source_.failed(place);
    bool const is_number = name == "intf" && type == &cat::type_intf();
    if (!declares && !is_set && !is_choice && !is_number && type != &cat::type_attspec())
        return true;
    reported_ = place;
    if (has_error_inside(place)) return false;
    if (!has_room(report_)) return true;
    if (is_number) error.text = no_formatted_number(place);
    if (is_choice) error.text = unknown_choice(error, *type);
    if (is_set)
        error.text = "type " + shortened(name) + " has no keys: its objects are empty, such as " +
                     shortened(name) + "()";
    if (type == &cat::typetype_choice())
        error.text = "a choice type needs choices: choice({a= 1; b= 2;})";
    if (type == &cat::type_attspec())
        error.text = "an empty attspec cannot be read: attspec(flag= #IMPLIED) accepts any value";
    return true;
}

std::string cRules::unknown_choice(cat::ReadError const &error, cTypeObj const &type) {
    std::string const name = shortened(type.name());
    std::optional<cPlace> const declared = source_.declared(type.name(), place_of(error));
    objref const choices = type.tmember("choices");
    if (!dynamic_cast<cMapObj const *>(choices.get()))
        return "type " + name + " has no choices: declare them as choice({a= 1; b= 2;})" +
               declared_at(declared);
    std::optional<std::string> const key = source_.argument(place_of(error));
    std::string const what = key ? quoted(*key) : "this";
    return what + " is not a choice of type " + name + declared_at(declared) +
           (key ? known_keys(type, "choices", *key) : "");
}

std::string cRules::no_formatted_number(cPlace place) const {
    std::string what;
    for (cSource::cWord const &word : source_.words(place))
        what += (what.empty() ? "" : " ") + word.text;
    return formatted_numbers + (what.empty() ? std::string(", and the brackets are empty")
                                             : ", not " + shortened(what));
}

// If the declaration of the type has an error, only that error is reported.
bool cRules::report_unknown_type(cat::ReadError &error, std::string const &name) {
    if (source_.has_failed(name, place_of(error))) {
        reported_ = place_of(error);
        return false;
    }
    if (has_room(report_)) error.text += known_types(name);
    return true;
}

// A declaration cannot change the kind of an existing type.
void cRules::report_other_metatype(cat::ReadError &error) {
    cPlace const place = place_of(error);
    source_.failed(place);
    std::optional<std::string> const name =
        has_room(report_) ? source_.declared_name(place) : std::nullopt;
    cTypeObj const *const type = name ? known_type(*name) : nullptr;
    if (!type) return;
    error.text += " '" + shortened(*name) + "' is " + with_article(type->type().name()) +
                  " already" + declared_at(source_.declared(*name, place)) +
                  ": choose another name";
}

// Reports the position and the wrong name; the next error is about the whole specification.
void cRules::report_unknown_type_of_key(cat::ReadError &error) {
    reported_ = place_of(error);
    if (!has_room(report_)) return;
    for (cSource::cEntry const &entry : source_.entries(place_of(error))) {
        if (cat::as_string(entry.key) != "type" || !entry.value) continue;
        error.line = entry.value->line;
        error.column = entry.value->column;
        error.text += known_type(entry.text) ? ": write the name of the type without brackets"
                                             : ": unknown type '" + shortened(entry.text) + "'" +
                                                   known_types(entry.text);
    }
}
