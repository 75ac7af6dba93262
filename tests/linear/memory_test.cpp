// A million objects are created and freed in some order. Afterwards the process has at most 10 %
// more memory than before. In the release build, for which these tests are, objects are in the
// pool.
#include "tests/support/fixture.h"

#include "base/platform/cpool.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"

#include <malloc.h>

#include <algorithm>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int million = 1'000'000;

// First releases the free memory of malloc, which hash tables used, not the pool.
long resident_kilobytes() {
    malloc_trim(0);
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        long kilobytes = 0;
        if (word == "VmRSS:" && status >> kilobytes) return kilobytes;
    }
    return 0;
}

class Memory : public QrvTest {
  protected:
    // Objects of two sizes alternate.
    static void make_million(std::vector<objref> &objects) {
        for (objref &object : objects) {
            bool const is_number = (&object - objects.data()) % 2 == 0;
            object = is_number ? cat::of(1) : cat::of("text");
        }
    }

    void SetUp() override {
        QrvTest::SetUp();
        make_million(objects_); // so that all memory but that of the objects is already allocated
        objects_.assign(million, nullptr);
        before_ = resident_kilobytes();
        make_million(objects_);
        ASSERT_GT(resident_kilobytes(), before_ + 50'000);
        ASSERT_NE(cat::pool::size_of(objects_[0].get()), 0u);
    }
    void TearDown() override {
        EXPECT_LT(resident_kilobytes(), before_ + before_ / 10);
        objects_ = {};
        QrvTest::TearDown();
    }

    std::vector<objref> objects_ = std::vector<objref>(million);
    long before_ = 0;
};

TEST_F(Memory, a_million_objects_freed_in_order_leave_the_memory_as_it_was) {
    for (objref &object : objects_) object = nullptr;
}

TEST_F(Memory, a_million_objects_freed_in_reverse_leave_the_memory_as_it_was) {
    for (auto object = objects_.rbegin(); object != objects_.rend(); ++object) *object = nullptr;
}

TEST_F(Memory, a_million_objects_freed_in_any_order_leave_the_memory_as_it_was) {
    std::ranges::shuffle(objects_, std::mt19937(1));
    for (objref &object : objects_) object = nullptr;
}

TEST_F(Memory, a_map_of_a_million_entries_leaves_the_memory_as_it_was) {
    std::ranges::fill(objects_, nullptr);
    auto map = make<cMapObj>();
    for (int i = 0; i < million; ++i) map->setattr(own_key(i), cat::of(i));
    EXPECT_GT(resident_kilobytes(), before_ + 120'000);
}

TEST_F(Memory, new_objects_use_the_memory_of_freed_ones) {
    std::mt19937 random(1);
    long const most = resident_kilobytes();
    for (int round = 0; round < 10; ++round) {
        std::ranges::shuffle(objects_, random);
        std::fill(objects_.begin() + million / 2, objects_.end(), nullptr);
        make_million(objects_);
        EXPECT_LT(resident_kilobytes(), most + most / 10) << round;
    }
    std::ranges::fill(objects_, nullptr);
}

} // namespace
