// The scalar types: string, bool, int, float, double. Every method works on `value`, so it serves
// objects that own their value and objects that refer to one. Methods can be called by name on any
// object, and any object can claim the type: without a value they return false or cat::bad(). The
// writer and the reader contain the functions for the text form; the bootstrap installs them.

#include "core/cscalar.h"

#include "core/cerr_object.h"
#include "core/cregistry.h"
#include "qrv/core/cexe.h"

#include <limits>
#include <ostream>

namespace {

using cat::value_in;

bool no_converter(char const *method, cObj const &obj, objref const &source) {
    begin_error(err_no_converter) << cNamed::name(method) << "', type '"
                                  << cNamed::type(obj.type().name())
                                  << "', without converter from type: "
                                  << cNamed::found(source->type().name());
    return raise_eros();
}

bool same_type(cObj const &obj, objref const &other) {
    return other && &obj.type() == &other->type();
}

// The values of two objects of one type; false if an object has no value to compare.
template <class T> struct cValues {
    cValues(cObj const &obj, objref const &other) {
        if (!same_type(obj, other)) return;
        a = value_in<T>(&obj);
        b = value_in<T>(other);
    }
    explicit operator bool() const { return a && b; }
    T const *a = nullptr;
    T const *b = nullptr;
};

template <class T> objref newobj(objref) { return make<cObjD<T>>(); }

// The new object refers to the source's value and doesn't keep the source alive.
template <class T> objref newref(objref source) {
    if (!value_in<T>(source)) return cat::bad();
    return objref::adopt(new cObjDR<T>(static_cast<cObjDR<T> &>(*source).val()));
}

template <class T> bool assign(cObj &obj, objref &source) {
    if (!source) return false;
    if (!same_type(obj, source)) return obj.convert(source) || no_converter("assign", obj, source);
    cValues<T> const values(obj, source);
    if (values) *cat::value_to_change<T>(&obj) = *values.b;
    return bool(values);
}

template <class T> void add_value(T &sum, T const &value) { sum += value; }

template <> void add_value(int &sum, int const &value) { // wraps
    sum = static_cast<int>(static_cast<unsigned int>(sum) + static_cast<unsigned int>(value));
}

template <class T> bool add(cObj &obj, objref &source) {
    T *const sum = cat::value_to_change<T>(&obj);
    if (!source || !sum) return false;
    if (same_type(obj, source)) {
        T const *const value = value_in<T>(source);
        if (value) add_value<T>(*sum, T(*value));
        return value != nullptr;
    }
    cObjD<T> converted;
    converted.set_type(&obj.type());
    if (!converted.convert(source)) return no_converter("add", obj, source);
    add_value<T>(*sum, converted.val());
    return true;
}

template <class T> objref width(objref) { return cat::of(static_cast<int>(sizeof(T))); }

objref length(objref text) {
    auto const *const value = value_in<std::string>(text);
    return value ? cat::of(static_cast<int>(value->size())) : cat::bad();
}

template <class T> bool equal(cObj &obj, objref &other) {
    cValues<T> const values(obj, other);
    return values && *values.a == *values.b;
}

// DELIBERATE: a NaN equals everything and is less than everything, so that the order of keys never
// fails. Pinned: a_nan_is_equal_to_and_less_than_everything
template <class T> bool equal_number(cObj &obj, objref &other) {
    cValues<T> const values(obj, other);
    return values && !(*values.a < *values.b) && !(*values.a > *values.b);
}

template <class T> bool less(cObj &obj, objref &other) {
    cValues<T> const values(obj, other);
    return values && *values.a < *values.b;
}

template <class T> bool less_number(cObj &obj, objref &other) {
    cValues<T> const values(obj, other);
    return values && !(*values.a >= *values.b);
}

template <class T> void common_methods(cTypeObj &type) {
    type.set_tmember("newobj", make<cExeMember>(newobj<T>));
    type.set_tmember("newref", make<cExeMember>(newref<T>));
    type.set_tmember("assign", make<cExeMember>(assign<T>));
    type.set_tmember("size", make<cExeMember>(width<T>));
}

void order_methods(cTypeObj &type, cProcedure2 equal_method, cProcedure2 less_method) {
    type.set_tmember("equal", make<cExeMember>(equal_method));
    if (less_method) type.set_tmember("less", make<cExeMember>(less_method));
}

// Converters from S to D.
template <class D, class S> D converted(S const &value) { return static_cast<D>(value); }

template <> bool converted(int const &value) { return value != 0; }

template <> int converted(float const &value) { return cat::to_int(value); }

template <> int converted(double const &value) { return cat::to_int(value); }

// Rounds as the processor does: numbers beyond the range of float become infinite.
template <> float converted(double const &value) {
    constexpr double limit = std::numeric_limits<float>::max();
    // Numbers less than half a step above the greatest float are rounded down to it.
    constexpr double half_step = 0x1.ffffffp127;
    if (value > limit && value < half_step) return std::numeric_limits<float>::max();
    if (value < -limit && value > -half_step) return -std::numeric_limits<float>::max();
    if (value > limit) return std::numeric_limits<float>::infinity();
    if (value < -limit) return -std::numeric_limits<float>::infinity();
    return static_cast<float>(value);
}

template <class D, class S> bool convert(cObj &destination, objref &source) {
    D *const to = cat::value_to_change<D>(&destination);
    S const *const from = value_in<S>(source);
    if (to && from) *to = converted<D, S>(*from);
    return to && from;
}

template <class D, class S> void set_converter() {
    cTypeOf(static_cast<D *>(nullptr))
        .set_converter(cTypeOf(static_cast<S *>(nullptr)), convert<D, S>);
}

template <class T> void set_add(cTypeObj &type) {
    type.set_tmember("add", make<cExeMember>(add<T>));
}

template <class T> bool has_plain_equal(cTypeObj const &type) noexcept {
    return &type == &cTypeOf(static_cast<T *>(nullptr)) &&
           type.method(mid_equal) ==
               reinterpret_cast<cVoidFunction>(static_cast<cProcedure2>(equal<T>));
}

} // namespace

