// Reference counting: cShared, cRef, the object base and the number of living objects.
#include "qrv/base/cref.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "tests/support/fixture.h"

#include <functional>
#include <map>
#include <set>
#include <sstream>
#include <type_traits>
#include <unordered_set>
#include <vector>

namespace {

class RefEdge : public QrvTest {};
class Ref : public QrvTest {};
class Destruction : public QrvTest {};

struct cCounted : cShared {
    int mark = 0;
};

using countedref = cRef<cCounted>;

// Handles are created from shared objects and never from a plain pointer. Operations that only a
// pointer should have do not compile.
static_assert(std::is_convertible_v<std::nullptr_t, objref>);
static_assert(std::is_convertible_v<typeref, objref>);
static_assert(std::is_convertible_v<objref, cObj *>);
static_assert(std::is_convertible_v<objref, cObj const *>);
static_assert(!std::is_convertible_v<cObj *, objref>);
static_assert(!std::is_constructible_v<objref, cObj *>);
static_assert(!std::is_convertible_v<objref, typeref>);
static_assert(!std::is_convertible_v<objref, bool>);
static_assert(!std::is_convertible_v<objref, int>);
static_assert(std::is_constructible_v<bool, objref>);
static_assert(sizeof(objref) == sizeof(void *));

template <class T>
concept cIndexable = requires(T ref) {
    ref[0];
};
template <class T>
concept cPrintable = requires(T ref, std::ostream &os) {
    os << ref;
};
template <class T>
concept cShiftable = requires(T ref) {
    ref << 1;
};
static_assert(cIndexable<int *> && !cIndexable<objref>);
static_assert(cPrintable<int *> && !cPrintable<objref>);
static_assert(!cShiftable<objref>);

// Numbers, pointers and strings do not convert to the flag of the plain constructor.
static_assert(!std::is_convertible_v<bool, cObj>);
static_assert(!std::is_constructible_v<cObj, int>);
static_assert(!std::is_constructible_v<cObj, double>);
static_assert(!std::is_constructible_v<cObj, char const *>);
static_assert(!std::is_assignable_v<cObj &, int>);
static_assert(!std::is_assignable_v<cObj &, char const *>);
static_assert(!std::is_constructible_v<cObjD<bool>, char const *>);
static_assert(!std::is_constructible_v<cObjDR<std::string>, std::string>);
static_assert(!std::is_copy_constructible_v<cObj>);
static_assert(!std::is_copy_constructible_v<cTypeObj> && !std::is_copy_assignable_v<cTypeObj>);
static_assert(!std::is_copy_constructible_v<cExeMember> && !std::is_copy_assignable_v<cExeMember>);

} // namespace

namespace {

// Compares by identity: handles to one class, to a class and its base, and to unrelated classes.
template <class A, class B> constexpr bool comparable = requires(A const &a, B const &b) {
    a == b;
    a != b;
};
template <class A, class B> constexpr bool ordered = requires(A const &a, B const &b) {
    a < b;
    a <= b;
    a > b;
    a >= b;
    a <=> b;
};
using mapref = cRef<cMapObj>;
static_assert(comparable<objref, objref> && ordered<objref, objref>);
static_assert(comparable<objref, mapref> && ordered<objref, mapref>);
static_assert(comparable<mapref, objref> && ordered<mapref, objref>);
static_assert(comparable<objref, cObj *> && ordered<objref, cObj *>);
static_assert(comparable<cObj *, objref> && ordered<cObj *, objref>);
static_assert(comparable<objref, cObj const *> && ordered<objref, cObj const *>);
static_assert(comparable<objref, cMapObj *> && ordered<cMapObj *, objref>);
static_assert(comparable<objref, std::nullptr_t> && comparable<std::nullptr_t, objref>);
static_assert(!ordered<objref, std::nullptr_t>);
static_assert(!ordered<objref, countedref> && !ordered<objref, int>);
static_assert(std::is_same_v<std::strong_ordering,
                             decltype(std::declval<objref>() <=> std::declval<mapref>())>);
static_assert(std::is_nothrow_invocable_v<std::hash<objref>, objref>);

} // namespace

TEST_F(Ref, handles_and_pointers_compare_by_identity) {
    mapref const derived = make<cMapObj>();
    objref const base = derived;
    objref const other = make<cMapObj>(); // equal, but a different object
    cObj *const p = derived.get();
    EXPECT_TRUE(base == p);
    EXPECT_TRUE(p == base);
    EXPECT_TRUE(derived == base);
    EXPECT_TRUE(base == derived);
    EXPECT_TRUE(derived == p);
    EXPECT_FALSE(base == nullptr);
    EXPECT_FALSE(nullptr == base);
    EXPECT_TRUE(objref() == nullptr);
    EXPECT_TRUE(base != other);
    EXPECT_TRUE(other != p);
}

