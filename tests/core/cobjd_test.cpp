// Values: the scalar types, their methods and converters, and the small conversions.
#include "qrv/core/cobjd.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"

#include <limits>
#include <sstream>

namespace {

class ValueEdge : public QrvTest {};
class Value : public QrvTest {};

using test::val;

using test::key;

constexpr int lowest = std::numeric_limits<int>::min();

} // namespace

TEST_F(ValueEdge, an_int_is_assigned_and_compared_and_truncates_a_float) {
    auto const number = make<cObjD<int>>();
    *number = 5;
    EXPECT_TRUE(number->equal(*cat::of(5)));
    EXPECT_TRUE(number->assign(*cat::of(5.75f)));
    EXPECT_EQ(number->val(), 5);
}

TEST_F(ValueEdge, a_string_has_no_converter_to_an_int) {
    objref const number = cat::of(5);
    cErrorLog errors;
    EXPECT_FALSE(number->assign(*cat::of("7")));
    EXPECT_EQ(errors.text(), "0x41800000 Method 'assign', type 'int', without converter from "
                             "type: string\n");
    EXPECT_EQ(val<int>(number), 5);
}

TEST_F(ValueEdge, as_string_returns_plain_text_and_as_text_adds_quotes) {
    objref const text = cat::of("a b");
    EXPECT_EQ(cat::as_string(text), "a b");
    EXPECT_EQ(cat::as_text(text), "\"a b\"");
    EXPECT_EQ(cat::as_text(cat::of("ab")), "ab");
}

TEST_F(ValueEdge, the_constant_true_and_a_true_bool) {
    EXPECT_EQ(cat::as_string(cat::btrue()), "#true");
    EXPECT_EQ(cat::as_string(cat::of(true)), "true");
}

TEST_F(ValueEdge, as_index_of_a_float_is_the_lowest_int) {
    EXPECT_EQ(cat::as_index(cat::of(1.0f)), lowest);
}

TEST_F(ValueEdge, a_float_is_written_with_a_point_trailing_zeros_and_an_f) {
    EXPECT_EQ(cat::as_text(cat::of(1.0f)), "1.00000f");
    std::ostringstream os;
    os.precision(3);
    EXPECT_TRUE(cat::of(1.0f)->write(os));
    EXPECT_EQ(os.str(), "1.00f");
}

TEST_F(ValueEdge, a_copy_of_a_const_value_is_const) {
    cObjD<int> source(5);
    source.setflags(of_const | of_const_keys);
    cObjD<int> const copy(source);
    EXPECT_EQ(copy.flags(), of_const);
    EXPECT_EQ(copy.val(), 5);
    EXPECT_NE(&copy.val(), &source.val());
}

TEST_F(ValueEdge, the_size_of_a_string_is_its_length) {
    EXPECT_TRUE(cat::is_equal(cat::of("abcde")->call("size"), 5));
}

TEST_F(ValueEdge, scalars_have_no_attributes) {
    objref const number = cat::of(5);
    cErrorLog errors;
    EXPECT_TRUE(number->getattr(key("k")) == cat::bad());
    EXPECT_FALSE(number->setattr(key("k"), cat::of(1)));
    EXPECT_EQ(errors.text(), "0x48000000 Call of missed standard method 'getattr' in type: int\n"
                             "0x48000000 Call of missed standard method 'setattr' in type: int\n");
}

TEST_F(Value, sizes_of_the_numbers) {
    EXPECT_TRUE(cat::is_equal(cat::of(true)->call("size"), 1));
    EXPECT_TRUE(cat::is_equal(cat::of(1)->call("size"), 4));
    EXPECT_TRUE(cat::is_equal(cat::of(1.0f)->call("size"), 4));
    EXPECT_TRUE(cat::is_equal(cat::of(1.0)->call("size"), 8));
}

TEST_F(Value, the_complete_table_of_conversions) {
    objref const sources[] = {cat::of(true), cat::of(2), cat::of(3.75f), cat::of(-4.75),
                              cat::of("5")};
    cTypeObj *const types[] = {&cat::type_bool(), &cat::type_int(), &cat::type_float(),
                               &cat::type_double(), &cat::type_string()};
    // A row for each destination; "-" where there is no converter.
    char const *const expected[5][5] = {{"", "true", "-", "-", "-"},
                                        {"1", "", "3", "-4", "-"},
                                        {"1.00000f", "2.00000f", "", "-4.75000f", "-"},
                                        {"1.00000", "2.00000", "3.75000", "", "-"},
                                        {"-", "-", "-", "-", ""}};
    for (int d = 0; d < 5; ++d)
        for (int s = 0; s < 5; ++s) {
            if (d == s) continue;
            objref const destination = types[d]->newobj();
            bool const done = destination->convert(sources[s]);
            EXPECT_EQ(done ? cat::as_text(destination) : "-", expected[d][s]);
        }
}

