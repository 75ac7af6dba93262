// Generated text whose parts are known: the source map has the same parts, they are nested
// correctly, each byte belongs to one of them, and they lead to the values that were read.

#include "qrv/text/read/csourcemap.h"

#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/types.h"
#include "tests/text/source_support.h"
#include "tests/text/throwing_support.h"

#include <concepts>
#include <optional>
#include <random>

using source_test::Mapped;
using source_test::Marked;

namespace {

class cRandomText {
  public:
    explicit cRandomText(unsigned seed) : random_(seed) {}

    std::string document() {
        text_ = one_in(4) ? comment() : "";
        mark('v', [&] { top(); });
        space();
        return text_;
    }

  private:
    unsigned below(unsigned n) { return static_cast<unsigned>(random_() % n); }
    bool one_in(unsigned n) { return below(n) == 0; }

    template <std::invocable Part> void mark(char what, Part part) {
        text_ += std::string("«") + what + ":";
        part();
        text_ += "»";
    }
    void mark(char what, std::string const &part) {
        mark(what, [&] { text_ += part; });
    }

    std::string comment() {
        std::string const name = "c" + std::to_string(++comments_) + ".";
        if (one_in(2)) return "«C:// " + name + "»" + end_of_line();
        return "«C:/* " + name + (one_in(3) ? end_of_line() : "") + " */»";
    }
    std::string end_of_line() const { return random_line_end_ ? "\r\n" : "\n"; }
    void space() {
        switch (below(12)) {
        case 0:
        case 1:
        case 2:
            text_ += ' ';
            break;
        case 3:
            text_ += end_of_line() + "  ";
            break;
        case 4:
            text_ += '\t' + comment();
            break;
        case 5:
            text_ += end_of_line() + end_of_line() + comment() + ' ' + comment();
            break;
        default:
            break;
        }
    }
    void gap() { // at least a blank
        space();
        text_ += one_in(4) ? end_of_line() : " ";
        space();
    }

    std::string scalar() {
        static constexpr char const *scalars[] = {
            "1",    "-25",  "0x1F",  "7u",           "1.5",       "-2.5e-3",
            ".5f",  "true", "#true", "\"a \\\" }\"", "'it; {'",   "\"\"",
            "word", "w_2",  "#nil",  "+3",           "\"// no\"", "\"two\\\n lines\""};
        return scalars[below(std::size(scalars))];
    }
    std::string key() {
        static constexpr char const *keys[] = {"a", "b", "c", "d", "\"e f\"", "5", "0x10", "'g'"};
        return keys[below(std::size(keys))];
    }

    void top() {
        mark('o', "{");
        space();
        declare();
        entries(4);
        mark('c', "}");
    }
    void declare() {
        entry("Mode", [&] {
            typed("choice", [&] {
                mark('v', [&] {
                    mark('o', "{");
                    entry("off", [&] { text_ += "0"; });
                    entry("on", [&] { text_ += "1"; });
                    mark('c', "}");
                });
            });
        });
        entry("Axis", [&] {
            typed("attlist", [&] {
                for (char const *const name : {"a", "b", "c"})
                    entry(name, [&] {
                        typed("attspec", [&] { entry("default", [&] { text_ += "5"; }); });
                    });
            });
        });
    }
    template <class Value> void entry(std::string const &key, Value value) {
        mark('k', key);
        space();
        mark('s', "=");
        space();
        mark('v', value);
        space();
        mark('d', ";");
        space();
    }
    template <class Inside> void typed(std::string const &type, Inside inside) {
        mark('t', type);
        space();
        char const *const brackets[] = {"()", "[]", "{}"};
        std::string const chosen = brackets[below(3)];
        mark('o', chosen.substr(0, 1));
        space();
        inside();
        mark('c', chosen.substr(1));
    }

    void delimiter(bool needed) {
        if (needed || !one_in(3)) {
            space();
            mark('d', one_in(2) ? ";" : ",");
        }
        space();
    }

