// Snapshots of a tree before a change, and of the donor's tree.

#include "edit/csnapshot.h"

#include "qrv/core/cobjd.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qrv::edit::Snapshot;
using qrv::edit::WasEntry;

using test::read;

class Snapshots : public QrvTest {};

TEST_F(Snapshots, a_container_of_both_trees_belongs_to_the_target) {
    objref const root = read("{a= {x= 1; y= 2}}"), donor = read("{b= 0; c= {z= 3}}");
    objref const shared = root->getattrp("a"), own = donor->getattrp("c");
    EXPECT_TRUE(donor->setattrp("b &=", shared, false));
    Snapshot before(root);
    before.add_donor(donor);
    before.add_donor(root); // all its containers belong to the target
    EXPECT_FALSE(before.is_donated(shared.get()));
    EXPECT_FALSE(before.is_donated(root.get()));
    EXPECT_TRUE(before.is_donated(own.get()));
    for (auto const &[container, entries] : before.containers())
        for (WasEntry const &entry : entries) EXPECT_EQ(before.entry(entry.anid), &entry);
}

std::string keys_of(Snapshot const &before, objref const &container) {
    std::string keys;
    for (WasEntry const &entry : *before.entries(container.get()))
        keys += qrv::edit::exact_text(before.key(entry)) + ' ';
    return keys;
}

TEST_F(Snapshots, keys_are_known_after_the_entries_are_removed) {
    objref const root = make<cMapObj>();
    cAttrHash &hash = static_cast<cMapObj &>(*root).datamap();
    for (char const *const text : {"name", "", "two words"}) hash.mapitem(std::string(text), root);
    hash.mapitem(cat::of(-7), cat::of(1));
    hash.mapitem(cat::of(1.5), cat::of(2));
    hash.mapitem(std::string("a\0b", 3), cat::of(3));
    hash.mapitem(std::string(200, 'x'), cat::of(4));
    Snapshot const before(root);
    std::string keys;
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node))
        keys += qrv::edit::exact_text(node->key()) + ' ';
    hash.clear();
    EXPECT_EQ(keys_of(before, root), keys);
}

TEST_F(Snapshots, a_snapshot_creates_no_key_objects) {
    objref const root = make<cMapObj>();
    cAttrHash &hash = static_cast<cMapObj &>(*root).datamap();
    hash.mapitem(std::string("name"), cat::of(1));
    hash.mapitem(cat::of(7), cat::of(2));
    std::uint32_t const count = cObj::ob_count();
    Snapshot const before(root);
    EXPECT_FALSE(hash.first()->has_key_object());
    EXPECT_FALSE(hash.last()->has_key_object());
    EXPECT_EQ(cObj::ob_count(), count);
}

} // namespace
