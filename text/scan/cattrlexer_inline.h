#pragma once
// Inline members of cAttrLexer for both scanning methods.

#include "qrv/text/scan/cattrscanner.h"

inline void cAttrLexer::begin_token() {
    token_.line = token_.outer_line = line_;
    token_.column = token_.outer_column = column();
    token_.position = position();
}

// `column`: the characters between the last newline and the offset.
// DELIBERATE: the position counts every character but the newline.
//   Pinned: scanner_position_skips_newlines
inline void cAttrLexer::pass_lines(std::size_t lines, std::size_t column) {
    line_ += static_cast<unsigned>(lines);
    uncounted_ += static_cast<unsigned>(lines);
    if (lines > 0) line_start_ = static_cast<unsigned>(offset_ - column);
}
