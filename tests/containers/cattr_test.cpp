// Handles to attributes.
#include "qrv/containers/cattr.h"

#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"

#include <sstream>

namespace {

class HandleEdge : public QrvTest {};
class Handle : public QrvTest {};

using test::key;

objref vector_of(std::initializer_list<int> numbers) {
    objref v = make<cVectorObj>();
    for (int n : numbers) v->append(cat::of(n));
    return v;
}

} // namespace

TEST_F(HandleEdge, an_absent_key_reads_badfind_and_is_defined) {
    objref const map = make<cMapObj>();
    cAttr const attr = (*map)["x"];
    EXPECT_TRUE(attr.is_defined());
    EXPECT_TRUE(attr.getattr() == cat::badfind());
    auto const spec = specref::adopt(new cAttspec(asf_required, nullptr));
    static_cast<cMapObj &>(*map).set_attspec("x", spec);
    cErrorLog errors;
    EXPECT_TRUE(attr.getattr() == cat::bad());
    EXPECT_EQ(errors.text(),
              "0x40040000 REQUIRED attribute, key 'x' in object type 'map'  is missed\n");
}

TEST_F(HandleEdge, an_empty_handle_reads_bad_and_ignores_writes) {
    cAttr attr;
    EXPECT_TRUE(attr.getattr() == cat::bad());
    EXPECT_FALSE(attr.is_defined());
    attr = cat::of(1);
    EXPECT_TRUE(attr.getattr() == cat::bad());
}

TEST_F(HandleEdge, assigning_a_handle_to_itself_writes_nothing) {
    objref const map = make<cMapObj>();
    cAttr attr = (*map)["x"];
    cAttr const &same = attr;
    attr = same;
    EXPECT_EQ(static_cast<cMapObj &>(*map).size(), 0);
    attr = (*map)["x"];
    EXPECT_EQ(static_cast<cMapObj &>(*map).size(), 0);
}

TEST_F(HandleEdge, the_written_value_is_stored_itself) {
    objref const map = make<cMapObj>();
    objref const value = cat::of(1);
    (*map)["x"] = value;
    EXPECT_EQ(&*(*map)["x"], value.get());
    EXPECT_EQ((*map)["x"].operator->(), value.get());
}

TEST_F(HandleEdge, a_chain_stops_at_a_missing_level) {
    objref const map = make<cMapObj>();
    cErrorLog errors;
    (*map)["a"]["b"] = cat::of(1);
    EXPECT_EQ(static_cast<cMapObj &>(*map).size(), 0);
    EXPECT_EQ(errors.count(), 0u);
    EXPECT_EQ(messages(), "");
}

TEST_F(HandleEdge, force_type_keeps_an_object_of_the_type) {
    objref const map = make<cMapObj>();
    objref const value = cat::of(7);
    (*map)["x"] = value;
    EXPECT_TRUE((*map)["x"].force_type(cat::type_int()) == value);
    EXPECT_TRUE(cat::is_equal(value, 7));
}

TEST_F(HandleEdge, force_default_of_null) {
    objref const map = make<cMapObj>();
    EXPECT_TRUE((*map)["x"].force_default(objref()) == cat::bad());
    EXPECT_TRUE((*map)["x"].force_default(cat::bad()) == cat::bad());
    EXPECT_EQ(static_cast<cMapObj &>(*map).size(), 0);
}

TEST_F(HandleEdge, force_value_copies_in_place_on_a_fixed_type) {
    cMapObj *const plain = new cMapObj;
    objref const map = objref::adopt(plain);
    plain->set_attspec("x", specref::adopt(new cAttspec(asf_required, &cat::type_int())));
    objref const value = cat::of(1);
    (*map)["x"] = value;
    cErrorLog errors;
    (*map)["x"].force_value(cat::of(9), false);
    EXPECT_TRUE((*map)["x"].getattr() == value);
    EXPECT_TRUE(cat::is_equal(value, 9));
    EXPECT_EQ(errors.count(), 0u);
}

