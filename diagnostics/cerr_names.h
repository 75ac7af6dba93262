#pragma once
// What the text of an error names is written through cNamed, so that the error has it as data too:
//
//   begin_error(err_missing_method) << cNamed::name(method) << "' in type: " << cNamed::type(type);
//
// Noted only while a report lives: nobody else looks at it.

#include "diagnostics/cerr_codes.h"
#include "qrv/diagnostics/cerr.h"

#include <string_view>

// Borrows the text.
struct cNamed {
    std::string cat::ErrorNames::*role;
    std::string_view text;
    bool said = true;

    static cNamed key(std::string_view text) { return {&cat::ErrorNames::key, text}; }
    static cNamed type(std::string_view text) { return {&cat::ErrorNames::type, text}; }
    static cNamed found(std::string_view text) { return {&cat::ErrorNames::found, text}; }
    static cNamed name(std::string_view text) { return {&cat::ErrorNames::name, text}; }

    // Noted, but not written.
    cNamed unsaid() const { return {role, text, false}; }
};

// Writes the text; where it goes into the stream of an error it is noted too.
std::ostream &operator<<(std::ostream &os, cNamed const &named);

// An error of the list as a whole.
template <class... Parts> cErr whole_error(cErrText const &error, Parts const &...parts) {
    cErrStream err(error.code, error.text);
    err.set_kind(error.kind);
    (static_cast<std::ostream &>(err) << ... << parts);
    return cErr(err);
}
