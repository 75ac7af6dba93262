// Types of the program in text: values that can't be created or read, exceptions, declarations.

#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"
#include "tests/text/read_support.h"

#include <stdexcept>

using reader_test::Reading;

namespace {

objref new_text(objref) { return cat::of("made"); }
objref new_nothing(objref) { return nullptr; }
using test::new_bad, test::new_throwing;
bool read_int(cObj &, objref &) { throw 5; }
bool read_cerr(cObj &, objref &) { throw cErr(0x40000009, "own"); }
bool read_fails(cObj &, objref &) { return false; }
objref new_type(objref metatype) {
    return objref::adopt(new cTypeObj(static_cast<cTypeObj *>(metatype.get()), "", nullptr));
}

// Types registered under their own names for the length of a test.
class ReaderType : public QrvTest {
  protected:
    ~ReaderType() override {
        for (std::string const &name : names_) cat::typemap().datamap().delitem(name);
    }
    cTypeObj &add(char const *name) {
        cTypeObj *const type = new cTypeObj(name);
        cTypeInsert::insert(typeref::adopt(type), false);
        names_.push_back(name);
        return *type;
    }
    template <class Function> void method(cTypeObj &type, char const *name, Function function) {
        type.set_tmember(name, make<cExeMember>(function));
    }
    void forget(char const *name) { names_.push_back(name); }

  private:
    std::vector<std::string> names_;
};

TEST_F(ReaderType, a_type_needs_newobj) {
    cTypeObj &type = add("RTNoNew");
    type.set_tmember("newobj", nullptr);
    method(type, "read", cat::read_voiddata);
    Reading r("{ a = RTNoNew(1(2)); b = 2 }");
    EXPECT_EQ(r.log, "0x40000006 Line 1: ( /a ): Missing object ctor 'newobj' in type: RTNoNew\n");
    EXPECT_EQ(r.text_at("b"), "2");
}

TEST_F(ReaderType, a_type_needs_read) {
    cTypeObj &type = add("RTNoRead");
    method(type, "newobj", new_text);
    type.set_tmember("read", nullptr);
    Reading r("{ a = RTNoRead(1); b = 2 }");
    EXPECT_EQ(r.log, "0x40000006 Line 1: ( /a ): Missing method 'read' in type: RTNoRead\n");
    EXPECT_EQ(r.text_at("b"), "2");
}

TEST_F(ReaderType, newobj_must_return_an_object) {
    for (cFunction1 const function : {cFunction1(new_nothing), cFunction1(new_bad)}) {
        cTypeObj &type = add("RTBadNew");
        method(type, "newobj", function);
        method(type, "read", cat::read_voiddata);
        Reading r("{ a = RTBadNew(1); b = 2 }");
        EXPECT_EQ(r.log, "0x40000006 Line 1: ( /a ): Bad call of  object ctor 'newobj' in type: "
                         "RTBadNew\n");
        EXPECT_EQ(r.text_at("b"), "2");
        cat::typemap().datamap().delitem("RTBadNew");
    }
}

TEST_F(ReaderType, a_failed_read_is_reported_with_the_type) {
    cTypeObj &type = add("RTFails");
    method(type, "newobj", new_text);
    method(type, "read", read_fails);
    // newobj returns a string, which its own type reads
    EXPECT_EQ(reader_test::read_back("RTFails(abc)"), "abc");
    Reading r("{ a = string(;) }");
    EXPECT_EQ(r.log, "0x40000001 Line 1: ( /a ): Failed to read value, type string\n");
}

TEST_F(ReaderType, an_exception_under_the_default_masks_leaves_the_reader) {
    cTypeObj &type = add("RTThrows");
    method(type, "newobj", new_throwing);
    method(type, "read", cat::read_voiddata);
    std::istringstream is("{ a = 1; b = [RTThrows(1)]; c = 3 }");
    cAttrScan scan(is, false);
    objref value;
    try {
        scan.scan_obj(value, nullptr);
        ADD_FAILURE() << "nothing thrown";
    } catch (cErr const &error) {
        EXPECT_EQ(error.code(), 0x80000000u);
        EXPECT_EQ(error.as_string(), "Line 1: Fatal exception in attr scanner!");
    }
    EXPECT_EQ(value, nullptr);
    EXPECT_EQ(messages(), "Line 1: Fatal exception in attr scanner!\n"
                          "Line 1: Fatal exception in attr scanner!\n"
                          "Line 1: Fatal exception in attr scanner!\n")
        << "the error is reported once for each level";
    EXPECT_TRUE(text_state().idle());
}

TEST_F(ReaderType, an_exception_is_result_1_if_the_masks_allow_it) {
    cat::errhandler() = cErrHandler(0, 0, 0);
    cTypeObj &type = add("RTThrows");
    method(type, "newobj", new_throwing);
    method(type, "read", cat::read_voiddata);
    Reading r("{ a = RTThrows(1; c = 3 }");
    EXPECT_NE(r.log.find("0x80000000 Line 1: Fatal exception in attr scanner!\n"),
              std::string::npos);
    EXPECT_TRUE(text_state().idle());
    EXPECT_EQ(Reading("RTThrows(1)").code, 1);
}

TEST_F(ReaderType, a_read_method_may_throw_anything) {
    cat::errhandler() = cErrHandler(0, 0, 0);
    cTypeObj &type = cat::type_int();
    objref const before = type.tmember("read");
    for (cProcedure2 const function : {cProcedure2(read_int), cProcedure2(read_cerr)}) {
        method(type, "read", function);
        Reading r("{ a = int(1); b = 2 }");
        EXPECT_EQ(r.log, "0x80000000 Line 1: Fatal exception in attr scanner!\n");
        EXPECT_EQ(r.text_at("b"), "2");
    }
    type.set_tmember("read", before);
    EXPECT_EQ(reader_test::read_back("int(1)"), "1");
}

// --- declarations ---

TEST_F(ReaderType, a_value_that_is_a_type_is_registered_under_its_key) {
    {
        cTypeObj &meta = add("RTMeta");
        method(meta, "newobj", new_type);
        method(meta, "read", cat::read_voiddata);
        forget("RTOne");
        forget("RTTwo");
        Reading r("{ RTOne = RTMeta(); same = #cRef(/RTOne) }");
        EXPECT_EQ(r.log, "");
        EXPECT_EQ(&cat::find_type("RTOne"), r.at("RTOne").get());
        EXPECT_EQ(&cat::find_type("same"), r.at("RTOne").get())
            << "the key of the reference renames the type";
        EXPECT_EQ(dynamic_cast<cTypeObj &>(*r.at("RTOne")).name(), "same");
        forget("same");
    }
}

TEST_F(ReaderType, a_name_of_another_kind_of_type_is_refused) {
    cTypeObj &meta = add("RTMeta");
    method(meta, "newobj", new_type);
    method(meta, "read", cat::read_voiddata);
    for (std::string const name : {"int", "niltype"}) {
        Reading r("{ " + name + " = RTMeta(); b = #cRef(/" + name + "); c = 3 }");
        EXPECT_EQ(r.log, "0x40000006 Line 1: Type name from input is registered with another "
                         "type-type!\n"
                         "0x40000003 Line 1: ( /b ): Bad path of #cRef(/" +
                             name + ")\n");
        EXPECT_EQ(r.text_at("c"), "3") << "reading continues";
    }
    EXPECT_EQ(reader_test::read_back("int(5)"), "5");
}

} // namespace
