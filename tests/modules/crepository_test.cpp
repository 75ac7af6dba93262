// The repository of named things: entries, lists, iteration and messages.

#include "qrv/modules/crepository.h"

#include "tests/support/fixture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct Thing {};
struct Derived : Thing {};
struct Other {};

class Repository : public QrvTest {
  protected:
    // Every test leaves its list empty.
    ~Repository() override {
        *list = cRepositoryList();
        EXPECT_EQ(list->broken_rule(true), "");
    }

    cRepositoryEntry *add(std::string const &name, void *ptr = nullptr) {
        return cRepoImpl::create(list, name, ptr, typeid(Thing), typeid(Derived),
                                 "comment " + name);
    }

    static std::string names(cRepositoryList *of) {
        std::string text;
        for (auto *e = cRepoImpl::begin(of); e != cRepoImpl::end(of); e = cRepoImpl::next(e))
            text += cRepoImpl::name(e) + ";";
        return text;
    }

    cRepositoryList *const list = cRepoImpl::get(typeid(Thing));
};
class RepositoryEdge : public Repository {};

// A list never shrinks, so each test of sizes needs a list that no other test uses.
template <class T> class FreshList {
  public:
    FreshList() { EXPECT_EQ(list->size(), 97u); }
    FreshList(FreshList const &) = delete;
    FreshList &operator=(FreshList const &) = delete;
    ~FreshList() { EXPECT_EQ(list->broken_rule(true), ""); }

    void add(int n) const {
        cRepoImpl::create(list, std::to_string(n), nullptr, typeid(T), typeid(T), "");
    }
    cRepositoryEntry *find(int n) const { return cRepoImpl::find(list, std::to_string(n)); }

    cRepositoryList *const list = cRepoImpl::get(typeid(T));
};

TEST_F(Repository, has_one_list_for_each_type) {
    EXPECT_EQ(cRepoImpl::get(typeid(Thing)), list);
    EXPECT_NE(cRepoImpl::get(typeid(Other)), list);
    EXPECT_EQ(cRepoImpl::get(typeid(Other)), cRepoImpl::get(typeid(Other)));
}

TEST_F(Repository, a_new_list_is_empty_and_has_97_cells) {
    cRepositoryList const fresh;
    EXPECT_EQ(fresh.count(), 0u);
    EXPECT_EQ(fresh.size(), 97u);
    EXPECT_EQ(fresh.broken_rule(true), "");
    EXPECT_EQ(cRepoImpl::begin(list), cRepoImpl::end(list));
}

TEST_F(Repository, an_entry_returns_its_name_type_and_pointer) {
    Derived thing;
    cRepositoryEntry *const entry = add("a", &thing);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(cRepoImpl::name(entry), "a");
    EXPECT_EQ(cRepoImpl::comment(entry), "comment a");
    EXPECT_EQ(cRepoImpl::ptr(entry), &thing);
    EXPECT_TRUE(cRepoImpl::type(entry) == typeid(Thing));
    EXPECT_TRUE(cRepoImpl::derivedtype(entry) == typeid(Derived));
    EXPECT_EQ(cRepoImpl::find(list, "a"), entry);
    EXPECT_EQ(list->count(), 1u);
}

TEST_F(Repository, the_pointer_of_an_entry_can_be_changed) {
    int first = 0, second = 0;
    cRepositoryEntry *const entry = add("a", &first);
    cRepoImpl::ptr(entry) = &second;
    EXPECT_EQ(cRepoImpl::ptr(cRepoImpl::find(list, "a")), &second);
}

TEST_F(Repository, lists_keep_insertion_order_in_both_directions) {
    for (char const *name : {"c", "a", "b"}) add(name);
    EXPECT_EQ(names(list), "c;a;b;");
    std::string backwards;
    for (auto *e = cRepoImpl::prev(cRepoImpl::end(list)); e != cRepoImpl::end(list);
         e = cRepoImpl::prev(e))
        backwards += cRepoImpl::name(e) + ";";
    EXPECT_EQ(backwards, "b;a;c;");
    EXPECT_EQ(cRepoImpl::next(cRepoImpl::end(list)), cRepoImpl::begin(list));
    cRepoImpl::release(cRepoImpl::find(list, "a"));
    add("a");
    EXPECT_EQ(names(list), "c;b;a;");
}

