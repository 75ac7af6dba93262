// Exact text: every difference to plain text, every value that it can't write, and round trips.
#include "tests/text/hostile_locale.h"
#include "tests/text/random_tree.h"
#include "tests/text/write_support.h"

#include "qrv/core/ceros.h"
#include "qrv/text/write/cexacttext.h"
#include "text/state/ctext_state.h"
#include "text/write/cscalar_text.h"
#include "text/write/cwriter_exact.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

using namespace test;

namespace {

class Exact : public QrvTest {};
class ExactTrip : public QrvTest {};

std::string exact(objref const &ref) {
    cat::ExactText const guard;
    std::string const text = written(ref);
    EXPECT_EQ(guard.failed(), 0u) << text;
    return text;
}

// Written with the guard, followed by the omissions: "text | errors".
std::string exact_with_errors(objref const &ref, unsigned int failed) {
    cErrorLog errors;
    cat::ExactText const guard;
    std::string const text = written(ref);
    EXPECT_EQ(guard.failed(), failed);
    EXPECT_EQ(errors.count(), failed);
    return text + " | " + errors.text();
}

std::string left_out(std::string const &path) {
    return "0x40000001 Value cannot be written, path : " + path + "\n";
}

std::string plain_text(objref const &ref) { return cat::as_text(ref); }
std::string exact_text_of(objref const &ref) {
    cat::ExactText const guard;
    return cat::as_text(ref);
}

objref map_with(objref const &value, char const *layout = "sc") {
    objref const map = new_map(layout);
    put(map, "k", value);
    return map;
}

objref vector_with(objref const &a, objref const &b = nullptr, char const *layout = nullptr) {
    objref const vector = new_vector(layout);
    append(vector, a);
    if (b) append(vector, b);
    return vector;
}

template <class T> T number_in(objref const &ref) { return *value_of<T>(*ref); }

} // namespace

// --- the guard ---

TEST_F(Exact, is_off_by_default_and_guards_nest) {
    EXPECT_FALSE(cat::ExactText::active());
    {
        cat::ExactText const outer;
        EXPECT_TRUE(cat::ExactText::active());
        { cat::ExactText const inner; }
        EXPECT_TRUE(cat::ExactText::active());
    }
    EXPECT_FALSE(cat::ExactText::active());
    EXPECT_EQ(plain_text(cat::of("true")), "true");
}

TEST_F(Exact, each_guard_counts_the_omissions_since_it_was_created) {
    cErrorLog errors;
    cat::ExactText const outer;
    objref const nan = cat::of(std::nan(""));
    written(nan);
    {
        cat::ExactText const inner;
        EXPECT_EQ(inner.failed(), 0u);
        written(nan);
        EXPECT_EQ(inner.failed(), 1u);
    }
    EXPECT_EQ(outer.failed(), 2u);
    EXPECT_EQ(errors.text(), left_out("") + left_out(""));
}

// --- numbers ---

TEST_F(Exact, numbers_that_survive_are_written_as_in_plain_text) {
    for (double value : {0.0, -0.0, 1.5, 100.0, 1e300, 123456.0, 0.0001, -1e-5})
        EXPECT_EQ(exact_text_of(cat::of(value)), plain_text(cat::of(value)));
    for (float value : {0.0f, -0.0f, 1.5f, 0.1f, 0.25f, 1e30f})
        EXPECT_EQ(exact_text_of(cat::of(value)), plain_text(cat::of(value)));
    EXPECT_EQ(exact_text_of(cat::of(-2147483647 - 1)), "-2147483648");
}

TEST_F(Exact, other_numbers_have_all_their_digits_and_a_point) {
    EXPECT_EQ(exact_text_of(cat::of(0.1 + 0.2)), "0.30000000000000004");
    EXPECT_EQ(exact_text_of(cat::of(-123456.0)), "-123456.0");
    EXPECT_EQ(exact_text_of(cat::of(1234567.0)), "1234567.0");
    EXPECT_EQ(exact_text_of(cat::of(1.0000001e300)), "1.0000001e+300");
    EXPECT_EQ(exact_text_of(cat::of(-123456.0f)), "-123456.0f");
    EXPECT_EQ(exact_text_of(cat::of(1234567.0f)), "1234567.0f");
    EXPECT_EQ(exact_text_of(cat::of(0.1234567f)), "0.1234567f");
    EXPECT_EQ(exact_text_of(cat::of(std::numeric_limits<double>::max())),
              "1.7976931348623157e+308");
    EXPECT_EQ(exact_text_of(cat::of(std::numeric_limits<float>::max())), "3.4028235e+38f");
}

