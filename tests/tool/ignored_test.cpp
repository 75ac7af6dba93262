// Parts of declarations that the reader silently ignores.

#include "tests/tool/tool_run.h"

namespace {

class ToolIgnored : public tool_test::Tool {
  protected:
    std::string checked(std::string const &text) const {
        write("f", text);
        return run({"check", "--all", "f"}).err + run({"check", "--all", "f"}).out;
    }
};

} // namespace

TEST_F(ToolIgnored, unknown_entries_of_a_specification_are_reported) {
    EXPECT_EQ(checked("{ Y= attlist(a= attspec(typ= int; default= 5); b= attspec(colour= 1)); }"),
              "f:1:25: error: attspec has no entry 'typ'; did you mean 'type'?\n"
              "f:1:59: error: attspec has no entry 'colour'\n");
}

TEST_F(ToolIgnored, invalid_flags_are_reported) {
    EXPECT_EQ(checked("{ Y= attlist(a= attspec(flag= REQUIRED); b= attspec(flag= 7)); }"),
              "f:1:31: error: a flag is #REQUIRED, #IMPLIED or #FIXED, not REQUIRED; did you mean "
              "'#REQUIRED'?\n"
              "f:1:59: error: a flag is #REQUIRED, #IMPLIED or #FIXED, not 7\n");
    EXPECT_EQ(checked("{ Y= attlist(a= attspec(flag= #FIXED; type= int)); }"),
              "f:1:31: error: #FIXED has no effect without a default\n");
}

TEST_F(ToolIgnored, keys_of_a_type_without_a_specification_are_reported) {
    EXPECT_EQ(checked("{ Y= attlist(a= 5; b= attspec(type= int)); }"),
              "f:1:17: error: this declares no key 'a': a declaration is attspec(...)\n");
}

TEST_F(ToolIgnored, the_word_attspec_without_brackets_declares_no_key) {
    EXPECT_EQ(checked("{ Y= attlist(a= attspec; b= attspec(type= int); c= \"attspec\"); }"),
              "f:1:17: error: this declares no key 'a': a declaration is attspec(...)\n"
              "f:1:52: error: this declares no key 'c': a declaration is attspec(...)\n");
}

TEST_F(ToolIgnored, choices_outside_a_map_are_reported) {
    EXPECT_EQ(checked("{ M= choice(off= 0; eco= 1); }"),
              "f:1:6: error: write the choices as a map: choice({a= 1; b= 2;})\n");
    EXPECT_EQ(checked("{ M= choice(eco); }"),
              "f:1:6: error: write the choices as a map: choice({a= 1; b= 2;})\n");
}

TEST_F(ToolIgnored, defaults_of_another_type_are_reported) {
    EXPECT_EQ(checked("{ M= choice({a= 1;}); Y= attlist(\n"
                      "  i= attspec(type= int; default= fast);\n"
                      "  d= attspec(default= 1; type= double);\n"
                      "  m= attspec(type= map; default= [int(5)]);\n"
                      "  c= attspec(type= M; default= a)); }"),
              "f:2:34: error: this default must be an int, not a string\n"
              "f:3:23: error: this default must be a double, not an int\n"
              "f:4:34: error: this default must be a map, not a vector\n"
              "f:5:32: error: this default must be a M, not a string\n");
}

TEST_F(ToolIgnored, defaults_of_another_type_are_not_reported_again_at_objects) {
    std::string const declared = "{ Y= attlist(n= attspec(type= int; default= fast));\n",
                      reported = "f:1:45: error: this default must be an int, not a string\n";
    EXPECT_EQ(checked(declared + " x= Y(); y= Y(); }"), reported);
    EXPECT_EQ(checked(declared + " x= Y(n= slow); }"),
              reported + "f:2:7: error: key 'n' of type Y must be an int, not a string, path /x/n, "
                         "declared at 1:14 [0x40000000]\n");
}

// The text doesn't show the type of its target; the object does.
TEST_F(ToolIgnored, a_default_by_reference_is_reported_at_the_object) {
    std::string const declared =
        "{ k= fast; Y= attlist(n= attspec(type= int; default= #cRef(/k)));\n";
    EXPECT_EQ(checked(declared + "}"), "");
    EXPECT_EQ(checked(declared + " x= Y(); }"),
              "f:2:5: error: key 'n' of type Y must be an int, not a string, path /x/n, declared "
              "at 1:23 [0x40000000]\n");
}

