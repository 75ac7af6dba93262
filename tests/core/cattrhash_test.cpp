// The attribute hash: access by key, nodes, orders.
#include "qrv/core/cattrhash.h"

#include "core/cattrhash_detail.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/ceros.h"
#include "tests/core/hash_support.h"
#include "tests/support/fixture.h"

#include <climits>
#include <sstream>
#include <type_traits>

namespace {

class HashTest : public QrvTest {
  protected:
    cAttrHash hash{nullptr};

    void fill(std::initializer_list<char const *> keys) {
        int value = 0;
        for (char const *key : keys) hash.mapitem(key, cat::of(++value));
    }
};
class HashEdge : public HashTest {};
class Hash : public HashTest {};

} // namespace

template <class H, class K>
concept finds = requires(H hash, K key) {
    hash.find(key);
};
template <class H, class K>
concept gets = requires(H hash, K key) {
    hash.getitem(key);
};
template <class H, class K>
concept detaches = requires(H hash, K key) {
    hash.detach(key);
};
template <class H, class K>
concept maps = requires(H hash, K key, objref value) {
    hash.mapitem(key, value);
};
static_assert(finds<cAttrHash, int> && finds<cAttrHash, char const *> && finds<cAttrHash, objref>);
static_assert(finds<cAttrHash, std::string> && finds<cAttrHash, std::nullptr_t>);
static_assert(!finds<cAttrHash, bool> && !finds<cAttrHash, double> && !finds<cAttrHash, char>);
static_assert(!finds<cAttrHash, long> && !finds<cAttrHash, unsigned int>);
static_assert(!gets<cAttrHash, int> && !gets<cAttrHash, double> && gets<cAttrHash, std::string>);
static_assert(detaches<cAttrHash, int> && !detaches<cAttrHash, bool>);
static_assert(!maps<cAttrHash, int> && !maps<cAttrHash, bool> && maps<cAttrHash, objref>);
static_assert(!std::is_copy_constructible_v<cAttrHash> && std::is_copy_assignable_v<cAttrHash>);
static_assert(!std::is_copy_constructible_v<cAttrNode> && std::is_copy_assignable_v<cAttrNode>);
static_assert(!std::is_convertible_v<cObj *, cAttrHash>);
static_assert(!std::is_polymorphic_v<cAttrHash> && std::is_polymorphic_v<cAttrNode>);

// --- sizes

TEST_F(HashEdge, node_77_keeps_97_slots) {
    EXPECT_EQ(hash.slots(), 97u);
    for (int i = 0; i < 77; ++i) ASSERT_TRUE(hash.mapitem(cat::of(i), cat::nil()));
    EXPECT_EQ(hash.slots(), 97u);
}

TEST_F(HashEdge, node_78_grows_to_197) {
    for (int i = 0; i < 77; ++i) hash.mapitem(cat::of(i), cat::nil());
    EXPECT_TRUE(hash.mapitem("key 78", cat::nil()));
    EXPECT_EQ(hash.slots(), 197u);
    EXPECT_EQ(hash.used(), 78u);
    EXPECT_EQ(hash.broken_rule(true), "");
}

TEST_F(HashEdge, growth_keeps_the_order_of_insertion) {
    std::string expected;
    for (int i = 0; i < 100; ++i) {
        int const key = i * 7919 % 1009;
        hash.mapitem(cat::of(key), cat::of(i));
        expected += std::to_string(key) + "=" + std::to_string(i) + " ";
    }
    EXPECT_EQ(ring(hash), expected);
}

TEST_F(Hash, the_sizes_of_growing_tables_follow_the_list_of_primes) {
    unsigned int const sizes[] = {11,     23,     47,     97,      197,     397,     797,
                                  1597,   3203,   6421,   12853,   25717,   51437,   102811,
                                  205619, 411233, 822433, 1644817, 3289613, 6579211, 13158023};
    EXPECT_EQ(hash_new_size(0), 11u);
    for (size_t i = 0; i + 1 < std::size(sizes); ++i) {
        EXPECT_EQ(hash_new_size(sizes[i] - 1), sizes[i]);
        EXPECT_EQ(hash_new_size(sizes[i]), sizes[i + 1]);
    }
    EXPECT_EQ(hash_new_size(13158022), 13158023u);
    EXPECT_EQ(hash_new_size(13158023), 0u);
    EXPECT_EQ(hash_new_size(UINT_MAX), 0u);
}

