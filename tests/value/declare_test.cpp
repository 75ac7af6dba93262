// Types that a program declares: their objects are the same as those of types declared in text.

#include "qrv/value/declare.h"

#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/core/ctypescope.h"
#include "qrv/text/read/creadreport.h"
#include "qrv/text/write/cwriter.h"
#include "qrv/value/build.h"
#include "qrv/value/change.h"
#include "qrv/value/reference.h"
#include "tests/support/fixture.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

objref read(std::string const &text) {
    cat::ReadReport const report;
    objref value;
    cObj::readobj(text.c_str(), value);
    std::string errors;
    for (cat::ReadError const &error : report.entries()) errors += error.text + "; ";
    EXPECT_EQ(errors, "") << text;
    return value;
}

std::string text_of(qrv::value const &value) { return cat::as_text(value.object()); }

// The content of a type object except its name, and the parts that exact text does not show.
std::string inside(qrv::type const &type) {
    cObj &object = type.object();
    std::string text = object.type().name() + " " + std::to_string(object.flags()) + " ";
    if (auto const *const specs =
            dynamic_cast<cMapObj const *>(type.object().tmember("attspec").get()))
        for (cAttrNode const *node = specs->datamap().first(); node;
             node = specs->datamap().next(node)) {
            auto const &spec = dynamic_cast<cAttspec const &>(node->value());
            text += node->key_as_string() + " " + std::to_string(spec.flags()) + " " +
                    (spec.get_type() ? spec.get_type()->name() : "any") + " " +
                    (spec.held_type() ? "held " : "") + "; ";
        }
    cAttrHash const &members = type.object().tmmap();
    for (cAttrNode const *node = members.first(); node; node = members.next(node))
        text += node->key_as_string() + ", ";
    return text;
}

// The message of what a wrong declaration throws.
template <class Declare> std::string refused(Declare const &wrong) {
    try {
        wrong();
    } catch (qrv::declaration_error const &error) {
        return error.what();
    }
    return "not refused";
}

class Declare : public QrvTest {
  protected:
    ~Declare() override { EXPECT_EQ(messages(), ""); }

    // Compares the type with one that this text declares in a separate scope.
    static void expect_same(qrv::type const &declared, std::string const &text) {
        std::string const written = text_of(qrv::value(objref::share(&declared.object())));
        std::string const members = inside(declared);
        cat::TypeScope const nested;
        objref const kept = read("{" + declared.name() + "= " + text + "}");
        qrv::type const from_text(declared.name());
        EXPECT_NE(&from_text.object(), &declared.object());
        EXPECT_EQ(written, text_of(qrv::value(objref::share(&from_text.object()))));
        EXPECT_EQ(members, inside(from_text));
    }

    cat::TypeScope types_;
};

TEST_F(Declare, a_declared_type_is_the_same_as_one_declared_in_text) {
    qrv::type const mode = qrv::declare_choice("Mode", {{"auto", 1}, {"manual", 2}});
    expect_same(mode, "choice({\nauto= 1; manual= 2})");
    qrv::type const axis = qrv::declare("Axis")
                               .required<std::string>("name")
                               .with_default("limit", 10)
                               .choice("mode", "Mode")
                               .optional<double>("offset")
                               .optional("comment")
                               .required("any");
    EXPECT_EQ(axis.name(), "Axis");
    EXPECT_EQ(&cat::find_type("Axis"), &axis.object());
    expect_same(axis, "attlist(name= attspec(type= string; flag= #REQUIRED);"
                      "        limit= attspec(type= int; default= 10);"
                      "        mode= attspec(type= Mode; flag= #REQUIRED);"
                      "        offset= attspec(type= double; flag= #IMPLIED);"
                      "        comment= attspec(flag= #IMPLIED);"
                      "        any= attspec(flag= #REQUIRED))");
}

TEST_F(Declare, attributes_are_of_the_types_of_cpp_values) {
    qrv::type const all = qrv::declare("All")
                              .optional<bool>("b")
                              .optional<unsigned short>("i")
                              .optional<float>("f")
                              .optional<double>("d")
                              .optional<std::string_view>("s")
                              .optional<std::vector<int>>("v")
                              .optional<std::map<std::string, int>>("m")
                              .optional<std::set<int>>("u");
    expect_same(all, "attlist(b= attspec(type= bool; flag= #IMPLIED);"
                     "        i= attspec(type= int; flag= #IMPLIED);"
                     "        f= attspec(type= float; flag= #IMPLIED);"
                     "        d= attspec(type= double; flag= #IMPLIED);"
                     "        s= attspec(type= string; flag= #IMPLIED);"
                     "        v= attspec(type= vector; flag= #IMPLIED);"
                     "        m= attspec(type= map; flag= #IMPLIED);"
                     "        u= attspec(type= set; flag= #IMPLIED))");
}

