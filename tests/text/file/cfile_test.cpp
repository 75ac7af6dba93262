// Object trees in files, files as strings, and the functions for white space.

#include "qrv/text/file/cfile.h"

#include "containers/cmergebudget.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/modules/cmodule.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "qrv/text/write/cwriter.h"
#include "tests/text/file/save_support.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;
using namespace save_test;

namespace {

std::string const signature = "// Platform Quorvanta(R), Attributes version 2.0\n"
                              "// by the Quorvanta developers\n"
                              "\n";

std::string written(cObj const &obj) {
    std::ostringstream os;
    obj.writeobj(os);
    return os.str();
}

// The object read from a string.
objref read(char const *text) {
    objref result;
    EXPECT_EQ(cObj::readobj(text, result), 0) << text;
    return result;
}

class File : public SaveTest {
  protected:
    // Creates a file with this text; returns its name.
    std::string make(std::string const &text, std::string const &name = "in.attr") {
        put(folder_.file(name), text);
        return folder_.file(name);
    }
};

class FileEdge : public File {};
class WhiteSpaceEdge : public QrvTest {};

} // namespace

TEST_F(FileEdge, a_written_map_ends_with_its_closing_bracket) {
    std::string const name = folder_.file("out.attr");
    ASSERT_TRUE(write2file(*read("{ a = 1; b = [1; 2] }"), name.c_str(), true));
    EXPECT_EQ(bytes_of(name).back(), '}');
}

TEST_F(FileEdge, carriage_returns_are_white_space_and_are_removed_from_comments) {
    std::string const name = make("{\r\n  a = 1; // x\r\n  b = 2;\r\n}\r\n");
    objref obj;
    {
        std::ifstream in;
        cAttrScan scan(in, false);
        scan.return_com(true);
        ASSERT_TRUE(scan.openfile(name.c_str(), false));
        ASSERT_EQ(scan.scan_obj(obj, nullptr), 0);
        EXPECT_EQ(scan.errcount(), 0u);
    }
    std::string comment;
    ASSERT_TRUE(obj->getattrp("a")->get_comment(comment));
    EXPECT_EQ(comment, " // x");
    std::string const out = folder_.file("out.attr");
    ASSERT_TRUE(write2file(*obj, out.c_str(), true));
    EXPECT_EQ(bytes_of(out).find('\r'), std::string::npos);
    objref again;
    EXPECT_TRUE(file2obj(out.c_str(), again));
    EXPECT_TRUE(again->equal(*obj));
}

TEST_F(FileEdge, a_file_with_only_comments_is_not_an_error_and_leaves_the_reference) {
    objref const before = objref::adopt(new cObjD<int>(7));
    objref ref = before;
    EXPECT_TRUE(file2obj(make("// nothing\n/* here */\n").c_str(), ref));
    EXPECT_EQ(ref.get(), before.get());
}

TEST_F(WhiteSpaceEdge, wsp_only_of_an_empty_string_is_true) { EXPECT_TRUE(cat::wsp_only("")); }

// Writing.

TEST_F(File, writes_the_object_and_nothing_after_it) {
    objref const obj = read("{ a = 1; b = \"x\" }");
    std::string const name = folder_.file("out.attr");
    ASSERT_TRUE(write2file(*obj, name.c_str(), false));
    EXPECT_EQ(bytes_of(name), written(*obj));
    ASSERT_TRUE(write2file(*obj, name.c_str(), true));
    EXPECT_EQ(bytes_of(name), signature + written(*obj));
    ASSERT_TRUE(write2file(*read("5"), name.c_str(), true));
    EXPECT_EQ(bytes_of(name), signature + "5");
    EXPECT_EQ(folder_.names(), "out.attr");
    EXPECT_EQ(messages(), "");
}

TEST_F(File, writes_the_same_text_twice) {
    objref const obj = read("{ a = { b = <1; 2>; }; }");
    std::string const name = folder_.file("out.attr");
    ASSERT_TRUE(write2file(*obj, name.c_str(), true));
    std::string const first = bytes_of(name);
    objref again;
    ASSERT_TRUE(file2obj(name.c_str(), again));
    ASSERT_TRUE(write2file(*again, name.c_str(), true));
    EXPECT_EQ(bytes_of(name), first);
}

TEST_F(File, reports_a_file_that_cannot_be_opened_for_writing) {
    objref const obj = read("1");
    for (std::string const &name :
         {folder_.file("no/such/folder"), folder_.file("."), std::string()}) {
        EXPECT_FALSE(write2file(*obj, name.c_str(), true));
        EXPECT_EQ(messages(), "Cannot open file for write: " + name + "\n");
    }
    EXPECT_FALSE(write2file(*obj, nullptr, true));
    EXPECT_EQ(messages(), "Cannot open file for write: \n");
    EXPECT_EQ(folder_.names(), "");
}