TEST_F(Hash, beyond_the_list_of_primes_growth_uses_the_next_prime_above_twice_the_size) {
    std::uint32_t const few[] = {11, 23};
    EXPECT_EQ(hash_grown_size(11, few), 23u);
    EXPECT_EQ(hash_grown_size(23, few), 47u);
    EXPECT_EQ(hash_grown_size(47, few), 97u); // 95 is 5 * 19
    EXPECT_EQ(hash_grown_size(97, hash_primes()), 197u);
    EXPECT_EQ(hash_grown_size(13158023, hash_primes()), 26316047u);
    EXPECT_THROW(hash_grown_size(0x90000001u, few), std::length_error);
}

// --- access by key

TEST_F(Hash, a_new_hash_is_empty) {
    EXPECT_TRUE(hash.empty());
    EXPECT_EQ(hash.used(), 0u);
    EXPECT_EQ(hash.first(), nullptr);
    EXPECT_EQ(hash.last(), nullptr);
    EXPECT_EQ(hash.find("a"), nullptr);
    EXPECT_EQ(hash.find(0), nullptr);
    EXPECT_EQ(hash.findpos(0), nullptr);
    EXPECT_TRUE(hash.detach());
    EXPECT_EQ(hash.broken_rule(true), "");
}

TEST_F(Hash, every_form_of_a_key_finds_the_node) {
    hash.mapitem("a", cat::of(1));
    hash.mapitem(cat::of(-1), cat::of(2)); // its hash has all bits set
    cAttrNode *const text = hash.first(), *const number = hash.last();
    EXPECT_EQ(hash.find("a"), text);
    EXPECT_EQ(hash.find(std::string("a")), text);
    EXPECT_EQ(hash.find(cat::of("a")), text);
    EXPECT_EQ(hash.find(-1), number);
    EXPECT_EQ(hash.find(cat::of(-1)), number);
    EXPECT_EQ(hash.find(1), nullptr);
    EXPECT_EQ(hash.find("-1"), nullptr);
    EXPECT_EQ(hash.find(cat::of(-1.0)), nullptr);
}

TEST_F(Hash, a_null_key_is_never_found_and_never_stored) {
    fill({"a"});
    objref const null;
    char const *const no_text = nullptr;
    EXPECT_EQ(hash.find(null), nullptr);
    EXPECT_EQ(hash.find(no_text), nullptr);
    EXPECT_EQ(hash.find(nullptr), nullptr);
    EXPECT_EQ(hash.getitem(null), cat::badfind());
    EXPECT_EQ(hash.getitem(no_text), cat::badfind());
    EXPECT_EQ(hash.posofkey(null), -1);
    EXPECT_EQ(hash.posofkey(no_text), -1);
    EXPECT_FALSE(hash.mapitem(null, cat::of(1)));
    EXPECT_FALSE(hash.mapitem(no_text, cat::of(1)));
    EXPECT_FALSE(hash.setitem(null, cat::of(1)));
    EXPECT_FALSE(hash.delitem(null));
    EXPECT_FALSE(hash.delitem(no_text));
    EXPECT_FALSE(hash.copyitem(null, cat::of(1), false));
    EXPECT_FALSE(hash.detach(null));
    EXPECT_EQ(hash.erase(null), nullptr);
    EXPECT_EQ(hash.insert(null, cat::of(1), nullptr), nullptr);
    EXPECT_EQ(ring(hash), "a=1 ");
}

TEST_F(Hash, a_key_of_the_nil_type_is_refused_like_null) {
    fill({"a"});
    for (objref const &key : {cat::nil(), cat::bad(), cat::badfind()}) {
        EXPECT_FALSE(hash.mapitem(key, cat::of(1)));
        EXPECT_FALSE(hash.mapitem(key, objref()));
        EXPECT_FALSE(hash.setitem(key, cat::of(1)));
        EXPECT_FALSE(hash.delitem(key));
        EXPECT_EQ(hash.insert(key, cat::of(1), nullptr), nullptr);
        EXPECT_EQ(hash.find(key), nullptr);
        hash.rename(cat::of("a"), key);
    }
    EXPECT_EQ(ring(hash), "a=1 ");
}

