// Objects without a type: each operation on them or with them has the same result, text and errors
// as with a void object.
#include "containers/csignalobj_types.h"
#include "core/cscalar.h"
#include "qrv/containers/cattr.h"
#include "qrv/containers/cattspec.h"
#include "qrv/containers/cchoiceval.h"
#include "qrv/containers/citerobj.h"
#include "qrv/containers/cobjmodifier.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/csignalobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/numbers.h"
#include "tests/support/objects.h"

#include <functional>
#include <sstream>

namespace {

class Untyped : public QrvTest {
  protected:
    // The type of signals is created, registered and counted on first use.
    static void SetUpTestSuite() { cat::type_signal(); }
    static void TearDownTestSuite() { cat::drop_signal_types(); }
};

using test::key;

// A result as text. `x` is the object of the operation.
std::string shown(bool result, objref const &) { return result ? "true" : "false"; }
std::string shown(int result, objref const &) { return std::to_string(result); }
std::string shown(std::string const &result, objref const &) { return "'" + result + "'"; }
std::string shown(objref const &result, objref const &x) {
    if (!result) return "null";
    if (result == x) return "itself";
    if (result == cat::nil()) return "nil";
    if (result == cat::bad()) return "bad";
    if (result == cat::badfind()) return "badfind";
    return result->type().name();
}

struct cOperation {
    char const *name;
    std::function<std::string(objref const &x)> run;
};

#define OPERATION(expression)                                                                      \
    cOperation {                                                                                   \
#expression, [](objref const &x) { return shown((expression), x); }                        \
    }
#define DONE(expression)                                                                           \
    cOperation {                                                                                   \
#expression, [](objref const &x) {                                                         \
            (void)(expression);                                                                    \
            return std::string("done");                                                            \
        }       \
    }

// One new value of each kind, with content.
std::vector<std::pair<char const *, objref>> others() {
    auto const map = make<cMapObj>();
    map->setattr(key("a"), cat::of(1));
    auto const vector = make<cVectorObj>();
    vector->append(cat::of(1));
    auto const set = make<cSetObj>();
    set->append(cat::of(1));
    typeref const type = make<cTypeObj>("untyped_other", nullptr);
    typeref const attlist = make<cTypeObj>(&cat::typetype_attlist(), "untyped_attlist", nullptr);
    typeref const choice = make<cTypeObj>(&cat::typetype_choice(), "untyped_choice", nullptr);
    auto const choices = make<cMapObj>();
    choices->setattr(key("a"), cat::of(1));
    choice->setattr(key("choices"), choices);
    return {{"int", cat::of(5)},
            {"float", cat::of(1.5f)},
            {"double", cat::of(2.5)},
            {"bool", cat::of(true)},
            {"string", cat::of("text")},
            {"map", map},
            {"vector", vector},
            {"set", set},
            {"iterator", make<cIterObj>(map.get(), false)},
            {"exe", make<cExeMember>(+[](cObj &, objref &) { return true; })},
            {"attspec", make<cAttspec>(static_cast<int>(asf_implied), nullptr)},
            {"type", type},
            {"attlist", attlist},
            {"choice", choice},
            {"void", make<cObj>(true)},
            {"nil", cat::nil()},
            {"bad", cat::bad()},
            {"true", cat::btrue()}};
}

cAttr handle(objref const &owner) { return cAttr(owner, "a"); }

