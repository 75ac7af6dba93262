// `types`: the known types, including those of a file and of modules.

#include "tests/tool/tool_run.h"

using tool_test::cRun;

namespace {

std::string const shapes = "{\n"
                           "  Mode= choice({auto= 1; manual= 2; });\n"
                           "  Pixel= attlist(\n"
                           "      x= attspec(type=int; flag=#REQUIRED;);\n"
                           "      color= attspec(default=red; );\n"
                           "      mode= attspec(type=Mode; flag=#IMPLIED;);\n"
                           "  );\n"
                           "  Fixed= attlist(\n"
                           "      f= attspec(default=5; flag=#FIXED;);\n"
                           "  );\n"
                           "  a= Pixel(\n"
                           "      x= 1;\n"
                           "      color= blue;\n"
                           "      mode= Mode(auto);\n"
                           "  ); // first\n"
                           "  list= [\n"
                           "      #cRef(/a),\n"
                           "      Pixel(\n"
                           "          x= 2;\n"
                           "      ),\n"
                           "      {u= [1, 2, ]; \"b c\"= 7; },\n"
                           "  ]; \n"
                           "}\n";

class ToolTypes : public tool_test::Tool {
  protected:
    // The output from that type's paragraph to the next type that isn't requested.
    static std::string from(std::string const &text, std::string const &start,
                            std::string const &end) {
        size_t const first = text.find(start), after = text.find(end, first);
        return first == text.npos || after == text.npos ? text : text.substr(first, after - first);
    }
};

TEST_F(ToolTypes, the_list_begins_with_built_in_types) {
    cRun const all = run({"types"});
    EXPECT_EQ(all.status, 0);
    EXPECT_EQ(all.err, "");
    EXPECT_EQ(from(all.out, "int: ", "float: "),
              "int: type, built in\n"
              "  members: create write read equal iterobj newobj newref assign size less add\n"
              "  converted from: bool float double\n");
    for (std::string const name : {"string", "niltype", "type", "exe", "bool", "double", "map",
                                   "set", "vector", "iterator", "choice", "attspec", "attlist"})
        EXPECT_NE(("\n" + all.out).find("\n" + name + ": type, built in\n"), std::string::npos)
            << name;
}

TEST_F(ToolTypes, types_of_a_file_have_a_position_and_rules) {
    cRun const all = run_on(shapes, {"types"});
    EXPECT_EQ(all.status, 0);
    EXPECT_EQ(all.err, "");
    EXPECT_EQ(from(all.out, "Mode: ", "objslot1: "),
              "Mode: choice, f:2:3\n"
              "  members: create write read equal iterobj newobj assign getattr setattr choices\n"
              "    choice  value\n"
              "    auto    1\n"
              "    manual  2\n"
              "Pixel: attlist, f:3:3\n"
              "  members: create write read equal iterobj newobj validate assign setattr getattr "
              "wformat attspec\n"
              "    key    type  rule      default\n"
              "    x      int   required\n"
              "    color        default   red\n"
              "    mode   Mode  implied\n"
              "Fixed: attlist, f:8:3\n"
              "  members: create write read equal iterobj newobj validate assign setattr getattr "
              "wformat attspec\n"
              "    key  type  rule   default\n"
              "    f          fixed  5\n");
}

TEST_F(ToolTypes, types_can_be_listed_as_json) {
    std::string const all = run_on("{M= choice({a= 1});\n R= attlist(k= attspec(type= int));}",
                                   {"types", "--format=json"})
                                .out;
    EXPECT_EQ(all.substr(0, 4), "[\n  ");
    EXPECT_EQ(from(all, "\"name\": \"M\"", "\"name\": \"R\""),
              "\"name\": \"M\",\n    \"metatype\": \"choice\",\n    \"from\": {\n      \"file\": "
              "\"f\",\n      \"line\": 1,\n      \"column\": 2\n    },\n    \"members\": [\n      "
              "\"create\",\n      \"write\",\n      \"read\",\n      \"equal\",\n      "
              "\"iterobj\",\n      \"newobj\",\n      \"assign\",\n      \"getattr\",\n      "
              "\"setattr\",\n      \"choices\"\n    ],\n    \"converters\": [],\n    \"choices\": "
              "[\n      {\n        \"choice\": \"a\",\n        \"value\": \"1\"\n      }\n    ]\n  "
              "},\n  {\n    ");
    EXPECT_NE(all.find("    \"keys\": [\n      {\n        \"key\": \"k\",\n        \"type\": "
                       "\"int\",\n        \"rule\": \"required\",\n        \"default\": null\n"),
              std::string::npos);
}

TEST_F(ToolTypes, types_of_a_module_name_the_module) {
    std::filesystem::copy_file(test::binary_file("tests/modules_to_load/type_factory.so"),
                               path("types.so"));
    cRun const all = run({"types", "--module", "./types"});
    EXPECT_EQ(all.status, 0);
    EXPECT_NE(
        all.out.find("\nTemperature: type, module ./types\n  members: create write read equal "
                     "iterobj\n"),
        std::string::npos);
    std::string const json = run({"--module", "./types", "types", "--format", "json"}).out;
    EXPECT_NE(json.find("\"from\": {\n      \"module\": \"./types\"\n    }"), std::string::npos);
}

TEST_F(ToolTypes, types_of_an_invalid_file_are_not_listed) {
    EXPECT_EQ(run_on("{a= Nope(1)}", {"types"}),
              (cRun{2, "",
                    "f:1:5: error: Value with unknown type='Nope [0x40000005]\n"
                    "f:1:5: note: 1 more error follows from it\n"}));
    EXPECT_EQ(run({"types", "none"}),
              (cRun{2, "", "none: error: cannot read: No such file or directory\n"}));
    EXPECT_EQ(run({"types", "--format=xml"}).status, 2);
}

TEST_F(ToolTypes, one_file_may_declare_five_thousand_types) {
    std::string text = "{";
    for (int i = 0; i < 5000; ++i)
        text += "T" + std::to_string(i) + "= attlist(k= attspec(type= int));\n";
    cRun const all = run_on(text + "}", {"types"});
    EXPECT_EQ(all.status, 0);
    EXPECT_NE(all.out.find("\nT4999: attlist, f:5000:1\n"), std::string::npos);
}

} // namespace