TEST_F(HashEdge, delitem_of_an_absent_key_is_true) {
    EXPECT_TRUE(hash.delitem("a"));
    EXPECT_TRUE(hash.delitem(cat::of(1)));
    EXPECT_TRUE(hash.delitem(std::string("a")));
}

TEST_F(HashEdge, mapitem_of_badfind_on_an_absent_key_is_true_and_changes_nothing) {
    fill({"a"});
    EXPECT_TRUE(hash.mapitem("b", cat::badfind()));
    EXPECT_TRUE(hash.mapitem("b", nullptr));
    EXPECT_EQ(ring(hash), "a=1 ");
}

TEST_F(HashEdge, setitem_never_inserts_and_mapitem_does) {
    EXPECT_FALSE(hash.setitem("a", cat::of(1)));
    EXPECT_EQ(ring(hash), "");
    EXPECT_TRUE(hash.mapitem("a", cat::of(1)));
    EXPECT_TRUE(hash.setitem("a", cat::of(2)));
    EXPECT_EQ(ring(hash), "a=2 ");
}

TEST_F(HashEdge, getitem_distinguishes_a_present_nil_from_an_absent_key) {
    hash.mapitem("a", cat::nil());
    EXPECT_EQ(hash.getitem("a"), cat::nil());
    EXPECT_EQ(hash.getitem("b"), cat::badfind());
}

TEST_F(Hash, mapitem_overwrites_in_place_and_removes_by_a_kill_value) {
    fill({"a", "b", "c"});
    cAttrNode *const node = hash.find("b");
    std::uint32_t const anid = node->anid();
    objref const key = node->key();
    EXPECT_TRUE(hash.mapitem("b", cat::of(7)));
    EXPECT_EQ(hash.find("b"), node);
    EXPECT_EQ(node->anid(), anid);
    EXPECT_EQ(node->key(), key);
    EXPECT_EQ(ring(hash), "a=1 b=7 c=3 ");
    EXPECT_TRUE(hash.mapitem("b", nullptr));
    EXPECT_TRUE(hash.mapitem("a", cat::badfind()));
    EXPECT_EQ(ring(hash), "c=3 ");
}

TEST_F(Hash, a_bad_value_is_refused_by_the_checked_operations) {
    fill({"a"});
    EXPECT_FALSE(hash.mapitem("a", cat::bad()));
    EXPECT_FALSE(hash.mapitem("b", cat::bad()));
    for (objref const &value : {objref(), cat::bad(), cat::badfind()})
        EXPECT_FALSE(hash.setitem("a", value));
    EXPECT_EQ(ring(hash), "a=1 ");
}

TEST_F(Hash, values_are_shared_and_keys_are_private) {
    objref const key = cat::of("k"), value = cat::of(1);
    hash.mapitem(key, value);
    EXPECT_EQ(hash.getitem("k"), value);
    EXPECT_NE(hash.first()->key(), key);
    val<std::string>(key) = "other";
    EXPECT_NE(hash.find("k"), nullptr);
    EXPECT_EQ(hash.find("other"), nullptr);
}

TEST_F(Hash, the_private_key_is_counted_and_not_const_even_from_a_borrowed_one) {
    std::uint32_t const before = cObjBase::ob_count();
    std::string text = "k";
    hash.mapitem(make_key(text), cat::nil());
    EXPECT_EQ(cObjBase::ob_count(), before + 1);
    text = "other";
    objref const &key = hash.first()->key();
    EXPECT_EQ(val<std::string>(key), "k");
    EXPECT_NE(key->obid(), 0u);
    EXPECT_EQ(key->flags_of(of_const), 0);
    EXPECT_FALSE(key->is_ObjDR());
}

