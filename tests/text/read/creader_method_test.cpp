// The functions around the reader: containers or bare lists, `read` methods, skipping, errors,
// positions, summaries, files.

#include "containers/cmergebudget.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/diagnostics/ctrace.h"
#include "tests/support/fixture.h"
#include "tests/text/read_support.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

using reader_test::Reading;

namespace {

class ReaderMethod : public QrvTest {
  protected:
    // "code: value" as returned by scan_container.
    std::string container(std::string const &text, bool keep) {
        std::istringstream is(text);
        objref value;
        int const code = cat::scan_container(is, value, keep);
        return std::to_string(code) + ": " + reader_test::written(value);
    }
};

TEST_F(ReaderMethod, scan_container_reads_containers) {
    EXPECT_EQ(container("{a=1}", false), "0: {a= 1; }");
    EXPECT_EQ(container("[1;2]", false), "0: [1, 2, ]");
    EXPECT_EQ(container("<1>", false), "0: <1, >");
    EXPECT_EQ(container("", false), "-1: null");
    EXPECT_EQ(container("}", false), "-1: null");
    EXPECT_EQ(messages(), "");
}

TEST_F(ReaderMethod, scan_container_reads_a_bare_list_of_entries) {
    EXPECT_EQ(container("a=1; b=2", false), "0: {\n  a= 1;\n  b= 2;\n}");
    EXPECT_EQ(container("a={x=1}\n b=[2]", false), "0: {\n  a= {x= 1; };\n  b= [2, ];\n}");
    EXPECT_EQ(container("a=1", false), "0: {\n  a= 1;\n}");
    EXPECT_EQ(messages(), "");
}

TEST_F(ReaderMethod, scan_container_with_errors_returns_a_value_only_with_keep) {
    EXPECT_EQ(container("[1 2]", false), "1: null");
    EXPECT_EQ(messages(), "Line 1: ( /0 ): Missing delimiter after value: 1\n"
                          "Line 1: Attributes scanner with *** 1 errors ***\n");
    EXPECT_EQ(container("[1 2]", true), "1: [1, 2, ]");
    EXPECT_EQ(container("nosuch(1)", false), "5: null");
    messages();
    EXPECT_EQ(container("a=nosuch(1); b=2", false), "1: null");
    EXPECT_EQ(messages(), "Line 1: ( /a ): Value with unknown type='nosuch\n"
                          "Line 1: Input is no valid container\n"
                          "Line 1: Attributes scanner with *** 2 errors ***\n");
    EXPECT_EQ(container("a=nosuch(1); b=2", true), "1: {\n  b= 2;\n}");
    EXPECT_EQ(container("a=1; b=nosuch(2)", true), "1: {\n  a= 1;\n}");
    EXPECT_EQ(container("a=1; b=nosuch(2)", false), "1: null");
}

TEST_F(ReaderMethod, an_error_before_the_first_key_of_a_list_counts_like_one_after_it) {
    EXPECT_EQ(container("a=1; ? b=2", true), "1: {\n  a= 1;\n  b= 2;\n}");
    EXPECT_EQ(messages(), "Line 1: Unexpected token '?\n"
                          "Line 1: Attributes scanner with *** 1 errors ***\n");
    EXPECT_EQ(container("? a=1; b=2", true), "1: {\n  a= 1;\n  b= 2;\n}");
    EXPECT_EQ(messages(), "Line 1: Unexpected token '?\n"
                          "Line 1: Attributes scanner with *** 1 errors ***\n");
    EXPECT_EQ(container("12ab=1", true), "1: {\n  \"12ab\"= 1;\n}");
    EXPECT_EQ(container("? a=1; b=2", false), "1: null");
    messages();
    Reading spec("attspec(? type=int)");
    EXPECT_EQ(spec.log, "0x40000002 Line 1: Unexpected token '?\n"
                        "0x40000001 Line 1: : Failed to read value, type attspec\n");
}

TEST_F(ReaderMethod, an_error_inside_the_first_value_of_a_list_ends_it_without_keep) {
    EXPECT_EQ(container("a=[1; ?]; b=2", false), "1: null");
    EXPECT_EQ(messages(), "Line 1: Unexpected token '?\n"
                          "Line 1: Input is no valid container\n"
                          "Line 1: Attributes scanner with *** 2 errors ***\n");
    EXPECT_EQ(container("a=[1; ?]; b=2", true), "1: {\n  a= [1, ];\n  b= 2;\n}");
    EXPECT_EQ(messages(), "Line 1: Unexpected token '?\n"
                          "Line 1: Attributes scanner with *** 1 errors ***\n");
}

// A type whose text is a bare list, and whose objects are keys.
TEST_F(ReaderMethod, the_first_value_of_a_list_inside_a_key_is_not_a_key) {
    typeref const type = typeref::adopt(new cTypeObj("ListKey"));
    ASSERT_TRUE(cTypeInsert::insert(type, true));
    type->inherit(cat::type_int());
    type->set_hash(cat::hash_int, cat::heq_int);
    type->set_tmember("newobj", make<cExeMember>(cFunction1([](objref of) {
                          return objref(make<cObjD<int>>(0, dynamic_cast<cTypeObj *>(of.get())));
                      })));
    type->set_tmember("read", make<cExeMember>(cProcedure2([](cObj &, objref &args) {
                          objref entries;
                          std::istream &is = static_cast<cInHolder &>(*args).val();
                          cat::scan_container(is, entries, true);
                          return true;
                      })));
    Reading first("{ ListKey(a = 99999999999; b = 1) = 1 }");
    EXPECT_EQ(first.log, "0x40000001 Line 1: Failed to read value: /a Input of standard type: "
                         "99999999999\n");
    Reading second("{ ListKey(b = 1; a = 99999999999) = 1 }");
    EXPECT_EQ(second.log, "0x40000001 Line 1: Failed to read value: /a Input of standard type: "
                          "99999999999\n");
    Reading key("{ ListKey(99999999999 = 1) = 1 }");
    EXPECT_EQ(key.log,
              "0x40000001 Line 1: Failed to read key. Input of standard type: 99999999999\n");
    EXPECT_TRUE(text_state().idle());
    cat::type_hash_ptr()->delitem("ListKey");
}

TEST_F(ReaderMethod, scan_container_refuses_other_text) {
    EXPECT_EQ(container("5", false), "1: null");
    EXPECT_EQ(messages(), "Line 1: Missing start pattern 'key =' at pattern: 5\n"
                          "Line 1: Attributes scanner with *** 1 errors ***\n");
    EXPECT_EQ(container("'a b'; c", true), "1: null");
    EXPECT_EQ(messages(), "Line 1: Missing start pattern 'key =' at pattern: \"a b\"\n"
                          "Line 1: Attributes scanner with *** 1 errors ***\n");
}

TEST_F(ReaderMethod, scan_attrset_assigns_or_converts) {
    cObjD<int> number(0);
    auto const read = [&number](char const *text) {
        std::istringstream is(text);
        objref args = make<cInHolder>(is);
        return cat::scan_attrset(number, args);
    };
    EXPECT_TRUE(read("5"));
    EXPECT_EQ(number.val(), 5);
    EXPECT_TRUE(read("6.9"));
    EXPECT_EQ(number.val(), 6);
    EXPECT_FALSE(read(""));
    EXPECT_EQ(messages(), "");
    EXPECT_FALSE(read("[1]"));
    EXPECT_EQ(messages(), "Line 1: : Convert failed in read of type: int\n");
    number.setflags(of_const);
    EXPECT_FALSE(read("7"));
    EXPECT_EQ(messages(), "Object is const. Method 'assign' called from type: int\n"
                          "Line 1: : Assign failed in read of type: int\n");
    EXPECT_EQ(number.val(), 6);
    objref none = cat::of(1);
    EXPECT_FALSE(cat::scan_attrset(number, none));
    none = nullptr;
    EXPECT_FALSE(cat::scan_attrset(number, none));
    EXPECT_FALSE(cat::scan_attrcopy(number, none));
}

TEST_F(ReaderMethod, scan_attrcopy_prints_failures_as_a_line) {
    cMapObj map;
    std::istringstream bad("a=nosuch(1); b=2");
    objref args = make<cInHolder>(bad);
    EXPECT_FALSE(cat::scan_attrcopy(map, args));
    EXPECT_EQ(messages(), "Line 1: ( /a ): Value with unknown type='nosuch\n"
                          "Cannot insert key =a\n"
                          "Error in reading data in type: map\n");
    std::istringstream good("a=1; b=2");
    args = make<cInHolder>(good);
    EXPECT_TRUE(cat::scan_attrcopy(map, args))
        << "only keys that a new object has are copied: a map has none";
    EXPECT_EQ(map.size(), 0);
    cat::errhandler() = cErrHandler(0x40000000, 0, 0x40000000);
    cObjD<int> number(0);
    number.setflags(of_const);
    std::istringstream none("a=1");
    args = make<cInHolder>(none);
    EXPECT_FALSE(cat::scan_attrcopy(number, args));
}

namespace {
std::string copied_while;
bool looking_assign(cObj &, objref &) {
    copied_while = cat::is_reading() ? "reading" : "nothing";
    if (cat::cMergeBudget::current()) copied_while += " with a budget";
    return true;
}

objref new_with_looker(objref) {
    objref const map = make<cMapObj>();
    objref const looker = cat::of(1);
    looker->set_omember("assign", make<cExeMember>(looking_assign));
    map->setattr(own_key(std::string("a")), looker);
    return map;
}
} // namespace

TEST_F(ReaderMethod, scan_attrcopy_counts_as_reading_until_its_end) {
    typeref const type = typeref::adopt(new cTypeObj("Copied"));
    ASSERT_TRUE(cTypeInsert::insert(type, true));
    type->set_tmember("newobj", make<cExeMember>(new_with_looker));
    type->set_tmember("assign", make<cExeMember>(looking_assign));
    type->set_tmember("read", make<cExeMember>(cat::scan_attrcopy));
    struct cCopied : cObj {
        explicit cCopied(cTypeObj *type) : cObj(type) {}
    } obj(type.get());
    std::istringstream is("a=2");
    EXPECT_TRUE(obj.read(is));
    EXPECT_EQ(copied_while, "reading");
    EXPECT_FALSE(cat::is_reading());
    cat::type_hash_ptr()->delitem("Copied");
}

TEST_F(ReaderMethod, read_voiddata_reads_nothing) {
    std::istringstream is("5");
    objref args = make<cInHolder>(is);
    EXPECT_TRUE(cat::read_voiddata(*args, args));
    EXPECT_EQ(is.tellg(), std::streampos(0));
}

TEST_F(ReaderMethod, reading_into_a_container_adds_to_its_entries) {
    cMapObj map;
    std::istringstream is("a=1; b=2}");
    map.datamap().mapitem("z", cat::of(0));
    EXPECT_TRUE(map.read(is));
    EXPECT_EQ(map.size(), 3);
    cVectorObj vector;
    std::istringstream items("1;2]");
    EXPECT_TRUE(vector.read(items));
    std::istringstream more("3]");
    EXPECT_TRUE(vector.read(more));
    EXPECT_EQ(vector.size(), 3);
    cSetObj set;
    std::istringstream first("1;2>"), second("2;3>");
    EXPECT_TRUE(set.read(first));
    EXPECT_TRUE(set.read(second));
    EXPECT_EQ(set.size(), 3);
    std::istringstream empty("");
    EXPECT_FALSE(map.datamap().used() == 0);
    cMapObj fresh;
    EXPECT_FALSE(fresh.read(empty));
}

TEST_F(ReaderMethod, members_are_read_without_braces) {
    cObjD<int> number(1);
    number.set_omember(std::string("old"), cat::of(1));
    std::istringstream is("a=1; b=2");
    objref args = make<cInHolder>(is);
    EXPECT_TRUE(cTomOmmap::m_read(number, args));
    EXPECT_EQ(number.ommap().used(), 2u);
    cObjD<int> bare(1);
    std::istringstream again("c=3");
    args = make<cInHolder>(again);
    EXPECT_TRUE(cTomOmmap::m_read(bare, args));
    EXPECT_EQ(reader_test::written(bare.omember(std::string("c"))), "3");
    std::istringstream empty("");
    args = make<cInHolder>(empty);
    EXPECT_FALSE(cTomOmmap::m_read(bare, args));
    EXPECT_EQ(bare.ommap().used(), 0u);
}

// --- skipping ---

TEST_F(ReaderMethod, read_subentry_gathers_up_to_its_bracket) {
    std::istringstream is("a ( b // c\n ) ')' ] ) rest");
    cAttrScan scan(is, false);
    std::string text = "+";
    EXPECT_EQ(scan.read_subentry(cat::Brackets('('), text), ')');
    EXPECT_EQ(text, "+a ( b\n ) ')' ] ");
    EXPECT_FALSE(scan.return_ws());
    EXPECT_EQ(scan.read_subentry(cat::Brackets('('), nullptr), 0);
}

TEST_F(ReaderMethod, each_bracket_has_its_partner) {
    struct {
        char open, close;
    } const cases[] = {{'(', ')'}, {'<', '>'}, {'[', ']'}, {'{', '}'}};
    for (auto const &c : cases) {
        EXPECT_EQ(cat::Brackets(c.open).open, c.open);
        EXPECT_EQ(cat::Brackets(c.open).close, c.close);
    }
    for (char c : {')', '}', 'a', '\0'}) {
        EXPECT_EQ(cat::Brackets(c).open, 0);
        EXPECT_EQ(cat::Brackets(c).close, 0);
    }
}

TEST_F(ReaderMethod, read_to_endcontainer_counts_its_bracket) {
    std::istringstream is("a [ } ] ] x ( { [ } } y");
    cAttrScan scan(is, false);
    scan.read_to_endcontainer('[');
    EXPECT_EQ(scan.gettok(), tkIdent);
    scan.read_to_endcontainer('x');
    EXPECT_EQ(scan.gettok(), tkEof) << "the next opening bracket is the one that must be closed";
}

TEST_F(ReaderMethod, read_to_delimiter_stops_at_separators_and_given_characters) {
    std::istringstream is("a ) b ; c > d");
    cAttrScan scan(is, false);
    EXPECT_EQ(scan.read_to_delimiter(""), ';');
    EXPECT_EQ(scan.read_to_delimiter(">"), '>');
    EXPECT_EQ(scan.read_to_delimiter(">"), 0);
}

// --- errors, positions, summary ---

TEST_F(ReaderMethod, errors_begin_with_their_position) {
    std::istringstream is("\n\n5");
    cAttrScan scan(is, false);
    EXPECT_EQ(scan.posstring(), "Line 1: ");
    objref value;
    scan.scan_obj(value, nullptr);
    EXPECT_EQ(scan.posstring(), "Line 3: ");
    EXPECT_EQ(scan.errs(cAttrScan::asrRef).code(), 0x40000003u);
    EXPECT_EQ(scan.errs(cAttrScan::asrRef).as_string(), "Line 3: ");
    EXPECT_EQ(scan.errp(cAttrScan::asrRef).as_string(), "Line 3: : ");
    {
        cPathStep const step(cat::of("k"));
        EXPECT_EQ(scan.errp(cAttrScan::asrRef).as_string(), "Line 3: ( /k ): ");
    }
    EXPECT_EQ(scan.errcount(), 4u);
    EXPECT_EQ(scan.errs().code(), 0u);
    EXPECT_TRUE(scan.errs().handled());
    EXPECT_EQ(scan.errcount(), 4u) << "an error without a code does not count";
    scan.set_filename("x.attr");
    EXPECT_EQ(scan.posstring(), "x.attr (3) ");
    scan.set_oneline();
    EXPECT_EQ(scan.posstring(), "");
    EXPECT_EQ(scan.errs(cAttrScan::asrRef).as_string(), "");
}

TEST_F(ReaderMethod, the_position_is_after_the_last_token_read) {
    EXPECT_EQ(Reading("[1\n2]").log,
              "0x40000002 Line 2: ( /0 ): Missing delimiter after value: 1\n");
    EXPECT_EQ(Reading("{a=nosuch(1)\n}").log,
              "0x40000005 Line 1: ( /a ): Value with unknown type='nosuch\n");
}

TEST_F(ReaderMethod, the_summary_clears_the_count) {
    std::istringstream is("[1 2]");
    {
        cAttrScan scan(is, true);
        scan.scan_report(false);
        EXPECT_EQ(messages(), "");
        scan.scan_report(true);
        EXPECT_EQ(messages(), "Line 1: Attributes scanner OK\n");
        objref value;
        scan.scan_obj(value, nullptr);
        messages();
        scan.scan_report(false);
        EXPECT_EQ(messages(), "Line 1: Attributes scanner with *** 1 errors ***\n");
        EXPECT_EQ(scan.errcount(), 0u);
        scan.errs(cAttrScan::asrSyntax);
    }
    EXPECT_EQ(messages(), "Line 1: Attributes scanner with *** 1 errors ***\n");
}

TEST_F(ReaderMethod, the_end_of_input_is_remembered) {
    std::istringstream is("a \xE4 b");
    cAttrScan scan(is, false);
    cAttrLiteral token;
    EXPECT_EQ(scan.gettok(token), tkIdent);
    EXPECT_EQ(scan.gettok(token), 0);
    EXPECT_EQ(token.text, "");
    EXPECT_EQ(scan.gettok(token), 0);
    cAttrScan other(is, false);
    EXPECT_EQ(other.gettok(), tkIdent) << "another scan does not remember the end of input";
}

TEST_F(ReaderMethod, each_path_is_written_to_the_trace_channel) {
    cSetTracing("cat_io.capio:cerr");
    { Reading r("{ a = [1; {b = 2}] }"); }
    cSetTracing("");
    EXPECT_EQ(messages(), "/a\n/a/0\n/a/1\n/a/1/b\n/a/2\n");
    EXPECT_FALSE(cat::is_reading());
}

// --- files ---

class ReaderFile : public QrvTest {
  protected:
    ReaderFile() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "qrv_reader_XXXXXX").string();
        folder_ = ::mkdtemp(pattern.data());
    }
    ~ReaderFile() override { std::filesystem::remove_all(folder_); }
    std::string file(char const *name, std::string const &text) {
        std::string const path = (folder_ / name).string();
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }
    std::filesystem::path folder_;
};

