#pragma once
// Patterns with wildcards, matched against the start of a string. The function has no state.
//
// A pattern is a sequence of elements. Strings and patterns are bytes; ranges compare them as
// signed.
//
//     ?         any character; directly after a {, comma or }, and as the last element of its
//               pattern, also the end of the string
//     *         as many characters as the rest of the pattern permits, possibly none. But the rest
//               must begin before the string's end, and the * with its rest must match at least
//               one character: so a final * never matches the last character. Several * are one
//     [a-z_]    one of these; [!a-z] any but these. A range may be reversed, a - before the ] is
//               itself, \ makes any character literal, the first other ] ends it
//     {ab,c*}   one of these patterns, each matched separately from here, then the rest of the
//               pattern from its end; they may be empty, and may contain others
//     \x        the character x itself. A \ at the end of the pattern ends the match successfully
//     x         itself, as any other character; also ] , } without an opening bracket
//
// The string must not end between two elements: "ab?" and "ab*" don't match "ab".

#include "qrv/ccomp.h"

// Returns how many characters of the string the whole pattern matched; the string may continue
// after them. 0 if it does not match, for null, for an empty pattern, for an unclosed [ or {, and
// if it matched, or with * or { had to examine, more than INT_MAX characters. Each * or { selects
// the alternative with which the rest matches most, or, with `first`, the first that matches: for *
// the shortest, for { the leftmost.
//
//     cMatch("abcabc", "a*c", false) is 6, with true 3
//
// Up to the first * or { the cost is the length of the match. From there on it is the length of the
// pattern times that of the string; without a * only as much of the string counts as the pattern
// can match. The memory is the length of the string times the nesting depth of {, plus the length
// of the pattern. Neither grows with the number of ways to match, and nothing recurses. Throws
// std::bad_alloc only.
QRV_API int cMatch(char const *text, char const *pattern, bool first);
