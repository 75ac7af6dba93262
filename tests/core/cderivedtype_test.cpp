// Derived types.
#include "qrv/core/cderivedtype.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/types.h"

namespace {

class DerivedType : public QrvTest {
  protected:
    static typeref derived(char const *name, cTypeObj &base) {
        typeref const type = make<cTypeObj>(name);
        EXPECT_TRUE(cat::derive_from(*type, base));
        cat::typemap().datamap().mapitem(make_key(name), type);
        return type;
    }

    cTypesBack const types_;
};

} // namespace

TEST_F(DerivedType, creates_objects_like_its_base_with_its_own_type) {
    typeref const type = derived("Settings", cat::type_map());
    objref const made = type->newobj();
    ASSERT_TRUE(cObj::is_good(made));
    EXPECT_EQ(&made->type(), type.get());
    EXPECT_NE(dynamic_cast<cMapObj *>(made.get()), nullptr);
    EXPECT_TRUE(made->is_container());
    EXPECT_TRUE(made->setattr(make_key("a"), cat::of(1)));
    EXPECT_EQ(cat::as_text(made->getattr(make_key("a"))), "1");
}

TEST_F(DerivedType, is_written_by_its_name_and_read_again) {
    typeref const type = derived("Port", cat::type_int());
    objref made = type->newobj();
    EXPECT_TRUE(made->assign(cat::of(80)));
    EXPECT_EQ(cat::as_text(made), "Port(80)");
    objref again;
    EXPECT_EQ(cObj::readobj("Port(80)", again), 0);
    ASSERT_TRUE(again);
    EXPECT_EQ(&again->type(), type.get());
    EXPECT_TRUE(made->equal(again));
    EXPECT_EQ(messages(), "");
}

TEST_F(DerivedType, has_the_key_hooks_and_converters_of_its_base) {
    typeref const type = derived("Port", cat::type_int());
    EXPECT_TRUE(type->is_keytype());
    EXPECT_EQ(type->hash_hook(), cat::type_int().hash_hook());
    EXPECT_EQ(type->converter(cat::type_string()), cat::type_int().converter(cat::type_string()));
    typeref const own = make<cTypeObj>("Own");
    own->set_hash(cat::hash_string, cat::heq_string);
    EXPECT_TRUE(cat::derive_from(*own, cat::type_int()));
    EXPECT_EQ(own->hash_hook(), &cat::hash_string); // the first wins
}

TEST_F(DerivedType, may_be_derived_from_again_and_changed) {
    typeref const port = derived("Port", cat::type_int());
    typeref const high = derived("HighPort", *port);
    high->set_tmember("newobj2", cat::of(1));
    objref const made = high->newobj();
    ASSERT_TRUE(cObj::is_good(made));
    EXPECT_EQ(&made->type(), high.get());
    EXPECT_EQ(port->tmember("newobj2"), cat::badfind());
}

TEST_F(DerivedType, is_not_derived_from_itself) {
    typeref const port = derived("Port", cat::type_int());
    EXPECT_FALSE(cat::derive_from(*port, *port));
    EXPECT_FALSE(cat::derive_from(cat::type_int(), *port));
}