TEST_F(Value, numbers_that_do_not_fit_an_int_become_the_lowest_int) {
    struct cRow {
        double number;
        int result;
    };
    cRow const rows[] = {{2147483647.0, 2147483647},
                         {2147483647.9, 2147483647},
                         {2147483648.0, lowest},
                         {-2147483648.0, lowest},
                         {-2147483648.9, lowest},
                         {-2147483649.0, lowest},
                         {1e30, lowest},
                         {-1e30, lowest},
                         {std::numeric_limits<double>::quiet_NaN(), lowest},
                         {std::numeric_limits<double>::infinity(), lowest},
                         {-0.9, 0}};
    for (cRow const &row : rows) {
        objref const number = cat::of(7);
        EXPECT_TRUE(number->assign(*cat::of(row.number)));
        EXPECT_EQ(val<int>(number), row.result) << row.number;
    }
    EXPECT_EQ(cat::to_int(static_cast<double>(1e30f)), lowest);
}

TEST_F(Value, doubles_beyond_a_float_become_infinite) {
    constexpr float most = std::numeric_limits<float>::max();
    constexpr float infinite = std::numeric_limits<float>::infinity();
    struct cRow {
        double number;
        float result;
    };
    cRow const rows[] = {{1e300, infinite},
                         {-1e300, -infinite},
                         {3.4028234663852886e38, most},
                         {3.4028235e38, most},
                         {-3.4028235e38, -most},
                         {3.4028236e38, infinite},
                         {1e-300, 0.0f},
                         {0.1, 0.1f}};
    for (cRow const &row : rows) {
        objref const number = cat::of(7.0f);
        EXPECT_TRUE(number->assign(*cat::of(row.number)));
        EXPECT_EQ(val<float>(number), row.result) << row.number;
    }
}

TEST_F(Value, each_type_has_its_add) {
    objref const number = cat::of(5);
    EXPECT_TRUE(number->add(*cat::of(2)));
    EXPECT_TRUE(number->add(*cat::of(1.9)));
    EXPECT_TRUE(number->add(*cat::of(true)));
    EXPECT_EQ(val<int>(number), 9);
    objref const real = cat::of(0.5);
    EXPECT_TRUE(real->add(*cat::of(2)));
    EXPECT_EQ(val<double>(real), 2.5);
    objref const single = cat::of(0.5f);
    EXPECT_TRUE(single->add(*cat::of(0.25)));
    EXPECT_EQ(val<float>(single), 0.75f);
    objref const text = cat::of("ab");
    EXPECT_TRUE(text->add(*cat::of("cd")));
    EXPECT_TRUE(text->add(text));
    EXPECT_EQ(val<std::string>(text), "abcdabcd");
}

TEST_F(Value, int_addition_wraps) {
    objref const number = cat::of(std::numeric_limits<int>::max());
    EXPECT_TRUE(number->add(*cat::of(1)));
    EXPECT_EQ(val<int>(number), lowest);
}

TEST_F(Value, add_without_converter_or_method) {
    objref const number = cat::of(5);
    objref const text = cat::of("a");
    objref const flag = cat::of(true);
    {
        cErrorLog errors;
        EXPECT_FALSE(number->add(*text));
        EXPECT_FALSE(text->add(*number));
        EXPECT_FALSE(flag->add(*number));
        EXPECT_EQ(errors.text(),
                  "0x41800000 Method 'add', type 'int', without converter from type: string\n"
                  "0x41800000 Method 'add', type 'string', without converter from type: int\n"
                  "0x48000000 Call of missed standard method 'add' in type: bool\n");
    }
    cat::errhandler() = cErrHandler(0, 0x01800000u, 0xFFFFFFFFu);
    EXPECT_TRUE(number->add(*text));
    EXPECT_TRUE(number->assign(*text));
    EXPECT_EQ(val<int>(number), 5);
    EXPECT_EQ(val<std::string>(text), "a");
}

TEST_F(Value, numbers_strings_and_bools_have_an_order) {
    EXPECT_TRUE(cat::of(-1)->less(*cat::of(1)));
    EXPECT_FALSE(cat::of(1)->less(*cat::of(1)));
    EXPECT_TRUE(cat::of("a")->less(*cat::of("b")));
    EXPECT_TRUE(cat::of(1.0)->less(*cat::of(2.0)));
    EXPECT_FALSE(cat::of(2.0f)->less(*cat::of(2.0f)));
    EXPECT_TRUE(cat::of(0.0)->equal(*cat::of(-0.0)));
    EXPECT_FALSE(cat::of(true)->equal(*cat::of(false)));
}

TEST_F(Value, a_nan_is_equal_to_and_less_than_everything) {
    objref const nan = cat::of(std::numeric_limits<double>::quiet_NaN());
    objref const one = cat::of(1.0);
    EXPECT_TRUE(nan->equal(*one) && one->equal(*nan));
    EXPECT_TRUE(nan->less(*one) && one->less(*nan) && nan->less(*nan));
    objref const single = cat::of(std::numeric_limits<float>::quiet_NaN());
    EXPECT_TRUE(single->equal(*cat::of(1.0f)) && single->less(*cat::of(1.0f)));
}

