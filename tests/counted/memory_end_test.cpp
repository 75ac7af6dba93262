// A hash when memory runs out: each allocation of an operation fails once, and the hash is valid
// afterwards.
#include "tests/counted/counted.h"
#include "tests/support/fixture.h"

#include "qrv/core/cattrhash.h"
#include "qrv/core/cobjd.h"

#include <functional>
#include <memory>
#include <new>
#include <string>

#ifdef QRV_CHECKS // in other builds objects come from the pool, whose memory does not run out here

namespace {

using cOperation = std::function<void(cAttrHash &)>;

class MemoryEnd : public QrvTest {
  protected:
    static void texts(cAttrHash &hash, int count) {
        for (int i = 0; i < count; ++i) hash.mapitem("key" + std::to_string(i), cat::of(i));
    }
    static void ints(cAttrHash &hash, int count) {
        for (int i = 0; i < count; ++i) hash.mapitem(cat::of(3 * i), cat::of(i));
    }
    static void row(cAttrHash &hash, int count) {
        for (int i = 0; i < count; ++i) hash.vect_append(cat::of(i));
    }

    // Repeats the operation, with one more allocation that succeeds each time, until all of them
    // do. Returns how often one failed.
    static int fail_each_allocation(cOperation const &fill, cOperation const &operation) {
        for (int failed = 0;; ++failed) {
            cAttrHash hash(nullptr);
            fill(hash);
            bool thrown = false;
            counted::last_allocation = counted::allocations + static_cast<unsigned>(failed);
            try {
                operation(hash);
            } catch (std::bad_alloc const &) {
                thrown = true;
            }
            bool const refused = counted::allocations > counted::last_allocation;
            counted::last_allocation = ~0ULL;
            EXPECT_EQ(hash.broken_rule(true), "") << failed;
            for (cAttrNode *node = hash.first(); node; node = hash.next(node))
                EXPECT_EQ(hash.find(node->key()), node) << failed;
            row(hash, 100);
            texts(hash, 100);
            EXPECT_NE(hash.find("key99"), nullptr) << failed;
            if (!thrown && !refused) return failed;
        }
    }
};

TEST_F(MemoryEnd, a_hash_of_every_form_and_size_stays_valid_when_an_allocation_fails) {
    using cFill = void (*)(cAttrHash &, int);
    for (cFill const fill :
         {static_cast<cFill>(texts), static_cast<cFill>(ints), static_cast<cFill>(row)})
        for (int const count : {1, 7, 8, 9, 12, 16, 17, 40, 77, 78}) {
            auto const filled = [&](cAttrHash &hash) { fill(hash, count); };
            objref const value = cat::of(1), number = cat::of(1000), real = cat::of(1.5);
            objref const first = cat::of(0);
            EXPECT_GT(fail_each_allocation(filled, [&](cAttrHash &h) { h.mapitem("new", value); }),
                      0);
            EXPECT_GT(fail_each_allocation(filled, [&](cAttrHash &h) { h.mapitem(number, value); }),
                      0);
            EXPECT_GT(fail_each_allocation(filled, [&](cAttrHash &h) { h.vect_append(value); }), 0);
            EXPECT_GT(fail_each_allocation(filled, [&](cAttrHash &h) { h.mapitem(real, value); }),
                      0);
            fail_each_allocation(filled, [&](cAttrHash &h) { h.delitem("key0"); });
            fail_each_allocation(filled, [&](cAttrHash &h) { h.delitem(first); });
            fail_each_allocation(filled, [](cAttrHash &h) { h.clear(); });
        }
}

} // namespace

#endif