TEST_F(ToolIgnored, text_after_the_value_of_a_choice_or_a_scalar_is_reported) {
    auto const ignored = [](std::string const &place, std::string const &type) {
        return "f:" + place + ": error: this is ignored: only the first value in the brackets of " +
               type + " is read\n";
    };
    std::string const choice = "{ M= choice({eco= 1; off= 0;});\n";
    EXPECT_EQ(checked(choice + " m= M(eco, off); }"), ignored("2:12", "M"));
    EXPECT_EQ(checked(choice + " m= M(eco; off; eco); }"), ignored("2:12", "M"));
    EXPECT_EQ(checked(choice + " m= M(eco= 5); }"), ignored("2:12", "M"));
    EXPECT_EQ(checked(choice + " m= M(string(eco), {a= 1}); }"), ignored("2:20", "M"));
    EXPECT_EQ(checked("{ M= choice({a= 1;}, b); N= choice({a= 1;} {b= 2;}); }"),
              ignored("1:22", "choice") + ignored("1:44", "choice"));
    EXPECT_EQ(checked("[int(5, 6), string(a; b), bool(true, false), double(int(1, 2)), float(1)]"),
              ignored("1:9", "int") + ignored("1:23", "string") + ignored("1:38", "bool") +
                  ignored("1:60", "int"));
}

TEST_F(ToolIgnored, separators_after_a_single_value_are_accepted) {
    EXPECT_EQ(checked("{ M= choice({eco= 1;};); m= [M(eco,), M(eco;;), M( /* one */ eco ), M()];\n"
                      "  n= string(\"a, b\"); i= string(string(\"5\");); }"),
              "");
}

TEST_F(ToolIgnored, text_after_the_outermost_value_is_not_checked) {
    EXPECT_EQ(checked("{a= 1} attspec(typ= 1) int(5, 6)"),
              "f:1:8: error: text after the first value is not read\n");
}

TEST_F(ToolIgnored, five_thousand_specifications_may_be_nested) {
    std::string text = "[";
    for (int i = 0; i < 5000; ++i) text += "attspec(typ= ";
    std::string const all = checked(text);
    EXPECT_EQ(all.find("ended too early"), std::string::npos);
    EXPECT_NE(all.find("attspec has no entry 'typ'; did you mean 'type'?"), std::string::npos);
}

TEST_F(ToolIgnored, valid_defaults_are_not_reported) {
    EXPECT_EQ(checked("{ M= choice({a= 1;}); Y= attlist(i= attspec(type= int; default= 0x10);\n"
                      "  n= attspec(type= int; default= #nil); b= attspec(type= bool; default= "
                      "#true);\n"
                      "  s= attspec(type= string; default= \"int(5)\"); m= attspec(type= M; "
                      "default= M(a));\n"
                      "  v= attspec(type= vector; default= [a]); f= attspec(type= float; default= "
                      "1.5f));\n"
                      "  x= Y(n= 5); }"),
              "");
}

TEST_F(ToolIgnored, a_file_with_ignored_declarations_is_not_written) {
    write("f", "{ Y= attlist(a= attspec(typ= int)); }");
    EXPECT_EQ(run({"fmt", "-i", "f"}).status, 2);
    EXPECT_EQ(read("f"), "{ Y= attlist(a= attspec(typ= int)); }");
}

TEST_F(ToolIgnored, valid_declarations_are_not_reported) {
    EXPECT_EQ(
        checked("{ m= {a= 1;}; M= choice({a= 1;}); N= choice(#cRef(/m)); L= choice([a, b]);\n"
                "  attspec= 5; choice= x; /* attspec(typ= 1) */ s= \"choice(a= 1)\";\n"
                "  Y= attlist(a= attspec(type= M; flag= #IMPLIED); b= attspec(default= 5; flag= "
                "#FIXED);\n    c= attspec(default= {typ= 1;}); d= #cRef(/Y/a)); }"),
        "");
}