TEST_F(Hash, a_key_that_cannot_be_cloned_is_shared) {
    objref const key = make<cTypeObj>("no newobj"); // objects of "type" clone to strings
    cErrorLog errors;
    ASSERT_TRUE(hash.mapitem(key, cat::of(1)));
    EXPECT_EQ(hash.first()->key(), key);
}

TEST_F(Hash, a_key_of_a_type_without_hooks_is_stored_but_never_found) {
    objref const key = cat::of(true);
    EXPECT_TRUE(hash.mapitem(key, cat::of(1)));
    EXPECT_EQ(hash.find(key), nullptr);
    EXPECT_EQ(hash.find(hash.first()->key()), nullptr);
    EXPECT_TRUE(hash.mapitem(key, cat::of(2)));
    EXPECT_EQ(hash.used(), 2u);
    EXPECT_EQ(hash.posofkey(key), -1);
    EXPECT_EQ(hash.broken_rule(true), "");
}

TEST_F(Hash, an_executable_gets_its_key_as_name_and_may_refuse) {
    struct cPicky : cExeObj {
        cPicky() : cExeObj(0, false, false) {}
        cPicky(cPicky const &) = delete;
        cPicky &operator=(cPicky const &) = delete;
        bool validate_exe(cObj *owner) const override { return owner && name() != "no"; }
    };
    objref const owner = cat::of(0), exe = make<cPicky>();
    EXPECT_FALSE(hash.mapitem("yes", exe));
    hash.father(owner, false);
    EXPECT_FALSE(hash.mapitem("no", exe));
    EXPECT_EQ(hash.used(), 0u);
    EXPECT_TRUE(hash.mapitem("yes", exe));
    EXPECT_EQ(static_cast<cExeObj &>(*exe).name(), "yes");
    EXPECT_TRUE(hash.mapitem(cat::of(5), exe));
    EXPECT_EQ(static_cast<cExeObj &>(*exe).name(), "5");
}

TEST_F(Hash, an_object_that_only_claims_to_be_executable_is_refused) {
    objref const liar = cat::of(1);
    liar->set_type(&cat::type_exe());
    EXPECT_FALSE(hash.mapitem("a", liar));
    EXPECT_TRUE(hash.empty());
    liar->set_type(&cat::type_int());
}

TEST_F(Hash, setitem_turns_a_thrown_error_into_false) {
    cErrHandler const before = cat::errhandler();
    hash.mapitem("a", cat::of(1));
    hash.flags(2);
    cat::errhandler().throw_mask(0x40000000u);
    EXPECT_FALSE(hash.setitem("a", cat::of("text")));
    EXPECT_THROW(*hash.find("a") = cat::of("text"), cErr);
    cat::errhandler() = before;
    EXPECT_TRUE(hash.setitem("a", cat::of("text"))); // refused, but nothing was thrown
    EXPECT_EQ(ring(hash), "a=1 ");
}

TEST_F(Hash, copyitem_assigns_into_a_present_value) {
    objref const present = cat::of(1), source = cat::of(2);
    hash.mapitem("a", present);
    EXPECT_TRUE(hash.copyitem(cat::of("a"), source, false));
    EXPECT_EQ(hash.getitem("a"), present);
    EXPECT_EQ(val<int>(present), 2);
    EXPECT_TRUE(hash.copyitem(cat::of("a"), objref(), true)); // void changes nothing
    EXPECT_EQ(val<int>(present), 2);
    cErrorLog errors;
    EXPECT_FALSE(hash.copyitem(cat::of("a"), cat::of("text"), false));
    EXPECT_EQ(errors.last_code(), 0x41800000u);
}

TEST_F(Hash, copyitem_stores_under_an_absent_key_and_detaches_on_request) {
    objref const source = cat::of(2);
    hash.mapitem("nil", cat::nil());
    EXPECT_TRUE(hash.copyitem(cat::of("nil"), source, false));
    EXPECT_EQ(hash.getitem("nil"), source);
    EXPECT_TRUE(hash.copyitem(cat::of("new"), source, true));
    EXPECT_NE(hash.getitem("new"), source);
    EXPECT_EQ(ring(hash), "nil=2 new=2 ");
    EXPECT_FALSE(hash.copyitem(cat::of("bad"), cat::bad(), true));
    EXPECT_TRUE(hash.copyitem(cat::of("kill"), objref(), false));
    EXPECT_FALSE(hash.copyitem(cat::of("kill"), objref(), true)); // there is no value to detach
    EXPECT_FALSE(hash.copyitem(cat::of("void"), cat::nil(), true));
}

