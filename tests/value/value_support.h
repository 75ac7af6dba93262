#pragma once
// What the tests of values share.

#include "qrv/value.h"
#include "tests/support/fixture.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace value_test {

// Checks at the end of each test that nothing was printed.
class Quiet : public QrvTest {
  protected:
    void TearDown() override { EXPECT_EQ(messages(), ""); }
};

inline std::string text_of(qrv::value const &v) {
    std::ostringstream os;
    os << v;
    return os.str();
}

// The value that the text has.
inline qrv::value read(char const *text) {
    objref result;
    EXPECT_EQ(cObj::readobj(text, result), 0) << text;
    return result;
}

// The what() of the Exception that `call` throws, or "nothing".
template <class Exception, class Call> std::string thrown(Call const &call) {
    try {
        call();
    } catch (Exception const &failure) {
        return failure.what();
    }
    return "nothing";
}

} // namespace value_test
