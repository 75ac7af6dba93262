// The fixture records the state in its constructor, before a derived fixture creates anything, and
// compares in its destructor, after the derived members are destroyed.
#include "tests/support/fixture.h"

#include "containers/cregistry_check.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/diagnostics/ctrace.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"
#include "text/state/ctext_state.h"

#include <algorithm>

QrvTest::QrvTest()
    : handler_(test::listening() ? cat::errhandler() : cErrHandler()),
      write_indent_(cat::write_indent), write_indent0_(cat::write_indent0),
      max_read_depth_(cat::max_read_depth), globals_(entries_of(cat::gmmap())),
      constants_(entries_of(cat::constmap())), census_(cObjBase::ob_count()) {}

QrvTest::~QrvTest() {
    check_idle();
    put_back();
    globals_.clear(); // they hold the former keys of the restored entries
    constants_.clear();
    std::uint32_t const now = cObjBase::ob_count();
    EXPECT_EQ(now, census_) << "the test has changed the number of counted objects";
}

QrvTest::cEntries QrvTest::entries_of(cMapObj &map) {
    cEntries entries;
    cAttrHash const &hash = map.datamap();
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node))
        entries.emplace_back(node->key(), node->valref());
    return entries;
}

// Changes only the entries that differ, so that order and keys are preserved.
void QrvTest::put_back(cMapObj &map, cEntries const &before) {
    cAttrHash &hash = map.datamap();
    for (auto const &[key, value] : entries_of(map)) {
        auto const same_key = [&key = key](auto const &entry) { return entry.first == key; };
        if (std::none_of(before.begin(), before.end(), same_key)) hash.delitem(key);
    }
    for (auto const &[key, value] : before) {
        cAttrNode *const node = hash.find(key);
        if (!node)
            hash.insert(key, value, nullptr); // also allows bad and badfind
        else if (node->valref() != value)
            node->valref_() = value;
    }
}

void QrvTest::check_idle() {
    cTextState const &state = text_state();
    EXPECT_TRUE(state.idle()) << "reader or writer at depth " << state.depth() << ", path '"
                              << state.path() << "'";
    reset_text_state();
    EXPECT_EQ(cat::broken_registry_rule(), "");
    EXPECT_TRUE(static_cast<cObjD<bool> &>(*cat::btrue()).val()) << "the test changed the constant";
    EXPECT_FALSE(static_cast<cObjD<bool> &>(*cat::bfalse()).val())
        << "the test changed the constant";
}

void QrvTest::put_back() {
    cat::errhandler() = handler_;
    cSetTracing("");
    cat::write_indent = write_indent_;
    cat::write_indent0 = write_indent0_;
    cat::max_read_depth = max_read_depth_;
    put_back(cat::gmmap(), globals_);
    put_back(cat::constmap(), constants_);
    eros().clear();
}
