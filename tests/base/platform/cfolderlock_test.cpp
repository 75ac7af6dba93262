#include "qrv/base/platform/cfolderlock.h"

#include "tests/text/file/save_support.h"

#include <thread>

using namespace save_test;
using cat::FolderLock;
using std::chrono::milliseconds;

namespace {

constexpr milliseconds no_wait(0), long_wait(60000);

class FolderLockTest : public SaveTest {
  protected:
    std::string const file_ = folder_.file("file");
};

TEST_F(FolderLockTest, the_second_lock_of_a_folder_is_refused_until_the_first_ends) {
    {
        FolderLock const first(file_, no_wait);
        EXPECT_TRUE(first.held() && !first.busy());
        FolderLock const second(folder_.file("other"), no_wait);
        EXPECT_TRUE(second.busy() && !second.held());
        FolderLock const third(folder_.file("other"), milliseconds(20));
        EXPECT_TRUE(third.busy());
    }
    EXPECT_TRUE(FolderLock(file_, no_wait).held());
}

TEST_F(FolderLockTest, locking_waits_until_the_folder_is_free) {
    std::optional<FolderLock> first;
    first.emplace(file_, no_wait);
    std::thread holder([&] {
        std::this_thread::sleep_for(milliseconds(30));
        first.reset();
    });
    FolderLock const second(file_, long_wait);
    EXPECT_TRUE(second.held());
    holder.join();
}

TEST_F(FolderLockTest, a_link_locks_the_folder_of_its_target) {
    std::filesystem::create_directory(folder_.file("sub"));
    std::filesystem::create_symlink("sub/target", folder_.file("link"));
    FolderLock const by_link(folder_.file("link"), no_wait);
    EXPECT_TRUE(FolderLock(folder_.file("sub/x"), no_wait).busy());
    EXPECT_TRUE(FolderLock(file_, no_wait).held());
}

TEST_F(FolderLockTest, a_name_without_a_folder_locks_the_working_folder) {
    auto const before = std::filesystem::current_path();
    std::filesystem::current_path(folder_.path());
    FolderLock const here("x", no_wait);
    std::filesystem::current_path(before);
    EXPECT_TRUE(FolderLock(file_, no_wait).busy());
}

TEST_F(FolderLockTest, the_lock_ends_even_if_a_forked_process_has_the_descriptor) {
    pid_t child = -1;
    {
        FolderLock const lock(file_, no_wait);
        child = ::fork();
        if (child == 0)
            for (;;) ::pause();
    }
    EXPECT_TRUE(FolderLock(file_, no_wait).held());
    ::kill(child, SIGKILL);
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
}

TEST_F(FolderLockTest, locking_does_not_wait_for_a_folder_that_cannot_be_locked) {
    auto const expect_no_lock = [](std::string const &path) {
        FolderLock const lock(path, long_wait);
        EXPECT_TRUE(!lock.held() && !lock.busy());
    };
    expect_no_lock(folder_.file("nowhere/file"));
    std::filesystem::create_symlink("loop", folder_.file("loop"));
    expect_no_lock(folder_.file("loop"));
    for (int const error : {ENOLCK, EBADF, EOPNOTSUPP}) {
        static int now;
        now = error;
        cat::os.flock = [](int, int) {
            errno = now;
            return -1;
        };
        expect_no_lock(file_);
    }
}

TEST_F(FolderLockTest, an_interrupted_call_is_repeated) {
    static int interrupted;
    interrupted = 3;
    cat::os.flock = [](int descriptor, int operation) {
        if (interrupted == 0) return ::flock(descriptor, operation);
        --interrupted;
        errno = EINTR;
        return -1;
    };
    EXPECT_TRUE(FolderLock(file_, no_wait).held());
    EXPECT_EQ(interrupted, 0);
}

TEST_F(FolderLockTest, a_lock_of_a_file_locks_its_folder) {
    {
        cat::FileLock const lock(file_, no_wait);
        EXPECT_FALSE(lock.busy());
        EXPECT_TRUE(FolderLock(file_, no_wait).busy());
        EXPECT_TRUE(cat::FileLock(folder_.file("other"), no_wait).busy());
    }
    EXPECT_TRUE(FolderLock(file_, no_wait).held());
}

TEST_F(FolderLockTest, a_lock_of_a_file_removes_the_unfinished_file_of_a_killed_process) {
    put(folder_.file(".qrv1-1~"), "unfinished");
    {
        FolderLock const other(file_, no_wait);
        EXPECT_TRUE(cat::FileLock(file_, no_wait).busy());
        EXPECT_EQ(folder_.names(), ".qrv1-1~");
    }
    EXPECT_FALSE(cat::FileLock(file_, no_wait).busy());
    EXPECT_EQ(folder_.names(), "");
}

TEST_F(FolderLockTest, a_file_lock_does_not_lock_the_folder_of_a_pipe) {
    ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
    cat::FileLock const lock(file_, no_wait);
    EXPECT_FALSE(lock.busy());
    EXPECT_TRUE(FolderLock(file_, no_wait).held());
}

} // namespace
