// Type objects: construction, the standard method table and its calls, converters, key hooks.

#include "qrv/core/ctypeobj.h"

#include "core/cerr_object.h"
#include "core/cregistry.h"
#include "core/cscalar.h"
#include "core/ctext_hooks.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"

#include <cstring>
#include <iterator>
#include <ostream>
#include <string_view>
#include <type_traits>

namespace {

// Creating a type with one of these names does not start the bootstrap. The bootstrap itself
// creates all of them except "unsigned", which only programs create.
#define QRV_NAME(name, accessor, text) text,
constexpr char const *builtin_names[] = {QRV_CORE_TYPES(QRV_NAME) "unsigned"};
#undef QRV_NAME

bool is_builtin_name(std::string const &name) {
    for (char const *builtin : builtin_names)
        if (name == builtin) return true;
    return false;
}

bool create_default(cObj &) { return true; }

bool equal_default(cObj &a, objref &b) { return b == &a; }

objref iterobj_default(objref) { return cat::bad(); }

// The three methods that make string objects usable before members exist. Types of executables and
// type types keep them, since their objects have no value to assign.
objref raw_newobj(objref) { return make<cObjD<std::string>>(); }

bool raw_assign(cObj &obj, objref &source) {
    if (source == &obj) return true;
    bool const are_strings = cat::value_in<std::string>(&obj) && cat::value_in<std::string>(source);
    return are_strings && cat::assign_string(obj, source);
}

} // namespace

cTypeObj::cTypeObj(char const *name, setup_function setup) : cObj(false), tmmap_(this) {
    begin_construction(name);
    if (core.core_ready)
        ctor_internal(&cat::typetype(), setup);
    else
        install_raw_string_methods();
}

cTypeObj::cTypeObj(setup_function setup) : cObj(false), tmmap_(this) {
    begin_construction(nullptr);
    if (core.core_ready) ctor_internal(&cat::typetype(), setup);
}

cTypeObj::cTypeObj(cTypeObj *metatype, char const *name, setup_function setup)
    : cObj(metatype ? metatype : &cat::typetype()), tmmap_(this) {
    begin_construction(name);
    install_default_methods();
    if (metatype && metatype != core.niltype) metatype->pexec(mid_create, *this);
    if (setup) setup(*this);
}

cTypeObj::~cTypeObj() {
    if (counts_) --core.counting_types;
    tmmap_.clear();
}

void cTypeObj::count_objects() noexcept {
    if (!std::exchange(counts_, true)) ++core.counting_types;
}

// If nothing else owns the type, its last object destroys it.
void cTypeObj::leave_object() {
    if (--objects_ == 0 && refs() == 0) cRefTraits<cObj>::destroy(this);
}

void cTypeObj::begin_construction(char const *name) {
    if (name) name_ = name;
    if (!core.nil && !is_builtin_name(name_)) core_bootstrap();
    setflags(of_type);
    if (name_ == "string") set_hash(cat::hash_string, cat::heq_string);
    if (name_ == "int" || name_ == "unsigned") set_hash(cat::hash_int, cat::heq_int);
}

void cTypeObj::ctor_internal(cTypeObj *metatype, setup_function setup) {
    if (metatype) set_type(metatype);
    install_default_methods();
    if (setup) setup(*this);
}

void cTypeObj::install_default_methods() {
    set_tmember("create", make<cExeMember>(create_default));
    set_tmember("write", make<cExeMember>(text_hooks.voiddata.write));
    set_tmember("read", make<cExeMember>(text_hooks.voiddata.read));
    set_tmember("equal", make<cExeMember>(equal_default));
    set_tmember("iterobj", make<cExeMember>(iterobj_default));
}

void cTypeObj::install_raw_string_methods() {
    methods_[mid_newobj] = reinterpret_cast<cVoidFunction>(static_cast<cFunction1>(raw_newobj));
    methods_[mid_create] =
        reinterpret_cast<cVoidFunction>(static_cast<cProcedure1>(create_default));
    methods_[mid_assign] = reinterpret_cast<cVoidFunction>(static_cast<cProcedure2>(raw_assign));
}