// The operations with the untyped object alone.
std::vector<cOperation> const &alone() {
    static std::vector<cOperation> const operations = {
        OPERATION(x->is_void()),
        OPERATION(x->is_nil()),
        OPERATION(x->is_bad()),
        OPERATION(x->is_kill()),
        OPERATION(x->is_map()),
        OPERATION(x->is_set()),
        OPERATION(x->is_vector()),
        OPERATION(x->is_good()),
        OPERATION(x->is_exe()),
        OPERATION(x->is_container()),
        OPERATION(x->is_type()),
        OPERATION(x->is_ObjDR()),
        OPERATION(x->typeflags_of(tf_bare | tf_container)),
        OPERATION(x->type().name()),
        OPERATION(objref::share(&x->type()) == objref::share(&cat::type_nil())),
        OPERATION(cObj::is_void(x)),
        OPERATION(cObj::is_nil(x)),
        OPERATION(cObj::is_bad(x)),
        OPERATION(cObj::is_kill(x)),
        OPERATION(cObj::is_good(x)),
        OPERATION(cObj::is_map(x)),
        DONE(x->create()),
        DONE(cObj::create(x)),
        OPERATION(x->newref()),
        OPERATION(x->assign(*x)),
        OPERATION(x->assign(x)),
        OPERATION(x->add(*x)),
        OPERATION(x->add(x)),
        OPERATION(x->equal(*x)),
        OPERATION(x->equal(x)),
        OPERATION(x->less(*x)),
        OPERATION(x->iterobj()),
        OPERATION(x->clone()),
        OPERATION(x->clone(true)),
        OPERATION(x->convert(x)),
        OPERATION(x->is_writable()),
        OPERATION(x->call("type") == objref::share(&cat::type_nil())),
        OPERATION(x->call("none")),
        OPERATION(x->call("none", x)),
        OPERATION(x->call("none", x, x)),
        OPERATION(x->call("iterobj")),
        OPERATION(x->call("flags")),
        OPERATION(x->call("ommap")),
        OPERATION(x->call("wformat")),
        OPERATION(x->call("entrytype")),
        OPERATION(x->call("set_const_keys", objref())),
        OPERATION(x->call("getslice", cat::of(0), x)),
        OPERATION(x->call("set_entrytype", x)),
        OPERATION(x->call("set_const_flag", x)),
        OPERATION(x->call("flags_of", x)),
        OPERATION(cObj::call(x, "type", x)),
        OPERATION(cat::call("new", x)),
        OPERATION(cat::call("none", x)),
        OPERATION(x->append(x)),
        DONE(x->append_dissection("a,b", ',')),
        OPERATION(x->getattr(key("a"))),
        OPERATION(x->getattr(objref())),
        OPERATION(x->getattr(x)),
        OPERATION(x->getattr_force(key("a"), true)),
        OPERATION(x->getattr_force(x, false)),
        OPERATION(x->setattr(key("a"), cat::of(1))),
        OPERATION(x->setattr(x, x)),
        OPERATION(x->setattr(objref(), objref())),
        OPERATION(x->copyitem(key("a"), x, true)),
        OPERATION(x->is_owner_of(*x)),
        OPERATION(x->has_ommap()),
        OPERATION(x->set_omember("a", x)),
        OPERATION(x->omember("a")),
        OPERATION(x->set_omember("a", objref())),
        OPERATION(x->set_omember(x, x)),
        OPERATION(x->omember(x)),
        OPERATION(x->force_omember("f", cat::type_int())),
        OPERATION(x->force_omember("g", x->type())),
        OPERATION(x->force_omember("h", x)),
        OPERATION(x->gmember("flags")),
        OPERATION(x->gmember("none")),
        OPERATION(x->gmember(x)),
        OPERATION(x->gmember_("m")),
        OPERATION(x->gmember_(x)),
        DONE(x->ommap(make<cAttrHash>(x.get()))),
        DONE(x->ommap(hashref())),
        OPERATION(x->set_comment("c", true)),
        OPERATION(x->set_comment("c", false)),
        OPERATION(x->begin().valid()),
        OPERATION(x->end().valid()),
        OPERATION(x->begin().size()),
        OPERATION(x->getslice(0, 5, nullptr)),
        OPERATION(x->attrcopy(*x, "0as")),
        OPERATION(x->attrcopy(*x, "???")),
        DONE(x->changed()),
        OPERATION(x->changed_signal() == nullptr),
        DONE(x->force_changed_signal()),
        OPERATION(x->getattrp("a/b")),
        OPERATION(x->getattrp("")),
        OPERATION(x->getattrp("/")),
        OPERATION(x->setattrp("a", x, true)),
        OPERATION(x->setattrp("a/b = ", x, false)),
        OPERATION(x->setattrp("a += ", x, true)),
        OPERATION(x->setattrp("a << ", x, true)),
        OPERATION(x->setattrp("a &= ", x, true)),
        OPERATION(x->setattrp("a = 1; b << 2", true)),
        OPERATION(*x / key("a")),
        OPERATION(*x / 1),
        OPERATION(*x / "a"),
        OPERATION((*x)[1].getattr()),
        OPERATION((*x)["a"].getattr(cat::type_int())),
        DONE((*x)["a"] = x),
        DONE((*x)["a"] << x),
        OPERATION((*x)["a"].swap_to(x)),
        OPERATION((*x)["a"].force_type(cat::type_int())),
        OPERATION((*x)["a"].force_default(x)),
        DONE((*x)["a"].force_value(x, true)),
        DONE((*x)["a"].force_value(x, false)),
        OPERATION((*x)["a"].key_as_string()),
        DONE(*x = *x),
        DONE(*x += *x),
        DONE(*x << x),
        OPERATION(*x == *x),
        OPERATION(*x != *x),
        OPERATION(*x < *x),
        OPERATION(x->own_method(mid_assign, *std::make_unique<cExeObj *>(nullptr))),
        OPERATION(cat::as_string(x)),
        OPERATION(cat::as_text(x)),
        OPERATION(cat::as_index(x)),
        OPERATION(cat::is_equal(x, "")),
        OPERATION(cat::is_equal(x, 0)),
        OPERATION(cat::int_of(x, *std::make_unique<int>(0))),
        OPERATION(cat::bool_of(x, *std::make_unique<bool>(false))),
        OPERATION(cat::type_of_key(x)),
        OPERATION(cat::detach(objref(x), true)),
        OPERATION(cat::detach(x, false)),
        OPERATION(cat::find_const(x) == nullptr),
        DONE(cObj::obid(x, x->obid())),
        DONE(eros(0x40000000u, *x)),
        DONE(eros_setattr(*x, x))};
    return operations;
}

