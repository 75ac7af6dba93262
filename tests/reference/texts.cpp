#include "tests/reference/texts.h"

#include "tests/reference/user_types.h"

#include <algorithm>
#include <array>

namespace reference {

cTexts::cTexts(cRandom &random)
    : random_(random), wrong_(random.one_in(3)), comments_(random.one_in(3)),
      left_(static_cast<int>(4 + random.below(36))) {}

std::string cTexts::comment() {
    static constexpr std::array comments{"// c\n",    "/* c */",   "/* two\nlines */", "//\n",
                                         "/**/",      "/* // */",  "// /* \n",         "//} ]\n",
                                         "/* } > */", "// \xE4 \n"};
    return random_.pick(comments);
}

std::string cTexts::space() {
    if (comments_ && random_.one_in(6)) return comment();
    static constexpr std::array spaces{"", "", "", "", " ", " ", "\n", "\t", "\r\n", "  \n "};
    return random_.pick(spaces);
}

std::string cTexts::separator(char const *usual) {
    if (!wrong_ || !random_.one_in(9)) return usual;
    static constexpr std::array wrong{"",  ",", ";", ";;", "=",    " ", ":",
                                      "}", ">", "]", ")",  "\xFF", "?"};
    return random_.pick(wrong);
}

std::string cTexts::number() {
    static constexpr std::array numbers{"0",
                                        "1",
                                        "2",
                                        "-1",
                                        "+5",
                                        "007",
                                        "2147483647",
                                        "-2147483648",
                                        "2147483648",
                                        "99999999999",
                                        "0x10",
                                        "0xFFFFFFFF",
                                        "0x1FFFFFFFF",
                                        "-0x5",
                                        "5u",
                                        "4000000000u",
                                        "7U",
                                        "1.5",
                                        "-0.25",
                                        ".5",
                                        "5.",
                                        "1e3",
                                        "1E-3",
                                        "1e400",
                                        "1e-400",
                                        "1.5f",
                                        "2f",
                                        "1e40f",
                                        "3.40282347e38f",
                                        "0.1",
                                        "0.30000000000000004",
                                        "-.5e+2",
                                        "12ab",
                                        "1.5x",
                                        "-",
                                        "+",
                                        "1e",
                                        "0x",
                                        "--1",
                                        "1.2.3",
                                        "123456789.123456789",
                                        "1e22",
                                        "-0",
                                        "-0.0",
                                        "5F",
                                        "0xg"};
    return wrong_              ? random_.pick(numbers)
           : random_.one_in(2) ? std::to_string(random_.below(6))
                               : numbers[random_.below(24)];
}

std::string cTexts::string() {
    static constexpr std::array words{"a", "text", "x_1", "true", "false", "truex", "_", "Box"};
    static constexpr std::array pieces{"a",  " ",  "\\\"",     "\\\\", "\n", "/",   "//",
                                       "/*", "*/", ")",        "}",    "#",  "\t",  ";",
                                       "<<", "9",  "\xC3\xA4", "\x01", "'",  "\\n", "\\\n"};
    if (random_.one_in(2)) return random_.pick(words);
    bool const single = random_.one_in(5);
    std::string text(1, single ? '\'' : '"');
    for (unsigned n = random_.below(5); n; --n) text += random_.pick(pieces);
    if (single) std::erase(text, '\''), text.insert(text.begin(), '\'');
    if (wrong_ && random_.one_in(30)) return text;
    return text + (single ? '\'' : '"');
}

std::string cTexts::key() {
    static constexpr std::array names{"a", "a", "a",   "b",   "b", "c",
                                      "x", "y", "a/b", "k l", "1", "s"};
    return random_.pick(names);
}

// The key as it is written before '='.
std::string cTexts::key_as_text(std::string const &plain) {
    bool const name = plain.find_first_of("/ ") == std::string::npos;
    if (name && !random_.one_in(8)) return plain;
    return (random_.one_in(3) ? "'" + plain + "'" : "\"" + plain + "\"");
}

std::string cTexts::reference() {
    std::string path;
    auto const step = [this](std::string const &key) { return "/" + key_as_text(key); };
    unsigned const way = random_.below(10);
    if (way < 6 && !paths_.empty()) {
        path = random_.one_in(2)
                   ? paths_[paths_.size() - 1 - random_.below(std::min<size_t>(paths_.size(), 5))]
                   : random_.pick(paths_);
        if (random_.one_in(4)) path += step(key());
        if (random_.one_in(8)) path = path.substr(0, path.rfind('/'));
    } else if (way == 6) { // a path to an open container
        size_t const depth = random_.below(path_.size() + 1);
        for (size_t i = 0; i < depth; ++i) path += path_[i];
    } else {
        for (unsigned n = 1 + random_.below(3); n; --n)
            path += random_.one_in(3) ? "/" + std::to_string(random_.below(3)) : step(key());
    }
    if (random_.one_in(6) && path.size() > 1) path.erase(0, 1); // without the leading slash
    if (random_.one_in(12)) path = "/" + space() + path.substr(std::min<size_t>(path.size(), 1));
    if (random_.one_in(30)) path += "/";
    if (random_.one_in(30)) path += " 5";
    if (random_.one_in(40)) path = "";
    std::string const space_before = random_.one_in(8) ? " " : "";
    return "#cRef" + space_before + "(" + path + (wrong_ && random_.one_in(20) ? "" : ")");
}

std::string cTexts::specification(int depth) {
    static constexpr std::array types{"int", "string", "double", "map",
                                      "Box", "Key",    "vector", "nosuch"};
    static constexpr std::array flags{"#REQUIRED", "#IMPLIED", "#FIXED", "0", "#nil", "5"};
    std::string text = "attspec(";
    if (!random_.one_in(3)) text += std::string("type=") + space() + random_.pick(types) + ";";
    if (random_.one_in(2)) text += "default=" + value(depth - 1) + ";";
    if (random_.one_in(3)) text += std::string("flag=") + random_.pick(flags) + ";";
    return text + ")";
}

std::string cTexts::declaration() {
    static constexpr std::array names{"T1", "T2", "T3", "Box", "int"};
    std::string const name = random_.one_in(8) ? random_.pick(names) : names[random_.below(3)];
    std::string text = name + "=";
    if (random_.one_in(3)) {
        text += "choice(";
        if (random_.one_in(3))
            text += "choices=" + (random_.one_in(2) ? map(1) : list(1, false));
        else
            for (unsigned n = random_.below(4); n; --n)
                text += key_as_text(key()) + "=" + number() + ";";
    } else {
        text += "attlist(";
        for (unsigned n = random_.below(4); n; --n)
            text += key_as_text(key()) + "=" + specification(1) + ";";
    }
    declared_.push_back(name);
    return text + ")";
}

std::string cTexts::typed(int depth) {
    static constexpr std::array library{"int",     "string", "double",  "float",   "bool",
                                        "map",     "vector", "set",     "attspec", "iterator",
                                        "niltype", "choice", "attlist", "nosuch"};
    std::string name;
    if (!declared_.empty() && random_.one_in(2))
        name = random_.pick(declared_);
    else
        name = random_.one_in(4) ? random_.pick(library) : random_.pick(user_type_names);
    static constexpr std::array brackets{"()", "()", "()", "()", "{}", "[]", "<>"};
    std::string const pair = random_.pick(brackets);
    std::string inside;
    switch (random_.below(6)) {
    case 0:
        break;
    case 1:
    case 2:
        inside = entries(depth - 1);
        break;
    case 3:
        inside = string();
        break;
    case 4:
        inside = value(depth - 1) + separator(";") + value(depth - 1);
        break;
    default:
        inside = value(depth - 1);
        break;
    }
    return name + space() + pair[0] + space() + inside + space() +
           (wrong_ && random_.one_in(25) ? "" : std::string(1, pair[1]));
}

std::string cTexts::map(int depth) {
    return "{" + space() + entries(depth - 1) + space() + (wrong_ && random_.one_in(25) ? "" : "}");
}

std::string cTexts::list(int depth, bool set) {
    std::string text = set ? "<" : "[";
    text += space();
    unsigned const count = random_.below(6);
    for (unsigned i = 0; i < count && left_ > 0; ++i, --left_) {
        path_.push_back("/" + std::to_string(i));
        std::string all;
        for (std::string const &step : path_) all += step;
        bool const repeat = set && random_.one_in(3);
        std::string const item = repeat ? "1" : value(depth - 1);
        if (text.back() == '<' && item.starts_with('<')) text += ' '; // << is an operator
        text += item;
        if (i + 1 < count || random_.one_in(2)) text += separator(random_.one_in(3) ? ";" : ",");
        text += space();
        path_.pop_back();
        paths_.push_back(all);
    }
    return text + (wrong_ && random_.one_in(25) ? "" : set ? ">" : "]");
}

std::string cTexts::value(int depth) {
    if (depth > 0 && left_ > 0 && random_.one_in(2)) {
        switch (random_.below(7)) {
        case 0:
        case 1:
        case 2:
            return map(depth);
        case 3:
            return list(depth, false);
        case 4:
            return list(depth, true);
        default:
            return typed(depth);
        }
    }
    static constexpr std::array constants{"#nil",     "#true",     "#false", "#bad",
                                          "#badfind", "#REQUIRED", "#no"};
    switch (random_.below(8)) {
    case 0:
    case 1:
        return number();
    case 2:
        return string();
    case 3:
        return constants[random_.below(wrong_ ? constants.size() : 3)];
    case 4:
        return random_.one_in(2) ? "true" : "false";
    case 5:
    case 6:
        return reference();
    default:
        return depth > 0 ? typed(depth) : "#nil";
    }
}

std::string cTexts::entries(int depth) {
    std::string text;
    unsigned const count = random_.below(7);
    for (unsigned i = 0; i < count && left_ > 0; ++i, --left_) {
        if (random_.one_in(14)) { // a map without a key
            text += map(depth) + separator(random_.one_in(2) ? " " : ";") + space();
            continue;
        }
        if (random_.one_in(16)) {
            text += declaration() + separator(";") + space();
            continue;
        }
        std::string step;
        switch (random_.below(14)) {
        case 0:
            step = number();
            break;
        case 1:
            step = random_.one_in(2) ? "Key(" + string() + ")" : "NumKey(" + number() + ")";
            break;
        case 2:
            step = random_.one_in(2) ? "true" : typed(depth > 1 ? 1 : 0);
            break;
        case 3:
            step = std::to_string(random_.below(4));
            break;
        default:
            step = key_as_text(key());
            break;
        }
        path_.push_back("/" + step);
        std::string all;
        for (std::string const &part : path_) all += part;
        text += space() + step + space() + separator("=") + space() + value(depth) + space();
        if (i + 1 < count || random_.one_in(2)) text += separator(random_.one_in(4) ? "," : ";");
        text += space();
        path_.pop_back();
        paths_.push_back(all);
    }
    return text;
}

std::string cTexts::mutated(std::string text) {
    static constexpr std::array pieces{"{",  "}", "[",  "]",    "<", ">",         "(",  ")",  ";",
                                       ",",  "=", "\"", "'",    "#", "#cRef(/a)", "//", "/*", "*/",
                                       "\n", " ", "\\", "\xFF", "1", "a",         "<<", "+=", "&="};
    for (unsigned n = 1 + random_.below(3); n; --n) {
        size_t const at = random_.below(text.size() + 1);
        switch (random_.below(4)) {
        case 0:
            text.insert(at, random_.pick(pieces));
            break;
        case 1:
            text.erase(at, 1 + random_.below(4));
            break;
        case 2: {
            std::string const piece =
                text.substr(random_.below(text.size() + 1), random_.below(20));
            text.insert(at, piece);
            break;
        }
        default:
            if (random_.one_in(3)) text.erase(at);
            break;
        }
    }
    return text;
}

// Dense text has few different keys and many references. So most references resolve, and the keys
// of many targets are repeated, which merges or assigns values.
std::string cTexts::dense_value(int depth) {
    static constexpr std::array keys{"a", "b", "c", "0", "1"};
    unsigned const kind = random_.below(depth > 0 ? 12 : 5);
    if (kind < 2) return random_.one_in(6) ? "#nil" : std::to_string(random_.below(3));
    if (kind < 5) {
        std::string path;
        for (unsigned n = 1 + random_.below(3); n; --n)
            path += std::string("/") + random_.pick(keys);
        if (!paths_.empty() && !random_.one_in(3)) {
            path = random_.pick(paths_);
            if (random_.one_in(3)) path += std::string("/") + random_.pick(keys);
        }
        return "#cRef(" + path + ")";
    }
    if (kind < 9) return "{" + dense(depth - 1) + "}";
    if (kind < 10) return "Loud(" + dense(depth - 1) + ")";
    std::string text;
    for (unsigned i = 0, n = random_.below(4); i < n; ++i) {
        path_.push_back("/" + std::to_string(i));
        text += dense_value(depth - 1) + ";";
        path_.pop_back();
    }
    return kind == 10 ? "[" + text + "]" : "< " + text + ">";
}

std::string cTexts::dense(int depth) {
    static constexpr std::array keys{"a", "b", "c", "0", "1"};
    std::string text;
    for (unsigned n = random_.below(6); n && left_ > 0; --n, --left_) {
        std::string const name = random_.pick(keys);
        if (random_.one_in(12)) {
            text += "{" + dense(depth - 1) + "};";
            continue;
        }
        path_.push_back("/" + name);
        std::string all;
        for (std::string const &step : path_) all += step;
        text += name + "=" + dense_value(depth) + ";";
        path_.pop_back();
        paths_.push_back(all);
    }
    return text;
}

std::string cTexts::text() {
    std::string text;
    if (random_.one_in(3)) {
        left_ += 20;
        return "{" + dense(4) + dense(3) + "}";
    }
    unsigned const kind = random_.below(12);
    if (kind == 0) {
        text = entries(3);
    } else if (kind == 1) {
        text = value(3) + separator(";") + space() + value(2);
    } else if (kind == 2) { // many entries, so that tables grow
        text = "{";
        unsigned const count = 5 + random_.below(120);
        for (unsigned i = 0; i < count; ++i)
            text += (random_.one_in(9) ? key_as_text(key()) : "k" + std::to_string(i)) + "=" +
                    number() + ";";
        text += "}";
    } else if (kind == 3) { // deep, and often not closed
        unsigned const depth = random_.below(90);
        for (unsigned i = 0; i < depth; ++i) text += random_.one_in(3) ? "[" : "{a=";
        text += value(2);
        for (unsigned i = random_.below(depth + 1); i; --i) text += random_.one_in(2) ? "]" : "}";
    } else {
        text = space() + map(4) + space();
    }
    return random_.one_in(4) ? mutated(text) : text;
}

} // namespace reference
