// Commands that write a file in place, killed at each system call from the lock on; with each such
// call failing; and with another program writing the file at each such call. The file has either
// the complete old or the complete new content, exit status and message report which, and the next
// run removes leftovers of a killed one.
//
// The test traces the tool by ptrace, which stops it before and after each call. Counting begins
// with the first folder that it opens, which is the lock.

#include "tests/support/refused_calls.h"
#include "tests/support/sanitized.h"
#include "tests/tool/tool_run.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>

namespace {

constexpr int most_calls = 150;

std::string const old_text = "{old=1}";
std::string const their_text = "{their=2}";

// The fault at the n-th call.
struct cFault {
    enum cKind { killed, fails, written_by_another };
    int at; // the number of the call, from 0
    cKind kind;
    int error = 0;
};

struct cScene {
    char const *name;
    std::vector<std::string> arguments;
    char const *names; // the names in the folder afterwards
    std::function<void()> prepare = {};
    bool linked = false;
    std::vector<std::string> next = {}; // the command run afterwards; the same again if empty
};

// All errors for fmt; for other commands one error that ends the work, and one that makes them
// write in another way.
std::vector<int> errors_of(cScene const &scene) {
    if (test::sanitized)
        return {ENOSPC}; // the other errors follow the same code paths, a minute each
    if (scene.arguments.front() != "fmt" || scene.prepare) return {ENOSPC, EACCES};
    return {EIO, ENOSPC, EACCES, EROFS, ENOMEM, EMFILE, EDQUOT};
}

void refuse_unnamed_files() {
    constexpr unsigned flags_of_openat = 2, tmpfile = O_TMPFILE & ~O_DIRECTORY;
    test::refuse_call(SYS_openat, EOPNOTSUPP, flags_of_openat, tmpfile);
}

std::vector<cScene> const scenes{
    {"fmt", {"fmt", "-i", "f"}, "f "},
    {"fmt of a file with two names", {"fmt", "-i", "f"}, "f g ", {}, true},
    {"fmt where every file has a name", {"fmt", "-i", "f"}, "f ", refuse_unnamed_files},
    {"set with a backup", {"set", "-i", "--backup", "f", "new = 1"}, "f f~ "},
    {"set with a backup where every file has a name",
     {"set", "-i", "--backup", "f", "new = 1"},
     "f f~ ",
     refuse_unnamed_files},
    {"merge into itself", {"merge", "-i", "--reformat", "f", "f"}, "f "},
    {"set by output", {"set", "-o", "f", "f", "new = 1"}, "f "},
    {"del", {"del", "-i", "f", "/old"}, "f ", {}, false, {"fmt", "-i", "f"}},
    {"mv", {"mv", "-i", "f", "/old", "/new"}, "f ", {}, false, {"fmt", "-i", "f"}},
    {"ins", {"ins", "-i", "f", "/old", "before", "new", "1"}, "f ", {}, false, {"fmt", "-i", "f"}},
};

// With a sanitizer each process takes ten times as long, so there one command is tested for each
// way of writing.
std::vector<cScene> scenes_to_run() {
    if (!test::sanitized) return scenes;
    return {scenes.front(), scenes[4]};
}

class cWatched {
  public:
    cWatched(std::string const &folder, cScene const &scene, cFault fault)
        : folder_(folder), fault_(fault), tool_(folder, scene.arguments, {.prepare = [&scene] {
                                                    if (scene.prepare) scene.prepare();
                                                    ::ptrace(PTRACE_TRACEME);
                                                }}) {
        int status = wait(); // stopped before the tool's first instruction
        ::ptrace(PTRACE_SETOPTIONS, tool_.pid(), nullptr, PTRACE_O_TRACESYSGOOD);
        for (int signal = 0; WIFSTOPPED(status) && !hit_; status = wait()) {
            bool const at_call = WSTOPSIG(status) == (SIGTRAP | 0x80);
            if (at_call) stop_at_call();
            signal = at_call || WSTOPSIG(status) == SIGTRAP ? 0 : WSTOPSIG(status);
            if (!hit_) ::ptrace(PTRACE_SYSCALL, tool_.pid(), nullptr, signal);
        }
    }
    cWatched(cWatched const &) = delete;
    cWatched &operator=(cWatched const &) = delete;
    ~cWatched() = default;

    bool hit() const { return hit_; } // did the tool make this call?
    tool_test::cRun end() { return tool_.wait(); }

