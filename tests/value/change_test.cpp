// Listening to values: what is reported, how often, and what a callback may do.

#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csignalobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/core/ctypescope.h"
#include "qrv/text/write/cwriter.h"
#include "qrv/value/change.h"
#include "qrv/value/declare.h"
#include "qrv/value/reference.h"
#include "tests/support/fixture.h"

#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <string>
#include <utility>
#include <vector>

namespace {

qrv::value read(char const *text) {
    objref value;
    EXPECT_EQ(cObj::readobj(text, value), 0) << text;
    return value;
}

// The text on one line, with one blank for each run of white space.
std::string text_of(std::optional<qrv::value> const &value) {
    if (!value) return "-";
    std::string const text = cat::as_text(value->object());
    return std::regex_replace(text, std::regex("\\s+"), " ");
}

std::string text_of(qrv::change const &change) {
    return text_of(change.key) + ": " + text_of(change.old_value) + " -> " +
           text_of(change.new_value);
}

class Changes : public QrvTest {
  protected:
    ~Changes() override { EXPECT_EQ(messages(), ""); }

    // "key: old -> new; " of what is reported while `write` runs.
    template <class Write> std::string reported(qrv::value const &watched, Write const &write) {
        std::string text;
        qrv::connection const watch = watched.on_change([&](qrv::change const &change) {
            EXPECT_TRUE(change.source.is_shared_with(watched));
            text += text_of(change) + "; ";
        });
        write();
        return text;
    }
};

TEST_F(Changes, writes_of_entries_report_key_and_values) {
    qrv::value map = read("{a= 1; list= []}");
    EXPECT_EQ(reported(map, [&] { map["a"] = 2; }), "a: 1 -> 2; ");
    EXPECT_EQ(reported(map, [&] { map["b"] = "x"; }), "b: - -> x; ");
    EXPECT_EQ(reported(map, [&] { map.set("a", 3); }), "a: 2 -> 3; ");
    EXPECT_EQ(reported(map, [&] { map.set("a", 3); }), "a: 3 -> 3; ");
    EXPECT_EQ(reported(map, [&] { map.set(7, 3); }), "7: - -> 3; ");
    EXPECT_EQ(reported(map, [&] { map["a"] = nullptr; }), "a: 3 -> #nil; ");
    EXPECT_EQ(reported(map, [&] { map.erase("a"); }), "a: #nil -> -; ");
    EXPECT_EQ(reported(map, [&] { map.erase("a"); }), "");
    EXPECT_EQ(reported(map, [&] { map.erase(7); }), "7: 3 -> -; ");
    EXPECT_EQ(reported(map, [&] { map.set("x/y/z", 1); }), "x: - -> { y= { z= 1; }; }; ");
    EXPECT_EQ(reported(map, [&] { map["p"]["q"] = 1; }), "p: - -> { q= 1; }; ");
}

TEST_F(Changes, writes_of_positions_report_position_and_value) {
    qrv::value list = read("[a, b]");
    EXPECT_EQ(reported(list, [&] { list.push_back("c"); }), "2: - -> c; ");
    EXPECT_EQ(reported(list, [&] { list.insert(1, "x"); }), "1: - -> x; ");
    EXPECT_EQ(reported(list, [&] { list[0] = "y"; }), "0: a -> y; ");
    EXPECT_EQ(reported(list, [&] { list.set(4, "z"); }), "4: - -> z; ");
    EXPECT_EQ(reported(list, [&] { list.erase(1); }), "1: x -> -; ");
    EXPECT_EQ(reported(list, [&] { list.erase(9); }), "");
    qrv::value set = read("<a, b>");
    EXPECT_EQ(reported(set, [&] { set.push_back("c"); }), "2: - -> c; ");
    EXPECT_EQ(reported(set, [&] { set.push_back("a"); }), "");
}

TEST_F(Changes, other_operations_are_reported_once_without_a_key) {
    qrv::value map = read("{a= 1; b= 2}");
    EXPECT_EQ(reported(map, [&] { map.rename("a", "c"); }), "-: - -> -; ");
    EXPECT_EQ(reported(map, [&] { map.assign(read("{a= 1}")); }), "-: - -> -; ");
    EXPECT_EQ(reported(map, [&] { map.set_comment("text"); }), "-: - -> -; ");
    EXPECT_EQ(reported(map, [&] { map.clear(); }), "-: - -> -; ");
    qrv::value number = 5;
    EXPECT_EQ(reported(number, [&] { number.assign(6); }), "-: - -> -; ");
}

TEST_F(Changes, merging_reports_each_entry_where_it_is) {
    qrv::value tree = read("{a= 1; part= {b= 2}}");
    qrv::value const more = read("{a= 3; part= {b= 4; c= 5}; d= 6}");
    qrv::value const part = tree.at("part");
    EXPECT_EQ(reported(tree, [&] { tree.merge(more); }), "a: 1 -> 3; d: - -> 6; ");
    EXPECT_EQ(reported(part, [&] { tree.merge(more); }), "b: 4 -> 4; c: 5 -> 5; ");
}

TEST_F(Changes, reading_and_refused_writes_report_nothing) {
    qrv::value map = read("{a= 1; list= [1]}");
    EXPECT_EQ(reported(map,
                       [&] {
                           static_cast<void>(map.get<int>("a"));
                           static_cast<void>(map.clone());
                           EXPECT_THROW(map.set("list/x", 1), qrv::error);
                           EXPECT_THROW(map.set("a/x", 1), qrv::error);
                           EXPECT_THROW(map.rename("x", "y"), qrv::error);
                           EXPECT_THROW(map["a"] = map, qrv::error);
                       }),
              "");
}

TEST_F(Changes, a_change_in_the_layer_below_has_no_key) {
    qrv::value map = read("{a= 1}");
    EXPECT_EQ(reported(map, [&] { map.object()->setattr(own_key(std::string("a")), cat::of(2)); }),
              "");
    EXPECT_EQ(reported(map, [&] { map.object()->changed(); }), "-: - -> -; ");
}

TEST_F(Changes, slots_of_the_object_are_called_for_changes_of_the_value) {
    qrv::value map = read("{a= 1}");
    int calls = 0;
    auto const count = [&calls] { ++calls; };
    cFunctionSlot const slot(count, map.object()->force_changed_signal());
    map["a"] = 2;
    map.erase("a");
    EXPECT_EQ(calls, 2);
}

TEST_F(Changes, a_part_reports_its_own_changes_only) {
    qrv::value tree = read("{part= {a= 1}}");
    qrv::value part = tree.at("part");
    EXPECT_EQ(reported(tree, [&] { part["a"] = 2; }), "");
    EXPECT_EQ(reported(tree, [&] { tree["part"]["a"] = 2; }), "");
    EXPECT_EQ(reported(part, [&] { tree["part"]["a"] = 3; }), "a: 2 -> 3; ");
    EXPECT_EQ(reported(part, [&] { tree.set("part/b", 3); }), "b: - -> 3; ");
    EXPECT_EQ(reported(part, [&] { tree["part"] = 3; }), ""); // another object
}

TEST_F(Changes, a_part_can_be_listened_to_through_a_reference) {
    qrv::value tree = read("{part= {a= 1}}");
    int calls = 0;
    qrv::connection const watch = tree["part"].on_change([&](auto const &) { ++calls; });
    tree.set("part/a", 2);
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(tree["part"].conforms_to("map"));
    EXPECT_THROW(static_cast<void>(tree["x"].on_change([](auto const &) {})), qrv::path_error);
}

TEST_F(Changes, all_copies_of_a_value_are_listened_to) {
    qrv::value map = read("{a= 1}");
    qrv::value copy = map, apart = map.clone();
    EXPECT_EQ(reported(map, [&] { copy["a"] = 2; }), "a: 1 -> 2; ");
    EXPECT_EQ(reported(map, [&] { apart["a"] = 3; }), "");
    EXPECT_EQ(reported(map, [&] { copy = nullptr; }), "");
}

TEST_F(Changes, objects_of_declared_types_report_changes) {
    cat::TypeScope const types;
    qrv::declare_choice("Mode", {"auto", "manual"});
    qrv::declare("Axis").required<int>("x").choice("mode", "Mode", "auto");
    qrv::value axis = qrv::type("Axis").make(read("{x= 1}"));
    EXPECT_EQ(reported(axis, [&] { axis["x"] = 2; }), "x: 1 -> 2; ");
    EXPECT_EQ(reported(axis, [&] { EXPECT_THROW(axis["x"] = "y", qrv::type_error); }), "");
    EXPECT_EQ(reported(axis, [&] { EXPECT_THROW(axis["y"] = 1, qrv::error); }), "");
    qrv::value mode = axis.at("mode");
    EXPECT_EQ(reported(mode, [&] { mode.assign("manual"); }), "-: - -> -; ");
}

TEST_F(Changes, a_type_reports_its_changes_once) {
    cat::TypeScope const types;
    qrv::type const declared = qrv::declare_choice("Mode", {"auto"});
    qrv::value type = objref::share(&declared.object());
    EXPECT_EQ(reported(type, [&] { type["manual"] = 5; }), "-: - -> -; ");
}

TEST_F(Changes, a_connection_ends_with_its_scope) {
    qrv::value map = read("{}");
    int calls = 0;
    {
        qrv::connection watch = map.on_change([&](auto const &) { ++calls; });
        map["a"] = 1;
        EXPECT_TRUE(watch.is_connected());
        qrv::connection moved = std::move(watch);
        EXPECT_TRUE(moved.is_connected());
        map["a"] = 2;
        EXPECT_EQ(calls, 2);
    }
    map["a"] = 3;
    EXPECT_EQ(calls, 2);
    qrv::connection watch = map.on_change([&](auto const &) { ++calls; });
    watch = qrv::connection();
    map["a"] = 4;
    EXPECT_EQ(calls, 2);
    EXPECT_FALSE(qrv::connection().is_connected());
}

TEST_F(Changes, a_value_may_be_destroyed_before_its_connection) {
    qrv::connection watch;
    {
        qrv::value map = read("{}");
        watch = map.on_change([](auto const &) {});
        EXPECT_TRUE(watch.is_connected());
    }
    EXPECT_FALSE(watch.is_connected());
    watch.disconnect();
    watch.disconnect();
}

TEST_F(Changes, callbacks_are_called_in_the_order_of_connection) {
    qrv::value map = read("{}");
    std::string order;
    qrv::connection const first = map.on_change([&](auto const &) { order += "1"; });
    qrv::connection const second = map.on_change([&](auto const &) { order += "2"; });
    map["a"] = 1;
    EXPECT_EQ(order, "12");
}

TEST_F(Changes, a_callback_may_disconnect_itself_and_others) {
    qrv::value map = read("{}");
    qrv::connection self, other;
    std::string calls;
    self = map.on_change([&, text = std::string(100, 'x')](auto const &) {
        other.disconnect();
        self.disconnect();
        calls += text.substr(0, 1); // what the callback holds is still there
    });
    other = map.on_change([&](auto const &) { calls += "o"; });
    map["a"] = 1;
    map["a"] = 2;
    EXPECT_EQ(calls, "x");
}

TEST_F(Changes, a_callback_may_destroy_the_value) {
    auto map = std::make_unique<qrv::value>(read("{}"));
    std::string seen;
    qrv::connection const watch = map->on_change([&](qrv::change const &change) {
        map = nullptr;
        seen = cat::as_text(change.source.object());
    });
    qrv::value copy = *map;
    copy["a"] = 1;
    EXPECT_EQ(seen, "{a= 1; }");
    copy = nullptr;
    EXPECT_FALSE(watch.is_connected());
}

TEST_F(Changes, a_callback_may_destroy_the_value_that_is_being_written) {
    qrv::value map = read("{}");
    std::string seen;
    qrv::connection const watch = map.on_change([&](qrv::change const &change) {
        map = nullptr;
        seen = cat::as_text(change.source.object());
    });
    map["a"] = 1;
    EXPECT_EQ(seen, "{a= 1; }");
    EXPECT_TRUE(map.is_nil());
    EXPECT_FALSE(watch.is_connected());
}

TEST_F(Changes, a_change_inside_a_callback_calls_it_again) {
    qrv::value map = read("{speed= 0}");
    std::string text;
    qrv::connection const limit = map.on_change([&](qrv::change const &change) {
        text += text_of(change) + "; ";
        if (map.get_or("speed", 0) > 100) map["speed"] = 100;
        text += "end " + text_of(change) + "; ";
    });
    map["speed"] = 170;
    EXPECT_EQ(text, "speed: 0 -> 170; speed: 170 -> 100; end speed: 170 -> 100; "
                    "end speed: 0 -> 170; ");
    EXPECT_EQ(map.get<int>("speed"), 100);
}

TEST_F(Changes, a_callback_connected_inside_a_callback_is_called_last) {
    qrv::value v = read("{a= 1}");
    std::string calls;
    std::optional<qrv::connection> inner;
    auto const first = v.on_change([&](qrv::change const &) {
        calls += "first ";
        if (!inner) inner = v.on_change([&](qrv::change const &) { calls += "inner "; });
    });
    auto const second = v.on_change([&](qrv::change const &) { calls += "second "; });
    v["a"] = 2;
    EXPECT_EQ(calls, "first second inner ");
    v["a"] = 3;
    EXPECT_EQ(calls, "first second inner first second inner ");
}

TEST_F(Changes, a_scalar_reports_only_an_assignment_in_place) {
    qrv::value v = 5;
    qrv::value const same = v;
    int calls = 0;
    auto const watch = v.on_change([&](qrv::change const &change) {
        ++calls;
        EXPECT_FALSE(change.key);
        EXPECT_EQ(change.source, 6);
    });
    v.assign(6);
    EXPECT_EQ(calls, 1);
    v = 7;
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(same, 6);
}

TEST_F(Changes, a_plain_report_inside_a_callback_has_no_key) {
    qrv::value map = read("{}");
    std::vector<std::string> seen;
    qrv::connection const watch = map.on_change([&](qrv::change const &change) {
        seen.push_back(text_of(change));
        if (seen.size() == 1) map.object()->changed();
    });
    qrv::connection const other =
        map.on_change([&](qrv::change const &change) { seen.push_back(text_of(change)); });
    map["a"] = 1;
    EXPECT_EQ(seen, (std::vector<std::string>{"a: - -> 1", "-: - -> -", "-: - -> -", "a: - -> 1"}));
}

TEST_F(Changes, an_exception_of_a_callback_reaches_the_writer) {
    qrv::value map = read("{}");
    bool later = false;
    qrv::connection const first = map.on_change([](auto const &) { throw 7; });
    qrv::connection const second = map.on_change([&](auto const &) { later = true; });
    EXPECT_THROW(map["a"] = 1, int);
    EXPECT_EQ(map.get<int>("a"), 1);
    EXPECT_FALSE(later);
    EXPECT_THROW(map.erase("a"), int);
    EXPECT_FALSE(map.contains("a"));
    EXPECT_THROW(map.set("l", read("[]")), int);
    EXPECT_TRUE(map.at("l").empty());
}

TEST_F(Changes, errors_of_the_library_inside_a_callback_are_reported_as_usual) {
    qrv::value map = read("{}");
    qrv::value const list = read("[]");
    cErrorLog errors;
    qrv::connection const watch = map.on_change([&](auto const &) {
        list.object()->setattr(own_key(std::string("no position")), cat::of(1));
    });
    map["a"] = 1;
    EXPECT_EQ(errors.count(), 1u);
}

TEST_F(Changes, nil_cannot_be_listened_to) {
    EXPECT_THROW(static_cast<void>(qrv::value().on_change([](auto const &) {})), qrv::type_error);
}

TEST_F(Changes, a_callback_need_not_be_copyable) {
    qrv::value map = read("{}");
    int calls = 0;
    qrv::connection const watch =
        map.on_change([&calls, held = std::make_unique<int>(3)](auto const &) { calls += *held; });
    map["a"] = 1;
    EXPECT_EQ(calls, 3);
}

TEST_F(Changes, a_value_with_a_listener_is_written_and_compared_as_before) {
    qrv::value const map = read("{a= 1}");
    qrv::connection const watch = map.on_change([](auto const &) {});
    EXPECT_EQ(cat::as_text(map.object()), "{a= 1; }");
    EXPECT_EQ(map, read("{a= 1}"));
}

static_assert(std::is_nothrow_move_constructible_v<qrv::connection>);
static_assert(!std::is_copy_constructible_v<qrv::connection>);

} // namespace