TEST_F(HandleEdge, unsave_restores_the_content_in_the_same_object) {
    objref const map = make<cMapObj>();
    objref const value = cat::of(1);
    (*map)["x"] = value;
    cMapObj saved;
    (*map)["x"].save(saved);
    value->assign(*cat::of(5));
    (*map)["x"].unsave(saved);
    EXPECT_TRUE((*map)["x"].getattr() == value);
    EXPECT_TRUE(cat::is_equal(value, 1));
}

TEST_F(HandleEdge, a_saved_map_is_a_clone_one_level_deep) {
    objref const map = make<cMapObj>(), inner = make<cMapObj>(), leaf = cat::of(1);
    inner->setattr(key("l"), leaf);
    (*map)["x"] = inner;
    cMapObj saved;
    (*map)["x"].save(saved);
    objref const copy = saved.getattr(key("x"));
    EXPECT_TRUE(cObj::is_map(copy) && copy != inner);
    EXPECT_TRUE(copy->getattr(key("l")) == leaf);
}

TEST_F(HandleEdge, inserting_at_the_end_appends_and_after_it_is_out_of_range) {
    objref const v = vector_of({1, 2});
    cErrorLog errors;
    (*v)[2] << cat::of(3);
    EXPECT_EQ(cat::as_text(v), "[1, 2, 3, ]");
    cAttr const same = (*v)[4] << cat::of(9);
    EXPECT_EQ(errors.text(), "0x40020000 Setattr in object type 'vector', key '4': Inserting "
                             "cAttr::operator<< in 'vector' Out of Range\n");
    EXPECT_TRUE(same == (*v)[4]);
    EXPECT_EQ(cat::as_text(v), "[1, 2, 3, ]");
}

TEST_F(HandleEdge, inserting_into_a_map_is_not_defined) {
    objref const map = make<cMapObj>();
    cErrorLog errors;
    (*map)["k"] << cat::of(1);
    EXPECT_EQ(errors.text(), "0x40020000 Setattr in object type 'map', key 'k': Inserting "
                             "cAttr::operator<< is not defines in type: map\n");
}

TEST_F(Handle, insertions_can_be_chained) {
    objref const v = vector_of({1, 2, 3});
    cAttr const next = (*v)[1] << cat::of(8) << cat::of(9);
    EXPECT_EQ(cat::as_text(v), "[1, 8, 9, 2, 3, ]");
    EXPECT_TRUE(cat::is_equal(next.key(), 3));
    (*v)[0] << objref(); // inserting null removes the index
    EXPECT_EQ(cat::as_text(v), "[8, 9, 2, 3, ]");
}

TEST_F(Handle, failed_insertions_report_the_reason_and_end_with_any_handler) {
    objref const v = vector_of({1});
    {
        cErrorLog errors;
        (*v)[0] << cat::bad();
        (*v)["0"] << cat::of(1);
        (*v)[-1] << cat::of(1);
        EXPECT_EQ(errors.text(),
                  "0x40020000 Setattr in object type 'vector', key '0': Inserting "
                  "cAttr::operator<< in 'vector' failed\n"
                  "0x40020000 Setattr in object type 'vector', key '\"0\"': Inserting "
                  "cAttr::operator<< in 'vector' Out of Range\n"
                  "0x40020000 Setattr in object type 'vector', key '-1': Inserting "
                  "cAttr::operator<< in 'vector' Out of Range\n");
    }
    cat::errhandler() = cErrHandler(0, 0x40000000u, 0xFFFFFFFFu);
    (*v)[5] << cat::of(1);
    EXPECT_EQ(cat::as_text(v), "[1, ]");
}

