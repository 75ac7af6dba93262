// Reading whole texts and files.
#include "qrv/text/file/creadtext.h"

#include "qrv/base/platform/cplatform.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/file/cfile.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/types.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <unistd.h>

namespace {

class ReadText : public QrvTest {
  protected:
    ~ReadText() override { EXPECT_EQ(messages(), ""); }

    // The value and the errors, a line for each.
    static std::string read(std::string_view text, cat::ReadOptions const &options = {}) {
        cat::ReadReport report;
        objref value;
        bool const good = cat::read_text(text, value, report, options);
        EXPECT_EQ(good, report.empty());
        return shown(value, report);
    }
    static std::string shown(objref const &value, cat::ReadReport const &report) {
        std::string lines = value ? cat::as_text(value) : "null";
        cat::wsp_normalize(lines); // on one line
        if (lines.starts_with("{ ")) lines.erase(1, 1);
        for (cat::ReadError const &error : report.entries()) lines += '\n' + cat::format(error);
        return lines;
    }
};
class ReadTextEdge : public ReadText {};

class cTemporary {
  public:
    explicit cTemporary(std::string const &text)
        : name(::testing::TempDir() + "qrv_readtext_" + std::to_string(::getpid())) {
        std::ofstream(name, std::ios::binary) << text;
    }
    cTemporary(cTemporary const &) = delete;
    cTemporary &operator=(cTemporary const &) = delete;
    ~cTemporary() { std::remove(name.c_str()); }

    std::string const name;
};

} // namespace

TEST_F(ReadText, returns_one_value_of_any_type) {
    EXPECT_EQ(read("{a = 1; b = [2, x]; }"), "{a= 1; b= [2, x, ]; }");
    EXPECT_EQ(read("[1, 2]"), "[1, 2, ]");
    EXPECT_EQ(read("<1, 2>"), "<1, 2, >");
    EXPECT_EQ(read("12"), "12");
    EXPECT_EQ(read("word"), "word");
    EXPECT_EQ(read("float(2)"), "2.00000f");
    EXPECT_EQ(read("#nil"), "#nil");
}

TEST_F(ReadText, returns_a_bare_list_of_entries_as_a_map) {
    EXPECT_EQ(read("a = 1; b = {c = 2; }"), "{a= 1; b= {c= 2; }; }");
    EXPECT_EQ(read("// first\na = 1\n;"), "{a= 1; }");
    EXPECT_EQ(read("7 = x"), "{7= x; }");
    EXPECT_EQ(read("a = 1; b = #none; c = 3"),
              "{a= 1; c= 3; }\n1:12: error: Unknown #-value (no defined const): #none\n"
              "1:12: error: Cannot insert key =b");
}

TEST_F(ReadText, keeps_comments_unless_the_options_say_otherwise) {
    constexpr char const *text = "{ a = {}; // of a\n }";
    cat::ReadReport report;
    objref value;
    std::string comment;
    EXPECT_TRUE(cat::read_text(text, value, report));
    EXPECT_TRUE(value->getattr(make_key("a"))->get_comment(comment));
    EXPECT_NE(comment.find("// of a"), std::string::npos);
    EXPECT_TRUE(cat::read_text(text, value, report, {.comments = false}));
    EXPECT_FALSE(value->getattr(make_key("a"))->get_comment(comment));
}

TEST_F(ReadText, text_after_the_value_is_an_error) {
    EXPECT_EQ(read("{} x"), "{}\n1:4: error: Text after the value: x");
    EXPECT_EQ(read("1 2"), "1\n1:1: error: Missing delimiter after value: 1");
    EXPECT_EQ(read("{}; {}"), "{}\n1:5: error: Text after the value: {");
    EXPECT_EQ(read("{}}"), "{}\n1:3: error: Text after the value: }");
    EXPECT_EQ(read("5}"), "5\n1:2: error: Text after the value: }");
    EXPECT_EQ(read("a = 1; }"), "{a= 1; }\n1:8: error: Text after the value: }");
    EXPECT_EQ(read("{} \xc3"), "{}\n1:4: error: Text after the value: \xc3");
    for (char const *text : {"{};", "{},", "{} // c", "{}; /* c */\n", "5;", "5 // c\n"})
        EXPECT_EQ(read(text).find('\n'), std::string::npos) << text;
}

TEST_F(ReadTextEdge, text_without_a_value_is_an_error) {
    EXPECT_EQ(read(""), "null\n1:1: error: Text without a value");
    EXPECT_EQ(read("// c\n"), "null\n2:1: error: Text without a value");
    EXPECT_EQ(read("\xef\xbb\xbf"), "null\n1:1: error: Text without a value");
}

TEST_F(ReadTextEdge, a_closing_bracket_alone_is_one_error) {
    EXPECT_EQ(read("}"), "null\n1:1: error: Text without a value");
}

