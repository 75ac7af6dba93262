#include "tools/qrv/search/pattern.h"

#include "qrv/util/cmatch.h"

#include <vector>

namespace {

// The reason why the pattern can't match, at the character `at`; empty if it can.
struct cObstacle {
    size_t at = 0;
    std::string text;
    bool star = false;
};

cObstacle obstacle_in(std::string const &pattern) {
    std::vector<size_t> open;
    char last = 0; // the last element at the top level, if it is special
    for (size_t i = 0; i < pattern.size(); ++i) {
        char const c = pattern[i];
        bool const after_choice = last == '}';
        last = open.empty() && c != '}' ? c : char(0);
        if (c == '\\') {
            if (++i == pattern.size()) {
                if (after_choice) return {}; // can match the end of the string
                return {i - 1, "this \\ ends the match before the end of the string", false};
            }
            last = 0;
        } else if (c == '[') {
            size_t const begin = i++;
            while (i < pattern.size() && pattern[i] != ']') i += pattern[i] == '\\' ? 2 : 1;
            if (i >= pattern.size()) return {begin, "this [ is not closed", false};
        } else if (c == '{') {
            open.push_back(i);
        } else if (c == '}' && !open.empty()) {
            open.pop_back();
            if (open.empty()) last = c;
        }
    }
    if (!open.empty()) return {open.back(), "this { is not closed", false};
    if (last != '*') return {};
    return {pattern.size() - 1, "this * never matches the last character of a string", true};
}

} // namespace

bool cPattern::matches(std::string const &text) const {
    if (text.empty() || text_.empty()) return text.empty() && text_.empty();
    int const taken = cMatch(text.c_str(), text_.c_str(), first_);
    return static_cast<size_t>(taken) == text.size();
}

void cPattern::report_hopeless(cMessages &messages) const {
    cObstacle const found = obstacle_in(text_);
    if (found.text.empty()) return;
    cPlace const place = place_after({}, text_, found.at);
    messages.error(place, found.text + ", so the pattern matches no whole string");
    if (found.star)
        messages.note(place, "write '" + shortened(text_) + "?'" +
                                 (first_ ? ", and leave out --first" : ""));
    else if (text_[found.at] == '\\')
        messages.note(place, "write \\\\ for the character \\ itself");
    else
        messages.note(place, std::string("write \\") + text_[found.at] + " for the character " +
                                 text_[found.at] + " itself");
}
