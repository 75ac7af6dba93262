// Attribute specifications, declared types and their objects as text.
#include "qrv/containers/cattr.h"
#include "qrv/containers/cattrset.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/text/file/cfile.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
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

// The value's exact text.
std::string exact(objref const &value) {
    cat::ExactText const guard;
    return written(value);
}

// The errors of reading the text.
std::string errors_of(std::string const &text) {
    cat::ReadReport const report;
    Reading const reading(text);
    return shown(report);
}

// Removes nil entries: an attribute that is omitted in text is nil when the text is read again.
std::string without_nil(std::string text) {
    std::string const nil = "= #nil;\n";
    for (size_t at = text.find(nil); at != std::string::npos; at = text.find(nil)) {
        size_t const begin = text.rfind('\n', at) + 1;
        text.erase(begin, at + nil.size() - begin);
    }
    return text;
}

struct cExactly {
    std::string left_out; // the paths of omitted values
    std::string text;
};
// Reads the entries of a map, and writes the map exactly. The text must be readable without an
// error, and the map read from it must have the same text, apart from nil entries.
cExactly exactly(std::string const &entries) {
    cTypesBack const types;
    Reading const file("{" + entries + "}");
    EXPECT_EQ(file.log, "") << entries;
    cErrorLog errors;
    cat::ExactText const guard;
    cExactly written_once{"", written(file.value)};
    std::string const reported = "Value cannot be written, path : ";
    for (auto const &error : errors.entries()) {
        EXPECT_EQ(error.text.substr(0, reported.size()), reported);
        written_once.left_out += error.text.substr(reported.size()) + " ";
    }
    EXPECT_EQ(guard.failed(), errors.count());
    cTypesBack const again;
    Reading const back(written_once.text);
    EXPECT_EQ(back.log, "") << written_once.text;
    EXPECT_EQ(without_nil(written(back.value)), without_nil(written_once.text));
    EXPECT_EQ(guard.failed(), errors.count());
    return written_once;
}
std::string left_out(std::string const &entries) { return exactly(entries).left_out; }

// For example "T= attlist(x= attspec(type= int; flag= #IMPLIED));".
std::string declare(std::string const &key, std::string const &spec,
                    std::string const &type = "T") {
    return type + "= attlist(" + key + "= attspec(" + spec + "));";
}
std::string const int_x = declare("x", "type= int; flag= #IMPLIED");
std::string const int_y = declare("y", "type= int; flag= #IMPLIED");

std::string const record =
    "R= attlist(n= attspec(type=int; flag=#REQUIRED); d= attspec(default=5); i= "
    "attspec(flag=#IMPLIED););";

} // namespace

TEST_F(SpecificationTextEdge, an_implied_attribute_without_a_type_is_an_empty_string) {
    objref const spec = specref::adopt(new cAttspec(asf_implied, nullptr));
    EXPECT_EQ(written(spec), "attspec()");
    EXPECT_EQ(exact(spec), "attspec(flag=#IMPLIED;)");
    EXPECT_EQ(errors_of("attspec()"), "1:1  0x40000001 Failed to read value, type attspec\n");
}

TEST_F(SpecificationTextEdge, reading_an_undeclared_key_fails_and_changes_nothing) {
    Reading const file("{" + record + " r= R(n=1; d=2); }");
    ASSERT_EQ(file.code, 0) << file.log;
    objref const object = file.at("r");
    std::istringstream text("n=7; z=1; d=8;");
    EXPECT_FALSE(object->read(text));
    EXPECT_EQ(messages(), "Validate error in read of type: R\n");
    EXPECT_EQ(file.text_at("r/n"), "1");
    EXPECT_EQ(file.text_at("r/d"), "2");
}

