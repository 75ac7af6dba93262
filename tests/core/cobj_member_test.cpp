// Members of objects, the lookup object, type, global, and comments.
#include "qrv/containers/cattr.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"

namespace {

class MemberEdge : public QrvTest {};
class Member : public QrvTest {};

using test::key;

bool assign_nothing(cObj &, objref &) { return true; }

} // namespace

TEST_F(MemberEdge, nil_creates_a_member_map_and_badfind_does_not) {
    objref const a = cat::of(1), b = cat::of(2);
    EXPECT_TRUE(a->set_omember("k", cat::nil()));
    EXPECT_TRUE(a->has_ommap());
    EXPECT_TRUE(a->omember("k") == cat::nil());
    EXPECT_TRUE(b->set_omember("k", cat::badfind()));
    EXPECT_TRUE(b->set_omember("k", objref()));
    EXPECT_FALSE(b->has_ommap());
}

TEST_F(MemberEdge, removing_the_last_member_leaves_no_map) {
    objref const a = cat::of(1);
    a->set_omember("k", cat::of(2));
    EXPECT_TRUE(a->set_omember("k", objref()));
    EXPECT_FALSE(a->has_ommap());
    EXPECT_TRUE(a->omember("k") == cat::badfind());
}

TEST_F(MemberEdge, the_exe_flag_stays_and_dispatch_continues_with_the_type) {
    objref const a = cat::of(1);
    a->set_omember("assign", make<cExeMember>(assign_nothing));
    a->set_omember("assign", objref());
    EXPECT_TRUE(a->flags_of(of_exe_member));
    EXPECT_TRUE(a->assign(*cat::of(5)));
    EXPECT_TRUE(cat::is_equal(a, 5));
}

TEST_F(MemberEdge, copyitem_with_clone_new_stores_the_value_itself) {
    cMapObj map;
    objref const value = cat::of(1);
    EXPECT_TRUE(map.copyitem(key("k"), value, true));
    EXPECT_TRUE(map.getattr(key("k")) == value);
}

TEST_F(Member, copyitem_assigns_into_a_good_value) {
    cMapObj map;
    objref const present = cat::of(1);
    map.setattr(key("k"), present);
    EXPECT_TRUE(map.copyitem(key("k"), cat::of(7), false));
    EXPECT_TRUE(map.getattr(key("k")) == present);
    EXPECT_TRUE(cat::is_equal(present, 7));
    EXPECT_FALSE(map.copyitem(key("x"), cat::bad(), false));
    EXPECT_FALSE(map.copyitem(key("x"), objref(), true));
    EXPECT_FALSE(cat::nil()->copyitem(key("x"), cat::of(1), false));
}

TEST_F(Member, append_needs_a_good_value_and_a_method) {
    cVectorObj v;
    EXPECT_TRUE(v.append(cat::of(1)));
    EXPECT_TRUE(v.append(cat::nil()));
    EXPECT_FALSE(v.append(cat::bad()));
    EXPECT_FALSE(v.append(objref()));
    EXPECT_EQ(v.size(), 2);
    cErrorLog errors;
    EXPECT_FALSE(cat::of(1)->append(cat::of(2)));
    EXPECT_EQ(errors.text(), "0x44000000 Attr value, type 'int': Bad call of 'append'. Method "
                             "does not exist!\n");
}

TEST_F(Member, getattr_force_creates_a_map_for_an_absent_value) {
    cMapObj map;
    EXPECT_TRUE(map.getattr_force(key("a"), false) == cat::badfind());
    objref const made = map.getattr_force(key("a"), true);
    EXPECT_TRUE(cObj::is_map(made));
    EXPECT_TRUE(map.getattr(key("a")) == made);
    EXPECT_TRUE(map.getattr_force(key("a"), true) == made);
    map.setflags(of_const_keys);
    cErrorLog errors;
    EXPECT_TRUE(map.getattr_force(key("b"), true) == cat::bad());
    EXPECT_EQ(errors.count(), 1u);
    EXPECT_TRUE(cat::nil()->getattr_force(key("b"), true) == cat::bad());
}

TEST_F(Member, is_owner_of_searches_below_and_terminates_on_cycles) {
    objref const top = make<cMapObj>(), inner = make<cMapObj>(), leaf = cat::of(1);
    top->setattr(key("i"), inner);
    inner->setattr(key("l"), leaf);
    EXPECT_TRUE(top->is_owner_of(*leaf));
    EXPECT_TRUE(top->is_owner_of(*inner));
    EXPECT_FALSE(top->is_owner_of(*top));
    EXPECT_FALSE(inner->is_owner_of(*top));
    EXPECT_FALSE(leaf->is_owner_of(*top));
    inner->setattr(key("self"), inner);
    EXPECT_TRUE(inner->is_owner_of(*inner));
    EXPECT_FALSE(top->is_owner_of(*top));
    static_cast<cMapObj &>(*inner).clear();
}

