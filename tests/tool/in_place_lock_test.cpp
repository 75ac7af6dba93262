// Commands that write a file in place: the lock of the folder, backups, attributes, and leftovers
// of killed runs.

#include "tests/support/refused_calls.h"
#include "tests/support/sanitized.h"
#include "tests/tool/tool_run.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <thread>

using tool_test::cProcess;
using tool_test::cRun;

namespace {

cRun const silent{0, "", ""};
cRun const locked{2, "", "f: error: not written: another process holds the lock of its folder\n"};

class ToolInPlaceLock : public tool_test::Tool {
  protected:
    // The lock of a folder, held as by another program.
    class cHeld {
      public:
        explicit cHeld(std::string const &folder)
            : descriptor_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
            EXPECT_EQ(::flock(descriptor_, LOCK_EX | LOCK_NB), 0);
        }
        cHeld(cHeld const &) = delete;
        cHeld &operator=(cHeld const &) = delete;
        ~cHeld() { ::close(descriptor_); }

      private:
        int descriptor_;
    };

    // Two processes add 1 repeatedly; returns how often they reported success.
    int count_up(int rounds, std::vector<std::string> const &arguments,
                 std::vector<int> const &statuses) const {
        std::atomic<int> done = 0;
        auto const count = [&] {
            for (int i = 0; i < rounds; ++i) {
                int const status = run(arguments).status;
                EXPECT_NE(std::find(statuses.begin(), statuses.end(), status), statuses.end())
                    << status;
                done += status == 0;
            }
        };
        std::thread other(count);
        count();
        other.join();
        return done;
    }
};

int const rounds = test::sanitized ? 40 : 200;

TEST_F(ToolInPlaceLock, two_processes_lose_no_update) {
    write("f", "{n=0}");
    EXPECT_EQ(count_up(rounds, {"set", "-i", "f", "n += 1"}, {0}), 2 * rounds);
    EXPECT_EQ(read("f"), "{n=" + std::to_string(2 * rounds) + "}");
}

TEST_F(ToolInPlaceLock, two_processes_that_do_not_wait_report_each_lost_update) {
    write("f", "{n=0}");
    int const done = count_up(rounds / 4, {"set", "-i", "--no-wait", "f", "n += 1"}, {0, 2});
    EXPECT_GT(done, 0);
    EXPECT_EQ(read("f"), "{n=" + std::to_string(done) + "}");
}

TEST_F(ToolInPlaceLock, output_to_the_input_file_loses_no_update_either) {
    write("f", "{n=0}");
    int const few = rounds / 4;
    EXPECT_EQ(count_up(few, {"set", "-o", "./f", "f", "n += 1"}, {0}), 2 * few);
    EXPECT_EQ(read("f"), "{n=" + std::to_string(2 * few) + "}");
}

TEST_F(ToolInPlaceLock, a_command_waits_for_the_lock) {
    write("f", "{n=0}");
    std::optional<cHeld> held(std::in_place, folder_);
    cProcess tool(folder_, {"set", "-i", "f", "n += 1"}, {});
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(::waitpid(tool.pid(), nullptr, WNOHANG), 0) << "the command still waits";
    EXPECT_EQ(read("f"), "{n=0}");
    write("f", "{n=5}"); // the waiting command has not read the file yet
    held.reset();
    EXPECT_EQ(tool.wait(), silent);
    EXPECT_EQ(read("f"), "{n=6}");
}

TEST_F(ToolInPlaceLock, each_command_that_writes_a_file_needs_the_lock) {
    write("f", "{n=0}");
    write("json", "[1]");
    write("more", "{m=1}");
    std::vector<std::vector<std::string>> const commands{
        {"fmt", "-i", "--no-wait", "f"},
        {"set", "-i", "--no-wait", "f", "n = 1"},
        {"set", "-o", "f", "--no-wait", "json", "0 = 1"},
        {"merge", "-i", "--no-wait", "f", "more"},
        {"from-json", "--no-wait", "json", "-o", "f"},
        {"to-json", "--no-wait", "f", "-o", "f"}};
    std::optional<cHeld> held(std::in_place, folder_);
    for (auto const &command : commands) {
        EXPECT_EQ(run(command), locked) << command.front();
        EXPECT_EQ(read("f"), "{n=0}");
    }
    EXPECT_EQ(run({"get", "f", "n"}), (cRun{0, "0\n", ""}));
    EXPECT_EQ(run({"set", "f", "n = 1"}), (cRun{0, "{n=1}", ""}));
    held.reset();
    for (auto const &command : commands) {
        write("f", "{n=0}");
        EXPECT_EQ(run(command), silent) << command.front();
        EXPECT_NE(read("f"), "{n=0}");
    }
}

