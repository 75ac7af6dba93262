// The guard, and the values that exact text cannot represent.
//
// A guard only counts: the existing guards, and the values omitted in the whole process, of which
// each guard returns the difference. So guards nest without knowing each other.

#include "qrv/text/write/cexacttext.h"

#include "base/platform/cchars.h"
#include "core/cerr_object.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"
#include "text/state/ctext_state.h"
#include "text/write/cscalar_text.h"
#include "text/write/cwriter_exact.h"
#include "text/write/cwriter_form.h"

#include <cmath>
#include <string_view>

namespace {
constinit unsigned int all_failed = 0;
constinit cExactTables *the_tables = nullptr;
} // namespace

constinit unsigned int cTextForm::guards_ = 0;
constinit signed char cTextForm::forced_ = by_guards;

namespace cat {
ExactText::ExactText() noexcept : failed_before_(all_failed) { ++cTextForm::guards_; }
ExactText::~ExactText() { --cTextForm::guards_; }
unsigned int ExactText::failed() const noexcept { return all_failed - failed_before_; }
bool ExactText::active() noexcept { return cTextForm::guards_ > 0; }
} // namespace cat

cTextForm::cTextForm(bool exact) noexcept : before_(forced_) { forced_ = exact ? 1 : 0; }
cTextForm::~cTextForm() { forced_ = before_; }

cExactRun::cExactRun() : outermost_(!the_tables) {
    if (outermost_) the_tables = new cExactTables;
}
cExactRun::~cExactRun() {
    if (outermost_) delete std::exchange(the_tables, nullptr);
}
cExactTables *cExactRun::tables() noexcept { return the_tables; }

void cExactTables::enter(cObj const *obj) {
    entered.emplace_back(obj, obj->obid());
    forgotten.erase(obj);
    if (blind_keys)
        unreachable.insert(obj);
    else
        unreachable.erase(obj);
}

void cExactTables::forget_after(size_t count) {
    for (size_t i = count; i < entered.size(); ++i)
        forgotten.insert(entered[i].first, entered[i].second);
    entered.resize(count);
}

namespace {
void raise_unwritable(std::string const &path) {
    begin_error(err_not_writable) << cNamed::key(path);
    raise_eros();
}

// Whether the scanner reads the string as one identifier.
bool reads_as_ident(std::string const &text) {
    return cat::is_ident(text) && text != "true" && text != "false";
}

// "#name": an identifier other than the word for a back reference.
bool constant_writable(cAttrNode const &constant) {
    std::string const *const name = string_of(*constant.key());
    return name && cat::is_ident(*name) && *name != "cRef";
}

bool is_one_of(cTypeObj const *type, std::initializer_list<cTypeObj const *> types) {
    for (cTypeObj const *one : types)
        if (one == type) return true;
    return false;
}
} // namespace

void report_unwritable(std::string const &path) {
    if (cTextForm::forced_ != cTextForm::by_guards) return;
    ++all_failed;
    raise_unwritable(path);
}

void report_unwritable() { report_unwritable(text_state().shown_path(true)); }

void report_too_deep() {
    if (exact_text())
        report_unwritable();
    else
        raise_unwritable(text_state().shown_path(true));
}

bool exact_writable(cObj const &obj, bool lone) {
    if (lone && is_token(obj)) return has_token(obj);
    cAttrNode const *const constant = lone ? nullptr : cat::find_const(&obj);
    if (constant) return constant_writable(*constant);
    if (!obj.is_writable()) return false;
    if (!obj.typeflags_of(tf_bare) && !reads_as_ident(obj.type().name())) return false;
    return has_token(obj) && exact_declared(obj);
}

bool exact_key(objref const &key, bool lone) {
    return key && key->type().is_keytype() && exact_writable(*key, lone);
}

bool exact_path_key(objref const &key) {
    return is_one_of(&key->type(), {&cat::type_int(), &cat::type_string(), &cat::type_bool(),
                                    &cat::type_float(), &cat::type_double()}) ||
           cat::find_const(key.get());
}

bool exact_comment(std::string const &text) {
    std::string_view rest = text;
    for (;;) {
        while (!rest.empty() && is_white(rest.front())) rest.remove_prefix(1);
        if (rest.empty()) return true;
        bool const line = rest.substr(0, 2) == "//";
        if (!line && rest.substr(0, 2) != "/*") return false;
        size_t const end = line ? rest.find('\n') : rest.find("*/", 2);
        if (end == std::string_view::npos) return line;
        rest.remove_prefix(line ? end : end + 2);
    }
}
