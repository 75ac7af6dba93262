// `fmt -i` killed at each call to the system while it saves, and with each such call failing: the
// file holds the old text or the new one, whole, and exit code and message say which.
//
// The tool is watched by ptrace, which stops it before and behind each call. Counting begins with
// the first file that it opens for writing.

#include "tests/tool/tool_run.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>

namespace {

constexpr int most_calls = 60;

std::string const old_text = "{old=1}";
std::string const new_text = "{old= 1; }\n";

// What becomes of the n-th call.
struct cFault {
    int at;    // from 0
    int error; // 0: the tool is killed instead
};

class cWatched {
  public:
    cWatched(std::string const &folder, std::vector<std::string> arguments, cFault fault)
        : folder_(folder), fault_(fault),
          tool_(folder, std::move(arguments), {.prepare = [] { ::ptrace(PTRACE_TRACEME); }}) {
        int status = wait(); // before the tool's first instruction
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

    bool hit() const { return hit_; } // was there such a call?
    tool_test::cRun end() { return tool_.wait(); }

  private:
    int wait() const {
        int status = 0;
        siginfo_t info{};
        // Leaves the end to tool_.
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
        counting_ = counting_ || (opens && (registers.rdx & O_ACCMODE) == O_WRONLY);
        if (!counting_ || !counted(registers) || number_++ != fault_.at) return;
        hit_ = true;
        if (fault_.error)
            fail(registers);
        else
            ::kill(tool_.pid(), SIGKILL);
    }
    // Calls that saving makes, about files by name or about open files of the folder: not those of
    // the memory manager, nor the pipes by which a sanitizer probes memory. The end of the tool
    // counts too, but can't fail.
    bool counted(user_regs_struct const &registers) const {
        static unsigned long long const by_name[] = {SYS_openat,    SYS_rename,   SYS_unlink,
                                                     SYS_stat,      SYS_readlink, SYS_newfstatat,
                                                     SYS_faccessat2};
        static unsigned long long const by_descriptor[] = {SYS_read,   SYS_write,     SYS_close,
                                                           SYS_fsync,  SYS_fallocate, SYS_ftruncate,
                                                           SYS_fchmod, SYS_fchown,    SYS_fstat};
        auto const is_in = [&registers](auto const &calls) {
            return std::find(std::begin(calls), std::end(calls), registers.orig_rax) !=
                   std::end(calls);
        };
        if (registers.orig_rax == SYS_exit_group) return fault_.error == 0;
        return is_in(by_name) || (is_in(by_descriptor) && in_folder(registers.rdi));
    }
    bool in_folder(unsigned long long descriptor) const {
        std::error_code error;
        std::string const link = "/proc/" + std::to_string(tool_.pid()) + "/fd/";
        std::filesystem::path const file =
            std::filesystem::read_symlink(link + std::to_string(descriptor), error);
        return !error && file.string().starts_with(folder_);
    }
    // The call isn't made; its result is the error. Then the tool goes on unwatched.
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
    void make(bool linked) const {
        for (auto const &entry : std::filesystem::directory_iterator(folder_))
            std::filesystem::remove(entry.path());
        write("f", old_text);
        if (linked) std::filesystem::create_hard_link(path("f"), path("g"));
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
};

} // namespace

TEST_F(ToolFmtKilled, leaves_old_or_new_wherever_it_is_killed) {
    for (bool const linked : {false, true}) {
        int old_ones = 0, new_ones = 0;
        for (int n = 0; n < most_calls; ++n) {
            make(linked);
            cWatched tool(folder_, {"fmt", "-i", "f"}, {n, 0});
            tool_test::cRun const run = tool.end();
            if (!tool.hit()) break;
            EXPECT_EQ(run.status, 128 + SIGKILL);
            std::string const now = read("f");
            EXPECT_TRUE(now == old_text || now == new_text) << n << ": " << now;
            ++(now == new_text ? new_ones : old_ones);
            if (linked) {
                EXPECT_EQ(read("g"), now);
            }
        }
        EXPECT_GT(old_ones, 5);
        EXPECT_GT(new_ones, 0);
    }
}

TEST_F(ToolFmtKilled, leaves_old_or_new_and_tells_whatever_fails) {
    for (bool const linked : {false, true})
        for (int const error : {EIO, ENOSPC, EACCES, EROFS, ENOMEM, EMFILE, EDQUOT}) {
            int refused = 0;
            for (int n = 0; n < most_calls; ++n) {
                make(linked);
                cWatched tool(folder_, {"fmt", "-i", "f"}, {n, error});
                tool_test::cRun const run = tool.end();
                if (!tool.hit()) break;
                SCOPED_TRACE("call " + std::to_string(n) + ": " + std::strerror(error));
                bool const done = run.status == 0;
                EXPECT_EQ(read("f"), done ? new_text : old_text);
                EXPECT_EQ(run.out, "");
                EXPECT_EQ(run.err, done ? ""
                                        : std::string("f: error: cannot write: ") +
                                              std::strerror(error) + "; the file is unchanged\n");
                EXPECT_EQ(names(), linked ? "f g " : "f ");
                refused += !done;
            }
            EXPECT_GT(refused, 3);
        }
}
