// A map with many features is built by a program, written, and read again. Texts are compared byte
// by byte.
#include "tests/text/write_support.h"

using namespace test;

namespace {

char const *const example = "{\n"
                            "  name= \"Line 1\";\n"
                            "  count= 3; // pieces\n"
                            "  gain= 1.50000;\n"
                            "  ratio= 0.250000f;\n"
                            "  on= true;\n"
                            "  mode= fast;\n"
                            "  limits= {lo= 0; hi= 10; };\n"
                            "  list= [\n"
                            "      1,\n"
                            "      2,\n"
                            "  ]; \n"
                            "  tags= <a, b, >;\n"
                            "  again= #cRef(/limits);\n"
                            "}";

objref example_map() {
    objref const map = new_map();
    put(map, "name", cat::of("Line 1"));
    objref const count = cat::of(3);
    count->set_comment(" // pieces", true);
    put(map, "count", count);
    put(map, "gain", cat::of(1.5));
    put(map, "ratio", cat::of(0.25f));
    put(map, "on", cat::of(true));
    put(map, "mode", cat::of("fast"));
    objref const limits = new_map("sc");
    put(limits, "lo", cat::of(0));
    put(limits, "hi", cat::of(10));
    put(map, "limits", limits);
    objref const list = new_vector("wc");
    append(list, cat::of(1));
    append(list, cat::of(2));
    put(map, "list", list);
    objref const tags = new_set();
    append(tags, cat::of("a"));
    append(tags, cat::of("b"));
    put(map, "tags", tags);
    put(map, "again", limits);
    return map;
}

class WorkedExample : public QrvTest {};

} // namespace

TEST_F(WorkedExample, built_by_a_program_is_written_as_expected) {
    EXPECT_EQ(written(example_map()), example);
}

TEST_F(WorkedExample, is_written_the_same_twice) {
    objref const map = example_map();
    std::string const first = written(map);
    EXPECT_EQ(written(map), first);
}

TEST_F(WorkedExample, read_again_is_the_same_tree) {
    objref const read = read_back(example);
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->equal(example_map()));
    EXPECT_EQ(read->getattr(make_key("again")), read->getattr(make_key("limits")));
}

TEST_F(WorkedExample, read_again_is_written_the_same_with_comments_and_layouts) {
    EXPECT_EQ(written(read_back(example)), example);
}
