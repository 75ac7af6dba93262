// The writer: layouts, keys, skipped values, back references, comments, wrappers.
#include "tests/text/write_support.h"

#include "text/state/ctext_state.h"

#include <limits>
#include <sstream>

using namespace test;

namespace {

class WriterLayout : public QrvTest {};
class WriterEdge : public QrvTest {};

class cCountFlushes : public std::stringbuf {
  public:
    int flushes = 0;

  protected:
    int sync() override {
        ++flushes;
        return 0;
    }
};

std::string entries_text(objref const &map, char const *format, cTypeObj *type) {
    std::ostringstream os;
    EXPECT_TRUE(map_of(map).datamap().write_hash(os, format, type));
    return os.str();
}

objref two_ints(char const *layout = nullptr) {
    objref const map = new_map(layout);
    put(map, "a", cat::of(1));
    put(map, "b", cat::of(2));
    return map;
}

std::string quoted(char const *text) { return cat::as_text(cat::of(text)); }

} // namespace

// --- layouts ---

TEST_F(WriterLayout, empty_containers_keep_their_layout) {
    EXPECT_EQ(written(new_map()), "{\n}");
    EXPECT_EQ(written(new_map("sc")), "{}");
    EXPECT_EQ(written(new_vector()), "[]");
    EXPECT_EQ(written(new_vector("wc")), "[\n]");
    EXPECT_EQ(written(new_set()), "<>");
    objref const outer = new_map();
    put(outer, "in", new_map());
    EXPECT_EQ(written(outer), "{\n  in= {\n  }; \n}");
}

TEST_F(WriterLayout, one_line_containers_write_a_blank_after_each_entry) {
    EXPECT_EQ(written(two_ints("sc")), "{a= 1; b= 2; }");
    objref const vector = new_vector();
    append(vector, cat::of(1));
    append(vector, cat::of("two"));
    EXPECT_EQ(written(vector), "[1, two, ]");
    objref const set = new_set();
    append(set, cat::of(1.0));
    EXPECT_EQ(written(set), "<1.00000, >");
}

TEST_F(WriterLayout, each_level_is_indented_by_four_more_columns) {
    objref const outer = new_map(), middle = new_map();
    put(middle, "in", two_ints());
    put(outer, "mid", middle);
    put(outer, "last", cat::of(0));
    EXPECT_EQ(written(outer), "{\n"
                              "  mid= {\n"
                              "      in= {\n"
                              "          a= 1;\n"
                              "          b= 2;\n"
                              "      }; \n"
                              "  }; \n"
                              "  last= 0;\n"
                              "}");
}

TEST_F(WriterLayout, the_columns_can_be_set) {
    cat::write_indent = 1;
    cat::write_indent0 = 0;
    objref const outer = new_map();
    put(outer, "in", two_ints());
    EXPECT_EQ(written(outer), "{\nin= {\n a= 1;\n b= 2;\n}; \n}");
    cat::write_indent = -3;
    EXPECT_EQ(written(outer), "{\nin= {\na= 1;\nb= 2;\n}; \n}");
}

TEST_F(WriterLayout, very_large_columns_wrap_and_are_restored) {
    cat::write_indent = std::numeric_limits<int>::min();
    objref const outer = new_map(), middle = new_map();
    put(middle, "in", two_ints("wc"));
    put(outer, "mid", middle);
    EXPECT_EQ(written(outer), "{\n  mid= {\nin= {\n  a= 1;\n  b= 2;\n}; \n  }; \n}");
    cat::DoWriteIndent const most(std::numeric_limits<int>::min());
}

