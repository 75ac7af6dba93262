// Runs commands that can make only n allocations, for many n. Such a command must exit with status
// 2, print one message and nothing else, and leave a file that it writes with its old or its new
// content.
//
// QRV_ALLOCATIONS sets how many values of n are tried for each command; the default is small. Each
// run is in a forked process.

#include "tests/no_memory/allocations.h"
#include "tests/support/fixture.h"
#include "tests/support/memory_file.h"
#include "tests/support/sanitized.h"
#include "tests/tool/tool_run.h"
#include "tools/qrv/commands/command_line.h"
#include "tools/qrv/output/exit_code.h"
#include "tools/qrv/output/no_memory.h"

#include <cstdlib>
#include <cstring>

namespace {

using no_memory::allocations_left;
using no_memory::unlimited;
using tool_test::cRun;

class NoMemory : public tool_test::Tool {
  protected:
    static void SetUpTestSuite() { ASSERT_TRUE(test::listening()); }
    NoMemory() {
        write("f", "// Pixels\n{Pixel= attlist(x= attspec(type= int; flag= #REQUIRED));\n"
                   " a= Pixel(x= 1); // first\n b= [1, 2, #cRef(/a)]; c= {d= text}}\n");
        write("g", "{b= [3]; new= \"a string that is not short\"; c= {e= 0x10}}\n");
        write("broken", "{Pixel= attlist(x= attspec(type= int)); a= Pixel(y= 1); b= ; c= [1}\n");
        write("j", R"({"a": [1, 2.5, null, "a string that is not short"], "b": {"c": true}})");
    }

    // Runs the command in a forked process that can make this number of allocations. Sets the
    // number to those that were left.
    cRun run_with(long &allocations, std::vector<char const *> arguments) const {
        test::cMemory const out(""), err(""), left("");
        arguments.insert(arguments.begin(), "qrv");
        pid_t const copy = ::fork();
        if (copy == 0) {
            if (::chdir(folder_.c_str()) != 0 || ::dup2(out.descriptor(), STDOUT_FILENO) < 0 ||
                ::dup2(err.descriptor(), STDERR_FILENO) < 0)
                ::_exit(127);
            end_when_memory_ends();
            allocations_left = allocations;
            int const status =
                run_command_line(static_cast<int>(arguments.size()), arguments.data());
            long const rest = std::exchange(allocations_left, unlimited);
            if (::write(left.descriptor(), &rest, sizeof rest) != sizeof rest) ::_exit(126);
            ::_exit(status);
        }
        int status = 0;
        ::waitpid(copy, &status, 0);
        std::string const rest = left.bytes();
        allocations = 0;
        if (rest.size() == sizeof allocations) std::memcpy(&allocations, rest.data(), rest.size());
        return {WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status), out.bytes(),
                err.bytes()};
    }

    static long runs_per_command() {
        char const *const given = std::getenv("QRV_ALLOCATIONS");
        return given ? std::atol(given) : test::sanitized ? 5 : 25;
    }

    // Runs the command with fewer and fewer allocations. `files` are those that the message may
    // name, `written` is the file that the command replaces.
    void sweep(std::vector<char const *> const &arguments, std::vector<std::string> const &files,
               char const *written = nullptr) const {
        std::string const old = written ? read(written) : "";
        long left = unlimited;
        cRun const whole = run_with(left, arguments);
        EXPECT_LE(whole.status, exit_found) << whole.err;
        long const all = unlimited - left;
        EXPECT_GT(all, 100);
        std::string const changed = written ? read(written) : "";
        EXPECT_TRUE(!written || changed != old);
        long const runs = runs_per_command();
        bool some_named = files.empty();
        for (long n = all - 1; n >= 0; n -= 1 + all / runs) {
            if (written) write(written, old);
            left = n;
            cRun const run = run_with(left, arguments);
            ASSERT_EQ(run.status, exit_failed) << n << run.err;
            ASSERT_EQ(run.out, "") << n;
            bool named = false;
            for (std::string const &file : files)
                named = named || run.err == file + ": error: out of memory\n";
            ASSERT_TRUE(named || run.err == "qrv: error: out of memory\n") << n << run.err;
            some_named = some_named || named;
            std::string const now = written ? read(written) : "";
            ASSERT_TRUE(!written || now == old || now == changed) << n << now;
        }
        EXPECT_TRUE(some_named);
    }
};

TEST_F(NoMemory, running_out_ends_reading) {
    sweep({"check", "f"}, {"f"});
    sweep({"check", "broken"}, {"broken"});
    sweep({"get", "f", "c/d"}, {"f"});
    sweep({"find", "f", "text"}, {"f"});
    sweep({"where", "f", "c/d"}, {"f"});
    sweep({"at", "f", "3:2"}, {"f"});
    sweep({"explain", "f", "a"}, {"f"});
    sweep({"tokens", "f"}, {"f"});
    sweep({"types", "f"}, {"f"});
}

TEST_F(NoMemory, running_out_ends_the_worker_process_of_the_type_list) { sweep({"types"}, {}); }

TEST_F(NoMemory, running_out_ends_the_worker_process_of_modules) {
    std::string const module = test::binary_file("bin/modules/colour");
    sweep({"--module", module.c_str(), "check", "f"}, {"f"});
    sweep({"--module", module.c_str(), "fmt", "-i", "f"}, {"f"}, "f");
}

TEST_F(NoMemory, running_out_ends_writing) {
    sweep({"fmt", "f"}, {"f"});
    sweep({"fmt", "--canonical", "f"}, {"f"});
    sweep({"fmt", "--diff", "f"}, {"f"});
    sweep({"set", "f", "c/d = word"}, {"f"});
    sweep({"merge", "f", "g"}, {"f", "g"});
    sweep({"to-json", "g"}, {"g"});
    sweep({"from-json", "j"}, {"j"});
}

TEST_F(NoMemory, running_out_leaves_the_old_or_the_new_file) {
    sweep({"fmt", "-i", "f"}, {"f"}, "f");
    write("f", "// one\n{a= 1; // two\n b= [1, 2]}\n");
    sweep({"set", "-i", "f", "b/0 = 7; c = word"}, {"f"}, "f");
    sweep({"set", "-i", "--reformat", "--force", "f", "b/0 = 8"}, {"f"}, "f");
    sweep({"del", "-i", "f", "a"}, {"f"}, "f");
    sweep({"merge", "-i", "--force", "f", "g"}, {"f", "g"}, "f");
    sweep({"from-json", "-o", "f", "j"}, {"f", "j"}, "f");
}

} // namespace
