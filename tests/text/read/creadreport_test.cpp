// Reports: every error once, with its position in the outer text, and nothing printed or thrown.

#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/types.h"
#include "tests/text/read_support.h"

#include <fstream>

using reader_test::Reading;
using reader_test::shown;

namespace {

class ReadReports : public QrvTest {
  protected:
    // "line:column" for each entry, and ">line:column" for the end of an unclosed bracket.
    static std::string places(std::string const &text) {
        cTypesBack const types;
        cat::ReadReport report;
        Reading r(text);
        std::string all;
        for (cat::ReadError const &e : report.entries()) {
            all += std::to_string(e.line) + ":" + std::to_string(e.column);
            if (e.end_line)
                all += ">" + std::to_string(e.end_line) + ":" + std::to_string(e.end_column);
            all += " ";
        }
        return all;
    }
    // The entries for text; no other message may appear.
    std::string report(std::string const &text) {
        cat::ReadReport report;
        Reading r(text, false);
        while (r.next() != -1) continue;
        EXPECT_EQ(r.log, "") << "slots of the scanner are not called";
        EXPECT_EQ(messages(), "");
        errors_ = r.scan.errcount();
        return shown(report);
    }
    unsigned errors_ = 0;
};

TEST_F(ReadReports, locate_the_first_character_of_the_token) {
    EXPECT_EQ(report("{\n  a = nosuch(1);\n  b = #none }"),
              "2:7 /a 0x40000005 Value with unknown type='nosuch\n"
              "2:7 /a 0x00000000 Cannot insert key =a\n"
              "3:7 /b 0x40000004 Unknown #-value (no defined const): #none\n"
              "3:7 /b 0x00000000 Cannot insert key =b\n");
    EXPECT_EQ(errors_, 2u);
    EXPECT_EQ(report("12ab"), "1:1  0x40000002 Bad input: 12ab  String is assumed.\n");
    EXPECT_EQ(report("{ a = 1;;; }"), "1:10  0x40000007 Unnecessary separator: ;\n");
    EXPECT_EQ(report("{ a = 99999999999 }"),
              "1:7 /a 0x40000001 Failed to read value: /a Input of standard type: 99999999999\n"
              "1:7 /a 0x00000000 Cannot insert key =a\n");
}

TEST_F(ReadReports, locate_the_value_that_was_refused) {
    EXPECT_EQ(report("{ a = int( 'x' ) }"),
              "1:12 /a 0x40000001 Convert failed in read of type: int\n"
              "1:7 /a 0x40000001 Failed to read value, type int\n"
              "1:7 /a 0x00000000 Cannot insert key =a\n");
    EXPECT_EQ(report("{\n key }"), "2:6  0x40000001 Pattern 'key =' is missed \n"
                                   "2:2  0x00000000 Cannot insert key =0\n");
}

TEST_F(ReadReports, locate_the_value_whose_reading_threw) {
    objref const before = cat::type_int().tmember("read");
    cProcedure2 const throws = [](cObj &, objref &) -> bool { throw 5; };
    cat::type_int().set_tmember("read", make<cExeMember>(throws));
    EXPECT_EQ(report("{ a = 1;\n b = int( 2 3 ); c = [int(4)] }"),
              "2:6 /b 0x80000000 Fatal exception in attr scanner!\n"
              "2:6 /b 0x00000000 Cannot insert key =b\n"
              "2:23 /c/0 0x80000000 Fatal exception in attr scanner!\n"
              "2:23 /c/0 0x00000000 Cannot insert key =0\n"
              "2:22 /c 0x40000001 Failed to read container, type vector\n"
              "2:22 /c 0x00000000 Cannot insert key =c\n");
    cat::type_int().set_tmember("read", before);
}

TEST_F(ReadReports, locate_text_that_is_not_a_bare_list_of_entries) {
    cat::ReadReport report;
    for (char const *const text : {"\n abc def", " a;", "a = \n ?; b = 1"}) {
        std::istringstream is(text);
        objref value;
        EXPECT_EQ(cat::scan_container(is, value, false), 1) << text;
    }
    EXPECT_EQ(shown(report), "2:2  0x40000002 Missing delimiter after: abc\n"
                             "1:2  0x40000001 Missing start pattern 'key =' at pattern: a\n"
                             "2:2 /a 0x40000002 Unexpected token '?\n"
                             "2:5  0x40000001 Input is no valid container\n");
    messages(); // the summary messages
}

TEST_F(ReadReports, locate_the_opening_of_an_unclosed_bracket) {
    EXPECT_EQ(report("{ a = [1;\n2"), "1:7 /a 0x40000001 Vector is not closed by ']'\n"
                                      "1:1  0x40000001 Map is not closed by '}'\n");
    EXPECT_EQ(report("{ a = int(5"), "1:10 /a 0x40000001 Closing symbol is missed in type int, "
                                     "path: /a\n"
                                     "1:1  0x40000001 Map is not closed by '}'\n");
    EXPECT_EQ(report("{ a = \n <1; 2]; }").substr(0, 43),
              "2:2 /a 0x40000001 Set is not closed by '>'\n");
}

TEST_F(ReadReports, locate_the_end_of_the_container_of_an_unclosed_bracket) {
    auto const ends = [](std::string const &text) {
        cat::ReadReport report;
        Reading r(text);
        std::string all;
        for (cat::ReadError const &error : report.entries())
            all += std::to_string(error.end_line) + ":" + std::to_string(error.end_column) + " ";
        return all;
    };
    EXPECT_EQ(ends("{ a = [1;\n2"), "2:2 2:2 ");
    EXPECT_EQ(ends("{ a = <1; 2]; }"), "1:12 ");
    EXPECT_EQ(ends("["), "1:2 ");
    EXPECT_EQ(ends("{ a = int(5"), "1:12 1:12 ");
    EXPECT_EQ(ends("{ a = 1 2 }"), "0:0 0:0 0:0 ");
    EXPECT_EQ(ends("[ 99999999999 ]"), "0:0 0:0 0:0 ");
}

TEST_F(ReadReports, contain_a_single_bracket_without_counting_it) {
    EXPECT_EQ(report("{"), "1:1  0x40000001 Map is not closed by '}'\n");
    EXPECT_EQ(errors_, 0u);
    EXPECT_EQ(report(" <"), "1:2  0x40000001 Set is not closed by '>'\n");
    EXPECT_EQ(errors_, 0u);
    EXPECT_EQ(report("["), "1:1  0x40000001 Failed to read container, type vector\n");
    EXPECT_EQ(errors_, 1u);
    Reading r("{");
    EXPECT_EQ(r.log, "");
    EXPECT_EQ(messages(), "");
}

TEST_F(ReadReports, have_positions_in_the_outer_text_inside_typed_values) {
    EXPECT_EQ(report("{\n a = int( /* x */ ?5 )\n}"), "2:19 /a 0x40000002 Unexpected token '?\n");
    EXPECT_EQ(report("{\n a = int(\n\n    ?5 )\n}"), "4:5 /a 0x40000002 Unexpected token '?\n");
    EXPECT_EQ(report("{ a = int(int( int(?5))) }"), "1:20 /a 0x40000002 Unexpected token '?\n");
    EXPECT_EQ(report("{ a = int( // c\n int(/* */ int( /* y */ ?5))) }"),
              "2:25 /a 0x40000002 Unexpected token '?\n");
    EXPECT_EQ(report("{ a = int(['x\\\ny'; ?5]) }").substr(0, 9), "2:5 /a/1 ");
}

TEST_F(ReadReports, have_the_position_of_the_closing_bracket_of_a_typed_value) {
    std::string const type = "{T= attlist(x= attspec(type= int; flag= #IMPLIED));\n ";
    EXPECT_EQ(places(type + "y= T(x=\n\n   );\n}"), "4:4 ");
    EXPECT_EQ(places(type + "y= T(x= /* a\n b */ );\n}"), "3:7 ");
    EXPECT_EQ(places(type + "y= T(x= 1;;;\n{a= [1;\n2  );\n}"),
              "2:13 3:5>4:4 3:1>4:4 2:5 2:5 2:5 ");
    EXPECT_EQ(places("{ c= attspec(type=\n) }"), "1:6 1:6 ");
    EXPECT_EQ(places("{ c= attspec(flag= \n[1\n ) }"), "2:1>3:2 1:6 1:6 ");
}

TEST_F(ReadReports, have_the_position_of_the_end_even_if_it_was_read_before) {
    EXPECT_EQ(places("[\n attlist(int(5)\n  )]"), "3:3 3:3 3:3 ");
    EXPECT_EQ(places("{\n attspec(type= int) \n"), "2:2 3:1 3:1 3:1 1:1>3:1 ");
}

TEST_F(ReadReports, have_the_position_of_the_end_of_input_in_a_typed_value) {
    EXPECT_EQ(places("choice({\n"), "1:7>2:1 1:8>2:1 ");
    EXPECT_EQ(places("choice({\n\n "), "1:7>3:2 1:8>3:2 ");
    EXPECT_EQ(places("choice({a= {\nb= 1 \xE4)"), "1:7>2:6 1:12>2:6 1:8>2:6 ");
    EXPECT_EQ(places("choice(choice({\n"), "1:7>2:1 1:14>2:1 1:15>2:1 ");
}

TEST_F(ReadReports, store_errors_raised_meanwhile_and_change_no_result) {
    cat::ReadReport report;
    Reading r("{ a = #true; a = #false; m = {}; m = {x = #cRef(/m)} }");
    EXPECT_EQ(shown(report),
              "1:18 /a 0x41400000 Object is const. Method 'assign' called from type: bool\n"
              "1:38 /m 0x40020000 Setattr in object type 'map', key 'x':  Trial to establish cRef "
              "in cycle\n");
    EXPECT_EQ(messages(), "");
    EXPECT_EQ(r.scan.errcount(), 1u);
}

TEST_F(ReadReports, do_not_throw_because_of_the_masks) {
    cat::errhandler() = cErrHandler(0xFFFFFFFF, 0, 0);
    EXPECT_EQ(report("{ a = ) 1; b = #true; b = #false }"),
              "1:7 /a 0x40000002 Unexpected token ')\n"
              "1:27 /b 0x41400000 Object is const. Method 'assign' called from type: bool\n");
}

TEST_F(ReadReports, leave_clearing_to_the_mask) {
    cat::errhandler().clear_mask(0x01000000);
    cat::ReadReport report;
    Reading r("{ a = #cRef(/b); }");
    cObjD<int> number(1);
    EXPECT_EQ(report.count(), 2u);
    cat::errhandler().clear_mask(0);
}

TEST_F(ReadReports, the_innermost_receives_errors) {
    cat::ReadReport outer;
    {
        cat::ReadReport inner;
        EXPECT_EQ(cat::ReadReport::current(), &inner);
        Reading r("#none");
        EXPECT_EQ(inner.count(), 1u);
    }
    EXPECT_EQ(cat::ReadReport::current(), &outer);
    EXPECT_TRUE(outer.empty());
    Reading r("#none");
    EXPECT_EQ(outer.count(), 1u);
    outer.clear();
    EXPECT_TRUE(outer.empty());
}

TEST_F(ReadReports, store_a_thousand_entries_and_count_the_rest) {
    std::string text = "[";
    for (int i = 0; i < 1500; ++i) text += ")";
    cat::ReadReport report;
    { Reading r(text + "1]"); }
    EXPECT_EQ(report.entries().size(), 1000u);
    EXPECT_EQ(report.dropped(), 500u);
    EXPECT_EQ(report.count(), 1500u);
    cat::ReadReport small(3);
    { Reading r(text + "1]"); }
    EXPECT_EQ(small.entries().size(), 3u);
    EXPECT_EQ(small.dropped(), 1497u);
    small.limit(4);
    { Reading r("#none"); }
    EXPECT_EQ(small.entries().size(), 4u);
}

TEST_F(ReadReports, shorten_long_paths_in_the_middle) {
    std::string const key = std::string(3000, 'k');
    cat::ReadReport report;
    { Reading r("{ " + key + " = {a = #none; b = = 1} }"); }
    ASSERT_GE(report.count(), 3u);
    std::string const &path = report.entries()[0].path;
    EXPECT_EQ(path.size(), 1000u);
    EXPECT_EQ(path.substr(0, 3), "/kk");
    EXPECT_EQ(path.substr(496, 7), "kk...kk");
    EXPECT_EQ(path.substr(996), "kk/a");
    for (cat::ReadError const &e : report.entries()) EXPECT_LT(e.text.size(), 1100u);
}

TEST_F(ReadReports, name_the_file_even_inside_typed_values) {
    std::string const path = ::testing::TempDir() + "qrv_report.attr";
    std::ofstream(path) << "{ a = int(?5); b = #none }";
    cat::ReadReport report;
    {
        std::ifstream is;
        cAttrScan scan(is, false);
        ASSERT_TRUE(scan.openfile(path.c_str(), false));
        objref value;
        scan.scan_obj(value, nullptr);
        scan.openfile("/no/such/file", false);
    }
    ASSERT_GE(report.count(), 2u);
    for (cat::ReadError const &e : report.entries()) EXPECT_EQ(e.file, path) << e.text;
    EXPECT_EQ(report.entries().back().text, "Cannot open file: /no/such/file");
    EXPECT_EQ(report.entries().back().code, 1u);
    std::remove(path.c_str());
}

TEST_F(ReadReports, receive_lines_that_would_be_printed) {
    cat::ReadReport report;
    cMapObj map;
    EXPECT_EQ(map.getattrp(""), cat::bad());
    ASSERT_EQ(report.count(), 1u);
    EXPECT_EQ(report.entries()[0].text.substr(0, 31), "ERROR in call of getattrp, path");
    typeref const again = make<cTypeObj>("int");
    EXPECT_FALSE(cTypeInsert::insert(again, false));
    EXPECT_EQ(report.entries()[1].text, "***Error: Bad creation of duplicate type 'int'\n"
                                        "          Each type object is identified by its name\n"
                                        "          and must be created exactly once!!");
    EXPECT_EQ(messages(), "");
}

TEST_F(ReadReports, end_with_their_scope) {
    { cat::ReadReport report; }
    Reading r("#none");
    EXPECT_EQ(r.log, "0x40000004 Line 1: : Unknown #-value (no defined const): #none\n");
    EXPECT_EQ(messages(), "Line 1: : Unknown #-value (no defined const): #none\n");
    EXPECT_FALSE(cat::errhandler().isblocked());
}

TEST_F(ReadReports, of_hostile_text_stay_small) {
    cat::ReadReport report;
    {
        std::string text;
        for (int i = 0; i < 900; ++i) text += "{" + std::string(100, 'k') + "=";
        for (int i = 0; i < 20000; ++i) text += " = ";
        Reading r(text);
    }
    EXPECT_EQ(report.entries().size(), 1000u);
    for (cat::ReadError const &e : report.entries()) EXPECT_LE(e.text.size(), 1200u);
}

// Records the errors that it sees, and accepts those that the test allows.
class cWatch : public cat::ReadWatch {
  public:
    void invalid(cObj &object) override {
        seen += "invalid " + object.type().name() + " " +
                cat::as_text(object.getattr(own_key("n"))) + "; ";
    }
    bool error(cat::ReadError &error) override {
        seen += error.text + "; ";
        error.text += "!";
        return error.text.find(hidden) == std::string::npos;
    }
    std::string seen;
    std::string hidden = "nothing";
};

TEST_F(ReadReports, a_watch_sees_an_invalid_object_before_the_errors_about_it) {
    cTypesBack const types;
    cat::ReadReport report;
    cWatch watch;
    watch.hidden = "Cannot insert";
    report.watch(&watch);
    EXPECT_EQ(report.watch(), &watch);
    Reading const r("{WatchedR= attlist(n= attspec(type= int)); r= WatchedR(n= x); }");
    EXPECT_EQ(watch.seen, "invalid WatchedR x; Validate error in read of type: WatchedR; "
                          "Failed to read value, type WatchedR; Cannot insert key =r; ");
    ASSERT_EQ(report.count(), 2u);
    EXPECT_EQ(report.entries()[0].text, "Validate error in read of type: WatchedR!");
    EXPECT_EQ(report.entries()[1].text, "Failed to read value, type WatchedR!");
    report.keep(cat::ReadError());
    EXPECT_EQ(report.count(), 3u);
    report.watch(nullptr);
    Reading const again("#none");
    EXPECT_EQ(report.entries().back().text, "Unknown #-value (no defined const): #none");
}

TEST_F(ReadReports, a_plain_watch_changes_nothing) {
    cat::ReadReport report;
    cat::ReadWatch watch;
    report.watch(&watch);
    Reading const r("#none");
    EXPECT_EQ(shown(report), "1:1  0x40000004 Unknown #-value (no defined const): #none\n");
}

} // namespace
