// The interface to the operating system: debug output, descriptors, time, files and their
// replacement.

#include "qrv/base/platform/cplatform.h"

#include "base/platform/os_calls.h"
#include "tests/support/files.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

std::string content(std::string const &path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

using test::put, test::mode_of;

// Works in its own temporary folder, and restores the system calls afterwards.
class Platform : public testing::Test {
  protected:
    Platform()
        : folder(testing::TempDir() + "qrv_platform_" + std::to_string(::getpid())),
          file(folder + "/file") {
        fs::remove_all(folder);
        fs::create_directory(folder);
    }
    ~Platform() override {
        cat::os = calls_;
        fs::permissions(folder, fs::perms::owner_all);
        fs::remove_all(folder);
    }

    // The number of entries in the folder: the file, its links, and files that were left over.
    std::size_t entries() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
    }

    std::string const folder;
    std::string const file;

  private:
    cat::os_calls const calls_ = cat::os;
};

// ---- debug output ----

Texts debug_texts;

TEST_F(Platform, the_hook_receives_debug_output) {
    debug_texts.clear();
    qrv_set_debug_output([](char const *text) { debug_texts.emplace_back(text); });
    cat::debug_output("one");
    cat::debug_output(nullptr);
    cat::debug_output("");
    qrv_set_debug_output(nullptr);
    EXPECT_EQ(debug_texts, (Texts{"one", ""}));
}

// ---- descriptors ----

TEST_F(Platform, a_terminal_is_distinguished_from_other_descriptors) {
    int const control = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(control, 0);
    EXPECT_TRUE(cat::is_terminal(control));
    ::close(control);
    EXPECT_FALSE(cat::is_terminal(control));
    EXPECT_FALSE(cat::is_terminal(-1));
    int const nothing = ::open("/dev/null", O_RDONLY);
    EXPECT_FALSE(cat::is_terminal(nothing));
    ::close(nothing);
}

TEST_F(Platform, writing_continues_after_short_and_interrupted_writes) {
    static int turn;
    turn = 0;
    cat::os.write = [](int descriptor, void const *bytes, size_t count) -> ssize_t {
        if (turn++ % 2 == 0) {
            errno = EINTR;
            return -1;
        }
        return ::write(descriptor, bytes, std::min<size_t>(count, 3));
    };
    int const descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    EXPECT_TRUE(cat::write_all(descriptor, "twelve bytes"));
    EXPECT_TRUE(cat::write_all(descriptor, ""));
    ::close(descriptor);
    EXPECT_EQ(content(file), "twelve bytes");
    EXPECT_EQ(turn, 8);
}

TEST_F(Platform, writing_waits_for_a_full_pipe) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    std::string const text(1 << 20, 'x');
    std::string read;
    std::thread reader([&] {
        char buffer[65536];
        while (read.size() < text.size()) {
            ssize_t const n = ::read(ends[0], buffer, sizeof buffer);
            if (n > 0) read.append(buffer, static_cast<std::size_t>(n));
        }
    });
    EXPECT_TRUE(cat::write_all(ends[1], text));
    reader.join();
    EXPECT_EQ(read, text);
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(Platform, writing_ends_when_the_system_refuses) {
    EXPECT_FALSE(cat::write_all(-1, "text"));
    int const full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    EXPECT_FALSE(cat::write_all(full, "text"));
    ::close(full);
    cat::os.write = [](int, void const *, size_t) -> ssize_t { return 0; };
    EXPECT_FALSE(cat::write_all(1, "text"));
}

// ---- time, names ----

TEST_F(Platform, the_counter_increases) {
    auto const first = cat::counter();
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    auto const second = cat::counter();
    EXPECT_GE(second - first, cat::counter_frequency() / 1000);
}

TEST_F(Platform, local_time_is_formatted) {
    EXPECT_EQ(cat::local_time("%Y:%m:%d %H:%M").size(), 16U);
    EXPECT_EQ(cat::local_time("x%%"), "x%");
    EXPECT_EQ(cat::local_time(std::string(128, 'x').c_str()), "");
}

