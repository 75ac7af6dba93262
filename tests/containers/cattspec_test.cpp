// Attribute specifications: the flags and their invariants, and specifications in a map.
#include "qrv/containers/cattspec.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"

namespace {

class SpecificationEdge : public QrvTest {};
class Specification : public QrvTest {};

using test::key;

int bits(cAttspec const &spec) { return spec.flags_of(asf_all); }

} // namespace

TEST_F(SpecificationEdge, required_without_type_stays) {
    EXPECT_EQ(bits(cAttspec(asf_required, nullptr)), 8);
}

TEST_F(SpecificationEdge, a_specification_without_a_flag_is_implied) {
    EXPECT_EQ(bits(cAttspec(0, nullptr)), 16);
}

TEST_F(SpecificationEdge, implied_with_a_type) {
    EXPECT_EQ(bits(cAttspec(asf_implied, &cat::type_int())), 17);
}

TEST_F(SpecificationEdge, setting_implied_clears_required) {
    cAttspec spec(asf_required, nullptr);
    spec.set_flags(asf_implied);
    EXPECT_EQ(bits(spec), 16);
}

TEST_F(SpecificationEdge, a_default_clears_required_and_fixes_the_type) {
    cAttspec spec(asf_required, nullptr);
    spec.set_default(cat::of(1), true);
    EXPECT_EQ(bits(spec), 4 + 1);
    EXPECT_EQ(spec.get_type(), &cat::type_int());
}

TEST_F(SpecificationEdge, a_fixed_specification_without_its_default_is_implied) {
    cAttspec spec(cat::of(1), asf_fixref);
    EXPECT_EQ(bits(spec), 4 + 2);
    spec.set_default(objref(), false);
    EXPECT_TRUE(spec.get_default() == nullptr);
    EXPECT_EQ(bits(spec), 16);
}

TEST_F(SpecificationEdge, a_map_without_specifications_returns_nilspec_without_a_search) {
    cMapObj map;
    map.set_omember("k", specref::adopt(new cAttspec(asf_required, nullptr)));
    EXPECT_TRUE(map.attspec("k") == cAttspec::nilspec()); // the map's bits are all 0
    EXPECT_EQ(bits(*cAttspec::nilspec()), 0);
}

TEST_F(SpecificationEdge, setting_a_specification_sets_the_value_to_nil) {
    cMapObj map;
    map.setattr(key("k"), cat::of(1));
    map.set_attspec("k", specref::adopt(new cAttspec(asf_implied, nullptr)));
    map.set_attspec("new", specref::adopt(new cAttspec(asf_implied, nullptr)));
    EXPECT_TRUE(map.datamap().getitem("k") == cat::nil());
    EXPECT_TRUE(map.datamap().getitem("new") == cat::nil());
}

TEST_F(Specification, invariants_over_all_flags) {
    for (int flags = 0; flags < 32; ++flags) {
        for (bool typed : {false, true}) {
            cAttspec const spec(flags, typed ? &cat::type_int() : nullptr);
            EXPECT_EQ(spec.is_fixtype(), typed);
            EXPECT_FALSE(spec.is_default() || spec.is_fixref());
            EXPECT_NE(spec.is_required(), spec.is_implied());
            EXPECT_EQ(spec.is_required(), (flags & asf_required) != 0);
        }
        cAttspec const spec(cat::of("x"), flags);
        EXPECT_TRUE(spec.is_default() && !spec.is_required() && !spec.is_implied());
        EXPECT_EQ(spec.is_fixref(), (flags & asf_fixref) != 0);
        EXPECT_EQ(spec.is_fixtype(), (flags & asf_fixtype) != 0);
        EXPECT_EQ(spec.get_type(), flags & asf_fixtype ? &cat::type_string() : nullptr);
    }
}

TEST_F(Specification, required_is_cleared_only_by_setting_implied) {
    cAttspec spec(asf_required, nullptr);
    spec.set_flags(0);
    spec.set_flags(asf_fixref | asf_default);
    EXPECT_EQ(bits(spec), 8);
    spec.set_flags(asf_implied | asf_required);
    EXPECT_EQ(bits(spec), 8); // cleared first, then set again
}

TEST_F(Specification, set_default_of_void_changes_nothing) {
    cAttspec spec(cat::of(1), asf_fixref);
    spec.set_default(cat::nil(), true);
    EXPECT_TRUE(cat::is_equal(spec.get_default(), 1));
    EXPECT_EQ(bits(spec), 6);
    spec.set_default(cat::badfind(), true);
    EXPECT_EQ(bits(spec), 16);
}

TEST_F(Specification, set_type_fixes_and_frees) {
    cAttspec spec(asf_required, nullptr);
    spec.set_type(&cat::type_map());
    EXPECT_EQ(bits(spec), 9);
    spec.set_type(nullptr);
    EXPECT_EQ(bits(spec), 8);
}

TEST_F(Specification, assignment_raises_and_copies_default_and_type) {
    cAttspec const source(cat::of(1), asf_fixtype);
    cAttspec target(asf_required, nullptr);
    cErrorLog errors;
    target = source;
    EXPECT_EQ(errors.text(),
              "0x48000000 Call of missed standard method 'assign' in type: attspec\n");
    EXPECT_TRUE(target.get_default() == source.get_default());
    EXPECT_EQ(target.get_type(), &cat::type_int());
    EXPECT_EQ(bits(target), 8);
}

TEST_F(Specification, the_map_collects_five_bits_and_no_other) {
    cMapObj map;
    auto const spec = specref::adopt(new cAttspec(asf_required, nullptr));
    spec->setflags(of_const | of_const_keys);
    map.set_attspec("a", spec);
    EXPECT_EQ(map.flags(), 8);
    map.set_attspec("b", specref::adopt(new cAttspec(cat::of(1), asf_fixref)));
    EXPECT_EQ(map.flags(), 8 | 4 | 2);
    EXPECT_TRUE(map.attspec("a") == spec);
    EXPECT_TRUE(map.attspec("c") == cAttspec::nilspec());
    map.set_attspec("a", specref());
    EXPECT_TRUE(map.attspec("a") == cAttspec::nilspec());
    EXPECT_EQ(map.flags(), 8 | 4 | 2); // the bits only grow
}

TEST_F(Specification, a_member_of_another_type_is_not_a_specification) {
    cMapObj map;
    map.set_attspec("a", specref::adopt(new cAttspec(asf_implied, nullptr)));
    map.set_omember("b", cat::of(1));
    EXPECT_TRUE(map.attspec("b") == cAttspec::nilspec());
}

TEST_F(Specification, a_new_specification_is_required) {
    objref const made = cTomAttspec::newobj(objref());
    EXPECT_EQ(made->flags_of(asf_all), 8);
    EXPECT_EQ(&made->type(), &cat::type_attspec());
}

TEST_F(Specification, a_member_that_only_claims_to_be_a_specification_is_ignored) {
    auto const map = make<cMapObj>();
    objref const claim = cat::of(1);
    claim->set_type(&cat::type_attspec());
    map->setflags(asf_all);
    map->set_omember("a", claim);
    EXPECT_EQ(map->attspec("a"), cAttspec::nilspec());
    EXPECT_TRUE(map->setattr(own_key(std::string("a")), cat::of(2)));
    EXPECT_TRUE(cat::is_equal(map->getattr(own_key(std::string("a"))), 2));
}
