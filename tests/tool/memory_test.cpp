// The tool in little memory, from none to enough: it ends with one message about the file, or
// without one.

#include "tests/support/sanitized.h"
#include "tests/tool/tool_run.h"

#include <sys/resource.h>

using tool_test::cRun;
using tool_test::times;

namespace {

class ToolMemory : public tool_test::Tool {
  protected:
    static constexpr int cannot_be_loaded = 127;

    cRun run_in(rlim_t kilobytes, std::vector<std::string> arguments) const {
        return run(std::move(arguments), {.prepare = [kilobytes] {
                       rlimit const limit{kilobytes * 1024, kilobytes * 1024};
                       if (::setrlimit(RLIMIT_AS, &limit) != 0) ::_exit(126);
                   }});
    }
};

TEST_F(ToolMemory, is_too_little_with_one_message) {
    if (test::sanitized) return; // which takes all addresses
    std::string const text =
        "{a= [" + times("{key= \"a string\"; value= 1.5; list= [1, 2]}, ", 2000) + "]}\n";
    write("f", text);
    std::vector<int> seen;
    cRun last;
    for (rlim_t limit = 8000; limit < 1000000; limit += limit / 6) {
        last = run_in(limit, {"set", "-i", "f", "a/0/key = other"});
        if (seen.empty() || seen.back() != last.status) seen.push_back(last.status);
        if (last.status == 0) break;
        EXPECT_EQ(read("f"), text) << limit;
        if (last.status == cannot_be_loaded) continue;
        EXPECT_EQ(last.out, "") << limit;
        EXPECT_TRUE(last.err == "qrv: error: out of memory\n" ||
                    last.err == "f: error: out of memory\n")
            << limit << last.err;
    }
    EXPECT_EQ(last, (cRun{0, "", ""}));
    EXPECT_EQ(seen, (std::vector{cannot_be_loaded, 2, 0}));
    EXPECT_NE(read("f"), text);
}

} // namespace
