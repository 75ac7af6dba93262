// Attribute specifications, declared types and their objects as text.
#include "qrv/containers/cattr.h"
#include "qrv/containers/cattrset.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/text/cexacttext.h"
#include "qrv/text/cfile.h"
#include "tests/support/fixture.h"
#include "tests/support/types.h"
#include "tests/text/read_support.h"

using reader_test::Reading;
using reader_test::shown;
using reader_test::written;

namespace {

class SpecificationText : public QrvTest {
  protected:
    void TearDown() override { messages(); }
    cTypesBack types_;
};

class SpecificationTextEdge : public SpecificationText {};

// The text written exactly.
std::string exact(objref const &value) {
    cat::ExactText const guard;
    return written(value);
}

// What a reading of the text reports.
std::string errors_of(std::string const &text) {
    cat::ReadReport const report;
    Reading const reading(text);
    return shown(report);
}

std::string const record =
    "R= attlist(n= attspec(type=int; flag=#REQUIRED); d= attspec(default=5); i= "
    "attspec(flag=#IMPLIED););";

} // namespace

TEST_F(SpecificationTextEdge, an_implied_one_without_type_is_an_empty_text) {
    objref const spec = specref::adopt(new cAttspec(asf_implied, nullptr));
    EXPECT_EQ(written(spec), "attspec()");
    EXPECT_EQ(exact(spec), "attspec(flag=#IMPLIED;)");
    EXPECT_EQ(errors_of("attspec()"), "1:1  0x40000001 Failed to read value, type attspec\n");
}

TEST_F(SpecificationTextEdge, an_undeclared_key_fails_as_a_whole_and_changes_nothing) {
    Reading const file("{" + record + " r= R(n=1; d=2); }");
    ASSERT_EQ(file.code, 0) << file.log;
    objref const object = file.at("r");
    std::istringstream text("n=7; z=1; d=8;");
    EXPECT_FALSE(object->read(text));
    EXPECT_EQ(messages(), "Validate error in read of type: R\n");
    EXPECT_EQ(file.text_at("r/n"), "1");
    EXPECT_EQ(file.text_at("r/d"), "2");
}

TEST_F(SpecificationText, each_attribute_of_a_specification) {
    EXPECT_EQ(reader_test::read_back("attspec(type=int)"), "attspec(type=int; flag=#REQUIRED;)");
    EXPECT_EQ(reader_test::read_back("attspec(type=int; flag=#IMPLIED)"), "attspec(type=int; )");
    EXPECT_EQ(reader_test::read_back("attspec(flag=#REQUIRED)"), "attspec(flag=#REQUIRED;)");
    EXPECT_EQ(reader_test::read_back("attspec(default={a=1;})"), "attspec(default={a= 1; })");
    EXPECT_EQ(reader_test::read_back("{flag=#IMPLIED}"), "{flag= #IMPLIED; }");
    EXPECT_EQ(reader_test::read_back("attspec({flag=#REQUIRED})"), "attspec(flag=#REQUIRED;)");
}

TEST_F(SpecificationText, a_default_is_written_without_a_separator) {
    Reading const read("attspec(default=5; flag=#FIXED)");
    EXPECT_EQ(read.text(), "attspec(default=5flag=#FIXED;)");
    EXPECT_EQ(exact(read.value), "attspec(default=5; flag=#FIXED;)");
    EXPECT_EQ(errors_of("attspec(default=5flag=#FIXED;)"),
              "1:17 /default 0x40000002 Bad input: 5flag  String is assumed.\n"
              "1:23  0x40000001 Key type 'niltype' is not definedKey value: #FIXED\n"
              "1:23  0x40000001 Pattern 'key =' is missed \n"
              "1:30 /0 0x40000001 Pattern 'key =value' is missed in path: /0\n"
              "1:30 /0 0x00000000 Cannot insert key =0\n"
              "1:1  0x40000001 Failed to read value, type attspec\n");
    EXPECT_EQ(reader_test::read_back("attspec(default=[1;]flag=#FIXED;)"),
              "attspec(default=[1, ]flag=#FIXED;)");
}

TEST_F(SpecificationText, reading_a_default_does_not_fix_its_type) {
    Reading const read("attspec(default=5)");
    EXPECT_EQ(read.value->flags_of(asf_all), 4);
    EXPECT_TRUE(read.at("type") == cat::nil());
}

TEST_F(SpecificationText, a_type_that_is_none) {
    EXPECT_EQ(errors_of("{ s= attspec(type=nosuch) }"),
              "1:6 /s 0x40000000 Wrong type-entry in attspec\n"
              "1:6 /s 0x40000001 Failed to read value, type attspec\n"
              "1:6 /s 0x00000000 Cannot insert key =s\n");
    EXPECT_EQ(errors_of("attspec(type=5)"), "1:1  0x40000000 Wrong type-entry in attspec\n"
                                            "1:1  0x40000001 Failed to read value, type attspec\n");
}