// The operations with another object; y is a value of each kind in turn.
struct cPairOperation {
    char const *name;
    std::function<std::string(objref const &x, objref const &y)> run;
};
#define PAIR(expression)                                                                           \
    cPairOperation {                                                                               \
#expression, [](objref const &x, objref const &y) { return shown((expression), x); }       \
    }
#define PAIR_DONE(expression)                                                                      \
    cPairOperation {                                                                               \
#expression, [](objref const &x, objref const &y) {                                        \
            (void)(expression);                                                                    \
            (void)x;                                                                               \
            (void)y;                                                                               \
            return std::string("done");                                                            \
        }       \
    }

bool modified(objref const &x, objref const &y) {
    cAttr attr = handle(y);
    cObjModifier const modifier(attr, x);
    return attr.getattr() == x;
}

bool saved(objref const &x, objref const &y) {
    auto const map = make<cMapObj>();
    cAttr attr = handle(y);
    attr = x;
    attr.save(*map);
    attr.unsave(*map);
    std::ostringstream os;
    return attr.write_attr(os);
}

std::vector<cPairOperation> const &with_another() {
    static std::vector<cPairOperation> const operations = {
        PAIR(x->assign(y)),
        PAIR(y->assign(x)),
        PAIR(x->assign(*y)),
        PAIR(y->assign(*x)),
        PAIR(x->add(y)),
        PAIR(y->add(x)),
        PAIR(x->equal(y)),
        PAIR(y->equal(x)),
        PAIR(x->equal(*y)),
        PAIR(y->equal(*x)),
        PAIR(x->less(*y)),
        PAIR(y->less(*x)),
        PAIR(x->convert(y)),
        PAIR(y->convert(x)),
        PAIR(x->append(y)),
        PAIR(y->append(x)),
        PAIR(x->setattr(key("a"), y)),
        PAIR(y->setattr(key("a"), x)),
        PAIR(y->setattr(x, y)),
        PAIR(y->setattr(x, x)),
        PAIR(y->setattr(cat::of(0), x)),
        PAIR(y->getattr(x)),
        PAIR(x->getattr(y)),
        PAIR(x->copyitem(y, y, true)),
        PAIR(y->copyitem(key("a"), x, true)),
        PAIR(y->copyitem(x, y, false)),
        PAIR(x->is_owner_of(*y)),
        PAIR(y->is_owner_of(*x)),
        PAIR(x->attrcopy(*y, "0as")),
        PAIR(y->attrcopy(*x, "0as")),
        PAIR(y->attrcopy(*x, "xxx")),
        PAIR(y->call("append", x)),
        PAIR(y->call("assign", x)),
        PAIR(y->call("add", x)),
        PAIR(y->call("equal", x)),
        PAIR(y->call("less", x)),
        PAIR(y->call("setattr", x, x)),
        PAIR(y->call("getattr", x)),
        PAIR(y->call("write", x)),
        PAIR(y->call("read", x)),
        PAIR(y->call("set_entrytype", x)),
        PAIR(x->set_omember("a", y)),
        PAIR(y->set_omember("a", x)),
        PAIR(y->set_omember(x, y)),
        PAIR(y->force_omember("b", x)),
        PAIR(y->gmember(x)),
        PAIR(y->setattrp("a", x, true)),
        PAIR(y->setattrp("a = ", x, false)),
        PAIR(y->setattrp("a += ", x, false)),
        PAIR(y->setattrp("a << ", x, false)),
        PAIR(x->setattrp("a = ", y, true)),
        PAIR_DONE(*x = *y),
        PAIR_DONE(*y += *x),
        PAIR_DONE(*y << x),
        PAIR_DONE(handle(y) = x),
        PAIR_DONE(cAttr(y, 0) << x),
        PAIR_DONE(cAttr(y, x) = y),
        PAIR(cAttr(y, x).getattr()),
        PAIR_DONE(cAttr(y, x) << y),
        PAIR(cAttr(y, x).key_as_string()),
        PAIR(cAttr(y, x) == cAttr(y, y)),
        PAIR(cAttr(y, y) == cAttr(y, x)),
        PAIR(handle(y).swap_to(x)),
        PAIR(handle(y).force_default(x)),
        PAIR_DONE(handle(y).force_value(x, true)),
        PAIR_DONE(handle(y).force_value(x, false)),
        PAIR(handle(y).force_type(x->type())),
        PAIR(modified(x, y)),
        PAIR(saved(x, y)),
        PAIR(cat::as_text(y)),
        PAIR(cat::as_string(y))};
    return operations;
}

