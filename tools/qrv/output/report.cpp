#include "tools/qrv/output/report.h"

#include "qrv/cvers.h"
#include "tools/qrv/output/characters.h"
#include "tools/qrv/output/escaped.h"
#include "tools/qrv/output/lines.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

namespace {

using cJson = nlohmann::ordered_json;

std::string const names[] = {"text", "json", "github", "sarif"}; // as in cReport::cFormat

std::string dumped(cJson const &json) {
    return json.dump(-1, ' ', false, cJson::error_handler_t::replace);
}

char const *level_of(cDiagnostic::cSeverity severity) {
    return severity == cDiagnostic::error ? "error" : "warning";
}

// All diagnostics, and up to two more about those that were only counted.
std::vector<cDiagnostic> all_of(cFindings const &findings) {
    std::vector<cDiagnostic> all = findings.diagnostics;
    auto const add = [&](cDiagnostic::cSeverity severity, size_t count) {
        if (count == 0) return;
        all.push_back({.severity = severity, .file = findings.file});
        all.back().text = std::to_string(count) + " more";
    };
    add(findings.strict ? cDiagnostic::error : cDiagnostic::warning, findings.more_warnings);
    add(cDiagnostic::error, findings.more_errors);
    return all;
}

// The position of a diagnostic, with columns in characters. Line 0 means the whole file.
struct cRegion {
    cPlace begin = no_place;
    cPlace end = no_place; // after the last character; no_place if unknown
};

class cCharacters {
  public:
    explicit cCharacters(std::string const &bytes) : bytes_(bytes), lines_(bytes) {}

    cRegion region(cDiagnostic const &diagnostic) const {
        if (diagnostic.place.line == 0) return {};
        cRegion region{place(diagnostic.place)};
        if (diagnostic.begin < diagnostic.end) region.end = place(lines_.place(diagnostic.end));
        return region;
    }

    cPlace place(cPlace at) const {
        size_t const begin = lines_.offset({at.line, 1}), end = lines_.offset(at);
        if (begin != line_) {
            line_ = counted_ = begin;
            continuing_ = 0;
        }
        size_t const first = std::min(counted_, end), last = std::max(counted_, end);
        std::string_view const between = std::string_view(bytes_).substr(first, last - first);
        auto const bytes = static_cast<unsigned>(
            std::count_if(between.begin(), between.end(), continues_character));
        continuing_ += counted_ < end ? bytes : 0U - bytes;
        counted_ = end;
        return {at.line, at.column - continuing_};
    }

