// `check --format`: reports for other programs. data/sessions/report.session shows each of them.

#include "tests/tool/tool_run.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

using tool_test::cRun;
using tool_test::times;
using tool_test::usage_error;

namespace {

using cJson = nlohmann::json;

class ToolReport : public tool_test::Tool {
  protected:
    // The errors that the validator reports for these documents, one on a line.
    std::vector<std::string> validated(std::vector<std::string> const &documents) const {
        std::vector<std::string> arguments = {
            "PATH=/usr/bin:/bin", // the system's Python
            "python3", test::source_file("tests/tool/data/validate.py"),
            test::source_file("tests/tool/data/sarif-2.1.0.schema.json")};
        for (size_t i = 0; i < documents.size(); ++i) {
            write("document" + std::to_string(i), documents[i]);
            arguments.push_back("document" + std::to_string(i));
        }
        cRun const run = this->run(arguments, {.program = "/usr/bin/env"});
        EXPECT_EQ(run.err, "");
        std::vector<std::string> lines;
        std::istringstream is(run.out);
        for (std::string line; std::getline(is, line);)
            lines.push_back(line.substr(line.find(": ") + 2));
        EXPECT_EQ(lines.size(), documents.size());
        return lines;
    }
    std::string sarif_of(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"check", "--format=sarif"});
        cRun const run = this->run(std::move(arguments));
        EXPECT_EQ(run.err, "");
        return run.out;
    }
};

TEST_F(ToolReport, sarif_of_all_kinds_of_findings_is_valid) {
    write("clean", "{a= 1;}");
    write("faulty", "{\n a= 1; a= \"\\q\"; b= [1,,2]; c= <1, 1>; d= 007; e= 0xFFFFFFFF;\n"
                    " f= yes; g= unknown(1); h= ?; i= [1; j= \xC3\xA9;\n");
    write("bytes \xFF,:%#?", "{a= \xFF; a= \"\xFF\\\xFF\"; \x01= 1}");
    write("many", "{" + times("a= 1; b= ?;\n", 300) + "}");
    write("empty", "");
    std::vector<std::string> const documents = {
        sarif_of({"clean"}),
        sarif_of(
            {"clean", "faulty", "bytes \xFF,:%#?", "many", "empty", "absent", path("many"), ""}),
        sarif_of({"-W", "error", "-W", "strings", "faulty", "--max-errors", "2"})};
    EXPECT_EQ(validated(documents), (std::vector<std::string>{"valid", "valid", "valid"}));
}

TEST_F(ToolReport, the_schema_rejects_unknown_properties_and_wrong_values) {
    write("faulty", "{a= 1; a= 2}");
    cJson const valid = cJson::parse(sarif_of({"faulty"}));
    auto const with = [&](std::string const &pointer, cJson const &value) {
        cJson changed = valid;
        changed[cJson::json_pointer(pointer)] = value;
        return changed.dump();
    };
    std::string const result = "/runs/0/results/0";
    std::string const physical = result + "/locations/0/physicalLocation";
    std::vector<std::string> const wrong =
        validated({with("/version", "2.0.0"), with("/more", 1), with("/runs/0/more", 1),
                   with(result + "/level", "fatal"), with(result + "/more", 1),
                   with(result + "/message", "text"), with(physical + "/region/startLine", 0),
                   with(physical + "/region/startColumn", "1"),
                   with(physical + "/artifactLocation/uri", "a b"), valid.dump()});
    EXPECT_EQ(std::count(wrong.begin(), wrong.end(), "valid"), 1);
    EXPECT_EQ(wrong.back(), "valid");
}

TEST_F(ToolReport, sarif_counts_columns_in_characters_and_json_in_bytes) {
    write("f", "{\n \"\xC3\xA9\xE2\x82\xAC\"= \"\\q\xC3\xA9\"; }");
    cJson const sarif = cJson::parse(sarif_of({"f"}));
    EXPECT_EQ(sarif["runs"][0]["results"][0]["locations"][0]["physicalLocation"]["region"],
              (cJson{{"startLine", 2}, {"startColumn", 9}, {"endLine", 2}, {"endColumn", 11}}));
    cJson const json = cJson::parse(run({"check", "--format=json", "f"}).out);
    cJson const warning = json["files"][0]["diagnostics"][0];
    EXPECT_EQ(warning["line"], 2);
    EXPECT_EQ(warning["column"], 12);
    EXPECT_EQ(warning["begin"], 13);
    EXPECT_EQ(warning["end"], 15);
}

TEST_F(ToolReport, bytes_that_are_not_utf8_are_replaced) {
    write("\xFF", "{a= \"\\\xFF\"}");
    for (std::string const format : {"json", "sarif"}) {
        cRun const run = this->run({"check", "--format", format, "\xFF"});
        EXPECT_TRUE(cJson::accept(run.out)) << run.out;
        EXPECT_NE(run.out.find("\xEF\xBF\xBD"), std::string::npos);
    }
    EXPECT_NE(sarif_of({"\xFF"}).find("\"uri\":\"%FF\""), std::string::npos);
}

TEST_F(ToolReport, the_exit_code_is_the_same_as_for_text) {
    write("warned", "[1,,2]");
    write("faulty", "[1 2]");
    for (std::string const format : {"text", "json", "github", "sarif"}) {
        EXPECT_EQ(run({"check", "--format", format, "warned"}).status, 0);
        EXPECT_EQ(run({"check", "--format", format, "-W", "error", "warned"}).status, 1);
        EXPECT_EQ(run({"check", "--format", format, "warned", "faulty"}).status, 1);
        cRun const absent = run({"check", "--format", format, "absent", "warned"});
        EXPECT_EQ(absent.status, 2);
        EXPECT_EQ(absent.err, "");
        EXPECT_NE(absent.out.find("No such file"), std::string::npos);
        EXPECT_NE(absent.out.find("empty-item"), std::string::npos);
    }
}

TEST_F(ToolReport, text_is_the_default_format) {
    write("f", "{a= 1; a= ?; b= 01;}");
    cRun const plain = run({"check", "f", "absent"});
    EXPECT_EQ(run({"check", "--format=text", "f", "absent"}), (cRun{2, plain.err, ""}));
}

TEST_F(ToolReport, unknown_formats_are_usage_errors) {
    EXPECT_EQ(run({"check", "--format=xml", "f"}),
              usage_error("check", "--format: xml not in {text,json,github,sarif}"));
}

} // namespace
