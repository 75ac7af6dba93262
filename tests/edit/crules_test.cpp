// The rules of a declared type that a value breaks.

#include "qrv/edit/crules.h"

#include "qrv/containers/cattrset.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/core/ctypescope.h"
#include "qrv/text/read/creadreport.h"
#include "qrv/text/write/cwriter.h"
#include "tests/core/hash_support.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"

#include <gtest/gtest.h>

namespace {

using qrv::edit::BrokenRule;
using qrv::edit::Rule;

using test::read;

std::string text_of(objref const &value) {
    if (!value) return "-";
    return value->is_type() ? static_cast<cTypeObj const &>(*value).name() : cat::as_text(value);
}

// One line for each broken rule: "/from Pixel/x type int, not 1.50000".
std::string text_of(std::vector<BrokenRule> const &all) {
    static constexpr char const *names[] = {"declared", "required", "type", "fixed", "choice"};
    std::string text;
    for (BrokenRule const &broken : all)
        text += broken.path + " " + broken.type->name() + "/" + text_of(broken.key) + " " +
                names[static_cast<int>(broken.rule)] + " " + text_of(broken.expected) + ", not " +
                text_of(broken.actual) + "\n";
    return text;
}

class Rules : public QrvTest {
  protected:
    Rules() {
        declared_ = read("{Mode= choice({auto= 1; manual= 2});"
                         " Pixel= attlist(x= attspec(type=int; flag=#REQUIRED);"
                         "                y= attspec(type=int; flag=#REQUIRED);"
                         "                color= attspec(default= red);"
                         "                mode= attspec(type=Mode; flag=#IMPLIED));"
                         " Fixed= attlist(f= attspec(default=5; flag=#FIXED));"
                         " Line= attlist(from= attspec(type=Pixel; flag=#REQUIRED);"
                         "               points= attspec(flag=#IMPLIED));"
                         " Empty= attlist(); None= choice(#nil)}");
    }

    static std::string broken(objref const &value, char const *type) {
        return text_of(qrv::edit::broken_rules(value, cat::find_type(type)));
    }
    static std::string broken(std::string const &text, char const *type) {
        return broken(read(text), type);
    }
    static std::string all_broken(objref const &value, char const *type) {
        return text_of(qrv::edit::all_broken_rules(value, cat::find_type(type)));
    }
    // Stores a value without checking the rules of the type.
    static void force(objref const &object, char const *key, objref const &value) {
        auto &map = dynamic_cast<cMapObj &>(*object);
        map.datamap().find(key)->valref_() = value;
    }

