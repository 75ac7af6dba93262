// Allocations of writing: those of the text itself, whatever the number of entries.
#include "tests/counted/counted.h"
#include "tests/support/fixture.h"

#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"

using namespace counted;

class CountedWrite : public QrvTest {};

namespace {
// The text doubles its room while it grows, and a level or two of the writer take some.
constexpr unsigned long long most = 100;
} // namespace

TEST_F(CountedWrite, an_entry_takes_no_allocation) {
    objref const tree = read(data().attr);
    std::string text = cat::as_text(tree);
    ASSERT_GT(text.size(), data().attr.size() / 2);
    auto const count = allocations_of([&] { text = cat::as_text(tree); });
    EXPECT_GE(count, 1u);
    EXPECT_LE(count, most) << for_each_entry(count) << " for each entry";
}

TEST_F(CountedWrite, an_entry_of_exact_text_takes_no_allocation) {
    objref const tree = read(data().attr);
    cat::ExactText const exact;
    std::string text = cat::as_text(tree);
    auto const count = allocations_of([&] { text = cat::as_text(tree); });
    EXPECT_EQ(exact.failed(), 0u);
    EXPECT_GE(count, 1u);
    EXPECT_LE(count, most) << for_each_entry(count) << " for each entry";
}