TEST_F(WriterLayout, a_guard_changes_the_current_level) {
    cForeignType const foreign("test_indented", [](cObj &, objref &args) {
        cat::DoWriteIndent const more(3);
        stream_of(args) << text_state().indent();
        return true;
    });
    objref const map = new_map();
    put(map, "a", foreign.of(0));
    EXPECT_EQ(written(map), "{\n  a= test_indented(5);\n}");
    int const before = text_state().indent();
    {
        cat::DoWriteIndent const four;
        EXPECT_EQ(text_state().indent(), before + 4);
        cat::DoWriteIndent ten(10);
        EXPECT_EQ(text_state().indent(), before + 14);
        ten = four; // copies only the number
        EXPECT_EQ(text_state().indent(), before + 14);
    }
    EXPECT_EQ(text_state().indent(), before + 6);
    text_state().add_indent(-6);
}

TEST_F(WriterLayout, only_the_first_character_of_a_layout_is_used) {
    EXPECT_EQ(written(two_ints("s")), "{a= 1; b= 2; }");
    EXPECT_EQ(written(two_ints("single")), "{a= 1; b= 2; }");
    std::string const many = "{\n  a= 1;\n  b= 2;\n}";
    for (char const *layout : {"w", "wc", "", "x", "Sc"})
        EXPECT_EQ(written(two_ints(layout)), many);
    objref const map = two_ints();
    map->set_omember("wformat", cat::of(5)); // not a string
    EXPECT_EQ(written(map), many);
    EXPECT_STREQ(cat::wformat(*map), "");
    EXPECT_STREQ(cat::wformat(*two_ints()), "wc");
    EXPECT_STREQ(cat::wformat(*new_set()), "sc");
    EXPECT_STREQ(cat::wformat(*cat::of(5)), "wc"); // the global one
}

TEST_F(WriterLayout, a_type_may_write_entries_without_brackets) {
    objref const map = two_ints();
    EXPECT_EQ(entries_text(map, "sc", nullptr), "a= 1; b= 2; ");
    EXPECT_EQ(entries_text(map, "sc", &cat::type_map()), "a= 1; b= 2; ");
    EXPECT_EQ(entries_text(map, "sc", &cat::type_vector()), "1, 2, ");
    EXPECT_EQ(entries_text(map, "sc", &cat::type_set()), "1, 2, ");
    EXPECT_EQ(entries_text(map, "wc", nullptr), "\n  a= 1;\n  b= 2;\n");
    EXPECT_EQ(entries_text(map, "", nullptr), "\n  a= 1;\n  b= 2;\n");
    EXPECT_EQ(entries_text(map, nullptr, nullptr), "\n  a= 1;\n  b= 2;\n");
}

TEST_F(WriterLayout, methods_can_write_entries_without_brackets) {
    std::ostringstream os;
    objref holder = objref::adopt(new cOutHolder(os));
    holder->obid(0);
    objref const map = two_ints("sc");
    EXPECT_TRUE(cTomMap::m_write0(*map, holder));
    EXPECT_EQ(os.str(), "a= 1; b= 2; ");
    os.str("");
    objref const number = cat::of(5);
    EXPECT_TRUE(cTomOmmap::m_write(*number, holder));
    EXPECT_EQ(os.str(), "");
    number->set_omember("wformat", cat::of("sc"));
    number->set_omember("a", cat::of(7));
    EXPECT_TRUE(cTomOmmap::m_write(*number, holder));
    EXPECT_EQ(os.str(), "wformat= sc; a= 7; ");
}

TEST_F(WriterLayout, lines_are_flushed_one_by_one) {
    cCountFlushes buffer;
    std::ostream os(&buffer);
    two_ints()->writeobj(os);
    EXPECT_EQ(buffer.flushes, 4); // three line ends and the bracket
    two_ints("sc")->writeobj(os);
    EXPECT_EQ(buffer.flushes, 5);
}

TEST_F(WriterLayout, an_entry_can_be_written_alone) {
    objref const map = new_map("sc");
    put(map, "my key", cat::of("a b"));
    put(map, "in", two_ints("sc"));
    std::ostringstream os;
    cAttrHash const &hash = map_of(map).datamap();
    EXPECT_TRUE(hash.first()->write(os));
    EXPECT_TRUE(hash.last()->write(os));
    EXPECT_EQ(os.str(), "my key=\"a b\"; in={a= 1; b= 2; }; ");
    os.setstate(std::ios_base::failbit);
    EXPECT_FALSE(hash.first()->write(os));
}