TEST_F(Declare, defaults_and_fixed_values_have_their_types) {
    qrv::declare_choice("Mode", {"auto", "manual"});
    qrv::type const axis = qrv::declare("Axis")
                               .with_default("list", read("[1, 2]"))
                               .with_default<double>("high", 85)
                               .choice("mode", "Mode", "manual")
                               .fixed("version", 3);
    expect_same(axis, "attlist(list= attspec(type= vector; default= [1, 2]);"
                      "        high= attspec(type= double; default= 85.0);"
                      "        mode= attspec(type= Mode; default= Mode(manual));"
                      "        version= attspec(type= int; default= 3; flag= #FIXED))");
}

TEST_F(Declare, a_default_is_a_private_copy) {
    qrv::value list = read("[1, 2]");
    qrv::declare("Axis").with_default("list", list);
    list.push_back(3);
    EXPECT_EQ(text_of(read("Axis()")), "Axis(\n  list= [1, 2, ];\n)");
}

TEST_F(Declare, an_erased_attribute_gets_a_private_copy_of_its_default) {
    cat::TypeScope const scope;
    qrv::type const point = qrv::declare("Point").with_default("x", 1);
    qrv::value first = point.make(qrv::map{{"x", 5}});
    EXPECT_TRUE(first.erase("x"));
    EXPECT_EQ(first["x"], 1);
    first.at("x").assign(77);
    EXPECT_EQ(first["x"], 77);
    EXPECT_EQ(point.make(qrv::map())["x"], 1);
}

TEST_F(Declare, attributes_are_of_declared_types) {
    qrv::type const inner = qrv::declare("Point").required<int>("x");
    qrv::declare("Line").required("from", "Point").optional("to", inner);
    EXPECT_EQ(text_of(read("Line(from= Point(x= 1))")),
              "Line(\n  from= Point(\n      x= 1;\n  );\n  to= #nil;\n)");
}

TEST_F(Declare, a_type_can_have_attributes_of_itself) {
    qrv::type const node = qrv::declare("Node").required<int>("value").optional("next", "Node");
    EXPECT_EQ(text_of(read("Node(value= 1; next= Node(value= 2))")),
              "Node(\n  value= 1;\n  next= Node(\n      value= 2;\n      next= #nil;\n  );\n)");
    // Text can name the type only when it is declared already.
    cat::TypeScope const nested;
    read("{Node= attlist(value= attspec(type= int; flag= #REQUIRED))}");
    read("{Node= attlist(value= attspec(type= int; flag= #REQUIRED);"
         "               next= attspec(type= Node; flag= #IMPLIED))}");
    EXPECT_EQ(inside(qrv::type("Node")), inside(node));
}

TEST_F(Declare, files_use_the_types) {
    qrv::declare_choice("Mode", {"auto", "manual"});
    qrv::declare("Axis")
        .required<std::string>("name")
        .with_default("limit", 10)
        .choice("mode", "Mode");
    EXPECT_EQ(text_of(read("{x= Axis(name= X; mode= Mode(manual))}")),
              "{x= Axis(\n      name= X;\n      limit= 10;\n      mode= Mode(manual);\n  ); }");
    cat::ReadReport const report;
    objref value;
    cObj::readobj("Axis(limit= 3)", value);
    EXPECT_EQ(report.count(), 2u);
}

TEST_F(Declare, a_choice_has_a_separate_container) {
    expect_same(qrv::declare_choice("A", {"off", "slow"}), "choice({\noff= 0; slow= 1})");
    expect_same(qrv::declare_choice("B", {"off"}), "choice({\noff= 0})");
    expect_same(qrv::declare_choice("C", {{"off", "x"}, "slow", {"fast", 50.5}}),
                "choice({\noff= x; slow= 1; fast= 50.5})");
    expect_same(qrv::declare_choice("D", qrv::value(read("[red, green]"))), "choice([red, green])");
    std::string const name = "off";
    qrv::value keys = read("{\nlow= 1}");
    qrv::type const copied = qrv::declare_choice("E", keys);
    keys["high"] = 2;
    expect_same(copied, "choice({\nlow= 1})");
    expect_same(qrv::declare_choice("F", {name}), "choice({\noff= 0})");
}

