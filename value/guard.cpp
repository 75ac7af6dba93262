#include "value/guard.h"

#include "qrv/base/platform/cstack.h"
#include "qrv/value/errors.h"

#include <string>

namespace qrv::detail {

void throw_caught(cat::CaughtErrors const &caught) {
    using cat::ErrorKind;
    cErr const &first = caught.entries().front();
    std::string const text = first.as_string();
    switch (first.kind()) {
    case ErrorKind::key_not_int:
    case ErrorKind::key_out_of_range:
        throw path_error({}, text, first.code());
    case ErrorKind::attspec_entry:
    case ErrorKind::attspec_type:
    case ErrorKind::attspec_unknown:
    case ErrorKind::attspec_attribute:
    case ErrorKind::required:
    case ErrorKind::fixed_ref:
    case ErrorKind::fixed_type:
    case ErrorKind::node_type:
    case ErrorKind::assign_other_type:
    case ErrorKind::assign_not_valid:
    case ErrorKind::assign_failed:
    case ErrorKind::no_converter:
        throw type_error(text, first.code());
    default:
        throw error(text, first.code());
    }
}

void refuse_depth() {
    if (cat::stack_low()) throw error("nesting is too deep");
}

} // namespace qrv::detail