TEST_F(Ref, handles_and_pointers_are_ordered_by_identity) {
    objref const a = make<cMapObj>();
    mapref const b = make<cMapObj>();
    cObj *const p = a.get();
    bool const first = std::less<cObj const *>{}(a, b);
    EXPECT_EQ(a < b, first);
    EXPECT_EQ(b > a, first);
    EXPECT_EQ(a <= b, first);
    EXPECT_EQ(p < b, first);
    EXPECT_EQ(b > p, first);
    EXPECT_TRUE(a <= p);
    EXPECT_TRUE(p >= a);
    EXPECT_FALSE(a < a.get());
    EXPECT_TRUE((a <=> p) == 0);
    EXPECT_TRUE(objref() < a);
    EXPECT_TRUE((objref() <=> objref()) == std::strong_ordering::equal);
}

TEST_F(Ref, handles_are_keys_of_the_standard_containers) {
    objref const a = cat::of(1);
    objref const b = cat::of(1);
    EXPECT_EQ((std::set<objref>{a, b, a, objref()}.size()), 3u);
    std::map<objref, int> order{{a, 1}, {b, 2}};
    order[a] = 3;
    EXPECT_EQ(order.size(), 2u);
    EXPECT_EQ(order.at(a), 3);
    std::unordered_set<objref> const held{a, b, a, objref(), objref()};
    EXPECT_EQ(held.size(), 3u);
    EXPECT_TRUE(held.contains(objref::share(b.get())));
    EXPECT_FALSE(held.contains(cat::of(1)));
    EXPECT_EQ(std::hash<objref>{}(a), std::hash<cObj *>{}(a.get()));
    EXPECT_EQ((std::set<cRef<cMapObj>>{nullptr, nullptr}.size()), 1u);
}

TEST_F(RefEdge, a_copy_of_a_shared_object_starts_with_count_one) {
    cCounted source;
    source.incref();
    source.incref();
    cCounted const copy(source);
    EXPECT_EQ(copy.refs(), 1u);
    EXPECT_EQ(source.refs(), 3u);
}

TEST_F(RefEdge, assigning_object_bases_copies_flags_but_not_the_count) {
    cObjD<int> a(1), b(2);
    a.setflags(of_const_keys | 3);
    b.incref();
    static_cast<cObjBase &>(b) = a;
    EXPECT_EQ(b.flags(), of_const_keys | 3);
    EXPECT_EQ(b.refs(), 2u);
    EXPECT_EQ(a.refs(), 1u);
    EXPECT_EQ(b.val(), 2);
}

TEST_F(RefEdge, decref_at_count_one_returns_true_and_does_not_destroy) {
    cCounted counted;
    counted.mark = 7;
    EXPECT_TRUE(counted.decref());
    EXPECT_EQ(counted.refs(), 0u);
    EXPECT_EQ(counted.mark, 7);
    counted.incref();
    counted.incref();
    EXPECT_FALSE(counted.decref());
}

TEST_F(RefEdge, self_assignment_keeps_the_count) {
    countedref ref = make<cCounted>();
    countedref &same = ref;
    ref = same;
    EXPECT_EQ(ref->refs(), 1u);
    ref = std::move(same);
    EXPECT_EQ(ref->refs(), 1u);
}

namespace {

// Owns itself through `next`, and reads that cRef in its destructor.
struct cHolder : cShared {
    ~cHolder() {
        if (outside) *seen = outside->get();
    }
    cRef<cHolder> next;
    cRef<cHolder> const *outside = nullptr;
    cHolder **seen = nullptr;
};

} // namespace

TEST_F(RefEdge, a_handle_may_be_assigned_from_a_member_of_the_object_that_it_destroys) {
    cRef<cHolder> chain = make<cHolder>();
    cHolder *seen = nullptr;
    chain->outside = &chain;
    chain->seen = &seen;
    chain->next = make<cHolder>();
    cHolder *const second = chain->next.get();
    chain = chain->next; // destroys the first one, and with it its `next`
    EXPECT_EQ(chain.get(), second);
    EXPECT_EQ(chain->refs(), 1u);
    EXPECT_EQ(seen, second) << "the old target's destructor must find the new value";
}

TEST_F(RefEdge, put_count_reports_the_built_in_types) {
    std::ostringstream os;
    cObjBase::put_count(os);
    std::ostringstream expected;
    expected << "------------------------------------------------------------------\n"
             << "static daten: \n"
             << "ob_lstid  " << cObjBase::ob_lstid() << "    ob_count  " << cObjBase::ob_count()
             << "   in typemap:15  (No type entries: 0 )\n";
    EXPECT_EQ(os.str(), expected.str());
}