// --- keys, skipped entries ---

TEST_F(WriterEdge, strings_are_quoted_if_necessary) {
    EXPECT_EQ(quoted(""), "\"\"");
    EXPECT_EQ(quoted("a b"), "\"a b\"");
    EXPECT_EQ(quoted("a\"b"), "\"a\\\"b\"");
    EXPECT_EQ(quoted("it's"), "\"it\\'s\"");
    EXPECT_EQ(quoted("C:\\x"), "\"C:\\\\x\"");
}

TEST_F(WriterEdge, keys_are_quoted_and_ints_are_numbers) {
    objref const map = new_map("sc");
    put(map, "my key", cat::of(1));
    put(map, cat::of(-7), cat::of(2));
    put(map, "", cat::of(3));
    put(map, cat::of(1.5), cat::of(4));
    EXPECT_EQ(written(map), "{\"my key\"= 1; -7= 2; \"\"= 3; 1.50000= 4; }");
}

TEST_F(WriterEdge, a_key_beginning_with_a_hash_sign_is_never_written) {
    objref const map = new_map("sc");
    put(map, "#", cat::of(1));
    put(map, "#x", cat::of(2));
    put(map, "x#", cat::of(3));
    EXPECT_EQ(written(map), "{\"x#\"= 3; }");
}

TEST_F(WriterLayout, values_without_text_are_skipped_but_constants_are_written) {
    objref const map = new_map("sc");
    put(map, "thing", objref::adopt(new cObj));
    put(map, "type", objref::share(&cat::type_int()));
    put(map, "nil", cat::nil());
    put(map, "last", cat::of(1));
    EXPECT_EQ(written(map), "{nil= #nil; last= 1; }");
    EXPECT_FALSE(cat::of(1)->is_void());
    EXPECT_TRUE(cat::of(1)->is_writable());
    EXPECT_TRUE(cat::nil()->is_writable());
    EXPECT_FALSE(objref::adopt(new cObj)->is_writable());
}

TEST_F(WriterLayout, data_without_text_is_written_as_a_comment) {
    objref const thing = objref::adopt(new cObj);
    objref const second = thing;
    EXPECT_EQ(written(thing), "niltype(/* id=" + std::to_string(thing->obid()) + ", refs=2 */)");
}

TEST_F(WriterLayout, a_skipped_value_leaves_a_gap_in_the_paths_of_a_vector) {
    objref const vector = new_vector(), shared = cat::of(5);
    append(vector, objref::adopt(new cObj));
    append(vector, shared);
    append(vector, shared);
    EXPECT_EQ(written(vector),
              "[5, #cRef(/1), ]"); // the key in this vector; when the text is read, the 5 has key 0
}

TEST_F(WriterLayout, values_of_types_that_are_not_bare_are_wrapped) {
    cForeignType const foreign("test_wrapped", [](cObj &obj, objref &args) {
        stream_of(args) << number_of(obj) << " things";
        return true;
    });
    EXPECT_EQ(written(foreign.of(3)), "test_wrapped(3 things)");
    EXPECT_EQ(cat::as_text(foreign.of(3)), "test_wrapped(3 things)");
    EXPECT_EQ(cat::as_string(foreign.of(3)), "test_wrapped(3 things)");
    objref const map = new_map("sc");
    put(map, "t", foreign.of(4));
    EXPECT_EQ(written(map), "{t= test_wrapped(4 things); }");
    foreign.type().setflags(tf_bare);
    EXPECT_EQ(written(map), "{t= 4 things; }");
}