  private:
    // The last position that was counted, since most positions are requested in order.
    mutable size_t line_ = 0, counted_ = 0; // offsets
    mutable unsigned continuing_ = 0;       // bytes between them that continue a character
    std::string const &bytes_;
    cLines lines_;
};

// --- json ---

cJson json_of(cDiagnostic const &diagnostic) {
    cJson json = {{"severity", level_of(diagnostic.severity)}};
    if (!diagnostic.name.empty()) json["name"] = diagnostic.name;
    if (diagnostic.code != 0) json["code"] = code_of(diagnostic);
    auto const put_place = [](cJson &to, cPlace place) {
        if (place.line == 0) return;
        to["line"] = place.line;
        to["column"] = place.column;
    };
    put_place(json, diagnostic.place);
    if (diagnostic.begin < diagnostic.end) {
        json["begin"] = diagnostic.begin;
        json["end"] = diagnostic.end;
    }
    json["message"] = diagnostic.text;
    json["notes"] = cJson::array();
    for (cNote const &note : diagnostic.notes) {
        cJson said = cJson::object();
        put_place(said, note.place);
        said["message"] = note.text;
        json["notes"].push_back(said);
    }
    json["following"] = diagnostic.following;
    return json;
}

std::string json_of(cFindings const &findings) {
    cJson json = {{"file", findings.file}, {"diagnostics", cJson::array()}};
    for (cDiagnostic const &diagnostic : findings.diagnostics)
        json["diagnostics"].push_back(json_of(diagnostic));
    json["moreErrors"] = findings.more_errors + (findings.strict ? findings.more_warnings : 0);
    json["moreWarnings"] = findings.strict ? 0 : findings.more_warnings;
    return dumped(json);
}

// --- github ---

// Encodes `special` characters: a line feed would end the command, a comma or colon its property.
std::string percent_encoded(std::string const &text, std::string_view special) {
    std::string shown;
    for (char const c : text) {
        char hex[4];
        std::snprintf(hex, sizeof hex, "%%%02X", static_cast<unsigned>(c));
        shown += special.find(c) == special.npos ? std::string(1, c) : std::string(hex);
    }
    return escaped(shown);
}

std::string command_of(char const *kind, std::string const &file, cRegion const &region,
                       std::string const &title, std::string const &text) {
    constexpr std::string_view in_property = "%\r\n:,";
    std::string line = std::string("::") + kind;
    if (!file.empty()) line += " file=" + percent_encoded(file, in_property);
    auto const put = [&](char const *name, unsigned number) {
        if (number != 0) line += std::string(",") + name + "=" + std::to_string(number);
    };
    put("line", region.begin.line);
    put("endLine", region.end.line);
    put("col", region.begin.column);
    put("endColumn", region.end.column);
    if (!title.empty()) line += ",title=" + percent_encoded(title, in_property);
    return line + "::" + percent_encoded(text, "%\r\n") + "\n";
}

std::string commands_of(cFindings const &findings, std::string const &bytes) {
    cCharacters const characters(bytes);
    std::string lines;
    for (cDiagnostic const &diagnostic : all_of(findings)) {
        lines += command_of(level_of(diagnostic.severity), findings.file,
                            characters.region(diagnostic), label_of(diagnostic), diagnostic.text);
        for (cNote const &note : diagnostic.notes)
            lines +=
                command_of("notice", findings.file,
                           note.place.line == 0 ? cRegion() : cRegion{characters.place(note.place)},
                           "", note.text);
    }
    return lines;
}

// --- sarif ---

// The file's name as a URI, relative to the current folder or absolute.
std::string uri_of(std::string const &file) {
    constexpr std::string_view plain = "-._~/";
    std::string uri;
    for (char const c : file) {
        bool const is_plain = is_letter_or_digit(c) || plain.find(c) != plain.npos;
        char hex[4];
        std::snprintf(hex, sizeof hex, "%%%02X", static_cast<unsigned>(c) & 0xFF);
        uri += is_plain ? std::string(1, c) : std::string(hex);
    }
    return uri.starts_with('/') ? "file://" + uri : uri;
}

cJson location_of(std::string const &file, cRegion const &region) {
    cJson physical = {{"artifactLocation", {{"uri", uri_of(file)}}}};
    if (region.begin.line != 0)
        physical["region"] = {{"startLine", region.begin.line},
                              {"startColumn", region.begin.column}};
    if (region.end.line != 0) {
        physical["region"]["endLine"] = region.end.line;
        physical["region"]["endColumn"] = region.end.column;
    }
    return {{"physicalLocation", physical}};
}

cJson result_of(cDiagnostic const &diagnostic, cCharacters const &characters) {
    cJson result = cJson::object();
    if (std::string const name = label_of(diagnostic); !name.empty()) result["ruleId"] = name;
    result["level"] = level_of(diagnostic.severity);
    result["message"] = {{"text", diagnostic.text}};
    if (!diagnostic.file.empty()) // standard input has no address
        result["locations"] =
            cJson::array({location_of(diagnostic.file, characters.region(diagnostic))});
    for (cNote const &note : diagnostic.notes) {
        cRegion const region =
            note.place.line == 0 ? cRegion() : cRegion{characters.place(note.place)};
        cJson location = location_of(diagnostic.file, region);
        location["message"] = {{"text", note.text}};
        result["relatedLocations"].push_back(location);
    }
    return result;
}

// The results, one on each line.
std::string results_of(cFindings const &findings, std::string const &bytes) {
    cCharacters const characters(bytes);
    std::string lines;
    for (cDiagnostic const &diagnostic : all_of(findings))
        lines += (lines.empty() ? "" : ",\n") + dumped(result_of(diagnostic, characters));
    return lines;
}

std::string beginning_of_run(std::vector<cReport::cRule> const &rules) {
    cJson driver = {{"name", "qrv"}, {"version", QRV_VERSION}, {"rules", cJson::array()}};
    for (cReport::cRule const &rule : rules)
        driver["rules"].push_back(
            {{"id", rule.name}, {"shortDescription", {{"text", rule.summary}}}});
    return "{\"version\":\"2.1.0\",\"runs\":[{\"tool\":{\"driver\":" + dumped(driver) +
           "},\n\"columnKind\":\"unicodeCodePoints\",\"results\":[";
}

} // namespace

std::vector<std::string> cReport::formats() { return {std::begin(names), std::end(names)}; }

cReport::cReport(std::string const &format, std::vector<cRule> const &rules)
    : format_(static_cast<cFormat>(std::find(std::begin(names), std::end(names), format) - names)),
      rules_(rules) {}

std::string cReport::begin() const {
    if (format_ == json) return "{\"files\":[";
    return format_ == sarif ? beginning_of_run(rules_) : "";
}

std::string cReport::part(cFindings const &findings, std::string const &bytes) const {
    switch (format_) {
    case text:
        return text_of(findings);
    case json:
        return json_of(findings);
    case github:
        return commands_of(findings, bytes);
    case sarif:
        return results_of(findings, bytes);
    }
    return "";
}

std::string cReport::next(std::string const &part) {
    if (part.empty() || (format_ != json && format_ != sarif)) return part;
    return (std::exchange(has_parts_, true) ? ",\n" : "\n") + part;
}

std::string cReport::end() const {
    if (format_ == json) return "\n]}\n";
    return format_ == sarif ? "\n]}]}\n" : "";
}