TEST_F(Platform, the_program_knows_its_path_and_name) {
    EXPECT_NE(cat::program_name().find("test_base"), std::string::npos);
    EXPECT_TRUE(fs::equivalent(cat::program_file(), "/proc/self/exe"));
}

// ---- tests of files ----

TEST_F(Platform, files_and_folders_are_distinguished) {
    EXPECT_FALSE(cat::file_exists(file));
    EXPECT_FALSE(cat::is_directory(file));
    put(file, "x");
    EXPECT_TRUE(cat::file_exists(file));
    EXPECT_FALSE(cat::is_directory(file));
    EXPECT_TRUE(cat::file_exists(folder));
    EXPECT_TRUE(cat::is_directory(folder));
    EXPECT_FALSE(cat::file_exists(""));
}

TEST_F(Platform, only_the_owners_permission_makes_a_file_writable) {
    put(file, "x");
    ASSERT_EQ(::chmod(file.c_str(), 0464), 0);
    EXPECT_TRUE(cat::is_read_only(file));
    EXPECT_TRUE(cat::make_writable(file));
    EXPECT_EQ(mode_of(file), 0664U);
    EXPECT_FALSE(cat::is_read_only(file));
    EXPECT_FALSE(cat::is_read_only(folder + "/none"));
    EXPECT_FALSE(cat::make_writable(folder + "/none"));
}

// ---- may it be written? ----

TEST_F(Platform, testing_for_writability_leaves_no_trace) {
    put(file, "old");
    EXPECT_TRUE(cat::can_write_file(file));
    EXPECT_TRUE(cat::can_write_file(folder + "/new"));
    EXPECT_EQ(content(file), "old");
    EXPECT_EQ(entries(), 1U);
    EXPECT_FALSE(cat::can_write_file(folder));
    EXPECT_FALSE(cat::can_write_file(folder + "/new/"));
    EXPECT_FALSE(cat::can_write_file(folder + "/none/new"));
    EXPECT_FALSE(cat::can_write_file(file + "/new"));
    EXPECT_FALSE(cat::can_write_file(""));
    EXPECT_TRUE(cat::can_write_file("/dev/null"));
    EXPECT_TRUE(cat::can_write_file(folder + "/" + std::string(255, 'x')));
    EXPECT_FALSE(cat::can_write_file(folder + "/" + std::string(256, 'x')));
}

TEST_F(Platform, a_name_in_the_working_folder_is_writable) {
    fs::path const before = fs::current_path();
    fs::current_path(folder);
    EXPECT_TRUE(cat::can_write_file("new"));
    EXPECT_TRUE(cat::replace_file("new", "text"));
    EXPECT_TRUE(cat::replace_file("new", "text 2"));
    fs::current_path(before);
    EXPECT_EQ(content(folder + "/new"), "text 2");
    EXPECT_EQ(entries(), 1U);
}

TEST_F(Platform, nothing_is_writable_in_a_removed_working_folder) {
    fs::path const before = fs::current_path();
    fs::create_directory(folder + "/gone");
    fs::current_path(folder + "/gone");
    fs::remove(folder + "/gone");
    errno = 0;
    EXPECT_FALSE(cat::can_write_file("new"));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(cat::replace_file("new", "text"));
    EXPECT_TRUE(cat::can_write_file(file));
    fs::current_path(before);
}

TEST_F(Platform, a_cycle_of_links_is_not_writable) {
    fs::create_symlink("b", folder + "/a");
    fs::create_symlink("a", folder + "/b");
    EXPECT_FALSE(cat::can_write_file(folder + "/a"));
    EXPECT_FALSE(cat::replace_file(folder + "/a", "x"));
    EXPECT_EQ(entries(), 2U);
}

// ---- replacing ----

ino_t inode_of(std::string const &path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 ? info.st_ino : 0;
}

TEST_F(Platform, a_new_file_has_the_default_mode) {
    mode_t const mask = ::umask(027);
    EXPECT_TRUE(cat::replace_file(file, "text"));
    ::umask(mask);
    EXPECT_EQ(content(file), "text");
    EXPECT_EQ(mode_of(file), 0640U);
    EXPECT_EQ(entries(), 1U);
}

