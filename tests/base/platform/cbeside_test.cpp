// The new file that is written beside a file and then replaces it: when it has a name, how long it
// is locked, and which of the files that killed processes left are removed.

#include "base/platform/cbeside.h"

#include "qrv/base/platform/cplatform.h"
#include "tests/text/file/save_support.h"

#include <csignal>
#include <cstring>
#include <utility>

using namespace save_test;

namespace {

class Beside : public SaveTest {
  protected:
    Beside() {
        put(file_, "old");
        names.clear();
        folder_now = &folder_;
    }

    // What another process would find in the folder at the moment of the rename.
    static inline std::string names;
    static inline bool locked = false;
    static inline cFolder const *folder_now = nullptr;
    static int look_and_rename(char const *from, char const *to) {
        names = folder_now->names();
        int const other = ::open(from, O_RDONLY | O_CLOEXEC);
        locked = ::flock(other, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
        ::close(other);
        return ::rename(from, to);
    }
    std::string unfinished(std::string const &name = ".qrv1-1~") const {
        std::string const path = folder_.file(name);
        put(path, "unfinished");
        return path;
    }
    static void remove_unfinished(cFolder const &folder) {
        cat::remove_unfinished(folder.file("file"));
    }
    void remove_unfinished() const { remove_unfinished(folder_); }
    static bool exists(std::string const &path) {
        return std::filesystem::exists(std::filesystem::symlink_status(path));
    }

    std::string const file_ = folder_.file("file");
};

TEST_F(Beside, the_new_file_has_no_name_while_it_is_written) {
    cat::os.write = [](int descriptor, void const *bytes, size_t count) {
        names += folder_now->names() + ";";
        return ::write(descriptor, bytes, count);
    };
    EXPECT_TRUE(cat::replace_file(file_, "new"));
    EXPECT_EQ(names, "file;");
}

TEST_F(Beside, the_new_file_is_locked_until_the_rename) {
    cat::os.rename = look_and_rename;
    for (bool const unnamed : {true, false}) {
        if (!unnamed) refuse_unnamed_files();
        locked = false;
        EXPECT_TRUE(cat::replace_file(file_, "new"));
        EXPECT_TRUE(locked);
        EXPECT_TRUE(names.starts_with(".qrv") && names.ends_with("~ file")) << names;
        EXPECT_EQ(folder_.names(), "file");
    }
}

TEST_F(Beside, the_new_file_has_a_name_where_an_unnamed_file_cannot_be_linked) {
    cat::os.link_open = [](int, char const *) {
        errno = ENOENT;
        return -1;
    };
    EXPECT_TRUE(cat::replace_file(file_, "new"));
    EXPECT_TRUE(cat::replace_file(folder_.file("second"), "new"));
    EXPECT_TRUE(cat::copy_to_new_file(file_, folder_.file("copy")));
    EXPECT_EQ(bytes_of(file_), "new");
    EXPECT_EQ(bytes_of(folder_.file("copy")), "new");
    EXPECT_EQ(folder_.names(), "copy file second");
}

TEST_F(Beside, the_new_file_is_written_where_locks_are_not_supported) {
    cat::os.flock = [](int, int) {
        errno = ENOLCK;
        return -1;
    };
    for (bool const unnamed : {true, false}) {
        if (!unnamed) refuse_unnamed_files();
        EXPECT_TRUE(cat::replace_file(file_, unnamed ? "new" : "newer"));
    }
    EXPECT_EQ(bytes_of(file_), "newer");
    std::string const left = unfinished();
    remove_unfinished();
    EXPECT_TRUE(exists(left)) << "the process that writes it may still run";
}

// Another process locks and removes the file after it was created and before it is locked. Then the
// other process either still holds its lock, or has released it.
TEST_F(Beside, another_file_is_created_if_the_first_is_removed_before_it_is_locked) {
    enum cRace { over, still_locked, removed };
    static cRace race;
    static bool removing;
    refuse_unnamed_files();
    cat::os.rename = look_and_rename;
    cat::os.flock = [](int descriptor, int operation) {
        if (race == over || removing) return ::flock(descriptor, operation);
        removing = true;
        remove_unfinished(*folder_now);
        removing = false;
        EXPECT_EQ(folder_now->names(), "file");
        if (std::exchange(race, over) == removed) return ::flock(descriptor, operation);
        errno = EWOULDBLOCK;
        return -1;
    };
    for (cRace const each : {still_locked, removed}) {
        race = each;
        locked = false;
        EXPECT_TRUE(cat::replace_file(file_, "new"));
        EXPECT_EQ(race, over);
        EXPECT_TRUE(locked);
        EXPECT_EQ(folder_.names(), "file");
    }
}

TEST_F(Beside, the_new_file_of_a_private_file_is_never_readable_for_others) {
    ASSERT_EQ(::chmod(file_.c_str(), 0600), 0);
    static mode_t modes; // all bits that fstat returned
    for (bool const unnamed : {true, false}) {
        if (!unnamed) refuse_unnamed_files();
        cat::os.fstat = [](int descriptor, struct stat *info) {
            int const result = ::fstat(descriptor, info);
            modes |= info->st_mode & 07777;
            return result;
        };
        modes = 0;
        EXPECT_TRUE(cat::replace_file(file_, "new"));
        EXPECT_EQ(modes, 0600u);
        EXPECT_EQ(mode_of(file_), 0600u);
    }
}

// --- leftovers of a killed process ---

TEST_F(Beside, a_leftover_file_is_removed) {
    unfinished();
    unfinished(".qrv4000000-17~");
    std::filesystem::create_hard_link(unfinished(".qrv3-1~"), folder_.file("copy"));
    std::string const read_only = unfinished(".qrv2-2~");
    ASSERT_EQ(::chmod(read_only.c_str(), 0400), 0);
    remove_unfinished();
    EXPECT_EQ(folder_.names(), "copy file");
    EXPECT_EQ(bytes_of(folder_.file("copy")), "unfinished");
}

TEST_F(Beside, a_leftover_file_in_the_folder_of_a_links_target_is_removed) {
    std::filesystem::create_directory(folder_.file("sub"));
    std::string const left = unfinished("sub/.qrv1-1~");
    std::string const other = unfinished();
    std::filesystem::create_symlink("sub/target", folder_.file("link"));
    cat::remove_unfinished(folder_.file("link"));
    EXPECT_FALSE(exists(left));
    EXPECT_TRUE(exists(other));
}

TEST_F(Beside, a_file_that_a_process_still_writes_stays) {
    std::string const left = unfinished();
    int const writer = ::open(left.c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(writer, LOCK_EX | LOCK_NB), 0);
    remove_unfinished();
    EXPECT_TRUE(exists(left));
    ::close(writer);
    remove_unfinished();
    EXPECT_FALSE(exists(left));
}

TEST_F(Beside, files_with_other_names_stay) {
    std::vector<std::string> const others{".qrv-1~", ".qrv-~",   ".qrv1-1", ".qrv1-1~~",
                                          ".qrv1-~", ".qrv1-a~", ".qrv11~", ".qrv1a-1~",
                                          ".qrvrc~", ".qrv~",    "qrv1-1~"};
    for (std::string const &name : others) unfinished(name);
    remove_unfinished();
    for (std::string const &name : others) EXPECT_TRUE(exists(folder_.file(name))) << name;
}

TEST_F(Beside, links_pipes_and_folders_stay) {
    std::string const link = folder_.file(".qrv1-1~"), pipe = folder_.file(".qrv1-2~"),
                      folder = folder_.file(".qrv1-3~");
    std::filesystem::create_symlink("file", link);
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::filesystem::create_directory(folder);
    remove_unfinished();
    EXPECT_TRUE(exists(link) && exists(pipe) && exists(folder));
    EXPECT_EQ(bytes_of(file_), "old");
}

TEST_F(Beside, files_of_other_users_stay) {
    std::string const left = unfinished();
    cat::os.lstat = [](char const *path, struct stat *info) {
        int const result = ::lstat(path, info);
        ++info->st_uid;
        return result;
    };
    remove_unfinished();
    EXPECT_TRUE(exists(left));
    cat::os.lstat = ::lstat;
    cat::os.fstat = [](int descriptor, struct stat *info) { // the name passed to another file
        int const result = ::fstat(descriptor, info);
        ++info->st_uid;
        return result;
    };
    remove_unfinished();
    EXPECT_TRUE(exists(left));
    cat::os.fstat = ::fstat;
    remove_unfinished();
    EXPECT_FALSE(exists(left));
}

// After the lock, the name is checked again before the file is removed.
TEST_F(Beside, a_file_that_takes_over_the_name_before_the_lock_stays) {
    std::string const left = unfinished();
    cat::os.flock = [](int descriptor, int operation) {
        std::string const name = folder_now->file(".qrv1-1~");
        put(folder_now->file("other"), "other");
        EXPECT_EQ(::rename(folder_now->file("other").c_str(), name.c_str()), 0);
        return ::flock(descriptor, operation);
    };
    remove_unfinished();
    EXPECT_EQ(bytes_of(left), "other");
}

TEST_F(Beside, a_missing_folder_is_ignored) {
    cat::remove_unfinished(folder_.file("nowhere/file"));
    EXPECT_EQ(folder_.names(), "file");
}

// One process replaces a file repeatedly, while another one removes unfinished files. Each
// replacement succeeds.
TEST_F(Beside, a_process_that_removes_leftovers_does_not_disturb_writers) {
    pid_t const remover = ::fork();
    if (remover == 0)
        for (;;) remove_unfinished();
    refuse_unnamed_files();
    cat::os.fsync = [](int) { return 0; };
    for (int i = 0; i < 2000; ++i) {
        std::string const text = std::to_string(i);
        ASSERT_TRUE(cat::replace_file(file_, text)) << std::strerror(errno);
        ASSERT_EQ(bytes_of(file_), text);
    }
    ::kill(remover, SIGKILL);
    int status = 0;
    EXPECT_EQ(::waitpid(remover, &status, 0), remover);
    EXPECT_EQ(folder_.names(), "file");
}

} // namespace
