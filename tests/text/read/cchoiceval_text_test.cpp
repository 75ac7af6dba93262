// The text of choices: values and types written and read again, and types declared in text.
#include "qrv/containers/cchoiceval.h"

#include "qrv/containers/csignalobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tests/containers/choice_support.h"
#include "tests/support/fixture.h"
#include "tests/text/read_support.h"

#include <sstream>

using namespace choice_test;
using reader_test::Reading;

namespace {

// A registered type. Types that text declares are removed at the end.
class ChoiceText : public QrvTest {
  protected:
    ChoiceText() : type(choice_type({"a", "b", "two words", "true"})), insert_(*type) {
        type->setattr(own_key(7), cat::of(0));
    }
    ~ChoiceText() override { forget(); }

    // Removes the types that the tests declare. A key whose value is a reference to a type also
    // declares one.
    static void forget() {
        for (char const *name : {"C", "D", "q", "r"}) cat::type_hash_ptr()->delitem(name);
    }

    valueref read(std::string const &text) {
        Reading const r(text);
        log = r.log;
        code = r.code;
        return r.code == 0 ? valueref::share(dynamic_cast<cChoiceVal *>(r.value.get())) : nullptr;
    }

    typeref const type;
    std::string log;
    int code = 0;

  private:
    cTypeInsert const insert_;
};

class ChoiceDeclared : public ChoiceText {};

std::string place_at(Reading const &r, char const *path) {
    objref const value = r.at(path);
    auto const *const choice = dynamic_cast<cChoiceVal const *>(value.get());
    return choice ? place(*choice) : "no choice";
}

} // namespace

TEST_F(ChoiceText, a_value_is_written_as_its_key) {
    valueref const value = value_at(type, "b");
    EXPECT_EQ(cat::as_text(value), "Letter(b)");
    *value = 7;
    EXPECT_EQ(cat::as_text(value), "Letter(7)");
    *value = "two words";
    EXPECT_EQ(cat::as_text(value), "Letter(\"two words\")");
    value->set_undefined();
    EXPECT_EQ(cat::as_text(value), "Letter()");
    value->update();
    EXPECT_EQ(cat::as_text(value), "Letter()");
    EXPECT_TRUE(value->is_writable());
}

TEST_F(ChoiceText, written_text_reads_as_the_same_choice) {
    for (int n = 0; n < 5; ++n) {
        if (n == 3) continue; // "true" is written without quotes in plain text
        valueref const value = value_of(type);
        value->setpos(n);
        valueref const back = read(cat::as_text(value));
        ASSERT_TRUE(back) << log;
        EXPECT_TRUE(back->equal(*value)) << place(back);
        EXPECT_TRUE(back->omember("updatefromtype") != cat::badfind());
    }
    cat::ExactText const exact;
    valueref const value = value_at(type, "true");
    EXPECT_EQ(cat::as_text(value), "Letter(\"true\")");
    EXPECT_EQ(place(read(cat::as_text(value))), "true");
    EXPECT_EQ(exact.failed(), 0u);
}

TEST_F(ChoiceText, empty_text_reads_as_undefined) {
    for (char const *empty : {"Letter()", "Letter( )", "Letter( /* none */ )"}) {
        valueref const value = read(empty);
        ASSERT_TRUE(value) << log;
        EXPECT_EQ(place(value), "undefined");
        EXPECT_EQ(log, "");
    }
}

TEST_F(ChoiceText, unknown_keys_and_tokens_that_are_not_keys_are_refused) {
    for (char const *wrong : {"Letter(x)", "Letter(8)", "Letter(7.0)", "Letter({a=1})",
                              "Letter([a])", "Letter(#nil)", "Letter(Letter(a))", "Letter(true)"}) {
        EXPECT_FALSE(read(wrong)) << wrong;
        EXPECT_NE(code, 0);
        EXPECT_NE(log.find("Failed to read value, type Letter"), std::string::npos) << log;
    }
}

TEST_F(ChoiceText, a_failed_read_changes_nothing) {
    valueref const value = value_at(type, "b");
    std::istringstream unknown("x"), nothing(""), good("a");
    EXPECT_FALSE(value->read(unknown));
    EXPECT_EQ(place(value), "b");
    EXPECT_TRUE(value->read(good));
    EXPECT_EQ(place(value), "a");
    EXPECT_TRUE(value->read(nothing));
    EXPECT_EQ(place(value), "undefined");
}

TEST_F(ChoiceText, values_may_be_in_a_map) {
    Reading const r("{ one= Letter(b); two= Letter(); three= #cRef(/one); }");
    EXPECT_EQ(r.code, 0);
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(place_at(r, "one") + place_at(r, "two"), "bundefined");
    EXPECT_TRUE(r.at("one") == r.at("three"));
    EXPECT_EQ(r.text(), "{one= Letter(b); two= Letter(); three= #cRef(/one); }");
    type->setattr(text("b"), cat::badfind());
    EXPECT_EQ(r.text(), "{one= Letter(); two= Letter(); three= #cRef(/one); }");
}

