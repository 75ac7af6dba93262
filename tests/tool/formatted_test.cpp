// Numbers with a format, intf(...): each command on files that contain them.

#include "tests/tool/tool_run.h"

using tool_test::cRun;

namespace {

std::string const takes = "intf accepts 12, 0x1F, 017 or b0101, in one word of up to 32 bits";

class ToolFormatted : public tool_test::Tool {
  protected:
    ToolFormatted() { write("f", file_); }

    // The file after `statements`, which `set` accepts without a message.
    std::string after(std::string const &statements) const {
        EXPECT_EQ(run({"set", "-o", "new", "f", statements}), (cRun{0, "", ""})) << statements;
        return read("new");
    }
    std::string refused(std::string const &statements) const {
        cRun const result = run({"set", "-i", "f", statements});
        EXPECT_EQ(result.status, 2) << statements;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(read("f"), file_) << statements;
        return result.err;
    }
    std::string checked(std::string const &text) const {
        cRun const result = run({"check", "--all", "-"}, {.input = text});
        EXPECT_EQ(result.status, result.err.empty() ? 0 : 1) << text;
        EXPECT_EQ(result.out, "");
        return result.err;
    }

    std::string const file_ = "{port= intf(0x1F); mask= intf(b00001111); count= 5; }\n";
};

TEST_F(ToolFormatted, fmt_preserves_the_format) {
    EXPECT_EQ(run({"fmt", "--check", "f"}), (cRun{0, "", ""}));
    EXPECT_EQ(run({"fmt", "-"}, {.input = "{a=intf( 0xab ),b=intf(\"0755\") ;c=intf(b 1);\n"
                                          "d= intf(b1); intf(0x10)=intf[-5]}"})
                  .status,
              2);
    EXPECT_EQ(
        run({"fmt", "-"}, {.input = "{a=intf( 0xab ),b=intf(\"0755\") ;d= intf(b1); "
                                    "intf(0x10)=intf[-5]}"}),
        (cRun{0, "{a= intf(0xab); b= intf(0755); d= intf(b00000001); intf(0x10)= intf(-5); }\n",
              ""}));
}

// The plain text of bits contains blanks, and can't be read again.
TEST_F(ToolFormatted, canonical_bits_are_reported_and_do_not_replace_the_file) {
    cRun const shown = run({"fmt", "--canonical", "f"});
    EXPECT_EQ(shown.status, 1);
    EXPECT_EQ(shown.out, "{port= intf(0x1F); mask= intf(b 0000 1111); count= 5; }");
    EXPECT_EQ(shown.err, "f: error: the new text would not read as the same value: digits, bits or "
                         "strings would differ\n");
    EXPECT_EQ(run({"fmt", "--canonical", "-i", "f"}).status, 2);
    EXPECT_EQ(read("f"), file_);
}

TEST_F(ToolFormatted, get_prints_it_as_in_the_file) {
    EXPECT_EQ(run({"get", "f", "port", "mask"}), (cRun{0, "intf(0x1F)\nintf(b00001111)\n", ""}));
}

TEST_F(ToolFormatted, set_with_a_number_preserves_the_format) {
    EXPECT_EQ(after("port = 32; mask = 3"),
              "{port= intf(0x20); mask= intf(b00000011); count= 5; }\n");
    EXPECT_EQ(after("port = 0xff; mask = 5.0"),
              "{port= intf(0xFF); mask= intf(b00000101); count= 5; }\n");
    EXPECT_EQ(after("port = -1; mask = 256"),
              "{port= intf(0xFFFFFFFF); mask= intf(b0000000100000000); count= 5; }\n");
    EXPECT_EQ(after("mask = -1"), "{port= intf(0x1F); mask= "
                                  "intf(b11111111111111111111111111111111); count= 5; }\n");
}

TEST_F(ToolFormatted, set_with_a_string_or_a_formatted_number_copies_its_format) {
    EXPECT_EQ(after("port = \"b101\"; mask = \" 017 \""),
              "{port= intf(b00000101); mask= intf(017); count= 5; }\n");
    EXPECT_EQ(after("port = \"b 1 0\""), "{port= intf(b00000010); mask= intf(b00001111); "
                                         "count= 5; }\n");
    EXPECT_EQ(after("port = intf(b101); mask = intf(12); new = intf(0xa)"),
              "{port= intf(b00000101); mask= intf(12); count= 5; new= intf(0xa); }\n");
}

TEST_F(ToolFormatted, set_adds_numbers) {
    EXPECT_EQ(after("port += 1; mask += intf(0x100)"),
              "{port= intf(0x20); mask= intf(b0000000100001111); count= 5; }\n");
    EXPECT_EQ(after("port += \"0x10\""), "{port= intf(0x2F); mask= intf(b00001111); count= 5; }\n");
    EXPECT_EQ(refused("port += 2147483647"),
              "statements:1:9: error: port: the sum is too large for an intf\n"
              "statements:1:9: note: &= stores a double\n");
    EXPECT_EQ(refused("port += 1.5"),
              "statements:1:9: error: port: 1.50000 would be cut before it is added to an intf\n"
              "statements:1:9: note: --convert allows it\n");
}

TEST_F(ToolFormatted, set_adds_a_string_as_the_number_it_contains) {
    EXPECT_EQ(refused("port += \"0x7fffffff\""),
              "statements:1:9: error: port: the sum is too large for an intf\n"
              "statements:1:9: note: &= stores a double\n");
    EXPECT_EQ(refused("port += \"5000000000\""),
              "statements:1:9: error: port: intf reads \"5000000000\" as 705032704\n"
              "statements:1:9: note: --convert allows it\n");
    EXPECT_EQ(refused("port += \"-010\""),
              "statements:1:9: error: port: intf reads \"-010\" as -8\n"
              "statements:1:9: note: --convert allows it\n");
    EXPECT_EQ(run({"set", "--convert", "-i", "f", "port += \"-010\""}), (cRun{0, "", ""}));
    EXPECT_EQ(read("f"), "{port= intf(0x17); mask= intf(b00001111); count= 5; }\n");
}

TEST_F(ToolFormatted, set_can_replace_it_by_another_type) {
    EXPECT_EQ(after("port &= 5; count &= intf(0x5)"),
              "{port= 5; mask= intf(b00001111); count= intf(0x5); }\n");
}

TEST_F(ToolFormatted, set_refuses_values_that_would_be_stored_as_another_number) {
    std::string const converts =
        "statements:1:8: note: &= replaces it and its type; --convert stores the changed value\n";
    EXPECT_EQ(refused("port = 3.5"),
              "statements:1:8: error: port: 3.50000 would be stored as intf(0x3)\n" + converts);
    for (auto const &[text, number] :
         {std::pair{"\"5000000000\"", "705032704"}, {"\"-010\"", "-8"}, {"\"040000000000\"", "0"}})
        EXPECT_EQ(refused("port = " + std::string(text)),
                  "statements:1:8: error: port: intf reads " + std::string(text) + " as " + number +
                      "\n" + converts);
    EXPECT_EQ(run({"set", "--convert", "-i", "f", "port = 3.5"}), (cRun{0, "", ""}));
    EXPECT_EQ(read("f"), "{port= intf(0x3); mask= intf(b00001111); count= 5; }\n");
}

TEST_F(ToolFormatted, set_refuses_values_that_are_not_numbers) {
    for (char const *text : {"zz", "\"0x\"", "\"\"", "{a= 1}"}) {
        std::string const reported = refused("port = " + std::string(text));
        EXPECT_EQ(reported.find("statements:1:8: error: port: it is an intf and cannot store a "),
                  0U)
            << reported;
    }
    EXPECT_EQ(refused("port = intf(0xZZ)"),
              "statements:1:8: error: " + takes + ", not 0xZZ [0x40000001]\n");
    EXPECT_EQ(refused("port = intf(5 6)"), "statements:1:15: error: this is ignored: only the "
                                           "first value in the brackets of intf is read\n");
    EXPECT_EQ(refused("port = intf(5000000000)"),
              "statements:1:13: error: intf reads 5000000000 as 705032704\n");
    EXPECT_EQ(refused("count = intf(0x7)"),
              "statements:1:9: error: count: it is an int and cannot store an intf as it is\n"
              "statements:1:9: note: &= replaces a value of any type\n");
}

TEST_F(ToolFormatted, merge_accepts_numbers_strings_and_formats) {
    write("over", "{port= 32; mask= \"0x3\"; new= intf(07); }\n");
    EXPECT_EQ(run({"merge", "f", "over", "--reformat"}),
              (cRun{0, "{port= intf(0x20); mask= intf(0x3); count= 5; new= intf(07); }\n", ""}));
    write("over", "{port= \"-010\"; }\n");
    EXPECT_EQ(
        run({"merge", "f", "over"}),
        (cRun{2, "",
              "over:1:8: error: at /port: intf reads \"-010\" as -8; --convert allows it\n"}));
    write("over", "{port= intf(b1); count= intf(0x7); }\n");
    cRun const result = run({"merge", "f", "over"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err,
              "over:1:25: error: at /count: it is an int and cannot store an intf as it is\n");
}

TEST_F(ToolFormatted, to_json_writes_the_number) {
    EXPECT_EQ(run({"to-json", "--compact", "-"}, {.input = "[intf(0x1F), intf(0xffffffff)]"}),
              (cRun{0, "[31,-1]\n",
                    "-: warning: an intf becomes an int, at path '0'\n"
                    "-: warning: an intf becomes an int, at path '1'\n"}));
    EXPECT_EQ(run({"to-json", "--compact", "-"}, {.input = "{intf(0x10)= a}"}),
              (cRun{0, "{\"intf(0x10)\":\"a\"}\n",
                    "-: warning: a key of type 'intf' becomes a string, at path 'intf(0x10)'\n"}));
}

TEST_F(ToolFormatted, explain_knows_the_type) {
    EXPECT_EQ(run({"explain", "f", "port"}),
              (cRun{0, "path      /port\ntype      intf\nplace     1:8\n", ""}));
}

TEST_F(ToolFormatted, types_lists_it_as_built_in) {
    std::string const all = run({"types"}).out;
    EXPECT_NE(all.find("\nintf: type, built in\n"
                       "  members: create write read equal iterobj newobj newref assign size less "
                       "add\n"
                       "  converted from: string bool int float double\n"),
              std::string::npos)
        << all;
}

TEST_F(ToolFormatted, check_accepts_all_formats) {
    EXPECT_EQ(checked("{a= intf(0); b= intf(-12); c= intf(+2147483647); d= intf(0xFFFFFFFF); "
                      "e= intf(037777777777); f= intf(b11111111111111111111111111111111); "
                      "g= intf(\"0x1f\"); h= intf(-2147483648); i= intf(00); }"),
              "");
}

TEST_F(ToolFormatted, check_reports_the_accepted_forms_for_invalid_text) {
    auto const one = [&](std::string const &text, std::string const &what) {
        EXPECT_EQ(checked("{a= 1;\n x= intf(" + text + "); y= 2}"),
                  "-:2:5: error: " + takes + what + " [0x40000001]\n");
    };
    one("0xZZ", ", not 0xZZ");
    one("", ", and the brackets are empty");
    one("b 0000 0101", ", not b 0000 0101");
    one("09", ", not 09");
    one("0X10", ", not 0X10");
    one("+0x10", ", not +0x10");
    one("0x123456789", ", not 0x123456789");
    one("\"1 2\"", ", not \"1 2\"");
    EXPECT_EQ(checked("{intf(0xZZ)= 1;}"), "-:1:2: error: " + takes + ", not 0xZZ [0x40000001]\n");
    EXPECT_EQ(checked("[intf(x), intf()]"), "-:1:2: error: " + takes +
                                                ", not x [0x40000001]\n-:1:11: error: " + takes +
                                                ", and the brackets are empty [0x40000001]\n");
}

TEST_F(ToolFormatted, check_reports_a_loss) {
    EXPECT_EQ(
        checked("{x= intf(5 6 7)}"),
        "-:1:12: error: this is ignored: only the first value in the brackets of intf is read\n");
    EXPECT_EQ(checked("{x= intf(5000000000); y= intf(040000000000);\n z= intf(-09)}"),
              "-:1:10: error: intf reads 5000000000 as 705032704\n"
              "-:1:31: error: intf reads 040000000000 as 0\n"
              "-:2:10: error: intf reads -09 as 0\n");
    EXPECT_EQ(checked("[intf(2147483647), intf(2147483648), intf(4294967295)]"),
              "-:1:25: error: intf reads 2147483648 as -2147483648\n"
              "-:1:43: error: intf reads 4294967295 as -1\n");
    EXPECT_EQ(checked("[intf(-2147483648), intf(-2147483649), intf(\"5000000000\")]"),
              "-:1:26: error: intf reads -2147483649 as 2147483647\n"
              "-:1:45: error: intf reads 5000000000 as 705032704\n");
}

TEST_F(ToolFormatted, a_file_with_an_error_is_not_written) {
    for (char const *text : {"{x= intf(0xZZ); }\n", "{x= intf(5 6); }\n", "{x= intf(-09); }\n"}) {
        write("bad", text);
        EXPECT_EQ(run({"fmt", "-i", "bad"}).status, 2) << text;
        EXPECT_EQ(run({"set", "-i", "bad", "y = 1"}).status, 2) << text;
        EXPECT_EQ(read("bad"), text);
    }
}

TEST_F(ToolFormatted, declared_attributes_may_have_it_as_default) {
    EXPECT_EQ(run({"get", "-", "t/p", "u/p"},
                  {.input = "{T= attlist(p= attspec(type= intf; default= intf(0x10))); t= T(); "
                            "u= T(p= intf(b1)); }"}),
              (cRun{0, "intf(0x10)\nintf(b00000001)\n", ""}));
    EXPECT_EQ(
        checked("{T= attlist(p= attspec(type= intf)); t= T(p= 5); }"),
        "-:1:43: error: key 'p' of type T must be an intf, not an int, path /t/p, declared at "
        "1:13 [0x40000000]\n");
}

} // namespace
