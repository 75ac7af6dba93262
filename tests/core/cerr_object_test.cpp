// Errors about objects, and objects on trace channels.

#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/diagnostics/ctrace.h"
#include "tests/support/fixture.h"

namespace {

class ErrorObject : public QrvTest {
  protected:
    ~ErrorObject() override {
        eros().clear();
        cSetTracing("");
    }
};
using ErrorObjectEdge = ErrorObject;

TEST_F(ErrorObjectEdge, eros_about_an_object_makes_the_code_bad) {
    objref const object = cat::of(7);
    cErrStream &stream = eros(5, *object);
    EXPECT_EQ(&stream, &eros());
    EXPECT_EQ(stream.code(), 0x40000005U);
    stream << "no good";
    EXPECT_EQ(stream.as_string(), "Attr value, type 'int': no good");
}

TEST_F(ErrorObject, eros_about_an_object_clears_the_stream) {
    eros().set(0x90000000, "old");
    eros().set_handled(true);
    eros() << "older";
    objref const object = cat::of("text");
    eros(0x80000000, *object);
    EXPECT_EQ(eros().code(), 0xC0000000U);
    EXPECT_FALSE(eros().handled());
    EXPECT_EQ(eros().as_string(), "Attr value, type 'string': ");
}

TEST_F(ErrorObject, the_error_of_a_refused_attribute_names_type_and_key) {
    objref const object = cat::of(7);
    objref const key = cat::of("two words");
    eros_setattr(*object, key) << "  Key is OUT OF RANGE";
    EXPECT_EQ(eros().code(), 0x40020000U);
    EXPECT_EQ(eros().as_string(),
              "Setattr in object type 'int', key '\"two words\"':   Key is OUT OF RANGE");
    cErrorLog errors;
    EXPECT_FALSE(raise_eros());
    EXPECT_EQ(errors.last_code(), 0x40020000U);
}

bool write_with_error(cObj &, objref &) {
    eros().clear();
    eros().set_code(0x40000009);
    eros() << "from the key";
    return raise_eros();
}

TEST_F(ErrorObject, a_key_whose_text_raises_an_error_does_not_damage_the_message) {
    auto const type = make<cTypeObj>("badkey");
    type->set_tmember("write", make<cExeMember>(write_with_error));
    auto const key = make<cObj>();
    key->set_type(type);
    cErrorLog errors;
    objref const object = cat::of(7);
    eros_setattr(*object, key) << "refused";
    EXPECT_EQ(errors.text(), "0x40000009 from the key\n");
    EXPECT_EQ(eros().code(), 0x40020000U);
    std::string const text = eros().as_string();
    EXPECT_EQ(text.find("Setattr in object type 'int', key '"), 0U);
    EXPECT_EQ(text.find("from the key"), std::string::npos);
    EXPECT_EQ(text.substr(text.size() - 10), "': refused");
}

TEST_F(ErrorObject, a_channel_writes_objects_as_text) {
    cTracer channel("objects");
    cSetTracing("objects");
    objref const text = cat::of("two words");
    cRef<cObjD<int>> const number = make<cObjD<int>>(12);
    channel << text << ' ' << number << ' ' << cat::nil() << ' ' << objref() << '.' << std::endl;
    EXPECT_EQ(messages(), "\"two words\" 12 #nil .\n");
}

} // namespace