TEST_F(Exact, an_exponent_without_a_point_gets_one) {
    for (int e = 22; e < 300; e += 13) {
        double const value = std::pow(10.0, e) * 3;
        std::string const text = exact_text_of(cat::of(value));
        EXPECT_NE(text.find('.'), std::string::npos) << text;
        EXPECT_EQ(number_in<double>(read_back(text)), value);
    }
    std::string text;
    append_exact(text, "no number", 1e22);
    EXPECT_EQ(text, "1.0e+22");
}

TEST_F(Exact, random_numbers_are_read_bit_for_bit) {
    std::mt19937_64 random(3);
    for (int i = 0; i < 3000; ++i) {
        double const wide = random_double(random);
        objref const back = read_back(exact_text_of(cat::of(wide)));
        ASSERT_EQ(&back->type(), &cat::type_double());
        EXPECT_EQ(std::bit_cast<std::uint64_t>(number_in<double>(back)),
                  std::bit_cast<std::uint64_t>(wide));
        float const narrow = random_float(random);
        objref const back2 = read_back(exact_text_of(cat::of(narrow)));
        ASSERT_EQ(&back2->type(), &cat::type_float());
        EXPECT_EQ(std::bit_cast<std::uint32_t>(number_in<float>(back2)),
                  std::bit_cast<std::uint32_t>(narrow));
    }
}

TEST_F(Exact, a_streams_flags_apply_only_if_the_text_stays_readable) {
    cat::ExactText const guard;
    std::ostringstream os;
    os.imbue(std::locale::classic());
    os << std::hex;
    cat::of(255)->writeobj(os); // ff would be a name
    os << ' ' << std::showbase;
    cat::of(255)->writeobj(os);
    os << ' ';
    cat::of(-1)->writeobj(os);
    os << ' ' << std::oct;
    cat::of(8)->writeobj(os); // 010 would be ten
    os << ' ' << std::dec << std::showpos;
    cat::of(8)->writeobj(os);
    os << ' ' << std::hexfloat;
    cat::of(1.5)->writeobj(os);
    os << ' ' << std::defaultfloat << std::noshowpos;
    os.precision(3);
    cat::of(1.0625)->writeobj(os);
    os << ' ';
    cat::of(1.25)->writeobj(os);
    EXPECT_EQ(os.str(), "255 0xff 0xffffffff 8 +8 1.5 1.0625 1.25");
}

// --- strings ---

TEST_F(Exact, the_strings_true_and_false_are_quoted) {
    EXPECT_EQ(exact(cat::of("true")), "\"true\"");
    EXPECT_EQ(exact(cat::of("false")), "\"false\"");
    EXPECT_EQ(exact(cat::of("truth")), "truth");
    objref const map = new_map("sc");
    put(map, "true", cat::of(1));
    EXPECT_EQ(exact(map), "{\"true\"= 1; }");
    EXPECT_TRUE(read_back(exact(map))->equal(map));
}

TEST_F(Exact, a_backslash_preserves_a_line_feed) {
    EXPECT_EQ(exact(cat::of("a\nb")), "\"a\\\nb\"");
    EXPECT_EQ(exact(cat::of("\n")), "\"\\\n\"");
    EXPECT_EQ(exact(cat::of("\\\n")), "\"\\\\\\\n\"");
    for (char const *text : {"a\nb", "\n", "\\\n", "\\", "'\"", "\r\n", "\t", "/*", "//", "true\n"})
        EXPECT_EQ(*string_of(*read_back(exact(cat::of(text)))), text);
}

TEST_F(Exact, as_string_of_a_string_is_still_its_value) {
    cat::ExactText const guard;
    EXPECT_EQ(cat::as_string(cat::of("true")), "true");
    EXPECT_EQ(cat::as_string(cat::of(0.1 + 0.2)), "0.30000000000000004");
}