TEST_F(Platform, replacing_a_file_preserves_its_mode) {
    put(file, "a longer old text");
    ASSERT_EQ(::chmod(file.c_str(), 0751), 0);
    ino_t const before = inode_of(file);
    EXPECT_TRUE(cat::replace_file(file, "text"));
    EXPECT_EQ(content(file), "text");
    EXPECT_EQ(mode_of(file), 0751U);
    EXPECT_NE(inode_of(file), before);
    EXPECT_EQ(entries(), 1U);
    EXPECT_TRUE(cat::replace_file(file, ""));
    EXPECT_EQ(content(file), "");
}

TEST_F(Platform, a_symbolic_link_stays_and_its_target_is_replaced) {
    fs::create_directory(folder + "/sub");
    put(folder + "/sub/target", "old");
    fs::create_symlink("sub/target", folder + "/middle");
    fs::create_symlink("middle", folder + "/link");
    EXPECT_TRUE(cat::replace_file(folder + "/link", "new"));
    EXPECT_TRUE(fs::is_symlink(folder + "/link"));
    EXPECT_TRUE(fs::is_symlink(folder + "/middle"));
    EXPECT_EQ(content(folder + "/sub/target"), "new");
    EXPECT_EQ(entries(), 3U);
}

TEST_F(Platform, writing_to_a_dangling_link_creates_its_target) {
    fs::create_symlink(folder + "/target", folder + "/link");
    EXPECT_TRUE(cat::can_write_file(folder + "/link"));
    EXPECT_TRUE(cat::replace_file(folder + "/link", "new"));
    EXPECT_TRUE(fs::is_symlink(folder + "/link"));
    EXPECT_EQ(content(folder + "/target"), "new");
}

TEST_F(Platform, a_file_with_several_names_is_written_in_place) {
    for (char const *text : {"short", "a text longer than the old one"}) {
        put(file, "the old content");
        fs::remove(folder + "/other");
        fs::create_hard_link(file, folder + "/other");
        EXPECT_TRUE(cat::replace_file(file, text));
        EXPECT_EQ(content(folder + "/other"), text);
        EXPECT_EQ(inode_of(file), inode_of(folder + "/other"));
        EXPECT_EQ(entries(), 2U);
    }
}

