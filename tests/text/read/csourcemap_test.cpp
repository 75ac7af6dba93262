// The positions of entries in text: the spans of each construct, nodes and paths, comments, and
// what remains of entries that were refused or replaced.

#include "qrv/text/read/csourcemap.h"

#include "qrv/containers/cvectorobj.h"
#include "qrv/text/file/cfile.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/types.h"
#include "tests/text/source_support.h"
#include "text/read/csource_recorder.h"

#include <fstream>
#include <memory>

using source_test::Mapped;
using source_test::Marked;

namespace {

class SourceMaps : public QrvTest {
  protected:
    static void SetUpTestSuite() { // the first text with such a number creates objects that stay
        objref value;
        cObj::readobj("intf(1)", value);
    }
    static void expect_marks(std::string const &with_marks) {
        cTypesBack const types;
        cat::ReadReport const report;
        Marked const marked(with_marks);
        Mapped const mapped(marked.text);
        EXPECT_EQ(source_test::shown(source_test::marks_of(mapped.map), marked.text),
                  marked.shown());
    }
};

TEST_F(SourceMaps, have_the_parts_of_an_entry) {
    expect_marks("«v:«o:{» «k:a» «s:=» «v:1»«d:;» «k:b»«s:=»«v:two»«d:,»\n"
                 "«k:c»\n«s:=»\n«v:\"th;ree\"»\n«d:;» «k:d»«s:=»«v:4.5»«c:}»»");
}

TEST_F(SourceMaps, have_keys_of_all_kinds) {
    expect_marks("«v:«o:{»«k:\"a b\"» «s:=» «v:1»«d:;» «k:0x1F» «s:=» «v:2»«d:;»\n"
                 "«k:-1.5» «s:=» «v:-3u»«d:;» «k:'x'» «s:=» «v:#nil»«d:;»\n"
                 "«k:intf(010)» «s:=» «v:«t:intf»«o:(»7«c:)»»«d:;»«c:}»»");
}

TEST_F(SourceMaps, have_the_items_of_lists_and_sets) {
    expect_marks("«v:«o:[»«v:1»«d:,» «v:«o:[»«v:2» «d:;»«v:3»«c:]»» "
                 "«v:«o:<»«v:a»«d:,» «v:b» «c:>»» «d:,» «v:«o:{»«c:}»»«c:]»»");
}

TEST_F(SourceMaps, have_maps_without_keys) {
    expect_marks("«v:«o:{» «v:«o:{»«k:a»«s:=»«v:1»«c:}»» «d:;» "
                 "«v:«o:{»«c:}»» «c:}»»");
}

TEST_F(SourceMaps, have_references_and_constants) {
    expect_marks("«v:«o:{»«k:a» «s:=» «v:#true» «d:;» «k:b» «s:=» "
                 "«r:#cRef( /a )» «k:c»«s:=»«r:#cRef(/b)»«d:,»«c:}»»");
}

TEST_F(SourceMaps, have_a_single_value) {
    expect_marks(" «v:17» ");
    expect_marks("«v:17»«d:;»");
    expect_marks("«v:word»");
    expect_marks("«v:«t:intf» «o:(» b101 «c:)»»");
    expect_marks("");
    expect_marks("«O:// nothing»\n");
}

TEST_F(SourceMaps, have_entries_inside_typed_values) {
    expect_marks("«v:«o:{» «k:A» «s:=» «v:«t:attlist»«o:(» «k:n»«s:=» "
                 "«v:«t:attspec»«o:(»«k:type»«s:=» «v:string»«c:)»»«d:;»\n"
                 "  «k:m» «s:=» «v:«t:attspec» «o:{»«k:default» «s:=» "
                 "«v:«o:[»«v:1»«d:,» «v:2»«c:]»»«d:;»«c:}»» «c:)»»«d:;»\n"
                 "«k:M»«s:=»«v:«t:choice»«o:(»«v:«o:{»«k:off»«s:=»«v:0»«c:}»»«c:)»»"
                 "«d:;»\n«k:x» «s:=» «v:«t:A»«o:[»«k:m» «s:=» «v:«o:[»«v:3»«c:]»» "
                 "«k:n» «s:=» «v:abc»«c:]»» «d:;» "
                 "«k:y» «s:=» «v:«t:M»«o:(»«v:off»«c:)»»«c:}»»");
}

TEST_F(SourceMaps, count_bytes_omitted_from_typed_values) {
    expect_marks("«v:«o:{»«k:A»«s:=»«v:«t:attlist»«o:(» «A:/* one */» «k:n» "
                 "«I:/* two */» «s:=» «I:// three»\n «v:«t:attspec» «I:/*4*/» "
                 "«o:(»«I:/*5*/»\n «A:/* 6 */» «k:type»«s:=»«I:/*7*/»«v:string»"
                 "«B:/*8*/»«c:)»» «d:;» «B:// nine»\n«c:)»»«d:;» «B:// ten»\n"
                 "«k:b»«s:=» «v:«t:A»«o:(»«k:n»«s:=»«I:/*\n*/»«v:x»«c:)»»"
                 "«c:}»»");
}

TEST_F(SourceMaps, count_carriage_returns) {
    expect_marks("«v:«o:{»\r\n  «A:// above»\r\n  «k:a» «s:=» «v:1»«d:;» "
                 "«B:// after»\r\n  «k:b» «s:=» «v:\"x y\"»«d:;»\r\n«c:}»»\r\n");
}

TEST_F(SourceMaps, count_a_byte_order_mark_that_was_read) {
    std::string const text = "\xEF\xBB\xBF{\r\n a = 1; }";
    std::istringstream is(text);
    is.ignore(3);
    cat::SourceMap const map;
    objref root;
    ASSERT_EQ(cAttrScan(is, false).scan_obj(root, nullptr), 0);
    ASSERT_EQ(map.size(), 2u);
    EXPECT_EQ(map.entry(0).value.begin, 3u);
    EXPECT_EQ(map.entry(1).key.begin, text.find('a'));
    EXPECT_EQ(map.end(), text.size());
}

TEST_F(SourceMaps, have_lists_of_entries_without_brackets) {
    Marked const marked("«v:«k:a» «s:=» «v:1»«d:;»\n«k:b»«s:=»«v:«o:{»«k:x»«s:=»"
                        "«v:2»«c:}»»«d:;»»\n");
    std::istringstream is(marked.text);
    cat::SourceMap const map;
    objref root;
    ASSERT_EQ(cat::scan_container(is, root, false), 0);
    EXPECT_EQ(source_test::shown(source_test::marks_of(map), marked.text), marked.shown());
    ASSERT_EQ(map.spans(*root, "a").size(), 1u);
    EXPECT_EQ(map.spans(*root, "b/x").size(), 1u);
    EXPECT_EQ(map.written(*root).size(), 1u);
    EXPECT_EQ(map.path_at(map.entry(3).key.begin), "/b/x");
}

TEST_F(SourceMaps, have_entries_that_a_program_reads_into_its_map) {
    Marked const marked("«v:«k:a» «s:=» «v:1»«d:;» «k:b» «s:=» «v:2»»");
    std::istringstream is(marked.text);
    cat::SourceMap const source;
    cRef<cMapObj> const map = make<cMapObj>();
    EXPECT_EQ(map->datamap().read_hash(is, nullptr), 1);
    EXPECT_EQ(source_test::shown(source_test::marks_of(source), marked.text), marked.shown());
    EXPECT_EQ(source.spans(*map, "b").size(), 1u);
}

TEST_F(SourceMaps, end_where_the_first_value_ends) {
    Mapped const mapped("{a = 1;} b = 2; // not read");
    EXPECT_EQ(mapped.map.end(), mapped.find(" b"));
    EXPECT_EQ(mapped.map.size(), 2u);
}

// --- nodes and paths ---

TEST_F(SourceMaps, find_entries_by_their_nodes) {
    Mapped const mapped("{a = 1; b = {c = [5, 6]}}");
    cAttrHash const &hash = static_cast<cMapObj &>(*mapped.root).datamap();
    EXPECT_EQ(mapped.map.spans(hash.first()->anid()).at(0).number, 1u);
    EXPECT_EQ(mapped.map.spans(hash.last()->anid()).at(0).number, 2u);
    EXPECT_EQ(mapped.map.entry(2).anid, hash.last()->anid());
    EXPECT_TRUE(mapped.map.spans(0u).empty());
    EXPECT_TRUE(mapped.map.spans(hash.last()->anid() + 100).empty());
    EXPECT_EQ(mapped.at("b/c/1"), "5:6");
    EXPECT_EQ(mapped.at(""), "0:" + mapped.text);
    EXPECT_EQ(mapped.at("/"), "0:" + mapped.text);
    for (char const *const wrong : {"c", "a/b", "b/c/2", "b/c/d", "b/", "="})
        EXPECT_EQ(mapped.at(wrong), "") << wrong;
}

TEST_F(SourceMaps, have_all_entries_of_a_repeated_key) {
    Mapped const mapped(
        "{a = 1; b = {x = 1}; a = 2; b = {y = {p = 1}}; a = 3; b = {y = {q = 2}, x = 5}}");
    EXPECT_EQ(mapped.at("a"), "1:1 4:2 8:3");
    EXPECT_EQ(mapped.at("b"), "2:{x = 1} 5:{y = {p = 1}} 9:{y = {q = 2}, x = 5}");
    EXPECT_EQ(mapped.at("b/x"), "3:1 12:5");
    EXPECT_EQ(mapped.at("b/y"), "6:{p = 1} 10:{q = 2}");
    EXPECT_EQ(mapped.at("b/y/p"), "7:1");
    EXPECT_EQ(mapped.at("b/y/q"), "11:2");
    EXPECT_EQ(mapped.map.written(*mapped.root->getattrp("b/y")).size(), 2u);
    EXPECT_EQ(mapped.map.path_at(mapped.find("q = 2")), "/b/y/q");
}

TEST_F(SourceMaps, have_items_that_are_appended_by_a_repeated_key) {
    Mapped const mapped("{a = {v = [1, {x = 2}], s = <p, q>}; a = {v = [3, {y = 4}], s = <q, r>}}");
    EXPECT_EQ(mapped.at("a/v/0"), "3:1");
    EXPECT_EQ(mapped.at("a/v/2"), "11:3");
    EXPECT_EQ(mapped.at("a/v/3/y"), "13:4");
    EXPECT_EQ(mapped.at("a/s/0"), "7:p");
    EXPECT_EQ(mapped.at("a/s/1"), "8:q 15:q");
    EXPECT_EQ(mapped.at("a/s/2"), "16:r");
}

TEST_F(SourceMaps, have_the_items_of_a_list_that_is_assigned) {
    Mapped const mapped("{v = [1, 2, 3]; v = [4, 5]}");
    EXPECT_EQ(cat::as_text(mapped.root->getattrp("v")), "[4, 5, ]");
    EXPECT_EQ(mapped.at("v/0").substr(mapped.at("v/0").size() - 3), "6:4");
    EXPECT_EQ(mapped.at("v/1").substr(mapped.at("v/1").size() - 3), "7:5");
    EXPECT_EQ(mapped.at("v/2"), "");
}

TEST_F(SourceMaps, have_equal_values_of_a_set) {
    Mapped const mapped("<a, b, a, {x = 1}, {x = 1}>");
    EXPECT_EQ(mapped.at("0"), "1:a 3:a");
    EXPECT_EQ(mapped.at("2"), "4:{x = 1} 6:{x = 1}");
    EXPECT_EQ(mapped.at("2/x"), "5:1 7:1");
}

TEST_F(SourceMaps, follow_references_to_the_position_of_the_value) {
    Mapped const mapped("{a = {x = 1}; b = #cRef(/a); b = {y = 2}; c = {d = #cRef(/b)}}");
    EXPECT_EQ(mapped.at("b"), "3:#cRef(/a) 4:{y = 2}");
    EXPECT_TRUE(mapped.map.spans(*mapped.root, "b")[0].reference);
    EXPECT_EQ(mapped.at("b/x"), "2:1");
    EXPECT_EQ(mapped.at("a/y"), "5:2");
    EXPECT_EQ(mapped.at("c/d/y"), "5:2");
    std::vector<cat::SourceEntry> const written = mapped.map.written(*mapped.root->getattrp("c/d"));
    ASSERT_EQ(written.size(), 2u);
    EXPECT_EQ(mapped.text_of(written[0].value), "{x = 1}");
    EXPECT_EQ(mapped.text_of(written[1].value), "{y = 2}");
}

TEST_F(SourceMaps, have_the_attributes_of_declared_objects) {
    cTypesBack const types;
    Mapped const mapped("{A = attlist(n = attspec(type = string); m = attspec(default = 5));\n"
                        "M = choice({off = 0; on = 1});\n"
                        "x = A(m = /* c */ 6; n = abc); y = {z = A(n = \"d\")}; x = A(n = other)}");
    EXPECT_EQ(mapped.code, 0);
    EXPECT_EQ(mapped.at("A/m"), "4:attspec(default = 5)");
    EXPECT_EQ(mapped.at("M/on"), "9:1");
    EXPECT_EQ(mapped.at("y/z/n"), "15:\"d\"");
    EXPECT_EQ(mapped.at("y/z/m"), "");
    EXPECT_EQ(mapped.at("x/n").substr(mapped.at("x/n").size() - 8), "17:other");
    EXPECT_EQ(mapped.map.path_at(mapped.find("\"d\"")), "/y/z/n");
    EXPECT_EQ(mapped.map.type_at(mapped.find("\"d\"")), "string");
    EXPECT_EQ(mapped.map.path_at(mapped.find("A(n = \"d\")")), "/y/z");
    EXPECT_EQ(mapped.map.type_at(mapped.find("A(n = \"d\")")), "A");
    EXPECT_EQ(mapped.map.path_at(mapped.find("default")), "/A/m");
}

TEST_F(SourceMaps, return_path_and_type_at_an_offset) {
    Mapped const mapped("// top\n { a = [1, {b = 2.5}]; \"c d\" = <x> } // end");
    EXPECT_EQ(mapped.map.path_at(mapped.find("2.5")), "/a/1/b");
    EXPECT_EQ(mapped.map.type_at(mapped.find("2.5")), "double");
    EXPECT_EQ(mapped.map.path_at(mapped.find("a =")), "/a");
    EXPECT_EQ(mapped.map.type_at(mapped.find("a =")), "vector");
    EXPECT_EQ(mapped.map.path_at(mapped.find("; \"c")), "/a");
    EXPECT_EQ(mapped.map.path_at(mapped.find("\"c")), "/\"c d\"");
    EXPECT_EQ(mapped.map.path_at(mapped.find("x>")), "/\"c d\"/0");
    EXPECT_EQ(mapped.map.path_at(mapped.find("{ a")), "/");
    EXPECT_EQ(mapped.map.type_at(mapped.find("{ a")), "map");
    EXPECT_EQ(mapped.map.path_at(mapped.find("top")), "");
    EXPECT_EQ(mapped.map.path_at(mapped.find("end")), "");
    EXPECT_EQ(mapped.map.type_at(mapped.find("end")), "");
    EXPECT_EQ(mapped.map.at(1000), cat::SourceEntry::none);
}

// --- changes during reading ---

TEST_F(SourceMaps, drop_entries_of_removed_nodes) {
    Mapped mapped("{a = {x = 1}; b = [1, 2, 3]}");
    auto &root = static_cast<cMapObj &>(*mapped.root);
    std::uint32_t const x = mapped.map.spans(root, "a/x")[0].anid;
    root.setattr(cat::of("a"), nullptr);
    EXPECT_TRUE(mapped.map.spans(x).empty());
    EXPECT_TRUE(mapped.map.entry(1).removed);
    EXPECT_TRUE(mapped.map.entry(2).removed);
    EXPECT_EQ(mapped.map.entry(2).anid, 0u);
    EXPECT_EQ(mapped.text_of(mapped.map.entry(2).value), "1");
    static_cast<cVectorObj &>(*root.getattrp("b")).datamap().delitem(cat::of(0));
    EXPECT_TRUE(mapped.map.entry(4).removed);
    for (int i = 0; i < 1000; ++i) root.setattr(cat::of("k" + std::to_string(i)), cat::of(i));
    EXPECT_EQ(mapped.at("a"), "");
    EXPECT_EQ(mapped.at("k5"), "");
    EXPECT_EQ(mapped.map.path_at(mapped.find("x = 1")), "/");
}

TEST_F(SourceMaps, find_values_that_move_to_another_node) {
    Mapped mapped("[1, 2, 3]");
    auto &vector = static_cast<cVectorObj &>(*mapped.root);
    ASSERT_TRUE(vector.datamap().vect_erase(0));
    ASSERT_EQ(cat::as_text(mapped.root), "[2, 3, ]");
    ASSERT_EQ(mapped.map.written(*mapped.root->getattrp("0")).size(), 1u);
    EXPECT_EQ(mapped.map.written(*mapped.root->getattrp("0"))[0].number, 2u);
    EXPECT_EQ(mapped.map.written(*mapped.root->getattrp("1"))[0].number, 3u);
    EXPECT_EQ(mapped.map.entry(2).obid, mapped.root->getattrp("0")->obid());
}

TEST_F(SourceMaps, drop_entries_of_values_that_are_replaced_while_reading) {
    Mapped const mapped("{a = {x = 1}; a = 5; a = {x = 2}}");
    EXPECT_EQ(mapped.at("a"), "1:{x = 1} 3:5 4:{x = 2}");
    EXPECT_EQ(mapped.at("a/x"), "5:2");
    EXPECT_EQ(mapped.map.entry(2).anid, 0u);
    EXPECT_FALSE(mapped.map.entry(2).removed);
}

TEST_F(SourceMaps, drop_refused_entries) {
    cTypesBack const types;
    cat::ReadReport const report;
    Mapped const mapped("{a = nosuch(1); b = #none; c = #cRef(/x); d = [1, nosuch(2), 3];\n"
                        "A = attlist(n = attspec(type = int)); e = A(n = x); f = A(m = 1);\n"
                        "[1, 2] = 3; g = 99999999999; h = 1; h = #nothing; i = ; }");
    EXPECT_EQ(mapped.at("a"), "");
    EXPECT_EQ(mapped.at("d"), "");
    EXPECT_EQ(mapped.at("e"), "");
    EXPECT_EQ(mapped.at("g"), "");
    EXPECT_EQ(mapped.at("h").substr(mapped.at("h").find(':')), ":1");
    for (std::size_t i = 0; i < mapped.map.size(); ++i)
        EXPECT_FALSE(mapped.map.entry(i).removed) << i;
}

TEST_F(SourceMaps, drop_entries_that_a_merge_refuses) {
    cat::ReadReport const report;
    Mapped const mapped("{a = {i = 5, s = s, m = {y = 1}, v = [1], d = 5, n = #nil};\n"
                        "a = {i = t, s = 6, m = 7, v = 8, d = 1.5, n = 9}}");
    EXPECT_EQ(mapped.at("a/i"), "2:5");
    EXPECT_EQ(mapped.at("a/s"), "3:s");
    EXPECT_EQ(mapped.at("a/m"), "4:{y = 1}");
    EXPECT_EQ(mapped.at("a/v"), "6:[1]");
    EXPECT_EQ(mapped.at("a/v/1"), "14:8");
    EXPECT_EQ(mapped.at("a/d"), "8:5 15:1.5");
    EXPECT_EQ(mapped.at("a/n"), "9:#nil");
    messages();
}

TEST_F(SourceMaps, record_the_first_outermost_reading) {
    cat::SourceMap const map;
    objref first, second;
    cObj::readobj("{a = 1}", first);
    cObj::readobj("{b = 2, c = 3}", second);
    EXPECT_EQ(map.size(), 2u);
    EXPECT_TRUE(map.spans(*second, "b").empty());
    {
        cat::SourceMap const inner;
        cObj::readobj("[1, 2, 3]", second);
        EXPECT_EQ(inner.size(), 4u);
    }
    EXPECT_EQ(map.size(), 2u);
}

TEST_F(SourceMaps, have_no_entries_of_too_long_text) {
    std::size_t const longest = std::exchange(cat::cSourceRecorder::longest, 10);
    Mapped const fits("{a = 123;}"), exceeds("{a = 1234;}");
    cat::cSourceRecorder::longest = longest;
    EXPECT_TRUE(fits.map.complete());
    EXPECT_EQ(fits.map.size(), 2u);
    EXPECT_FALSE(exceeds.map.complete());
    EXPECT_EQ(exceeds.map.size(), 0u);
    EXPECT_TRUE(exceeds.map.comments().empty());
    EXPECT_EQ(exceeds.map.path_at(2), "");
}

TEST_F(SourceMaps, have_entries_that_are_read_into_an_object) {
    cTypesBack const types;
    objref declared;
    ASSERT_EQ(cObj::readobj("{A = attlist(n = attspec(default = 1); m = attspec(default = 2))}",
                            declared),
              0);
    Mapped const mapped("[1, 2]");
    std::string const text = "m = 5; n = 6";
    std::istringstream is(text);
    objref const object = cat::find_type("A").newobj();
    cat::SourceMap const map;
    ASSERT_TRUE(object->read(is));
    ASSERT_EQ(map.spans(*object, "n").size(), 1u);
    EXPECT_EQ(map.spans(*object, "n")[0].value.begin, text.find('6'));
    EXPECT_EQ(map.written(*object).size(), 1u);
    EXPECT_EQ(map.path_at(map.entry(1).value.begin), "/m");
    EXPECT_EQ(map.type_at(0), "int");
}

TEST_F(SourceMaps, have_entries_of_a_map_that_receives_the_value) {
    std::string const name = testing::TempDir() + "qrv_source_map.attr";
    std::ofstream(name, std::ios::binary) << "\n{a = 1; b = [2, 3]}";
    cRef<cMapObj> const map = make<cMapObj>();
    cat::SourceMap const source;
    ASSERT_TRUE(file2map(name.c_str(), *map));
    std::remove(name.c_str());
    EXPECT_EQ(source.spans(*map, "a").size(), 1u);
    ASSERT_EQ(source.spans(*map, "b/1").size(), 1u);
    EXPECT_EQ(source.spans(*map, "b/1")[0].value, (cat::Span{17, 18}));
    EXPECT_EQ(source.written(*map).size(), 1u);
}

// Reads from a string and can't report its position.
class cUnseekable : public std::streambuf {
  public:
    explicit cUnseekable(std::string text) : text_(std::move(text)) {
        setg(text_.data(), text_.data(), text_.data() + text_.size());
    }

