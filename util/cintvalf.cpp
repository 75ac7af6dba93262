// The objects of the type "intf", and the type. Its methods find an object's format by casting to
// cIntFormat, a base of cIntValF and cIntRefF. An object of another class with the type "intf" has
// no format: it supports arithmetic, but neither writing nor reading.
//
// Reading a written number, if it has no blanks, and writing it again gives the same text. The
// format may change to another one with the same text: 0x10 has no letter, so a new object reads it
// as fmtHEX, and the text of an unknown format is read as fmtDec.

#include "qrv/util/cintvalf.h"

#include "core/cscalar.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cexe.h"
#include "text/read/ctext_methods.h"
#include "text/write/cwriter_exact.h"
#include "util/cintf_type.h"

#include <algorithm>
#include <cstdint>
#include <istream>
#include <memory>
#include <ostream>
#include <typeinfo>
#include <utility>

namespace {
constinit typeref *held_type = nullptr; // created on first use, released by the tear-down

cIntFormat *format_of(cObj &obj) { return dynamic_cast<cIntFormat *>(&obj); }

// Null if the object only claims to have a number.
int const *number_of(cObj const *obj) { return cat::value_in<int>(obj); }

// --- methods ---

objref newobj(objref) { return make<cIntValF>(0); }

bool assign(cObj &obj, objref &source) {
    cIntFormat *const to = format_of(obj);
    cIntFormat const *const from = source ? format_of(*source) : nullptr;
    if (!to || !from || &obj.type() != &source->type()) return cat::assign_int(obj, source);
    *to = *from;
    return true;
}

bool fits(std::uint32_t bits, cIntFormat::Format format) {
    if (format == cIntFormat::fmtBin8) return bits <= 0xFF;
    return format != cIntFormat::fmtBin16 || bits <= 0xFFFF;
}

// A binary form gets enough bits for the whole number, and no blanks, since the reader reads one
// word.
std::string exact_text_of(cIntFormat const &value) {
    int number = value.value();
    cIntFormat wider(number, value.format());
    while (!fits(static_cast<std::uint32_t>(number), wider.format()))
        wider.set_format(static_cast<cIntFormat::Format>(wider.format() + 1));
    std::string text = wider.str();
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    return text;
}

bool write(cObj &obj, objref &stream) {
    cIntFormat const *const value = format_of(obj);
    auto const *const holder = dynamic_cast<cOutHolder const *>(stream.get());
    if (!value || !holder || !holder->valptr()) return false;
    std::ostream &os = holder->val();
    os << (exact_text() ? exact_text_of(*value) : value->str()) << std::flush;
    return !os.bad();
}

// Rejects strings with a NUL, since set_str would ignore their rest.
bool set_whole(cIntFormat &value, std::string const &text) {
    return text.find('\0') == std::string::npos && value.set_str(text.c_str());
}

bool read(cObj &obj, objref &stream) {
    cIntFormat *const value = format_of(obj);
    auto const *const holder = dynamic_cast<cInHolder const *>(stream.get());
    if (!value || !holder || !holder->valptr()) return false;
    std::string word;
    if (!(holder->val() >> word)) return false;
    if (word.front() == '"') word = word.size() < 2 ? "" : word.substr(1, word.size() - 2);
    return set_whole(*value, word);
}

// --- converters ---

// All or nothing: cIntFormat::set_str may change the format and then fail.
bool from_string(cObj &obj, objref &source) {
    auto const *const text = cat::value_in<std::string>(source);
    int *const target = cat::value_to_change<int>(&obj);
    if (!text || !target) return false;
    cIntFormat *const value = format_of(obj);
    int number = *target;
    cIntFormat trial(number, value ? value->format() : cIntFormat::fmtDec);
    if (!set_whole(trial, *text)) return false;
    if (value)
        *value = trial;
    else
        *target = number;
    return true;
}

bool from_int(cObj &obj, objref &source) {
    int *const to = cat::value_to_change<int>(&obj);
    int const *const from = number_of(source);
    if (to && from) *to = *from;
    return to && from;
}

// --- keys ---

bool same_number(objref const &a, objref const &b) {
    if (&a->type() != &b->type()) return false;
    int const *const left = number_of(a);
    int const *const right = number_of(b);
    return left && right ? *left == *right : a == b;
}

void setup_intf(cTypeObj &type) {
    type.inherit(cat::type_int());
    type.inherit_converters(cat::type_int());
    type.set_converter(cat::type_string(), from_string);
    type.set_converter(cat::type_int(), from_int);
    type.set_tmember("newobj", make<cExeMember>(newobj));
    type.set_tmember("assign", make<cExeMember>(assign));
    type.set_tmember("write", make<cExeMember>(write));
    type.set_tmember("read", make<cExeMember>(read));
    cat::read_intf = read;
    type.set_hash(cat::hash_int, same_number);
}

typeref const &the_type() {
    core_bootstrap();
    if (!held_type) held_type = new typeref(typeref::adopt(new cTypeObj("intf", setup_intf)));
    return *held_type;
}
} // namespace

// --- the type ---

cTypeObj &cat::type_intf() {
    if (held_type) return **held_type;
    typeref const &type = the_type();
    if (cObj::is_kill(typemap().datamap().getitem("intf"))) cTypeInsert::insert(type, false);
    return *type;
}

bool cat::is_intf_type(cObj const *type) { return held_type && held_type->get() == type; }

bool cat::drop_intf_type() {
    if (!held_type) return false;
    std::unique_ptr<typeref> const type(std::exchange(held_type, nullptr));
    cAttrHash &types = typemap().datamap();
    if (types.getitem("intf") == *type) types.delitem("intf");
    return true; // RE-ENTERS
}

cIntfTypeCtor::cIntfTypeCtor() {
    core_bootstrap();
    entry_ =
        cRepoImpl::create(cRepoImpl::get(typeid(cTypeCtor)), "intf", static_cast<cTypeCtor *>(this),
                          typeid(cTypeCtor), typeid(cIntfTypeCtor), "an int that keeps its format");
}

cIntfTypeCtor::~cIntfTypeCtor() { cRepoImpl::release(entry_); }

typeref cIntfTypeCtor::make() { return the_type(); }

// --- the objects ---

cIntValF::cIntValF(int number, Format format)
    : cObjD<int>(number, &cat::type_intf()), cIntFormat(val(), format) {
    create();
}

cIntValF::cIntValF(cIntValF const &other)
    : cObjD<int>(other.val(), &other.type()), cIntFormat(val(), other.format()) {
    if (other.flags_of(of_const)) setflags(of_const);
    create();
}

cIntValF &cIntValF::operator=(cIntValF const &other) {
    cObj::assign(other);
    return *this;
}

cIntValF::~cIntValF() = default;

cIntRefF::cIntRefF(int &number, Format format)
    : cObjDR<int>(&cat::type_intf()), cIntFormat(number, format) {
    cObjDR<int>::value_ = &number;
    create();
}

cIntRefF::cIntRefF(cIntRefF const &other)
    : cObjDR<int>(&other.type()), cIntFormat(*other.cObjDR<int>::value_, other.format()) {
    cObjDR<int>::value_ = other.cObjDR<int>::value_;
    if (other.flags_of(of_const)) setflags(of_const);
    create();
}

cIntRefF &cIntRefF::operator=(cIntRefF const &other) {
    cObj::assign(other);
    return *this;
}

cIntRefF::~cIntRefF() = default;
