// `to-json`: the result for each value, and the reported losses.

#include "tests/tool/tool_run.h"

#include <algorithm>

using tool_test::cRun;
using tool_test::times;

namespace {

class ToolToJson : public tool_test::Tool {
  protected:
    cRun convert(std::string const &text, std::vector<std::string> arguments = {}) const {
        arguments.insert(arguments.begin(), "to-json");
        return run(std::move(arguments), {.input = text});
    }
    // The conversion loses nothing.
    std::string json(std::string const &text) const {
        cRun const run = convert(text);
        EXPECT_EQ(run.status, 0) << text;
        EXPECT_EQ(run.err, "") << text;
        return run.out;
    }
    // The result on one line, with these warnings.
    std::string lossy(std::string const &text, std::string const &warnings) const {
        cRun const run = convert(text, {"--compact"});
        EXPECT_EQ(run.status, 0) << text;
        EXPECT_EQ(run.err, warnings) << text;
        return run.out;
    }
};

TEST_F(ToolToJson, a_file_is_converted) {
    EXPECT_EQ(json("{\n  name= \"Line 1\";\n  gain= 1.5;\n  on= true;\n  none= #nil;\n"
                   "  list= [1, two, ];\n  part= {\n      a= {};\n  }; \n}\n"),
              "{\n"
              "  \"name\": \"Line 1\",\n"
              "  \"gain\": 1.5,\n"
              "  \"on\": true,\n"
              "  \"none\": null,\n"
              "  \"list\": [1, \"two\"],\n"
              "  \"part\": {\n"
              "    \"a\": {}\n"
              "  }\n"
              "}\n");
}

TEST_F(ToolToJson, values_may_be_alone) {
    EXPECT_EQ(json("#nil"), "null\n");
    EXPECT_EQ(json("true"), "true\n");
    EXPECT_EQ(json("false"), "false\n");
    EXPECT_EQ(json("0x1F"), "31\n");
    EXPECT_EQ(json("2.5"), "2.5\n");
    EXPECT_EQ(json("word"), "\"word\"\n");
    EXPECT_EQ(json("[]"), "[]\n");
    EXPECT_EQ(json("{\n}"), "{}\n");
}

TEST_F(ToolToJson, ints_are_whole_numbers) {
    EXPECT_EQ(json("[0, -1, 2147483647, -2147483648]"), "[0, -1, 2147483647, -2147483648]\n");
}

TEST_F(ToolToJson, doubles_in_the_range_of_int_have_a_fraction) {
    EXPECT_EQ(json("[1.0, -0.0, 100000.0, 2147483647.0, -2147483648.0]"),
              "[1.0, -0.0, 100000.0, 2147483647.0, -2147483648.0]\n");
}

TEST_F(ToolToJson, whole_doubles_beyond_int_are_whole_numbers) {
    EXPECT_EQ(json("[2147483648.0, -2147483649.0, 9007199254740992.0, -9007199254740992.0]"),
              "[2147483648, -2147483649, 9007199254740992, -9007199254740992]\n");
    EXPECT_EQ(json("[9007199254740994.0, -9007199254740994.0, 2147483648.5]"),
              "[9007199254740994.0, -9007199254740994.0, 2147483648.5]\n");
    EXPECT_EQ(json("[9999999999999998.0, 1.0e16, 1.0e22]"), "[9999999999999998.0, 1e+16, 1e+22]\n");
}

TEST_F(ToolToJson, with_integers_whole_doubles_below_2_to_the_53_have_no_point) {
    EXPECT_EQ(convert("[1.0, -100000.0, 0.0, -0.0, 2147483648.0, 9007199254740991.0, "
                      "9007199254740994.0, 1.0e22, 0.5, 7, 8.f]",
                      {"--integers"})
                  .out,
              "[1, -100000, 0, -0.0, 2147483648, 9007199254740991, 9007199254740994.0, 1e+22, "
              "0.5, 7, 8]\n");
}

TEST_F(ToolToJson, doubles_have_the_digits_they_need) {
    EXPECT_EQ(json("[0.1, 0.30000000000000004, 1.0e-5, 9.9e-6, 1.0e-7, 1.7976931348623157e308, "
                   "4.94066e-324]"),
              "[0.1, 0.30000000000000004, 0.00001, 9.9e-06, 1e-07, 1.7976931348623157e+308, "
              "5e-324]\n");
}

TEST_F(ToolToJson, strings_are_converted) {
    EXPECT_EQ(json("[\"\", 'it\\'s', \"say \\\"x\\\"\", \"C:\\\\x\", \"true\", \"/\"]"),
              "[\"\", \"it's\", \"say \\\"x\\\"\", \"C:\\\\x\", \"true\", \"/\"]\n");
    EXPECT_EQ(json("\"a\\\nb\tc\rd\x01\x7F\""), "\"a\\nb\\tc\\rd\\u0001\x7F\"\n");
    EXPECT_EQ(json("\"\xC3\xA9\xF0\x9F\x98\x80\""), "\"\xC3\xA9\xF0\x9F\x98\x80\"\n");
}

TEST_F(ToolToJson, strings_that_are_not_utf8_are_refused) {
    EXPECT_EQ(convert("{a=\"\xE9t\xE9\"; b=[1, \"x\xC3\"]; \"\xFF\"=1; c=<2>}"),
              (cRun{2, "",
                    "-: error: invalid UTF-8 byte at index 1: 0x74, at path 'a'\n"
                    "-: error: incomplete UTF-8 string; last byte: 0xC3, at path 'b/1'\n"
                    "-: error: invalid UTF-8 byte at index 0: 0xFF, at path '\"\\xff\"'\n"
                    "-: warning: a set becomes an array, at path 'c'\n"}));
}

TEST_F(ToolToJson, the_layout_can_be_chosen) {
    std::string const text =
        "{\n  a= {\n      b= [1, {c= 2; }, ];\n  };\n  d= [\n      3,\n  ];\n}";
    EXPECT_EQ(json(text),
              "{\n  \"a\": {\n    \"b\": [1, {\"c\": 2}]\n  },\n  \"d\": [\n    3\n  ]\n}\n")
        << "a container on one line stays on one line";
    EXPECT_EQ(convert(text, {"--indent", "0"}).out,
              "{\n\"a\": {\n\"b\": [1, {\"c\": 2}]\n},\n\"d\": [\n3\n]\n}\n");
    EXPECT_EQ(convert(text, {"--indent", "4"}).out,
              "{\n    \"a\": {\n        \"b\": [1, {\"c\": 2}]\n    },\n    \"d\": [\n        3\n"
              "    ]\n}\n");
    EXPECT_EQ(convert(text, {"--compact"}).out, "{\"a\":{\"b\":[1,{\"c\":2}]},\"d\":[3]}\n");
}

TEST_F(ToolToJson, a_set_becomes_an_array) {
    EXPECT_EQ(lossy("{a=<3, 1>; b=[<>]}", "-: warning: a set becomes an array, at path 'a'\n"
                                          "-: warning: a set becomes an array, at path 'b/0'\n"),
              "{\"a\":[3,1],\"b\":[[]]}\n");
    EXPECT_EQ(lossy("<1>", "-: warning: a set becomes an array\n"), "[1]\n");
}

TEST_F(ToolToJson, a_float_becomes_a_double) {
    EXPECT_EQ(lossy("[0.1f, 1.f, 16777216.0f, 3.e9f]",
                    "-: warning: a float becomes a double, at path '0'\n"
                    "-: warning: a float becomes a double, at path '1'\n"
                    "-: warning: a float becomes a double, at path '2'\n"
                    "-: warning: a float becomes a double, at path '3'\n"),
              "[0.1,1.0,16777216.0,3000000000]\n");
}

TEST_F(ToolToJson, constants_are_converted) {
    EXPECT_EQ(lossy("[#true, #false, #nil, #REQUIRED, #IMPLIED, #FIXED]",
                    "-: warning: #true becomes true, at path '0'\n"
                    "-: warning: #false becomes false, at path '1'\n"
                    "-: warning: #REQUIRED becomes a string, at path '3'\n"
                    "-: warning: #IMPLIED becomes a string, at path '4'\n"
                    "-: warning: #FIXED becomes a string, at path '5'\n"),
              "[true,false,null,\"#REQUIRED\",\"#IMPLIED\",\"#FIXED\"]\n");
    EXPECT_EQ(lossy("#true", "-: warning: #true becomes true\n"), "true\n");
}

TEST_F(ToolToJson, keys_become_strings) {
    EXPECT_EQ(
        lossy("{1=a; -2=b; 1.5=c; 2.5f=d; '3'=e; ''=f}",
              "-: warning: a key of type 'int' becomes a string, at path '1'\n"
              "-: warning: a key of type 'int' becomes a string, at path '-2'\n"
              "-: warning: a key of type 'double' becomes a string, at path '1.50000'\n"
              "-: warning: a key of type 'float' becomes a string, at path '2.50000f'\n"),
        "{\"1\":\"a\",\"-2\":\"b\",\"1.50000\":\"c\",\"2.50000f\":\"d\",\"3\":\"e\",\"\":\"f\"}"
        "\n");
}

TEST_F(ToolToJson, two_keys_with_equal_text_are_refused) {
    EXPECT_EQ(convert("{a={1=x; '1'=y}}"),
              (cRun{2, "",
                    "-: warning: a key of type 'int' becomes a string, at path 'a/1'\n"
                    "-: error: two keys would have this text, at path 'a/1'\n"}));
}

TEST_F(ToolToJson, a_shared_value_is_written_wherever_it_occurs) {
    EXPECT_EQ(
        lossy("{a=[1, <2>]; b=#cRef(/a); c={d=#cRef(/a/1); e=#cRef(/c/d)}; s=x; t=#cRef(/s)}",
              "-: warning: a set becomes an array, at path 'a/1'\n"
              "-: warning: a shared value is written once more, at path 'b'\n"
              "-: warning: a shared value is written once more, at path 'c/d'\n"
              "-: warning: a shared value is written once more, at path 'c/e'\n"
              "-: warning: a shared value is written once more, at path 't'\n"),
        "{\"a\":[1,[2]],\"b\":[1,[2]],\"c\":{\"d\":[2],\"e\":[2]},\"s\":\"x\",\"t\":\"x\"}\n");
}

TEST_F(ToolToJson, sharing_that_multiplies_the_output_is_refused) {
    std::string text = "{a0=[1, 2, 3];";
    for (int i = 1; i < 60; ++i) {
        std::string const before = "#cRef(/a" + std::to_string(i - 1) + ")";
        text += "a" + std::to_string(i) + "=[" + before + "," + before + "];";
    }
    cRun const run = convert(text + "}", {"--max-errors", "1"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err.substr(0, run.err.find(" more\n") - 2),
              "-: warning: a shared value is written once more, at path 'a1/0'\n"
              "-: error: shared values would make the text too long\n"
              "-: warning: ");
}

TEST_F(ToolToJson, objects_of_declared_types_become_objects) {
    EXPECT_EQ(lossy("{P=attlist(x=attspec(type=int;);); p=P(x=2;); q=[#cRef(/p)]}",
                    "-: warning: an object of type 'attlist' becomes a string, at path 'P'\n"
                    "-: warning: an object of type 'P' becomes a map, at path 'p'\n"
                    "-: warning: a shared value is written once more, at path 'q/0'\n"),
              "{\"P\":\"attlist(\\n  x= attspec(type=int; flag=#REQUIRED;);\\n)\",\"p\":{\"x\":2},"
              "\"q\":[{\"x\":2}]}\n");
}

TEST_F(ToolToJson, objects_of_other_types_become_their_text) {
    EXPECT_EQ(lossy("[attspec(type=int;)]",
                    "-: warning: an object of type 'attspec' becomes a string, at path '0'\n"),
              "[\"attspec(type=int; flag=#REQUIRED;)\"]\n");
    EXPECT_EQ(lossy("{Light=choice({red=1; green=2}); l=Light(green)}",
                    "-: warning: an object of type 'choice' becomes a string, at path 'Light'\n"
                    "-: warning: an object of type 'Light' becomes a string, at path 'l'\n"),
              "{\"Light\":\"choice({red= 1; green= 2; })\",\"l\":\"Light(green)\"}\n");
}

TEST_F(ToolToJson, lost_comments_are_reported) {
    EXPECT_EQ(convert("// head\n{ a=1; // one\n /* two\n lines */ b=[2] } // behind\n"),
              (cRun{0, "{\n  \"a\": 1,\n  \"b\": [2]\n}\n",
                    "-:1:1: warning: this comment is lost: // head\n"
                    "-:2:8: warning: this comment is lost: // one\n"
                    "-:3:2: warning: this comment is lost: /* two\n"
                    "-:4:19: warning: this comment is lost: // behind\n"}));
}

TEST_F(ToolToJson, lost_text_after_the_value_is_reported) {
    EXPECT_EQ(convert("[1]; [2]"),
              (cRun{0, "[1]\n", "-:1:6: warning: text after the first value is lost\n"}));
}

TEST_F(ToolToJson, warnings_are_limited) {
    EXPECT_EQ(convert("[<1>, <2>, <3>, <4>]", {"--max-errors", "2"}),
              (cRun{0, "[[1], [2], [3], [4]]\n",
                    "-: warning: a set becomes an array, at path '0'\n"
                    "-: warning: a set becomes an array, at path '1'\n"
                    "-: warning: 2 more\n"}));
}

TEST_F(ToolToJson, strict_refuses_a_loss) {
    EXPECT_EQ(convert("{a=<1>} // x", {"--strict"}),
              (cRun{1, "",
                    "-: error: a set becomes an array, at path 'a'\n"
                    "-:1:9: error: this comment is lost: // x\n"}));
    EXPECT_EQ(convert("{a=[1]}", {"--strict"}), (cRun{0, "{\"a\": [1]}\n", ""}));
    EXPECT_EQ(convert("{a=<1>; b='\xE9'}", {"--strict"}),
              (cRun{2, "",
                    "-: error: a set becomes an array, at path 'a'\n"
                    "-: error: incomplete UTF-8 string; last byte: 0xE9, at path 'b'\n"}));
    write("f.attr", "<1>");
    write("f.json", "old");
    EXPECT_EQ(run({"to-json", "--strict", "f.attr", "-o", "f.json"}),
              (cRun{1, "", "f.attr: error: a set becomes an array\n"}));
    EXPECT_EQ(read("f.json"), "old");
}

TEST_F(ToolToJson, the_output_may_be_a_file) {
    write("f.attr", "[1]");
    EXPECT_EQ(run({"to-json", "f.attr", "-o", "f.json"}), (cRun{0, "", ""}));
    EXPECT_EQ(read("f.json"), "[1]\n");
    write("f.attr", "<1>");
    EXPECT_EQ(run({"to-json", "f.attr", "-o", "f.json"}),
              (cRun{0, "", "f.attr: warning: a set becomes an array\n"}));
    EXPECT_EQ(read("f.json"), "[1]\n");
    write("f.attr", "[");
    EXPECT_EQ(run({"to-json", "f.attr", "-o", "f.json"}).status, 2);
    EXPECT_EQ(read("f.json"), "[1]\n");
}

TEST_F(ToolToJson, a_file_with_errors_prints_nothing) {
    EXPECT_EQ(convert("{a=1;b=foo(2)}"), (cRun{2, "",
                                               "-:1:8: error: Value with unknown type='foo "
                                               "[0x40000005]\n"
                                               "-:1:8: note: 1 more error follows from it\n"}));
    EXPECT_EQ(convert(""), (cRun{2, "", "-: error: the file is empty\n"}));
    EXPECT_EQ(run({"to-json", "nowhere"}),
              (cRun{2, "", "nowhere: error: cannot read: No such file or directory\n"}));
}

TEST_F(ToolToJson, values_may_be_as_deep_as_in_files) {
    std::string const deep = times("[", 1000) + times("]", 1000);
    EXPECT_EQ(json(deep), deep + "\n");
}

TEST_F(ToolToJson, long_paths_are_shortened_in_the_middle) {
    std::string const key = times("abcdefghij", 20);
    EXPECT_EQ(convert("{" + key + "=<>}").err, "-: warning: a set becomes an array, at path '" +
                                                   key.substr(0, 57) + " ... " +
                                                   key.substr(key.size() - 57) + "'\n");
}

} // namespace
