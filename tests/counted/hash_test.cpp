// Calls of the functions that hash the characters of a key. The linker replaces them in all other
// sources by those below (--wrap).
#include "tests/counted/counted.h"
#include "tests/support/fixture.h"

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

#endif