// --- constants, sets ---

TEST_F(Exact, constants_are_always_written_by_name) {
    objref const map = new_map("sc");
    for (char const *key : {"a", "b"}) put(map, key, cat::btrue());
    put(map, "c", cat::nil());
    put(map, "d", cat::nil());
    EXPECT_EQ(exact(map), "{a= #true; b= #true; c= #nil; d= #nil; }");
}

TEST_F(Exact, a_blank_is_only_between_two_angle_brackets) {
    objref const set = new_set(), inner = new_set();
    inner->append(cat::of(1));
    set->append(inner);
    set->append(new_set());
    EXPECT_EQ(written(set), "<<1, >, <>, >");
    EXPECT_EQ(exact(set), "< <1, >, <>, >");
    EXPECT_TRUE(read_back(exact(set))->equal(set));
    objref const three = new_set();
    three->append(set);
    EXPECT_EQ(exact(three), "< < <1, >, <>, >, >");
    objref const vector = vector_with(inner);
    EXPECT_EQ(exact(vector), "[<1, >, ]");
    objref const first = new_set();
    first->append(cat::of(0));
    first->append(inner);
    EXPECT_EQ(exact(first), "<0, <1, >, >");
}

TEST_F(Exact, there_is_no_blank_before_a_reference_or_on_many_lines) {
    objref const inner = new_set(), set = new_set(), map = new_map("sc");
    inner->append(cat::of(1));
    set->append(inner);
    put(map, "i", inner);
    put(map, "s", set);
    EXPECT_EQ(exact(map), "{i= <1, >; s= <#cRef(/i), >; }");
    objref const lines = new_set("wc");
    lines->append(inner);
    EXPECT_EQ(exact(lines), "<\n  <1, >,\n>");
}

// --- layouts ---

TEST_F(Exact, a_one_line_container_with_a_line_end_inside_is_written_on_many_lines) {
    EXPECT_EQ(exact(vector_with(cat::of("a\nb"), cat::of(2))), "[\n  \"a\\\nb\",\n  2,\n]");
    EXPECT_EQ(exact(vector_with(cat::of("a b"), cat::of(2))), "[\"a b\", 2, ]");
    EXPECT_EQ(exact(vector_with(new_map())), "[\n  {\n  }, \n]");
    objref const map = new_map("sc");
    put(map, "a\nb", cat::of(1));
    EXPECT_EQ(exact(map), "{\n  \"a\\\nb\"= 1;\n}");
}

TEST_F(Exact, one_line_containers_around_a_line_feed_are_written_on_many_lines) {
    objref const deep = vector_with(cat::of("\n")), flat = vector_with(cat::of(1));
    EXPECT_EQ(exact(vector_with(vector_with(flat, deep), flat)), "[\n"
                                                                 "  [\n"
                                                                 "      [1, ],\n"
                                                                 "      [\n"
                                                                 "          \"\\\n\",\n"
                                                                 "      ], \n"
                                                                 "  ], \n"
                                                                 "  #cRef(/0/0),\n"
                                                                 "]");
    EXPECT_EQ(exact(vector_with(flat, vector_with(cat::of(2)))), "[[1, ], [2, ], ]");
}

TEST_F(Exact, comments_move_with_the_layout) {
    objref const inner = vector_with(cat::of("\n")), number = cat::of(1);
    inner->set_comment(" // inner", true);
    number->set_comment(" // one", true);
    append(inner, number);
    objref const map = new_map();
    put(map, "v", inner);
    put(map, "w", inner);
    std::string const text = "{\n"
                             "  v= [ // inner\n"
                             "      \"\\\n\",\n"
                             "      1, // one\n"
                             "  ]; \n"
                             "  w= #cRef(/v); \n"
                             "}";
    EXPECT_EQ(exact(map), text);
    EXPECT_EQ(exact(read_back(text)), text);
}

TEST_F(Exact, plain_entries_without_brackets_keep_their_line) {
    objref const map = map_with(new_map());
    cat::ExactText const guard;
    std::ostringstream os;
    map_of(map).datamap().write_hash(os, "sc", nullptr);
    EXPECT_EQ(os.str(), "k= {\n  }; ");
}

