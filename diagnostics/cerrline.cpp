#include "diagnostics/cerrline.h"

// A plain function pointer: the taker belongs to a layer above.

#include "diagnostics/ccout_state.h"

#include <utility>

namespace {
constinit cat::error_line_taker the_taker = nullptr;
}

void cat::error_line(std::string const &text) {
    if (the_taker && the_taker(text)) return;
    put_message(text + '\n');
}

cat::error_line_taker cat::take_error_lines(error_line_taker taker) noexcept {
    return std::exchange(the_taker, taker);
}
