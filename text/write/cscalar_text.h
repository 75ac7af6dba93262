#pragma once
// The written form of scalar values, created without a stream and any locale: the form that a fresh
// stream would give. Strings are formatted here for streams too; a stream itself formats numbers
// that are written to it.

#include "core/cscalar.h"

#include <string>

// The value of an object that contains a T; null for any other, independent of its type.
template <class T> T const *value_of(cObj const &obj) { return cat::value_in<T>(&obj); }

// Whether `method` is the `write` of the object's type.
inline bool writes_by(cObj const &obj, bool (*method)(cObj &, objref &)) {
    return obj.type().method(mid_write) == reinterpret_cast<cVoidFunction>(method);
}

// The value of an object of exactly the built-in type string; null for any other.
std::string const *string_of(cObj const &obj);

// Appends the text if the object's `write` is one of the library's own scalar methods and the
// object doesn't override it; else returns false and appends nothing. In exact form a number
// without a token returns true and appends nothing.
bool append_scalar(std::string &out, cObj const &obj);

// Whether the value has text that reads as the same value. False for infinity and NaN, and for an
// object without the data that the library's own method of its type writes.
bool has_token(cObj const &obj);

// These write to a caller's buffer and return the end. Size for a number: sign, 17 digits, point,
// exponent; fixed notation is used only for small exponents.
constexpr size_t most_number_text = 40;
constexpr size_t most_string_text(std::string const &text) { return 2 * text.size() + 2; }

char *put_number(char *to, int value);
char *put_number(char *to, double value); // as "%#.6g"
char *put_number(char *to, float value);  // the same and "f"
// The exact form; nothing for infinity and NaN.
char *put_exact_number(char *to, int value);
char *put_exact_number(char *to, double value);
char *put_exact_number(char *to, float value);
// Bare or in double quotes.
char *put_string(char *to, std::string const &text, bool exact);

// The same, appended to a string.
template <class T> void append_number(std::string &out, T value) {
    char text[most_number_text];
    out.append(text, put_number(text, value));
}
void append_string(std::string &out, std::string const &text, bool exact);
// The exact form, given the plain one that a stream with its own settings created.
void append_exact(std::string &out, std::string const &plain, int value);
void append_exact(std::string &out, std::string const &plain, double value);
void append_exact(std::string &out, std::string const &plain, float value);
// "true", "#true" for cat::btrue() itself, and so on.
char const *bool_text(cObj const &obj, bool value);
