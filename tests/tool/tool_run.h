#pragma once
// Runs the built tool as a process and returns its exit status, standard output and standard error.
// The fixture creates a folder in which the tool runs.
//
//   write("f", "[1, 2]");
//   EXPECT_EQ(run({"fmt", "f"}), (cRun{0, "[1, 2, ]\n", ""}));

#include "tests/support/files.h"
#include "tests/support/memory_file.h"
#include "tests/support/paths.h"
#include "tests/support/strings.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <ostream>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tool_test {

struct cRun {
    int status = 0; // for a signal 128 and its number
    std::string out;
    std::string err;
    bool operator==(cRun const &) const = default;
};

// The result of an invalid command line.
inline cRun usage_error(std::string const &command, std::string const &text) {
    return {2, "",
            "qrv: error: " + text + "\nqrv: note: 'qrv help " + command + "' shows its options\n"};
}

inline void PrintTo(cRun const &run, std::ostream *os) {
    *os << "status " << run.status << "\n--- out\n" << run.out << "--- err\n" << run.err << "---";
}

using test::cMemory;

// How to start the tool, if not with empty input and all output captured.
struct cStart {
    std::string input = {};
    int in = -1;                        // borrowed descriptors, in place
    int out = -1;                       // of the default ones
    std::function<void()> prepare = {}; // called in the new process before the tool
    std::string program = test::binary_file("bin/qrv");
};

// A running tool.
class cProcess {
  public:
    cProcess(std::string const &folder, std::vector<std::string> arguments, cStart const &start)
        : in_(start.input) {
        arguments.insert(arguments.begin(), "qrv");
        std::vector<char *> argv;
        for (std::string &argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        pid_ = ::fork();
        if (pid_ != 0) return;
        bool const ready =
            ::chdir(folder.c_str()) == 0 &&
            ::dup2(start.in < 0 ? in_.descriptor() : start.in, STDIN_FILENO) >= 0 &&
            ::dup2(start.out < 0 ? out_.descriptor() : start.out, STDOUT_FILENO) >= 0 &&
            ::dup2(err_.descriptor(), STDERR_FILENO) >= 0;
        if (start.prepare) start.prepare();
        if (ready) ::execv(start.program.c_str(), argv.data());
        ::_exit(127);
    }
    cProcess(cProcess const &) = delete;
    cProcess &operator=(cProcess const &) = delete;
    ~cProcess() {
        if (pid_ > 0) wait();
    }

    pid_t pid() const { return pid_; }
    cRun wait() {
        int status = 0;
        ::waitpid(std::exchange(pid_, -1), &status, 0);
        return {WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status), out_.bytes(),
                err_.bytes()};
    }

  private:
    cMemory in_, out_, err_;
    pid_t pid_;
};

using test::bytes_of;

// For the preparation of a run: root may read and write every file, but not without these rights.
inline void give_up_rights_over_files() {
    constexpr unsigned long dac_override = 1, dac_read_search = 2;
    for (unsigned long right : {dac_override, dac_read_search})
        if (::geteuid() == 0 && ::prctl(PR_CAPBSET_DROP, right, 0, 0, 0) != 0) ::_exit(126);
}

using test::times;

class Tool : public testing::Test {
  protected:
    Tool() {
        std::string name = (std::filesystem::temp_directory_path() / "qrv-tool-XXXXXX").string();
        folder_ = ::mkdtemp(name.data());
    }
    ~Tool() override {
        std::filesystem::permissions(folder_, std::filesystem::perms::owner_all);
        std::filesystem::remove_all(folder_);
    }

    std::string path(std::string const &name) const { return folder_ + "/" + name; }
    void write(std::string const &name, std::string const &bytes) const {
        std::ofstream(path(name), std::ios::binary) << bytes;
    }
    void write_example(std::string const &name) const {
        write(name, bytes_of(test::source_file("examples/" + name)));
    }
    std::string read(std::string const &name) const { return bytes_of(path(name)); }

    cRun run(std::vector<std::string> arguments, cStart const &start = {}) const {
        return cProcess(folder_, std::move(arguments), start).wait();
    }
    // Runs one command on the file "f" with this content.
    cRun run_on(std::string const &bytes, std::vector<std::string> arguments) const {
        write("f", bytes);
        arguments.push_back("f");
        return run(std::move(arguments));
    }
    cRun fmt(std::string const &bytes) const { return run_on(bytes, {"fmt"}); }
    // Every error that `check` reports. Its output is empty, and its status is that of the
    // findings.
    std::string check(std::string const &bytes) const {
        cRun const run = run_on(bytes, {"check", "--all"});
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.status, run.err.empty() ? 0 : 1);
        return run.err;
    }

    std::string folder_;
};

} // namespace tool_test
