// Types by name: known types, and types that a factory in the repository creates on the first
// request.

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/modules/crepository.h"

#include "tests/support/fixture.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>

namespace {

// A factory that is in the repository under a name while it exists. The test's function creates the
// type.
class Factory : public cTypeCtor {
  public:
    Factory(std::string const &name, std::function<typeref()> create)
        : create_(std::move(create)),
          entry_(cRepoImpl::create(cRepoImpl::get(typeid(cTypeCtor)), name,
                                   static_cast<cTypeCtor *>(this), typeid(cTypeCtor),
                                   typeid(Factory), "")) {}
    Factory(Factory const &) = delete;
    Factory &operator=(Factory const &) = delete;
    ~Factory() override { cRepoImpl::release(entry_); }

    typeref make() override {
        ++calls;
        return create_();
    }

    int calls = 0;

  private:
    std::function<typeref()> create_;
    cRepositoryEntry *entry_;
};

typeref new_type(char const *name) { return typeref::adopt(new cTypeObj(name)); }

class FindType : public QrvTest {
  protected:
    static bool is_registered(char const *name) {
        return cat::type_hash_ptr()->find(name) != nullptr;
    }
    static unsigned registered() { return cat::type_hash_ptr()->used(); }
    static void forget(char const *name) { cat::type_hash_ptr()->delitem(name); }

    unsigned const before_ = (cat::nil(), registered());
    ~FindType() override { EXPECT_EQ(registered(), before_); }
};

TEST_F(FindType, the_built_in_types_are_found) {
    EXPECT_EQ(&cat::find_type("int"), &cat::type_int());
    EXPECT_EQ(&cat::find_type("map"), &cat::type_map());
    EXPECT_EQ(&cat::find_type("attlist"), &cat::typetype_attlist());
}

TEST_F(FindType, an_unknown_name_returns_niltype_and_registers_nothing) {
    EXPECT_EQ(&cat::find_type("no such type"), &cat::type_nil());
    EXPECT_EQ(&cat::find_type(""), &cat::type_nil());
    EXPECT_EQ(&cat::find_type("no:such"), &cat::type_nil());
    EXPECT_EQ(registered(), before_);
}

TEST_F(FindType, a_registered_value_that_is_not_a_type_returns_niltype) {
    Factory factory("number", [] { return new_type("number"); });
    cat::type_hash_ptr()->mapitem("number", make<cObjD<int>>(5));
    EXPECT_EQ(&cat::find_type("number"), &cat::type_nil());
    EXPECT_EQ(factory.calls, 0);
    forget("number");
}

TEST_F(FindType, a_factory_is_called_once_and_its_type_is_registered) {
    Factory factory("made", [] { return new_type("made"); });
    cTypeObj &type = cat::find_type("made");
    EXPECT_EQ(type.name(), "made");
    EXPECT_TRUE(type.is_type());
    EXPECT_EQ(type.refs(), 1u); // the reference of the registry
    EXPECT_EQ(&cat::find_type("made"), &type);
    EXPECT_EQ(factory.calls, 1);
    forget("made");
}

TEST_F(FindType, a_type_with_another_name_gets_the_requested_name) {
    Factory const factory("requested", [] { return new_type("other"); });
    cTypeObj &type = cat::find_type("requested");
    EXPECT_EQ(type.name(), "requested");
    EXPECT_TRUE(is_registered("requested"));
    EXPECT_FALSE(is_registered("other"));
    forget("requested");
}

TEST_F(FindType, a_type_gets_the_whole_requested_string_as_its_name) {
    Factory factory("T", [] { return new_type("T"); });
    cTypeObj &type = cat::find_type("T:mod");
    EXPECT_EQ(type.name(), "T:mod");
    EXPECT_TRUE(is_registered("T:mod"));
    EXPECT_FALSE(is_registered("T"));
    EXPECT_EQ(&cat::find_type("T:mod"), &type);
    EXPECT_EQ(factory.calls, 1);
    EXPECT_NE(&cat::find_type("T"), &type);
    EXPECT_EQ(factory.calls, 2);
    forget("T:mod");
    forget("T");
}

TEST_F(FindType, a_factory_that_creates_nothing_returns_niltype_each_time) {
    Factory factory("nothing", [] { return typeref(); });
    EXPECT_EQ(&cat::find_type("nothing"), &cat::type_nil());
    EXPECT_EQ(&cat::find_type("nothing"), &cat::type_nil());
    EXPECT_EQ(factory.calls, 2);
}

TEST_F(FindType, an_entry_without_a_factory_returns_niltype) {
    auto *const list = cRepoImpl::get(typeid(cTypeCtor));
    auto *const entry =
        cRepoImpl::create(list, "empty", nullptr, typeid(cTypeCtor), typeid(cTypeCtor), "");
    EXPECT_EQ(&cat::find_type("empty"), &cat::type_nil());
    cRepoImpl::release(entry);
}

TEST_F(FindType, an_exception_of_a_factory_propagates_and_registers_nothing) {
    Factory const factory("thrown", []() -> typeref { throw std::runtime_error("no"); });
    EXPECT_THROW(cat::find_type("thrown"), std::runtime_error);
    EXPECT_FALSE(is_registered("thrown"));
}

TEST_F(FindType, a_factory_may_request_other_types) {
    Factory const inner("inner", [] { return new_type("inner"); });
    Factory const outer("outer", [] {
        EXPECT_EQ(cat::find_type("inner").name(), "inner");
        return new_type("outer");
    });
    EXPECT_EQ(cat::find_type("outer").name(), "outer");
    forget("inner");
    forget("outer");
}

TEST_F(FindType, a_factory_that_registers_the_name_itself_causes_a_fatal_error) {
    Factory const factory("twice", [] {
        cTypeInsert::insert(new_type("twice"), true);
        return new_type("twice");
    });
    try {
        cat::find_type("twice");
        ADD_FAILURE() << "nothing was thrown";
    } catch (cErr const &error) {
        EXPECT_EQ(error.code(), 1u);
        EXPECT_EQ(error.as_string(), "Fatal: duplicate name of cTypeObj: twice");
    }
    forget("twice");
}

} // namespace
