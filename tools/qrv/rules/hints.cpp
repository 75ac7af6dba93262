#include "tools/qrv/rules/hints.h"

#include "tools/qrv/output/lines.h"
#include "tools/qrv/rules/brackets.h"

#include <algorithm>
#include <optional>
#include <regex>
#include <string_view>

namespace {

// A slip is a regular expression for the line of the mistake; the match must contain the position
// of the mistake. The note is about the first group of the match, and contains $1, $2 ... like a
// replacement.
struct cSlip {
    char const *pattern;
    char const *note;
    char const *until = nullptr; // the slip ends with the line that has this text
    bool repeats = false;        // the next mistakes of this kind belong to the first one
};

#define WORD "[A-Za-z_][A-Za-z_0-9]*" // a key, or a word of a value
#define NUMBER "[+-]?[0-9]+(?:\\.[0-9]+)?"
#define QUOTED "\"[^\"]*\""
#define SPACE "(?:\\s|//[^\n]*\n)*"  // with comments
#define START "(?:^|[{\\[(<;,])\\s*" // what is before a key
#define KEY START "(?:" WORD "|" QUOTED ")\\s*"

// The first match counts, so special slips come before general ones.
constexpr cSlip slips[] = {
    // --- other files ---
    {"^()(?:\xFF\xFE|\xFE\xFF)", "the file is in UTF-16: convert it to UTF-8"},
    {"^[{\\[]?()\\0", "the file seems to be in UTF-16: convert it to UTF-8"},
    {"^(<<<<<<<)", "this looks like a merge conflict that is not resolved", ">>>>>>>"},
    {START "(?:" QUOTED "|'[^']*')\\s*(:)(?!=)",
     "write = after a key, not :, or convert JSON with qrv from-json", nullptr, true},

    // --- comments of other languages ---
    {"(<\\?)", "this looks like XML", "?>"},
    {"(<!\\[CDATA\\[)", "this looks like XML: write text in quotes", "]]>"},
    {"(<!--)", "a comment is // to the end of the line, or /* ... */", "-->"},
    {"(<" WORD ">)[^<]*</", "this looks like XML"},
    {"(<#)", "a comment is // to the end of the line, or /* ... */", "#>"},
    {"(\\(\\*)", "a comment is // to the end of the line, or /* ... */", "*)"},
    {"(\\{-)\\s", "a comment is // to the end of the line, or /* ... */", "-}"},
    {"(--\\[\\[)", "a comment is // to the end of the line, or /* ... */", "]]"},
    {"^\\s*([#@!%](?:include|import|define|ifn?def|if|else|endif|pragma))\\b",
     "a file has no directives such as $1"},
    {"()#(?:[^A-Za-z0-9_]|$)", "a comment begins with // and not with #", "\n"},
    {START "(#" WORD ")\\s*=", "a comment begins with //, and a key with # needs quotes: \"$1\""},
    {"^\\s*(#)", "a comment begins with // and not with #", "\n"},
    {"=\\s*(?:" WORD "|" NUMBER "|" QUOTED ")[ \\t]+(#)[ \\t]",
     "a comment begins with // and not with #", "\n"},
    {"(?:^|;)\\s*(--)", "a comment begins with // and not with --", "\n"},
    {"^\\s*(;)\\s*\\w*", "a comment begins with // and not with ;", "\n"},
    {"(?:^|;)\\s*(/)[ \\t]", "a comment begins with // and not with /", "\n"},
    {"(?:^|;)\\s*(%)\\s", "a comment begins with // and not with %", "\n"},
    {"/\\*.*/\\*.*?(\\*/).*?\\*/", "comments do not nest: the comment ends here"},
    {"[A-Za-z_0-9 ]*(\\*/)", "no comment is open that */ could close"},

    // --- quotes ---
    {"(\xE2\x80[\x98-\x9F]|\xC2[\xAB\xBB])",
     "strings are in \" or ' and not in typographic quotes"},
    {"(`)", "strings are in \" or ' and not in `"},
    {"(\"{3}|'{3})", "a string has one quote on each side"},
    {START "(" WORD "'" WORD ")\\s*=", "a key with an apostrophe needs quotes: \"$1\""},
    {"'[^'\"]*[A-Za-z](')[A-Za-z]",
     "the string ends here: write a string with an apostrophe in double quotes"},
    {"=\\s*[^'\"=;]*[A-Za-z](')[A-Za-z]", "write text with an apostrophe in double quotes"},
    {"\"[^\"]*(\\\\\")[;,)\\]}>\\s]*$",
     "the string does not end here: write \\\\ for a \\ at its end"},
    {"=\\s*([A-Za-z])[\"'].*[\"']", "a string has nothing before its first quote"},
    {"=\\s*(" WORD "[\"'])\\s*[;,}\\])]", "a string has a quote on each side"},
    {"\"(?:\\\\.|[^\"=\\\\])*(\")[A-Za-z]",
     "the string ends here: write a quote in a string as \\\""},
    {"(?:^|[=,;{\\[(<\\s])([\"'])(?:\\\\.|(?!\\1).)*$", "this string is not closed on its line"},
    {"([\"'][^\"']*[\"'])\\s+[\"']", "write two strings as one, or ; or , between them"},

    // --- between a key and its value ---
    {START "(=)(?![=>])", "a key is missing before ="},
    {KEY "=\\s*()[}\\])]", "a value is missing after ="},
    {KEY "(=>|->|:=|\\?=)", "write = between a key and its value, not $1"},
    {KEY "=\\s*" WORD "\\s*(=)[^=>]", "an entry has one =, and a map as its value is in { ... }"},
    {START WORD "[ \\t]+()\\{", "write = between a key and its value"},
    {KEY "(={2,})", "write one = between a key and its value"},
    {KEY "([-+*/|&]=)", "a file cannot change a value with $1: write = and the new value"},
    {"^\\s*" WORD "[ \\t]+()(?:[0-9\"']|" WORD ";)[^=]*$", "write = between a key and its value"},

    // --- a delimiter that is missing before the next key ---
    {"=\\s*(?:" WORD "|" NUMBER "|" QUOTED ")()[ \\t]+" WORD "\\s*=", "a ; is missing here"},

    // --- keys ---
    {START "(" WORD "(?:-[A-Za-z_0-9]+)+)\\s*[=:]", "a key with a dash needs quotes: \"$1\""},
    {START "(" WORD "(?:\\.[A-Za-z_0-9]+)+)\\s*[=:]", "a key with a dot needs quotes: \"$1\""},
    {START "(\\.[A-Za-z_0-9.]*|" WORD "\\.)\\s*=", "a key with a dot needs quotes: \"$1\""},
    {START "(" WORD "(?:/[A-Za-z_0-9]+)+)\\s*[=:]", "a key with a slash needs quotes: \"$1\""},
    {START "(" WORD "(?:[ \\t]+" WORD ")+)[ \\t]*=", "a key with a blank needs quotes: \"$1\""},
    {START "([$@%&]" WORD ")\\s*[=:]", "a key that begins with a sign needs quotes: \"$1\""},
    {START "([0-9]+[A-Za-z_]\\w*)\\s*=", "a key that begins with a digit needs quotes: \"$1\""},
    {START "(" WORD ")\\[[0-9]*\\]\\s*=", "write a vector as $1= [ ... ]"},
    {"^\\s*" WORD "[ \\t]*()[{\\[]", "write = between a key and its value"},
    {"^\\s*\\[(" WORD ")\\]\\s*$", "write a section as a map: $1= { ... }"},
    {"^\\s*(-)\\s", "write a list as a vector: [ ..., ... ]"},
    {START WORD "\\s*(:)(?![=/\\\\])", "write = after a key, not :", nullptr, true},

    // --- values that need quotes ---
    {"((?:https?|ftp|file|ssh|mailto):[^\\s;,]*)", "write a URL in quotes: \"$1\""},
    {"([A-Za-z0-9_.+-]+@[A-Za-z0-9_.-]+)", "write an address in quotes: \"$1\""},
    {"=\\s*((?:[A-Za-z]:|\\\\)\\\\[^\\s;,]*)", "write a path in quotes, and \\\\ for each \\"},
    {"=\\s*([A-Za-z]:/[^\\s;,]*)", "write a path in quotes: \"$1\""},
    {"=\\s*([.~]{0,2}/[^\\s;,]*)", "write a path in quotes: \"$1\""},
    {"=\\s*(" WORD "(?:/[^\\s;,]+)+)", "write a path in quotes: \"$1\""},
    {"([0-9A-Fa-f]{8}(?:-[0-9A-Fa-f]{4,12}){4})", "write an id in quotes: \"$1\""},
    {"=\\s*([0-9A-Fa-f:]*::[0-9A-Fa-f:.]*|[0-9A-Fa-f]+(?::[0-9A-Fa-f]+){3,})",
     "write an address in quotes: \"$1\""},
    {"([0-9]{4}-[0-9]{1,2}-[0-9]{1,2}(?:T[0-9:.Z+-]*)?)", "write a date in quotes: \"$1\""},
    {"([0-9]{1,2}\\.[0-9]{1,2}\\.[0-9]{4})", "write a date in quotes: \"$1\""},
    {"=\\s*([0-9]{1,2}:[0-9]{2}(?::[0-9]{2})?)", "write a time in quotes: \"$1\""},
    {"([0-9]+(?:\\.[0-9]+){3}(?:[:/][0-9]+)?)(?![.0-9])", "write an address in quotes: \"$1\""},
    {"([vV]?[0-9]+\\.[0-9]+\\.[0-9][0-9A-Za-z.-]*)", "write a version in quotes: \"$1\""},
    {"=\\s*(" WORD "(?:\\." WORD ")+)", "write text with a dot in quotes: \"$1\""},
    {"=\\s*(" WORD "(?:-" WORD ")+)", "write text with a dash in quotes: \"$1\""},
    {"=\\s*(" WORD "(?::" WORD ")+)\\s*[;,}]", "write text with a colon in quotes: \"$1\""},
    {"=\\s*(" WORD "[&+][^\\s;,]*)", "write text with other signs in quotes: \"$1\""},
    {"(\\{\\{[^{}]*\\}\\})", "a file has no variables: write the value, or text in quotes: \"$1\""},
    {"(\\$\\{?" WORD "\\}?)", "a file has no variables: write the value, or text with $ in quotes"},
    {"=\\s*([@*?%&|!][^\\s;,]*)", "write text with other signs in quotes: \"$1\""},

    {"(<<-?[\"']?[A-Za-z_]+)",
     "write text in quotes, with \\ at the end of each line but the last"},

    // --- numbers ---
    {"=\\s*([-+](?:inf|Inf|INF|[Ii]nfinity|nan|NaN))\\b",
     "a number has digits: write text in quotes: \"$1\""},
    {"=\\s*(\\([0-9. \\t]+[-+*/][-+*/0-9. \\t]*\\))", "a file cannot calculate: write the result"},
    {"([0-9]+[ \\t]*(?:--|\\+\\+))", "a file cannot calculate: write the result"},
    {"=\\s*([0-9]+(?:\\.[0-9]+)?,[0-9]+)\\s*[;}\\])]", "write a decimal point and not a comma"},
    {"(" NUMBER "\\s*%)", "write a number without %, or text in quotes: \"$1\""},
    {"([0-9]{1,3}(?:[ '_][0-9]{3})+)(?![0-9])", "write a number without separators of groups"},
    {"=\\s*([0-9]{1,3}(?:,[0-9]{3})+(?:\\.[0-9]+)?)\\s*[;}\\])]",
     "write a number without separators of groups"},
    {"([+-]?[0-9]*\\.[0-9]*[eE][+-]?[0-9]{3,}[fF]?)", "a double is at most 1.79e308"},
    {"([+-]?[0-9]*\\.[0-9]*[eE][+-]?[0-9]+[fF])",
     "a float is at most 3.40e38: without the f it is a double"},
    {"([0-9]+)([eE][+-]?[0-9]+)", "a number with an exponent needs a point: $1.0$2"},
    {"(0[xX][0-9A-Fa-f]{9,})\\b", "a hexadecimal number has 8 digits at most after 0x"},
    {"(0[xX][0-9A-Za-z]*)", "a hexadecimal number has the digits 0 to 9 and A to F"},
    {"(" NUMBER "\\s*(?:[munkMGT]?(?:s|m|g|V|A|W|Hz|B|b)|[munk]?sec|min|h|d|cm|mm|px|pt|KB|kB|MB|"
     "GB|KiB|MiB|GiB|C|F|K|deg|dB))\\b",
     "a number has no unit: write it in the key, or text in quotes: \"$1\""},
    {"(" NUMBER "[ \\t]*(?:\xC2[\xA3\xB0\xB5]|\xCE[\xA9\xBC]|\xE2\x82\xAC)[A-Za-z]*|[$]" NUMBER ")",
     "a number has no unit: write it in the key, or text in quotes: \"$1\""},
    {"([0-9]+(?:\\.[0-9]+)?[A-Za-z_]\\w*)",
     "write text that begins with a digit in quotes: \"$1\""},
    {"([+-]?[0-9]{10,})",
     "an int is from -2147483648 to 2147483647: write a point for a double, or text in quotes"},
    {"(" QUOTED "\\s*\\+\\s*\")", "a file cannot join strings: write one"},
    {"=\\s*(\\+[0-9]+(?:[ -][0-9]+)+)", "write a telephone number in quotes: \"$1\""},
    {"=\\s*(-)\\s+[0-9]", "write the sign directly before the number"},
    {"([0-9]+\\.{2,3}[0-9]+)", "write a range in quotes: \"$1\""},
    {"([0-9]+/[0-9]+)", "write a fraction as a number, or text in quotes: \"$1\""},
    {"([0-9]+\\s*[-+*]\\s*[0-9]+)", "a file cannot calculate: write the result"},

    // --- constants ---
    {"#(?:null|NULL|none|None|nul|nill|Nil)\\b", "the constant for no value is #nil"},
    {"#(true|false)\\b", "write $1 without #"},
    {"(#[0-9A-Fa-f]{3,8})\\b", "write a colour in quotes: \"$1\""},
    {"#(?:True|TRUE)\\b", "write true in small letters"},
    {"#(?:False|FALSE)\\b", "write false in small letters"},
    {"=\\s*(cRef)\\(", "a reference begins with #: #cRef( ... )"},
    {"#(?:[Cc][Rr][Ee][Ff]|[Rr]ef)\\b(?!\\()[ \\t]*()", "a ( is missing here"},
    {"#(?!cRef)(?:[Cc][Rr][Ee][Ff]|[Rr]ef)\\(", "a reference is written as #cRef( ... )"},
    {"#cRef\\([^)]*()$", "a ) is missing here"},
    {"#cRef\\(", "a reference is to a value that is written before it, from the outermost: /a/b"},

    // --- brackets ---
    {"=\\s*(\\()[^=:;()]*\\)", "values without keys are in a vector: [ ... ]"},
    {"=\\s*(\\()", "a map is in { }; ( ) need the name of a type before them"},
    {"=\\s*" WORD "()\\s+[^=;()]*\\)", "a ( is missing here"},
    {"\\b(?:[Aa]rray|[Ll]ist|tuple|vec)(\\()", "write a vector as [ ... ]"},
    {"\\b(?:[Dd]ict|[Oo]bject|[Hh]ash)(\\()", "write a map as { ... }"},
    {"choice\\((\\{)[^={}]*\\}", "each choice has a value: choice({a= 1; b= 2;})"},
    {"(\\{)[ \\t]*(?:" WORD "|" NUMBER "|" QUOTED ")[ \\t]*\\}",
     "values without keys are in a vector: [ ... ]"},
    {"(\\{)[^={}\\[\\]]*,[^={}]*\\}", "values without keys are in a vector: [ ... ]"},
    {"(\\[)[^\\[\\]{}]*=[^\\[\\]]*\\]", "entries with keys are in a map: { ... }", nullptr, true},
    {"=\\s*(" QUOTED "(?:\\s*,\\s*" QUOTED ")+)", "several values are in a vector: [ ... ]"},
    {"=\\s*attlist(\\()[^=()]*\\)", "a key of attlist has a value: key= attspec( ... )"},
    {"(\\))", "no ( is open that ) could close"},
    {"=[^=\\[]*(\\])", "no [ is open that ] could close"},

    // --- bytes ---
    {"(\xEF\xBC[\x81-\xBF]|\xEF\xBD[\x80-\x9E]|\xE3\x80[\x81\x82])",
     "this is a full-width character: write the ASCII one"},
    {"(\xC2\xA0)", "this is a no-break space: write a normal blank"},
    {"(\xE2\x80\x8B|\xEF\xBB\xBF)", "this is an invisible character: delete it"},
    {"([\xC0-\xFF])(?![\x80-\xBF])", "this is not UTF-8: convert the file"},
    {"([A-Za-z_0-9]*[\x80-\xFF]+[A-Za-z_0-9\x80-\xFF]*)",
     "write a word with letters outside of ASCII in quotes: \"$1\""},

    // --- between values ---
    {"=\\s*(" NUMBER "[ \\t]+" WORD ")\\s*[;,]",
     "a number has no unit: write it in the key, or text in quotes: \"$1\""},
    {"(?:^|[{;])\\s*(" WORD "|" QUOTED ")()\\s*;", "a key has a value: $1= ...;"},
    {"=\\s*(" WORD "(?:[ \\t]+" WORD ")+)", "write text with blanks in quotes: \"$1\""},
    {"[A-Za-z_0-9\"]()\\s*\\|", "write ; or , between values"},
    {"[A-Za-z_0-9\"](:)\\s", "write ; or , between values, or = after a key"},
    {"(?:" NUMBER "|" WORD "|" QUOTED "|[A-Za-z_0-9\"'])()\\s*(?:(?://|/\\*).*)?$",
     "a ; or , is missing here"},
    {"(?:" NUMBER "|" WORD "|" QUOTED ")()[ \\t]+(?:" NUMBER "|" WORD "|\")",
     "a ; or , is missing here"},
};

constexpr size_t reach = 200; // bytes before and after a mistake that are searched

class cHints {
  public:
    explicit cHints(std::string const &bytes) : bytes_(bytes), lines_(bytes) {}