// --- keys that begin with a hash sign ---

TEST_F(ExactTrip, keys_that_begin_with_a_hash_sign_are_quoted) {
    for (char const *layout : {"sc", "wc"}) {
        objref const map = new_map(layout), inner = new_map("sc"), shared = cat::of(1);
        put(inner, "#", shared);
        put(inner, "#nil", cat::nil());
        put(map, "#a b", inner);
        put(map, "x", shared);
        put(map, "#cRef(/x)", new_vector());
        std::string const text = exact(map);
        objref const back = read_back(text);
        EXPECT_TRUE(back->equal(map)) << text;
        EXPECT_EQ(exact(back), text);
        EXPECT_EQ(back->getattrp("x").get(), back->getattrp("\"#a b\"/\"#\"").get());
        EXPECT_EQ(written(map), layout[0] == 's' ? "{x= 1; }" : "{\n  x= 1;\n}");
    }
    objref const map = new_map("sc"), one = cat::of(1);
    put(map, "#x", one);
    put(map, "y", one);
    EXPECT_EQ(exact(map), "{\"#x\"= 1; y= #cRef(/\"#x\"); }");
}

TEST_F(Exact, a_member_that_begins_with_a_hash_sign_stays_hidden) {
    cErrorLog errors;
    objref const value = cat::of(1);
    value->set_omember("#x", cat::of(2));
    value->set_omember("y", cat::of(3));
    std::ostringstream os;
    objref holder = objref::adopt(new cOutHolder(os));
    cat::ExactText const guard;
    EXPECT_TRUE(cTomOmmap::m_write(*value, holder));
    EXPECT_EQ(os.str().find("#x"), std::string::npos) << os.str();
    EXPECT_NE(os.str().find("y= 3;"), std::string::npos) << os.str();
    EXPECT_EQ(guard.failed(), 1u);
    EXPECT_EQ(errors.text(), left_out("/\"#x\""));
}

// --- back references ---

TEST_F(Exact, paths_are_also_exact) {
    objref const map = new_map("sc"), inner = new_map("sc"), one = cat::of(1);
    put(inner, cat::of(0.1 + 0.2), one);
    put(map, "true", inner);
    put(map, "a", one);
    std::string const text =
        "{\"true\"= {0.30000000000000004= 1; }; a= #cRef(/\"true\"/0.30000000000000004); }";
    EXPECT_EQ(exact(map), text);
    objref const back = read_back(text);
    EXPECT_TRUE(back->equal(map));
    EXPECT_EQ(exact(back), text);
}

TEST_F(Exact, a_line_feed_in_a_path_can_be_read) {
    objref const map = new_map(), inner = new_map("sc"), one = cat::of(1);
    put(inner, "a\nb", one);
    put(map, "in", inner);
    put(map, "again", one);
    std::string const text = exact(map);
    objref const back = read_back(text);
    EXPECT_TRUE(back->equal(map));
    EXPECT_EQ(exact(back), text);
}

TEST_F(Exact, a_position_in_a_vector_counts_written_items) {
    objref const vector = new_vector(), shared = cat::of(5);
    append(vector, objref::adopt(new cObj));
    append(vector, shared);
    append(vector, shared);
    EXPECT_EQ(exact_with_errors(vector, 1), "[5, #cRef(/0), ] | " + left_out("/0"));
}

// --- values that can't be written ---

TEST_F(Exact, infinity_and_nan_are_omitted) {
    objref const map = new_map("sc");
    put(map, "i", cat::of(std::numeric_limits<double>::infinity()));
    put(map, "j", cat::of(-std::numeric_limits<float>::infinity()));
    put(map, "n", cat::of(std::nanf("")));
    put(map, "ok", cat::of(1));
    EXPECT_EQ(exact_with_errors(map, 3),
              "{ok= 1; } | " + left_out("/i") + left_out("/j") + left_out("/n"));
    cErrorLog errors;
    cat::ExactText const guard;
    std::ostringstream os;
    EXPECT_FALSE(cat::of(std::nan(""))->writeobj(os));
    EXPECT_FALSE(cat::of(std::nan(""))->write(os));
    EXPECT_EQ(cat::as_text(cat::of(std::nan(""))), "");
    EXPECT_EQ(os.str(), "");
    EXPECT_EQ(guard.failed(), 3u);
}

