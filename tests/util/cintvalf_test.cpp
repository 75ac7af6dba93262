// Int objects with a format: the objects, the type "intf", and how files store both.
#include "qrv/util/cintvalf.h"

#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/text/file/cpersistentmap.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/text/file/save_support.h"
#include "tests/text/hostile_locale.h"

#include <random>
#include <sstream>
#include <type_traits>

namespace {

using namespace std::string_literals;
using Format = cIntFormat::Format;

size_t width_of(Format format) {
    return format == cIntFormat::fmtBin8 ? 8 : format == cIntFormat::fmtBin16 ? 16 : 32;
}

// Creates the type before the test, so that no test counts it as a new object.
class IntFTest : public QrvTest {
  protected:
    static void SetUpTestSuite() { cat::type_intf(); }

    static objref read(std::string const &text) {
        objref value;
        EXPECT_EQ(cObj::readobj(text.c_str(), value), 0) << text;
        return value;
    }
    static cIntFormat const &format_of(objref const &value) {
        auto const *const format = dynamic_cast<cIntFormat const *>(value.get());
        if (!format) throw std::runtime_error("no format");
        return *format;
    }
    static std::string exact(objref const &value) {
        cat::ExactText const guard;
        return cat::as_text(value);
    }
    // The exact text written for a value that was read from this text.
    static std::string again(std::string const &text) { return exact(read(text)); }
    static objref made(int number, Format format) { return make<cIntValF>(number, format); }
    static std::string assigned(objref const &to, objref const &from) {
        EXPECT_TRUE(to->assign(from));
        return exact(to);
    }
};

class IntF : public IntFTest {};
class IntFText : public IntFTest {};

static_assert(std::is_base_of_v<cObjD<int>, cIntValF> && std::is_base_of_v<cIntFormat, cIntValF>);
static_assert(std::is_base_of_v<cObjDR<int>, cIntRefF> && !std::is_base_of_v<cObjD<int>, cIntRefF>);
static_assert(std::has_virtual_destructor_v<cIntValF> && std::has_virtual_destructor_v<cIntRefF>);
static_assert(std::is_copy_constructible_v<cIntValF> && std::is_copy_assignable_v<cIntRefF>);
static_assert(!std::is_constructible_v<cIntRefF, int, Format>); // would dangle

// --- the objects ---

TEST_F(IntF, owns_its_number) {
    auto const value = make<cIntValF>(31, cIntFormat::fmtHex);
    EXPECT_EQ(&value->type(), &cat::find_type("intf"));
    EXPECT_EQ(value->val(), 31);
    EXPECT_EQ(value->value(), 31);
    EXPECT_EQ(value->str(), "0x1f");
    EXPECT_FALSE(value->is_ObjDR());
    value->set_value(5);
    EXPECT_EQ(value->val(), 5);
    value->val() = 6;
    EXPECT_EQ(value->str(), "0x6");
}

TEST_F(IntF, refers_to_a_number) {
    int number = 8;
    auto const ref = make<cIntRefF>(number, cIntFormat::fmtOct);
    EXPECT_EQ(&ref->type(), &cat::type_intf());
    EXPECT_TRUE(ref->is_ObjDR());
    EXPECT_EQ(ref->valptr(), &number);
    EXPECT_EQ(ref->str(), "010");
    number = 9;
    EXPECT_EQ(cat::as_text(ref), "intf(011)");
    EXPECT_TRUE(ref->assign(*made(3, cIntFormat::fmtBin8)));
    EXPECT_EQ(number, 3);
    EXPECT_EQ(ref->str(), "b 0000 0011");
}

TEST_F(IntF, a_copy_has_its_own_number) {
    cRef<cIntValF> const value = make<cIntValF>(31, cIntFormat::fmtHex);
    cRef<cIntValF> const copy = make<cIntValF>(*value);
    EXPECT_EQ(copy->str(), "0x1f");
    EXPECT_EQ(&copy->type(), &cat::type_intf());
    copy->set_value(1);
    EXPECT_EQ(copy->val(), 1);
    EXPECT_EQ(value->val(), 31);
    EXPECT_FALSE(copy->flags_of(of_const));
}

TEST_F(IntF, a_copy_of_a_reference_refers_to_the_same_number) {
    int number = 1;
    cRef<cIntRefF> const ref = make<cIntRefF>(number, cIntFormat::fmtHex);
    cRef<cIntRefF> const copy = make<cIntRefF>(*ref);
    EXPECT_EQ(copy->valptr(), &number);
    copy->set_value(16);
    EXPECT_EQ(ref->str(), "0x10");
    EXPECT_EQ(copy->format(), cIntFormat::fmtHex);
}

TEST_F(IntF, a_copy_of_a_const_object_is_const) {
    cRef<cIntValF> const value = make<cIntValF>(1, cIntFormat::fmtHex);
    value->setflags(of_const);
    EXPECT_TRUE(make<cIntValF>(*value)->flags_of(of_const));
    int number = 1;
    cRef<cIntRefF> const ref = make<cIntRefF>(number, cIntFormat::fmtHex);
    EXPECT_FALSE(make<cIntRefF>(*ref)->flags_of(of_const));
    ref->setflags(of_const);
    EXPECT_TRUE(make<cIntRefF>(*ref)->flags_of(of_const));
}

TEST_F(IntF, the_default_format_is_decimal) { EXPECT_EQ(make<cIntValF>(12)->str(), "12"); }

TEST_F(IntF, operator_assign_uses_the_converters_of_the_type) {
    cRef<cIntValF> const a = make<cIntValF>(1, cIntFormat::fmtDec);
    cRef<cIntValF> const b = make<cIntValF>(16, cIntFormat::fmtHex);
    *a = *b;
    EXPECT_EQ(a->str(), "0x10");
    *a = 17;
    EXPECT_EQ(a->str(), "0x11");
    a->setflags(of_const);
    cErrorLog errors;
    *a = *make<cIntValF>(5);
    *a = 5;
    EXPECT_EQ(a->str(), "0x11");
    EXPECT_EQ(errors.text(), "0x41400000 Object is const. Method 'assign' called from type: intf\n"
                             "0x41400000 Object is const. Method 'assign' called from type: int\n");
    int number = 0;
    cRef<cIntRefF> const ref = make<cIntRefF>(number, cIntFormat::fmtOct);
    *ref = 8;
    EXPECT_EQ(ref->str(), "010");
    *ref = *make<cIntRefF>(*ref);
    EXPECT_EQ(number, 8);
}

TEST_F(IntF, objects_compare_numbers_and_views_also_compare_formats) {
    cRef<cIntValF> const a = make<cIntValF>(16, cIntFormat::fmtHex);
    cRef<cIntValF> const b = make<cIntValF>(16, cIntFormat::fmtDec);
    EXPECT_TRUE(*a == *b);
    EXPECT_FALSE(*a != *b);
    int number = 16;
    cRef<cIntRefF> const ref = make<cIntRefF>(number, cIntFormat::fmtOct);
    EXPECT_TRUE(*ref == *make<cIntRefF>(*ref) && *ref == *a && *a == *ref && !(*ref != *b));
    EXPECT_TRUE(*a != *cat::of(16) && *cat::of(16) != *a && *ref != *cat::of(16));
    cIntFormat const &view = *a;
    EXPECT_TRUE(view != static_cast<cIntFormat const &>(*b));
    EXPECT_TRUE(a->equal(b));
    EXPECT_FALSE(a->equal(*made(17, cIntFormat::fmtHex)));
    EXPECT_FALSE(a->equal(*cat::of(16)));
    EXPECT_TRUE(a->less(*made(17, cIntFormat::fmtDec)));
    EXPECT_FALSE(a->less(*b));
    EXPECT_TRUE(made(-1, cIntFormat::fmtHex)->less(*a));
}

// --- the type ---

TEST_F(IntF, has_all_members_and_converters) {
    std::string keys;
    cAttrHash const &members = cat::type_intf().tmmap();
    for (cAttrNode const *node = members.first(); node; node = members.next(node))
        keys += node->key_as_string() + ' ';
    EXPECT_EQ(keys, "create write read equal iterobj newobj newref assign size less add ");
    for (cTypeObj *const source : {&cat::type_int(), &cat::type_bool(), &cat::type_float(),
                                   &cat::type_double(), &cat::type_string()})
        EXPECT_NE(cat::type_intf().converter(*source), nullptr) << source->name();
    EXPECT_EQ(cat::type_intf().converter(cat::type_map()), nullptr);
    EXPECT_EQ(cat::type_int().converter(cat::type_intf()), nullptr);
    EXPECT_EQ(cat::type_intf().name(), "intf");
    EXPECT_EQ(&cat::type_intf().type(), &cat::typetype());
    EXPECT_TRUE(cat::type_intf().is_keytype());
}

TEST_F(IntF, the_type_is_registered_again_on_its_next_use) {
    cTypeObj &type = cat::type_intf();
    cat::typemap().datamap().delitem("intf");
    EXPECT_EQ(&cat::type_intf(), &type);
    EXPECT_EQ(&cat::find_type("intf"), &type);
    EXPECT_EQ(again("intf(0x1F)"), "intf(0x1F)");
}

TEST_F(IntF, a_new_object_is_zero_in_decimal) {
    objref const fresh = cat::type_intf().newobj();
    EXPECT_EQ(exact(fresh), "intf(0)");
    EXPECT_EQ(format_of(fresh).format(), cIntFormat::fmtDec);
    EXPECT_NE(dynamic_cast<cIntValF *>(fresh.get()), nullptr);
}

TEST_F(IntF, a_clone_has_number_and_format) {
    objref const copy = made(31, cIntFormat::fmtHex)->clone();
    EXPECT_EQ(exact(copy), "intf(0x1f)");
    int number = 8;
    EXPECT_EQ(exact(make<cIntRefF>(number, cIntFormat::fmtOct)->clone()), "intf(010)");
    objref const shared = made(16, cIntFormat::fmtHEX);
    objref ref = shared;
    EXPECT_TRUE(cat::detach(ref, false));
    EXPECT_NE(ref, shared);
    EXPECT_EQ(format_of(ref).format(), cIntFormat::fmtHEX);
}

TEST_F(IntF, copies_number_and_format_from_its_own_type) {
    EXPECT_EQ(assigned(made(1, cIntFormat::fmtDec), made(16, cIntFormat::fmtHex)), "intf(0x10)");
    int number = 3;
    EXPECT_EQ(assigned(made(1, cIntFormat::fmtDec), make<cIntRefF>(number, cIntFormat::fmtOct)),
              "intf(03)");
    objref const self = made(16, cIntFormat::fmtHex);
    EXPECT_EQ(assigned(self, self), "intf(0x10)");
}

TEST_F(IntF, copies_only_the_number_from_other_types) {
    for (objref const &source : {cat::of(12), cat::of(12.75), cat::of(12.75F)})
        EXPECT_EQ(assigned(made(1, cIntFormat::fmtHex), source), "intf(0xc)");
    EXPECT_EQ(assigned(made(5, cIntFormat::fmtBin8), cat::of(true)), "intf(b00000001)");
    EXPECT_EQ(assigned(made(5, cIntFormat::fmtOct), cat::of(1e10)), "intf(020000000000)");
}

TEST_F(IntF, reads_number_and_format_from_a_string) {
    EXPECT_EQ(assigned(made(1, cIntFormat::fmtDec), cat::of("b 101")), "intf(b00000101)");
    EXPECT_EQ(assigned(made(1, cIntFormat::fmtHex), cat::of(" 0x10 ")), "intf(0x10)");
    EXPECT_EQ(format_of(made(1, cIntFormat::fmtHex)).format(), cIntFormat::fmtHex);
    EXPECT_EQ(assigned(made(1, cIntFormat::fmtHex), cat::of("12")), "intf(12)");
}

TEST_F(IntF, an_invalid_string_leaves_number_and_format_unchanged) {
    objref const value = made(31, cIntFormat::fmtHex);
    for (char const *text : {"", "zz", "0x", "+", "0xZZ", "b"}) {
        cErrorLog errors;
        EXPECT_FALSE(value->assign(cat::of(text)));
        EXPECT_EQ(errors.text(), "0x41800000 Method 'assign', type 'intf', without converter from "
                                 "type: string\n");
        EXPECT_FALSE(value->convert(cat::of(text)));
        EXPECT_EQ(exact(value), "intf(0x1f)") << text;
    }
    EXPECT_FALSE(value->convert(cat::of(std::string("1\0002", 3))));
    EXPECT_EQ(exact(value), "intf(0x1f)");
}

TEST_F(IntF, refuses_values_without_a_converter) {
    objref const value = made(31, cIntFormat::fmtHex);
    cErrorLog errors;
    EXPECT_FALSE(value->assign(make<cMapObj>()));
    EXPECT_FALSE(cat::of(1)->assign(value));
    EXPECT_FALSE(value->add(make<cMapObj>()));
    EXPECT_EQ(errors.text(),
              "0x41800000 Method 'assign', type 'intf', without converter from type: map\n"
              "0x41800000 Method 'assign', type 'int', without converter from type: intf\n"
              "0x41800000 Method 'add', type 'intf', without converter from type: map\n");
    EXPECT_EQ(exact(value), "intf(0x1f)");
}

TEST_F(IntF, adds_numbers_of_all_types_and_keeps_its_format) {
    objref const sum = made(1, cIntFormat::fmtHex);
    for (objref const &part : {cat::of(2), cat::of(4.9), cat::of(8.9F), cat::of(true),
                               made(16, cIntFormat::fmtBin8), cat::of("0x20"), sum})
        EXPECT_TRUE(sum->add(part));
    EXPECT_EQ(exact(sum), "intf(0x80)");
    {
        cErrorLog errors;
        EXPECT_FALSE(sum->add(cat::of("zz")));
        EXPECT_EQ(errors.last_code(), 0x41800000U);
    }
    EXPECT_EQ(exact(sum), "intf(0x80)");
    objref const most = made(2147483647, cIntFormat::fmtDec);
    EXPECT_TRUE(most->add(cat::of(1)));
    EXPECT_EQ(exact(most), "intf(-2147483648)");
}

TEST_F(IntF, cannot_be_an_index_and_is_referred_to_as_an_int) {
    objref const value = made(5, cIntFormat::fmtHex);
    EXPECT_EQ(cat::as_index(value), cat::no_index);
    EXPECT_FALSE(cat::is_equal(value, 5));
    EXPECT_EQ(cat::as_string(value->call("size")), "4");
    objref const ref = value->newref();
    EXPECT_EQ(&ref->type(), &cat::type_int());
    EXPECT_TRUE(ref->assign(*cat::of(7)));
    EXPECT_EQ(exact(value), "intf(0x7)");
}

// An object that only claims to have the type "intf".
TEST_F(IntF, an_object_without_a_format_calculates_but_cannot_be_written) {
    auto const bare = make<cObjD<int>>(5);
    bare->set_type(&cat::type_intf());
    objref const value = bare;
    std::ostringstream os;
    EXPECT_FALSE(value->write(os));
    std::istringstream is("7");
    EXPECT_FALSE(value->read(is));
    EXPECT_TRUE(value->assign(made(9, cIntFormat::fmtHex)));
    EXPECT_TRUE(value->add(cat::of("0x1")));
    EXPECT_EQ(bare->val(), 10);
    EXPECT_TRUE(value->assign(cat::of("b11")));
    EXPECT_EQ(bare->val(), 3);
    objref const whole = made(1, cIntFormat::fmtOct);
    EXPECT_TRUE(whole->assign(value));
    EXPECT_EQ(exact(whole), "intf(03)");
    EXPECT_EQ(os.str(), "");
}

TEST_F(IntF, methods_refuse_invalid_arguments) {
    objref const value = made(5, cIntFormat::fmtHex);
    for (char const *name : {"write", "read", "assign"})
        for (objref const &argument : {objref(), objref(make<cMapObj>())}) {
            cErrorLog errors;
            EXPECT_NE(value->call(name, argument), cat::btrue()) << name;
        }
    EXPECT_EQ(exact(value), "intf(0x5)");
}

// --- text ---

TEST_F(IntFText, write_writes_the_text_and_flushes) {
    struct cFlushes : std::stringbuf {
        int sync() override {
            ++count;
            return 0;
        }
        int count = 0;
    } buffer;
    std::ostream os(&buffer);
    EXPECT_TRUE(made(5, cIntFormat::fmtBin8)->write(os));
    EXPECT_EQ(buffer.str(), "b 0000 0101");
    EXPECT_EQ(buffer.count, 1);
    os.setstate(std::ios_base::badbit);
    EXPECT_FALSE(made(5, cIntFormat::fmtBin8)->write(os));
}

TEST_F(IntFText, read_reads_one_word) {
    cRef<cIntValF> const value = make<cIntValF>(0);
    std::istringstream is("  0x1F\n\"017\" b101 \" \"\" x");
    EXPECT_TRUE(value->read(is));
    EXPECT_EQ(value->str(), "0x1F");
    EXPECT_TRUE(value->read(is));
    EXPECT_EQ(value->str(), "017");
    EXPECT_TRUE(value->read(is));
    EXPECT_EQ(value->str(), "b 0000 0101");
    EXPECT_FALSE(value->read(is)); // it reads one quote
    EXPECT_FALSE(value->read(is)); // it reads two quotes
    EXPECT_FALSE(value->read(is)); // it reads x
    EXPECT_FALSE(value->read(is)); // it is at the end of the input
    EXPECT_EQ(value->str(), "b 0000 0101");
}

TEST_F(IntFText, read_refuses_a_word_with_a_null_character) {
    cRef<cIntValF> const value = make<cIntValF>(31, cIntFormat::fmtHex);
    for (std::string const &word : {"1\0002"s, "\"1\0002\""s, "\0"s}) {
        std::istringstream is(word);
        EXPECT_FALSE(value->read(is));
        EXPECT_EQ(value->str(), "0x1f");
    }
}

TEST_F(IntFText, files_store_number_and_format) {
    for (char const *text :
         {"intf(0)", "intf(-12)", "intf(0x1F)", "intf(0x1f)", "intf(00)", "intf(0755)",
          "intf(b00000101)", "intf(b0000000100000000)", "intf(0xffffffff)", "intf(037777777777)",
          "intf(-2147483648)", "intf(b11111111111111111111111111111111)"})
        EXPECT_EQ(again(text), text);
    EXPECT_EQ(again("intf( +12 )"), "intf(12)");
    EXPECT_EQ(again("intf(\"0x1F\")"), "intf(0x1F)");
    EXPECT_EQ(again("intf(/* c */ b101)"), "intf(b00000101)");
    EXPECT_EQ(again("intf[5]"), "intf(5)");
}

TEST_F(IntFText, plain_text_writes_bits_with_blanks) {
    EXPECT_EQ(cat::as_text(made(5, cIntFormat::fmtBin8)), "intf(b 0000 0101)");
    EXPECT_EQ(cat::as_text(made(256, cIntFormat::fmtBin8)), "intf(b 0000 0000)");
    EXPECT_EQ(cat::as_text(made(31, cIntFormat::fmtHEX)), "intf(0x1F)");
}

TEST_F(IntFText, exact_text_uses_the_next_width_that_fits) {
    auto const text = [](int number, Format format) { return exact(made(number, format)); };
    EXPECT_EQ(text(255, cIntFormat::fmtBin8), "intf(b11111111)");
    EXPECT_EQ(text(256, cIntFormat::fmtBin8), "intf(b0000000100000000)");
    EXPECT_EQ(text(300, cIntFormat::fmtBin8), "intf(b0000000100101100)");
    EXPECT_EQ(text(65535, cIntFormat::fmtBin8), "intf(b1111111111111111)");
    EXPECT_EQ(text(65536, cIntFormat::fmtBin8), "intf(b00000000000000010000000000000000)");
    EXPECT_EQ(text(65535, cIntFormat::fmtBin16), "intf(b1111111111111111)");
    EXPECT_EQ(text(65536, cIntFormat::fmtBin16), "intf(b00000000000000010000000000000000)");
    EXPECT_EQ(text(-1, cIntFormat::fmtBin8), "intf(b11111111111111111111111111111111)");
    EXPECT_EQ(text(5, cIntFormat::fmtBin32), "intf(b00000000000000000000000000000101)");
    EXPECT_EQ(text(5, static_cast<Format>(9)), "intf(5)");
}

TEST_F(IntFText, exact_text_can_be_read_again) {
    std::mt19937 random(4);
    for (int i = 0; i < 5'000; ++i) {
        auto const number = static_cast<int>(random() >> random() % 32);
        objref const value = made(number, static_cast<Format>(random() % 7));
        std::string const text = exact(value);
        objref const back = read(text);
        ASSERT_EQ(format_of(back).value(), number) << text;
        EXPECT_EQ(exact(back), text);
        bool const wider = text[5] == 'b' && text.size() > width_of(format_of(value).format()) + 7;
        bool const no_letter = format_of(value).format() == cIntFormat::fmtHex &&
                               text.find_first_of("abcdef", 5) == std::string::npos;
        if (!wider && !no_letter) {
            EXPECT_EQ(format_of(back).format(), format_of(value).format()) << text;
        }
        EXPECT_TRUE(back->equal(value));
    }
}

TEST_F(IntFText, invalid_text_is_an_error_and_the_value_is_omitted) {
    for (char const *text : {"", "0xZZ", "b 0000 0101", "09", "0X10", "+0x10", "0x123456789", "x",
                             "\"0xZZ\"", "1.5", "#true"}) {
        objref value;
        EXPECT_NE(cObj::readobj(("intf(" + std::string(text) + ")").c_str(), value), 0) << text;
        EXPECT_EQ(value, nullptr) << text;
    }
    EXPECT_NE(messages(), "");
}

TEST_F(IntFText, can_be_stored_in_all_containers) {
    for (char const *text :
         {"{a= intf(0x1F); b= {c= intf(b00000001); }; }", "[intf(0x1F), 5, ]", "<intf(0x1F), 31, >",
          "{intf(0x10)= a; 16= b; intf(0xFF)= c; }", "{x= intf(0x1F); y= #cRef(/x); }",
          "{a= attspec(type=intf; default=intf(0x10); ); }"})
        EXPECT_EQ(again(text), text);
}

TEST_F(IntFText, equal_keys_are_equal_numbers) {
    objref const map = read("{intf(0x10)= a; intf(16)= b; 16= c; intf(020)= d; }");
    EXPECT_EQ(static_cast<cMapObj &>(*map).datamap().used(), 2U);
    EXPECT_EQ(cat::as_text(map->getattr(made(16, cIntFormat::fmtBin8))), "d");
    EXPECT_EQ(cat::as_text(map->getattr(cat::of(16))), "c");
    EXPECT_TRUE(cObj::is_bad(map->getattr(made(17, cIntFormat::fmtBin8))));
    objref const set = read("<intf(1), intf(0x1), 1, >");
    EXPECT_EQ(static_cast<cMapObj &>(*set).datamap().used(), 2U);
}

TEST_F(IntFText, many_keys_are_found) {
    cRef<cMapObj> const map = make<cMapObj>();
    for (int i = 0; i < 1000; ++i)
        EXPECT_TRUE(map->setattr(made(i * 7, cIntFormat::fmtHex), cat::of(i)));
    EXPECT_EQ(map->datamap().broken_rule(true), "");
    for (int i = 0; i < 1000; ++i)
        EXPECT_EQ(cat::as_index(map->getattr(made(i * 7, cIntFormat::fmtDec))), i);
}

TEST_F(IntFText, changing_by_path_keeps_the_format) {
    objref const map = read("{port= intf(0x1F); }");
    EXPECT_TRUE(map->setattrp("port = 32", true));
    EXPECT_EQ(exact(map), "{port= intf(0x20); }");
    EXPECT_TRUE(map->setattrp("port += 10", true));
    EXPECT_EQ(exact(map), "{port= intf(0x2A); }");
    EXPECT_TRUE(map->setattrp("port = \"b101\"", true));
    EXPECT_EQ(exact(map), "{port= intf(b00000101); }");
    EXPECT_TRUE(map->setattrp("port = intf(0x7f)", true));
    EXPECT_EQ(exact(map), "{port= intf(0x7f); }");
    EXPECT_TRUE(map->setattrp("port &= 5", true));
    EXPECT_EQ(exact(map), "{port= 5; }");
}

TEST_F(IntFText, copying_a_tree_keeps_the_format) {
    objref const map = read("{a= {port= intf(0x1F); mask= intf(b00000001); }; }");
    objref copy = map;
    EXPECT_TRUE(cat::detach(copy, true));
    EXPECT_EQ(exact(copy->getattrp("a/port")), "intf(0x1F)");
    EXPECT_EQ(exact(copy->getattrp("a/mask")), "intf(b00000001)");
    EXPECT_TRUE(copy->setattrp("a/port = 1", true));
    EXPECT_EQ(exact(copy->getattrp("a/port")), "intf(0x1)");
    EXPECT_EQ(exact(map), "{a= {port= intf(0x1F); mask= intf(b00000001); }; }");
}

TEST_F(IntFText, can_be_a_default_of_declared_attributes) {
    std::string const text =
        "{PortT= attlist(p= attspec(type= intf; default= intf(0x10))); t= PortT(); "
        "u= PortT(p= intf(b00000001)); }";
    objref const map = read(text);
    EXPECT_EQ(exact(map->getattrp("t/p")), "intf(0x10)");
    EXPECT_EQ(exact(map->getattrp("u/p")), "intf(b00000001)");
    EXPECT_TRUE(map->setattrp("t/p = 17", true));
    EXPECT_EQ(exact(map->getattrp("t/p")), "intf(0x11)");
    EXPECT_EQ(exact(map->getattrp("PortT/p/default")), "intf(0x10)");
    cat::typemap().datamap().delitem("PortT");
}

class IntFPersistent : public save_test::PersistentTest {
  protected:
    static void SetUpTestSuite() { cat::type_intf(); }
};

TEST_F(IntFPersistent, map_keeps_the_format) {
    std::string const file = folder_.file("map");
    save_test::put(file, "{port= intf(0x1F); mask= intf(b00001111); }");
    for (int i = 0; i < 2; ++i) {
        cat::ExactText const guard;
        cPersistentMap map("map", false);
        EXPECT_TRUE(map.busmap().setattrp("port += 1; mask += 256", true));
    }
    std::string const bytes = save_test::bytes_of(file);
    EXPECT_EQ(bytes.substr(bytes.find('{')), "{port= intf(0x21); mask= intf(b0000001000001111); }");
}

TEST_F(IntFText, the_locale_has_no_effect) {
    objref const value = made(1234567, cIntFormat::fmtDec);
    test::cHostileLocale const hostile;
    EXPECT_EQ(cat::as_text(value), "intf(1234567)");
    std::ostringstream os;
    EXPECT_TRUE(value->write(os));
    EXPECT_EQ(os.str(), "1234567");
    EXPECT_EQ(again("intf(1234567)"), "intf(1234567)");
}

} // namespace