    struct cFound {
        cSlip const *slip;
        cNote note;
        size_t end; // offset after the bytes of the slip
    };
    std::optional<cFound> find(size_t offset) const {
        std::string_view const bytes = bytes_;
        size_t const first = offset - std::min(offset, reach);
        size_t const feed = bytes.substr(first, offset - first).rfind('\n');
        bool const cut = feed == bytes.npos && first > 0 && bytes[first - 1] != '\n';
        size_t const begin = feed == bytes.npos ? first : first + feed + 1;
        std::string_view const rest = bytes.substr(offset, reach);
        std::string const around(
            bytes.substr(begin, offset - begin + std::min(rest.find('\n'), rest.size())));
        for (size_t i = 0; i < std::size(slips); ++i) {
            if (cut && slips[i].pattern[0] == '^') continue;
            std::smatch match; // the last match, which begins closest to the position
            auto const flags = std::regex_constants::match_default;
            std::sregex_iterator at(around.begin(), around.end(), expression(i), flags);
            for (; at != std::sregex_iterator(); ++at)
                if (contains(*at, offset - begin)) match = *at;
            if (!match.empty()) return found(slips[i], match, begin);
        }
        return std::nullopt;
    }

    cLines const &lines() const { return lines_; }

  private:
    static bool contains(std::smatch const &match, size_t at) {
        auto const begin = static_cast<size_t>(match.position());
        return begin <= at && at <= begin + static_cast<size_t>(match.length());
    }

