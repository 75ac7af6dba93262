// The example that declares its own types, and small files that each violate one rule of such
// types.
//
// The output of `check` for examples/broken/<rule>.attr is in <rule>.err beside it. After a change
// of the messages, read them as a user would, and write all of them again with
//
//   (cd examples/broken; for f in *.attr; do ../../build/dev/bin/qrv check $f >${f%attr}err 2>&1;
//   done)

#include "tests/tool/tool_run.h"

#include <algorithm>
#include <set>

using tool_test::bytes_of;
using tool_test::cRun;

namespace {

class ToolExamplesTypes : public tool_test::Tool {};

// The names of the files in examples/broken with this ending, without the ending.
std::set<std::string> rules(std::string const &ending) {
    std::set<std::string> names;
    for (auto const &entry :
         std::filesystem::directory_iterator(test::source_file("examples/broken")))
        if (entry.path().extension() == ending) names.insert(entry.path().stem().string());
    return names;
}

size_t count(std::string const &all, std::string const &part) {
    size_t n = 0;
    for (size_t at = 0; (at = all.find(part, at)) != std::string::npos; ++at) ++n;
    return n;
}

TEST_F(ToolExamplesTypes, waterworks_has_two_hundred_formatted_objects) {
    write_example("waterworks.attr");
    std::string const text = read("waterworks.attr");
    EXPECT_EQ(run({"check", "waterworks.attr"}), (cRun{0, "", ""}));
    EXPECT_EQ(run({"fmt", "--trailing-blanks", "waterworks.attr"}), (cRun{0, text, ""}));
    EXPECT_EQ(run({"fmt", "--check", "waterworks.attr"}), (cRun{0, "", ""}));
    EXPECT_EQ(count(text, " Pump(\n"), 98u);
    EXPECT_EQ(count(text, " Drive(\n"), 102u);
    EXPECT_EQ(count(text, " Reading("), 0u) << "Reading has a #FIXED attribute";
}

TEST_F(ToolExamplesTypes, waterworks_can_be_queried_by_paths) {
    write_example("waterworks.attr");
    EXPECT_EQ(
        run({"get", "waterworks.attr", "high_lift/4/drive", "on_diesel/0/tag", "intake/1/spares",
             "hospital/3/mode"}),
        (cRun{0,
              "Drive(\n  power= 55.0000;\n  speed= 2900;\n  maker= Harlow;\n"
              "  class= Efficiency(ie3);\n)\nP701\n[seal_80, \"bearing 6314\", ]\nMode(auto)\n",
              ""}));
}

TEST_F(ToolExamplesTypes, one_invalid_object_of_waterworks_is_found) {
    write_example("waterworks.attr");
    std::string text = read("waterworks.attr");
    std::string const given = "tag= W5;";
    size_t const at = text.find(given);
    ASSERT_NE(at, std::string::npos);
    text.replace(at, given.size(), "tag= 5;");
    auto const line = 1 + std::count(text.begin(), text.begin() + static_cast<long>(at), '\n');
    EXPECT_EQ(check(text), "f:" + std::to_string(line) +
                               ":11: error: key 'tag' of type Pump must be a string, not an int, "
                               "path /wells/4/tag, declared at 21:7 [0x40000000]\n");
}

TEST_F(ToolExamplesTypes, each_violated_rule_is_reported_as_in_its_file) {
    std::set<std::string> const names = rules(".attr");
    EXPECT_EQ(names, (std::set<std::string>{"another_metatype", "choice_without_map", "fixed_value",
                                            "fixed_without_default", "required_missing",
                                            "required_nil", "undeclared_key", "unknown_choice",
                                            "unknown_type", "wrong_type", "wrong_type_entry"}));
    EXPECT_EQ(names, rules(".err"));
    for (std::string const &name : names) {
        write(name + ".attr", bytes_of(test::source_file("examples/broken/" + name + ".attr")));
        std::string const reported =
            bytes_of(test::source_file("examples/broken/" + name + ".err"));
        EXPECT_TRUE(reported.starts_with(name + ".attr:")) << name;
        EXPECT_EQ(run({"check", "--all", name + ".attr"}), (cRun{1, "", reported})) << name;
    }
}

} // namespace