// Containers that get the untyped object as a key and as a value.
struct cInside {
    char const *name;
    std::function<std::string(objref const &x)> run;
};

template <class Container> std::string filled(objref const &x) {
    auto const c = make<Container>();
    std::string results;
    c->append(cat::of(1));
    results += shown(c->append(x), x) + shown(c->append(x), x);
    results += shown(c->setattr(cat::of(1), x), x) + shown(c->setattr(x, cat::of(1)), x);
    results += shown(c->getattr(cat::of(1)), x) + shown(c->getattr(x), x);
    cAttrHash &hash = c->datamap();
    results += shown(hash.mapitem(x, x), x) + shown(hash.mapitem("v", x), x);
    results += shown(hash.setitem("v", x), x) + shown(hash.setitem(x, x), x);
    results += shown(hash.copyitem(key("v"), x, true), x) + shown(hash.copyitem(x, x, false), x);
    results += shown(hash.find(x) == nullptr, x) + shown(hash.posofkey(x), x);
    results += shown(hash.findvalue(*x) == nullptr, x) + shown(hash.findvalref(x) == nullptr, x);
    results += shown(hash.insert(x, x, nullptr) == nullptr, x);
    results += shown(hash.insert(key("i"), x, nullptr) == nullptr, x);
    results += shown(hash.erase(x) == nullptr, x) + shown(hash.delitem(x), x);
    results += shown(hash.vect_insert(0, x), x) + shown(hash.vect_append(x), x);
    results += shown(hash.detach(), x) + shown(hash.detach(x), x);
    hash.rename(key("v"), x);
    hash.rename(x, key("v"));
    results += shown(c->findvalue(*x), x) + shown(c->findvalref(x), x);
    results += shown(c->valref_(x), x) + shown(c->submap_ptr(x) == nullptr, x);
    results += shown(c->attspec(x) == cAttspec::nilspec(), x);
    results += shown(c->equal(*c), x) + shown(c->equal_unsorted(*x), x);
    cIterObj it = c->begin();
    results += shown(it.setkey(x), x) + shown(it.setpos(-2), x) + shown(it.value().equal(*x), x);
    results += shown(cat::as_text(c), x);
    objref const copy = c->clone();
    results += shown(copy, x) + shown(copy->equal(*c), x) + shown(cat::as_text(copy), x);
    results += shown(c->detach(true), x) + shown(c->add(*copy), x) + shown(cat::as_text(c), x);
    c->remove_emptychilds(true);
    c->append_keys("q", ',');
    hash.set_vector();
    results += shown(hash.after_last_index(), x) + shown(hash.broken_rule(true), x);
    results += shown(c->getslice(0, 9, &x->type()), x);
    c->set_entrytype(&x->type());
    results += shown(c->append(x), x) + shown(c->setattr(cat::of(0), x), x);
    c->clear();
    c->set_attspec(key("s"), specref::adopt(new cAttspec(x, asf_fixtype)));
    results += shown(c->setattr(key("s"), x), x) + shown(c->getattr(key("s")), x);
    c->set_attspec(x, specref::adopt(new cAttspec(x, 0)));
    return results + shown(cat::as_text(c), x);
}

