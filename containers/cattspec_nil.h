#pragma once
// For the tear-down of the core: what attribute specifications keep for the process.

namespace cat {
void drop_nilspec();
void drop_attspec_words();
} // namespace cat