TEST_F(Handle, equal_values_are_added_to_a_set_only_by_insertion) {
    objref const s = make<cSetObj>();
    s->append(cat::of(1));
    (*s)[1] << cat::of(1);
    EXPECT_EQ(cat::as_text(s), "<1, 1, >");
}

TEST_F(Handle, insertion_ignores_const_keys_and_entry_type) {
    objref const v = vector_of({1});
    v->setflags(of_const_keys);
    static_cast<cMapObj &>(*v).set_entrytype(&cat::type_int());
    (*v)[0] << cat::of("a");
    EXPECT_EQ(cat::as_text(v), "[a, 1, ]");
}

TEST_F(Handle, handles_share_between_attributes) {
    objref const a = make<cMapObj>(), b = make<cMapObj>();
    objref const value = cat::of(1);
    (*b)["y"] = value;
    (*a)["x"] = (*b)["y"];
    EXPECT_TRUE(a->getattr(key("x")) == value);
    objref const other = cat::of(2);
    (*a)["z"] = other;
    *(*a)["z"] = *(*b)["y"]; // copies into the object
    EXPECT_TRUE(a->getattr(key("z")) == other);
    EXPECT_TRUE(cat::is_equal(other, 1));
}

TEST_F(Handle, keys_outlive_the_string_from_which_they_were_created) {
    objref const map = make<cMapObj>();
    cAttr attr = (*map)[std::string("a key that needs memory of its own, ") + "and more of it"];
    attr = cat::of(1);
    EXPECT_TRUE(cat::is_equal(attr.getattr(), 1));
    EXPECT_EQ(attr.key_as_string(), "a key that needs memory of its own, and more of it");
}

TEST_F(Handle, a_null_string_is_a_key_that_reads_bad) {
    objref const map = make<cMapObj>();
    cAttr attr = (*map)[static_cast<char const *>(nullptr)];
    EXPECT_FALSE(attr.is_defined());
    EXPECT_TRUE(attr.getattr() == cat::bad());
    attr = cat::of(1);
    EXPECT_EQ(static_cast<cMapObj &>(*map).size(), 0);
    EXPECT_EQ(&*attr, cat::bad().get());
    EXPECT_TRUE(attr["x"].getattr() == cat::bad());
}

TEST_F(Handle, swap_to_returns_the_old_value) {
    objref const map = make<cMapObj>();
    EXPECT_TRUE((*map)["x"].swap_to(cat::of(1)) == cat::badfind());
    objref const old = (*map)["x"].swap_to(objref());
    EXPECT_TRUE(cat::is_equal(old, 1));
    EXPECT_EQ(static_cast<cMapObj &>(*map).size(), 0);
}

TEST_F(Handle, handles_are_compared_by_owner_and_key) {
    objref const a = make<cMapObj>(), b = make<cMapObj>();
    EXPECT_TRUE((*a)["x"] == (*a)["x"]);
    EXPECT_TRUE((*a)["x"] != (*a)["y"]);
    EXPECT_TRUE((*a)["x"] != (*b)["x"]);
    EXPECT_TRUE((*a)[1] != (*a)["1"]);
    EXPECT_TRUE(cAttr() == cAttr());
    EXPECT_TRUE(cAttr(a, objref()) != (*a)["x"]);
    EXPECT_TRUE((*a)["x"] != cAttr(a, objref()));
    EXPECT_TRUE(cAttr(a, objref()) == cAttr(a, objref()));
}

TEST_F(Handle, set_rebinds_and_writes_nothing) {
    objref const a = make<cMapObj>();
    cAttr attr = (*a)["x"];
    attr.set((*a)["y"]);
    EXPECT_EQ(attr.key_as_string(), "y");
    EXPECT_EQ(static_cast<cMapObj &>(*a).size(), 0);
}

TEST_F(Handle, a_handle_reads_with_a_type) {
    objref const map = make<cMapObj>();
    (*map)["x"] = cat::of(1);
    EXPECT_TRUE(cat::is_equal((*map)["x"].getattr(cat::type_int()), 1));
    EXPECT_TRUE((*map)["x"].getattr(cat::type_string()) == cat::bad());
}

