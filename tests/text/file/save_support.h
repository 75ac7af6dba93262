#pragma once
// For tests that save files: a folder for each test, the bytes and modes of its files, and system
// calls restored at the end.

#include "tests/support/files.h"
#include "tests/support/fixture.h"
#include "tests/support/os_faults.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <grp.h>
#include <iterator>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace save_test {

// A temporary folder for each test, in memory if possible, since there are thousands of saves.
class cFolder {
  public:
    cFolder() {
        bool const in_memory = ::access("/dev/shm", W_OK | X_OK) == 0;
        std::string const place =
            in_memory ? "/dev/shm" : std::filesystem::temp_directory_path().string();
        std::string pattern = place + "/qrv_save_XXXXXX";
        path_ = ::mkdtemp(pattern.data());
    }
    cFolder(cFolder const &) = delete;
    cFolder &operator=(cFolder const &) = delete;
    ~cFolder() {
        ::chmod(path_.c_str(), 0700);
        std::filesystem::remove_all(path_);
    }
    std::string const &path() const { return path_; }
    std::string file(std::string const &name) const { return path_ + "/" + name; }
    // The names of all entries, sorted and separated by blanks.
    std::string names() const {
        std::vector<std::string> all;
        for (auto const &entry : std::filesystem::directory_iterator(path_))
            all.push_back(entry.path().filename().string());
        std::sort(all.begin(), all.end());
        std::string text;
        for (std::string const &name : all) text += (text.empty() ? "" : " ") + name;
        return text;
    }

  private:
    std::string path_;
};

using test::bytes_of, test::put, test::mode_of;

// Runs a body in a child process. Returns 0 at its end, 1 if an expectation failed, the exit code
// if it exits, or 128 and the number of the signal that ended it.
template <class Body> int in_child(Body const &body) {
    std::fflush(nullptr);
    pid_t const child = ::fork();
    if (child == 0) {
        body();
        std::fflush(nullptr);
        ::_exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    if (::waitpid(child, &status, 0) != child) return -1;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

// For a child process: permissions do not apply to root, so it becomes the user nobody, who owns
// the folder then.
inline void become_nobody(cFolder const &folder) {
    if (::geteuid() != 0) return;
    constexpr uid_t nobody = 65534;
    for (auto const &entry : std::filesystem::directory_iterator(folder.path()))
        EXPECT_EQ(::lchown(entry.path().c_str(), nobody, nobody), 0);
    EXPECT_EQ(::chown(folder.path().c_str(), nobody, nobody), 0);
    EXPECT_EQ(::setgroups(0, nullptr), 0);
    EXPECT_EQ(::setresgid(nobody, nobody, nobody), 0);
    EXPECT_EQ(::setresuid(nobody, nobody, nobody), 0);
}

// As on a file system where every file needs a name.
inline void refuse_unnamed_files() {
    cat::os.open = [](char const *path, int flags, mode_t mode) {
        if ((flags & O_TMPFILE) != O_TMPFILE) return ::open(path, flags, mode);
        errno = EOPNOTSUPP;
        return -1;
    };
}

class SaveTest : public QrvTest {
  protected:
    SaveTest() = default;
    ~SaveTest() override { cat::os = calls_; }

    cFolder folder_;

  private:
    cat::os_calls const calls_ = cat::os;
};

// Makes the program's folder, which has the persistent maps, appear to be the test's folder.
class PersistentTest : public SaveTest {
  protected:
    PersistentTest() { set_program(folder_.file("program")); }
    ~PersistentTest() override { program_invocation_name = before_; }

    void set_program(std::string const &name) {
        program_ = name;
        program_invocation_name = program_.data();
    }

  private:
    std::string program_;
    char *const before_ = program_invocation_name;
};

} // namespace save_test
