// The rules of a type that a value breaks, and objects that are created from other values.

#include "qrv/containers/cattrset.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/core/ctypescope.h"
#include "qrv/text/read/creadreport.h"
#include "qrv/text/write/cwriter.h"
#include "qrv/value/declare.h"
#include "qrv/value/reference.h"
#include "tests/support/fixture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

qrv::value read(std::string const &text) {
    cat::ReadReport const report;
    objref value;
    EXPECT_EQ(cObj::readobj(text.c_str(), value), 0) << text;
    return value;
}

std::string text_of(qrv::value const &value) { return cat::as_text(value.object()); }

class Rules : public QrvTest {
  protected:
    Rules() {
        qrv::declare_choice("Mode", {"auto", "manual"});
        qrv::declare("Point").required<double>("x").optional<float>("y");
        qrv::declare("Axis")
            .required<std::string>("name")
            .with_default("limit", 10)
            .choice("mode", "Mode", "auto")
            .optional("origin", "Point")
            .optional("points");
        qrv::declare("Fixed").fixed("version", 3).with_default("a", 1);
    }
    ~Rules() override { EXPECT_EQ(messages(), ""); }

    // A line for each rule: "path: message".
    static std::string broken(qrv::value const &value, qrv::type const &type) {
        std::string text;
        for (qrv::broken_rule const &broken : qrv::broken_rules(value, type))
            text += broken.path + ": " + broken.message + "\n";
        EXPECT_EQ(value.conforms_to(type), text.empty());
        return text;
    }
    static std::string broken(char const *text, qrv::type const &type) {
        return broken(read(text), type);
    }
    static std::string made(char const *text, qrv::type const &type) {
        return text_of(type.make(read(text)));
    }

  private:
    cat::TypeScope types_;
};

TEST_F(Rules, an_attribute_set_is_created_from_a_map) {
    EXPECT_EQ(made("{name= X}", "Axis"), text_of(read("Axis(name= X)")));
    EXPECT_EQ(made("{limit= 5; name= X; points= [1]; mode= Mode(manual)}", "Axis"),
              text_of(read("Axis(limit= 5; name= X; points= [1]; mode= Mode(manual))")));
}

TEST_F(Rules, created_objects_are_valid) {
    for (char const *text : {"{name= X}", "{name= X; origin= {x= 1}}", "{name= X; mode= manual}"}) {
        qrv::value const axis = qrv::type("Axis").make(read(text));
        EXPECT_TRUE(cTomAttrset::validate(*axis.object())) << text;
        EXPECT_EQ(broken(axis, "Axis"), "");
    }
}

TEST_F(Rules, attributes_are_created_from_keys_maps_and_numbers) {
    EXPECT_EQ(made("{name= X; mode= manual; origin= {x= 1; y= 2}}", "Axis"),
              text_of(read("Axis(name= X; mode= Mode(manual); origin= Point(x= 1.0; y= 2.0f))")));
}

TEST_F(Rules, nil_keeps_the_default) {
    EXPECT_EQ(made("{name= X; limit= #nil; origin= #nil}", "Axis"), made("{name= X}", "Axis"));
}

TEST_F(Rules, make_returns_the_value_itself_if_it_has_the_type) {
    qrv::value const axis = qrv::type("Axis").make(read("{name= X}"));
    EXPECT_TRUE(qrv::type("Axis").make(axis).is_shared_with(axis));
    qrv::value const list = read("[1]");
    qrv::value const other = qrv::type("Axis").make(qrv::value(objref([&] {
        objref map = read("{name= X}").object();
        map->setattr(own_key(std::string("points")), list.object());
        return map;
    }())));
    EXPECT_TRUE(other.at("points").is_shared_with(list));
}

