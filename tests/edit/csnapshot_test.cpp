// A tree as it was before a change, and that of a donor.

#include "edit/csnapshot.h"

#include "tests/support/fixture.h"

#include <gtest/gtest.h>

namespace {

using qrv::edit::Snapshot;
using qrv::edit::WasEntry;

objref read(std::string const &text) {
    objref value;
    EXPECT_EQ(cObj::readobj(text.c_str(), value), 0) << text;
    return value;
}

class Snapshots : public QrvTest {};

TEST_F(Snapshots, a_container_of_both_trees_is_that_of_the_target) {
    objref const root = read("{a= {x= 1; y= 2}}"), donor = read("{b= 0; c= {z= 3}}");
    objref const shared = root->getattrp("a"), own = donor->getattrp("c");
    EXPECT_TRUE(donor->setattrp("b &=", shared, false));
    Snapshot before(root);
    before.add_donor(donor);
    before.add_donor(root); // all of it is known
    EXPECT_FALSE(before.is_donated(shared.get()));
    EXPECT_FALSE(before.is_donated(root.get()));
    EXPECT_TRUE(before.is_donated(own.get()));
    for (auto const &[container, entries] : before.containers())
        for (WasEntry const &entry : entries) EXPECT_EQ(before.entry(entry.anid), &entry);
}

} // namespace