TEST_F(ReadText, a_byte_order_mark_is_skipped_and_does_not_count_in_positions) {
    EXPECT_EQ(read("\xef\xbb\xbf{a = 1; }"), "{a= 1; }");
    EXPECT_EQ(read("\xef\xbb\xbf#none"), read("#none"));
    EXPECT_EQ(read("#none"), "null\n1:1: error: Unknown #-value (no defined const): #none");
}

TEST_F(ReadText, errors_have_the_name_that_the_options_give) {
    EXPECT_EQ(read("#none", {.name = "my.attr"}),
              "null\nmy.attr:1:1: error: Unknown #-value (no defined const): #none");
}

TEST_F(ReadText, returns_the_readable_part_and_all_errors) {
    EXPECT_EQ(read("{a = #none; b = 2; c = #no; }").substr(0, 9), "{b= 2; }\n");
    objref value = cat::of(1);
    cat::ReadReport report;
    EXPECT_FALSE(cat::read_text("#none", value, report));
    EXPECT_TRUE(value == nullptr);
}

TEST_F(ReadText, adds_to_a_report_that_is_not_the_innermost) {
    cat::ReadReport report(3);
    objref value;
    EXPECT_FALSE(cat::read_text("#none", value, report));
    cat::ReadReport const other;
    EXPECT_FALSE(cat::read_text("{a = 5 ms; b = 6; c = 7; }", value, report));
    EXPECT_TRUE(other.empty());
    ASSERT_EQ(report.entries().size(), 3u);
    EXPECT_EQ(report.entries()[1].follows, cat::ReadError::none);
    EXPECT_EQ(report.entries()[2].follows, 1u);
    EXPECT_EQ(report.count(), 9u);
}

TEST_F(ReadText, the_options_bound_the_depth_for_this_reading) {
    int const before = cat::max_read_depth;
    EXPECT_EQ(read("[[[1]]]", {.max_depth = 3}), "[[[1, ], ], ]");
    EXPECT_NE(read("[[[1]]]", {.max_depth = 2}).find("Nesting is deeper than 2"),
              std::string::npos);
    EXPECT_EQ(cat::max_read_depth, before);
}

TEST_F(ReadText, the_options_filter_modules_for_this_reading) {
    static std::string asked;
    asked.clear();
    auto const filter = [](std::string const &name) {
        asked += name + ' ';
        return false;
    };
    qrv_set_module_filter([](std::string const &) {
        asked += "program ";
        return false;
    });
    read("nosuch:nomodule(1)", {.module_filter = filter});
    EXPECT_EQ(asked.find("program"), std::string::npos);
    asked.clear();
    read("nosuch:nomodule(1)");
    EXPECT_EQ(asked.find("nomodule "), std::string::npos); // the program's filter is restored
    qrv_set_module_filter(nullptr);
}

TEST_F(ReadText, an_exception_of_user_code_is_reported_and_the_state_is_restored) {
    cTypesBack const types;
    typeref const type = make<cTypeObj>("throwing");
    type->set_tmember("newobj",
                      make<cExeMember>(+[](objref) -> objref { throw std::runtime_error("own"); }));
    cat::typemap().datamap().mapitem(make_key("throwing"), type);
    int const before = cat::max_read_depth;
    cat::ReadReport report;
    objref value;
    EXPECT_FALSE(cat::read_text("throwing(1)", value, report, {.max_depth = 5}));
    EXPECT_EQ(shown(value, report), "null\n1:1: error: Fatal exception in attr scanner!");
    EXPECT_EQ(cat::max_read_depth, before);
    EXPECT_EQ(cat::ReadReport::current(), &report);
}

TEST_F(ReadText, errors_in_a_file_name_the_file) {
    cTemporary const file("\xef\xbb\xbf// c\n{ a = #none; b = 2; }\n");
    cat::ReadReport report;
    objref value;
    EXPECT_FALSE(cat::read_file(file.name, value, report));
    EXPECT_EQ(shown(value, report).substr(0, 9), "{b= 2; }\n");
    EXPECT_EQ(cat::format(report.entries().at(0)),
              file.name + ":2:7: error: Unknown #-value (no defined const): #none");
}

TEST_F(ReadText, a_path_that_is_not_a_readable_file_is_one_error) {
    for (std::string const &path :
         {std::string("/no/such/file"), ::testing::TempDir(), std::string()}) {
        cat::ReadReport report;
        objref value = cat::of(1);
        EXPECT_FALSE(cat::read_file(path, value, report));
        EXPECT_TRUE(value == nullptr);
        ASSERT_EQ(report.entries().size(), 1u) << path;
        cat::ReadError const &error = report.entries()[0];
        EXPECT_EQ(error.text, "Cannot open file: " + path);
        EXPECT_EQ(error.code, 1u);
        EXPECT_EQ(error.kind, cat::ErrorKind::file_not_opened);
        EXPECT_EQ(error.line, 0u);
        EXPECT_EQ(cat::format(error),
                  (path.empty() ? "" : path + ": ") + "error: Cannot open file: " + path);
    }
}