namespace {
bool throwing_write(cObj &, objref &) { throw 5; }
// Writes something, then sets the stream's state to bad.
bool failing_write(cObj &, objref &stream) {
    std::ostream &os = *dynamic_cast<cOutHolder const &>(*stream).valptr();
    os << "half";
    os.setstate(std::ios::badbit);
    return true;
}
} // namespace

TEST_F(File, preserves_the_old_file_when_writing_the_object_throws) {
    std::string const name = make("old");
    objref const map = read("{ a = 1; b = 2 }");
    map->getattrp("b")->set_omember("write", ::make<cExeMember>(throwing_write));
    EXPECT_THROW(write2file(*map, name.c_str(), true), int);
    EXPECT_EQ(bytes_of(name), "old");
    EXPECT_EQ(folder_.names(), "in.attr");
}

TEST_F(File, preserves_the_old_file_when_the_text_cannot_be_created) {
    std::string const name = make("old");
    objref const number = read("2");
    number->set_omember("write", ::make<cExeMember>(failing_write));
    EXPECT_FALSE(write2file(*number, name.c_str(), true));
    EXPECT_EQ(bytes_of(name), "old");
    EXPECT_EQ(folder_.names(), "in.attr");
}

TEST_F(File, preserves_mode_and_symbolic_link) {
    std::string const name = make("old"), link = folder_.file("link");
    fs::permissions(name, fs::perms(0640));
    fs::create_symlink("in.attr", link);
    ASSERT_TRUE(write2file(*read("2"), link.c_str(), false));
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(bytes_of(name), "2");
    EXPECT_EQ(fs::status(name).permissions(), fs::perms(0640));
}

TEST_F(File, returns_false_on_a_full_device) {
    EXPECT_FALSE(write2file(*read("{ a = 1 }"), "/dev/full", false));
}

// Reading.

TEST_F(File, reads_the_first_value_and_nothing_after_it) {
    objref ref;
    EXPECT_TRUE(file2obj(make("// head\n[1; 2] } = ,, #nonsense").c_str(), ref));
    EXPECT_EQ(written(*ref), written(*read("[1; 2]")));
    EXPECT_EQ(messages(), "");
}

TEST_F(File, returns_false_after_an_error_and_keeps_the_value_read) {
    objref ref;
    EXPECT_FALSE(file2obj(make("{ a = 1; b = nosuch(1); c = 3 }").c_str(), ref));
    EXPECT_NE(messages(), "");
    ASSERT_TRUE(cObj::is_map(ref));
    EXPECT_EQ(written(*ref->getattrp("c")), "3");
}

TEST_F(File, reports_a_file_that_cannot_be_opened_for_reading) {
    objref const before = read("1");
    for (std::string const &name : {folder_.file("none"), folder_.file(".")}) {
        objref ref = before;
        EXPECT_FALSE(file2obj(name.c_str(), ref));
        EXPECT_EQ(messages(), "Cannot open file: " + name + "\n");
        EXPECT_EQ(ref.get(), before.get());
    }
    objref ref;
    EXPECT_FALSE(file2obj(nullptr, ref));
    EXPECT_FALSE(file2obj("", ref));
    EXPECT_FALSE(ref);
    EXPECT_EQ(messages(), "");
}

TEST_F(File, reports_file_and_line_of_an_error) {
    objref ref;
    std::string const name = make("{ a = 1;\n  b 2; }");
    EXPECT_FALSE(file2obj(name.c_str(), ref));
    EXPECT_EQ(messages().substr(0, name.size() + 5), name + " (2) ");
}

TEST_F(File, assigns_the_value_to_a_map) {
    cMapObj map;
    EXPECT_TRUE(file2map(make("{ a = 1; b = { c = 2 } }").c_str(), map));
    EXPECT_EQ(written(*map.getattrp("b/c")), "2");
    EXPECT_TRUE(file2map(make("{ b = { d = 3 } }").c_str(), map));
    EXPECT_EQ(map.getattrp("a"), cat::badfind());
    EXPECT_EQ(map.getattrp("b/c"), cat::badfind());
    EXPECT_EQ(written(*map.getattrp("b/d")), "3");
    map.clear();
}

namespace {
std::string seen_in_assign;

// The `assign` method of a program that looks up the type whose name is in the value.
bool assign_with_type_lookup(cObj &map, objref &value) {
    seen_in_assign = cat::is_reading() ? "reading " : "";
    seen_in_assign += cat::cMergeBudget::current() ? "budget " : "";
    seen_in_assign += written(cat::find_type(cat::as_string(value->getattrp("t"))));
    return cTomMap::m_assign(map, value) && map.setattr(own_key(std::string("t")), value);
}
} // namespace

TEST_F(File, assigning_to_a_map_loads_no_module) {
    cMapObj map;
    map.set_omember("assign", ::make<cExeMember>(assign_with_type_lookup));
    std::string const name = make("{ t= \"none:nosuch\"; }");
    EXPECT_TRUE(file2map(name.c_str(), map));
    EXPECT_EQ(seen_in_assign, "reading " + written(cat::type_nil()));
    EXPECT_EQ(cModule::last_error(), "Module 'nosuch' is not loaded while text is being read");
    EXPECT_FALSE(cat::is_reading());
    map.clear();
}