TEST_F(Member, detach_copies_shared_values) {
    objref ref = cat::of(5);
    cObj const *const alone = ref.get();
    EXPECT_TRUE(cat::detach(ref, false));
    EXPECT_TRUE(ref == alone);
    objref const other = ref;
    EXPECT_TRUE(cat::detach(ref, false));
    EXPECT_TRUE(ref != other && ref->equal(*other));
    EXPECT_FALSE(cat::detach(objref(), false));
    EXPECT_FALSE(cat::detach(cat::nil(), false));
}

TEST_F(Member, detach_never_replaces_a_constant) {
    cObj const *const truth = cat::btrue().get();
    EXPECT_FALSE(cat::detach(cat::btrue(), false));
    EXPECT_TRUE(cat::btrue() == truth);
}

TEST_F(Member, ommap_replaces_the_map_of_members) {
    objref const a = cat::of(1);
    cMapObj map;
    a->ommap(map);
    EXPECT_TRUE(a->has_ommap());
    EXPECT_EQ(a->ommap().father(), &map);
    map.setattr(key("k"), cat::of(2));
    EXPECT_TRUE(cat::is_equal(a->omember("k"), 2));
    hashref const hash = make<cAttrHash>(nullptr);
    a->ommap(hash);
    EXPECT_EQ(hash->father(), a.get());
    a->ommap(hashref());
    EXPECT_FALSE(a->has_ommap());
}

TEST_F(Member, members_are_found_in_the_object_the_type_and_the_globals) {
    objref const a = cat::of(1);
    EXPECT_EQ(cat::as_string(a->gmember("wformat")), "wc");
    cat::type_int().set_tmember("wformat", cat::of("type"));
    EXPECT_EQ(cat::as_string(a->gmember("wformat")), "type");
    a->set_omember("wformat", cat::of("object"));
    EXPECT_EQ(cat::as_string(a->gmember("wformat")), "object");
    cat::type_int().set_tmember("wformat", objref());
    EXPECT_TRUE(a->gmember("nosuch") == cat::badfind());
}

TEST_F(Member, gmember_returns_a_reference_to_the_stored_member) {
    objref const a = cat::of(1);
    a->gmember_("fresh") = cat::of(7);
    EXPECT_TRUE(cat::is_equal(a->omember("fresh"), 7));
    a->gmember_("fresh") = cat::of(8);
    EXPECT_TRUE(cat::is_equal(a->omember("fresh"), 8));
    EXPECT_EQ(&a->gmember_("wformat"), &cat::gmmap().datamap().find("wformat")->valref_());
    a->gmember_(objref()) = cat::of(9); // a key that can't be stored: no effect
    EXPECT_TRUE(a->gmember_(objref()) == nullptr);
}

TEST_F(Member, force_omember_accepts_a_type_and_an_example) {
    objref const a = cat::of(1);
    EXPECT_TRUE(a->force_omember("k", cat::type_nil()) == cat::bad());
    objref const made = a->force_omember("k", cat::type_string());
    EXPECT_EQ(&made->type(), &cat::type_string());
    EXPECT_TRUE(a->force_omember("k", cat::type_string()) == made);
    objref const example = cat::of(5);
    EXPECT_TRUE(a->force_omember("k", example) == example);
    EXPECT_TRUE(a->force_omember("k", cat::of(6)) == example);
    EXPECT_TRUE(a->force_omember("k", objref()) == cat::bad());
    EXPECT_TRUE(a->force_omember("k", cat::bad()) == cat::bad());
}

TEST_F(Member, an_object_that_only_claims_to_be_executable_is_not_a_member) {
    objref const pretender = cat::of("x");
    pretender->set_type(&cat::type_exe());
    objref const a = cat::of(1);
    {
        cErrorLog errors;
        EXPECT_FALSE(a->set_omember("k", pretender));
        EXPECT_EQ(errors.text(), "0x44000000 Attr value, type 'int': Inserted executable, key "
                                 "'k', must be cExeMember\n");
    }
    cat::errhandler() = cErrHandler(0, 0x04000000u, 0xFFFFFFFFu);
    EXPECT_TRUE(a->set_omember("k", pretender)); // the error is forgiven, but nothing is stored
    EXPECT_TRUE(a->omember("k") == cat::badfind());
    pretender->set_type(&cat::type_string());
}

TEST_F(Member, comments) {
    objref const a = cat::of(1);
    std::string text = "as before";
    EXPECT_FALSE(a->get_comment(text));
    EXPECT_TRUE(a->set_comment(" // one", false));
    EXPECT_FALSE(a->set_comment(" // two", false));
    EXPECT_TRUE(a->get_comment(text));
    EXPECT_EQ(text, " // one");
    EXPECT_TRUE(a->set_comment(" // two", true));
    EXPECT_TRUE(a->get_comment(text));
    EXPECT_EQ(text, " // two");
    a->set_omember("//", cat::nil());
    EXPECT_FALSE(a->get_comment(text));
    EXPECT_TRUE(a->set_comment(" // three", false));
    a->set_omember("//", cat::of(5)); // no converter from int to string
    EXPECT_FALSE(a->get_comment(text));
    EXPECT_EQ(text, " // two");
}
