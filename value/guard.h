#pragma once
// Calls of the library whose errors become exceptions.

#include "qrv/core/cobj.h"
#include "qrv/diagnostics/ccaughterrors.h"

#include <string_view>

namespace qrv::detail {

// Throws for the first error that was caught: type_error for a rule of a type, path_error for a
// position that does not exist, else error.
[[noreturn]] void throw_caught(cat::CaughtErrors const &caught);

// Returns the result of `call`. Errors that the library raises inside are neither printed nor
// passed to the program's handlers; exceptions of user code pass.
template <class Call> auto guarded(Call const &call) {
    cat::CaughtErrors const caught;
    auto result = call();
    if (!caught.empty()) [[unlikely]]
        throw_caught(caught);
    return result;
}

// For recursive functions: throws error if the stack does not allow another level.
void refuse_depth();

} // namespace qrv::detail