TEST_F(Exact, bad_and_badfind_are_omitted_from_containers) {
    objref const map = new_map("sc");
    cAttrHash &hash = map_of(map).datamap();
    hash.insert(cat::of("a"), cat::bad(), nullptr);
    hash.insert(cat::of("b"), cat::badfind(), nullptr);
    hash.insert(cat::of("c"), nullptr, nullptr);
    hash.insert(cat::of("d"), cat::nil(), nullptr);
    EXPECT_EQ(written(map), "{a= #bad; b= #badfind; c= #cRef(/a); d= #nil; }");
    EXPECT_EQ(exact_with_errors(map, 3),
              "{d= #nil; } | " + left_out("/a") + left_out("/b") + left_out("/c"));
    EXPECT_EQ(exact(cat::bad()), "#bad");
}

TEST_F(Exact, keys_that_cannot_be_read_as_keys_are_omitted) {
    objref const map = new_map("sc");
    put(map, cat::of(std::nan("")), cat::of(2));
    put(map, new_map("sc"), cat::of(3)); // a map cannot be a key in text
    put(map, cat::of(true), cat::of(4)); // nor can a bool
    put(map, "ok", cat::of(5));
    EXPECT_EQ(exact_with_errors(map, 3),
              "{ok= 5; } | " + left_out("/nan") + left_out("/{\n  }") + left_out("/true"));
}

TEST_F(Exact, values_without_text_are_omitted_and_counted) {
    objref const map = map_with(objref::adopt(new cObj));
    EXPECT_EQ(exact_with_errors(map, 1), "{} | " + left_out("/k"));
    EXPECT_EQ(exact_with_errors(objref::adopt(new cObj), 1), " | " + left_out(""));
}

TEST_F(Exact, invalid_comments_are_omitted_but_not_their_values) {
    for (char const *good : {" // a", "/* b */", "\n  // a\n  // b", " /* a */ // b", "", "  "}) {
        EXPECT_TRUE(exact_comment(good)) << good;
    }
    for (char const *bad : {"x", " // a\nb", "/* open", "/*/", "/", "// a\n/", "/* a */ b"}) {
        EXPECT_FALSE(exact_comment(bad)) << bad;
        objref const number = cat::of(1), list = new_vector("wc");
        number->set_comment(bad, true);
        list->set_comment(bad, true);
        append(list, number);
        EXPECT_EQ(exact_with_errors(map_with(list, "wc"), 2),
                  "{\n  k= [\n      1,\n  ]; \n} | " + left_out("/k") + left_out("/k/0"));
    }
}

TEST_F(Exact, an_invalid_comment_counts_only_where_it_would_be_written) {
    objref const number = cat::of(1);
    number->set_comment("bad", true);
    EXPECT_EQ(exact_with_errors(vector_with(number), 0), "[1, ] | ");
    EXPECT_EQ(exact_with_errors(vector_with(number, cat::of("\n")), 1),
              "[\n  1,\n  \"\\\n\",\n] | " + left_out("/0"));
}

TEST_F(Exact, constants_and_types_need_a_readable_name) {
    objref const odd = cat::of(1), reference = cat::of(2), number = cat::of(3), fine = cat::of(4);
    cAttrHash &constants = cat::constmap().datamap();
    constants.mapitem("two words", odd);
    constants.mapitem("cRef", reference);
    constants.mapitem(cat::of(7), number);
    constants.mapitem("true1", fine);
    objref const vector = new_vector();
    for (objref const &value : {odd, reference, number, fine}) append(vector, value);
    EXPECT_EQ(exact_with_errors(vector, 3),
              "[#true1, ] | " + left_out("/0") + left_out("/0") + left_out("/0"));

    auto const write = [](cObj &, objref &args) {
        stream_of(args) << "x";
        return true;
    };
    cForeignType const words("two words", write), boolean("true", write), good("test_good", write);
    objref const map = new_map("sc");
    put(map, "a", words.of(1));
    put(map, "b", boolean.of(1));
    put(map, "c", good.of(1));
    EXPECT_EQ(exact_with_errors(map, 2),
              "{c= test_good(x); } | " + left_out("/a") + left_out("/b"));
    words.type().setflags(tf_bare); // no wrapper and no name
    EXPECT_EQ(exact_with_errors(map, 1), "{a= x; c= test_good(x); } | " + left_out("/b"));
}

