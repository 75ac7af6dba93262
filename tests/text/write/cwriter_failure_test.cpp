// The writer: errors in the middle, user code, the end of the stack, hostile locales.
#include "tests/text/hostile_locale.h"
#include "tests/text/write_support.h"

#include "qrv/core/ceros.h"
#include "qrv/text/write/cexacttext.h"
#include "text/state/ctext_state.h"

#include <ios>
#include <optional>
#include <stdexcept>

using namespace test;

namespace {

class WriterFailure : public QrvTest {};

bool throw_error(cObj &obj, objref &args) {
    stream_of(args) << "begun";
    throw cErr(0x40000007U, "test error " + std::to_string(number_of(obj)));
}

bool throw_foreign(cObj &, objref &) { throw std::runtime_error("foreign"); }

bool raise_error(cObj &, objref &args) {
    stream_of(args) << "x";
    eros().clear();
    eros().set_code(0x40000009U);
    eros() << "raised";
    return raise_eros();
}

void expect_idle() {
    EXPECT_TRUE(text_state().idle());
    objref const map = new_map();
    put(map, "a", cat::of(1));
    EXPECT_EQ(written(map), "{\n  a= 1;\n}");
}

objref nest(objref const &value, int levels) {
    objref inner = value;
    for (int i = 0; i < levels; ++i) {
        objref const outer = new_map();
        put(outer, "k", inner);
        inner = outer;
    }
    return inner;
}

} // namespace

TEST_F(WriterFailure, an_error_in_a_value_is_reported_and_the_rest_is_written) {
    cForeignType const foreign("test_throws", throw_error);
    objref const map = new_map(), inner = new_map("sc");
    put(inner, "bad", foreign.of(1));
    put(inner, "good", cat::of(2));
    put(map, "in", inner);
    put(map, "last", cat::of(3));
    messages();
    EXPECT_EQ(written(map), "{\n  in= {bad= test_throws(begun; good= 2; };\n  last= 3;\n}");
    EXPECT_EQ(messages(), "cErr during write of container, path='/in/bad':\ntest error 1\n");
    expect_idle();
}

TEST_F(WriterFailure, every_failed_value_is_reported) {
    cForeignType const foreign("test_throws", throw_error);
    objref const vector = new_vector();
    for (int i = 0; i < 3; ++i) append(vector, foreign.of(i));
    messages();
    written(vector);
    EXPECT_EQ(messages(), "cErr during write of container, path='/0':\ntest error 0\n"
                          "cErr during write of container, path='/1':\ntest error 1\n"
                          "cErr during write of container, path='/2':\ntest error 2\n");
    expect_idle();
}

TEST_F(WriterFailure, an_error_at_top_level_or_in_a_key_is_rethrown) {
    cForeignType const foreign("test_throws", throw_error);
    EXPECT_THROW(written(foreign.of(1)), cErr);
    foreign.type().set_hash(cat::hash_int, cat::heq_int);
    foreign.type().set_tmember("newobj", cat::type_int().tmember("newobj"));
    objref const map = new_map();
    put(map, foreign.of(5), cat::of(1));
    EXPECT_THROW(written(map), cErr);
    expect_idle();
}

TEST_F(WriterFailure, an_error_in_a_key_of_an_inner_map_ends_that_map) {
    cForeignType const foreign("test_throws", throw_error);
    foreign.type().set_hash(cat::hash_int, cat::heq_int);
    objref const map = new_map("sc"), inner = new_map("sc");
    put(inner, foreign.of(5), cat::of(1));
    put(map, "in", inner);
    put(map, "last", cat::of(2));
    messages();
    EXPECT_EQ(written(map), "{in= {test_throws(begun; last= 2; }");
    EXPECT_EQ(messages(), "cErr during write of container, path='/in':\ntest error 5\n");
    expect_idle();
}

TEST_F(WriterFailure, other_exceptions_propagate_and_leave_the_state_idle) {
    cForeignType const foreign("test_foreign", throw_foreign);
    EXPECT_THROW(written(nest(foreign.of(1), 5)), std::runtime_error);
    expect_idle();
    EXPECT_THROW(cat::as_text(nest(foreign.of(1), 5)), std::runtime_error);
    expect_idle();
}

TEST_F(WriterFailure, errors_that_a_handler_throws_are_reported_with_the_path) {
    cForeignType const foreign("test_raises", raise_error);
    objref const map = nest(foreign.of(1), 2);
    cat::errhandler().throw_mask(0x40000000U);
    cat::errhandler().silent_mask(0xFFFFFFFFU);
    messages();
    written(map);
    EXPECT_EQ(messages(), "cErr during write of container, path='/k/k':\nraised\n");
    expect_idle();
}

TEST_F(WriterFailure, a_bad_stream_is_visible_only_in_its_state) {
    std::ostringstream os;
    os.setstate(std::ios_base::badbit);
    messages();
    EXPECT_TRUE(nest(cat::of(1), 3)->writeobj(os));
    EXPECT_TRUE(os.bad());
    EXPECT_EQ(messages(), "");
    expect_idle();
}

TEST_F(WriterFailure, a_stream_that_throws_leaves_the_state_idle) {
    std::ostream os(nullptr);
    os.clear();
    try {
        os.exceptions(std::ios_base::badbit | std::ios_base::failbit);
    } catch (std::ios_base::failure const &) {
    }
    EXPECT_THROW(nest(cat::of(1), 3)->writeobj(os), std::ios_base::failure);
    expect_idle();
}

