// Value objects: the instantiations of their templates, and conversions from and to plain values.

#include "qrv/core/cobjd.h"

#include "core/cbuiltin.h"
#include "core/cregistry.h"
#include "core/cscalar.h"

#include <istream>
#include <ostream>

template class cObjDR<std::string>;
template class cObjDR<bool>;
template class cObjDR<int>;
template class cObjDR<float>;
template class cObjDR<double>;
template class cObjDR<std::ostream>;
template class cObjDR<std::istream>;
template class cObjD<std::string>;
template class cObjD<bool>;
template class cObjD<int>;
template class cObjD<float>;
template class cObjD<double>;

cTypeObj &cTypeOf(std::string *) { return cat::type_string(); }
cTypeObj &cTypeOf(bool *) { return cat::type_bool(); }
cTypeObj &cTypeOf(int *) { return cat::type_int(); }
cTypeObj &cTypeOf(float *) { return cat::type_float(); }
cTypeObj &cTypeOf(double *) { return cat::type_double(); }
cTypeObj &cTypeOf(std::istream *) { return cat::type_nil(); }
cTypeObj &cTypeOf(std::ostream *) { return cat::type_nil(); }

namespace cat {

namespace {

template <class T> bool value_or_converted(objref const &ref, T &value) {
    if (!ref) return false;
    objref const holder = objref::adopt(new cObjDR<T>(value));
    holder->obid(0);
    return &ref->type() == &holder->type() ? holder->assign(ref) : holder->convert(ref);
}

} // namespace

int as_index(objref const &ref) {
    int const *const number = ref && &ref->type() == core.integer ? value_in<int>(ref) : nullptr;
    return number ? *number : no_index;
}

bool is_equal(objref const &ref, std::string const &text) {
    auto const *const value = &ref->type() == core.string ? value_in<std::string>(ref) : nullptr;
    return value && *value == text;
}

bool is_equal(objref const &ref, int number) {
    int const *const value = &ref->type() == core.integer ? value_in<int>(ref) : nullptr;
    return value && *value == number;
}

std::optional<std::string> text_of(objref const &ref) {
    auto const *const text =
        ref && &ref->type() == core.string ? value_in<std::string>(ref) : nullptr;
    return text ? std::optional(*text) : std::nullopt;
}

int to_int(double value) noexcept {
    return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int>(value) : no_index;
}

bool int_of(objref const &ref, int &number) { return value_or_converted(ref, number); }

bool bool_of(objref const &ref, bool &value) { return value_or_converted(ref, value); }

objref of(std::string const &text) { return make_value(text); }
objref of(char const *text) { return make_value(std::string(text ? text : "")); }
objref of(int number) { return make_value(number); }
objref of(bool value) { return make_value(value); }
objref of(float number) { return make_value(number); }
objref of(double number) { return make_value(number); }

} // namespace cat
