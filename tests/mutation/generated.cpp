#include "tests/mutation/generated.h"

#include <vector>

namespace mutation_test {

namespace {

std::string numbered(std::string const &name, unsigned number) {
    return name + std::to_string(number);
}

class cGenerator {
  public:
    explicit cGenerator(std::mt19937 &chance) : chance_(chance) {}

    std::string file() {
        declare(chance(2) + 1, "Mode", &cGenerator::choice);
        declare(chance(3) + 1, "Type", &cGenerator::attlist);
        for (unsigned count = chance(6) + 2; count > 0; --count)
            entry(numbered("v", count), value(0));
        entry("last", object(0));
        if (one_in(3)) entry("again", "#cRef(/last)");
        if (one_in(4)) declare_again();
        return "{" + text_ + "}\n";
    }

  private:
    struct cKey {
        std::string name, type; // an empty type accepts any value
        bool required;
    };
    struct cType {
        std::string name;
        std::vector<std::string> choices;
        std::vector<cKey> keys;
    };

    unsigned chance(unsigned below) { return static_cast<unsigned>(chance_() % below); }
    bool one_in(unsigned count) { return chance(count) == 0; }
    template <class T> T const &one_of(std::vector<T> const &all) {
        return all[chance(static_cast<unsigned>(all.size()))];
    }

    void entry(std::string const &key, std::string const &value) {
        text_ += one_in(4) ? "\n  " : " ";
        text_ += key + "= " + value + (one_in(8) ? ", " : "; ");
        if (one_in(12)) text_ += "// of " + key + "\n";
    }

    void declare(unsigned count, std::string const &name,
                 std::string (cGenerator::*text)(cType &)) {
        for (unsigned i = 0; i < count; ++i) {
            cType type{numbered(name, i), {}, {}};
            std::string const declaration = (this->*text)(type);
            entry(type.name, declaration);
            types_.push_back(type);
        }
    }
    // Declares the last type with other keys. Later objects have the new keys.
    void declare_again() {
        cType type{types_.back().name, {}, {}};
        types_.pop_back();
        std::string const declaration = attlist(type);
        entry(type.name, declaration);
        entry("anew", object_of(type, 0));
    }

    std::string choice(cType &type) {
        std::string entries;
        for (unsigned count = chance(4) + 1; count > 0; --count) {
            type.choices.push_back(std::string(1, static_cast<char>('a' + count)));
            entries += type.choices.back() + "= " + scalar(one_of(scalars_)) + "; ";
        }
        return "choice({" + entries + "})";
    }

    // No key is #FIXED, since no object of such a type can be read.
    std::string attlist(cType &type) {
        std::string specifications;
        for (unsigned count = chance(4) + 1; count > 0; --count) {
            cKey key{numbered("k", count), one_in(4) ? "" : any_type(), false};
            specifications += key.name + "= " + attspec(key) + "; ";
            type.keys.push_back(key);
        }
        return "attlist(" + specifications + ")";
    }

    // A default also fixes the type of the key's values, and the types of what a container holds.
    // So only types that are not containers get one.
    std::string attspec(cKey &key) {
        std::string entries;
        if (!key.type.empty()) entries += "type= " + key.type + "; ";
        bool const has_default = one_in(3) && !holds_values(key.type);
        if (has_default) {
            if (key.type.empty()) key.type = one_of(scalars_);
            entries += "default= " + of_type(key.type, 2) + "; ";
        }
        key.required = !has_default && one_in(2);
        if (key.required)
            entries += entries.empty() || one_in(2) ? "flag= #REQUIRED; " : "";
        else if (!has_default || one_in(2))
            entries += "flag= #IMPLIED; ";
        return "attspec(" + entries + ")";
    }

    static bool holds_values(std::string const &type) {
        return type == "map" || type == "vector" || type == "set" || type.starts_with("Type");
    }

    std::string any_type() {
        if (!types_.empty() && one_in(2)) return one_of(types_).name;
        static std::vector<std::string> const all{"int",  "double", "string", "bool",
                                                  "intf", "map",    "vector", "set"};
        return one_of(all);
    }

    std::string scalar(std::string const &type) {
        static std::vector<std::string> const numbers{"0", "7", "-12", "0x1F", "2147483647"};
        static std::vector<std::string> const doubles{"1.5", "-0.25", "1.e3"};
        static std::vector<std::string> const strings{"word", "\"two words\"", "'x'", "attspec",
                                                      "\"12\""};
        if (type == "int") return one_of(numbers);
        if (type == "double") return one_of(doubles);
        if (type == "bool") return one_in(2) ? "true" : "false";
        if (type == "intf") return one_in(2) ? "intf(0x1f)" : "intf(b101)";
        return one_of(strings);
    }

    std::string of_type(std::string const &name, unsigned depth) {
        for (cType const &type : types_)
            if (type.name == name) return object_of(type, depth);
        if (name == "map") return map(depth);
        if (name == "vector") return row("[", "]", depth);
        if (name == "set") return row("<", ">", depth);
        return scalar(name);
    }

    std::string object_of(cType const &type, unsigned depth) {
        if (!type.choices.empty())
            return type.name + "(" + (one_in(6) ? "" : one_of(type.choices)) + ")";
        std::string entries;
        for (cKey const &key : type.keys)
            if (key.required || one_in(2))
                entries += key.name + "= " +
                           (key.type.empty() ? value(depth + 1) : of_type(key.type, depth + 1)) +
                           (one_in(5) ? ", " : "; ");
        if (entries.empty()) entries = " ";
        return type.name + "(" + entries + ")";
    }
    std::string object(unsigned depth) { return object_of(one_of(types_), depth); }

    std::string map(unsigned depth) {
        std::string entries;
        for (unsigned count = chance(3); count > 0; --count)
            entries += numbered(one_in(5) ? "" : "m", count) + "= " + value(depth + 1) + "; ";
        return "{" + entries + "}";
    }
    std::string row(std::string const &open, std::string const &close, unsigned depth) {
        std::string entries;
        for (unsigned count = chance(3); count > 0; --count) entries += value(depth + 1) + ", ";
        return open + " " + entries + close;
    }

    std::string value(unsigned depth) {
        switch (depth > 2 ? 0 : chance(8)) {
        case 0:
        case 1:
            return scalar(one_of(scalars_));
        case 2:
            return map(depth);
        case 3:
            return row("[", "]", depth);
        case 4:
            return row("<", ">", depth);
        default:
            return types_.empty() ? "#nil" : object(depth);
        }
    }

    std::mt19937 &chance_;
    std::vector<std::string> const scalars_{"int", "double", "string", "bool", "intf"};
    std::vector<cType> types_;
    std::string text_;
};

} // namespace

std::string generated_file(std::mt19937 &chance) { return cGenerator(chance).file(); }

} // namespace mutation_test