TEST_F(Rules, numbers_become_wider_ones_only) {
    EXPECT_EQ(made("1", "double"), "1.00000");
    EXPECT_EQ(made("1.5f", "double"), "1.50000");
    EXPECT_EQ(made("16777216", "float"), "1.67772e+07f");
    EXPECT_NE(broken("16777217", "float"), "");
    EXPECT_NE(broken("1.0", "int"), "");
    EXPECT_NE(broken("1.0", "float"), "");
    EXPECT_NE(broken("1", "string"), "");
    EXPECT_EQ(made("x", "string"), "x");
}

TEST_F(Rules, a_choice_is_created_from_its_key) {
    EXPECT_EQ(made("manual", "Mode"), "Mode(manual)");
    EXPECT_EQ(broken("of", "Mode"), ": of is not a choice of type 'Mode'\n");
    EXPECT_EQ(broken("1", "Mode"), ": 1 is not a choice of type 'Mode'\n");
    EXPECT_EQ(broken("[1]", "Mode"), ": a vector is not a choice of type 'Mode'\n");
    EXPECT_EQ(broken(qrv::value(), "Mode"), ": #nil is not a choice of type 'Mode'\n");
}

TEST_F(Rules, every_broken_rule_is_reported) {
    EXPECT_EQ(broken("{limt= 5; mode= of; limit= x; origin= {y= 1}; name= #nil}", "Axis"),
              "limt: type 'Axis' has no key 'limt'\n"
              "limit: key 'limit' of type 'Axis' must be of type 'int', not of type 'string'\n"
              "name: required key 'name' of type 'Axis' is nil\n"
              "mode: of is not a choice of type 'Mode'\n"
              "origin/x: required key 'x' of type 'Point' is missing\n");
    EXPECT_EQ(broken("{}", "Point"), "x: required key 'x' of type 'Point' is missing\n");
    EXPECT_EQ(broken("5", "Point"),
              ": a value of type 'Point' is expected, not one of type 'int'\n");
    EXPECT_EQ(broken(qrv::value(), "Point"),
              ": a value of type 'Point' is expected, not one of type 'niltype'\n");
}

TEST_F(Rules, the_data_of_a_rule_is_complete) {
    auto const rules =
        qrv::broken_rules(read("{\"a b\"= 1; limit= 1.5; name= X; origin= 5}"), "Axis");
    ASSERT_EQ(rules.size(), 3u);
    EXPECT_EQ(rules[0].rule, qrv::rule::declared);
    EXPECT_EQ(rules[0].path, "\"a b\"");
    EXPECT_EQ(rules[0].type, "Axis");
    EXPECT_EQ(rules[0].expected, "");
    EXPECT_EQ(rules[0].actual, qrv::value(1));
    EXPECT_EQ(rules[1].rule, qrv::rule::type);
    EXPECT_EQ(rules[1].expected, "int");
    EXPECT_EQ(rules[1].actual, qrv::value(1.5));
    EXPECT_EQ(rules[2].expected, "Point");
    EXPECT_EQ(rules[2].message,
              "key 'origin' of type 'Axis' must be of type 'Point', not of type 'int'");
    auto const missing = qrv::broken_rules(read("{}"), "Axis");
    ASSERT_EQ(missing.size(), 1u);
    EXPECT_EQ(missing[0].rule, qrv::rule::required);
    EXPECT_FALSE(missing[0].actual);
}

TEST_F(Rules, objects_inside_are_checked_where_they_are) {
    qrv::value const point = qrv::type("Point").make(read("{x= 1}"));
    static_cast<cMapObj &>(*point.object()).datamap().find("x")->valref_() = cat::of(1); // an int
    qrv::value tree = read("{name= X; points= {all= []}}");
    tree["points"]["all"].push_back(point);
    std::string const wrong = "points/all/0/x: key 'x' of type 'Point' must be of type 'double', "
                              "not of type 'int'\n";
    EXPECT_EQ(broken(tree, "Axis"), wrong);
    EXPECT_EQ(broken(tree.at("points"), "map"),
              "all/0/x: key 'x' of type 'Point' must be of type 'double', not of type 'int'\n");
    tree["origin"] = point;
    EXPECT_EQ(broken(tree, "Axis"),
              wrong + "origin/x: key 'x' of type 'Point' must be of type 'double', "
                      "not of type 'int'\n");
}

