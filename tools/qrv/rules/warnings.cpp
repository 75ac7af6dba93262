#include "tools/qrv/rules/warnings.h"

#include "tools/qrv/output/lines.h"
#include "tools/qrv/rules/literals.h"
#include "tools/qrv/rules/suggestion.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using cat::Span;

struct cName {
    char const *name;
    char const *summary;
};
constexpr std::array<cName, warning_count> names = {{
    {"duplicate-key", "A key is repeated: its value replaces the earlier one."},
    {"unknown-escape", "A backslash in a string has no effect."},
    {"leading-zero", "A decimal integer begins with zeros."},
    {"wrapped-number", "An integer has more than 31 bits and is read as another one."},
    {"duplicate-member", "A set has a value twice."},
    {"empty-item", "A list has a separator without an item before it."},
    {"decimal-comma", "A list has numbers with a comma that is not a decimal point."},
    {"mixed-brackets", "A value begins with a round bracket and ends with another one."},
    {"comment-inside", "A comment begins inside another one, which has not ended before."},
    {"strings", "A word without quotes looks like a value of another type."},
}};

// Does the finding mean that the value of this key is lost?
bool is_ignored(cDoubtful const &finding) {
    return !finding.lost.empty() && finding.span.begin < finding.lost.front().begin;
}

std::string words_of(cDoubtful const &finding, std::string const &written) {
    switch (finding.warning) {
    case cWarning::duplicate_key:
        return (written == "{"         ? "the number that is the key of this map"
                : is_quote(written[0]) ? "key " + shortened(written)
                                       : "key '" + shortened(written) + "'") +
               " is repeated" + (is_ignored(finding) ? ", and this value is ignored" : "");
    case cWarning::unknown_escape:
        return "unknown escape " + written + ": it is read as " + written.substr(1) +
               "; write \\\\ for a \\";
    case cWarning::leading_zero:
        return "leading zeros have no effect: " + shortened(written) + " is read as " +
               shortened(*without_leading_zeros(written));
    case cWarning::wrapped_number:
        return shortened(written) + " has more than 31 bits: it is read as " +
               std::to_string(*wrapped(written));
    case cWarning::duplicate_member:
        return "the set has this value already";
    case cWarning::empty_item:
        return "no item is before this '" + written + "'";
    case cWarning::decimal_comma:
        return shortened(written) + " is two numbers: write a decimal point";
    case cWarning::mixed_brackets:
        return "this " + written + " closes a round bracket: write " +
               (written == "]"   ? "[ ... ]"
                : written == ">" ? "< ... >"
                                 : "{ ... }");
    case cWarning::comment_inside:
        return "this is inside another comment";
    case cWarning::strings:
        return shortened(written) + " is a string, not " + std::string(looks_like(written)) +
               ": quotes make that clear";
    }
    return "";
}

// The note at the earlier occurrence.
char const *note_of(cWarning warning) {
    return warning == cWarning::mixed_brackets   ? "it is opened here"
           : warning == cWarning::comment_inside ? "that comment begins here"
                                                 : "it is first here";
}

// Turns findings into messages.
class cReporter {
  public:
    struct cNoteAt {
        Span span; // no note if empty
        char const *text;
    };

    cReporter(std::string const &bytes, cMessages &messages)
        : bytes_(bytes), lines_(bytes), messages_(messages) {
        for (cDiagnostic const &error : messages.findings().diagnostics)
            if (error.place.line != 0) errors_.push_back(error.place);
        std::sort(errors_.begin(), errors_.end());
    }

    bool is_explained(cDoubtful const &finding) const {
        if (errors_.empty()) return false;
        auto const error =
            std::lower_bound(errors_.begin(), errors_.end(), lines_.place(finding.scope.begin));
        if (error != errors_.end() && *error < lines_.place(finding.scope.end)) return true;
        bool const is_number = finding.warning == cWarning::leading_zero ||
                               finding.warning == cWarning::wrapped_number;
        return is_number && error != errors_.begin() &&
               is_in_item(lines_.offset(*std::prev(error)), finding.span.begin);
    }

    bool has_room(cDiagnostic::cSeverity severity) const {
        return severity == cDiagnostic::error ? messages_.shows_errors()
                                              : messages_.shows_warnings();
    }
    void count(cDiagnostic::cSeverity severity) { messages_.add({.severity = severity}); }

