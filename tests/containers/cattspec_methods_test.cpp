// The attributes of a specification, written and read by a program.
#include "qrv/containers/cattr.h"
#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"

namespace {

class SpecificationMethodsEdge : public QrvTest {};

class SpecificationMethods : public QrvTest {
  protected:
    bool set(char const *key, objref const &value) {
        return spec_->setattr(own_key(std::string(key)), value);
    }
    objref get(char const *key) { return spec_->getattr(own_key(std::string(key))); }
    int bits() const { return spec_->flags_of(asf_all); }
    // The errors since the last call.
    std::string raised() {
        std::string const text = errors_.text();
        errors_.clear();
        return text;
    }

    specref spec_ = specref::adopt(new cAttspec(asf_required, nullptr));
    cErrorLog errors_;
};

objref word(char const *name) { return cat::constmap().datamap().getitem(name); }

std::string const begin = "0x40020000 Setattr in object type 'attspec', key ";

} // namespace

TEST_F(SpecificationMethodsEdge, fixed_without_a_default_is_refused) {
    cErrorLog errors;
    cAttspec spec(asf_required, nullptr);
    EXPECT_FALSE(spec.setattr(own_key(std::string("flag")), word("FIXED")));
    EXPECT_EQ(errors.text(), begin + "'flag':  Error in setting attribute type: niltype\n");
    EXPECT_EQ(spec.flags_of(asf_all), 8);
}

TEST_F(SpecificationMethodsEdge, a_default_before_its_type_fixes_the_type) {
    cErrorLog errors;
    cAttspec spec(asf_required, nullptr);
    EXPECT_TRUE(spec.setattr(own_key(std::string("default")), cat::of(1)));
    EXPECT_EQ(spec.get_type(), &cat::type_int());
    EXPECT_FALSE(spec.setattr(own_key(std::string("type")), cat::of("double")));
    EXPECT_EQ(errors.text(), begin + "'type':  Error in setting attribute type: string\n");
    EXPECT_TRUE(spec.setattr(own_key(std::string("type")), cat::of("int")));
    EXPECT_EQ(spec.flags_of(asf_all), 4 + 1);
}

TEST_F(SpecificationMethods, flag_accepts_the_three_words) {
    EXPECT_TRUE(set("flag", word("IMPLIED")));
    EXPECT_EQ(bits(), 16);
    EXPECT_TRUE(get("flag") == word("IMPLIED"));
    EXPECT_TRUE(set("flag", word("REQUIRED")));
    EXPECT_EQ(bits(), 8);
    EXPECT_TRUE(get("flag") == word("REQUIRED"));
    EXPECT_TRUE(set("default", cat::of("x")));
    EXPECT_TRUE(get("flag") == cat::nil());
    EXPECT_TRUE(set("flag", word("FIXED")));
    EXPECT_EQ(bits(), 4 + 2 + 1);
    EXPECT_TRUE(get("flag") == word("FIXED"));
    EXPECT_EQ(raised(), "");
}

TEST_F(SpecificationMethods, a_word_is_recognised_by_identity) {
    EXPECT_FALSE(set("flag", cat::of("REQUIRED")));
    EXPECT_EQ(raised(), begin + "'flag':  Error in setting attribute type: string\n");
    EXPECT_FALSE(set("flag", make<cObj>(true))); // void like the word, but another object
    EXPECT_EQ(raised(), begin + "'flag':  Error in setting attribute type: niltype\n");
    EXPECT_FALSE(set("flag", cat::nil()));
    EXPECT_EQ(raised(), begin + "'flag':  Error in setting attribute type: niltype\n");
    EXPECT_EQ(bits(), 8);
}

TEST_F(SpecificationMethods, type_accepts_a_type_or_its_name) {
    EXPECT_TRUE(get("type") == cat::nil());
    EXPECT_TRUE(set("type", cat::of("int")));
    EXPECT_TRUE(get("type") == &cat::type_int());
    EXPECT_TRUE(set("type", objref::share(&cat::type_map())));
    EXPECT_TRUE(get("type") == &cat::type_map());
    EXPECT_EQ(bits(), 8 + 1);
    EXPECT_FALSE(set("type", cat::of("nosuch")));
    EXPECT_EQ(raised(), begin + "'type':  Error in setting BAD type: nosuch\n");
    EXPECT_FALSE(set("type", cat::of(7)));
    EXPECT_EQ(raised(), begin + "'type':  Error in setting BAD type: 7\n");
    EXPECT_FALSE(set("type", cat::nil()));
    EXPECT_EQ(raised(), begin + "'type':  Error in setting BAD type: #nil\n");
    EXPECT_TRUE(get("type") == &cat::type_map());
}