    static std::regex const &expression(size_t slip) {
        static std::vector<std::optional<std::regex>> compiled(std::size(slips));
        if (!compiled[slip]) compiled[slip].emplace(slips[slip].pattern);
        return *compiled[slip];
    }

    cFound found(cSlip const &slip, std::smatch const &match, size_t begin) const {
        size_t const at = begin + static_cast<size_t>(match.position(match.size() > 1 ? 1 : 0));
        size_t end = begin + static_cast<size_t>(match.position() + match.length());
        if (slip.until) end = bytes_.find('\n', bytes_.find(slip.until, at));
        return {&slip, {lines_.place(at), match.format(slip.note)}, std::min(end, bytes_.size())};
    }

    std::string const &bytes_;
    cLines const lines_;
};

std::regex const &missing_value() {
    static std::regex const expression("=\\s*([;,])" SPACE "(?:(?:" WORD "|" QUOTED ")" SPACE
                                       "(?:=" SPACE ")?)?$");
    return expression;
}

#undef WORD
#undef NUMBER
#undef QUOTED
#undef START
#undef SPACE
#undef KEY

} // namespace

void place_at_missing_value(cLines const &lines, cMistake &mistake) {
    using enum cat::ErrorKind;
    cat::ErrorKind const kind = mistake.error.kind;
    if (kind != read_equals && kind != read_no_value && kind != read_key_type) return;
    if (!mistake.notes.empty()) return; // the mistake was moved before
    size_t const end = lines.offset(place_of(mistake.error));
    size_t const begin = end - std::min(end, reach);
    std::string const before = lines.bytes().substr(begin, end - begin);
    std::smatch match;
    if (!std::regex_search(before, match, missing_value())) return;
    cPlace const place = lines.place(begin + static_cast<size_t>(match.position(1)));
    mistake.error.line = place.line;
    mistake.error.column = place.column;
    mistake.notes.push_back({place, "a value is missing after ="});
}