TEST_F(WriterFailure, a_method_may_remove_its_neighbours) {
    static cAttrHash *hash = nullptr;
    cForeignType const foreign("test_removes", [](cObj &, objref &args) {
        hash->delitem("b");
        stream_of(args) << "x";
        return true;
    });
    objref const map = new_map("sc");
    put(map, "a", foreign.of(1));
    put(map, "b", cat::of(2));
    put(map, "c", cat::of(3));
    hash = &map_of(map).datamap();
    EXPECT_EQ(written(map), "{a= test_removes(x); c= 3; }");
    expect_idle();
}

TEST_F(WriterFailure, a_method_may_clear_all_containers_above_it) {
    static cMapObj *top = nullptr;
    cForeignType const foreign("test_clears", [](cObj &, objref &args) {
        top->clear();
        stream_of(args) << "x";
        return true;
    });
    for (bool const exact : {false, true})
        for (char const *layout : {"wc", "sc"}) {
            objref const map = new_map(layout), inner = new_map(layout), value = foreign.of(1);
            {
                objref const middle = new_map(layout);
                put(middle, "a", value);
                put(middle, "b", cat::of(2));
                put(inner, "middle", middle);
                put(map, "in", inner);
            }
            top = exact ? &map_of(inner) : &map_of(map);
            std::optional<cat::ExactText> guard;
            if (exact) guard.emplace();
            EXPECT_EQ(written(map).substr(0, 1), "{");
            EXPECT_TRUE(text_state().idle());
        }
}

TEST_F(WriterFailure, a_method_may_remove_its_own_entry) {
    static cAttrHash *hash = nullptr;
    cForeignType const foreign("test_removes", [](cObj &, objref &args) {
        hash->delitem("a");
        stream_of(args) << "x";
        return true;
    });
    objref const map = new_map("sc"), value = foreign.of(1);
    put(map, "a", value);
    put(map, "b", cat::of(2));
    hash = &map_of(map).datamap();
    EXPECT_EQ(written(map), "{a= test_removes(x); b= 2; }");
    put(map, "a", value);
    map_of(map).datamap().rename(make_key(std::string("b")), make_key(std::string("c")));
    cat::ExactText const guard;
    EXPECT_EQ(written(map), "{c= 2; }");
    EXPECT_EQ(guard.failed(), 0u);
}

TEST_F(WriterFailure, a_method_may_change_the_layout_of_its_container) {
    static cObj *container = nullptr;
    cForeignType const foreign("test_relayouts", [](cObj &, objref &args) {
        container->set_omember("wformat", cat::of("wc"));
        stream_of(args) << "x";
        return true;
    });
    objref const map = new_map("sc");
    put(map, "a", foreign.of(1));
    put(map, "b", cat::of(2));
    container = map.get();
    EXPECT_EQ(written(map), "{a= test_relayouts(x); b= 2; }"); // read once, at the start
}

TEST_F(WriterFailure, too_deep_values_fail_the_stream_and_are_reported_once) {
    cat::write_indent = 0;
    objref const chain = nest(cat::of(1), 50'000);
    cErrorLog errors;
    std::ostringstream os;
    chain->writeobj(os);
    EXPECT_TRUE(os.fail());
    ASSERT_EQ(errors.count(), 1u);
    EXPECT_EQ(errors.last_code(), 0x40000001U);
    std::string const text = errors.last_text();
    EXPECT_EQ(text.substr(0, 50), "Value cannot be written, path : /k/k/k/k/k/k/k/k/k");
    EXPECT_LT(text.size(), 1100u);
    cat::write_indent = 4;
    expect_idle();
}

TEST_F(WriterFailure, a_write_method_that_calls_itself_endlessly_fails_the_same_way) {
    cForeignType const foreign("test_chain", [](cObj &obj, objref &args) {
        return obj.writeobj(stream_of(args)); // calls itself without end
    });
    cErrorLog errors;
    std::ostringstream os;
    EXPECT_FALSE(foreign.of(1)->writeobj(os));
    EXPECT_TRUE(os.fail());
    EXPECT_EQ(errors.text(), "0x40000001 Value cannot be written, path : \n");
    EXPECT_FALSE(cat::as_text(foreign.of(1)).empty());
    EXPECT_EQ(errors.count(), 2u);
}

TEST_F(WriterFailure, the_global_locale_does_not_affect_the_librarys_text) {
    cHostileLocale const hostile;
    EXPECT_EQ(cat::as_text(cat::of(1234567)), "1234567");
    EXPECT_EQ(cat::as_text(cat::of(1234567.0)), "1.23457e+06");
    EXPECT_EQ(cat::as_text(cat::of(1.5f)), "1.50000f");
    objref const map = new_map("sc");
    put(map, cat::of(1234567), cat::of(1.5));
    put(map, "v", cat::of(7654321));
    EXPECT_EQ(cat::as_text(map), "{1234567= 1.50000; v= 7654321; }");
}

TEST_F(WriterFailure, a_callers_stream_keeps_its_own_locale) {
    cHostileLocale const hostile;
    std::ostringstream os; // uses the global one
    cat::of(1234567)->writeobj(os);
    EXPECT_EQ(os.str(), "1.234.567");
}