TEST_F(SpecificationMethods, a_specification_keeps_its_type_alive) {
    typeref type = typeref::adopt(new cTypeObj(&cat::typetype_attlist(), "Mine", nullptr));
    EXPECT_TRUE(set("type", type));
    EXPECT_EQ(spec_->held_type(), type);
    EXPECT_TRUE(set("default", type->newobj())); // of the same type, which stays shared
    cTypeObj const *const address = type;
    type = nullptr;
    EXPECT_EQ(spec_->held_type().get(), address);
    EXPECT_EQ(spec_->held_type()->refs(), 1u);
    EXPECT_EQ(spec_->get_type()->name(), "Mine");
    EXPECT_EQ(cat::as_text(spec_), "attspec(type=Mine; default=Mine(\n))");
    spec_->set_default(nullptr, false);
    spec_->set_type(nullptr);
    EXPECT_EQ(spec_->held_type(), nullptr);
    EXPECT_EQ(raised(), "");
}

TEST_F(SpecificationMethods, the_registry_keeps_a_registered_type_alive) {
    auto const type = typeref::adopt(new cTypeObj(&cat::typetype_attlist(), "Mine", nullptr));
    cTypeInsert const insert(*type);
    EXPECT_TRUE(set("type", type));
    EXPECT_EQ(spec_->held_type(), nullptr);
    EXPECT_EQ(spec_->get_type(), type.get());
    auto const other = typeref::adopt(new cTypeObj(&cat::typetype_attlist(), "Mine", nullptr));
    EXPECT_TRUE(set("type", other)); // another type of the same name
    EXPECT_EQ(spec_->held_type(), other);
    EXPECT_TRUE(set("type", type));
    EXPECT_EQ(spec_->held_type(), nullptr);
}

TEST_F(SpecificationMethods, a_default_is_shared_and_compared_with_the_type) {
    EXPECT_TRUE(get("default") == cat::nil());
    EXPECT_TRUE(set("type", cat::of("int")));
    EXPECT_FALSE(set("default", cat::of(1.5)));
    EXPECT_EQ(raised(), begin + "'default':  Error in setting attribute type: double\n");
    objref const value = cat::of(5);
    EXPECT_TRUE(set("default", value));
    EXPECT_TRUE(get("default") == value);
    EXPECT_EQ(bits(), 4 + 1);
}

TEST_F(SpecificationMethods, a_void_default_changes_nothing_unless_the_type_is_fixed) {
    EXPECT_TRUE(set("default", cat::nil()));
    EXPECT_EQ(bits(), 8);
    EXPECT_TRUE(set("type", cat::of("int")));
    EXPECT_FALSE(set("default", cat::nil()));
    EXPECT_EQ(raised(), begin + "'default':  Error in setting attribute type: niltype\n");
    EXPECT_EQ(bits(), 8 + 1);
}

TEST_F(SpecificationMethods, assigning_nothing_clears_nothing) {
    for (char const *key : {"flag", "type", "default", "other"}) {
        for (objref const &value : {objref(), cat::bad(), cat::badfind()}) {
            EXPECT_FALSE(set(key, value));
            EXPECT_EQ(raised(), begin + "'" + key + "':  Error in setting BAD attribute\n");
        }
    }
}

TEST_F(SpecificationMethods, other_keys_are_refused) {
    EXPECT_FALSE(set("colour", cat::of(1)));
    EXPECT_EQ(raised(), begin + "'colour':  Error in setting attribute type: int\n");
    EXPECT_FALSE(spec_->setattr(cat::of(3), cat::of(1)));
    EXPECT_EQ(raised(), begin + "'3':  Error in setting attribute type: int\n");
    EXPECT_FALSE(spec_->setattr(cat::of(3), objref())); // the key is tested first
    EXPECT_EQ(raised(), begin + "'3':  Error in setting attribute type: \n");
    EXPECT_TRUE(get("colour") == cat::bad());
    EXPECT_TRUE(spec_->getattr(cat::of(3)) == cat::badfind());
}

TEST_F(SpecificationMethods, a_forgiven_refusal_is_true_and_changes_nothing) {
    cat::errhandler().clear_mask(0x00020000);
    EXPECT_TRUE(set("flag", cat::of(1)));
    EXPECT_TRUE(set("type", cat::of("nosuch")));
    EXPECT_TRUE(set("default", cat::bad()));
    EXPECT_TRUE(set("other", cat::of(1)));
    EXPECT_EQ(bits(), 8);
    EXPECT_TRUE(get("type") == cat::nil());
}

TEST_F(SpecificationMethods, handles_write_and_read_a_specification) {
    cAttr(spec_, "type") = cat::of("string");
    cAttr(spec_, "default") = cat::of("grey");
    EXPECT_EQ(cat::as_string(cAttr(spec_, "default").getattr()), "grey");
    EXPECT_EQ(raised(), "");
}

TEST_F(SpecificationMethods, methods_called_on_another_object_return_false) {
    objref const map = make<cMapObj>();
    objref key = cat::of("flag");
    objref value = word("REQUIRED");
    EXPECT_FALSE(cTomAttspec::setattr(*map, key, value));
    EXPECT_TRUE(cTomAttspec::getattr(map, key) == cat::bad());
    EXPECT_TRUE(cTomAttspec::create(*map));
    EXPECT_EQ(raised(), "");
}
