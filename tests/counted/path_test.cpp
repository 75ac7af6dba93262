// Counts the characters of the keys that entering a value at its path looks up. The linker replaces
// cPathTrie::descend in all other sources by the function below (--wrap).
#include "tests/counted/counted.h"
#include "tests/support/fixture.h"

#include "qrv/core/cobjd.h"
#include "text/state/ctext_state.h"

#include <memory>
#include <string_view>
#include <vector>

#ifdef QRV_CHECKS // optimised code inlines this function

namespace {

std::size_t characters = 0;

} // namespace

// cPathTrie::descend(node_id, std::string_view), a member: the first argument is the object
extern "C" {
cPathTrie::node_id __real__ZN9cPathTrie7descendEjSt17basic_string_viewIcSt11char_traitsIcEE(
    cPathTrie *trie, cPathTrie::node_id from, std::string_view key);
cPathTrie::node_id __wrap__ZN9cPathTrie7descendEjSt17basic_string_viewIcSt11char_traitsIcEE(
    cPathTrie *trie, cPathTrie::node_id from, std::string_view key) {
    characters += key.size();
    return __real__ZN9cPathTrie7descendEjSt17basic_string_viewIcSt11char_traitsIcEE(trie, from,
                                                                                    key);
}
}

class CountedPath : public QrvTest {};

TEST_F(CountedPath, entering_a_value_below_a_long_path_costs_only_its_last_key) {
    cWriteLevel const level;
    std::vector<std::unique_ptr<cPathStep>> steps;
    for (int i = 0; i < 200; ++i) steps.push_back(std::make_unique<cPathStep>(cat::of("key")));
    objref const value = cat::of(1);
    std::size_t const before = characters;
    for (int i = 1000; i < 2000; ++i) {
        cPathStep const step(cat::of(i));
        text_state().enter_value(value);
    }
    EXPECT_EQ(characters - before, 200u * 3 + 1000u * 4);
    while (!steps.empty()) steps.pop_back();
}

#endif