  private:
    int wait() const {
        int status = 0;
        siginfo_t info{};
        // Leaves waiting for the tool's end to tool_.
        ::waitid(P_PID, static_cast<id_t>(tool_.pid()), &info, WEXITED | WSTOPPED | WNOWAIT);
        if (info.si_code == CLD_TRAPPED || info.si_code == CLD_STOPPED)
            ::waitpid(tool_.pid(), &status, 0);
        return status;
    }
    void stop_at_call() {
        entering_ = !entering_;
        if (!entering_) return;
        user_regs_struct registers{};
        ::ptrace(PTRACE_GETREGS, tool_.pid(), nullptr, &registers);
        bool const opens = registers.orig_rax == SYS_openat;
        counting_ = counting_ || (opens && (registers.rdx & O_DIRECTORY));
        if (!counting_ || !counted(registers) || number_++ != fault_.at) return;
        hit_ = true;
        if (fault_.kind == cFault::killed) ::kill(tool_.pid(), SIGKILL);
        if (fault_.kind == cFault::fails) fail(registers);
        if (fault_.kind != cFault::written_by_another) return;
        std::ofstream(folder_ + "/f") << their_text;
        ::ptrace(PTRACE_DETACH, tool_.pid(), nullptr, 0);
    }
    // System calls of saving, on files by name or on open files of the folder; not those of memory
    // management, nor the pipes by which a sanitizer probes memory. The end of the tool also
    // counts, but can't fail.
    bool counted(user_regs_struct const &registers) const {
        static unsigned long long const by_name[] = {
            SYS_openat,     SYS_rename,     SYS_unlink, SYS_stat,      SYS_lstat,   SYS_readlink,
            SYS_newfstatat, SYS_faccessat2, SYS_linkat, SYS_listxattr, SYS_getxattr};
        static unsigned long long const by_descriptor[] = {
            SYS_read,   SYS_write, SYS_close, SYS_fsync, SYS_fallocate,  SYS_ftruncate, SYS_fchmod,
            SYS_fchown, SYS_fstat, SYS_flock, SYS_fcntl, SYS_getdents64, SYS_flistxattr};
        auto const is_in = [&registers](auto const &calls) {
            return std::find(std::begin(calls), std::end(calls), registers.orig_rax) !=
                   std::end(calls);
        };
        if (registers.orig_rax == SYS_exit_group) return fault_.kind == cFault::killed;
        return is_in(by_name) || (is_in(by_descriptor) && in_folder(registers.rdi));
    }
    bool in_folder(unsigned long long descriptor) const {
        std::error_code error;
        std::string const link = "/proc/" + std::to_string(tool_.pid()) + "/fd/";
        std::filesystem::path const file =
            std::filesystem::read_symlink(link + std::to_string(descriptor), error);
        return !error && file.string().starts_with(folder_);
    }
    // Skips the call and returns the error in its place. Then the tool continues without tracing.
    void fail(user_regs_struct registers) {
        bool const closes = registers.orig_rax == SYS_close;
        if (!closes) registers.orig_rax = static_cast<unsigned long long>(-1);
        ::ptrace(PTRACE_SETREGS, tool_.pid(), nullptr, &registers);
        ::ptrace(PTRACE_SYSCALL, tool_.pid(), nullptr, 0);
        wait();
        ::ptrace(PTRACE_GETREGS, tool_.pid(), nullptr, &registers);
        registers.rax = static_cast<unsigned long long>(-fault_.error);
        ::ptrace(PTRACE_SETREGS, tool_.pid(), nullptr, &registers);
        ::ptrace(PTRACE_DETACH, tool_.pid(), nullptr, 0);
    }

    std::string const folder_;
    cFault const fault_;
    tool_test::cProcess tool_;
    bool entering_ = false;
    bool counting_ = false;
    bool hit_ = false;
    int number_ = 0;
};

class ToolFmtKilled : public tool_test::Tool {
  protected:
    void make(cScene const &scene) const {
        for (auto const &entry : std::filesystem::directory_iterator(folder_))
            std::filesystem::remove(entry.path());
        write("f", old_text);
        if (scene.linked) std::filesystem::create_hard_link(path("f"), path("g"));
    }
    std::string names() const {
        std::vector<std::string> all;
        for (auto const &entry : std::filesystem::directory_iterator(folder_))
            all.push_back(entry.path().filename().string());
        std::sort(all.begin(), all.end());
        std::string text;
        for (std::string const &name : all) text += name + " ";
        return text;
    }
    // The file's content after the command.
    std::string result_of(cScene const &scene, std::string const &text) const {
        make(scene);
        write("f", text);
        EXPECT_EQ(run(scene.arguments), (tool_test::cRun{0, "", ""}));
        return read("f");
    }
    // Runs the scene with a fault at each call; `check` receives how the tool ended.
    template <class Check>
    void each_call(cScene const &scene, cFault fault, Check const &check) const {
        for (fault.at = 0;; ++fault.at) {
            ASSERT_LT(fault.at, most_calls);
            make(scene);
            cWatched tool(folder_, scene, fault);
            tool_test::cRun const run = tool.end();
            if (!tool.hit()) break;
            SCOPED_TRACE(std::string(scene.name) + ", call " + std::to_string(fault.at) + ": " +
                         std::strerror(fault.error));
            check(run);
        }
        EXPECT_GT(fault.at, 20);
    }
};

} // namespace

