#pragma once
// Patterns with wildcards, matched against the start of a text. The function keeps nothing between
// calls.
//
// A pattern is a row of elements. Texts and patterns are bytes; ranges compare them as signed.
//
//     ?         any character. Where a pattern begins at the text's end, nothing
//     *         as many characters as the rest of the pattern leaves, also none. But the rest
//               begins before the text's end, and something is taken in all: so a * that ends a
//               pattern never takes the last character. Many in a row are one
//     [a-z_]    one of these; [!a-z] any but these. A range may be reversed, a - in front of the ]
//               is itself, \ makes any character literal, the first other ] ends it
//     {ab,c*}   one of these patterns, each matched on its own from here, then the rest of the
//               pattern from where it ended; they may be empty, and hold others
//     \x        the character x itself. A \ that ends the pattern ends the match, which is good
//     x         itself, as any other character; ] , } too, where nothing is open
//
// Between two elements the text must not have ended: "ab?" and "ab*" don't match "ab".

#include "qrv/ccomp.h"

// How many characters of the text the whole pattern matched; the text may go on behind them. 0 when
// it doesn't match, for null, for an empty pattern, for a [ or { that isn't closed, and where more
// than INT_MAX characters were taken or, with * or {, would have to be looked at. Of what a * or {
// can take the one counts with which the most is matched from there on, or, with `first`, the first
// that works: for * the shortest, for { the one that stands first.
//
//     cMatch("abcabc", "a*c", false) is 6, with true 3
//
// Up to the first * or { the cost is the length of what matches. From there on it is the length of
// the pattern times that of the text, of which without a * no more counts than the pattern can
// take. The memory is the length of the text times the depth of the { that stand in each other, and
// that of the pattern. Neither grows with the number of ways to match, and nothing recurses. Throws
// std::bad_alloc only.
QRV_API int cMatch(char const *text, char const *pattern, bool first);
