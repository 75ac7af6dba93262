#include "tools/qrv/output/diagnostic.h"

#include <cstdio>

namespace {

bool is_control(char c) { return (static_cast<unsigned char>(c) < ' ' && c != '\t') || c == 127; }

std::string line_of(std::string const &file, cPlace place, char const *kind,
                    std::string const &text) {
    std::string where = file;
    if (place.line != 0)
        where += ":" + std::to_string(place.line) + ":" + std::to_string(place.column);
    return without_controls(where + ": " + kind + ": " + text) + "\n";
}

// " [duplicate-key]", " [0x40000001]" or nothing.
std::string label_of(cDiagnostic const &diagnostic) {
    if (!diagnostic.name.empty()) return " [" + diagnostic.name + "]";
    if (diagnostic.code == 0) return "";
    char text[16];
    std::snprintf(text, sizeof text, " [0x%08x]", diagnostic.code);
    return text;
}

} // namespace

std::string without_controls(std::string const &text) {
    std::string shown;
    for (char c : text) {
        char hex[8];
        std::snprintf(hex, sizeof hex, "\\x%02x", static_cast<unsigned>(c));
        shown += is_control(c) ? std::string(hex) : std::string(1, c);
    }
    return shown;
}

std::string text_of(cDiagnostic const &diagnostic) {
    bool const is_error = diagnostic.severity == cDiagnostic::error;
    std::string lines = line_of(diagnostic.file, diagnostic.place, is_error ? "error" : "warning",
                                diagnostic.text + label_of(diagnostic));
    for (cNote const &note : diagnostic.notes)
        lines += line_of(diagnostic.file, note.place, "note", note.text);
    if (diagnostic.following > 0)
        lines += line_of(diagnostic.file, diagnostic.place, "note",
                         std::to_string(diagnostic.following) +
                             (diagnostic.following == 1 ? " more error follows from it"
                                                        : " more errors follow from it"));
    return lines;
}

std::string text_of(cFindings const &findings) {
    auto const more = [&](char const *kind, size_t count) {
        return count == 0 ? ""
                          : line_of(findings.file, no_place, kind, std::to_string(count) + " more");
    };
    std::string lines;
    for (cDiagnostic const &diagnostic : findings.diagnostics) lines += text_of(diagnostic);
    return lines + more(findings.strict ? "error" : "warning", findings.more_warnings) +
           more("error", findings.more_errors);
}