TEST_F(Exact, a_reference_below_a_key_that_cannot_be_in_a_path_is_omitted) {
    cForeignType const foreign("test_key", [](cObj &obj, objref &args) {
        stream_of(args) << number_of(obj);
        return true;
    });
    foreign.type().set_hash(cat::hash_int, cat::heq_int);
    objref const map = new_map("sc"), inner = new_map("sc"), one = cat::of(1), two = cat::of(2);
    put(inner, "a", one);
    put(map, foreign.of(5), inner);
    put(map, "b", one);
    put(map, "c", two);
    put(map, foreign.of(6), two);
    EXPECT_EQ(exact_with_errors(map, 1),
              "{test_key(5)= {a= 1; }; c= 2; test_key(6)= #cRef(/c); } | " + left_out("/b"));
}

TEST_F(Exact, a_reference_into_an_open_container_is_omitted) {
    objref const map = new_map("sc"), inner = new_map("sc");
    put(map, "me", map);
    put(map, "in", inner);
    put(inner, "up", inner);
    put(inner, "top", map);
    EXPECT_EQ(exact_with_errors(map, 3),
              "{in= {}; } | " + left_out("/me") + left_out("/in/up") + left_out("/in/top"));
    EXPECT_EQ(written(map), "{me= {me= #cRef(/me); in= {up= #cRef(/me/in); top= #cRef(/me); }; }; "
                            "in= #cRef(/me/in); }");
    map_of(inner).clear();
    map_of(map).clear();
}

// --- values whose write fails ---

namespace {
objref shared_part;
bool write_then_fail(cObj &obj, objref &args) {
    stream_of(args) << "part ";
    shared_part->writeobj(stream_of(args));
    if (number_of(obj) == 0) return false;
    throw cErr(0x40000007U, "test error");
}
} // namespace

TEST_F(Exact, a_value_that_fails_midway_leaves_no_text) {
    cForeignType const foreign("test_fails", write_then_fail);
    objref const part = cat::of(9);
    shared_part = vector_with(part);
    objref const map = new_map("sc");
    put(map, "a", foreign.of(0));
    put(map, "b", foreign.of(1));
    put(map, "part", part);
    put(map, "whole", shared_part);
    messages();
    EXPECT_EQ(exact_with_errors(map, 2),
              "{part= 9; whole= [#cRef(/part), ]; } | " + left_out("/a") + left_out("/b"));
    EXPECT_EQ(messages(), "cErr during write of container, path='/b':\ntest error\n");
    shared_part = nullptr;
}

TEST_F(Exact, a_key_that_fails_midway_leaves_no_text) {
    cForeignType const foreign("test_fails", [](cObj &, objref &args) -> bool {
        stream_of(args) << "part";
        throw cErr(0x40000007U, "test error");
    });
    foreign.type().set_hash(cat::hash_int, cat::heq_int);
    objref const map = new_map("sc");
    put(map, foreign.of(0), cat::of(1));
    put(map, "ok", cat::of(2));
    objref const outer = map_with(map);
    messages();
    EXPECT_EQ(exact_with_errors(outer, 1), "{k= {ok= 2; }; } | " + left_out("/k"));
    EXPECT_EQ(messages(), "cErr during write of container, path='/k':\ntest error\n");
    EXPECT_TRUE(text_state().idle());
}

TEST_F(Exact, a_comment_that_fails_is_omitted_without_truncating_the_text) {
    cForeignType const foreign("test_comment", [](cObj &, objref &) { return true; });
    cat::type_string().set_converter(
        foreign.type(), [](cObj &, objref &) -> bool { throw cErr(0x40000007U, "test error"); });
    for (char const *layout : {"wc", "sc"}) {
        objref const number = cat::of(1), list = vector_with(number, nullptr, layout);
        number->set_omember("//", foreign.of(1));
        append(list, cat::of("\n"));
        messages();
        EXPECT_EQ(exact(map_with(list)), "{\n  k= [\n      1,\n      \"\\\n\",\n  ]; \n}");
        EXPECT_EQ(messages(), "cErr during write of container, path='/k/0':\ntest error\n");
    }
    cat::type_string().set_converter(foreign.type(), nullptr);
}