TEST_F(ChoiceText, a_repeated_key_moves_the_existing_value) {
    Reading const r("{ v= Letter(a); w= #cRef(/v); v= Letter(b); }");
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(place_at(r, "v") + place_at(r, "w"), "bb");
}

TEST_F(ChoiceText, a_type_is_written_as_its_choices) {
    EXPECT_EQ(cat::as_text(choice_type({"a"})), "choice({\n  a= 1;\n})");
    EXPECT_EQ(cat::as_text(choice_type("Bare", nullptr)), "choice(#nil)");
    auto const list = make<cVectorObj>();
    list->append(cat::of("x"));
    EXPECT_EQ(cat::as_text(choice_type("Listed", list)), "choice([x, ])");
}

TEST_F(ChoiceText, a_written_type_can_be_read_again) {
    Reading const r("choice({a=1; b=2; })");
    ASSERT_EQ(r.code, 0) << r.log;
    auto *const read = dynamic_cast<cTypeObj *>(r.value.get());
    ASSERT_TRUE(read);
    EXPECT_EQ(&read->type(), &cat::typetype_choice());
    EXPECT_EQ(cat::as_text(r.value), "choice({a= 1; b= 2; })");
    EXPECT_EQ(place(value_of(typeref::share(read))), "a");
    EXPECT_EQ(cat::as_text(Reading("choice(#nil)").value), "choice(#nil)");
    EXPECT_EQ(cat::as_text(Reading("choice(5)").value), "choice(5)");
}

TEST_F(ChoiceText, a_type_without_a_readable_value_fails) {
    for (char const *wrong : {"choice()", "choice(nosuch(1))"}) {
        Reading const r(wrong);
        EXPECT_NE(r.code, 0) << wrong;
        EXPECT_NE(r.log.find("Failed to read value, type choice"), std::string::npos) << r.log;
    }
}

TEST_F(ChoiceText, reading_into_a_type_in_use_moves_its_values) {
    valueref const value = value_at(type, "b");
    std::istringstream is("{x=1; b=2}");
    EXPECT_TRUE(type->read(is));
    EXPECT_EQ(place(value), "b");
    EXPECT_EQ(value->pos(), 1);
    std::istringstream broken("nosuch(1)");
    objref const choices = type->tmember("choices");
    EXPECT_FALSE(type->read(broken));
    EXPECT_TRUE(type->tmember("choices") == choices);
}

TEST_F(ChoiceText, methods_without_a_stream_or_an_object_fail) {
    objref none, number = cat::of(1);
    valueref const value = value_of(type);
    EXPECT_FALSE(cTomChoiceVal::m_write(*value, none));
    EXPECT_FALSE(cTomChoiceVal::m_read(*value, number));
    EXPECT_FALSE(cTomChoice::m_write(*type, number));
    EXPECT_FALSE(cTomChoice::m_read(*type, none));
    std::ostringstream os;
    std::istringstream is("a");
    objref out = make<cOutHolder>(static_cast<std::ostream &>(os));
    objref in = make<cInHolder>(static_cast<std::istream &>(is));
    EXPECT_FALSE(cTomChoiceVal::m_write(*number, out));
    EXPECT_FALSE(cTomChoiceVal::m_read(*number, in));
    EXPECT_FALSE(cTomChoice::m_write(*number, out));
    EXPECT_FALSE(cTomChoice::m_read(*number, in));
    EXPECT_EQ(os.str(), "");
    EXPECT_TRUE(cTomChoiceVal::m_write(*value, out));
    EXPECT_EQ(os.str(), "a");
}

// --- declared in text

TEST_F(ChoiceDeclared, a_declared_type_is_known_after_its_declaration) {
    Reading const r("{ C= choice({a= 1; b= 2; }); v= C(b); w= C(a); }");
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(place_at(r, "v") + place_at(r, "w"), "ba");
    EXPECT_EQ(r.text(), "{C= choice({a= 1; b= 2; }); v= C(b); w= C(a); }");
    EXPECT_EQ(&r.at("v")->type(), &cat::find_type("C"));
}

TEST_F(ChoiceDeclared, merging_into_shared_choices_takes_effect_when_the_type_is_changed) {
    Reading const r("{ l=[1;2]; C=choice(#cRef(/l)); v=C(1); l=[9]; }");
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(place_at(r, "v"), "undefined") << "its entry was removed, and no signal was sent";
    r.at("C")->changed();
    EXPECT_EQ(place_at(r, "v"), "lost");
    EXPECT_EQ(r.text_at("v"), "C()");
}

