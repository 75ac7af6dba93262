// Calls of the functions that hash the characters of a key or a value. The linker replaces them in
// all other sources by those below (--wrap).
#include "tests/counted/counted.h"
#include "tests/support/fixture.h"

#include "containers/value_index.h"
#include "qrv/containers/csetobj.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/cobjd.h"

#include <algorithm>
#include <cstdint>

#ifdef QRV_CHECKS // optimised code inlines these functions

namespace {

unsigned long long hashed = 0;

template <class Work> unsigned long long hashed_by(Work const &work) {
    auto const before = hashed;
    work();
    return hashed - before;
}

} // namespace

// cat::hash_bytes(char const *, size_t) and seeded_hash_bytes(void const *, size_t)
extern "C" {
unsigned int __real__ZN3cat10hash_bytesEPKcm(char const *bytes, std::size_t count);
unsigned int __wrap__ZN3cat10hash_bytesEPKcm(char const *bytes, std::size_t count) {
    ++hashed;
    return __real__ZN3cat10hash_bytesEPKcm(bytes, count);
}
std::uint32_t __real__Z17seeded_hash_bytesPKvm(void const *bytes, std::size_t count);
std::uint32_t __wrap__Z17seeded_hash_bytesPKvm(void const *bytes, std::size_t count) {
    ++hashed;
    return __real__Z17seeded_hash_bytesPKvm(bytes, count);
}
}

class CountedHash : public QrvTest {};

TEST_F(CountedHash, an_insertion_by_text_hashes_once) {
    cAttrHash hash(nullptr);
    auto const count = hashed_by([&] {
        for (int i = 0; i < 1000; ++i) hash.mapitem("key" + std::to_string(i), cat::of(i));
    });
    EXPECT_EQ(count, 1000u);
}

TEST_F(CountedHash, an_insertion_by_an_object_hashes_once) {
    cAttrHash hash(nullptr);
    auto const count = hashed_by([&] {
        for (int i = 0; i < 1000; ++i) hash.mapitem(cat::of("key" + std::to_string(i)), cat::of(i));
    });
    EXPECT_EQ(count, 1000u);
}

TEST_F(CountedHash, reading_hashes_each_key_once) {
    std::string const &text = counted::data().attr;
    auto const keys = static_cast<unsigned long long>(std::ranges::count(text, '='));
    counted::read(text);
    EXPECT_EQ(hashed_by([&] { counted::read(text); }), keys);
}

TEST_F(CountedHash, the_index_of_values_hashes_once_for_a_search_and_once_for_a_new_node) {
    cAttrHash hash(nullptr);
    cValueIndex index(hash);
    hash.vect_append(cat::of("first"));
    ASSERT_EQ(index.find(*cat::of("first")), hash.first());
    auto const count = hashed_by([&] {
        for (int i = 0; i < 1000; ++i) {
            hash.vect_append(cat::of("value" + std::to_string(i)));
            ASSERT_EQ(index.find(hash.last()->value()), hash.last());
        }
    });
    EXPECT_EQ(count, 2000u);
}

class CountedSet : public CountedHash {
  protected:
    CountedSet() { append_from(0); }

    bool append(int i) { return set.append(cat::of("value" + std::to_string(i))); }
    void append_from(int first) {
        for (int i = first; i < first + 1000; ++i) ASSERT_TRUE(append(i));
    }

    cSetObj set;
};

TEST_F(CountedSet, a_refused_value_is_hashed_once) {
    EXPECT_EQ(hashed_by([&] {
                  for (int i = 0; i < 1000; ++i) ASSERT_FALSE(append(i));
              }),
              1000u);
}

TEST_F(CountedSet, an_append_hashes_two_to_four_times) { // the checks of this build hash, too
    auto const count = hashed_by([&] { append_from(1000); });
    EXPECT_GE(count, 2000u);
    EXPECT_LE(count, 4000u);
}

TEST_F(CountedSet, a_changed_value_is_hashed_three_times_and_a_searched_one_once) {
    auto const count = hashed_by([&] {
        for (int i = 1; i < 1000; ++i) {
            ASSERT_TRUE(set.getattr(cat::of(i))->add(cat::of("x")));
            ASSERT_FALSE(append(0));
        }
    });
    EXPECT_EQ(count, 4 * 999u); // twice before the change, once after it, and for the search
}

TEST_F(CountedSet, a_removal_and_an_append_hash_at_most_five_times) {
    auto const count = hashed_by([&] {
        for (int i = 0; i < 1000; ++i) {
            ASSERT_TRUE(set.setattr(cat::of(set.size() - 1), nullptr));
            ASSERT_TRUE(append(1000 + i));
        }
    });
    EXPECT_GE(count, 3000u);
    EXPECT_LE(count, 5000u);
}

#endif
