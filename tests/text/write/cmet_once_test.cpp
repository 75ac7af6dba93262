// A value with one owner can occur only once, so the writer does not record its path. But user code
// can share such values. So before user code first runs, the writer records all values written so
// far.
#include "tests/text/write_support.h"

#include "qrv/text/write/cexacttext.h"
#include "text/state/ctext_state.h"
#include "text/write/cmet_once.h"

#include <functional>
#include <utility>

using namespace test;

namespace {

class MetOnce : public QrvTest {
  public:
    ~MetOnce() override { during = nullptr; }

  protected:
    static inline std::function<void(std::ostream &)> during;
    cForeignType const acting_{"act", [](cObj &, objref &args) {
                                   if (during) during(stream_of(args));
                                   return true;
                               }};
};

objref lone_vector(int number) {
    objref made = new_vector();
    append(made, cat::of(number));
    return made;
}

// A map on one line. It is the only owner of its vector, which is followed by an object that runs
// `during` when it is written.
objref map_with_lone(objref const &acting) {
    objref made = new_map("sc");
    put(made, "lone", lone_vector(1));
    put(made, "act", acting);
    return made;
}

std::string exact(objref const &ref) {
    cat::ExactText const guard;
    return written(ref);
}

} // namespace

TEST_F(MetOnce, a_value_that_user_code_shares_later_is_written_as_a_reference) {
    objref const map = map_with_lone(acting_.of(1));
    during = [&map](std::ostream &) {
        put(map, "again", map->getattr(own_key(std::string("lone"))));
    };
    EXPECT_EQ(written(map), "{lone= [1, ]; act= act(); again= #cRef(/lone); }");
    EXPECT_EQ(exact(map), "{lone= [1, ]; act= act(); again= #cRef(/lone); }");
}

TEST_F(MetOnce, values_inside_a_written_value_are_also_recorded) {
    objref const map = new_map("sc"), inner = new_map("sc");
    put(inner, "a b", lone_vector(1));
    put(inner, "last", lone_vector(2));
    put(map, "in", inner);
    put(map, "act", acting_.of(1));
    during = [&inner](std::ostream &os) { inner->writeobj(os); };
    EXPECT_EQ(written(map), "{in= {\"a b\"= [1, ]; last= [2, ]; }; "
                            "act= act({\"a b\"= #cRef(/in/\"a b\"); last= #cRef(/in/last); }); }");
}

TEST_F(MetOnce, a_container_being_written_is_recorded_as_far_as_it_is_written) {
    objref const map = map_with_lone(acting_.of(1));
    put(map, "later", lone_vector(2));
    during = [&map](std::ostream &os) {
        during = nullptr;
        map->writeobj(os);
    };
    EXPECT_EQ(written(map), "{lone= [1, ]; act= act({lone= #cRef(/lone); act= #cRef(/act); "
                            "later= [2, ]; }); later= #cRef(/act/later); }");
}

TEST_F(MetOnce, exact_text_counts_positions_as_the_reader_does) {
    objref const vector = new_vector();
    append(vector, lone_vector(1));
    append(vector, lone_vector(2));
    append(vector, acting_.of(1));
    map_of(vector).datamap().delitem(own_key(0));
    during = [&vector](std::ostream &) {
        append(vector, map_of(vector).datamap().first()->valref());
    };
    EXPECT_EQ(written(vector), "[[2, ], act(), #cRef(/1), ]");
    map_of(vector).datamap().delitem(own_key(3));
    EXPECT_EQ(exact(vector), "[[2, ], act(), #cRef(/0), ]");
}

TEST_F(MetOnce, exact_text_omits_a_reference_to_an_open_container) {
    objref const map = new_map("sc");
    objref inner = map_with_lone(acting_.of(1));
    cObj *const open = inner.get();
    put(map, "in", std::exchange(inner, nullptr));
    during = [open](std::ostream &) { put(objref::share(open), "self", objref::share(open)); };
    cErrorLog errors;
    EXPECT_EQ(exact(map), "{in= {lone= [1, ]; act= act(); }; }");
    EXPECT_EQ(errors.text(), "0x40000001 Value cannot be written, path : /in/self\n");
    map_of(objref::share(open)).datamap().delitem("self");
}

TEST_F(MetOnce, a_container_in_a_shared_hash_is_found_again) {
    objref const map = new_map("sc");
    put(map, "in", new_vector());
    objref const inner = map->getattr(own_key(std::string("in")));
    append(inner, objref::adopt(new cMapObj(map_of(map).datamap_ref())));
    map_of(inner).datamap().first()->value().set_omember("wformat", cat::of("sc"));
    EXPECT_EQ(written(map), "{in= [{in= #cRef(/in); }, ]; }");
    cErrorLog errors;
    EXPECT_EQ(exact(map), "{in= [{}, ]; }");
    EXPECT_EQ(errors.text(), "0x40000001 Value cannot be written, path : /in/0/in\n");
    map_of(inner).clear();
}

TEST_F(MetOnce, a_container_that_contains_itself_is_recorded_at_its_first_occurrence) {
    objref const map = new_map("sc");
    put(map, "lone", lone_vector(1));
    put(map, "self", map);
    EXPECT_EQ(written(map), "{lone= [1, ]; self= {lone= #cRef(/lone); self= #cRef(/self); }; }");
    map_of(map).clear();
}

TEST_F(MetOnce, forty_levels_of_values_under_keys_with_equal_text_are_written) {
    // Each level contains the next one twice, under keys whose texts are equal, with six digits.
    objref inner = new_map("sc");
    put(inner, "end", lone_vector(1));
    for (int i = 0; i < 40; ++i) {
        objref const outer = new_map("sc");
        put(outer, cat::of(0.12345678), inner);
        put(outer, cat::of(0.12345679), inner);
        inner = outer;
    }
    objref const map = new_map("sc");
    put(map, "in", inner);
    put(map, "act", acting_.of(1));
    std::string const text = written(map); // never ends if values are visited twice: 2^40 steps
    EXPECT_EQ(text.substr(text.size() - 15), "; act= act(); }");
}
