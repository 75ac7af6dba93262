// setattr of vectors and sets: every kind of key with every kind of value, with and without entry
// type and const keys, compared with the rules in their order.

#include "qrv/text/write/cwriter.h"
#include "tests/containers/trees.h"
#include "tests/support/fixture.h"

#include <limits>

using namespace trees;

namespace {

class SequenceSetattr : public QrvTest {
  protected:
    static constexpr int size = 3;

    std::vector<objref> keys() const {
        std::vector<objref> made = {nullptr,
                                    cat::nil(),
                                    of("1"),
                                    cat::of(1.0),
                                    cat::of(true),
                                    of(std::numeric_limits<int>::min()),
                                    of(std::numeric_limits<int>::max())};
        for (int i = -2; i <= size + 2; ++i) made.push_back(of(i));
        return made;
    }
    std::vector<objref> const values = {nullptr, cat::badfind(), cat::nil(), cat::bad(),
                                        of(7),   of(1),          of("x"),    vector({1})};
};

struct cRules {
    bool is_set, has_entrytype, const_keys;
};
struct cOutcome {
    bool result;
    std::string shape, reason;
};

// 0, 1, 2 with one change.
cOutcome expected(cRules const &rules, objref const &key, objref const &value) {
    std::vector<std::string> list = {"0", "1", "2"};
    auto const outcome = [&](bool result, char const *reason = "") {
        std::string inside;
        for (std::string const &one : list) inside += (inside.empty() ? "" : ", ") + one;
        return cOutcome{result, rules.is_set ? "<" + inside + ">" : "[" + inside + "]", reason};
    };
    bool const kill = !value || value == cat::badfind();
    bool const is_int = value && &value->type() == &cat::type_int();
    if (rules.is_set && is_int && shape(value) == "1") return outcome(true);
    if (rules.has_entrytype && !kill && !is_int) return outcome(false);
    bool const int_key = key && &key->type() == &cat::type_int();
    int const i = int_key ? std::stoi(shape(key)) : std::numeric_limits<int>::min();
    if (i == std::numeric_limits<int>::min())
        return outcome(false, "  Key of vector or set must be 'int'");
    int const n = static_cast<int>(list.size());
    if (kill) {
        if (rules.const_keys) return outcome(false, "  Flag of const key set offended");
        if (i >= 0 && i < n) list.erase(list.begin() + i);
        return outcome(i >= 0);
    }
    if (i < 0 || i > n) return outcome(false, "  Key is OUT OF RANGE");
    if (i == n && rules.const_keys) return outcome(false, "  Flag of const key set offended");
    if (value == cat::bad()) return outcome(false);
    if (i == n) list.emplace_back();
    list[static_cast<size_t>(i)] = shape(value);
    return outcome(true);
}

TEST_F(SequenceSetattr, every_key_with_every_value) {
    for (int bits = 0; bits < 8; ++bits)
        for (objref const &key : keys())
            for (objref const &value : values) {
                cRules const rules{(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0};
                SCOPED_TRACE(std::to_string(bits) + ": " + shape(key) + " <- " + shape(value));
                cRef<cMapObj> const target =
                    rules.is_set ? cRef<cMapObj>(set({0, 1, 2})) : cRef<cMapObj>(vector({0, 1, 2}));
                if (rules.has_entrytype) target->set_entrytype(&cat::type_int());
                if (rules.const_keys) target->setflags(of_const_keys);
                cErrorLog errors;
                cOutcome const want = expected(rules, key, value);
                EXPECT_EQ(target->setattr(key, value), want.result);
                EXPECT_EQ(shape(target), want.shape);
                std::string const type = rules.is_set ? "set" : "vector";
                EXPECT_EQ(errors.text(), want.reason.empty()
                                             ? ""
                                             : "0x40020000 Setattr in object type '" + type +
                                                   "', key '" + cat::as_text(key) +
                                                   "': " + want.reason + "\n");
                EXPECT_TRUE(target->datamap().is_vector());
            }
}

} // namespace