TEST_F(ReaderFile, opens_at_the_start_with_its_name_in_messages) {
    std::string const path = file("a.attr", "{\n a = nosuch(1) }");
    std::ifstream is;
    cAttrScan scan(is, false);
    EXPECT_TRUE(scan.openfile(path.c_str(), false));
    EXPECT_EQ(scan.position(), 0u);
    EXPECT_EQ(scan.lineno(), 1u);
    EXPECT_EQ(scan.column(), 0u);
    objref value;
    scan.scan_obj(value, nullptr);
    EXPECT_EQ(messages(), path + " (2) ( /a ): Value with unknown type='nosuch\n"
                                 "Cannot insert key =a\n");
}

TEST_F(ReaderFile, a_reset_is_possible_on_the_first_line) {
    std::string const path = file("a.attr", "one two");
    std::ifstream is;
    cAttrScan scan(is, false);
    ASSERT_TRUE(scan.openfile(path.c_str(), false));
    cAttrLiteral token;
    EXPECT_EQ(scan.gettok(token), tkIdent);
    scan.resettoken();
    EXPECT_EQ(scan.gettok(token), tkIdent);
    EXPECT_EQ(token.text, "one");
}

TEST_F(ReaderFile, carriage_returns_are_white_space) {
    std::string const path = file("a.attr", "{\r\n  a = 1;\r\n}\r\n");
    std::ifstream is;
    cAttrScan scan(is, false);
    ASSERT_TRUE(scan.openfile(path.c_str(), false));
    objref value;
    EXPECT_EQ(scan.scan_obj(value, nullptr), 0);
    EXPECT_EQ(reader_test::written(value), "{\n  a= 1;\n}");
}