std::string ordered(objref const &x) {
    auto const map = make<cMapObj>();
    map->datamap().mapitem("a", x);
    map->datamap().mapitem("b", cat::of(1));
    map->datamap().mapitem("c", x->clone());
    std::string order;
    auto nodes = cat::nodes_of(map->datamap());
    cat::sort_nodes(nodes, valord);
    for (cAttrNode const *node : nodes) order += node->key_as_string();
    return order;
}

std::string written(objref const &x) {
    std::ostringstream os;
    std::string results = shown(x->writeobj(os), x) + shown(x->write(os), x);
    results += shown(x->write_constname(os), x);
    std::istringstream is("1");
    return results + shown(x->read(is), x) + os.str();
}

std::string declared(objref const &x) {
    cAttspec spec(static_cast<int>(asf_required), nullptr);
    std::string results = shown(spec.setattr(key("default"), x), x);
    results += shown(spec.setattr(key("type"), x), x) + shown(spec.setattr(key("flag"), x), x);
    results += shown(spec.setattr(x, x), x) + shown(spec.getattr(x), x);
    spec.set_default(x, true);
    spec.set_type(&x->type());
    results += shown(spec.getattr(key("type")), x) + shown(spec.getattr(key("default")), x);
    cTypeObj type("untyped_member", nullptr);
    type.set_tmember("m", x);
    type.set_tmember("assign", x);
    type.set_tmember(x, x);
    results += shown(type.tmember("m"), x) + shown(type.tmember(x), x);
    cTypeModifier const modifier(type, "m", x);
    cObj of_type(true);
    of_type.set_type(&type);
    return results + shown(of_type.convert(x), x) + shown(of_type.assign(x), x);
}

std::string chosen(objref const &x) {
    typeref const choice = make<cTypeObj>(&cat::typetype_choice(), "untyped_choices", nullptr);
    auto const choices = make<cMapObj>();
    choices->setattr(key("a"), x);
    std::string results = shown(choice->setattr(key("choices"), choices), x);
    results += shown(choice->setattr(key("choices"), x), x) + shown(choice->setattr(x, x), x);
    objref const value = choice->newobj();
    results += shown(value->assign(x), x) + shown(value->getattr(key("value")), x);
    return results + shown(value->setattr(key("value"), x), x) + shown(cat::as_text(value), x);
}

// The results, then the errors, without the ids.
template <class Function> std::string outcome(Function const &run) {
    cErrorLog errors;
    std::string const results = run();
    return test::hide_numbers(results + "\n" + errors.text(), "id=", "");
}

objref untyped() { return make<cObj>(false); }
objref void_object() { return make<cObj>(true); }

} // namespace

