// Writes attribute specifications and the types created from them, and checks the objects of these
// types for exact text.
//
// The path of a default is that of its attspec and the key "default", as in the reader. So back
// references to parts of the default work.

#include "qrv/containers/cattrset.h"

#include "core/cpairs.h"
#include "core/ctext_hooks.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "text/state/cstream_of.h"
#include "text/state/ctext_state.h"
#include "text/write/cwriter_exact.h"
#include "text/write/cwriter_parts.h"
#include "text/write/cwriter_stream.h"

#include <algorithm>
#include <array>
#include <ostream>

namespace {

// False, without output, if the default can't be written exactly.
bool write_exact_default(std::ostream &os, cObj const &value) {
    cExactRun const run;
    cExactTables &tables = *cExactRun::tables();
    size_t const before = tables.entered.size();
    std::string text;
    cTextStream part(text);
    part.copyfmt(os);
    auto const write = [&part, &value] {
        cComposer out(part);
        return write_form(value, out); // RUNS USER CODE
    };
    if (exact_writable(value) && write() && !part.fail()) {
        os << "default=" << text << "; ";
        return true;
    }
    tables.forget_after(before);
    if (part.fail()) os.setstate(std::ios_base::failbit);
    report_unwritable();
    return false;
}

// DELIBERATE: plain text has no separator after a default, and no text for #IMPLIED.
// Pinned: a_default_is_written_without_a_separator,
// an_implied_attribute_without_a_type_is_an_empty_string
bool write_default(std::ostream &os, objref const &value) {
    cPathStep const step(own_key(std::string("default")));
    if (exact_text()) return write_exact_default(os, *value);
    os << "default=";
    value->writeobj(os); // RUNS USER CODE
    return true;
}

} // namespace

bool cTomAttspec::m_write(cObj &obj, objref &stream) {
    auto const *const spec = dynamic_cast<cAttspec const *>(&obj);
    std::ostream *const os = out_of(stream);
    if (!spec || !os) return false;
    objref const keep = objref::share(&obj);
    if (spec->is_fixtype()) {
        *os << "type=";
        cat::of(spec->get_type()->name())->writeobj(*os);
        *os << "; ";
    }
    bool const has_default = spec->is_default() && write_default(*os, spec->get_default());
    if (spec->is_required()) *os << "flag=#REQUIRED;";
    if (spec->is_fixref() && has_default) *os << "flag=#FIXED;";
    // This includes a default that was omitted: objects without the attribute can then be read.
    if (!spec->is_required() && !has_default && exact_text()) *os << "flag=#IMPLIED;";
    os->flush();
    return true;
}

bool cTomAttlist::m_write(cObj &type, objref &stream) {
    auto const *const attlist = dynamic_cast<cTypeObj const *>(&type);
    std::ostream *const os = out_of(stream);
    if (!attlist || !os) return false;
    objref const keep = objref::share(&type);
    objref const member = attlist->tmember("attspec");
    auto const *const specs = dynamic_cast<cMapObj const *>(member.get());
    cComposer out(*os);
    out.begin();
    if (specs) write_entries(*specs->datamap_ref(), out, layout_of(type, out), nullptr, &type);
    out.flush();
    return true;
}

// --- exact text ---

namespace {

// The keys that a type declares, with their specifications.
cPairs declared_by(cTypeObj const &type) {
    objref const member = type.tmember("attspec");
    auto const *const specs = dynamic_cast<cMapObj const *>(member.get());
    cPairs pairs = specs ? pairs_of(specs->datamap()) : cPairs();
    std::erase_if(
        pairs, [](auto const &pair) { return !dynamic_cast<cAttspec const *>(pair.second.get()); });
    return pairs;
}

bool is_same_key(objref const &a, objref const &b) {
    return &a->type() == &b->type() && a->type().hasheq(a, b);
}

bool is_scalar(objref const &value) {
    std::array const types = {&cat::type_string(), &cat::type_int(), &cat::type_bool(),
                              &cat::type_float(), &cat::type_double()};
    return std::find(types.begin(), types.end(), &value->type()) != types.end();
}

// Whether the reader would restore the value of this key. The reader assigns the value to a copy of
// the type's current default; if the default isn't a scalar, parts of it can remain. This value was
// assigned in the same way to the default that the type had when the set was created, so the two
// defaults must be equal.
bool is_restored(cAttspec const &spec, cMapObj const &set, objref const &key, objref const &value) {
    if (spec.is_fixref()) return false; // a value that is read is another object
    objref const now = spec.get_default();
    if (!now) return true;
    if (cObj::is_void(value) || &value->type() != &now->type()) return false;
    if (is_scalar(value)) return true;
    objref const own = set.omember(key);
    auto const *const made_with = dynamic_cast<cAttspec const *>(own.get());
    objref const former = made_with ? made_with->get_default() : objref();
    return former && former->equal(now); // RUNS USER CODE
}

bool is_read_by_library(cTypeObj const &type) {
    auto const read = reinterpret_cast<cVoidFunction>(text_hooks.attrset.read);
    return &type.type() == &cat::typetype_attlist() && type.method(mid_read) == read;
}

// Whether the type currently declares these keys, in this order, and accepts these values.
bool accepts(cTypeObj const &type, cMapObj &set) {
    cPairs const entries = pairs_of(set.datamap()), declared = declared_by(type);
    auto const reads = [&set](auto const &entry, auto const &declaration) {
        auto const &spec = static_cast<cAttspec const &>(*declaration.second);
        return is_same_key(entry.first, declaration.first) &&
               is_restored(spec, set, entry.first, entry.second);
    };
    return std::equal(entries.begin(), entries.end(), declared.begin(), declared.end(), reads) &&
           cTomAttrset::validate(set); // RUNS USER CODE
}

} // namespace

bool exact_declared(cObj const &obj) {
    if (&obj.type() == &cat::type_attspec()) {
        auto const *const spec = dynamic_cast<cAttspec const *>(&obj);
        return spec && (!spec->is_fixtype() || !spec->get_type()->name().empty());
    }
    if (!is_read_by_library(obj.type())) return true;
    objref const keep = objref::share(const_cast<cObj *>(&obj));
    auto *const set = dynamic_cast<cMapObj *>(keep.get());
    return set && accepts(obj.type(), *set);
}

bool exact_needs(cObj const &holder, objref const &key) {
    for (auto const &[declared, spec] : declared_by(holder.type()))
        if (is_same_key(declared, key)) return static_cast<cAttspec const &>(*spec).is_required();
    return false;
}
