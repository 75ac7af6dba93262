#include "diagnostics/cerrline.h"

// A plain function pointer: the taker belongs to a layer above.

#include "diagnostics/ccout_state.h"

#include <utility>

namespace {
constinit cat::error_line_taker the_taker = nullptr;
}

void cat::error_line(cErr const &error) {
    if (the_taker && the_taker(error)) return;
    put_message(error.as_string() + '\n');
}

void cat::error_line(std::string const &text) { error_line(cErr(0, text)); }

bool cat::error_lines_are_taken() noexcept { return the_taker != nullptr; }

cat::error_line_taker cat::take_error_lines(error_line_taker taker) noexcept {
    return std::exchange(the_taker, taker);
}