TEST_F(ReaderFile, an_unreadable_file_is_reported_unless_quiet) {
    std::string const missing = (folder_ / "none").string();
    for (std::string const &path : {missing, folder_.string()}) {
        std::ifstream is;
        cAttrScan scan(is, false);
        EXPECT_FALSE(scan.openfile(path.c_str(), true));
        EXPECT_EQ(messages(), "");
        EXPECT_FALSE(scan.openfile(path.c_str(), false));
        EXPECT_EQ(messages(), "Cannot open file: " + path + "\n");
        EXPECT_FALSE(is.is_open());
        EXPECT_EQ(scan.filename(), "");
        objref value;
        EXPECT_EQ(scan.scan_obj(value, nullptr), -1)
            << "nothing is read, and the device has no error";
    }
    std::ifstream is;
    cAttrScan scan(is, false);
    EXPECT_FALSE(scan.openfile(nullptr, false));
    EXPECT_FALSE(scan.openfile("", false));
    std::istringstream other;
    cAttrScan no_file(other, false);
    EXPECT_FALSE(no_file.openfile(missing.c_str(), false));
    EXPECT_EQ(messages(), "");
}

TEST_F(ReaderFile, an_empty_file_can_be_opened) {
    std::string const path = file("empty.attr", "");
    std::ifstream is;
    cAttrScan scan(is, false);
    EXPECT_TRUE(scan.openfile(path.c_str(), false));
    objref value;
    EXPECT_EQ(scan.scan_obj(value, nullptr), -1);
}

} // namespace