TEST_F(SpecificationText, without_type_or_default_in_the_text_both_go) {
    cAttspec spec(cat::of(5), asf_fixtype);
    std::istringstream text("flag=#REQUIRED");
    EXPECT_TRUE(spec.read(text));
    EXPECT_EQ(spec.flags_of(asf_all), 8);
    EXPECT_TRUE(spec.get_default() == nullptr);
}

TEST_F(SpecificationText, anything_else_as_flag_does_nothing) {
    EXPECT_EQ(Reading("attspec(flag=7)").value->flags_of(asf_all), 8);
    EXPECT_EQ(Reading("attspec(flag=REQUIRED; type=int)").value->flags_of(asf_all), 9);
    EXPECT_EQ(Reading("attspec(flag=#FIXED)").value->flags_of(asf_all), 8);
}

TEST_F(SpecificationText, what_is_no_list_of_entries) {
    EXPECT_FALSE(Reading("attspec([1;2])").value);
    EXPECT_FALSE(Reading("attspec(5)").value);
    EXPECT_FALSE(Reading("attspec(type=int").log.empty());
}

TEST_F(SpecificationText, an_error_before_a_specification_stays_counted) {
    Reading const read("{ a= nosuch(1); s= attspec(type=nosuch); b= 1; }");
    EXPECT_EQ(read.scan.errcount(), 2u) << read.log; // the sub-text's count is its own
}

TEST_F(SpecificationText, a_type_is_declared_and_used_further_down) {
    Reading const file("{" + record + " a= R(n=1;); b= [R(n=2; i=x)]; }");
    EXPECT_EQ(file.code, 0);
    EXPECT_EQ(file.log, "");
    EXPECT_EQ(file.text_at("a"), "R(\n  n= 1;\n  d= 5;\n  i= #nil;\n)");
    EXPECT_EQ(file.text_at("b/0/i"), "x");
    EXPECT_EQ(cat::find_type("R").name(), "R");
}

TEST_F(SpecificationText, a_type_is_written_as_it_is_declared) {
    Reading const file("{" + record + "}");
    EXPECT_EQ(file.text_at("R"), "attlist(\n  n= attspec(type=int; flag=#REQUIRED;);\n"
                                 "  d= attspec(default=5);\n  i= attspec();\n)");
    std::string const once = exact(file.value);
    EXPECT_EQ(once, "{\n  R= attlist(\n      n= attspec(type=int; flag=#REQUIRED;);\n"
                    "      d= attspec(default=5; );\n      i= attspec(flag=#IMPLIED;);\n  );\n}");
    EXPECT_EQ(exact(Reading(once).value), once);
}

TEST_F(SpecificationText, each_broken_rule_fails_the_reading) {
    for (char const *broken : {"", "n=1.5", "n=#nil", "n=1; z=2", "d=1", "n=x"}) {
        std::string const text = "{" + record + "\n  r= R(" + broken + ") }";
        EXPECT_EQ(errors_of(text), "2:6 /r 0x40000000 Validate error in read of type: R\n"
                                   "2:6 /r 0x40000001 Failed to read value, type R\n"
                                   "2:6 /r 0x00000000 Cannot insert key =r\n")
            << broken;
    }
}

TEST_F(SpecificationText, a_fixed_attribute_makes_its_type_unreadable) {
    EXPECT_EQ(errors_of("{ F= attlist(f= attspec(default=5; flag=#FIXED);); a= F(); }"),
              "1:55 /a 0x40000000 Validate error in read of type: F\n"
              "1:55 /a 0x40000001 Failed to read value, type F\n"
              "1:55 /a 0x00000000 Cannot insert key =a\n");
}

TEST_F(SpecificationText, an_error_inside_is_told_beside_the_failure) {
    EXPECT_EQ(errors_of("{" + record + " a= R(n= nosuch(1)) }"),
              "1:111 /a/n 0x40000005 Value with unknown type='nosuch\n"
              "1:106 /a 0x40000000 Validate error in read of type: R\n"
              "1:106 /a 0x40000001 Failed to read value, type R\n"
              "1:106 /a 0x00000000 Cannot insert key =a\n");
}

TEST_F(SpecificationText, a_second_declaration_counts_from_there_on) {
    Reading const file("{" + record + " a= R(n=1); R= attlist(k= attspec(type=int)); b= R(k=2); }");
    EXPECT_EQ(file.log, "");
    EXPECT_EQ(file.text_at("b"), "R(\n  k= 2;\n)");
    EXPECT_EQ(file.text_at("a/n"), "1"); // what is there stays as it is
    EXPECT_EQ(errors_of("{ x= R(n=1) }").substr(0, 7), "1:6 /x ");
}

TEST_F(SpecificationText, a_declaration_of_another_metatype_is_refused) {
    EXPECT_EQ(errors_of("{" + record + " R= attspec(type=int); int= attlist(); }"),
              "1:130 /int 0x40000006 Type name from input is registered with another type-type!\n");
}