TEST_F(ToolInPlaceLock, a_link_locks_the_folder_of_its_target) {
    std::filesystem::create_directory(path("sub"));
    write("sub/g", "[1]");
    std::filesystem::create_symlink("sub/g", path("f"));
    {
        cHeld const held(folder_);
        EXPECT_EQ(run({"fmt", "-i", "--no-wait", "f"}), silent);
    }
    write("sub/g", "[1]");
    cHeld const held(path("sub"));
    EXPECT_EQ(run({"fmt", "-i", "--no-wait", "f"}), locked);
}

TEST_F(ToolInPlaceLock, files_in_two_folders_are_locked_one_after_the_other) {
    std::filesystem::create_directory(path("sub"));
    write("f", "[1]");
    write("sub/g", "[1]");
    cHeld const held(path("sub"));
    EXPECT_EQ(run({"fmt", "-i", "--no-wait", "sub/g", "f"}).status, 2);
    EXPECT_EQ(read("f"), "[1, ]\n");
    EXPECT_EQ(read("sub/g"), "[1]");
}

// The process that writes its input may need the lock.
TEST_F(ToolInPlaceLock, nothing_is_locked_while_the_standard_input_is_read) {
    write("f", "[1]");
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    cProcess writer(folder_, {"set", "-o", "g", "-", "0 = 2"}, {.in = ends[0]});
    ::close(ends[0]);
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_EQ(run({"fmt", "-i", "--no-wait", "f"}), silent);
    EXPECT_EQ(::write(ends[1], "[1]", 3), 3);
    ::close(ends[1]);
    EXPECT_EQ(writer.wait(), silent);
    EXPECT_EQ(read("g"), "[2]");
}

TEST_F(ToolInPlaceLock, a_file_is_written_on_a_file_system_without_locks) {
    write("f", "[1]");
    auto const no_locks = [] { test::refuse_call(SYS_flock, ENOLCK); };
    cHeld const held(folder_);
    EXPECT_EQ(run({"fmt", "-i", "f"}, {.prepare = no_locks}), silent);
    EXPECT_EQ(read("f"), "[1, ]\n");
}

TEST_F(ToolInPlaceLock, a_file_is_written_in_an_unreadable_folder) {
    write("f", "[1]");
    ::chmod(folder_.c_str(), 0333);
    EXPECT_EQ(run({"fmt", "-i", "f"}, {.prepare = tool_test::give_up_rights_over_files}), silent);
    ::chmod(folder_.c_str(), 0755);
    EXPECT_EQ(read("f"), "[1, ]\n");
}

// --- leftovers of killed runs ---

TEST_F(ToolInPlaceLock, leftovers_of_a_killed_run_are_removed_even_if_the_file_is_formatted) {
    write("f", "[1, ]\n");
    for (auto const &command : std::vector<std::vector<std::string>>{
             {"fmt", "-i", "f"}, {"set", "-o", "g", "f", "0 = 1"}}) {
        write(".qrv1-1~", "unfinished");
        write(".qrvrc~", "a person's");
        EXPECT_EQ(run(command), silent);
        EXPECT_FALSE(std::filesystem::exists(path(".qrv1-1~")));
        EXPECT_TRUE(std::filesystem::exists(path(".qrvrc~")));
    }
}

TEST_F(ToolInPlaceLock, a_run_that_only_reads_removes_nothing) {
    write("f", "[1]");
    write(".qrv1-1~", "unfinished");
    EXPECT_EQ(run({"fmt", "f"}).status, 0);
    EXPECT_EQ(run({"fmt", "--check", "f"}).status, 1);
    EXPECT_TRUE(std::filesystem::exists(path(".qrv1-1~")));
}

