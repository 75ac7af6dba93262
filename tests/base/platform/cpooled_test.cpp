// `new` and `delete` of pooled classes in all their forms. Only release builds use the pool; in
// debug builds all memory is from the heap.

#include "qrv/base/platform/cpooled.h"

#include "base/platform/cpool.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <memory>
#include <new>

namespace {

constexpr int refused = -1;

template <std::size_t size> struct cSized : cPooled {
    explicit cSized(int number = 0) {
        if (number == refused) throw number;
        bytes.fill(std::byte{0x5A});
    }
    std::array<std::byte, size> bytes;
};

struct alignas(64) cWide : cSized<64> {
    using cSized::cSized;
};
struct cTall : cSized<1> {
    long double number = 1;
};
struct cBase : cPooled {
    virtual ~cBase() = default;
};
struct cLong : cBase {
    std::array<char, 300> bytes{};
};

bool in_pool(void const *memory) { return cat::pool::size_of(memory) != 0; }

bool pool_is_used() {
    auto const object = std::make_unique<cSized<24>>();
    return in_pool(object.get());
}

template <class T> bool is_aligned(T const *object) {
    return reinterpret_cast<std::uintptr_t>(object) % alignof(T) == 0;
}

TEST(Pooled, objects_up_to_the_largest_cell_are_in_the_pool) {
    auto const last = std::make_unique<cSized<256>>();
    auto const next = std::make_unique<cSized<257>>();
    EXPECT_EQ(in_pool(last.get()), pool_is_used());
    EXPECT_FALSE(in_pool(next.get()));
}

TEST(Pooled, an_alignment_above_the_default_is_respected) {
    auto const object = std::make_unique<cWide>();
    EXPECT_TRUE(is_aligned(object.get()));
    EXPECT_FALSE(in_pool(object.get()));
    std::unique_ptr<cWide> const quiet(new (std::nothrow) cWide);
    EXPECT_TRUE(is_aligned(quiet.get()));
    EXPECT_FALSE(in_pool(quiet.get()));
}

TEST(Pooled, the_default_alignment_is_respected) {
    for (int i = 0; i < 3; ++i) {
        auto const object = std::make_unique<cTall>();
        EXPECT_TRUE(is_aligned(object.get()));
        EXPECT_EQ(in_pool(object.get()), pool_is_used());
    }
}

TEST(Pooled, a_virtual_destructor_frees_the_whole_object) {
    std::size_t const blocks = cat::pool::blocks();
    std::unique_ptr<cBase> object = std::make_unique<cLong>();
    EXPECT_FALSE(in_pool(object.get()));
    object = std::make_unique<cBase>();
    EXPECT_EQ(in_pool(object.get()), pool_is_used());
    object = nullptr;
    EXPECT_LE(cat::pool::blocks(), blocks + 1);
}

TEST(Pooled, an_object_can_be_created_by_placement_new) {
    alignas(cSized<8>) std::byte place[sizeof(cSized<8>)];
    auto *const object = new (place) cSized<8>;
    EXPECT_EQ(static_cast<void *>(object), place);
    object->~cSized<8>();
    EXPECT_THROW(new (place) cSized<8>(refused), int);
}

TEST(Pooled, arrays_are_on_the_heap) {
    auto const array = std::make_unique<cSized<8>[]>(3);
    EXPECT_FALSE(in_pool(array.get()));
}

TEST(Pooled, shared_pointers_and_local_objects_use_no_cell) {
    auto const shared = std::make_shared<cSized<8>>();
    EXPECT_FALSE(in_pool(shared.get()));
    cSized<8> const local;
    EXPECT_FALSE(in_pool(&local));
}

// The next allocation gets the memory of the constructor that threw.
template <class T> void expect_cell_again() {
    auto object = std::make_unique<T>();
    void const *const place = object.get();
    object = nullptr;
    EXPECT_THROW((void)new T(refused), int);
    EXPECT_THROW((void)new (std::nothrow) T(refused), int);
    if (!pool_is_used()) return;
    object = std::make_unique<T>();
    EXPECT_EQ(object.get(), place);
}

TEST(Pooled, a_throwing_constructor_frees_its_memory) {
    expect_cell_again<cSized<1>>();
    expect_cell_again<cSized<256>>();
}

TEST(Pooled, a_throwing_constructor_of_a_large_or_overaligned_object_frees_its_memory) {
    EXPECT_THROW((void)new cSized<257>(refused), int); // the sanitizers would report a leak
    EXPECT_THROW((void)new (std::nothrow) cSized<257>(refused), int);
    EXPECT_THROW((void)new cWide(refused), int);
    EXPECT_THROW((void)new (std::nothrow) cWide(refused), int);
}

TEST(Pooled, nothrow_new_returns_a_cell) {
    std::unique_ptr<cSized<24>> const object(new (std::nothrow) cSized<24>);
    ASSERT_TRUE(object);
    EXPECT_EQ(in_pool(object.get()), pool_is_used());
}

TEST(Pooled, null_may_be_deleted) {
    cSized<8> *volatile nothing = nullptr;
    delete nothing;
    cPooled::operator delete(nullptr, sizeof *nothing);
}

} // namespace
