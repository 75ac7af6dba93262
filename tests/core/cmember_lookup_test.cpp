// The cached member of a type: the next call must see every change of the type's members.
#include "qrv/core/ctypeobj.h"

#include "tests/core/hash_support.h"
#include "tests/support/fixture.h"

namespace {

std::string called;
bool append_a(cObj &, objref &) { return called += 'a', true; }
bool append_b(cObj &, objref &) { return called += 'b', true; }

class LastMember : public QrvTest {};

} // namespace

TEST_F(LastMember, a_replaced_or_removed_member_of_a_type_is_not_called_any_more) {
    typeref const type = make<cTypeObj>("appending", nullptr);
    objref const obj = objref::adopt(new cObjD<int>(1, type.get()));
    called.clear();
    type->set_tmember("append", make<cExeMember>(append_a));
    EXPECT_TRUE(obj->append(obj) && obj->append(obj));
    type->set_tmember("append", make<cExeMember>(append_b));
    EXPECT_TRUE(obj->append(obj));
    obj->set_omember("append", make<cExeMember>(append_a));
    EXPECT_TRUE(obj->append(obj));
    obj->set_omember("append", cat::badfind());
    EXPECT_TRUE(obj->append(obj));
    EXPECT_EQ(called, "aabab");
    type->set_tmember("append", objref());
    EXPECT_FALSE(obj->append(obj));
    type->set_tmember("append", make<cExeMember>(append_a));
    EXPECT_TRUE(obj->append(obj));
    type->tmmap().clear();
    EXPECT_FALSE(obj->append(obj));
    type->set_tmember("size", make<cExeMember>(append_a));
    EXPECT_FALSE(obj->append(obj));
    EXPECT_EQ(called, "aababa");
}

TEST_F(LastMember, a_member_of_a_type_whose_key_was_changed_is_not_found) {
    typeref const type = make<cTypeObj>("appending", nullptr);
    objref const obj = objref::adopt(new cObjD<int>(1, type.get()));
    type->set_tmember("append", make<cExeMember>(append_a));
    EXPECT_TRUE(obj->append(obj));
    objref const key = type->tmmap().find("append")->key();
    val<std::string>(key) = "prepend";
    EXPECT_FALSE(obj->append(obj));
    val<std::string>(key) = "append";
    EXPECT_TRUE(obj->append(obj));
}
