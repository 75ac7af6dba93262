// Back references to entries whose paths are not yet in the table: a walk finds the same values as
// the table would, and entries for which a walk would be wrong are in the table.

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/ctypes.h"
#include "qrv/diagnostics/ccout.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "tests/support/fixture.h"
#include "tests/text/read_support.h"
#include "text/state/cstream_of.h"
#include "text/state/ctext_state.h"

using reader_test::Reading;

namespace {

class ReaderLate : public QrvTest {
  protected:
    // The value that #cRef(path) finds at the end of the text, in written form, or the error.
    static std::string found(std::string const &entries, std::string const &path) {
        Reading const r("{ " + entries + " FOUND = #cRef(" + path + ") }");
        if (r.log.empty()) return r.text_at("FOUND");
        bool const undefined = r.log.find("not defined before") != std::string::npos;
        return undefined ? "undefined" : r.log;
    }
};

TEST_F(ReaderLate, a_merge_through_an_alias_keeps_the_first_value) {
    Reading const r("{a={x=#nil}; b=#cRef(/a); b={x=[1]}; c=#cRef(/a/x); d=#cRef(/b/x)}");
    EXPECT_EQ(r.log, "");
    EXPECT_TRUE(cObj::is_nil(r.at("c")));
    EXPECT_EQ(r.text_at("d"), "[1, ]");
}

TEST_F(ReaderLate, an_alias_has_no_paths_below_it) {
    EXPECT_EQ(found("a={x={y=1}}; b=#cRef(/a/x); a={x={z=3}};", "/b/z"), "undefined");
    EXPECT_EQ(found("a={x={y=1}}; b=#cRef(/a/x);", "/b/y"), "undefined");
    EXPECT_EQ(found("a={x={y=1}}; b=#cRef(/a/x);", "/a/x/y"), "1");
    EXPECT_EQ(found("a=[[1;2]; [3]]; b=[#cRef(/a/1)];", "/b/0/0"), "undefined");
}

TEST_F(ReaderLate, positions_in_a_set_are_those_in_the_text) {
    EXPECT_EQ(found("s=<1;1;2>;", "/s/2"), "2");
    EXPECT_EQ(found("s=<1;1;2>;", "/s/1"), "1");
    EXPECT_EQ(found("s=<1;2>;", "/s/1"), "2");
    EXPECT_EQ(found("s=<{x=1};{x=2}>;", "/s/1/x"), "2");
    EXPECT_EQ(found("s=<{x=1};{x=1}>;", "/s/1/x"), "1");
}

TEST_F(ReaderLate, a_map_without_a_key_adds_no_key_to_paths) {
    EXPECT_EQ(found("{x=1}", "/x"), "1");
    EXPECT_EQ(found("{x=1}", "/0"), "undefined");
    EXPECT_EQ(found("{x={y=1}} {x={z=2}}", "/x/y"), "1");
    EXPECT_EQ(found("a={{x=1}};", "/a/x"), "1");
    EXPECT_EQ(found("a={y=2; {x=1}};", "/a/y"), "2");
}

TEST_F(ReaderLate, a_replaced_container_is_found_by_the_paths_below_it) {
    EXPECT_EQ(found("a={x=1}; a=[5];", "/a/x"), "1");
    EXPECT_EQ(found("a={x=1}; a=[5];", "/a/0"), "5");
    EXPECT_EQ(found("a={x={y=1}}; a={x=2};", "/a/x/y"), "1");
    EXPECT_EQ(found("a={x={y=1}}; a={x=2};", "/a/x"), "2");
    EXPECT_EQ(found("a={x=1}; a=#badfind; a={y=2};", "/a/x"), "1");
    EXPECT_EQ(found("a={x=1}; a={x=2};", "/a/x"), "2");
}

TEST_F(ReaderLate, a_removed_item_shifts_no_path) {
    EXPECT_EQ(found("v=[1;#badfind;3];", "/v/2"), "3");
    EXPECT_EQ(found("v=[{x=1};#badfind;{x=3}];", "/v/2/x"), "3");
    EXPECT_NE(found("v=[1;nosuch(2);3];", "/v/1"), "3");
}

TEST_F(ReaderLate, only_the_text_of_a_key_names_it) {
    EXPECT_EQ(found("1=a; '1'=b;", "/1"), "a");
    EXPECT_EQ(found("1=a; '1'=b;", "/\"1\""), "b");
    EXPECT_EQ(found("7=a;", "/007"), "undefined");
    EXPECT_EQ(found("7=a;", "/+7"), "undefined");
    EXPECT_EQ(found("'a b'=1;", "/\"a b\""), "1");
    EXPECT_EQ(found("'a b'=1;", "/'a b'"), "undefined");
    EXPECT_EQ(found("'a-b'=1;", "/a-b"), "undefined");
    EXPECT_EQ(found("ab=1;", "/\"ab\""), "undefined");
    EXPECT_EQ(found("''=1;", "/\"\""), "1");
    EXPECT_EQ(found("'a/b'=1;", "/\"a/b\""), "1");
    EXPECT_EQ(found("'true'=1;", "/true"), "1");
    EXPECT_EQ(found("0.5=1; a={x=2};", "/a/x"), "2");
    EXPECT_EQ(found("a={b=1};", "/a/b/"), "undefined");
    EXPECT_EQ(found("a={b=1};", "//a"), "undefined");
    EXPECT_EQ(found("a={b=1};", "/a/b/c"), "undefined");
}

TEST_F(ReaderLate, open_containers_are_passed_through_but_not_found) {
    EXPECT_EQ(Reading("{a={x=1; y=#cRef(/a/x)}}").text_at("a/y"), "1");
    EXPECT_EQ(Reading("{a=[{x=1}; #cRef(/a/0/x)]}").text_at("a/1"), "1");
    EXPECT_NE(Reading("{a={x=#cRef(/a)}}").log, "");
    EXPECT_NE(Reading("{a={x=#cRef(/a/x)}}").log, "");
}

TEST_F(ReaderLate, an_error_in_or_after_a_container_hides_none_of_its_entries) {
    EXPECT_EQ(Reading("{a={x=1}; c=nosuch(1); b=#cRef(/a/x)}").text_at("b"), "1");
    EXPECT_EQ(Reading("{a={x=1; y=nosuch(1)}; b=#cRef(/a/x)}").text_at("b"), "1");
    EXPECT_EQ(Reading("{a={b={x=[7 8]}}; c=#cRef(/a/b/x/1)}").text_at("c"), "8");
    EXPECT_EQ(Reading("{s=<[7]>; c=#cRef(/s/0/0)}").text_at("c"), "7");
}

TEST_F(ReaderLate, a_separator_before_a_key_is_allowed_once) {
    EXPECT_EQ(Reading("{a={x=1};; b=2}").log, "0x40000007 Line 1: Unnecessary separator: ;\n");
    EXPECT_EQ(Reading("{a=1;; b=2}").log, "");
    EXPECT_EQ(Reading("{a={x=1}; b=[{}, {},, {}]; c=3}").log,
              "0x40000007 Line 1: Unnecessary separator: ,\n");
}

TEST_F(ReaderLate, plain_text_and_unclosed_text_leave_the_state_idle) {
    Reading const r("{a={x=1; y='s'}; b=[1;2;[3]]; c=<4;5>; d=#cRef(/a/x); ASK=1 = 2}");
    EXPECT_EQ(r.text_at("d"), "1");
    std::istringstream is("{a={x=1}");
    objref const map = make<cMapObj>();
    EXPECT_EQ(static_cast<cMapObj &>(*map).datamap().read_hash(is, nullptr), 1);
    EXPECT_TRUE(text_state().idle());
}

// A type whose `read` is user code: it reads the value at /a/x.
constinit unsigned int seen_refs = 0;
constinit bool seen_late = true;

bool look(cObj &, objref &) {
    seen_late = text_state().is_late();
    objref const value = text_state().value_at("/a/x");
    seen_refs = value ? value->refs() : 0;
    return true;
}

objref new_looker(objref type) {
    return objref::adopt(new cObjD<int>(0, static_cast<cTypeObj *>(type.get())));
}

void looking(cTypeObj &type) {
    type.inherit(cat::type_int());
    type.set_tmember("newobj", make<cExeMember>(new_looker));
    type.set_tmember("read", make<cExeMember>(look));
}

TEST_F(ReaderLate, user_code_sees_the_references_of_the_table) {
    cTypeInsert::insert(typeref::adopt(new cTypeObj("late_looker", looking)), false);
    Reading const r("{a={x=5}; b=late_looker(1); c={y=6}; d=#cRef(/c/y)}");
    EXPECT_EQ(r.log, "");
    EXPECT_FALSE(seen_late);
    EXPECT_EQ(seen_refs, 3u) << "one in the map, one in the table, and this one";
    EXPECT_EQ(r.text_at("d"), "6");
    cat::typemap().datamap().delitem("late_looker");
}

TEST_F(ReaderLate, values_after_an_error_or_a_repeated_key_are_found) {
    for (char const *first : {"e=nosuch(1);", "e=1; e=2;", "e=vector[7];", "{q=1};", "0.5=1;",
                              "e=<1;1>;", "e=[1;#badfind;3];", "e={x=1}; f=#cRef(/e);"}) {
        EXPECT_EQ(
            Reading(std::string("{") + first + " a={x=[{y=5}]}; b=#cRef(/a/x/0/y)}").text_at("b"),
            "5")
            << first;
        std::string const inside = std::string("{a={") + first + " x=[{y=5; z=#cRef(/a/x/0/y)}]}}";
        EXPECT_EQ(Reading(inside).text_at("a/x/0/z"), "5") << first;
    }
}

TEST_F(ReaderLate, a_list_after_a_removed_item_is_found_by_positions) {
    EXPECT_EQ(found("v=[1;#badfind;{x=3};[4]];", "/v/2/x"), "3");
    EXPECT_EQ(found("v=[1;#badfind;{x=3};[4]];", "/v/3/0"), "4");
    EXPECT_EQ(found("v=[1;#badfind;{x=3}];", "/v/1/x"), "undefined");
    EXPECT_EQ(found("s=<1;1;{x=3}>;", "/s/2/x"), "3");
}

TEST_F(ReaderLate, a_key_that_contains_a_slash_leads_into_its_open_container) {
    EXPECT_EQ(Reading("{c={'a/'=[1; [2; #cRef(/c/\"a/\"/1/0)]]}}").log, "");
    EXPECT_EQ(found("c={'a/'=[1; [2]]};", "/c/\"a/\"/1/0"), "2");
}

TEST_F(ReaderLate, an_entry_replaces_the_earlier_value_at_its_path) {
    std::string const before = "a={x=1; e={y=1}}; a=#badfind; a=";
    EXPECT_EQ(found(before + "{x=2; e={z=3}};", "/a/x"), "2");
    EXPECT_EQ(found(before + "{x=2; e={z=3}};", "/a/e/z"), "3");
    EXPECT_EQ(found(before + "{x=2; e={z=3}};", "/a/e/y"), "1");
    EXPECT_EQ(found(before + "7;", "/a"), "7");
}

// A list of entries without brackets.
std::string found_bare(std::string const &entries, std::string const &path) {
    std::istringstream is(entries + " FOUND = #cRef(" + path + ");");
    cat::ReadReport report;
    objref list;
    cat::scan_container(is, list, true);
    objref const value = list ? list->getattrp("FOUND") : objref();
    return report.count() == 0 ? reader_test::written(value) : "undefined";
}

TEST_F(ReaderLate, the_first_entry_of_a_bare_list_has_only_paths_below_it) {
    EXPECT_EQ(found_bare("a=1; b=2;", "/a"), "undefined");
    EXPECT_EQ(found_bare("a=1; b=2;", "/b"), "2");
    EXPECT_EQ(found_bare("a={x=[5]}; b=2;", "/a/x/0"), "5");
    EXPECT_EQ(found_bare("a={x=[5]}; b=2;", "/a"), "undefined");
    EXPECT_EQ(found_bare("a={x=[5]}; b=vector[7]; c={y=6};", "/a/x/0"), "5");
    EXPECT_EQ(found_bare("a={x=[5]}; b=vector[7]; c={y=6};", "/c/y"), "6");
    EXPECT_EQ(found_bare("a={x=vector[5]; z={u=3}}; c={y=6};", "/a/z/u"), "3");
    EXPECT_EQ(found_bare("a={x={y=1}}; b=#cRef(/a/x);", "/b/y"), "undefined");
    EXPECT_TRUE(text_state().idle());
}

// A stream whose buffer is user code.
struct cOwnBuffer : std::stringbuf {
    explicit cOwnBuffer(std::string const &text) : std::stringbuf(text) {}
    int underflow() override {
        seen_late = seen_late || text_state().is_late();
        return std::stringbuf::underflow();
    }
};

TEST_F(ReaderLate, while_a_user_defined_buffer_runs_all_entries_are_in_the_table) {
    cOwnBuffer buffer("{a={x=5}; b=#cRef(/a/x)}");
    std::istream is(&buffer);
    seen_late = false;
    objref value;
    EXPECT_EQ(cObj::readobj(is, value), 0);
    EXPECT_FALSE(seen_late);
    EXPECT_EQ(reader_test::written(value->getattrp("b")), "5");
}

// A buffer of the standard error stream, which receives the dump of tokens. It is user code.
struct cDumpBuffer : std::streambuf {
    std::streamsize xsputn(char const *, std::streamsize count) override {
        seen_late = seen_late || text_state().is_late();
        ++pieces;
        return count;
    }
    int overflow(int c) override {
        char const one = traits_type::to_char_type(c);
        return xsputn(&one, 1) == 1 ? traits_type::not_eof(c) : c;
    }
    int pieces = 0;
};

TEST_F(ReaderLate, while_tokens_are_dumped_all_entries_are_in_the_table) {
    std::istringstream is("{a={x=5}; b=#cRef(/a/x)}");
    cAttrScanner const scanner(is);
    scanner.setdump(true);
    cDumpBuffer buffer;
    seen_late = false;
    std::streambuf *const before = cat::std_err().rdbuf(&buffer);
    objref value;
    int const code = cObj::readobj(is, value);
    cat::std_err().rdbuf(before);
    EXPECT_EQ(code, 0);
    EXPECT_GT(buffer.pieces, 0);
    EXPECT_FALSE(seen_late);
}

} // namespace
