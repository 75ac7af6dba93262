// Gives the precompiled test headers a target to belong to; it holds nothing.
