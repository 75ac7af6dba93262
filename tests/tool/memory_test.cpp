// The tool with little memory, from none to enough: it ends with one message about the file, or
// without a message.

#include "tests/support/sanitized.h"
#include "tests/tool/tool_run.h"

#include <filesystem>
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

// Added to the memory that the program needs for any file.
TEST_F(ToolMemory, json_needs_less_than_twenty_times_the_size_of_the_file) {
    if (test::sanitized) return;
    write("small", "[1]");
    rlim_t least = 20000;
    while (run_in(least, {"from-json", "small"}).status != 0) least += 2000;
    for (std::string const &text :
         {"[" + times("1,", 100000) + "2]", "[" + times("{\"a\":1},", 25000) + "{}]",
          "[" + times("[],", 60000) + "[]]",
          times("{\"a\":", 20) + "[" + times("{\"a\":1},", 25000) + "{}]" + times("}", 20)}) {
        write("f.json", text);
        rlim_t const limit = least + 20 * text.size() / 1024;
        EXPECT_EQ(run_in(limit, {"from-json", "f.json", "-o", "f"}), (cRun{0, "", ""}));
    }
}

TEST_F(ToolMemory, the_tokens_of_a_long_string_need_less_than_three_times_its_size) {
    if (test::sanitized) return;
    write("small", "a");
    rlim_t least = 20000;
    while (run_in(least, {"tokens", "small"}).status != 0) least += 2000;
    write("f", "\"" + times("0123456789", 1000000) + "\"");
    EXPECT_EQ(run_in(least + 3 * 10000, {"tokens", "f"}).status, 0);
}

TEST_F(ToolMemory, none_is_reserved_for_a_file_that_is_too_large) {
    if (test::sanitized) return;
    write("f", "");
    std::filesystem::resize_file(path("f"), 5'000'000'000);
    for (std::string const command : {"fmt", "to-json", "from-json"})
        EXPECT_EQ(run_in(1'000'000, {command, "f"}),
                  (cRun{2, "",
                        "f: error: cannot read: the file is too large; the largest that can "
                        "be read has 4294967294 bytes\n"}));
}

TEST_F(ToolMemory, too_little_memory_causes_one_message) {
    if (test::sanitized) return; // which needs the whole address space
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
