#pragma once
// The table of texts: see core/ctext_hooks.h.

namespace cat {
// Fills text_hooks. May be called at any time and any number of times.
void install_text() noexcept;
} // namespace cat