TEST_F(Untyped, each_operation_alone_returns_the_same_as_for_void) {
    for (cOperation const &operation : alone()) {
        objref const x = untyped();
        objref const v = void_object();
        EXPECT_EQ(outcome([&] { return operation.run(x); }),
                  outcome([&] { return operation.run(v); }))
            << operation.name;
        x->ommap(hashref()); // it may hold itself
        v->ommap(hashref());
    }
}

TEST_F(Untyped, each_operation_with_another_object_returns_the_same_as_for_void) {
    std::size_t const kinds = others().size();
    for (cPairOperation const &operation : with_another())
        for (std::size_t kind = 0; kind < kinds; ++kind) {
            // A sentinel keeps members that an operation stores, so both runs get new values, and
            // their members are removed afterwards.
            auto const first = others()[kind];
            auto const second = others()[kind];
            objref const x = untyped();
            objref const v = void_object();
            EXPECT_EQ(outcome([&] { return operation.run(x, first.second); }),
                      outcome([&] { return operation.run(v, second.second); }))
                << operation.name << " with " << first.first;
            for (objref const &used : {x, v, first.second, second.second}) used->ommap(hashref());
        }
}

TEST_F(Untyped, operations_on_two_untyped_objects_return_the_same_as_on_two_void_ones) {
    for (cPairOperation const &operation : with_another()) {
        objref const a = untyped();
        objref const b = untyped();
        objref const v = void_object();
        objref const w = void_object();
        EXPECT_EQ(outcome([&] { return operation.run(a, b); }),
                  outcome([&] { return operation.run(v, w); }))
            << operation.name;
        for (objref const &used : {a, b, v, w}) used->ommap(hashref());
    }
}

TEST_F(Untyped, containers_treat_it_like_void) {
    cInside const insides[] = {{"map", filled<cMapObj>}, {"vector", filled<cVectorObj>},
                               {"set", filled<cSetObj>}, {"order", ordered},
                               {"written", written},     {"declared", declared},
                               {"choice", chosen}};
    for (cInside const &inside : insides)
        EXPECT_EQ(outcome([&] { return inside.run(untyped()); }),
                  outcome([&] { return inside.run(void_object()); }))
            << inside.name;
}

TEST_F(Untyped, a_value_and_a_container_may_lose_their_type) {
    objref const number = cat::of(5);
    number->set_type(nullptr);
    EXPECT_TRUE(number->is_void());
    EXPECT_FALSE(number->assign(cat::of(6)));
    EXPECT_EQ(cat::as_index(number), cat::no_index);
    auto const map = make<cMapObj>();
    map->setattr(key("a"), cat::of(1));
    map->set_type(nullptr);
    EXPECT_EQ(map->getattr(key("a")), cat::badfind());
    EXPECT_EQ(outcome([&] { return cat::as_text(map); }), "niltype(/* id=, refs=2 */)\n");
    EXPECT_FALSE(map->begin().valid());
    map->set_type(&cat::type_map());
    EXPECT_EQ(cat::as_text(map->getattr(key("a"))), "1");
}

TEST_F(Untyped, a_type_without_a_metatype_still_serves_its_objects) {
    cTypeObj type("untyped_type", cat::setup_int);
    type.set_type(nullptr);
    objref const number = objref::adopt(new cObjD<int>(5, &type));
    EXPECT_TRUE(type.is_void());
    EXPECT_EQ(type.type().name(), "niltype");
    EXPECT_TRUE(number->assign(objref::adopt(new cObjD<int>(6, &type))));
    EXPECT_EQ(static_cast<cObjDR<int> &>(*number).val(), 6);
    EXPECT_EQ(cat::type_of_key(objref::share(&type)), cat::bad());
}

TEST_F(Untyped, no_converter_is_looked_up_for_a_source_without_a_type) {
    cTypeObj type("untyped_target", nullptr);
    type.set_converter(cat::type_nil(), [](cObj &, objref &) { return true; });
    cObj target(true);
    target.set_type(&type);
    EXPECT_FALSE(target.convert(untyped()));
    EXPECT_TRUE(target.convert(void_object()));
}