    void add(cDiagnostic::cSeverity severity, cDoubtful const &finding, Span span,
             std::string const &text, cNoteAt const &note) {
        cDiagnostic diagnostic{.severity = severity,
                               .name = name_of(finding.warning),
                               .place = lines_.place(span.begin),
                               .begin = span.begin,
                               .end = span.end,
                               .text = text};
        if (!note.span.empty())
            diagnostic.notes.push_back({lines_.place(note.span.begin), note.text});
        messages_.add(std::move(diagnostic));
    }

  private:
    // Is the offset in the item that begins at `begin`? A number there may be part of a date.
    bool is_in_item(size_t begin, size_t offset) const {
        std::string_view const between = std::string_view(bytes_).substr(begin, offset - begin);
        return between.find_first_of(";,{}[]<>()\n") == between.npos;
    }

    std::string const &bytes_;
    cLines lines_;
    cMessages &messages_;
    std::vector<cPlace> errors_;
};

} // namespace

char const *name_of(cWarning which) { return names[static_cast<size_t>(which)].name; }

std::vector<cReport::cRule> warning_rules() {
    std::vector<cReport::cRule> rules;
    for (cName const &each : names) rules.push_back({each.name, each.summary});
    return rules;
}

std::string cWarningLevels::set(std::string const &form) {
    std::string_view name = form;
    bool const is_error = name.starts_with("error="), is_off = name.starts_with("no-");
    if (is_error) name.remove_prefix(6);
    if (is_off) name.remove_prefix(3);
    auto const *const known = std::find_if(names.begin(), names.end(),
                                           [&](cName const &each) { return each.name == name; });
    if (form == "error") {
        all_errors_ = true;
    } else if (known == names.end()) {
        cSuggestion suggestion(name);
        for (cName const &each : names) suggestion.show(each.name);
        return "unknown warning '" + shortened(std::string(name)) + "'" + suggestion.text();
    } else {
        cState &state = states_[static_cast<size_t>(known - names.begin())];
        state.is_on = !is_off;
        state.is_error = is_error || (state.is_error && !is_off);
    }
    return "";
}

cWarningLevels::cLevel cWarningLevels::of(cWarning which) const {
    cState const &state = states_[static_cast<size_t>(which)];
    if (!state.is_on) return off;
    return state.is_error || all_errors_ ? error : cLevel::warning;
}

void add_warnings(std::string const &bytes, cat::SourceMap const &map, cWarningLevels const &levels,
                  cMessages &messages) {
    cReporter reporter(bytes, messages);
    auto const found = [&](cDoubtful const &finding) {
        cWarningLevels::cLevel const level = levels.of(finding.warning);
        if (level == cWarningLevels::off || reporter.is_explained(finding)) return;
        auto const severity =
            level == cWarningLevels::error ? cDiagnostic::error : cDiagnostic::warning;
        if (!reporter.has_room(severity)) return reporter.count(severity);
        std::string const written = bytes.substr(finding.span.begin, finding.span.size());
        reporter.add(severity, finding, finding.span, words_of(finding, written),
                     {finding.first, note_of(finding.warning)});
    };
    find_doubtful(bytes, map, found);
}

void add_lost_by_writing(std::string const &bytes, cat::SourceMap const &map, cMessages &messages) {
    cReporter reporter(bytes, messages);
    auto const add = [&](cDoubtful const &finding, Span span, std::string const &text,
                         cReporter::cNoteAt const &note) {
        if (reporter.has_room(cDiagnostic::error))
            reporter.add(cDiagnostic::error, finding, span, text, note);
        else
            reporter.count(cDiagnostic::error);
    };
    find_doubtful(bytes, map, [&](cDoubtful const &finding) {
        Span const span = finding.span;
        if (finding.warning == cWarning::unknown_escape)
            add(finding, span,
                "the \\ before " + bytes.substr(span.begin + 1, span.size() - 1) + " would be lost",
                {});
        for (Span const lost : finding.lost)
            add(finding, lost, "this value would be lost",
                {is_ignored(finding) ? finding.first : span,
                 is_ignored(finding) ? "its key is first here" : "its key is repeated here"});
    });
}