// --- backups ---

TEST_F(ToolInPlaceLock, a_backup_has_the_default_suffix_or_another_one) {
    write("f", "[1]");
    ::chmod(path("f").c_str(), 0640);
    EXPECT_EQ(run({"fmt", "-i", "--backup", "f"}), silent);
    EXPECT_EQ(read("f~"), "[1]");
    EXPECT_EQ(run({"set", "-i", "--backup=.bak", "f", "0 = 2"}), silent);
    EXPECT_EQ(read("f.bak"), "[1, ]\n");
    EXPECT_EQ(read("f~"), "[1]");
    struct stat info {};
    ASSERT_EQ(::stat(path("f.bak").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
    EXPECT_EQ(run({"set", "-o", "f", "--backup", "f.bak", "0 = 3"}), silent);
    EXPECT_EQ(read("f~"), "[2, ]\n") << "the backup is that of the file which is replaced";
}

TEST_F(ToolInPlaceLock, a_file_that_does_not_change_has_no_backup) {
    write("f", "[1, ]\n");
    EXPECT_EQ(run({"fmt", "-i", "--backup", "f"}), silent);
    EXPECT_EQ(run({"from-json", "--backup", "-o", "g"}, {.input = "[1]"}), silent);
    EXPECT_FALSE(std::filesystem::exists(path("f~")) || std::filesystem::exists(path("g~")));
}

TEST_F(ToolInPlaceLock, nothing_is_written_if_the_backup_fails) {
    write("f", "[1]");
    std::filesystem::create_directory(path("f~"));
    EXPECT_EQ(run({"fmt", "-i", "--backup", "f"}),
              (cRun{2, "", "f: error: not written: cannot write its backup: Is a directory\n"}));
    std::filesystem::remove(path("f~"));
    write("g", "g");
    std::filesystem::create_symlink("g", path("f~"));
    EXPECT_EQ(run({"fmt", "-i", "--backup", "f"}),
              (cRun{2, "",
                    "f: error: not written: the name of its backup is taken by something that "
                    "is not a regular file\n"}));
    EXPECT_EQ(read("f"), "[1]");
    EXPECT_EQ(read("g"), "g");
}

TEST_F(ToolInPlaceLock, options_about_writing_need_a_file_to_write) {
    write("f", "[1]");
    EXPECT_EQ(run({"set", "--backup", "f", "0 = 1"}).status, 2);
    EXPECT_EQ(run({"fmt", "--no-wait", "f"}).status, 2);
    EXPECT_EQ(run({"fmt", "-i", "--backup=/g", "f"}).status, 2);
    EXPECT_EQ(read("f"), "[1]");
}

// --- attributes ---

TEST_F(ToolInPlaceLock, attributes_are_preserved) {
    write("f", "[1]");
    if (::setxattr(path("f").c_str(), "user.origin", "here", 4, 0) != 0)
        return; // the file system has no attributes
    EXPECT_EQ(run({"fmt", "-i", "--backup", "f"}), silent);
    for (char const *const name : {"f", "f~"}) {
        char value[10];
        ASSERT_EQ(::getxattr(path(name).c_str(), "user.origin", value, sizeof value), 4) << name;
        EXPECT_EQ(std::string(value, 4), "here");
    }
}

TEST_F(ToolInPlaceLock, a_file_whose_attributes_cannot_be_copied_keeps_them) {
    write("f", "[1]");
    if (::setxattr(path("f").c_str(), "user.origin", "here", 4, 0) != 0)
        return; // the file system has no attributes
    auto const refuse = [] { test::refuse_call(SYS_fsetxattr, EPERM); };
    EXPECT_EQ(run({"fmt", "-i", "f"}, {.prepare = refuse}), silent);
    EXPECT_EQ(read("f"), "[1, ]\n");
    char value[10];
    EXPECT_EQ(::getxattr(path("f").c_str(), "user.origin", value, sizeof value), 4);
}

} // namespace