    void entries(int depth) {
        for (unsigned n = below(6); n > 0; --n) {
            mark('k', key());
            space();
            mark('s', "=");
            space();
            bool const needs = value(depth - 1);
            delimiter(needs && n > 1);
            if (text_.back() != ' ') text_ += ' ';
        }
    }
    void items(int depth) {
        text_ += ' '; // two brackets would form an operator
        for (unsigned n = below(5); n > 0; --n) delimiter(value(depth - 1) && n > 1);
    }

    // Returns whether a delimiter must follow before another value.
    bool value(int depth) {
        bool needs = false;
        auto const kind = depth <= 0 ? below(2) : below(9);
        if (kind == 7) {
            mark('r', [&] { text_ += one_in(2) ? "#cRef(/Mode/on)" : "#cRef( /Axis/a )"; });
            return false;
        }
        mark('v', [&] {
            switch (kind) {
            case 2:
            case 3:
                mark('o', "{");
                space();
                entries(depth);
                mark('c', "}");
                break;
            case 4:
                mark('o', "[");
                space();
                items(depth);
                mark('c', "]");
                break;
            case 5:
                mark('o', "<");
                space();
                items(depth);
                text_ += ' ';
                mark('c', ">");
                break;
            case 6:
                typed("Axis", [&] { axis(depth); });
                break;
            case 8:
                typed("Mode", [&] {
                    mark('v', one_in(2) ? "on" : "off");
                    space();
                });
                break;
            default:
                text_ += scalar();
                needs = true;
            }
        });
        return needs;
    }
    void axis(int depth) {
        char const *const keys[] = {"a", "b", "c"};
        for (unsigned n = below(3); n > 0; --n) {
            mark('k', keys[below(3)]);
            space();
            mark('s', "=");
            space();
            bool const needs = value(depth - 1);
            delimiter(needs && n > 1);
        }
    }

    std::mt19937 random_;
    std::string text_;
    unsigned comments_ = 0;
    bool random_line_end_ = random_() % 3 == 0;
};

std::string without_kinds_of_comments(std::vector<source_test::Mark> marks,
                                      std::string const &text) {
    for (source_test::Mark &mark : marks)
        if (std::string("ABIO").find(mark.what) != std::string::npos) mark.what = 'C';
    return source_test::shown(marks, text);
}

class RandomSourceMaps : public QrvTest {
  protected:
    static void SetUpTestSuite() { // the first text of a kind creates objects that stay
        cat::ReadReport const report;
        for (unsigned seed = 0; seed < 50; ++seed) {
            cTypesBack const types;
            Mapped const mapped(Marked(cRandomText(seed).document()).text);
        }
        text_state().forget_comments();
    }

    ~RandomSourceMaps() override { text_state().forget_comments(); }

    // Entries are in file order and inside the surrounding entry; comments are beside the entry to
    // which they belong.
    static void expect_fits(cat::SourceMap const &map, std::string const &text) {
        for (std::size_t i = 0; i < map.size(); ++i) {
            cat::SourceEntry const entry = map.entry(i);
            ASSERT_LE(entry.all().end, text.size());
            ASSERT_LE(entry.all().begin, entry.value.begin);
            ASSERT_LE(entry.value.begin, entry.value.end);
            if (i > 0) {
                ASSERT_LE(map.entry(i - 1).all().begin, entry.all().begin);
            }
            if (entry.parent == cat::SourceEntry::none) continue;
            ASSERT_LT(entry.parent, i);
            cat::SourceEntry const around = map.entry(entry.parent);
            ASSERT_LE(around.value.begin, entry.all().begin) << text;
            ASSERT_LE(entry.all().end, around.value.end) << text;
        }
        for (cat::SourceComment const &comment : map.comments()) {
            ASSERT_LT(comment.span.begin, comment.span.end);
            if (comment.where == cat::SourceComment::outside) continue;
            cat::SourceEntry const entry = map.entry(comment.entry);
            if (comment.where == cat::SourceComment::above)
                expect_gap(text, comment.span.end, entry.all().begin, 2);
            else if (comment.where == cat::SourceComment::after)
                expect_gap(text, entry.all().end, comment.span.begin, 99);
            else
                ASSERT_EQ(map.at(comment.span.begin), comment.entry);
        }
    }
    // No token and no empty line is between.
    static void expect_gap(std::string const &text, std::size_t begin, std::size_t end,
                           long most_lines) {
        ASSERT_LE(begin, end);
        std::istringstream is(text.substr(begin, end - begin));
        cAttrScan scan(is, false);
        EXPECT_EQ(scan.gettok(), tkEof) << text;
        long lines = 0;
        for (std::size_t i = begin; i < end && text.compare(i, 1, "/") != 0; ++i)
            lines += text[i] == '\n';
        EXPECT_LT(lines, most_lines) << text;
    }