  private:
    std::string text_;
};

TEST_F(SourceMaps, count_from_0_if_the_stream_has_no_position) {
    Marked const marked("\n«v:«o:{»\n«k:a» «s:=» «v:1»«d:;» «B:// x»\n«k:t» «s:=» "
                        "«v:«t:int»«o:(»«A:/* y */» «v:5»«c:)»»«c:}»»");
    cUnseekable buffer(marked.text);
    std::istream is(&buffer);
    cat::SourceMap const map;
    objref root;
    ASSERT_EQ(cAttrScan(is, false).scan_obj(root, nullptr), 0);
    EXPECT_EQ(source_test::shown(source_test::marks_of(map), marked.text), marked.shown());
}

TEST_F(SourceMaps, outlive_the_values_read) {
    cat::SourceMap map;
    {
        objref root;
        ASSERT_EQ(cObj::readobj("{a = {b = 1}}", root), 0);
        EXPECT_EQ(map.path_at(7), "/a/b");
    }
    ASSERT_EQ(map.size(), 3u);
    EXPECT_TRUE(map.entry(1).removed);
    EXPECT_EQ(map.path_at(7), "/");
    EXPECT_EQ(map.type_at(7), "map");
}

TEST_F(SourceMaps, stopped_maps_are_destroyed_in_any_order) {
    auto first = std::make_unique<cat::SourceMap>();
    objref root, other;
    ASSERT_EQ(cObj::readobj("{a = 1}", root), 0);
    first->stop();
    auto second = std::make_unique<cat::SourceMap>();
    ASSERT_EQ(cObj::readobj("{a = 2; b = 3}", other), 0);
    second->stop();
    EXPECT_EQ(first->size(), 2u);
    EXPECT_EQ(second->size(), 3u);
    first = nullptr;
    EXPECT_EQ(second->path_at(8), "/b");
    cat::SourceMap outer;
    {
        cat::SourceMap inner;
        inner.stop();
        inner.stop();
        second = nullptr;
        ASSERT_EQ(cObj::readobj("[4]", other), 0);
        EXPECT_EQ(inner.size(), 0u);
    }
    EXPECT_EQ(outer.size(), 2u);
}

TEST_F(SourceMaps, may_end_before_the_reading_does) {
    auto map = std::make_unique<cat::SourceMap>();
    auto const end = [&map](cErr &) { map.reset(); };
    cat::ReadReport report;
    class cEnd : public cat::ReadWatch {
      public:
        explicit cEnd(decltype(end) const &act) : act_(act) {}
        bool error(cat::ReadError &) override {
            cErr none;
            act_(none);
            return true;
        }

      private:
        decltype(end) const &act_;
    } watch(end);
    report.watch(&watch);
    objref root;
    cObj::readobj("{a = 1; b = nosuch(2); c = [3]}", root);
    EXPECT_EQ(map, nullptr);
    EXPECT_EQ(cat::as_text(root), "{\n  a= 1;\n  c= [3, ];\n}");
}

// --- comments ---

TEST_F(SourceMaps, attach_comments_to_entries) {
    expect_marks("«O:// file»\n\n«A:// about the map»\n«v:«o:{» «I:// in the map»\n"
                 "  «A:// about a»\n  «A:/* more\n about a */»\n"
                 "  «k:a» «I:/*1*/» «s:=» «I:/*2*/» «v:1» «I:/*3*/» «d:;» "
                 "«B:// after a»\n"
                 "                            «B:// below that»\n"
                 "  «A:// about b»\n"
                 "  «k:b» «s:=» «v:2»«d:;» «B:/* after b */» «B:/* too */» «k:c» "
                 "«s:=» «v:«o:{» «I:// in c»\n\n    «I:// apart»\n\n"
                 "    «A:/* 4 */» «k:d» «s:=» «v:3» «B:// after d»\n    «I:// last in c»\n"
                 "  «c:}»»«d:;» «B:// after c»\n\n  «I:// end»\n«c:}»»");
}

TEST_F(SourceMaps, have_comments_that_are_read_after_the_value) {
    Mapped mapped("{a = 1} // one\n// two\n\n/* three */ rest");
    EXPECT_TRUE(mapped.map.comments().empty());
    cAttrLiteral token;
    EXPECT_EQ(mapped.scan.gettok(token), tkIdent);
    auto const &comments = mapped.map.comments();
    ASSERT_EQ(comments.size(), 3u);
    EXPECT_EQ(comments[0].where, cat::SourceComment::after);
    EXPECT_EQ(comments[0].entry, 0u);
    EXPECT_EQ(comments[1].where, cat::SourceComment::outside);
    EXPECT_EQ(mapped.text_of(comments[2].span), "/* three */");
    EXPECT_EQ(mapped.map.comments(0).size(), 1u);
}

TEST_F(SourceMaps, know_which_comments_the_writer_preserves) {
    Mapped const mapped(
        "// c01\n{ // c02\n  a = 1; // c03\n  b /* c04 */ = /* c05 */ 2; /* c06 */ // c07\n"
        "  c = {x = 1 /* c08 */; y = 2} // c09\n  d = {\n x = 1;\n } // c10\n"
        "  e = #true; // c11\n  f = #cRef(/a); // c12\n  c = {x = 5; /* c13 */}\n"
        "  d = 1; // c14\n  /* c15 */ g = [ // c16\n] // c17\n}");
    std::string const written = cat::as_text(mapped.root);
    for (cat::SourceComment const &comment : mapped.map.comments()) {
        std::string const text = mapped.text_of(comment.span);
        EXPECT_EQ(comment.kept, written.find(text) != std::string::npos) << text << "\n" << written;
    }
}

} // namespace
