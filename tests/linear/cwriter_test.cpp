// Writing large trees: exact text, sharing, deep paths, nested one-line containers. Each tree takes
// under five seconds of processor time.
#include "tests/support/fixture.h"

#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"

#include <ctime>
#include <sstream>

namespace {

class WriterLinear : public QrvTest {
  protected:
    static std::string written_in_time(objref const &tree) {
        std::clock_t const begin = std::clock();
        std::ostringstream os;
        EXPECT_TRUE(tree->writeobj(os));
        EXPECT_TRUE(os.good());
        EXPECT_LT(static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC, 5.0);
        return os.str();
    }
};

cAttrHash &hash_of(objref const &container) { return static_cast<cMapObj &>(*container).datamap(); }

} // namespace

TEST_F(WriterLinear, a_million_numbers_in_exact_text_are_written_in_time) {
    objref const vector = objref::adopt(new cVectorObj);
    for (int i = 0; i < 1'000'000; ++i) hash_of(vector).vect_append(cat::of(i / 3.0));
    cat::ExactText const guard;
    EXPECT_EQ(written_in_time(vector).substr(0, 50),
              "[0.00000, 0.3333333333333333, 0.6666666666666666, ");
    hash_of(vector).vect_append(cat::of("line\nend"));
    EXPECT_EQ(written_in_time(vector).substr(0, 35), "[\n  0.00000,\n  0.3333333333333333,\n");
    EXPECT_EQ(guard.failed(), 0u);
}

TEST_F(WriterLinear, a_map_of_160000_keys_in_exact_text_is_written_in_time) {
    objref const map = objref::adopt(new cMapObj);
    for (int i = 0; i < 160'000; ++i)
        hash_of(map).mapitem("key " + std::to_string(i), cat::of("value " + std::to_string(i)));
    cat::ExactText const guard;
    EXPECT_GT(written_in_time(map).size(), 160'000u * 20);
}

TEST_F(WriterLinear, half_a_million_references_to_one_value_are_written_in_time) {
    objref const vector = objref::adopt(new cVectorObj), one = cat::of(1);
    for (int i = 0; i < 500'000; ++i) hash_of(vector).vect_append(one);
    EXPECT_EQ(written_in_time(vector).substr(0, 24), "[1, #cRef(/0), #cRef(/0)");
}

TEST_F(WriterLinear, a_hundred_thousand_entries_200_levels_down_are_written_in_time) {
    objref inner = objref::adopt(new cMapObj);
    for (int i = 0; i < 100'000; ++i) hash_of(inner).mapitem(cat::of(i), cat::of(i));
    for (int level = 0; level < 200; ++level) {
        objref const outer = objref::adopt(new cMapObj);
        hash_of(outer).mapitem("a key of some length to make paths long", inner);
        inner = outer;
    }
    cat::write_indent = 0;
    written_in_time(inner);
    cat::ExactText const guard;
    written_in_time(inner);
}

TEST_F(WriterLinear, containers_nested_1000_deep_around_a_line_feed_are_written_in_time) {
    objref inner = cat::of("\n" + std::string(1'000'000, 'x'));
    for (int level = 0; level < 1000; ++level) {
        objref const outer = objref::adopt(new cVectorObj);
        hash_of(outer).vect_append(inner);
        inner = outer;
    }
    cat::ExactText const guard;
    std::string const text = written_in_time(inner);
    EXPECT_EQ(text.substr(0, 18), "[\n  [\n      [\n    ");
}

TEST_F(WriterLinear, a_long_string_with_much_to_escape_is_written_in_time) {
    std::string text(4'000'000, '"');
    cat::escape(text);
    EXPECT_EQ(text.size(), 8'000'000u);
    EXPECT_EQ(cat::unescape(text), 4'000'000);
    written_in_time(cat::of(text));
}