TEST_F(Rules, the_error_of_make_lists_all_broken_rules) {
    try {
        qrv::type("Axis").make(read("{origin= {}; limit= x}"));
        FAIL();
    } catch (qrv::rule_error const &error) {
        EXPECT_STREQ(
            error.what(),
            "limit: key 'limit' of type 'Axis' must be of type 'int', not of type 'string'\n"
            "name: required key 'name' of type 'Axis' is missing\n"
            "origin/x: required key 'x' of type 'Point' is missing");
        EXPECT_EQ(error.rules().size(), 3u);
    }
    EXPECT_THROW(qrv::type("Axis").make(5), qrv::type_error);
}

TEST_F(Rules, other_refusals_of_a_type_are_errors_without_rules) {
    auto const refused = [](char const *method, objref const &function) {
        cTypeModifier const modifier(qrv::type("Point").object(), method, function);
        try {
            qrv::type("Axis").make(read("{name= X; origin= {x= 1}}"));
        } catch (qrv::rule_error const &) {
            return std::string("a rule");
        } catch (qrv::error const &error) {
            return std::string(error.what());
        }
        return std::string("made");
    };
    cProcedure3 const refusing = [](cObj &, objref &, objref &) { return false; };
    cProcedure3 const raising = [](cObj &, objref &, objref &) {
        eros().clear();
        eros().set(0x40000000, "not today");
        cat::sig_error()(eros());
        return false;
    };
    cFunction1 const failing = [](objref) { return cat::bad(); };
    EXPECT_EQ(refused("setattr", make<cExeMember>(refusing)), "type 'Point' refuses the value");
    EXPECT_EQ(refused("setattr", make<cExeMember>(raising)), "not today");
    EXPECT_EQ(refused("newobj", make<cExeMember>(failing)), "type 'Point' refuses the value");
}

TEST_F(Rules, a_fixed_attribute_is_the_declared_object) {
    qrv::value const made = qrv::type("Fixed").make(read("{a= 2}"));
    EXPECT_EQ(text_of(made), "Fixed(\n  version= 3;\n  a= 2;\n)");
    EXPECT_TRUE(cTomAttrset::validate(*made.object()));
    EXPECT_EQ(text_of(qrv::type("Fixed").make(read("{version= 3}"))),
              "Fixed(\n  version= 3;\n  a= 1;\n)");
    EXPECT_EQ(broken("{version= 4}", "Fixed"),
              "version: key 'version' of type 'Fixed' is fixed to 3, not 4\n");
    EXPECT_EQ(broken(qrv::value(qrv::type("Fixed").object().newobj()), "Fixed"),
              "version: key 'version' of type 'Fixed' is fixed to 3, and this is a copy\n");
}

TEST_F(Rules, cycles_and_very_deep_maps_are_refused_without_a_crash) {
    qrv::declare("Node").optional("next", "Node");
    auto const own = make<cMapObj>();
    own->datamap().mapitem("next", own);
    EXPECT_FALSE(qrv::value(own).conforms_to("Node"));
    own->clear();

    objref chain = make<cMapObj>();
    for (int i = 0; i < 100000; ++i) {
        auto const outer = make<cMapObj>();
        outer->datamap().mapitem("next", chain);
        chain = outer;
    }
    EXPECT_FALSE(qrv::value(chain).conforms_to("Node"));
}

TEST_F(Rules, a_chain_of_maps_becomes_a_chain_of_objects) {
    qrv::declare("Node").optional("next", "Node");
    qrv::value chain = read("{next= {next= {}}}");
    EXPECT_EQ(text_of(qrv::type("Node").make(chain).at("next/next")), "Node(\n  next= #nil;\n)");
}

} // namespace
