#pragma once
// Writes the names in an error's text through cNamed, so that the error has them as data too:
//
//   begin_error(err_missing_method) << cNamed::name(method) << "' in type: " << cNamed::type(type);
//
// The names are recorded only while a cat::ErrorTaker exists: nobody else reads them.

#include "diagnostics/cerr_codes.h"
#include "qrv/diagnostics/cerr.h"

#include <string_view>

// Borrows the string.
struct cNamed {
    std::string cat::ErrorNames::*role;
    std::string_view text;
    bool said = true;

    static cNamed key(std::string_view text) { return {&cat::ErrorNames::key, text}; }
    static cNamed type(std::string_view text) { return {&cat::ErrorNames::type, text}; }
    static cNamed found(std::string_view text) { return {&cat::ErrorNames::found, text}; }
    static cNamed name(std::string_view text) { return {&cat::ErrorNames::name, text}; }

    // Recorded, but not written.
    cNamed unsaid() const { return {role, text, false}; }
};

// Writes the name; if the stream belongs to an error, records it too.
std::ostream &operator<<(std::ostream &os, cNamed const &named);

// An error with the code, kind and text of an entry of cerr_codes.h, followed by the parts.
template <class... Parts> cErr whole_error(cErrText const &error, Parts const &...parts) {
    cErrStream err(error.code, error.text);
    err.set_kind(error.kind);
    (static_cast<std::ostream &>(err) << ... << parts);
    return cErr(err);
}