TEST_F(Platform, a_device_is_written_directly) {
    EXPECT_TRUE(cat::replace_file("/dev/null", "text"));
    EXPECT_FALSE(cat::replace_file("/dev/full", "text"));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(Platform, a_folder_is_refused) {
    EXPECT_FALSE(cat::replace_file(folder, "text"));
    EXPECT_FALSE(cat::replace_file("", "text"));
    EXPECT_EQ(entries(), 0U);
}

// A system call fails, so that the replacement fails, too.
template <class Break> void expect_old_content(std::string const &file, Break const &break_it) {
    put(file, "old");
    cat::os_calls const before = cat::os;
    break_it();
    EXPECT_FALSE(cat::replace_file(file, "new"));
    cat::os = before;
    EXPECT_EQ(content(file), "old");
}

template <int Error> int fail(int) {
    errno = Error;
    return -1;
}

bool is_new(int flags) { return (flags & O_CREAT) || (flags & O_TMPFILE) == O_TMPFILE; }

TEST_F(Platform, a_full_disk_leaves_the_old_file_intact) {
    expect_old_content(file, [] {
        cat::os.write = [](int, void const *, size_t) -> ssize_t { return fail<ENOSPC>(0); };
    });
    expect_old_content(file, [] { cat::os.fsync = fail<ENOSPC>; });
    expect_old_content(file, [] {
        cat::os.close = [](int descriptor) {
            ::close(descriptor);
            return fail<EDQUOT>(0);
        };
    });
    expect_old_content(file, [] {
        cat::os.open = [](char const *path, int flags, mode_t mode) {
            return is_new(flags) ? fail<ENOSPC>(0) : ::open(path, flags, mode);
        };
    });
    EXPECT_EQ(entries(), 1U);
}

TEST_F(Platform, a_failed_rename_leaves_the_old_file_intact) {
    expect_old_content(
        file, [] { cat::os.rename = [](char const *, char const *) { return fail<EIO>(0); }; });
    EXPECT_EQ(entries(), 1U);
}

TEST_F(Platform, a_failed_write_does_not_create_a_missing_file) {
    cat::os.fsync = fail<EIO>;
    EXPECT_FALSE(cat::replace_file(file, "new"));
    EXPECT_EQ(entries(), 0U);
}

// The replacement by a rename is impossible, so the file is written in place.
template <class Break>
void expect_in_place(std::string const &file, Break const &break_it, std::string const &text) {
    put(file, "old");
    ino_t const before = inode_of(file);
    break_it();
    EXPECT_TRUE(cat::replace_file(file, text));
    EXPECT_EQ(content(file), text);
    EXPECT_EQ(inode_of(file), before);
}

TEST_F(Platform, a_file_is_written_in_place_if_a_rename_cannot_replace_it) {
    expect_in_place(
        file, [] { cat::os.rename = [](char const *, char const *) { return fail<EPERM>(0); }; },
        "new");
    expect_in_place(
        file, [] { cat::os.fchmod = [](int, mode_t) { return fail<EPERM>(0); }; }, "");
    expect_in_place(
        file,
        [] {
            cat::os.open = [](char const *path, int flags, mode_t mode) {
                return is_new(flags) ? fail<EACCES>(0) : ::open(path, flags, mode);
            };
        },
        "a longer text");
    EXPECT_EQ(entries(), 1U);
}

TEST_F(Platform, a_full_disk_leaves_the_file_in_place_intact) {
    put(file, "old");
    fs::create_hard_link(file, folder + "/other");
    cat::os.fallocate = [](int, off_t, off_t) { return fail<ENOSPC>(0); };
    EXPECT_FALSE(cat::replace_file(file, "a longer text"));
    EXPECT_EQ(content(file), "old");
    cat::os.fallocate = [](int, off_t, off_t) { return fail<EOPNOTSUPP>(0); };
    EXPECT_TRUE(cat::replace_file(file, "a longer text"));
    EXPECT_EQ(content(file), "a longer text");
}

TEST_F(Platform, temporary_names_in_use_are_skipped) {
    put(file, "old");
    static int attempts;
    attempts = 0;
    cat::os.open = [](char const *path, int flags, mode_t mode) {
        if ((flags & O_TMPFILE) == O_TMPFILE) return fail<EOPNOTSUPP>(0);
        return flags & O_CREAT && attempts++ < 3 ? fail<EEXIST>(0) : ::open(path, flags, mode);
    };
    EXPECT_TRUE(cat::replace_file(file, "new"));
    EXPECT_EQ(content(file), "new");
    EXPECT_EQ(attempts, 4);
}

TEST_F(Platform, a_process_killed_between_the_steps_leaves_the_old_or_the_new_content) {
    static int steps_left;
    auto const end_after = [](int steps) {
        steps_left = steps;
        cat::os.write = [](int descriptor, void const *bytes, size_t count) {
            if (steps_left-- == 0) ::_exit(9);
            return ::write(descriptor, bytes, count);
        };
        cat::os.fsync = [](int descriptor) {
            if (steps_left-- == 0) ::_exit(9);
            return ::fsync(descriptor);
        };
        cat::os.rename = [](char const *from, char const *to) {
            if (steps_left-- == 0) ::_exit(9);
            int const result = ::rename(from, to);
            if (steps_left-- == 0) ::_exit(9);
            return result;
        };
    };
    for (int steps = 0; steps < 4; ++steps) {
        put(file, "old");
        pid_t const child = ::fork();
        if (child == 0) {
            end_after(steps);
            cat::replace_file(file, "new");
            ::_exit(0);
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(WEXITSTATUS(status), 9) << steps;
        EXPECT_EQ(content(file), steps < 3 ? "old" : "new");
    }
}

} // namespace