TEST_F(Repository, null_lists_and_entries_are_accepted) {
    EXPECT_EQ(cRepoImpl::create(nullptr, "a", nullptr, typeid(Thing), typeid(Thing), ""), nullptr);
    EXPECT_EQ(cRepoImpl::find(nullptr, "a"), nullptr);
    EXPECT_EQ(cRepoImpl::begin(nullptr), nullptr);
    EXPECT_EQ(cRepoImpl::end(nullptr), nullptr);
    EXPECT_EQ(cRepoImpl::next(nullptr), nullptr);
    EXPECT_EQ(cRepoImpl::prev(nullptr), nullptr);
    EXPECT_EQ(cRepoImpl::comment(nullptr), "unknown");
    EXPECT_EQ(&cRepoImpl::comment(nullptr), &cRepoImpl::name(nullptr));
    EXPECT_TRUE(cRepoImpl::type(nullptr) == typeid(void));
    EXPECT_TRUE(cRepoImpl::derivedtype(nullptr) == typeid(void));
    messages();
    cRepoImpl::release(nullptr);
    EXPECT_EQ(messages(), "");
}

TEST_F(Repository, the_empty_name_is_valid) {
    cRepositoryEntry *const entry = add("");
    EXPECT_EQ(cRepoImpl::find(list, ""), entry);
    EXPECT_EQ(cRepoImpl::find(list, ":x"), entry);
}

TEST_F(Repository, a_name_may_contain_any_bytes) {
    std::string const odd("a\0\n\xe4", 4);
    cRepositoryEntry *const entry = add(odd);
    EXPECT_EQ(cRepoImpl::find(list, odd), entry);
    EXPECT_EQ(cRepoImpl::find(list, "a"), nullptr);
    EXPECT_EQ(cRepoImpl::name(entry).size(), 4u);
}

TEST_F(Repository, find_ignores_a_name_from_its_first_colon_on) {
    cRepositoryEntry *const entry = add("a");
    EXPECT_EQ(cRepoImpl::find(list, "a:b"), entry);
    EXPECT_EQ(cRepoImpl::find(list, "a:"), entry);
    EXPECT_EQ(cRepoImpl::find(list, "a:b:c"), entry);
    EXPECT_EQ(cRepoImpl::find(list, "b:a"), nullptr);
    EXPECT_EQ(cRepoImpl::find(list, "b:"), nullptr);
}

TEST_F(Repository, names_with_equal_hashes_are_distinguished) {
    std::vector<std::string> const colliding = {"ABAB", "ABBc", "BcAB", "BcBc"};
    std::vector<cRepositoryEntry *> entries;
    for (auto const &name : colliding) {
        unsigned hash = 0;
        for (char const c : name) hash = (hash * 31) ^ static_cast<unsigned char>(c);
        EXPECT_EQ(hash, 1874876u) << name;
        entries.push_back(add(name));
    }
    for (std::size_t i = 0; i < colliding.size(); ++i)
        EXPECT_EQ(cRepoImpl::find(list, colliding[i]), entries[i]) << colliding[i];
    EXPECT_EQ(cRepoImpl::find(list, "ABABAB"), nullptr);
}

TEST_F(Repository, one_name_may_be_in_lists_of_several_types) {
    cRepositoryList *const others = cRepoImpl::get(typeid(Other));
    cRepositoryEntry *const entry = add("a");
    cRepositoryEntry *const other =
        cRepoImpl::create(others, "a", nullptr, typeid(Other), typeid(Other), "");
    ASSERT_NE(other, nullptr);
    EXPECT_EQ(cRepoImpl::find(list, "a"), entry);
    EXPECT_EQ(cRepoImpl::find(others, "a"), other);
    cRepoImpl::release(entry);
    EXPECT_EQ(cRepoImpl::find(others, "a"), other);
    cRepoImpl::release(other);
}

TEST_F(Repository, release_of_an_entry_entered_for_another_type_is_refused) {
    cRepositoryEntry *const stray =
        cRepoImpl::create(list, "stray", nullptr, typeid(Other), typeid(Other), "");
    messages();
    cRepoImpl::release(stray);
    EXPECT_EQ(messages(), "error:inconsistent repository\n");
    EXPECT_EQ(cRepoImpl::find(list, "stray"), stray);
    // the list of that type now has another entry with the name
    cRepositoryList *const others = cRepoImpl::get(typeid(Other));
    cRepositoryEntry *const same_name =
        cRepoImpl::create(others, "stray", nullptr, typeid(Other), typeid(Other), "");
    cRepoImpl::release(stray);
    EXPECT_EQ(messages(), "error:inconsistent repository\n");
    cRepoImpl::release(same_name);
    EXPECT_EQ(messages(), "");
}

