#include "tools/qrv/output/messages.h"

#include "tools/qrv/output/escaped.h"
#include "tools/qrv/output/excerpt.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace {

constexpr size_t longest_text = 400;

} // namespace

cPlace place_after(cPlace place, std::string const &text, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        if (text[i] == '\n')
            ++place.line, place.column = 1;
        else
            ++place.column;
    }
    return place;
}

std::string shortened(std::string const &text, size_t longest) {
    if (text.size() <= longest) return text;
    size_t head = longest / 2 - 3, tail = text.size() - head;
    while (head > 0 && continues_character(text[head])) --head;
    while (tail < text.size() && continues_character(text[tail])) ++tail;
    return text.substr(0, head) + " ... " + text.substr(tail);
}

std::string quoted(std::string const &text) { return '\'' + shortened(text) + '\''; }

std::string with_short_path(std::string text, std::string const &path) {
    size_t const at = path.empty() ? text.npos : text.find(path);
    return at == text.npos ? text : text.replace(at, path.size(), shortened(path));
}

bool cMessages::has_room(size_t shown, size_t more) const {
    return more == 0 && shown < static_cast<size_t>(limit_);
}

void cMessages::source(std::string const &bytes) {
    bytes_ = &bytes;
    lines_.emplace(bytes);
}

void cMessages::add(cDiagnostic diagnostic) {
    bool const is_error = diagnostic.severity == cDiagnostic::error;
    size_t &shown = is_error ? errors_ : warnings_;
    size_t &more = is_error ? findings_.more_errors : findings_.more_warnings;
    if (!has_room(shown, more)) {
        ++more;
        return;
    }
    ++shown;
    if (findings_.strict) diagnostic.severity = cDiagnostic::error;
    diagnostic.file = findings_.file;
    if (lines_) add_source(*bytes_, *lines_, diagnostic);
    diagnostic.text = shortened(diagnostic.text, longest_text);
    findings_.diagnostics.push_back(std::move(diagnostic));
}

void cMessages::error(std::string const &text, unsigned code) { error(no_place, text, code); }

void cMessages::error(cPlace place, std::string const &text, unsigned code) {
    add({.code = code, .place = place, .text = text});
}

void cMessages::warning(std::string const &text) { warning(no_place, text); }

void cMessages::warning(cPlace place, std::string const &text) {
    add({.severity = cDiagnostic::warning, .place = place, .text = text});
}

void cMessages::note(cPlace place, std::string const &text) {
    if (findings_.more_errors == 0) findings_.diagnostics.back().notes.push_back({place, text});
}

void cMessages::take(cFindings const &findings) {
    for (cDiagnostic const &diagnostic : findings.diagnostics) add(diagnostic);
    findings_.more_errors += findings.more_errors;
    findings_.more_warnings += findings.more_warnings;
}

void cMessages::sort() {
    auto const before = [](cDiagnostic const &a, cDiagnostic const &b) {
        return std::tuple(a.place == no_place, a.place) < std::tuple(b.place == no_place, b.place);
    };
    std::stable_sort(findings_.diagnostics.begin(), findings_.diagnostics.end(), before);
}