TEST_F(Declare, a_scope_has_the_types_and_hides_those_outside) {
    qrv::type const outer = qrv::declare("Axis").required<int>("x");
    {
        cat::TypeScope const nested;
        qrv::type const inner = qrv::declare("Axis").required<int>("y");
        EXPECT_NE(inner, outer);
        EXPECT_EQ(qrv::type("Axis"), inner);
        qrv::declare_choice("Local", {"a"});
        EXPECT_TRUE(qrv::type::find("Local"));
    }
    EXPECT_EQ(qrv::type("Axis"), outer);
    EXPECT_FALSE(qrv::type::find("Local"));
}

TEST_F(Declare, objects_and_handles_keep_a_type_beyond_its_scope) {
    qrv::value object;
    std::optional<qrv::type> handle;
    {
        cat::TypeScope const nested;
        qrv::declare("Axis").required<int>("x");
        object = qrv::type("Axis").make(read("{x= 1}"));
        handle = qrv::declare_choice("Mode", {"auto"});
    }
    EXPECT_EQ(object.type_name(), "Axis");
    EXPECT_EQ(handle->make("auto").type_name(), "Mode");
}

TEST_F(Declare, a_type_declared_again_is_the_same_object) {
    qrv::type const axis = qrv::declare("Axis").required<int>("x");
    qrv::value const old = axis.make(read("{x= 1}"));
    int changes = 0;
    qrv::connection const watch =
        qrv::value(objref::share(&axis.object())).on_change([&](qrv::change const &) {
            ++changes;
        });
    EXPECT_EQ(qrv::type(qrv::declare("Axis").required<int>("y")), axis);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(text_of(axis.make(read("{y= 1}"))), "Axis(\n  y= 1;\n)");
    EXPECT_EQ(text_of(old), "Axis(\n  x= 1;\n)");

    qrv::type const mode = qrv::declare_choice("Mode", {"off", "slow"});
    qrv::value const slow = mode.make("slow");
    EXPECT_EQ(qrv::declare_choice("Mode", {"slow", "fast"}), mode);
    EXPECT_EQ(text_of(slow), "Mode(slow)");
    EXPECT_EQ(text_of(mode.make("fast")), "Mode(fast)");
}

TEST_F(Declare, a_recursive_type_declared_again_refers_to_the_registered_one) {
    qrv::type const node = qrv::declare("Node").optional("next", "Node");
    qrv::declare("Node").optional("next", "Node").required<int>("x");
    EXPECT_EQ(text_of(node.make(read("{x= 1; next= {x= 2}}"))),
              "Node(\n  next= Node(\n      next= #nil;\n      x= 2;\n  );\n  x= 1;\n)");
}

TEST_F(Declare, a_builder_can_be_filled_in_a_loop) {
    auto builder = qrv::declare("Axes");
    for (char const *key : {"x", "y"}) builder.required<int>(key);
    EXPECT_FALSE(qrv::type::find("Axes"));
    qrv::type const axes = builder;
    EXPECT_EQ(qrv::type(builder), axes);
    expect_same(axes, "attlist(x= attspec(type= int; flag= #REQUIRED);"
                      "        y= attspec(type= int; flag= #REQUIRED))");
    EXPECT_THROW(builder.required("z"), std::logic_error);
}