TEST_F(SpecificationText, each_attribute_of_a_specification_is_read_and_written) {
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

TEST_F(SpecificationText, an_invalid_type_is_refused) {
    EXPECT_EQ(errors_of("{ s= attspec(type=nosuch) }"),
              "1:6 /s 0x40000000 Wrong type-entry in attspec\n"
              "1:6 /s 0x40000001 Failed to read value, type attspec\n"
              "1:6 /s 0x00000000 Cannot insert key =s\n");
    EXPECT_EQ(errors_of("attspec(type=5)"), "1:1  0x40000000 Wrong type-entry in attspec\n"
                                            "1:1  0x40000001 Failed to read value, type attspec\n");
}

TEST_F(SpecificationText, text_without_type_and_default_removes_both) {
    cAttspec spec(cat::of(5), asf_fixtype);
    std::istringstream text("flag=#REQUIRED");
    EXPECT_TRUE(spec.read(text));
    EXPECT_EQ(spec.flags_of(asf_all), 8);
    EXPECT_TRUE(spec.get_default() == nullptr);
}

TEST_F(SpecificationText, an_unknown_flag_has_no_effect) {
    EXPECT_EQ(Reading("attspec(flag=7)").value->flags_of(asf_all), 8);
    EXPECT_EQ(Reading("attspec(flag=REQUIRED; type=int)").value->flags_of(asf_all), 9);
    EXPECT_EQ(Reading("attspec(flag=#FIXED)").value->flags_of(asf_all), 8);
}

TEST_F(SpecificationText, text_that_is_not_a_list_of_entries_is_refused) {
    EXPECT_FALSE(Reading("attspec([1;2])").value);
    EXPECT_FALSE(Reading("attspec(5)").value);
    EXPECT_FALSE(Reading("attspec(type=int").log.empty());
}

TEST_F(SpecificationText, an_error_before_a_specification_stays_counted) {
    Reading const read("{ a= nosuch(1); s= attspec(type=nosuch); b= 1; }");
    EXPECT_EQ(read.scan.errcount(), 2u) << read.log; // the inner text has its own count
}

TEST_F(SpecificationText, a_type_can_be_used_after_its_declaration) {
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

TEST_F(SpecificationText, each_violated_rule_is_an_error) {
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

TEST_F(SpecificationText, an_error_inside_is_reported_in_addition_to_the_failure) {
    EXPECT_EQ(errors_of("{" + record + " a= R(n= nosuch(1)) }"),
              "1:111 /a/n 0x40000005 Value with unknown type='nosuch\n"
              "1:106 /a 0x40000000 Validate error in read of type: R\n"
              "1:106 /a 0x40000001 Failed to read value, type R\n"
              "1:106 /a 0x00000000 Cannot insert key =a\n");
}

TEST_F(SpecificationText, a_second_declaration_applies_from_there_on) {
    Reading const file("{" + record + " a= R(n=1); R= attlist(k= attspec(type=int)); b= R(k=2); }");
    EXPECT_EQ(file.log, "");
    EXPECT_EQ(file.text_at("b"), "R(\n  k= 2;\n)");
    EXPECT_EQ(file.text_at("a/n"), "1"); // the existing value is unchanged
    EXPECT_EQ(errors_of("{ x= R(n=1) }").substr(0, 7), "1:6 /x ");
}

// --- types without attributes ---

TEST_F(SpecificationText, an_object_without_attributes_can_be_read_again) {
    std::string const text = "{\n  E= attlist(\n  );\n  a= E(\n  );\n  v= [E(\n      ), ];\n}";
    Reading const file("{E= attlist(); a= E(); v= [E( /* nothing */ )]; s= <E()>; m= {e= E()} }");
    EXPECT_EQ(file.log, "");
    EXPECT_EQ(file.code, 0);
    EXPECT_EQ(file.text_at("a"), "E(\n)");
    std::string const once = exact(file.value);
    Reading const again(once);
    EXPECT_EQ(again.log, "");
    EXPECT_EQ(again.text_at("m/e"), "E(\n)");
    EXPECT_EQ(exact(again.value), once);
    EXPECT_EQ(exact(make<cMapObj>(dynamic_cast<cTypeObj *>(file.at("E").get()), true)), "E(\n)");
}

TEST_F(SpecificationText, an_entry_that_is_not_a_specification_declares_no_attribute) {
    Reading const file("{E= attlist(x= 5); a= E(); }");
    EXPECT_EQ(file.log, "");
    EXPECT_EQ(file.text_at("a"), "E(\n)");
}

TEST_F(SpecificationText, an_entry_of_an_object_without_attributes_is_an_error) {
    std::string const failed = "1:19 /a 0x40000001 Failed to read value, type E\n"
                               "1:19 /a 0x00000000 Cannot insert key =a\n";
    EXPECT_EQ(errors_of("{E= attlist(); a= E(x= 1) }"),
              "1:19 /a 0x40000000 Validate error in read of type: E\n" + failed);
    EXPECT_EQ(errors_of("{E= attlist(); a= E(x= #bad) }"),
              "1:24 /a/x 0x00000000 Cannot insert key =x\n" + failed);
    EXPECT_EQ(errors_of("{E= attlist(); a= E(?) }"),
              "1:21 /a 0x40000002 Unexpected token '?\n" + failed);
}

// --- types that were declared again ---

TEST_F(SpecificationText, an_object_of_an_older_declaration_is_omitted) {
    cExactly const both = exactly(int_x + "a= T(x= 1);" + int_y + "b= T(y= 2);");
    EXPECT_EQ(both.left_out, "/a ");
    EXPECT_EQ(both.text, "{\n  T= attlist(\n      y= attspec(type=int; flag=#IMPLIED;);\n  );\n"
                         "  b= T(\n      y= 2;\n  );\n}");
    for (std::string const other :
         {"x= attspec(type= int; flag= #IMPLIED); y= attspec(flag= #IMPLIED)", "",
          "x= attspec(type= string; flag= #IMPLIED)", "x= attspec(default= 2.5)",
          "x= attspec(default= 5; flag= #FIXED)"})
        EXPECT_EQ(left_out(int_x + "a= T(x= 1); T= attlist(" + other + ");"), "/a ") << other;
    EXPECT_EQ(
        left_out(declare("x", "flag= #IMPLIED") + "a= T();" + declare("x", "flag= #REQUIRED")),
        "/a ");
    EXPECT_EQ(left_out(declare("x", "flag= #IMPLIED") + "a= T();" + declare("x", "default= 1")),
              "/a ");
}

TEST_F(SpecificationText, a_declaration_in_another_map_is_also_a_newer_one) {
    EXPECT_EQ(left_out("m= {" + int_x + "a= T(x= 1)}; n= {" + int_y + "b= T(y= 2)};"), "/m/a ");
    EXPECT_EQ(left_out("m= {" + int_x + "a= T(x= 1)}; n= {" + int_x + "b= T(x= 2)};"), "");
}

TEST_F(SpecificationText, an_object_that_reads_the_same_by_the_newer_declaration_is_written) {
    for (std::string const same : {"type= int; flag= #IMPLIED", "flag= #IMPLIED",
                                   "type= int; flag= #REQUIRED", "default= 7"})
        EXPECT_EQ(left_out(int_x + "a= T(x= 1);" + declare("x", same)), "") << same;
    EXPECT_EQ(left_out(int_x + "a= T();" + int_x), "");
    std::string const two = "T= attlist(x= attspec(flag= #IMPLIED); y= attspec(flag= #IMPLIED));";
    std::string const reordered =
        "T= attlist(y= attspec(flag= #IMPLIED); x= attspec(flag= #IMPLIED));";
    EXPECT_EQ(left_out(two + "a= T(x= 1);" + two), "");
    EXPECT_EQ(left_out(two + "a= T(x= 1);" + reordered), "/a ");
}

TEST_F(SpecificationText, a_changed_default_omits_objects_that_it_would_be_merged_with) {
    std::string const choice_m = "M= choice({a= 1; b= 2});";
    std::string const map = declare("m", "default= {a= 1}"), set = declare("m", "default= <1>");
    EXPECT_EQ(left_out(map + "a= T(); b= T(m= {b= 2});" + map), "");
    EXPECT_EQ(left_out(map + "a= T();" + declare("m", "default= {b= 1}")), "/a ");
    EXPECT_EQ(left_out(set + "a= T(m= <2>);" + set), "");
    EXPECT_EQ(left_out(set + "a= T();" + declare("m", "default= <2>")), "/a ");
    EXPECT_EQ(left_out(declare("m", "flag= #IMPLIED") + "a= T(m= {b= 2});" + map), "/a ");
    EXPECT_EQ(left_out(declare("m", "default= [1; 2]") + "a= T(); b= T(m= [3]);" +
                       declare("m", "default= [{c= 1}; 4]")),
              "/a /b ");
    EXPECT_EQ(left_out(choice_m + declare("m", "flag= #IMPLIED") + "a= T(m= M());" +
                       declare("m", "default= M(b)")),
              "/a ");
    EXPECT_EQ(left_out(choice_m + declare("m", "default= M(b)") + "a= T(m= M(a));" +
                       declare("m", "default= M(b)")),
              "");
    EXPECT_EQ(left_out(int_x + declare("p", "default= T(x= 1)", "U") + "a= U(); b= U(p= T(x= 2));"),
              "");
    EXPECT_EQ(left_out(int_x + declare("p", "default= T(x= 1)", "U") + "a= U(); b= U(p= T(x= 2));" +
                       declare("p", "default= T(x= 3)", "U")),
              "/a /b ");
}

TEST_F(SpecificationText, references_to_an_older_object_are_omitted_but_not_those_to_its_content) {
    cExactly const shared =
        exactly(declare("x", "flag= #IMPLIED") +
                "a= T(x= [1]); b= #cRef(/a); c= #cRef(/a/x); d= #cRef(/a/x);" + int_y);
    EXPECT_EQ(shared.left_out, "/a /b ");
    EXPECT_EQ(shared.text, "{\n  T= attlist(\n      y= attspec(type=int; flag=#IMPLIED;);\n  );\n"
                           "  c= [1, ];\n  d= #cRef(/c);\n}");
}

TEST_F(SpecificationText, references_count_indices_without_the_omitted_older_objects) {
    cExactly const nested = exactly(int_x +
                                    "v= [T(x= 1); 7; #cRef(/v/0); {k= 8}]; m= {a= T(x= 1); b= 2};"
                                    "s= <T(x= 1); 9>; r= #cRef(/v/1); q= #cRef(/v/3/k);" +
                                    int_y);
    EXPECT_EQ(nested.left_out, "/v/0 /v/1 /m/a /s/0 ");
    EXPECT_EQ(nested.text, "{\n  T= attlist(\n      y= attspec(type=int; flag=#IMPLIED;);\n  );\n"
                           "  v= [7, {k= 8; }, ];\n  m= {b= 2; };\n  s= <9, >;\n"
                           "  r= #cRef(/v/0);\n  q= #cRef(/v/1/k);\n}");
}

TEST_F(SpecificationText, an_older_object_inside_an_object_is_omitted) {
    std::string const inner = int_x + "L= attlist(a= attspec(type= T; flag= ";
    EXPECT_EQ(left_out(inner + "#IMPLIED)); l= L(a= T(x= 1));" + int_y), "/l/a ");
    EXPECT_EQ(left_out(inner + "#REQUIRED)); l= L(a= T(x= 1)); v= [#cRef(/l); 1];" + int_y),
              "/l/a /l /v/0/a /v/0 ")
        << "an object that cannot be read without the attribute is omitted, too";
    EXPECT_EQ(left_out(inner + "#REQUIRED)); l= L(a= T(x= 1)); t= #cRef(/l/a);" + int_y +
                       "k= L(a= T(y= 2)); u= #cRef(/k/a/y)"),
              "/l/a /l /t ");
}

TEST_F(SpecificationText, an_older_object_as_a_default_is_omitted) {
    cExactly const direct =
        exactly(int_x + declare("d", "default= T(x= 1)", "U") + "u= U();" + int_y);
    EXPECT_EQ(direct.left_out, "/U/d/default /u/d ");
    EXPECT_EQ(direct.text, "{\n  T= attlist(\n      y= attspec(type=int; flag=#IMPLIED;);\n  );\n"
                           "  U= attlist(\n      d= attspec(flag=#IMPLIED;);\n  );\n"
                           "  u= U(\n  );\n}");
}

TEST_F(SpecificationText, an_object_that_its_type_would_refuse_is_omitted) {
    Reading const file("{" + record +
                       "F= attlist(f= attspec(default= 5; flag= #FIXED));"
                       "W= attlist(w= attspec(type= int; default= 2.5));"
                       "w= W(w= 3); }");
    EXPECT_EQ(file.text_at("w/w"), "3.00000") << "the value is assigned to the default, a double";
    auto const fresh = [&file](char const *type) {
        return make<cMapObj>(dynamic_cast<cTypeObj *>(file.at(type).get()), true);
    };
    cRef<cMapObj> const empty = fresh("R"), full = fresh("R"), no_default = fresh("R");
    full->datamap().mapitem("n", cat::of(1));
    no_default->datamap().mapitem("n", cat::of(1));
    no_default->datamap().mapitem("d", cat::nil());
    objref const objects = make<cVectorObj>();
    for (objref const &object :
         {objref(empty), objref(full), objref(no_default), objref(fresh("F")), file.at("w")})
        objects->append(object);
    cErrorLog errors;
    cat::ExactText const guard;
    EXPECT_EQ(written(objects), "[\n  R(\n      n= 1;\n      d= 5;\n      i= #nil;\n  ),\n]");
    EXPECT_EQ(errors.text(), "0x40000001 Value cannot be written, path : /0\n"
                             "0x40000001 Value cannot be written, path : /1\n"
                             "0x40000001 Value cannot be written, path : /1\n"
                             "0x40000001 Value cannot be written, path : /1\n");
}

TEST_F(SpecificationText, a_specification_of_an_unnamed_type_is_omitted) {
    EXPECT_EQ(left_out("R= attlist(n= attspec(type= choice({a= 1}); flag= #IMPLIED); k= "
                       "attspec(default= 1)); "),
              "/R/n ");
}

TEST_F(SpecificationText, an_older_object_by_itself_has_no_exact_text) {
    Reading const file("{" + int_x + "a= T(x= 1);" + int_y + "}");
    cErrorLog errors;
    cat::ExactText const guard;
    std::ostringstream os;
    EXPECT_FALSE(file.at("a")->writeobj(os));
    EXPECT_EQ(os.str(), "");
    EXPECT_EQ(cat::as_text(file.at("a")), "");
    EXPECT_EQ(guard.failed(), 2u);
    EXPECT_EQ(errors.text(), "0x40000001 Value cannot be written, path : \n"
                             "0x40000001 Value cannot be written, path : \n");
}

TEST_F(SpecificationText, plain_text_contains_objects_of_every_declaration) {
    Reading const file("{" + int_x + "a= T(x= 1);" + int_y + "}");
    EXPECT_EQ(file.text_at("a"), "T(\n  x= 1;\n)");
}

TEST_F(SpecificationText, a_declaration_of_another_metatype_is_refused) {
    EXPECT_EQ(errors_of("{" + record + " R= attspec(type=int); int= attlist(); }"),
              "1:130 /int 0x40000006 Type name from input is registered with another type-type!\n");
    EXPECT_EQ(errors_of("{niltype= attlist(x= attspec(type= int)); exe= choice({a= 1}); b= 1; }"),
              "1:11 /niltype 0x40000006 Type name from input is registered with another "
              "type-type!\n"
              "1:48 /exe 0x40000006 Type name from input is registered with another type-type!\n");
}

TEST_F(SpecificationText, references_into_a_default_are_allowed) {
    std::string const text =
        "{\n  R= attlist(\n      m= attspec(default={v= [1, 2, ]; }; );\n  );\n  "
        "again= #cRef(/R/m/default/v);\n}";
    Reading const file(text);
    EXPECT_EQ(file.log, "");
    EXPECT_TRUE(file.at("again") ==
                file.at("R/m")->getattr(own_key(std::string("default")))->getattrp("v"));
    EXPECT_EQ(exact(file.value), text);
}

TEST_F(SpecificationText, nested_objects_can_be_read_again) {
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
    EXPECT_EQ(file.text_at("a/v"), "[2, ]"); // read into a private copy of the default
    EXPECT_EQ(file.text_at("b/v"), "[1, ]");
    EXPECT_EQ(file.text_at("T/v/default"), "[1, ]");
}

TEST_F(SpecificationText, text_creates_no_object_that_owns_itself) {
    std::string const type = "{R= attlist(a= attspec(flag=#IMPLIED)); ";
    Reading const direct(type + "r= R(); r= R(a= #cRef(/r)); }");
    EXPECT_EQ(direct.text_at("r"), "R(\n  a= R(\n      a= #nil;\n  );\n)"); // a copy
    Reading const below(type +
                        "m= {}; r= R(a= {}); m= {x= #cRef(/r); }; r= R(a= {y= #cRef(/m);}); }");
    EXPECT_FALSE(below.at("r")->is_owner_of(*below.at("r")));
    EXPECT_FALSE(below.at("m")->is_owner_of(*below.at("m")));
}

// As the first entry of an attspec, `type= choice(...)` does not declare a type named "type".
TEST_F(SpecificationText, an_unnamed_type_lives_as_long_as_its_specification) {
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

TEST_F(SpecificationText, a_type_declared_again_with_an_old_object_as_default_is_destroyed) {
    Reading const file("{T= attlist(x= attspec(type= int; flag= #IMPLIED)); p= T(x= 1);"
                       " T= attlist(x= attspec(default= #cRef(/p))); q= T(); }");
    EXPECT_EQ(file.log, "");
    EXPECT_EQ(file.text_at("q"), "T(\n  x= T(\n      x= 1;\n  );\n)");
    EXPECT_EQ(file.text_at("p"), "T(\n  x= 1;\n)");
}

TEST_F(SpecificationText, doubling_objects_stops_at_the_budget) {
    std::string text = "{R= attlist(a= attspec(flag=#IMPLIED); b= attspec(flag=#IMPLIED)); r= R();";
    for (int i = 0; i < 40; ++i) text += "\nr= R(a= #cRef(/r); b= #cRef(/r));";
    std::string const errors = errors_of(text + "}");
    EXPECT_NE(errors.find("/r 0x40000001 Too much merged, path : /r\n"), std::string::npos)
        << errors;
}

TEST_F(SpecificationText, methods_without_a_stream_return_false) {
    objref none = cat::of(1);
    cAttspec spec(asf_required, nullptr);
    EXPECT_FALSE(cTomAttspec::m_write(spec, none));
    EXPECT_FALSE(cTomAttspec::m_read(spec, none));
    EXPECT_FALSE(cTomAttlist::m_write(cat::type_map(), none));
    EXPECT_FALSE(cTomAttlist::m_read(cat::type_map(), none));
    cMapObj map;
    EXPECT_FALSE(cTomAttrset::m_read(map, none));
}