namespace {

struct cMethod {
    char const *name;
    unsigned int c;
    bool p;
};

template <class Result, class... Arguments>
constexpr cMethod method_of(char const *name, Result (*)(Arguments...)) {
    return {name, sizeof...(Arguments), std::is_same_v<Result, bool>};
}

#define QRV_METHOD(method, prototype) method_of(#method, static_cast<prototype>(nullptr)),
constexpr cMethod methods[] = {QRV_METHODS(QRV_METHOD)};
#undef QRV_METHOD

static_assert(std::size(methods) == mid_count);
#define QRV_METHOD(method, prototype)                                                              \
    static_assert(std::string_view(methods[mid_##method].name) == #method);
QRV_METHODS(QRV_METHOD)
#undef QRV_METHOD

// The list of prototypes has for each function type its number of arguments, and whether it returns
// bool.
#define QRV_PROTO(type, arguments, procedure)                                                      \
    static_assert(method_of("", static_cast<type>(nullptr)).c == (arguments) &&                    \
                  method_of("", static_cast<type>(nullptr)).p == (procedure));
QRV_PROTOTYPES(QRV_PROTO)
#undef QRV_PROTO

} // namespace

std::string const &cTypeObj::name_of(int id) {
    // Never destroyed: static objects of clients may use it at any time.
    static std::string const *const names = [] {
        auto *const made = new std::string[mid_count + 1];
        for (int i = 0; i < mid_count; ++i) made[i] = methods[i].name;
        made[mid_count] = "UNKNOWN METHOD";
        return made;
    }();
    return names[id < 0 || id >= mid_count ? mid_count : id];
}

bool cTypeObj::is_stdmethod(std::string const &name, method_id &id) {
    for (int i = 0; i < mid_count; ++i) {
        if (name != methods[i].name) continue;
        id = static_cast<method_id>(i);
        return true;
    }
    return false;
}

bool cTypeObj::validate_exe(int id, cExeFunction const &exe, char const *type_name) {
    bool const known = id >= 0 && id < mid_count;
    if (known && exe.s() && exe.c() == methods[id].c && exe.p() == methods[id].p) return true;
    begin_error(err_method_prototype)
        << cNamed::name(name_of(id))
        << "'  has bad prototype in object type: " << cNamed::type(type_name ? type_name : "");
    raise_eros();
    return false;
}

objref cTypeObj::newobj() const {
    return oexec(mid_newobj, objref::share(const_cast<cTypeObj *>(this)));
}

bool cTypeObj::missing_method(method_id id) const {
    begin_error(err_missing_method)
        << cNamed::name(name_of(id)) << "' in type: " << cNamed::type(name_);
    return raise_eros();
}

// A stored function always has the prototype of its method, which validate_exe() checks. So each
// cast below restores the function's own type.

bool cTypeObj::pexec(method_id id, cObj &a) const {
    cVoidFunction const f = methods_[id];
    return f ? reinterpret_cast<cProcedure1>(f)(a) : missing_method(id);
}

bool cTypeObj::pexec(method_id id, cObj &a, objref &b) const {
    cVoidFunction const f = methods_[id];
    return f ? reinterpret_cast<cProcedure2>(f)(a, b) : missing_method(id);
}

bool cTypeObj::pexec(method_id id, cObj &a, objref &b, objref &c) const {
    cVoidFunction const f = methods_[id];
    return f ? reinterpret_cast<cProcedure3>(f)(a, b, c) : missing_method(id);
}

objref cTypeObj::oexec(method_id id, objref a) const {
    cVoidFunction const f = methods_[id];
    if (f) return reinterpret_cast<cFunction1>(f)(std::move(a));
    return missing_method(id) ? cat::nil() : cat::bad();
}

objref cTypeObj::oexec(method_id id, objref a, objref b) const {
    cVoidFunction const f = methods_[id];
    if (f) return reinterpret_cast<cFunction2>(f)(std::move(a), std::move(b));
    return missing_method(id) ? cat::nil() : cat::bad();
}

void cTypeObj::set_converter(cTypeObj &source, converter_function function) {
    if (function)
        converters_[&source] = {function, source.counts_objects() ? source.obid() : 0};
    else
        converters_.erase(&source);
}

cTypeObj::converter_function cTypeObj::converter(cTypeObj &source) const {
    auto const found = converters_.find(&source);
    if (found == converters_.end()) return nullptr;
    auto const &[function, source_id] = found->second;
    return source_id == 0 || source_id == source.obid() ? function : nullptr;
}

void cTypeObj::inherit_converters(cTypeObj const &base) {
    for (auto const &[source, converter] : base.converters_) converters_[source] = converter;
}

void cTypeObj::set_hash(hash_function hash, heq_function heq) noexcept {
    if (hash_ || heq_) return;
    hash_ = hash;
    heq_ = heq;
}

namespace cat {

namespace {

constexpr std::uint32_t hash_with(std::uint32_t hash, unsigned char byte) noexcept {
    return (hash * 31) ^ byte;
}

// The hash of bytes that fill one to two words. The lengths of keys vary, so a processor often
// mispredicts the end of a loop over their bytes. This loop has a fixed length: it computes the
// hash of each prefix, and the function returns that of the whole.
template <class Word> std::uint32_t hash_few_bytes(char const *from, size_t count) noexcept {
    constexpr size_t width = sizeof(Word);
    unsigned char bytes[2 * width] = {};
    std::memcpy(bytes + count - width, from + count - width, width);
    std::memcpy(bytes, from, width);
    std::uint32_t hash = 0, hashes[2 * width];
    for (size_t i = 0; i < 2 * width; ++i) hashes[i] = hash = hash_with(hash, bytes[i]);
    return hashes[count - 1];
}

} // namespace

unsigned int hash_bytes(char const *bytes, size_t count) noexcept {
    if (count >= 8 && count <= 16) return hash_few_bytes<std::uint64_t>(bytes, count);
    if (count >= 4 && count < 8) return hash_few_bytes<std::uint32_t>(bytes, count);
    std::uint32_t h = 0;
    for (size_t i = 0; i < count; ++i) h = hash_with(h, static_cast<unsigned char>(bytes[i]));
    return h;
}

namespace {

template <class T> unsigned int hash_value_bytes(objref const &ref) {
    T const *const value = value_in<T>(ref);
    if (!value) return 0;
    char bytes[sizeof(T)];
    std::memcpy(bytes, value, sizeof(T));
    return hash_bytes(bytes, sizeof(T));
}

template <class T> bool equal_value(T const &a, T const &b) { return a == b; }

// DELIBERATE: a NaN is neither less nor greater, so it equals every key it is compared with.
//   Pinned: a_nan_key_equals_every_key
template <class T> bool same_number(T const &a, T const &b) { return !(a < b) && !(a > b); }

// set_type() lets any object claim a type. An object of the type `type` without a T equals only
// itself.
template <class T, bool (*same)(T const &, T const &)>
bool heq(objref const &a, objref const &b, cTypeObj const *type) {
    if (&b->type() != type) return false;
    T const *const left = value_in<T>(a);
    T const *const right = value_in<T>(b);
    return left && right ? same(*left, *right) : a == b;
}

} // namespace

unsigned int hash_string(objref const &value) {
    auto const *const text = value_in<std::string>(value);
    return text ? hash_bytes(text->c_str(), std::strlen(text->c_str())) : 0; // a NUL ends it
}

bool heq_string(objref const &a, objref const &b) {
    return heq<std::string, equal_value>(a, b, core.string);
}

unsigned int hash_int(objref const &value) {
    int const *const number = value_in<int>(value);
    return number ? static_cast<unsigned int>(*number) : 0;
}

bool heq_int(objref const &a, objref const &b) { return heq<int, equal_value>(a, b, core.integer); }

unsigned int hash_float(objref const &value) { return hash_value_bytes<float>(value); }

bool heq_float(objref const &a, objref const &b) {
    return heq<float, same_number>(a, b, core.float_number);
}

unsigned int hash_double(objref const &value) { return hash_value_bytes<double>(value); }

bool heq_double(objref const &a, objref const &b) {
    return heq<double, same_number>(a, b, core.double_number);
}

} // namespace cat
