#pragma once
// The library's trace channels, as the text layers access them. start/startup.cpp creates the
// channels; before and after their lifetime the pointers are null and nothing is traced.

#include "qrv/diagnostics/ctrace.h"

namespace cat {

extern constinit cTracer *io_channel;  // trace_io: the path of each value that is read or written
extern constinit cTracer *lex_channel; // trace_lex: paths given to getattrp, and keys of paths

inline bool is_on(cTracer const *channel) { return channel && *channel; }

} // namespace cat