TEST_F(File, a_report_receives_the_errors_of_the_assignment_to_a_map) {
    cMapObj map;
    map.setflags(of_const);
    cat::ReadReport report;
    EXPECT_TRUE(file2map(make("\n { a= 1; }").c_str(), map));
    ASSERT_EQ(report.entries().size(), 1U);
    EXPECT_EQ(report.entries()[0].text, "Object is const. Method 'assign' called from type: map");
    EXPECT_EQ(report.entries()[0].line, 2U);
    EXPECT_EQ(report.entries()[0].column, 2U);
    EXPECT_EQ(messages(), "");
}

TEST_F(File, file2map_assigns_if_a_value_was_read_even_with_errors) {
    cMapObj map;
    EXPECT_FALSE(file2map(make("{ a = 1; b = nosuch(1) }").c_str(), map));
    EXPECT_EQ(written(*map.getattrp("a")), "1");
    messages();
    EXPECT_TRUE(file2map(make("// nothing").c_str(), map));
    EXPECT_EQ(written(*map.getattrp("a")), "1");
    EXPECT_FALSE(file2map(folder_.file("none").c_str(), map));
    EXPECT_EQ(messages(), "Cannot open file: " + folder_.file("none") + "\n");
    EXPECT_EQ(written(*map.getattrp("a")), "1");
    map.clear();
}

// Files as strings.

TEST_F(File, returns_the_unchanged_bytes_of_a_file) {
    std::string text("a\r\n\0\xff\x80 b\n", 10);
    for (int i = 0; i < 13; ++i) text += text; // more than one buffer
    EXPECT_EQ(cat::file2string(make(text).c_str()), text);
    EXPECT_EQ(cat::file2string(make("").c_str()), "");
    EXPECT_EQ(messages(), "");
}

TEST_F(File, reports_why_a_file_cannot_be_read) {
    EXPECT_EQ(cat::file2string(nullptr), "");
    EXPECT_EQ(messages(), "No file pointer in file2string\n");
    for (std::string const &name : {folder_.file("none"), folder_.file("."), std::string()}) {
        EXPECT_EQ(cat::file2string(name.c_str()), "");
        EXPECT_EQ(messages(), "Cannot open file: " + name + "\n");
    }
    EXPECT_EQ(cat::file2string("/proc/self/mem"),
              ""); // can be opened, but its start cannot be read
    EXPECT_EQ(messages(), "Read error in file: /proc/self/mem\n");
}

// White space.

namespace {

std::string left(std::string text) { return cat::wsp_rmleft(text), text; }
std::string right(std::string text) { return cat::wsp_rmright(text), text; }
// The resulting string, and whether its length was changed.
std::string normal(std::string text) {
    bool const changed = cat::wsp_normalize(text);
    return text + (changed ? "|changed" : "|same");
}
std::string without(std::string text, char c) { return cat::rmchar(text, c), text; }

} // namespace

TEST(WhiteSpace, is_removed_at_one_end) {
    EXPECT_EQ(left(" \t\r\n\v\fa b "), "a b ");
    EXPECT_EQ(right(" a b \t\r\n\v\f"), " a b");
    EXPECT_EQ(left("a"), "a");
    EXPECT_EQ(right("a"), "a");
    for (char const *text : {"", " ", "\t\n "}) {
        EXPECT_EQ(left(text), "");
        EXPECT_EQ(right(text), "");
    }
}

TEST(WhiteSpace, is_normalised_and_the_change_of_length_returned) {
    EXPECT_EQ(normal(" a  b\t\nc "), "a b c|changed");
    EXPECT_EQ(normal("a b"), "a b|same");
    EXPECT_EQ(normal("a\tb"), "a b|same");
    EXPECT_EQ(normal("a\t b"), "a b|changed");
    EXPECT_EQ(normal("a "), "a|changed");
    EXPECT_EQ(normal("\ta"), "a|changed");
    EXPECT_EQ(normal(""), "|same");
    EXPECT_EQ(normal(" \n"), "|changed");
}

TEST(WhiteSpace, wsp_only_detects_strings_of_white_space) {
    EXPECT_TRUE(cat::wsp_only(" \t\r\n\v\f"));
    EXPECT_FALSE(cat::wsp_only(" a "));
    EXPECT_FALSE(cat::wsp_only("\xa0"));
    EXPECT_FALSE(cat::wsp_only(std::string(1, '\0')));
}

TEST(WhiteSpace, rmchar_removes_every_occurrence) {
    EXPECT_EQ(without("\ra\r\rb\r", '\r'), "ab");
    EXPECT_EQ(without("abc", 'x'), "abc");
    EXPECT_EQ(without("", 'x'), "");
    EXPECT_EQ(without("xxx", 'x'), "");
}