namespace cat {

bool assign_string(cObj &obj, objref &source) { return assign<std::string>(obj, source); }
bool assign_int(cObj &obj, objref &source) { return assign<int>(obj, source); }

void setup_string(cTypeObj &type) {
    common_methods<std::string>(type);
    order_methods(type, equal<std::string>, less<std::string>);
}

void setup_bool(cTypeObj &type) {
    common_methods<bool>(type);
    order_methods(type, equal<bool>, nullptr);
}

void setup_int(cTypeObj &type) {
    common_methods<int>(type);
    order_methods(type, equal<int>, less<int>);
}

void setup_float(cTypeObj &type) {
    common_methods<float>(type);
    order_methods(type, equal_number<float>, less_number<float>);
}

void setup_double(cTypeObj &type) {
    common_methods<double>(type);
    order_methods(type, equal_number<double>, less_number<double>);
}

void set_scalar_additions() {
    set_add<int>(type_int());
    set_add<float>(type_float());
    set_add<double>(type_double());
    set_add<std::string>(type_string());
    type_string().set_tmember("size", make<cExeMember>(length));
}

bool compares_plainly(cTypeObj const &type) noexcept {
    return has_plain_equal<std::string>(type) || has_plain_equal<int>(type) ||
           has_plain_equal<bool>(type);
}

bool is_plain(cObj const &value) noexcept {
    cTypeObj const &type = value.type();
    if (!compares_plainly(type)) return false;
    if (&type == core.integer) return value_in<int>(&value);
    if (&type == core.string) return value_in<std::string>(&value);
    return value_in<bool>(&value);
}

void set_scalar_converters() {
    set_converter<bool, int>();
    set_converter<int, bool>();
    set_converter<int, float>();
    set_converter<int, double>();
    set_converter<double, bool>();
    set_converter<double, float>();
    set_converter<double, int>();
    set_converter<float, bool>();
    set_converter<float, double>();
    set_converter<float, int>();
}

} // namespace cat
