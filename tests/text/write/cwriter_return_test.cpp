// What plain text preserves when it is read again, and what it loses. The losses are part of the
// format; exact text avoids them.
#include "tests/text/random_tree.h"
#include "tests/text/write_support.h"

#include "qrv/text/read/creadreport.h"

#include <limits>

using namespace test;

namespace {

class PlainText : public QrvTest {};
class PlainTextLoss : public QrvTest {};

objref back(objref const &tree) { return read_back(written(tree)); }

objref value_at(objref const &container, std::string const &key) {
    return map_of(container).datamap().getitem(key);
}

// Reads with errors; returns their number.
size_t errors_of(std::string const &text, objref &value) {
    cat::ReadReport const report;
    std::istringstream is(text);
    cAttrScan scan(is, false);
    scan.scan_obj(value, nullptr);
    return report.count();
}

} // namespace

TEST_F(PlainText, preserves_ints_strings_keys_nesting_and_order) {
    objref const map = new_map(), inner = new_map("sc");
    put(inner, "z", cat::of(std::numeric_limits<int>::min()));
    put(inner, "a", cat::of(std::numeric_limits<int>::max()));
    put(map, "it's a \"key\" \\", cat::of("it's a \"text\" \\ // /* \t"));
    put(map, cat::of(-3), inner);
    put(map, "", cat::of(""));
    EXPECT_TRUE(back(map)->equal(map));
    EXPECT_EQ(written(back(map)), written(map));
}

TEST_F(PlainText, preserves_sharing_inside_one_outermost_container) {
    objref const map = new_map(), shared = new_vector();
    append(shared, cat::of(1));
    put(map, "a", shared);
    put(map, "b", shared);
    objref const read = back(map);
    EXPECT_EQ(value_at(read, "a"), value_at(read, "b"));
    map_of(value_at(read, "a")).datamap().vect_append(cat::of(2));
    EXPECT_EQ(map_of(value_at(read, "b")).size(), 2);
}

TEST_F(PlainText, preserves_comments_byte_for_byte) {
    objref const map = new_map(), number = cat::of(1), line = new_vector(), lines = new_map();
    number->set_comment("  \t// after a scalar \xE4 ", true);
    line->set_comment(" /* after\n  one line */ // and more", true);
    lines->set_comment("\n  // at the opening bracket", true);
    put(map, "n", number);
    put(map, "l", line);
    put(map, "m", lines);
    objref const read = back(map);
    for (char const *key : {"n", "l", "m"}) {
        std::string before, after;
        EXPECT_TRUE(value_at(map, key)->get_comment(before));
        EXPECT_TRUE(value_at(read, key)->get_comment(after));
        EXPECT_EQ(after, before);
    }
    EXPECT_EQ(written(read), written(map));
}

TEST_F(PlainText, preserves_one_line_and_many_line_layouts) {
    for (auto const make_one : {new_map, new_vector, new_set})
        for (char const *layout : {"sc", "wc"}) {
            objref const one = make_one(layout), outer = new_map();
            one->append(cat::of(1));
            put(outer, "in", one);
            EXPECT_EQ(*cat::wformat(*value_at(back(outer), "in")), *layout);
            EXPECT_EQ(written(back(outer)), written(outer));
        }
}

TEST_F(PlainText, preserves_random_trees_and_their_text_from_the_second_writing_on) {
    for (std::uint64_t seed = 0; seed < 500; ++seed) {
        objref const tree = cRandomTree(seed, true).container(4);
        std::string const text = written(tree);
        objref const read = read_back(text);
        ASSERT_TRUE(read) << seed << "\n" << text;
        ASSERT_TRUE(read->equal(tree)) << seed << "\n" << text;
        std::string const second = written(read);
        ASSERT_EQ(written(read_back(second)), second) << seed;
    }
}

TEST_F(PlainTextLoss, the_strings_true_and_false_become_bools) {
    objref const vector = new_vector();
    append(vector, cat::of("true"));
    append(vector, cat::of("false"));
    EXPECT_EQ(written(vector), "[true, false, ]");
    objref const read = back(vector);
    for (int i : {0, 1})
        EXPECT_EQ(&map_of(read).datamap().findpos(static_cast<unsigned>(i))->value().type(),
                  &cat::type_bool());
}

TEST_F(PlainTextLoss, the_string_true_as_a_key_causes_errors) {
    objref const map = new_map("sc");
    put(map, "true", cat::of(1));
    objref value;
    EXPECT_GT(errors_of(written(map), value), 0u);
}

TEST_F(PlainTextLoss, a_string_with_a_line_feed_causes_errors) {
    objref const map = new_map();
    put(map, "text", cat::of("first\nsecond"));
    EXPECT_EQ(written(map), "{\n  text= \"first\nsecond\";\n}");
    objref value;
    EXPECT_GT(errors_of(written(map), value), 0u);
}

TEST_F(PlainTextLoss, digits_beyond_the_sixth_infinity_and_nan_are_lost) {
    EXPECT_EQ(*value_of<double>(*back(cat::of(0.123456789))), 0.123457);
    EXPECT_EQ(*value_of<float>(*back(cat::of(0.123456789f))), 0.123457f);
    EXPECT_EQ(written(cat::of(std::numeric_limits<double>::infinity())), "inf");
    EXPECT_EQ(&back(cat::of(std::numeric_limits<double>::infinity()))->type(), &cat::type_string());
    EXPECT_EQ(written(cat::of(std::numeric_limits<float>::quiet_NaN())), "nanf");
}

TEST_F(PlainTextLoss, a_signed_number_with_no_digit_after_its_point_causes_errors) {
    objref const vector = new_vector();
    append(vector, cat::of(-123456.0));
    EXPECT_EQ(written(vector), "[-123456., ]");
    objref value;
    EXPECT_GT(errors_of(written(vector), value), 0u);
}

TEST_F(PlainTextLoss, a_one_line_set_in_a_one_line_set_causes_errors) {
    objref const set = new_set(), inner = new_set();
    inner->append(cat::of(1));
    set->append(inner);
    EXPECT_EQ(written(set), "<<1, >, >");
    objref value;
    EXPECT_GT(errors_of(written(set), value), 0u);
}

TEST_F(PlainTextLoss, a_value_without_text_causes_errors) {
    objref const thing = objref::adopt(new cObj);
    objref value;
    EXPECT_GT(errors_of("{ a= " + written(thing) + "; }", value), 0u);
}

TEST_F(PlainTextLoss, hidden_keys_and_values_without_text_are_lost) {
    objref const map = new_map();
    put(map, "#hidden", cat::of(1));
    put(map, "thing", objref::adopt(new cObj));
    EXPECT_EQ(map_of(back(map)).size(), 0);
}

TEST_F(PlainTextLoss, comments_on_one_line_and_after_a_closing_bracket_are_lost) {
    EXPECT_EQ(written(read_back("{a= 1 /* in one line */; }")), "{a= 1; }");
    EXPECT_EQ(written(read_back("{\n  m= {\n  }; // after\n}")), "{\n  m= {\n  }; \n}");
    EXPECT_EQ(written(read_back("// signature\n{}")), "{}");
}