TEST_F(SpecificationText, what_stands_in_a_default_can_be_referred_to) {
    std::string const text =
        "{\n  R= attlist(\n      m= attspec(default={v= [1, 2, ]; }; );\n  );\n  "
        "again= #cRef(/R/m/default/v);\n}";
    Reading const file(text);
    EXPECT_EQ(file.log, "");
    EXPECT_TRUE(file.at("again") ==
                file.at("R/m")->getattr(own_key(std::string("default")))->getattrp("v"));
    EXPECT_EQ(exact(file.value), text);
}

TEST_F(SpecificationText, objects_nest_and_come_back) {
    std::string const text =
        "{\n  P= attlist(\n      x= attspec(type=int; default=0; );\n  );\n"
        "  L= attlist(\n      a= attspec(type=P; flag=#REQUIRED;);\n      b= "
        "attspec(flag=#IMPLIED;);\n  );\n"
        "  l= L(\n      a= P(\n          x= 3;\n      );\n      b= #nil;\n  );\n}";
    Reading const file(text);
    EXPECT_EQ(file.log, "");
    EXPECT_EQ(exact(file.value), text);
}

TEST_F(SpecificationText, two_objects_read_with_the_same_default_share_nothing) {
    Reading const file(
        "{T= attlist(v= attspec(default=[1])); a= T(v=[2]); b= T(); c= T(v=[3;4]); }");
    EXPECT_EQ(file.log, "");
    EXPECT_EQ(file.text_at("a/v"), "[2, ]"); // into the private copy
    EXPECT_EQ(file.text_at("b/v"), "[1, ]");
    EXPECT_EQ(file.text_at("T/v/default"), "[1, ]");
}

TEST_F(SpecificationText, a_text_makes_no_object_that_owns_itself) {
    std::string const type = "{R= attlist(a= attspec(flag=#IMPLIED)); ";
    Reading const direct(type + "r= R(); r= R(a= #cRef(/r)); }");
    EXPECT_EQ(direct.text_at("r"), "R(\n  a= R(\n      a= #nil;\n  );\n)"); // a copy
    Reading const below(type +
                        "m= {}; r= R(a= {}); m= {x= #cRef(/r); }; r= R(a= {y= #cRef(/m);}); }");
    EXPECT_FALSE(below.at("r")->is_owner_of(*below.at("r")));
    EXPECT_FALSE(below.at("m")->is_owner_of(*below.at("m")));
}

// The first entry of a specification's text declares nothing: its value is only what it is.
TEST_F(SpecificationText, a_type_without_a_name_lives_as_long_as_the_specification) {
    Reading const choice("attspec(type=choice({a=1}); flag=#IMPLIED)");
    EXPECT_EQ(choice.log, "");
    EXPECT_EQ(choice.text(), "attspec(type=\"\"; )");
    auto const *const spec = dynamic_cast<cAttspec const *>(choice.value.get());
    ASSERT_NE(spec, nullptr);
    EXPECT_EQ(cat::as_text(spec->get_type()->tmember("choices")), "{a= 1; }");
    Reading const used("{R= attlist(n= attspec(type= attlist(x= attspec(type= int)))); }");
    EXPECT_EQ(used.text_at("R/n"), "attspec(type=\"\"; flag=#REQUIRED;)");
    EXPECT_EQ(errors_of("{R= attlist(n= attspec(type= choice(5))); r= R(n= 3); }"),
              "1:46 /r 0x40000000 Validate error in read of type: R\n"
              "1:46 /r 0x40000001 Failed to read value, type R\n"
              "1:46 /r 0x00000000 Cannot insert key =r\n");
}

TEST_F(SpecificationText, a_type_declared_by_an_object_of_its_own_ends) {
    Reading const file("{T= attlist(x= attspec(type= int; flag= #IMPLIED)); p= T(x= 1);"
                       " T= attlist(x= attspec(default= #cRef(/p))); q= T(); }");
    EXPECT_EQ(file.log, "");
    EXPECT_EQ(file.text_at("q"), "T(\n  x= T(\n      x= 1;\n  );\n)");
    EXPECT_EQ(file.text_at("p"), "T(\n  x= 1;\n)");
}

TEST_F(SpecificationText, doubling_objects_ends_at_the_budget) {
    std::string text = "{R= attlist(a= attspec(flag=#IMPLIED); b= attspec(flag=#IMPLIED)); r= R();";
    for (int i = 0; i < 40; ++i) text += "\nr= R(a= #cRef(/r); b= #cRef(/r));";
    std::string const errors = errors_of(text + "}");
    EXPECT_NE(errors.find("/r 0x40000001 Too much merged, path : /r\n"), std::string::npos)
        << errors;
}

TEST_F(SpecificationText, methods_without_a_stream_answer_no) {
    objref none = cat::of(1);
    cAttspec spec(asf_required, nullptr);
    EXPECT_FALSE(cTomAttspec::m_write(spec, none));
    EXPECT_FALSE(cTomAttspec::m_read(spec, none));
    EXPECT_FALSE(cTomAttlist::m_write(cat::type_map(), none));
    EXPECT_FALSE(cTomAttlist::m_read(cat::type_map(), none));
    cMapObj map;
    EXPECT_FALSE(cTomAttrset::m_read(map, none));
}
