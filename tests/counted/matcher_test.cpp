// Characters that the scanner's matcher compares, for each character of a text without typed
// values.
#include "tests/counted/counted.h"
#include "tests/support/fixture.h"

#include "text/scan/cattrscanner_rules.h"

#ifdef QRV_CHECKS // the scanner counts in such builds only

class CountedMatcher : public QrvTest {};

TEST_F(CountedMatcher, a_character_is_compared_at_most_2_2_times) {
    for (char const *name : {"100k", "100kv", "16000"}) {
        std::string const text = data_of(name).attr;
        auto const before = scan::compared;
        counted::read(text);
        auto const count = static_cast<double>(scan::compared - before);
        EXPECT_GE(count, static_cast<double>(text.size())) << name;
        EXPECT_LE(count, 2.2 * static_cast<double>(text.size())) << name;
    }
}

#endif
