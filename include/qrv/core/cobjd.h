#pragma once
// Value objects: cObjD<T> owns a T; cObjDR<T> refers to a T elsewhere and must not outlive it. All
// methods use `value_`, so they work for both. The object's type is cTypeOf((T *)nullptr), found by
// overload resolution; a program that defines objects with another T declares that overload next to
// T. Also here: the conversions between objects and plain values.

#include "qrv/core/ctypes.h"

#include <cmath>
#include <concepts>
#include <iosfwd>
#include <limits>
#include <optional>
#include <string_view>

// The types of the library's value objects, by the type of the value.
QRV_API cTypeObj &cTypeOf(std::string *);
QRV_API cTypeObj &cTypeOf(bool *);
QRV_API cTypeObj &cTypeOf(int *);
QRV_API cTypeObj &cTypeOf(float *);
QRV_API cTypeObj &cTypeOf(double *);
QRV_API cTypeObj &cTypeOf(std::istream *); // "niltype": holders of streams for read and write
QRV_API cTypeObj &cTypeOf(std::ostream *);

namespace cat {
// The class of cObjDR<T>.
template <class T> inline constexpr cObjClass class_of_value = cObjClass::other;
template <> inline constexpr cObjClass class_of_value<std::string> = cObjClass::string;
template <> inline constexpr cObjClass class_of_value<int> = cObjClass::integer;
template <> inline constexpr cObjClass class_of_value<float> = cObjClass::float_number;
template <> inline constexpr cObjClass class_of_value<double> = cObjClass::double_number;
template <> inline constexpr cObjClass class_of_value<bool> = cObjClass::boolean;

// The type in which a const cObjDR<T> returns its value: const for the library's own values.
// Others, such as streams, may be useless if const.
template <class T> using cValueSeen =
    std::conditional_t<class_of_value<T> == cObjClass::other, T, T const>;

// The type of a cObjDR<T>.
template <class T> auto type_of_value() {
    cTypeObj *const type = &cTypeOf(static_cast<T *>(nullptr));
    if constexpr (class_of_value<T> == cObjClass::other)
        return type;
    else
        return cBuiltinType{type};
}
} // namespace cat

inline cObj::cObj(cat::cBuiltinType type, cObjClass object_class) noexcept
    : type_(type.type), obid_(++ob_lstid_), class_(static_cast<std::uint16_t>(object_class)) {
    ++ob_count_;
}

template <class T> class cObjD;

template <class T> class QRV_API cObjDR : public cObj {
  public:
    // For subclasses: the value is null, and `create` does not run.
    explicit cObjDR(cTypeObj *type) : cObj(type, cat::class_of_value<T>) {}
    explicit cObjDR(cat::cBuiltinType type) : cObj(type, cat::class_of_value<T>) {}
    // Borrow the value. A const one makes the object const.
    explicit cObjDR(T &value) : cObjDR(cat::type_of_value<T>()) {
        value_ = &value;
        create();
    }
    explicit cObjDR(T const &value) : cObjDR(cat::type_of_value<T>()) {
        value_ = const_cast<T *>(&value);
        setflags(of_const); // prevents assignment to the value
        create();
    }
    explicit cObjDR(T &&) = delete; // the reference would dangle
    cObjDR(cObjDR const &) = delete;
    ~cObjDR() override { end_class(); }

    bool is_ObjDR() const override { return true; }
    // From then on, a set that contains the object compares it with each value that it searches
    // for. To read, use the const forms.
    T *valptr() noexcept {
        before_giving_out();
        return value_;
    }
    T &val() noexcept { return *valptr(); }
    cat::cValueSeen<T> *valptr() const noexcept { return value_; }
    cat::cValueSeen<T> &val() const noexcept { return *value_; }
    // For methods that change the value and do not store the reference.
    T *value_to_change() noexcept {
        this->before_change();
        return value_;
    }

    // By the type's assign, so that const and the conversion rules apply; ignores its result. Where
    // possible, the source is an object with a copy of the value, since the method may store it.
    cObjDR &operator=(T const &value) {
        objref source;
        if constexpr (std::is_copy_constructible_v<T>)
            source = objref::adopt(new cObjD<T>(value));
        else
            source = objref::adopt(new cObjDR(value));
        source->setflags(of_const);
        source->obid(0);
        assign(source);
        return *this;
    }
    cObjDR &operator=(cObjDR const &other) {
        assign(other);
        return *this;
    }
    using cObj::operator=;

  protected:
    T *value_ = nullptr;
};