TEST_F(Handle, force_type_and_force_default_may_be_refused_by_the_owner) {
    cMapObj *const plain = new cMapObj;
    objref const map = objref::adopt(plain);
    plain->set_entrytype(&cat::type_int());
    EXPECT_TRUE((*map)["x"].force_type(cat::type_string()) == cat::bad());
    EXPECT_TRUE((*map)["x"].force_default(cat::of("a")) == cat::bad());
    EXPECT_TRUE((*map)["x"].force_type(cat::type_nil()) == cat::bad());
    objref const made = (*map)["x"].force_type(cat::type_int());
    EXPECT_TRUE(cat::is_equal(made, 0));
    objref const value = cat::of(5);
    EXPECT_TRUE((*map)["x"].force_default(value) == made);
    EXPECT_TRUE((*map)["y"].force_default(value) == value);
}

TEST_F(Handle, force_value_clones_or_shares_a_new_value) {
    objref const map = make<cMapObj>();
    objref const value = cat::of(1);
    (*map)["a"].force_value(value, false);
    (*map)["b"].force_value(value, true);
    EXPECT_TRUE(map->getattr(key("a")) == value);
    EXPECT_TRUE(map->getattr(key("b")) != value && map->getattr(key("b"))->equal(*value));
    (*map)["c"].force_value(objref(), true);
    EXPECT_TRUE(map->getattr(key("c")) == cat::badfind());
}

TEST_F(Handle, unsave_without_a_saved_value_changes_nothing) {
    objref const map = make<cMapObj>();
    (*map)["x"] = cat::of(1);
    cMapObj const saved;
    EXPECT_TRUE((*map)["x"].unsave(saved) == (*map)["x"]);
    EXPECT_TRUE(cat::is_equal(map->getattr(key("x")), 1));
}

TEST_F(Handle, save_of_a_value_that_cannot_be_copied_saves_nothing) {
    objref const map = make<cMapObj>();
    cMapObj saved;
    (*map)["absent"].save(saved);
    (*map)["nil"] = cat::nil();
    (*map)["nil"].save(saved);
    EXPECT_EQ(saved.size(), 0);
}

TEST_F(Handle, write_attr) {
    objref const map = make<cMapObj>();
    (*map)["my key"] = cat::of("a b");
    std::ostringstream os;
    EXPECT_TRUE((*map)["my key"].write_attr(os));
    EXPECT_EQ(os.str(), "my key=\"a b\"; ");
    os.setstate(std::ios::badbit);
    EXPECT_FALSE((*map)["my key"].write_attr(os));
}

TEST_F(Handle, the_own_setattr_of_an_object_handles_the_write) {
    objref const map = make<cMapObj>();
    cExeMember *const exe = new cExeMember(
        [](cObj &obj, objref &, objref &value) { return obj.set_omember("taken", value); });
    map->set_omember("setattr", objref::adopt(exe));
    (*map)["x"] = cat::of(1);
    EXPECT_EQ(static_cast<cMapObj &>(*map).size(), 0);
    EXPECT_TRUE(cat::is_equal(map->omember("taken"), 1));
}

TEST_F(Handle, inserting_into_an_object_that_only_claims_to_be_a_sequence_is_not_defined) {
    for (cTypeObj *type : {&cat::type_vector(), &cat::type_set()}) {
        objref const claim = cat::of(1);
        claim->set_type(type);
        cErrorLog errors;
        cAttr const same = (*claim)[0] << cat::of(2);
        EXPECT_EQ(errors.text(),
                  "0x40020000 Setattr in object type '" + type->name() +
                      "', key '0': Inserting cAttr::operator<< is not defines in type: " +
                      type->name() + "\n");
        EXPECT_TRUE(same == (*claim)[0]);
    }
}