TEST_F(ChoiceDeclared, a_type_declared_again_moves_the_values_read_so_far) {
    cErrorLog errors;
    Reading const r("{ C=choice({a=1;b=2}); v=C(b); w=C(a); C=choice({x=0;b=2}); }");
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(errors.text(),
              "0x48000000 Call of missed standard method 'assign' in type: choice\n");
    EXPECT_EQ(place_at(r, "v") + place_at(r, "w"), "bx");
}

// Text that could create cycles; the count of objects would show a leak.
TEST_F(ChoiceDeclared, no_text_creates_a_type_or_value_that_contains_itself) {
    char const *const texts[] = {
        // the value into the map that contains it
        "{ l={a=1}; C=choice(#cRef(/l)); v=C(a); l={q=#cRef(/v)}; }",
        "{ l={a=1;s={}}; C=choice(#cRef(/l)); v=C(a); l={s={q=#cRef(/v)}}; }",
        "{ l={a=1;s=<>}; C=choice(#cRef(/l)); v=C(a); l={s=<#cRef(/v)>}; }",
        "{ l=[1]; C=choice(#cRef(/l)); v=C(0); l=[2; #cRef(/v)]; }",
        // the type into its own choices
        "{ l={a=1}; C=choice(#cRef(/l)); l={q=#cRef(/C)}; }",
        "{ C=choice({a=1}); x={q=#cRef(/C)}; C=choice(#cRef(/x)); }",
        "{ C=choice({a=1}); C=choice({q=#cRef(/C)}); }",
        // its values into the type
        "{ C=choice({a=1}); C=choice({q=C(a)}); }",
        "{ C=choice({a=1}); v=C(a); x={q=[#cRef(/v)]}; C=choice(#cRef(/x)); }",
        // two types, each among the choices of the other
        "{ m={a=1}; C=choice(#cRef(/m)); D=choice({q=#cRef(/C)}); v=D(q); m={r=#cRef(/D)}; }",
        "{ m={a=1}; C=choice(#cRef(/m)); D=choice({q=C(a)}); v=D(q); m={r=#cRef(/v)}; }",
        // by a specification
        "{ m={a=1}; C=choice(#cRef(/m)); s=attspec(default=#cRef(/C)); m={r=#cRef(/s)}; }",
        "{ m={a=1}; s=attspec(default=#cRef(/m)); m={r=#cRef(/s)}; }",
        "{ m={a=1}; C=attlist(x=attspec(default=#cRef(/m))); m={r=#cRef(/C)}; }",
        "{ m={a=1}; C=attlist(x=attspec(default=#cRef(/m))); v=C(); m={r=#cRef(/v)}; }",
        "{ m={a=1}; s=attspec(type=choice(#cRef(/m))); m={r=#cRef(/s)}; }",
        "{ C=attlist(); C=attlist(x=attspec(default=#cRef(/C))); }",
        "{ C=attlist(x=attspec(default=1)); C=attlist(y=attspec(default={q=#cRef(/C)})); }",
    };
    for (char const *source : texts) {
        cErrorLog errors;
        std::uint32_t const census = cObjBase::ob_count();
        {
            Reading const r(source);
            EXPECT_NE(r.log.find("Trial to establish cRef in cycle"), std::string::npos)
                << source << '\n'
                << r.log;
            forget();
        }
        errors.clear();
        EXPECT_EQ(cObjBase::ob_count(), census) << source;
    }
}

TEST_F(ChoiceDeclared, repeated_declarations_use_the_merge_budget) {
    cErrorLog errors;
    std::string values = "{ m={a=1;b=2}; n={b=1;a=2}; C=choice({a=0}); ", declarations;
    for (int i = 0; i < 3000; ++i) values += "v" + std::to_string(i) + "=C(a); ";
    for (int i = 0; i < 1500; ++i) declarations += "C=choice(#cRef(/m)); C=choice(#cRef(/n)); ";
    Reading const r(values + declarations + "}");
    EXPECT_NE(r.log.find("Too much merged, path : /C"), std::string::npos);
    EXPECT_EQ(place_at(r, "v0") + place_at(r, "v2999"), "aa");
}

TEST_F(ChoiceDeclared, repeated_comparisons_of_large_choices_use_the_merge_budget) {
    cErrorLog errors;
    std::string map = "{";
    for (int i = 0; i < 20000; ++i) map += "k" + std::to_string(i) + "=1; ";
    map += "}; ";
    std::string source = "{ m=" + map + "n=" + map + "C=choice(#cRef(/m)); ";
    for (int i = 0; i < 3000; ++i) source += "C=choice(#cRef(/n)); ";
    Reading const r(source + "}");
    EXPECT_NE(r.log.find("Too much merged, path : /C"), std::string::npos);
    EXPECT_TRUE(cat::find_type("C").tmember("choices") == r.at("m"));
}