TEST_F(Repository, the_end_marker_cannot_be_released) {
    messages();
    cRepoImpl::release(cRepoImpl::end(list));
    EXPECT_EQ(messages(), "error:inconsistent repository\n");
    EXPECT_EQ(list->broken_rule(true), "");
}

TEST_F(Repository, a_copied_list_has_its_own_entries) {
    int thing = 0;
    add("b", &thing);
    add("a");
    cRepositoryList copy(*list);
    EXPECT_EQ(names(&copy), "b;a;");
    EXPECT_EQ(copy.broken_rule(true), "");
    cRepositoryEntry *const entry = cRepoImpl::find(&copy, "b");
    EXPECT_NE(entry, cRepoImpl::find(list, "b"));
    EXPECT_EQ(cRepoImpl::ptr(entry), &thing);
    EXPECT_EQ(cRepoImpl::comment(entry), "comment b");
    EXPECT_TRUE(cRepoImpl::type(entry) == typeid(Thing));
    EXPECT_TRUE(cRepoImpl::derivedtype(entry) == typeid(Derived));
    messages();
    cRepoImpl::release(entry); // the list of its type has another entry with the name
    EXPECT_EQ(messages(), "error:inconsistent repository\n");
    EXPECT_EQ(copy.count(), 2u);
    add("c");
    EXPECT_EQ(names(&copy), "b;a;");
    copy = *list;
    cRepositoryList const &same = copy;
    copy = same;
    EXPECT_EQ(names(&copy), "b;a;c;");
    EXPECT_EQ(copy.broken_rule(true), "");
}

TEST_F(Repository, a_copied_set_has_its_own_lists) {
    add("a");
    cRepositories const copy(cGetRepositories());
    EXPECT_EQ(copy.count(), cGetRepositories().count());
    cRepositories other;
    EXPECT_EQ(other.count(), 0u);
    other = copy;
    EXPECT_EQ(other.count(), copy.count());
    cRepoImpl::release(cRepoImpl::find(list, "a"));
    EXPECT_EQ(other.count(), cGetRepositories().count());
}

TEST_F(Repository, the_process_has_one_set_that_grows_with_new_types) {
    EXPECT_EQ(&cGetRepositories(), &cGetRepositories());
    struct Fresh {};
    auto const before = cGetRepositories().count();
    cRepoImpl::get(typeid(Fresh));
    EXPECT_EQ(cGetRepositories().count(), before + 1);
    cRepoImpl::get(typeid(Fresh));
    EXPECT_EQ(cGetRepositories().count(), before + 1);
}

TEST_F(Repository, entry_77_keeps_97_cells_and_entry_78_grows_to_197) {
    struct Own {};
    FreshList<Own> const fresh;
    for (int i = 0; i < 77; ++i) fresh.add(i);
    EXPECT_EQ(fresh.list->size(), 97u);
    fresh.add(77);
    EXPECT_EQ(fresh.list->size(), 197u);
    for (int i = 0; i < 78; ++i) EXPECT_EQ(cRepoImpl::name(fresh.find(i)), std::to_string(i));
}

TEST_F(Repository, adding_and_releasing_names_does_not_grow_a_list) {
    auto const size = list->size();
    for (int i = 0; i < 100000; ++i) {
        cRepositoryEntry *const entry = add(std::to_string(i));
        ASSERT_EQ(cRepoImpl::find(list, "absent"), nullptr);
        cRepoImpl::release(entry);
    }
    EXPECT_EQ(list->size(), size);
    EXPECT_EQ(list->count(), 0u);
}

TEST_F(Repository, ten_thousand_entries_are_all_found) {
    for (int i = 0; i < 10000; ++i) add("name" + std::to_string(i));
    for (int i = 0; i < 10000; i += 3)
        cRepoImpl::release(cRepoImpl::find(list, "name" + std::to_string(i)));
    for (int i = 0; i < 10000; ++i)
        ASSERT_EQ(cRepoImpl::find(list, "name" + std::to_string(i)) == nullptr, i % 3 == 0) << i;
    EXPECT_EQ(list->broken_rule(true), "");
}

TEST_F(Repository, lists_and_entries_are_copied_only_as_declared) {
    static_assert(!std::is_copy_constructible_v<cRepositoryEntry>);
    static_assert(!std::is_copy_assignable_v<cRepositoryEntry>);
    static_assert(!std::is_destructible_v<cRepositoryEntry>); // only release destroys entries
    static_assert(std::is_copy_constructible_v<cRepositoryList>);
    static_assert(std::is_copy_assignable_v<cRepositories>);
    static_assert(!std::is_default_constructible_v<cRepoImpl>);
}