TEST_F(WriterLayout, a_write_method_of_the_object_has_priority) {
    objref const number = cat::of(5);
    number->set_omember("write", make<cExeMember>(+[](cObj &, objref &args) {
                            stream_of(args) << "five";
                            return false;
                        }));
    std::ostringstream os;
    EXPECT_FALSE(number->writeobj(os));
    EXPECT_EQ(os.str(), "five");
    EXPECT_EQ(cat::as_text(number), "five");
    EXPECT_EQ(cat::as_string(number), "five");
}

TEST_F(WriterLayout, as_string_differs_only_for_strings) {
    EXPECT_EQ(cat::as_string(nullptr), "");
    EXPECT_EQ(cat::as_text(nullptr), "");
    EXPECT_EQ(cat::as_string(cat::of("a b\"")), "a b\"");
    EXPECT_EQ(cat::as_text(cat::of("a b\"")), "\"a b\\\"\"");
    EXPECT_EQ(cat::as_string(two_ints("sc")), "{a= 1; b= 2; }");
    EXPECT_EQ(cat::as_text(two_ints("sc")), "{a= 1; b= 2; }");
    for (char const *name :
         {"nil", "bad", "badfind", "true", "false", "REQUIRED", "IMPLIED", "FIXED"}) {
        objref const constant = cat::constmap().datamap().getitem(name);
        EXPECT_EQ(cat::as_text(constant), std::string("#") + name);
        EXPECT_EQ(cat::as_string(constant), std::string("#") + name);
        EXPECT_EQ(written(constant), std::string("#") + name);
    }
}

TEST_F(WriterLayout, a_string_constant_has_a_name_as_text_and_its_value_as_string) {
    objref const value = cat::of("v");
    cat::constmap().datamap().mapitem("test_const", value);
    EXPECT_EQ(cat::as_text(value), "#test_const");
    EXPECT_EQ(cat::as_string(value), "v");
    EXPECT_EQ(written(value), "#test_const");
}

// --- back references ---

TEST_F(WriterEdge, the_same_object_under_two_keys_is_written_once) {
    objref const map = new_map("sc"), shared = new_map("sc");
    put(map, "first", shared);
    put(map, "second", shared);
    EXPECT_EQ(written(map), "{first= {}; second= #cRef(/first); }");
    objref const outer = new_map("sc"), vector = new_vector();
    append(vector, shared);
    append(vector, shared);
    put(outer, "v", vector);
    EXPECT_EQ(written(outer), "{v= [{}, #cRef(/v/0), ]; }");
}

TEST_F(WriterLayout, the_same_scalar_or_constant_is_written_again_as_a_reference) {
    objref const map = new_map("sc"), one = cat::of(1);
    put(map, "a", one);
    put(map, "b", one);
    put(map, "c", cat::of(1));
    put(map, "d", cat::btrue());
    put(map, "e", cat::btrue());
    put(map, "f", cat::of(true));
    EXPECT_EQ(written(map), "{a= 1; b= #cRef(/a); c= 1; d= #true; e= #cRef(/d); f= true; }");
}

TEST_F(WriterLayout, a_path_contains_its_keys_as_written) {
    objref const map = new_map("sc"), inner = new_map("sc"), one = cat::of(1);
    put(inner, "a/b \"c\"", one);
    put(map, "my key", inner);
    put(map, "again", one);
    EXPECT_EQ(written(map), "{\"my key\"= {\"a/b \\\"c\\\"\"= 1; }; "
                            "again= #cRef(/\"my key\"/\"a/b \\\"c\\\"\"); }");
}

TEST_F(WriterLayout, each_outermost_write_begins_again) {
    objref const map = new_map("sc");
    put(map, "a", cat::btrue());
    EXPECT_EQ(written(map), "{a= #true; }");
    EXPECT_EQ(written(map), "{a= #true; }");
}

TEST_F(WriterLayout, writing_a_map_that_contains_itself_ends) {
    objref const map = new_map("sc");
    put(map, "me", map);
    EXPECT_EQ(written(map), "{me= {me= #cRef(/me); }; }");
    map_of(map).clear();
}