  private:
    cat::TypeScope const types_;
    objref declared_;
};

TEST_F(Rules, a_valid_object_breaks_none) {
    EXPECT_EQ(broken("Pixel(x= 1; y= 2)", "Pixel"), "");
    EXPECT_EQ(broken("Pixel(x= 1; y= 2; color= 7; mode= Mode(auto))", "Pixel"), "");
    EXPECT_EQ(broken("Mode(auto)", "Mode"), "");
    EXPECT_EQ(broken("Empty()", "Empty"), "");
    EXPECT_EQ(broken("1", "int"), "");
}

TEST_F(Rules, a_map_from_which_an_object_can_be_created_breaks_no_rule) {
    EXPECT_EQ(broken("{y= 2; x= 1}", "Pixel"), "");
    EXPECT_EQ(broken("{}", "Empty"), "");
    EXPECT_EQ(broken("{}", "Fixed"), "");
}

TEST_F(Rules, each_key_of_a_map_breaks_at_most_one_rule) {
    EXPECT_EQ(broken("{x= 1.5; y= #nil; colr= green; mode= auto; color= #nil}", "Pixel"),
              " Pixel/x type int, not 1.50000\n"
              " Pixel/y required -, not #nil\n"
              " Pixel/colr declared -, not green\n"
              " Pixel/mode type Mode, not auto\n");
}

TEST_F(Rules, required_keys_that_are_missing_come_last) {
    EXPECT_EQ(broken("{z= 1}", "Pixel"), " Pixel/z declared -, not 1\n"
                                         " Pixel/x required -, not -\n"
                                         " Pixel/y required -, not -\n");
}

TEST_F(Rules, an_object_breaks_a_rule_exactly_if_it_is_not_valid) {
    objref const pixel = read("Pixel(x= 1; y= 2)");
    EXPECT_TRUE(cTomAttrset::validate(*pixel));
    force(pixel, "x", cat::of(1.5));
    EXPECT_FALSE(cTomAttrset::validate(*pixel));
    EXPECT_EQ(broken(pixel, "Pixel"), " Pixel/x type int, not 1.50000\n");
    force(pixel, "x", cat::nil());
    force(pixel, "y", nullptr);
    EXPECT_FALSE(cTomAttrset::validate(*pixel));
    EXPECT_EQ(broken(pixel, "Pixel"),
              " Pixel/x required -, not #nil\n Pixel/y required -, not -\n");
    force(pixel, "x", cat::of(1));
    force(pixel, "y", cat::of(1));
    EXPECT_TRUE(cTomAttrset::validate(*pixel));
    EXPECT_EQ(broken(pixel, "Pixel"), "");
}

TEST_F(Rules, a_fixed_key_accepts_the_default_itself_only) {
    objref const fixed = cat::find_type("Fixed").newobj();
    EXPECT_FALSE(cTomAttrset::validate(*fixed)); // the new object has a copy of the default
    EXPECT_EQ(broken(fixed, "Fixed"), " Fixed/f fixed 5, not 5\n");
    EXPECT_EQ(broken("{f= 6}", "Fixed"), " Fixed/f fixed 5, not 6\n");
    objref const spec = cat::find_type("Fixed").getattr(cat::of(std::string("f")));
    force(fixed, "f", dynamic_cast<cAttspec const &>(*spec).get_default());
    EXPECT_TRUE(cTomAttrset::validate(*fixed));
    EXPECT_EQ(broken(fixed, "Fixed"), "");
}

TEST_F(Rules, a_value_of_another_type_breaks_the_rule_of_its_type) {
    EXPECT_EQ(broken("1", "Pixel"), " Pixel/- type Pixel, not 1\n");
    EXPECT_EQ(broken("[1]", "Pixel"), " Pixel/- type Pixel, not [1, ]\n");
    EXPECT_EQ(broken("1", "string"), " string/- type string, not 1\n");
    EXPECT_EQ(broken(objref(), "Pixel"), " Pixel/- type Pixel, not -\n");
    EXPECT_EQ(broken(objref(), "Mode"), " Mode/- type Mode, not -\n");
}

TEST_F(Rules, a_choice_is_one_of_the_keys) {
    EXPECT_EQ(broken("auto", "Mode"), "");
    EXPECT_EQ(broken("of", "Mode"), " Mode/- choice -, not of\n");
    EXPECT_EQ(broken("1", "Mode"), " Mode/- choice -, not 1\n");
    EXPECT_EQ(broken("auto", "None"), " None/- choice -, not auto\n");
}

TEST_F(Rules, each_object_of_a_tree_is_checked_at_its_first_path) {
    objref const line = read("Line(from= Pixel(x= 1; y= 2);"
                             " points= [{a= Pixel(x= 3; y= 4)}, #cRef(/from), Pixel(x= 5; y= 6)])");
    EXPECT_EQ(all_broken(line, "Line"), "");
    for (char const *const path : {"from", "points/0/a", "points/2"})
        force(line->getattrp(path), "x", cat::of(std::string("no")));
    EXPECT_EQ(broken(line, "Line"), "");
    EXPECT_EQ(all_broken(line, "Line"), "/from Pixel/x type int, not no\n"
                                        "/points/0/a Pixel/x type int, not no\n"
                                        "/points/2 Pixel/x type int, not no\n");
}

TEST_F(Rules, the_rules_of_the_value_come_before_those_of_its_tree) {
    objref const line = read("{points= [Pixel(x= 3; y= 4)]}");
    force(line->getattrp("points/0"), "y", nullptr);
    EXPECT_EQ(all_broken(line, "Line"), " Line/from required -, not -\n"
                                        "/points/0 Pixel/y required -, not -\n");
    EXPECT_EQ(all_broken(objref(), "Line"), " Line/- type Line, not -\n");
    EXPECT_EQ(all_broken(line, "map"), "/points/0 Pixel/y required -, not -\n");
}

TEST_F(Rules, checking_a_tree_that_holds_itself_terminates) {
    objref const map = make<cMapObj>();
    objref const pixel = read("Pixel(x= 1; y= 2; color= #nil)");
    force(pixel, "color", map);
    force(pixel, "x", nullptr);
    auto &hash = dynamic_cast<cMapObj &>(*map).datamap();
    hash.mapitem("pixel", pixel);
    hash.mapitem("again", map);
    EXPECT_EQ(all_broken(map, "map"), "/pixel Pixel/x required -, not -\n");
    hash.clear();
}

TEST_F(Rules, a_deep_tree_needs_no_deep_stack) {
    objref inside = read("Pixel(x= 1; y= 2)");
    force(inside, "x", nullptr);
    for (int i = 0; i < 100000; ++i) {
        objref const vector = make<cVectorObj>();
        dynamic_cast<cMapObj &>(*vector).datamap().vect_append(inside);
        inside = vector;
    }
    std::vector<BrokenRule> const all =
        qrv::edit::all_broken_rules(inside, cat::find_type("vector"));
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all[0].path.size(), 200000U);
}

// A container may get the address of one that was removed while the tree was walked.
TEST_F(Rules, a_container_that_user_code_puts_into_the_tree_is_checked) {
    cHostileType const hostile;
    objref const tree = read("[[], Pixel(x= 1; y= 2), []]");
    auto const hash_at = [&](char const *path) -> cAttrHash & {
        return dynamic_cast<cMapObj &>(*tree->getattrp(path)).datamap();
    };
    hash_at("1").mapitem(hostile.key(1), cat::of(1));
    cHostileType::in_hash = [&] {
        cObj const *const first = tree->getattrp("0").get();
        tree->setattrp("0 &=", cat::of(0), false);
        std::vector<objref> added;
        do added.push_back(make<cVectorObj>());
        while (added.back().get() != first && added.size() < 1000);
        dynamic_cast<cMapObj &>(*added.back()).datamap().vect_append(read("Pixel(x= 1; y= 2)"));
        force(dynamic_cast<cMapObj &>(*added.back()).datamap().first()->valref(), "y", nullptr);
        hash_at("2").vect_append(added.back());
    };
    std::vector<BrokenRule> const all = qrv::edit::all_broken_rules(tree, cat::find_type("vector"));
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].path, "/1");
    EXPECT_EQ(all[1].path, "/2/0/0");
}

TEST_F(Rules, a_broken_rule_outlives_the_value) {
    std::vector<BrokenRule> all;
    {
        objref const map = read("{x= a_word; y= 1}");
        all = qrv::edit::broken_rules(map, cat::find_type("Pixel"));
    }
    EXPECT_EQ(text_of(all), " Pixel/x type int, not a_word\n");
}

} // namespace