TEST_F(Value, references_write_through_and_const_ones_refuse) {
    int number = 1;
    auto const ref = cRef<cObjDR<int>>::adopt(new cObjDR<int>(number));
    EXPECT_TRUE(ref->is_ObjDR());
    *ref = 5;
    EXPECT_EQ(number, 5);
    int const constant = 3;
    auto const refused = cRef<cObjDR<int>>::adopt(new cObjDR<int>(constant));
    cErrorLog errors;
    *refused = 5;
    EXPECT_EQ(constant, 3);
    EXPECT_EQ(errors.text(), "0x41400000 Object is const. Method 'assign' called from type: int\n");
    objref const owned = cat::of(7);
    EXPECT_FALSE(owned->is_ObjDR());
    objref const view = owned->newref();
    EXPECT_TRUE(view->is_ObjDR());
    EXPECT_TRUE(view->assign(*cat::of(8)));
    EXPECT_EQ(val<int>(owned), 8);
}

TEST_F(Value, copies_have_their_own_data) {
    cObjD<std::string> a(std::string("a"));
    cObjD<std::string> b(a);
    b = std::string("b");
    EXPECT_EQ(a.val(), "a");
    EXPECT_EQ(b.val(), "b");
    a = b;
    EXPECT_EQ(a.val(), "b");
    EXPECT_NE(&a.val(), &b.val());
}

TEST_F(Value, new_objects_of_every_scalar_type_have_a_value) {
    EXPECT_EQ(cat::as_text(cat::type_bool().newobj()), "false");
    EXPECT_EQ(cat::as_text(cat::type_int().newobj()), "0");
    EXPECT_EQ(cat::as_text(cat::type_float().newobj()), "0.00000f");
    EXPECT_EQ(cat::as_text(cat::type_double().newobj()), "0.00000");
    EXPECT_EQ(cat::as_text(cat::type_string().newobj()), "\"\"");
}

TEST_F(Value, texts_and_indices_of_null_and_of_others) {
    EXPECT_EQ(cat::as_string(objref()), "");
    EXPECT_EQ(cat::as_text(objref()), "");
    EXPECT_EQ(cat::as_string(cat::nil()), "#nil");
    EXPECT_EQ(cat::as_text(cat::badfind()), "#badfind");
    EXPECT_EQ(cat::as_index(objref()), lowest);
    EXPECT_EQ(cat::as_index(cat::of(5)), 5);
    EXPECT_EQ(cat::as_index(cat::of(lowest)), lowest);
    EXPECT_TRUE(cat::is_equal(cat::of("1"), "1"));
    EXPECT_FALSE(cat::is_equal(cat::of(1), "1"));
    EXPECT_FALSE(cat::is_equal(cat::of("1"), 1));
}

TEST_F(Value, objects_return_plain_values) {
    int number = 7;
    bool flag = false;
    EXPECT_TRUE(cat::int_of(cat::of(2.9), number));
    EXPECT_EQ(number, 2);
    EXPECT_FALSE(cat::int_of(cat::of("3"), number));
    EXPECT_FALSE(cat::int_of(objref(), number));
    EXPECT_EQ(number, 2);
    EXPECT_TRUE(cat::bool_of(cat::of(5), flag));
    EXPECT_TRUE(flag);
    EXPECT_FALSE(cat::bool_of(cat::of(1.0), flag));
}

TEST_F(Value, the_method_tables_hold_these_keys) {
    auto const keys = [](cTypeObj const &type) {
        std::string all;
        for (cAttrNode const *node = type.tmmap().first(); node; node = type.tmmap().next(node))
            all += cat::as_string(node->key()) + " ";
        return all;
    };
    std::string const number =
        "create write read equal iterobj newobj newref assign size less add ";
    EXPECT_EQ(keys(cat::type_int()), number);
    EXPECT_EQ(keys(cat::type_float()), number);
    EXPECT_EQ(keys(cat::type_double()), number);
    EXPECT_EQ(keys(cat::type_string()), number);
    EXPECT_EQ(keys(cat::type_bool()), "create write read equal iterobj newobj newref assign size ");
    EXPECT_EQ(keys(cat::type_nil()), "create write read equal iterobj ");
}

TEST_F(Value, plain_values_have_their_types_and_streams_the_type_nil) {
    EXPECT_EQ(&cTypeOf(static_cast<std::string *>(nullptr)), &cat::type_string());
    EXPECT_EQ(&cTypeOf(static_cast<bool *>(nullptr)), &cat::type_bool());
    EXPECT_EQ(&cTypeOf(static_cast<std::istream *>(nullptr)), &cat::type_nil());
    EXPECT_EQ(&cTypeOf(static_cast<std::ostream *>(nullptr)), &cat::type_nil());
    EXPECT_EQ(cat::as_string(cat::of(static_cast<char const *>(nullptr))), "");
}
