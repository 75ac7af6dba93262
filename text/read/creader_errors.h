#pragma once
// begin_error() begins an error of the list on a scanner, which counts it: it writes the position,
// for some errors the path, and the start of the text. The caller appends the rest and calls
// fire().

#include "diagnostics/cerr_names.h"
#include "qrv/text/read/cattrscan.h"

// The result of a scan with this error.
constexpr cAttrScan::ASR asr_of(cErrText const &error) {
    return static_cast<cAttrScan::ASR>(error.code - cErr::bad_code);
}

static_assert(asr_of(err_read_equals) == cAttrScan::asrSyntax);
static_assert(asr_of(err_read_token) == cAttrScan::asrToken);
static_assert(asr_of(err_read_ref) == cAttrScan::asrRef);
static_assert(asr_of(err_read_constant) == cAttrScan::asrConst);
static_assert(asr_of(err_read_value_unknown) == cAttrScan::asrUnknownType);
static_assert(asr_of(err_read_no_newobj) == cAttrScan::asrType);
static_assert(asr_of(err_read_separator) == cAttrScan::asrSeparator);

// The path of the current value, for an error. While a report exists, a long path is shortened.
std::string shown_path();

inline cErrStream &begin_error(cAttrScan &scan, cErrText const &error) {
    bool const with_path = error.head == cErrHead::path;
    cErrStream &err = with_path ? scan.errp(asr_of(error)) : scan.errs(asr_of(error));
    err.set_kind(error.kind);
    err << error.text;
    return err;
}