TEST_F(Declare, wrong_declarations_are_refused_with_type_and_key) {
    qrv::declare_choice("Mode", {"off"});
    EXPECT_EQ(refused([] { qrv::declare("Axis").required("a", "Mod"); }),
              "type 'Axis', key 'a': there is no type 'Mod'");
    EXPECT_EQ(refused([] { qrv::declare("Axis").required<int>("a").optional("a"); }),
              "type 'Axis', key 'a': the key is declared already");
    EXPECT_EQ(refused([] { qrv::declare("Axis").with_default("a", "x", "int"); }),
              "type 'Axis', key 'a': the default is wrong: "
              "a value of type 'int' is expected, not one of type 'string'");
    EXPECT_EQ(refused([] { qrv::declare("Axis").with_default("a", nullptr); }),
              "type 'Axis', key 'a': the default is nil");
    EXPECT_EQ(refused([] { qrv::declare("Axis").choice("a", "int"); }),
              "type 'Axis', key 'a': type 'int' is not a choice");
    EXPECT_EQ(refused([] { qrv::declare("Axis").choice("a", "Mode", "on"); }),
              "type 'Axis', key 'a': the default is wrong: on is not a choice of type 'Mode'");
    EXPECT_EQ(refused([] { qrv::declare("Axis").with_default("a", 1, "Axis"); }),
              "type 'Axis', key 'a': there is no type 'Axis'");
    EXPECT_FALSE(qrv::type::find("Axis"));
    EXPECT_EQ(refused([] { qrv::declare("two words"); }),
              "type 'two words': the name is not an identifier");
    EXPECT_EQ(refused([] { qrv::declare(""); }), "type '': the name is not an identifier");
    for (char const *name : {"int", "Mode", "niltype"})
        EXPECT_EQ(refused([&] { qrv::declare(name).required("a"); }),
                  std::string("type '") + name + "': the name belongs to a type of another kind");
    EXPECT_EQ(refused([] { qrv::declare_choice("map", {"a"}); }),
              "type 'map': the name belongs to a type of another kind");
    EXPECT_EQ(refused([] {
                  qrv::declare_choice("M", {"a", "b", "a"});
              }),
              "type 'M', key 'a': the choice is declared already");
    EXPECT_EQ(refused([] { qrv::declare_choice("M", 1); }),
              "type 'M': the choices are not a container");
    EXPECT_FALSE(qrv::type::find("M"));
}

TEST_F(Declare, a_wrong_declaration_leaves_the_former_one) {
    qrv::type const axis = qrv::declare("Axis").required<int>("x");
    EXPECT_EQ(refused([] { qrv::declare("Axis").required<int>("y").required("y"); }),
              "type 'Axis', key 'y': the key is declared already");
    expect_same(axis, "attlist(x= attspec(type= int; flag= #REQUIRED))");
}

TEST_F(Declare, an_exception_during_the_declaration_registers_nothing) {
    auto const name = []() -> std::string { throw 7; };
    EXPECT_THROW(qrv::declare("Axis").required<int>("x").required(name()), int);
    EXPECT_FALSE(qrv::type::find("Axis"));
}

TEST_F(Declare, an_exception_of_a_listener_is_thrown_at_the_end_of_the_declaration) {
    qrv::type const node = qrv::declare("Node").required<int>("x");
    qrv::connection const watch =
        qrv::value(objref::share(&node.object())).on_change([](qrv::change const &) { throw 7; });
    EXPECT_THROW(qrv::declare("Node").optional("next", "Node"), int);
    EXPECT_EQ(text_of(node.make(read("{next= {}}"))),
              "Node(\n  next= Node(\n      next= #nil;\n  );\n)");
}

TEST_F(Declare, a_type_is_found_by_any_kind_of_string) {
    std::string const name = "int";
    EXPECT_EQ(qrv::type(name), qrv::type("int"));
    EXPECT_EQ(qrv::type(std::string_view(name)).name(), "int");
    EXPECT_EQ(qrv::type("niltype").name(), "niltype");
    EXPECT_THROW(qrv::type("Nothing"), qrv::error);
    EXPECT_FALSE(qrv::type::find("Nothing"));
    EXPECT_THROW(qrv::type(static_cast<cTypeObj *>(nullptr)), std::invalid_argument);
}

// Without a scope the type stays until the process ends.
TEST(DeclareForTheProcess, a_type_without_a_scope_stays) {
    qrv::declare("StaysForGood").required<int>("x").optional("next", "StaysForGood");
    qrv::declare_choice("StaysAsWell", {"a", "b"});
    EXPECT_EQ(text_of(qrv::type("StaysForGood").make(read("{x= 1}"))),
              "StaysForGood(\n  x= 1;\n  next= #nil;\n)");
    EXPECT_EQ(text_of(qrv::type("StaysAsWell").make("b")), "StaysAsWell(b)");
}

static_assert(!std::is_copy_constructible_v<qrv::type_builder>);
template <class T>
concept named = requires(qrv::type_builder &builder) {
    builder.required<T>("key");
};
static_assert(!std::is_constructible_v<qrv::type, int>);
static_assert(!std::is_default_constructible_v<qrv::type>);

} // namespace