    // Each byte except blanks is in one part.
    static void expect_covers(std::vector<source_test::Mark> const &marks,
                              std::string const &text) {
        std::string left = text;
        for (source_test::Mark const &mark : marks)
            if (mark.what != 'v' || text.find_first_of("{[<(", mark.begin) >= mark.end)
                for (std::size_t i = mark.begin; i < mark.end; ++i) left[i] = ' ';
        for (source_test::Mark const &mark : marks) // they contain words with brackets
            if (mark.what == 'v' && (text[mark.begin] == '"' || text[mark.begin] == '\''))
                for (std::size_t i = mark.begin; i < mark.end; ++i) left[i] = ' ';
        EXPECT_EQ(left.find_first_not_of(" \t\r\n"), std::string::npos) << text << "\n" << left;
    }

    static void expect_leads_to_values(Mapped const &mapped) {
        for (std::size_t i = 1; i < mapped.map.size(); ++i) {
            cat::SourceEntry const entry = mapped.map.entry(i);
            if (entry.anid == 0) continue;
            std::string const path = mapped.map.path_at(entry.all().begin);
            objref const value = mapped.root->getattrp(path);
            ASSERT_FALSE(cObj::is_bad(value)) << path << "\n" << mapped.text;
            EXPECT_EQ(entry.obid, value->obid()) << path << "\n" << mapped.text;
            std::vector<cat::SourceEntry> const all = mapped.map.spans(*mapped.root, path);
            bool const found = std::any_of(all.begin(), all.end(), [&](auto const &other) {
                return other.number == i && other.anid == entry.anid;
            });
            EXPECT_TRUE(found) << path << "\n" << mapped.text;
            std::vector<cat::SourceEntry> const written = mapped.map.written(*value);
            if (!written.empty() && written.back().number == i && entry.open.empty())
                expect_reads_alone(mapped.text_of(entry.value), *value);
        }
    }
    static void expect_reads_alone(std::string const &text, cObj const &value) {
        objref alone;
        EXPECT_EQ(cObj::readobj(text.c_str(), alone), 0) << text;
        bool const converted = !alone || &alone->type() != &value.type();
        EXPECT_TRUE(converted || alone->equal(value)) << text;
    }
};

TEST_F(RandomSourceMaps, have_the_generated_parts_of_the_text) {
    std::size_t entries = 0, comments = 0, clean = 0;
    for (unsigned seed = 0; seed < 400; ++seed) {
        cTypesBack const types;
        cat::ReadReport const report;
        Marked const marked(cRandomText(seed).document());
        Mapped mapped(marked.text);
        mapped.read_rest();
        std::vector<source_test::Mark> const marks = source_test::marks_of(mapped.map);
        ASSERT_TRUE(without_kinds_of_comments(marks, marked.text) == marked.shown()) << seed << "\n"
                                                                                     << marked.text;
        expect_fits(mapped.map, marked.text);
        expect_covers(marks, marked.text);
        if (report.empty()) expect_leads_to_values(mapped); // otherwise some merges have failed
        if (HasFailure()) break;
        clean += report.empty();
        entries += mapped.map.size();
        comments += mapped.map.comments().size();
    }
    EXPECT_GT(clean, 200u);
    EXPECT_GT(entries, 5'000u);
    EXPECT_GT(comments, 2'000u);
}

TEST_F(RandomSourceMaps, know_the_comments_that_the_writer_preserves) {
    std::size_t kept = 0, lost = 0;
    for (unsigned seed = 0; seed < 400; ++seed) {
        cTypesBack const types;
        cat::ReadReport const report;
        Mapped const mapped(Marked(cRandomText(seed).document()).text);
        std::string const written = cat::as_text(mapped.root);
        for (cat::SourceComment const &comment : mapped.map.comments()) {
            std::string const text = mapped.text_of(comment.span);
            std::string const name = text.substr(3, text.find('.') - 2);
            bool const is_written = written.find(" " + name) != std::string::npos;
            ASSERT_EQ(comment.kept, is_written) << seed << " " << text << "\n"
                                                << mapped.text << "\n---\n"
                                                << written;
            ++(is_written ? kept : lost);
        }
    }
    EXPECT_GT(kept, 200u);
    EXPECT_GT(lost, 200u);
}

// Reads with a map and without one.
TEST_F(RandomSourceMaps, do_not_change_the_values_read) {
    for (unsigned seed = 0; seed < 200; ++seed) {
        std::string text = Marked(cRandomText(seed).document()).text;
        std::mt19937 random(seed);
        if (seed % 2)
            text.erase(random() % text.size(), 1 + random() % 5); // usually causes an error
        auto const outcome = [&text](bool with_map) {
            cTypesBack const types;
            cat::ReadReport const report;
            std::optional<cat::SourceMap> map;
            if (with_map) map.emplace();
            std::istringstream is(text);
            cAttrScan scan(is, false);
            scan.return_com(true);
            objref root;
            int const code = scan.scan_obj(root, nullptr);
            return std::to_string(code) + " " + std::to_string(scan.errcount()) + " " +
                   reader_test::written(root) + "\n" + reader_test::shown(report);
        };
        ASSERT_EQ(outcome(true), outcome(false)) << text;
    }
}

TEST_F(RandomSourceMaps, match_text_truncated_anywhere) {
    std::string const text = Marked(cRandomText(7).document()).text;
    for (std::size_t size = 0; size <= text.size(); ++size) {
        cTypesBack const types;
        cat::ReadReport const report;
        Mapped const mapped(text.substr(0, size));
        expect_fits(mapped.map, mapped.text);
        ASSERT_FALSE(HasFailure()) << mapped.text;
    }
}

TEST_F(RandomSourceMaps, match_text_whose_errors_throw) {
    std::string const text = "{a = {b = nosuch(1); c = [1, #none, 2]}; d = int(x); e = {f = = 1}; "
                             "T = attlist(n = attspec(type = int)); t = T(n = q); u = [T(m = 1)]; "
                             "g = #cRef(/none); h = 99999999999; i = {j = <#no>}; k = 1";
    int thrown = 0;
    for (int n = 1;; ++n) {
        cTypesBack const types;
        std::istringstream is(text);
        cAttrScan scan(is, false);
        reader_test::cThrowing throwing(n);
        throwing.watch(scan);
        cat::SourceMap const map;
        objref root;
        try {
            scan.scan_obj(root, nullptr);
        } catch (cErr const &) {
        }
        messages();
        expect_fits(map, text);
        ASSERT_FALSE(HasFailure()) << n;
        EXPECT_GT(map.size(), 0u);
        if (!throwing.thrown()) break;
        ++thrown;
    }
    EXPECT_GT(thrown, 10);
    Mapped const mapped("{a = 1}"); // leave nothing that affects the next reading
    EXPECT_EQ(mapped.at("a"), "1:1");
}

TEST_F(RandomSourceMaps, match_text_with_invalid_bytes) {
    std::string const text = Marked(cRandomText(11).document()).text;
    std::mt19937 random(5);
    for (int i = 0; i < 1000; ++i) {
        cTypesBack const types;
        cat::ReadReport const report;
        std::string wrong = text;
        for (auto n = 1 + random() % 3; n > 0; --n)
            wrong[random() % wrong.size()] = "{}[]<>();,=#\"'/* \nab1\x80"[random() % 22];
        Mapped const mapped(wrong);
        expect_fits(mapped.map, mapped.text);
        ASSERT_FALSE(HasFailure()) << mapped.text;
    }
}

} // namespace
