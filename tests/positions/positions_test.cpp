// Deletes, doubles or replaces one token of a file, and checks the position of the first error that
// `check` reports, and the number of errors. Everything runs in one process. If QRV_POSITIONS is
// set, it tests every token of the examples and some tokens of 2,000 generated files, otherwise far
// fewer.

#include "tests/mutation/changed_tokens.h"
#include "tests/mutation/generated.h"
#include "tests/support/paths.h"
#include "tools/qrv/output/lines.h"
#include "tools/qrv/reading/reading.h"

#include "qrv/core/ctypescope.h"
#include "qrv/diagnostics/cconsole.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

namespace {

using mutation_test::cToken, mutation_test::is_any;

bool is_opening(cToken const &token) { return is_any(token.text, "({[<"); }
bool is_closing(cToken const &token) { return is_any(token.text, ")}]>"); }
bool is_delimiter(cToken const &token) { return is_any(token.text, ";,"); }

// What surrounds a token: its entry, from its first token to its last, and the brackets that are
// open there. All are offsets.
struct cAround {
    size_t begin = 0, end = 0;
    // The open brackets, and the types before them. For a closing bracket its partner counts as
    // open.
    std::vector<size_t> open;
    size_t bracket = 0; // the innermost open bracket
    // The type before the innermost bracket: errors about a whole value are reported there.
    size_t type = 0;
};

class cEntries {
  public:
    explicit cEntries(std::vector<cToken> const &tokens) : tokens_(tokens) {}

    cAround around(size_t index) const {
        size_t first = index, last = index;
        for (int depth = 0; first > 0; --first) {
            cToken const &before = tokens_[first - 1];
            if (depth == 0 && (is_opening(before) || is_delimiter(before))) break;
            depth += is_closing(before) ? 1 : is_opening(before) ? -1 : 0;
        }
        // A delimiter and a closing bracket also separate the next entry from this one.
        int more = is_delimiter(tokens_[index]) || is_closing(tokens_[index]) ? 1 : 0;
        for (int depth = 0; last + 1 < tokens_.size(); ++last) {
            cToken const &token = tokens_[last];
            if (depth == 0 && last != index && (is_delimiter(token) || is_closing(token)) &&
                --more < 0)
                break;
            if (last != index || is_opening(token))
                depth += is_opening(token) ? 1 : is_closing(token) && depth > 0 ? -1 : 0;
        }
        cAround around{tokens_[first].offset, tokens_[last].offset + tokens_[last].text.size(),
                       open_at(index)};
        if (around.open.empty()) return around;
        size_t const innermost = around.open.back();
        around.bracket = innermost;
        std::vector<size_t> const brackets = around.open;
        for (size_t i = 1; i < tokens_.size(); ++i) {
            size_t const type = tokens_[i - 1].offset;
            if (tokens_[i].offset == innermost) around.type = type;
            if (tokens_[i].text == "(" &&
                std::find(brackets.begin(), brackets.end(), tokens_[i].offset) != brackets.end())
                around.open.push_back(type); // errors in a typed value are reported at its type
        }
        return around;
    }

  private:
    std::vector<size_t> open_at(size_t index) const {
        std::vector<size_t> open;
        for (size_t i = 0; i <= index; ++i) {
            if (is_opening(tokens_[i])) open.push_back(tokens_[i].offset);
            if (is_closing(tokens_[i]) && i < index && !open.empty()) open.pop_back();
        }
        return open;
    }

    std::vector<cToken> const &tokens_;
};

bool library_reports(std::string const &text) {
    cat::TypeScope const types;
    std::istringstream is(text);
    cat::ReadReport const report;
    cAttrScan scan(is, false);
    scan.return_com(true);
    objref value;
    int delimiter = 0;
    scan.scan_obj(value, &delimiter);
    return !report.empty();
}

cFindings found_in(std::string const &text) {
    cat::TypeScope const types;
    cMessages messages("f", default_max_errors);
    messages.source(text);
    report_text_after(text, read_value(text, messages), messages);
    return messages.findings();
}

class Positions : public testing::Test {
  protected:
    struct cFigures {
        size_t cases = 0, silent = 0, elsewhere = 0;
        std::vector<size_t> printed;
    };

    static bool is_thorough() { return std::getenv("QRV_POSITIONS") != nullptr; }