TEST_F(ToolFmtKilled, leaves_old_or_new_content_at_whichever_call_it_is_killed) {
    for (cScene const &scene : scenes_to_run()) {
        std::string const new_text = result_of(scene, old_text);
        int old_ones = 0, new_ones = 0, unfinished = 0;
        each_call(scene, {0, cFault::killed}, [&](tool_test::cRun const &run) {
            EXPECT_EQ(run.status, 128 + SIGKILL);
            std::string const now = read("f");
            EXPECT_TRUE(now == old_text || now == new_text) << now;
            ++(now == new_text ? new_ones : old_ones);
            if (scene.linked) {
                EXPECT_EQ(read("g"), now);
            }
            if (std::filesystem::exists(path("f~"))) {
                EXPECT_EQ(read("f~"), old_text);
            }
            unfinished += names().starts_with(".qrv");
            EXPECT_EQ(this->run(scene.next.empty() ? scene.arguments : scene.next),
                      (tool_test::cRun{0, "", ""}));
            EXPECT_EQ(names(), scene.names);
        });
        EXPECT_GT(old_ones, 5);
        EXPECT_GT(new_ones, 0);
        EXPECT_EQ(unfinished > 0, !scene.linked || scene.prepare) << scene.name;
    }
}

TEST_F(ToolFmtKilled, leaves_old_or_new_content_and_reports_whichever_call_fails) {
    for (cScene const &scene : scenes_to_run()) {
        std::string const new_text = result_of(scene, old_text);
        for (int const error : errors_of(scene)) {
            int refused = 0;
            std::string const why = std::strerror(error);
            each_call(scene, {0, cFault::fails, error}, [&](tool_test::cRun const &run) {
                bool const done = run.status == 0;
                EXPECT_EQ(read("f"), done ? new_text : old_text);
                EXPECT_EQ(run.out, "");
                bool const reported =
                    run.err == "f: error: cannot write: " + why + "; the file is unchanged\n" ||
                    run.err == "f: error: not written: cannot write its backup: " + why + "\n" ||
                    run.err == "f: error: cannot read: " + why + "\n" ||
                    run.err.starts_with(
                        "f: error: not written: it is not a regular file"); // the failed call hides
                                                                            // what the file is
                EXPECT_TRUE(done ? run.err.empty() : reported) << run.err;
                std::string const now = names();
                EXPECT_TRUE(now == scene.names || (!done && now == "f ")) << now;
                refused += !done;
            });
            EXPECT_GT(refused, 3);
        }
    }
}

// The other program's content is overwritten only if it is written after the comparison, at the
// very end: that program has not used the lock.
TEST_F(ToolFmtKilled, keeps_content_that_another_program_writes_meanwhile) {
    cScene const &scene = scenes.front();
    std::string const new_text = result_of(scene, old_text);
    std::string const theirs_changed = result_of(scene, their_text);
    int lost = 0, refused = 0;
    each_call(scene, {0, cFault::written_by_another}, [&](tool_test::cRun const &run) {
        std::string const now = read("f");
        EXPECT_EQ(names(), "f ");
        if (run.status == 0) {
            EXPECT_EQ(run.err, "");
            EXPECT_TRUE(now == theirs_changed || now == new_text || now == their_text) << now;
            lost += now == new_text;
            return;
        }
        EXPECT_EQ(run.status, 2);
        bool const seen = run.err == "f: error: not written: another program has changed it since "
                                     "it was read; run the command again\n";
        bool const half_read = // the end of the file was written after its beginning had been read
            run.err ==
            "f:1:8: error: text after the first value would be lost\n"
            "f: error: not written: data would be lost; --force writes the file anyway\n";
        EXPECT_TRUE(seen || half_read) << run.err;
        EXPECT_EQ(now, their_text);
        ++refused;
    });
    EXPECT_GT(refused, 10);
    EXPECT_LE(lost, 5);
}
