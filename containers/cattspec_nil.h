#pragma once
// For the tear-down of the core: releases the objects that attribute specifications share.

namespace cat {
void drop_nilspec();
void drop_attspec_words();
} // namespace cat