TEST_F(Hash, erase_returns_the_following_node) {
    fill({"a", "b", "c"});
    EXPECT_EQ(hash.erase(cat::of("b")), hash.find("c"));
    EXPECT_EQ(hash.erase(cat::of("c")), nullptr);
    EXPECT_EQ(hash.erase(cat::of("c")), nullptr);
    EXPECT_EQ(ring(hash), "a=1 ");
}

TEST_F(Hash, insert_stores_any_value_and_moves_the_node) {
    fill({"a", "b"});
    cAttrNode *const b = hash.find("b");
    cAttrNode *const x = hash.insert(cat::of("x"), objref(), b);
    EXPECT_EQ(x, hash.find("x"));
    EXPECT_EQ(x->map(), &hash);
    EXPECT_EQ(ring(hash), "a=1 x=null b=2 ");
    cAttrNode *const y = hash.insert(cat::of("y"), cat::bad(), nullptr);
    EXPECT_EQ(y, hash.last());
    EXPECT_EQ(hash.getitem("y"), cat::bad());
    EXPECT_EQ(hash.getitem("x"), nullptr);
    EXPECT_EQ(hash.insert(cat::of("y"), cat::of(4), hash.first()), y);
    EXPECT_EQ(y, hash.first());
    EXPECT_EQ(hash.insert(cat::of("a"), cat::of(9), nullptr), hash.find("a")); // stays
    EXPECT_EQ(ring(hash), "y=4 a=9 x=null b=2 ");
    EXPECT_EQ(ring_backwards(hash), "b=2 x=null a=9 y=4 ");
    EXPECT_EQ(hash.broken_rule(true), "");
}

TEST_F(Hash, inserting_a_node_before_itself_or_before_its_follower_moves_nothing) {
    fill({"a", "b", "c"});
    hash.insert(cat::of("b"), cat::of(7), hash.find("b"));
    hash.insert(cat::of("b"), cat::of(8), hash.find("c"));
    EXPECT_EQ(ring(hash), "a=1 b=8 c=3 ");
}

TEST_F(Hash, insert_before_a_node_of_another_hash_leaves_it_at_the_tail) {
    fill({"a"});
    cAttrHash other(nullptr);
    other.mapitem("o", cat::nil());
    EXPECT_NE(hash.insert(cat::of("b"), cat::of(2), other.first()), nullptr);
    EXPECT_EQ(ring(hash), "a=1 b=2 ");
    EXPECT_EQ(ring(other), "o=nil ");
}

TEST_F(HashEdge, rename_keeps_the_position) {
    fill({"a", "b", "c"});
    std::uint32_t const anid = hash.find("b")->anid();
    hash.rename(cat::of("b"), cat::of("x"));
    EXPECT_EQ(ring(hash), "a=1 x=2 c=3 ");
    EXPECT_EQ(hash.posofkey("x"), 1);
    EXPECT_GT(hash.find("x")->anid(), anid);
    EXPECT_EQ(hash.find("x")->map(), &hash);
}

TEST_F(HashEdge, rename_to_a_present_key_overwrites_and_moves_it) {
    fill({"a", "b", "c", "d"});
    std::uint32_t const anid = hash.find("d")->anid();
    hash.rename(cat::of("b"), cat::of("d"));
    EXPECT_EQ(ring(hash), "a=1 d=2 c=3 ");
    EXPECT_EQ(hash.find("d")->anid(), anid);
    hash.rename(cat::of("c"), cat::of("a"));
    EXPECT_EQ(ring(hash), "d=2 a=3 ");
    EXPECT_EQ(hash.broken_rule(true), "");
}