    // Returns whether the diagnostic or one of its notes is in the changed entry, or at the
    // innermost bracket around it. If a bracket was changed, it may be at any open bracket. A value
    // that violates a declaration may be reported at the changed declaration instead.
    static bool is_at(cDiagnostic const &found, cLines const &lines, cAround const &around,
                      size_t end, bool is_bracket) {
        auto const is_near = [&](cPlace place) {
            if (place.line == 0) return false;
            size_t const at = lines.offset(place);
            bool const opened =
                std::find(around.open.begin(), around.open.end(), at) != around.open.end();
            return (around.begin <= at && at <= end) || at == around.type ||
                   (at == around.bracket) || (is_bracket && opened);
        };
        if (is_near(found.place)) return true;
        for (cNote const &note : found.notes)
            if (is_near(note.place)) return true;
        static std::regex const declared("declared at ([0-9]+):([0-9]+)");
        std::smatch match;
        if (!std::regex_search(found.text, match, declared)) return false;
        auto const number = [](std::string const &text) {
            return static_cast<unsigned>(std::stoul(text));
        };
        size_t const at = lines.offset({number(match[1]), number(match[2])});
        return at <= end;
    }

    void expect(std::string const &text, std::vector<cToken> const &tokens, size_t index,
                std::string const &by) {
        std::string const changed = mutation_test::replaced(text, tokens[index], by);
        cFindings const found = found_in(changed);
        if (found.diagnostics.empty()) {
            if (library_reports(changed) && ++figures_.silent <= 3)
                ADD_FAILURE() << "`check` reports nothing: " << changed;
            return;
        }
        ++figures_.cases;
        figures_.printed.push_back(found.diagnostics.size() + found.more_errors);
        cAround const around = cEntries(tokens).around(index);
        size_t const end = around.end + by.size() - tokens[index].text.size();
        bool const is_bracket = is_opening(tokens[index]) || is_closing(tokens[index]) ||
                                by.find_first_of("(){}[]<>") != by.npos;
        cLines const lines(changed);
        if (is_at(found.diagnostics.front(), lines, around, end, is_bracket)) return;
        if (++figures_.elsewhere <= 40 && std::getenv("QRV_POSITIONS_SHOW"))
            std::cout << "--- '" << tokens[index].text << "' -> '" << by << "' at "
                      << text_of({found.file, {}, 0, 0, false})
                      << lines.place(tokens[index].offset).line << ":"
                      << lines.place(tokens[index].offset).column << "\n"
                      << text_of(found) << "\n"
                      << (changed.size() < 700 ? changed : "") << "\n";
    }

    void change_tokens(std::string const &text, size_t step) {
        std::vector<cToken> const tokens = mutation_test::tokens_of(text);
        for (size_t i = chance_() % step; i < tokens.size(); i += 1 + chance_() % (2 * step - 1)) {
            static std::vector<std::string> const words{"(", ")", "{", "}", "[", "]", "=",  ";",
                                                        ",", "x", "1", "?", ":", "-", "\"", "#"};
            std::string by = tokens[i].text;
            while (by == tokens[i].text)
                by = chance_() % 2 == 0 ? words[chance_() % words.size()]
                                        : tokens[chance_() % tokens.size()].text;
            expect(text, tokens, i, "");
            expect(text, tokens, i, tokens[i].text + " " + tokens[i].text);
            expect(text, tokens, i, by);
        }
    }

    ~Positions() override {
        if (figures_.cases == 0) {
            ADD_FAILURE() << "no error was compared";
            return;
        }
        std::sort(figures_.printed.begin(), figures_.printed.end());
        size_t const median = figures_.printed[figures_.printed.size() / 2];
        size_t const right = figures_.cases - figures_.elsewhere;
        std::cout << figures_.cases << " files with errors: " << figures_.silent << " silent, "
                  << right << " at the right position (" << right * 1000 / figures_.cases
                  << " per mille), median of printed errors " << median << ", one error for "
                  << std::count(figures_.printed.begin(), figures_.printed.end(), 1U) << "\n";
        EXPECT_EQ(figures_.silent, 0U);
        EXPECT_GE(right * 100, figures_.cases * 95);
        EXPECT_EQ(median, 1U);
    }

    std::mt19937 chance_{14};
    cFigures figures_;
};

TEST_F(Positions, errors_of_the_examples_are_reported_near_the_change) {
    std::vector<std::string> paths;
    for (auto const &file : std::filesystem::directory_iterator(test::source_file("examples")))
        if (file.path().extension() == ".attr") paths.push_back(file.path().string());
    std::sort(paths.begin(), paths.end());
    for (std::string const &path : paths) {
        std::ifstream is(path, std::ios::binary);
        std::string const text{std::istreambuf_iterator<char>(is),
                               std::istreambuf_iterator<char>()};
        change_tokens(text, is_thorough() ? 1 : text.size() / 80 + 1);
    }
}

TEST_F(Positions, errors_of_generated_files_are_reported_near_the_change) {
    for (int i = 0; i < (is_thorough() ? 2000 : 15); ++i)
        change_tokens(mutation_test::generated_file(chance_), 40);
}

} // namespace
