#include "tools/qrv/output/diagnostic.h"

#include "tools/qrv/output/excerpt.h"
#include "tools/qrv/output/message_line.h"

#include <cstdio>

namespace {

std::string line_of(std::string const &file, cPlace place, cRole kind, std::string const &text) {
    std::string where = file;
    if (place.line != 0) where += ':' + line_and_column(place);
    return message_line(where, kind, text);
}

} // namespace

std::string line_and_column(cPlace place) {
    return std::to_string(place.line) + ':' + std::to_string(place.column);
}

std::string code_of(cDiagnostic const &diagnostic) {
    if (diagnostic.code == 0) return "";
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", diagnostic.code);
    return text;
}

std::string label_of(cDiagnostic const &diagnostic) {
    return diagnostic.name.empty() ? code_of(diagnostic) : diagnostic.name;
}

std::string text_of(cDiagnostic const &diagnostic) {
    bool const is_error = diagnostic.severity == cDiagnostic::error;
    std::string const label = label_of(diagnostic);
    std::string lines =
        line_of(diagnostic.file, diagnostic.place, is_error ? cRole::error : cRole::warning,
                diagnostic.text + (label.empty() ? "" : " [" + label + "]"));
    lines += excerpt_of(diagnostic);
    for (cNote const &note : diagnostic.notes)
        lines += line_of(diagnostic.file, note.place, cRole::note, note.text);
    if (diagnostic.following > 0)
        lines += line_of(diagnostic.file, diagnostic.place, cRole::note,
                         std::to_string(diagnostic.following) +
                             (diagnostic.following == 1 ? " more error follows from it"
                                                        : " more errors follow from it"));
    return lines;
}

std::string text_of(cFindings const &findings) {
    auto const more = [&](cRole kind, size_t count) {
        return count == 0 ? ""
                          : line_of(findings.file, no_place, kind, std::to_string(count) + " more");
    };
    std::string lines;
    for (cDiagnostic const &diagnostic : findings.diagnostics) lines += text_of(diagnostic);
    return lines + more(findings.strict ? cRole::error : cRole::warning, findings.more_warnings) +
           more(cRole::error, findings.more_errors);
}