TEST_F(Ref, put_count_distinguishes_other_entries_of_the_type_map) {
    cat::typemap().datamap().mapitem("no type", cat::of(1));
    std::ostringstream os;
    cObjBase::put_count(os);
    cat::typemap().datamap().delitem("no type");
    EXPECT_NE(os.str().find("   in typemap:15  (No type entries: 1 )\n"), std::string::npos);
}

TEST_F(Ref, adopting_takes_over_the_count_and_sharing_adds_one) {
    auto *const counted = new cCounted;
    std::vector<countedref> owners; // not reset as a group: g++ 12 would warn of a use after free
    owners.push_back(countedref::adopt(counted));
    EXPECT_EQ(counted->refs(), 1u);
    owners.push_back(countedref::share(counted));
    EXPECT_EQ(counted->refs(), 2u);
    owners.push_back(owners.front());
    EXPECT_EQ(counted->refs(), 3u);
}

TEST_F(Ref, moving_leaves_null_and_keeps_the_count) {
    countedref from = make<cCounted>();
    cCounted const *const counted = from.get();
    countedref to = std::move(from);
    EXPECT_EQ(from.get(), nullptr);
    EXPECT_EQ(to.get(), counted);
    EXPECT_EQ(counted->refs(), 1u);
}

TEST_F(Ref, null_handles_are_allowed_everywhere) {
    countedref a, b = nullptr;
    a = b;
    a = nullptr;
    a.swap(b);
    EXPECT_TRUE(a == b);
    EXPECT_TRUE(a == nullptr);
    EXPECT_FALSE(static_cast<bool>(a));
    EXPECT_EQ(countedref::share(nullptr).get(), nullptr);
}

TEST_F(Ref, handles_compare_by_their_pointers) {
    objref const a = cat::of(1), b = cat::of(1);
    EXPECT_TRUE(a == a);
    EXPECT_TRUE(a != b);
    EXPECT_TRUE(a == a.get());
    EXPECT_TRUE(a != nullptr);
}

TEST_F(Ref, flags_can_be_replaced_set_unset_and_masked) {
    cObjD<int> obj(1);
    obj.flags(5);
    obj.setflags(of_const);
    EXPECT_EQ(obj.flags(), 5 | of_const);
    obj.unsetflags(1);
    EXPECT_EQ(obj.flags(), 4 | of_const);
    EXPECT_EQ(obj.flags_of(of_const | 2), of_const);
}

TEST_F(Destruction, a_chain_of_a_million_maps_is_destroyed) {
    objref top = make<cMapObj>();
    for (int i = 0; i < 1000000; ++i) {
        objref const above = make<cMapObj>();
        static_cast<cMapObj &>(*above).datamap().mapitem("k", top);
        top = above;
    }
    top = nullptr; // the fixture checks that no object is left
    EXPECT_EQ(top, nullptr);
}

namespace {

class cLogging : public cObjD<int> {
  public:
    cLogging(int n, std::string &log) : cObjD<int>(n), log_(log) {}
    cLogging(cLogging const &) = delete;
    cLogging &operator=(cLogging const &) = delete;
    ~cLogging() override { log_ += std::to_string(val()) + ";"; }

  private:
    std::string &log_;
};

} // namespace

TEST_F(Destruction, values_below_the_limit_are_destroyed_in_ring_order) {
    std::string log;
    objref map = make<cMapObj>();
    cAttrHash &hash = static_cast<cMapObj &>(*map).datamap();
    for (int i : {1, 2, 3}) hash.mapitem(own_key(i), objref::adopt(new cLogging(i, log)));
    map = nullptr;
    EXPECT_EQ(log, "1;2;3;");
}

namespace {

// A link of a chain whose handles have the derived class as their type.
class cLink : public cObj {
  public:
    explicit cLink(cRef<cLink> next) : next_(std::move(next)) {}
    cLink(cLink const &) = delete;
    cLink &operator=(cLink const &) = delete;
    ~cLink() override { ++destroyed; }
    static inline int destroyed = 0;

  private:
    cRef<cLink> next_;
};

} // namespace

TEST_F(Destruction, a_chain_of_two_million_handles_of_a_derived_class_is_destroyed) {
    cLink::destroyed = 0;
    cRef<cLink> top;
    for (int i = 0; i < 2000000; ++i) top = make<cLink>(std::move(top));
    top = nullptr;
    EXPECT_EQ(cLink::destroyed, 2000000);
}

TEST_F(Destruction, handles_to_constant_objects_destroy_them) {
    cLink::destroyed = 0;
    cRef<cLink const> link = cRef<cLink const>(make<cLink>(nullptr));
    cRef<cObj const> same = link;
    EXPECT_EQ(link, same);
    link = nullptr;
    EXPECT_EQ(cLink::destroyed, 0);
    same = nullptr;
    EXPECT_EQ(cLink::destroyed, 1);
}
