// Allocations of writing: only those of the resulting string, for any number of entries.
#include "tests/counted/counted.h"
#include "tests/support/fixture.h"

#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"

using namespace counted;

class CountedWrite : public QrvTest {};

namespace {
// The string doubles its capacity while it grows, and a level or two of the writer need some
// allocations.
constexpr unsigned long long most = 100;
} // namespace

TEST_F(CountedWrite, an_entry_needs_no_allocation) {
    objref const tree = read(data().attr);
    std::string text = cat::as_text(tree);
    ASSERT_GT(text.size(), data().attr.size() / 2);
    auto const count = allocations_of([&] { text = cat::as_text(tree); });
    EXPECT_GE(count, 1u);
    EXPECT_LE(count, most) << for_each_entry(count) << " for each entry";
}

TEST_F(CountedWrite, an_entry_of_exact_text_needs_no_allocation) {
    objref const tree = read(data().attr);
    cat::ExactText const exact;
    std::string text = cat::as_text(tree);
    auto const count = allocations_of([&] { text = cat::as_text(tree); });
    EXPECT_EQ(exact.failed(), 0u);
    EXPECT_GE(count, 1u);
    EXPECT_LE(count, most) << for_each_entry(count) << " for each entry";
}