TEST_F(IntF,
       an_object_that_only_claims_the_type_is_refused_as_value_and_equals_only_itself_as_key) {
    objref const claim = make<cMapObj>();
    claim->set_type(&cat::type_intf());
    objref const other = cat::of("text");
    other->set_type(&cat::type_intf());
    objref const number = made(7, cIntFormat::fmtHex);
    for (objref const &source : {number, cat::of(1), cat::of("5"), cat::of(1.5), other, claim}) {
        cErrorLog errors;
        EXPECT_FALSE(claim->assign(source));
    }
    EXPECT_FALSE(number->assign(claim));
    EXPECT_FALSE(number->equal(*claim));
    EXPECT_EQ(cat::number_of(claim), std::nullopt);
    EXPECT_EQ(cat::number_of(number), 7.0);
    auto const map = make<cMapObj>();
    EXPECT_TRUE(map->setattr(number, cat::of(1)));
    EXPECT_TRUE(map->setattr(claim, cat::of(2)));
    EXPECT_TRUE(map->setattr(other, cat::of(3)));
    EXPECT_TRUE(cat::is_equal(map->getattr(number), 1));
    EXPECT_TRUE(cat::is_equal(map->getattr(claim), 2));
    EXPECT_TRUE(cat::is_equal(map->getattr(other), 3));
}