TEST_F(Hash, renaming_a_key_to_itself_or_an_absent_key_changes_nothing) {
    fill({"a", "b"});
    cAttrNode *const node = hash.find("a");
    hash.rename(cat::of("a"), cat::of("a"));
    hash.rename(cat::of("x"), cat::of("b"));
    EXPECT_EQ(hash.find("a"), node);
    EXPECT_EQ(ring(hash), "a=1 b=2 ");
}

TEST_F(Hash, renaming_to_the_following_key_replaces_that_entry) {
    fill({"a", "b", "c"});
    hash.rename(cat::of("a"), cat::of("b"));
    EXPECT_EQ(ring(hash), "b=1 c=3 ");
    EXPECT_EQ(ring_backwards(hash), "c=3 b=1 ");
}

TEST_F(Hash, values_are_found_by_lookup) {
    objref const one = cat::of(1), other_one = cat::of(1);
    hash.mapitem("a", cat::of(5));
    hash.mapitem("b", one);
    hash.mapitem("c", other_one);
    EXPECT_EQ(hash.findvalref(other_one), hash.find("c"));
    EXPECT_EQ(hash.findvalref(one.get()), hash.find("b"));
    EXPECT_EQ(hash.findvalref(cat::of(1)), nullptr);
    EXPECT_EQ(hash.findvalue(*cat::of(1)), hash.find("b"));
    EXPECT_EQ(hash.findvalue(cat::of(1.0)), nullptr);
    EXPECT_EQ(hash.findvalue(objref()), nullptr);
}

TEST_F(Hash, the_argument_is_the_left_side_of_findvalue) {
    static std::string asked;
    asked.clear();
    typeref const type = make<cTypeObj>(
        "sided", +[](cTypeObj &t) {
            t.set_tmember("equal", make<cExeMember>(+[](cObj &a, objref &b) {
                              asked += short_text(objref::share(&a)) + ":" + short_text(b) + " ";
                              return static_cast<cObjDR<int> &>(a).val() == val<int>(b);
                          }));
        });
    auto const value = [&](int number) {
        return objref::adopt(new cObjD<int>(number, type.get()));
    };
    auto const named = [&](objref const &ref) { return std::to_string(val<int>(ref)); };
    hash.mapitem("a", value(1));
    hash.mapitem("b", value(2));
    objref const searched = value(2);
    EXPECT_EQ(hash.findvalue(*searched), hash.find("b"));
    EXPECT_EQ(asked, "sided:sided sided:sided ");
    EXPECT_EQ(named(searched), "2");
}

TEST_F(Hash, nodes_are_found_by_position) {
    fill({"a", "b", "c"});
    EXPECT_EQ(hash.findpos(0), hash.find("a"));
    EXPECT_EQ(hash.findpos(2), hash.find("c"));
    EXPECT_EQ(hash.findpos(3), nullptr);
    EXPECT_EQ(hash.findpos(UINT_MAX), nullptr);
    EXPECT_EQ(hash.posofkey("a"), 0);
    EXPECT_EQ(hash.posofkey(cat::of("c")), 2);
    EXPECT_EQ(hash.posofkey("x"), -1);
}

TEST_F(Hash, operations_on_null_hashes_return_defaults) {
    cAttrHash *const none = nullptr;
    EXPECT_TRUE(cAttrHash::empty(none));
    EXPECT_EQ(cAttrHash::findpos(none, 0), nullptr);
    EXPECT_EQ(cAttrHash::posofkey(none, cat::of("a")), -1);
    EXPECT_FALSE(cAttrHash::mapitem(none, cat::of("a"), cat::of(1)));
    EXPECT_FALSE(cAttrHash::setitem(none, cat::of("a"), cat::of(1)));
    cAttrHash::set_vector(none);
    EXPECT_TRUE(cAttrHash::empty(&hash));
    EXPECT_TRUE(cAttrHash::mapitem(&hash, cat::of("a"), cat::of(1)));
    EXPECT_TRUE(cAttrHash::setitem(&hash, cat::of("a"), cat::of(2)));
    EXPECT_EQ(cAttrHash::posofkey(&hash, cat::of("a")), 0);
    EXPECT_EQ(cAttrHash::findpos(&hash, 0), hash.first());
    EXPECT_FALSE(cAttrHash::empty(&hash));
}