TEST_F(RepositoryEdge, creating_a_name_twice_returns_null_and_prints_one_line) {
    int thing = 0;
    cRepositoryEntry *const first = add("a", &thing);
    messages();
    EXPECT_EQ(cRepoImpl::create(list, "a", nullptr, typeid(Other), typeid(Other), "new"), nullptr);
    EXPECT_EQ(messages(), "error: repository entry already defined:a:type '" +
                              std::string(typeid(Other).name()) +
                              "':comment 'new' old 'comment a'\n");
    EXPECT_EQ(cRepoImpl::find(list, "a"), first);
    EXPECT_EQ(cRepoImpl::ptr(first), &thing);
    EXPECT_EQ(cRepoImpl::comment(first), "comment a");
    EXPECT_TRUE(cRepoImpl::type(first) == typeid(Thing));
    EXPECT_EQ(list->count(), 1u);
}

TEST_F(RepositoryEdge, a_name_with_a_colon_is_stored_completely_but_not_found) {
    cRepositoryEntry *const entry = add("a:b");
    EXPECT_EQ(cRepoImpl::name(entry), "a:b");
    EXPECT_EQ(cRepoImpl::find(list, "a:b"), nullptr);
    EXPECT_EQ(names(list), "a:b;");
}

TEST_F(RepositoryEdge, find_of_a_plain_name_loads_nothing) {
    auto const lists = cGetRepositories().count();
    messages();
    EXPECT_EQ(cRepoImpl::find(list, "a"), nullptr);
    EXPECT_EQ(cGetRepositories().count(), lists);
    EXPECT_EQ(messages(), "");
}

TEST_F(RepositoryEdge, find_does_not_truncate_a_key_of_300_characters) {
    std::string const key(300, 'k');
    cRepositoryEntry *const entry = add(key);
    EXPECT_EQ(cRepoImpl::find(list, key), entry);
    EXPECT_EQ(cRepoImpl::find(list, key + ":module"), entry);
    EXPECT_EQ(cRepoImpl::find(list, key.substr(0, 255)), nullptr);
}

TEST_F(RepositoryEdge, release_of_an_entry_whose_key_belongs_to_another_is_refused) {
    cRepositoryEntry *const released = add("a");
    cRepositoryList const copy(*list);
    cRepoImpl::release(released);
    cRepositoryEntry *const fresh = add("a");
    cRepositoryEntry *const old = cRepoImpl::begin(const_cast<cRepositoryList *>(&copy));
    messages();
    cRepoImpl::release(old);
    EXPECT_EQ(messages(), "error:inconsistent repository\n");
    EXPECT_EQ(copy.count(), 1u);
    EXPECT_EQ(cRepoImpl::find(list, "a"), fresh);
}

TEST_F(RepositoryEdge, a_null_entry_is_named_unknown_and_always_has_a_null_pointer) {
    EXPECT_EQ(cRepoImpl::name(nullptr), "unknown");
    int thing = 0;
    void *&slot = cRepoImpl::ptr(nullptr);
    EXPECT_EQ(slot, nullptr);
    slot = &thing;
    EXPECT_EQ(cRepoImpl::ptr(nullptr), nullptr);
}

TEST_F(RepositoryEdge, a_table_grows_above_80_percent_and_finds_every_key_past_tombstones) {
    struct Own {};
    FreshList<Own> const fresh;
    for (int i = 0; i < 77; ++i) fresh.add(i);
    for (int i = 0; i < 77; i += 2) cRepoImpl::release(fresh.find(i));
    EXPECT_EQ(fresh.list->size(), 97u);
    for (int i = 0; i < 77; ++i) EXPECT_EQ(fresh.find(i) != nullptr, i % 2 == 1) << i;
    for (int i = 100; i < 140; ++i)
        fresh.add(i); // 38 entries are left; one of these becomes the 78th
    EXPECT_EQ(fresh.list->size(), 197u);
    EXPECT_EQ(fresh.list->count(), 78u);
    for (int i = 0; i < 77; ++i) EXPECT_EQ(fresh.find(i) != nullptr, i % 2 == 1) << i;
    for (int i = 100; i < 140; ++i) EXPECT_NE(fresh.find(i), nullptr) << i;
}

} // namespace
