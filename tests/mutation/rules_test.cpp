// The rules drop errors that follow from others. A dropped error is reported at the end if it
// follows from no other error.

#include "tests/support/fixture.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "tools/qrv/rules/rules.h"

namespace {

class LeftOut : public testing::Test {
  protected:
    static void SetUpTestSuite() { ASSERT_TRUE(test::listening()); }

    void add(unsigned line, unsigned column, std::string const &text,
             cat::ErrorKind kind = cat::ErrorKind::other) {
        cat::ReadError error;
        error.kind = kind;
        error.line = line;
        error.column = column;
        error.text = text;
        report_.add(error);
    }
    // Reports an invalid object as the reader does, but the object breaks no rule.
    void refuse(unsigned line, unsigned column) {
        rules_.invalid(*make<cMapObj>());
        add(line, column, "Validate error in read of type: T", cat::ErrorKind::read_not_valid);
        add(line, column, "Cannot insert key =t", cat::ErrorKind::cannot_insert);
    }
    std::string reported() {
        rules_.report_unexplained();
        std::string all;
        for (cat::ReadError const &error : report_.entries())
            all += shown({error.line, error.column}) + " " + error.text + "\n";
        return all;
    }
    static std::string shown(cPlace place) {
        return std::to_string(place.line) + ":" + std::to_string(place.column);
    }

    std::string const bytes_ = "{T= attlist(x= attspec(type= int));\n"
                               "U= attlist(t= attspec(type= T));\n"
                               "t= T(x= 1); u= U(t= T(x= 2));}";
    cat::ReadReport report_{3};
    cRules rules_{bytes_, report_};
};

std::string const at_t = "3:4 Validate error in read of type: T\n",
                  at_u = "3:16 Validate error in read of type: T\n",
                  in_u = "3:21 Validate error in read of type: T\n";

TEST_F(LeftOut, an_invalid_object_is_reported_once_for_each_value) {
    refuse(3, 4);
    refuse(3, 16);
    EXPECT_TRUE(report_.empty());
    EXPECT_EQ(reported(), at_t + at_u);
    EXPECT_EQ(reported(), at_t + at_u);
}

TEST_F(LeftOut, an_error_inside_the_object_explains_it) {
    add(3, 9, "inside");
    refuse(3, 4);
    EXPECT_EQ(reported(), "3:9 inside\n");
}

TEST_F(LeftOut, an_error_before_the_object_does_not_explain_it) {
    add(3, 9, "inside");
    refuse(3, 16);
    EXPECT_EQ(reported(), "3:9 inside\n" + at_u);
}

TEST_F(LeftOut, another_invalid_object_inside_explains_it) {
    refuse(3, 21);
    refuse(3, 16);
    EXPECT_EQ(reported(), in_u);
}

TEST_F(LeftOut, an_error_in_the_declaration_of_its_type_explains_it) {
    add(1, 34, "the last place in it");
    refuse(3, 4);
    EXPECT_EQ(reported(), "1:34 the last place in it\n");
}

TEST_F(LeftOut, an_error_in_another_declaration_does_not_explain_it) {
    add(2, 1, "the first place in it");
    refuse(3, 4);
    refuse(3, 16);
    EXPECT_EQ(reported(), "2:1 the first place in it\n" + at_t);
}

TEST_F(LeftOut, an_invalid_object_is_reported_up_to_the_limit) {
    add(2, 2, "one");
    add(2, 3, "two");
    refuse(3, 4);
    refuse(3, 21);
    EXPECT_EQ(reported(), "2:2 one\n2:3 two\n" + at_t);
    EXPECT_EQ(report_.dropped(), 0U); // beyond the limit it may follow from a dropped error
}

} // namespace
