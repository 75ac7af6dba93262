#pragma once
// For the tear-down of the core.

namespace cat {
// Gives up the types of signals and slots; the next use makes them anew. True if there were any.
bool drop_signal_types();
} // namespace cat
