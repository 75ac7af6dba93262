#pragma once
// Generates text as people write it: with comments and blanks anywhere, all kinds of literals, on
// one line or many, with references to earlier values and with repeated keys.

#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace test {

class Random {
  public:
    explicit Random(unsigned seed) : engine_(seed) {}
    size_t below(size_t count) { return engine_() % count; }
    bool one_in(size_t count) { return below(count) == 0; }
    template <size_t N> char const *of(char const *const (&words)[N]) { return words[below(N)]; }

  private:
    std::mt19937 engine_;
};

inline constexpr char const *const words[] = {"a", "b", "c",  "dd",       "eee",
                                              "x", "y", "zz", "long_key", "k1"};

class Writer {
  public:
    // If `again`, keys are repeated; if `typed`, the text declares types and has values of them.
    Writer(Random &random, bool again, bool typed = false)
        : random_(random), again_(again), typed_(typed) {}

    std::string document() {
        if (random_.one_in(3)) text_ += "// a file\n\n";
        if (random_.one_in(3)) text_ += "/* of\n   several lines */\n";
        map(0, "");
        if (random_.one_in(3)) text_ += random_.one_in(2) ? " // end\n" : "\n// end\n";
        return std::move(text_);
    }

  private:
    void blank() {
        static constexpr char const *const blanks[] = {"", " ", "", " ", "  ", " /* b */ "};
        text_ += random_.of(blanks);
    }
    void line(size_t depth) {
        text_ += "\n" + std::string(2 * depth, ' ');
        if (random_.one_in(9)) text_ += "// above\n" + std::string(2 * depth, ' ');
        if (random_.one_in(25)) text_ += "\n" + std::string(2 * depth, ' ');
        if (random_.one_in(25)) text_ += "// section\n\n" + std::string(2 * depth, ' ');
    }
    void after() {
        if (random_.one_in(9)) text_ += " // after";
    }

    void literal() {
        static constexpr char const *const literals[] = {
            "1",          "-12",      "0x1F",       "007",   "+4",         "5u",
            "1.5",        "2.50",     ".5",         "1.e3",  "2.5e-7",     "0.25f",
            "true",       "false",    "#nil",       "#true", "word",       "\"\"",
            "\"a b\"",    "'single'", "\"q\\\"q\"", "12",    "intf(0x1f)", "other",
            "\"a\\\nb\"", "3",        "intf(b101)", "yes",   "4.0",        "'it\\'s'"};
        text_ += random_.of(literals);
    }

    void declarations() {
        text_ += "\n  Mode = choice({off=0; on=1}); // a mode\n"
                 "  P = attlist(n = attspec(type=int; default=3);\n"
                 "    mode = attspec(type=Mode; default=Mode(off)); // a default\n"
                 "    list = attspec(type=vector; default=[]); any = attspec(flag=#IMPLIED));\n  ";
    }

    void typed_value() {
        static constexpr char const *const values[] = {"Mode(on)",
                                                       "Mode( off )",
                                                       "P()",
                                                       "P(n = 4)",
                                                       "P(list=[1,2])",
                                                       "P(n = 5; // five\n    mode = Mode(on))",
                                                       "P( /* all */ any = {x=1; y=P()}; )"};
        text_ += random_.of(values);
    }

    void value(size_t depth, std::string const &path) {
        size_t const kind = random_.below(depth > 3 ? 6 : 10);
        if (kind == 5 && !paths_.empty()) {
            text_ += "#cRef(" + paths_[random_.below(paths_.size())] + ")";
            return;
        }
        if (typed_ && random_.one_in(4)) return typed_value();
        if (kind < 6) return literal();
        if (kind < 8) return map(depth, path);
        if (kind < 9) return list(depth, path, '[', ']');
        list(depth, path, '<', '>');
    }

    void map(size_t depth, std::string const &path) {
        bool const lines = random_.one_in(2);
        std::vector<std::string> keys;
        text_ += '{';
        if (typed_ && depth == 0) declarations();
        size_t const count = random_.below(5);
        bool const aligned = random_.one_in(3), ended = random_.one_in(2);
        for (size_t i = 0; i < count; ++i) {
            bool const again = again_ && !keys.empty() && random_.one_in(12);
            std::string const key = again
                                        ? keys[random_.below(keys.size())]
                                        : random_.of(words) + std::string("k") + std::to_string(i);
            keys.push_back(key);
            if (lines)
                line(depth + 1);
            else
                blank();
            text_ += key;
            if (aligned && key.size() < 10)
                text_ += std::string(10 - key.size(), ' ') + "= ";
            else
                text_ += random_.one_in(2) ? " = " : "=";
            value(depth + 1, path + "/" + key);
            if (!again && random_.one_in(2)) paths_.push_back(path + "/" + key);
            if (i + 1 < count || ended) text_ += random_.one_in(9) ? ',' : ';';
            if (lines) after();
        }
        if (lines)
            line(depth);
        else
            blank();
        text_ += '}';
    }

    void list(size_t depth, std::string const &path, char open, char close) {
        bool const lines = random_.one_in(3);
        text_ += open;
        size_t const count = random_.below(5);
        bool const ended = random_.one_in(2);
        for (size_t i = 0; i < count; ++i) {
            if (lines)
                line(depth + 1);
            else
                text_ += ' ';
            value(depth + 1, path + "/" + std::to_string(i));
            if (open == '[' && random_.one_in(3)) paths_.push_back(path + "/" + std::to_string(i));
            if (i + 1 < count || ended) text_ += ',';
            if (lines) after();
        }
        if (lines)
            line(depth);
        else
            text_ += ' ';
        text_ += close;
    }

    Random &random_;
    bool const again_;
    bool const typed_;
    std::string text_;
    std::vector<std::string> paths_; // of values already written, for references
};

} // namespace test