// A search for all slips takes about a millisecond, and nobody reads more notes.
constexpr size_t most_searches = 500;

void add_hints(std::string const &bytes, std::vector<cMistake> &mistakes) {
    size_t searches = 0;
    cHints const hints(bytes);
    std::vector<cMistake> found;
    cSlip const *last = nullptr; // the slip of the last mistake
    size_t end = 0;              // the end of its bytes
    for (cMistake &mistake : mistakes) {
        if (mistake.error.line == 0) {
            found.push_back(std::move(mistake));
            continue;
        }
        bool const has_notes = !mistake.notes.empty();
        place_at_missing_value(hints.lines(), mistake);
        size_t const offset = hints.lines().offset(place_of(mistake.error));
        // Messages about brackets, and messages of the tool itself, need no note.
        bool const is_clear =
            has_notes || is_unclosed(mistake.error) || mistake.error.kind == cat::ErrorKind::other;
        std::optional<cHints::cFound> const hint =
            is_clear || ++searches > most_searches ? std::nullopt : hints.find(offset);
        cSlip const *const slip = hint ? hint->slip : nullptr;
        if (!found.empty() && (offset < end || (slip && slip == last && slip->repeats))) {
            add_following(found.back(), mistake);
            continue;
        }
        end = hint ? hint->end : 0;
        last = slip;
        if (hint) mistake.notes.push_back(hint->note);
        found.push_back(std::move(mistake));
    }
    mistakes = std::move(found);
}

cDiagnostic text_after_value(std::string const &bytes, cPlace place) {
    cDiagnostic found{.place = place, .text = text_after_first_value};
    std::optional<cWrongBracket> const wrong = wrong_bracket(bytes);
    size_t const at = cLines(bytes).offset(place);
    if (wrong && wrong->kind == cWrongBracket::surplus && wrong->place < place) {
        found.place = wrong->place;
        found.notes.push_back({wrong->place, "this bracket ends the first value"});
    } else if (bytes[at] == '=') {
        found.notes.push_back({place, "entries with keys are in a map: { ... }"});
    } else if (bytes[at] == '<') {
        found.notes.push_back({place, "this looks like XML"});
    } else if (bytes[at] != '}' && bytes[at] != ']' && bytes[at] != '>' && bytes[at] != ')') {
        found.notes.push_back({place, "a file has one value: write several in { ... } or [ ... ]"});
    }
    return found;
}