template <class T> class QRV_API cObjD : public cObjDR<T> {
  public:
    // Copies or moves the value. A copy of a const object is const.
    cObjD() : cObjDR<T>(cat::type_of_value<T>()), data_() { ready(); }
    explicit cObjD(T const &value) : cObjDR<T>(cat::type_of_value<T>()), data_(value) { ready(); }
    template <class U>
    requires(std::is_pointer_v<U> &&std::is_arithmetic_v<T>) explicit cObjD(U) =
        delete; // a pointer would become true
    cObjD(cObjD const &other) : cObjDR<T>(&other.type()), data_(other.val()) {
        if (other.flags_of(of_const)) this->setflags(of_const);
        ready();
    }
    // These do not run `create`.
    cObjD(T const &value, cTypeObj *type) : cObjDR<T>(type), data_(value) { this->value_ = &data_; }
    cObjD(T &&value, cTypeObj *type) : cObjDR<T>(type), data_(std::move(value)) {
        this->value_ = &data_;
    }
    cObjD(T &&value, cat::cBuiltinType type) : cObjDR<T>(type), data_(std::move(value)) {
        this->value_ = &data_;
    }
    ~cObjD() override = default;

    bool is_ObjDR() const override { return false; }

    // assign, as in cObjDR.
    cObjD &operator=(T const &value) {
        cObjDR<T>::operator=(value);
        return *this;
    }
    cObjD &operator=(cObjD const &other) {
        this->assign(other);
        return *this;
    }
    using cObjDR<T>::operator=;

  private:
    void ready() {
        this->value_ = &data_;
        this->create();
    }
    T data_;
};

// The second argument of the methods write and read.
using cOutHolder = cObjDR<std::ostream>;
using cInHolder = cObjDR<std::istream>;

namespace cat {
// The value of an object of exactly type int; no_index for any other object and for null.
QRV_API int as_index(objref const &ref);
constexpr int no_index = -2147483647 - 1;
// Same type and same value, without conversion. The reference must not be null.
QRV_API bool is_equal(objref const &ref, std::string const &text);
QRV_API bool is_equal(objref const &ref, int number);

// Truncates; NaN, and what does not fit, becomes the lowest int.
QRV_API int to_int(double value) noexcept;
// The value of an object that is of the type or converts to it; false for others and for null.
// RUNS USER CODE: converters
QRV_API bool int_of(objref const &ref, int &number);
QRV_API bool bool_of(objref const &ref, bool &value);

// The string of a string object, without any conversion. Empty for other objects and for null. For
// numbers: cat::number_of (qrv/util/cintvalf.h).
[[nodiscard]] QRV_API std::optional<std::string> text_of(objref const &ref);

// A new object for a plain value. Integers and single characters become an int, long double becomes
// a double; std::out_of_range if the value does not fit.
[[nodiscard]] QRV_API objref of(std::string const &text);
[[nodiscard]] QRV_API objref of(char const *text); // null is ""
[[nodiscard]] QRV_API objref of(int number);
[[nodiscard]] QRV_API objref of(bool value);
[[nodiscard]] QRV_API objref of(float number);
[[nodiscard]] QRV_API objref of(double number);
template <std::same_as<std::string_view> T> [[nodiscard]] objref of(T text) {
    return of(std::string(text));
}
template <cOtherIndex T> [[nodiscard]] objref of(T number) { return of(as_int(number)); }
template <cCharacter T> [[nodiscard]] objref of(T character) { return of(as_int(+character)); }
template <std::same_as<long double> T> [[nodiscard]] objref of(T number) {
    if (std::isfinite(number) && std::fabs(number) > std::numeric_limits<double>::max())
        throw std::out_of_range("a number does not fit in a double");
    return of(static_cast<double>(number));
}

// Classes that would silently become a bool: objects, classes that convert to bool (except those
// that can be assigned a bool), lambdas, and pointers.
template <class T>
concept cTestable = std::is_class_v<T> && std::is_convertible_v<T const &, bool> &&
                    !std::is_assignable_v<T &, bool> &&
                    requires(T const &t) {
    bool{t};
};
template <class T>
concept cPointing =
    std::is_class_v<T> && !std::is_convertible_v<T const &, char const *> && requires(T const &t) {
    *+t;
};
template <class T>
requires(std::derived_from<T, cObj> || cTestable<T> || cPointing<T>) objref of(T const &)
= delete;
template <class T>
requires(!std::same_as<std::remove_const_t<T>, char>) objref of(T *)
= delete;
template <class T, class C> objref of(T C::*) = delete;
} // namespace cat

extern template class QRV_API cObjDR<std::string>;
extern template class QRV_API cObjDR<bool>;
extern template class QRV_API cObjDR<int>;
extern template class QRV_API cObjDR<float>;
extern template class QRV_API cObjDR<double>;
extern template class QRV_API cObjDR<std::ostream>;
extern template class QRV_API cObjDR<std::istream>;
extern template class QRV_API cObjD<std::string>;
extern template class QRV_API cObjD<bool>;
extern template class QRV_API cObjD<int>;
extern template class QRV_API cObjD<float>;
extern template class QRV_API cObjD<double>;