TEST_F(Exact, errors_that_the_handler_throws_do_not_truncate_the_text) {
    objref const map = new_map("sc"), inner = new_map("sc");
    put(inner, "n", cat::of(std::nan("")));
    put(inner, "ok", cat::of(1));
    put(map, "in", inner);
    put(map, "ok", cat::of(2));
    cat::errhandler().throw_mask(0x40000000U);
    cat::errhandler().silent_mask(0xFFFFFFFFU);
    cat::ExactText const guard;
    messages();
    EXPECT_EQ(written(map), "{in= {ok= 1; }; ok= 2; }");
    EXPECT_EQ(guard.failed(), 1u);
    EXPECT_EQ(messages(), "cErr during write of container, path='/in':\n"
                          "Value cannot be written, path : /in/n\n");
    EXPECT_THROW(written(cat::of(std::nan(""))), cErr);
}

TEST_F(Exact, too_deep_values_fail_the_stream_and_are_counted) {
    cat::write_indent = 0;
    for (char const *layout : {"wc", "sc"}) {
        objref inner = cat::of(1);
        for (int i = 0; i < 40'000; ++i) {
            objref const outer = new_vector(layout);
            append(outer, inner);
            inner = outer;
        }
        cErrorLog errors;
        cat::ExactText const guard;
        std::ostringstream os;
        inner->writeobj(os);
        EXPECT_TRUE(os.fail());
        EXPECT_EQ(guard.failed(), 1u);
        EXPECT_EQ(errors.count(), 1u);
        EXPECT_TRUE(text_state().idle());
    }
}

TEST_F(Exact, path_strings_exist_in_both_forms_with_or_without_a_guard) {
    objref const key = cat::of("true"), nan = cat::of(std::nan(""));
    EXPECT_EQ(path_text(key, true), "\"true\"");
    EXPECT_EQ(path_text(key, false), "true");
    cErrorLog errors;
    cat::ExactText const guard;
    EXPECT_EQ(path_text(key, true), "\"true\"");
    EXPECT_EQ(path_text(key, false), "true");
    EXPECT_EQ(path_text(nan, false), "nan");
    EXPECT_EQ(path_text(nan, true), "");
    EXPECT_EQ(guard.failed(), 0u);
    EXPECT_EQ(errors.count(), 0u);
}

// --- round trips ---

TEST_F(ExactTrip, random_trees_are_read_equal_and_written_the_same_again) {
    for (std::uint64_t seed = 0; seed < 1000; ++seed) {
        objref const tree = cRandomTree(seed).container(4);
        std::string const text = exact(tree);
        objref const back = read_back(text);
        ASSERT_TRUE(back) << seed;
        ASSERT_TRUE(back->equal(tree)) << seed << "\n" << text;
        ASSERT_EQ(exact(back), text) << seed;
        cat::ExactText const reading_too;
        ASSERT_EQ(written(read_back(text)), text) << seed;
    }
}

TEST_F(ExactTrip, the_global_locale_changes_no_byte) {
    for (std::uint64_t seed = 0; seed < 100; ++seed) {
        objref const tree = cRandomTree(seed).container(4);
        std::string const text = exact(tree);
        cHostileLocale const hostile;
        ASSERT_EQ(exact(tree), text) << seed;
        ASSERT_EQ(exact(read_back(text)), text) << seed;
    }
}

TEST_F(ExactTrip, a_stream_with_the_hostile_locale_receives_readable_text) {
    cHostileLocale const hostile;
    cat::ExactText const guard;
    std::ostringstream os;
    cat::of(1234567)->writeobj(os);
    os << ' ';
    cat::of(1.5)->writeobj(os);
    os << ' ';
    cat::of(1234567.5f)->writeobj(os);
    EXPECT_EQ(os.str(), "1234567 1.5 1234567.5f");
}