TEST_F(WriterLayout, temporaries_at_one_address_are_not_references) {
    cForeignType const foreign("test_temporaries", [](cObj &, objref &args) {
        for (int i = 0; i < 4; ++i) {
            objref const list = new_vector();
            append(list, cat::of(i));
            list->writeobj(stream_of(args));
        }
        return true;
    });
    objref const map = new_map("sc");
    put(map, "t", foreign.of(0));
    EXPECT_EQ(written(map), "{t= test_temporaries([0, ][1, ][2, ][3, ]); }");
}

// --- layouts in each other, comments ---

TEST_F(WriterEdge, a_one_line_layout_does_not_apply_to_children) {
    objref const vector = new_vector();
    append(vector, two_ints());
    append(vector, cat::of(3));
    EXPECT_EQ(written(vector), "[{\n      a= 1;\n      b= 2;\n  }, 3, ]");
}

TEST_F(WriterEdge, blanks_are_only_after_many_line_children_and_one_line_entries) {
    objref const map = new_map();
    put(map, "number", cat::of(1));
    put(map, "child", new_map());
    put(map, "line", two_ints("sc"));
    EXPECT_EQ(written(map), "{\n"
                            "  number= 1;\n"
                            "  child= {\n"
                            "  }; \n"
                            "  line= {a= 1; b= 2; };\n"
                            "}");
}

TEST_F(WriterLayout, comments_of_scalars_and_one_line_containers_are_after_the_separator) {
    objref const map = new_map(), number = cat::of(1), line = two_ints("sc");
    number->set_comment(" // one", true);
    line->set_comment("\t/* two */", true);
    put(map, "n", number);
    put(map, "l", line);
    EXPECT_EQ(written(map), "{\n  n= 1; // one\n  l= {a= 1; b= 2; };\t/* two */\n}");
}

TEST_F(WriterLayout, the_comment_of_a_many_line_container_is_after_the_opening_bracket) {
    objref const map = new_map(), inner = two_ints();
    inner->set_comment(" // inner", true);
    map->set_comment(" // outer", true);
    put(map, "in", inner);
    EXPECT_EQ(written(map), "{ // outer\n  in= { // inner\n      a= 1;\n      b= 2;\n  }; \n}");
}

TEST_F(WriterLayout, without_w_the_comment_of_the_container_is_not_written) {
    objref const map = two_ints("");
    map->set_comment(" // lost", true);
    EXPECT_EQ(written(map), "{\n  a= 1;\n  b= 2;\n}");
    objref const line = two_ints("sc");
    line->set_comment(" // lost", true);
    EXPECT_EQ(written(line), "{a= 1; b= 2; }");
}

TEST_F(WriterLayout, comments_of_entries_of_a_one_line_container_are_not_written) {
    objref const map = new_map("sc"), number = cat::of(1);
    number->set_comment(" // lost", true);
    put(map, "n", number);
    EXPECT_EQ(written(map), "{n= 1; }");
}

TEST_F(WriterLayout, a_comment_that_is_not_a_string_is_written_if_it_can_be_converted) {
    cForeignType foreign("test_comment", [](cObj &, objref &) { return true; });
    cat::type_string().set_converter(foreign.type(), [](cObj &to, objref &from) {
        static_cast<cObjDR<std::string> &>(to).val() = " // " + std::to_string(number_of(*from));
        return true;
    });
    objref const map = new_map(), number = cat::of(1), other = cat::of(2);
    number->set_omember("//", foreign.of(42));
    other->set_omember("//", cat::of(43)); // cannot be converted
    put(map, "n", number);
    put(map, "o", other);
    EXPECT_EQ(written(map), "{\n  n= 1; // 42\n  o= 2;\n}");
    cat::type_string().set_converter(foreign.type(), nullptr);
}