TEST_F(Hash, the_father_is_set_once_unless_forced) {
    objref const a = cat::of(1), b = cat::of(2);
    EXPECT_EQ(hash.father(), nullptr);
    hash.father(a, false);
    hash.father(b, false);
    EXPECT_EQ(hash.father(), a.get());
    hash.father(b, true);
    EXPECT_EQ(hash.father(), b.get());
    EXPECT_EQ(b->refs(), 1u);
}

TEST_F(Hash, flags_replace_two_bits_of_every_node) {
    fill({"a", "b"});
    hash.find("a")->cObjBase::flags(0x70);
    hash.flags(0xFFFE);
    EXPECT_EQ(hash.find("a")->flags(), 2);
    EXPECT_EQ(hash.find("b")->flags(), 2);
}

TEST_F(Hash, detach_copies_each_value_and_combines_the_results_by_and) {
    objref const shared = cat::of(1);
    hash.mapitem("a", shared);
    hash.mapitem("b", shared);
    EXPECT_TRUE(hash.detach("a"));
    EXPECT_NE(hash.getitem("a"), shared);
    EXPECT_FALSE(hash.detach("x"));
    EXPECT_FALSE(hash.detach(3));
    EXPECT_TRUE(hash.detach());
    EXPECT_NE(hash.getitem("b"), shared);
    EXPECT_EQ(shared->refs(), 1u);
    objref const last = cat::of(3);
    hash.insert(cat::of("void"), cat::nil(), hash.first());
    hash.mapitem("last", last);
    EXPECT_FALSE(hash.detach());
    EXPECT_NE(hash.getitem("last"), last); // values after the failure are copied too
}

TEST_F(HashEdge, assigning_a_hash_to_itself_empties_it) {
    fill({"a", "b"});
    cAttrHash &same = hash;
    hash = same;
    EXPECT_TRUE(hash.empty());
    EXPECT_EQ(hash.broken_rule(true), "");
}

TEST_F(Hash, assigning_copies_keys_shares_values_and_leaves_map_null) {
    fill({"a", "b"});
    objref const owner = cat::of(0);
    hash.father(owner, false);
    hash.flags(3);
    cAttrHash copy(nullptr);
    copy.mapitem("gone", cat::of(0));
    copy = hash;
    EXPECT_EQ(ring(copy), "a=1 b=2 ");
    EXPECT_EQ(copy.getitem("a"), hash.getitem("a"));
    EXPECT_NE(copy.first()->key(), hash.first()->key());
    EXPECT_EQ(copy.first()->map(), nullptr);
    EXPECT_EQ(copy.first()->flags(), 0);
    EXPECT_EQ(copy.father(), nullptr);
    EXPECT_EQ(&(*copy.first() = objref()), copy.first()); // can't remove itself
    EXPECT_EQ(ring(copy), "a=1 b=2 ");
    EXPECT_TRUE(copy.mapitem("a", cat::of(7)));
    EXPECT_EQ(copy.first()->map(), &copy);
}

TEST_F(Hash, the_copy_constructor_creates_an_empty_table) {
    fill({"a"});
    hashref const copy = hashref::adopt(cAttrHashProbe::copy(hash));
    EXPECT_TRUE(copy->empty());
    EXPECT_EQ(copy->slots(), 97u);
    EXPECT_EQ(copy->father(), nullptr);
}

TEST_F(Hash, clear_keeps_the_size_and_leaves_tombstones) {
    for (int i = 0; i < 200; ++i) hash.mapitem(cat::of(i), cat::nil());
    ASSERT_EQ(hash.slots(), 397u);
    hash.clear();
    EXPECT_TRUE(hash.empty());
    EXPECT_EQ(hash.slots(), 397u);
    std::uint32_t marks = 0;
    for (std::uint32_t i = 0; i < 397; ++i) marks += cAttrHashProbe::word(hash, i) == 1;
    EXPECT_EQ(marks, 200u);
    EXPECT_TRUE(hash.mapitem("a", cat::of(1)));
    EXPECT_EQ(ring(hash), "a=1 ");
}
