// Replacing a file: extended attributes and access lists, a check of the old content, and backups.

#include "qrv/base/platform/cplatform.h"
#include "tests/text/file/save_support.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <map>
#include <string>

using namespace save_test;
using cat::Replaced;

namespace {

// An access list as the value of a system attribute: these entries and one for the user `named`.
std::string access_list(std::uint16_t named_rights, std::uint16_t mask) {
    struct cEntry {
        std::uint16_t tag, rights;
        std::uint32_t id;
    };
    constexpr std::uint32_t version = 2, none = 0xFFFFFFFF, named = 12345;
    std::array<cEntry, 5> const entries{
        {{1, 6, none}, {2, named_rights, named}, {4, 4, none}, {16, mask, none}, {32, 0, none}}};
    std::string bytes(sizeof version + sizeof entries, '\0');
    std::memcpy(bytes.data(), &version, sizeof version);
    std::memcpy(bytes.data() + sizeof version, entries.data(), sizeof entries);
    return bytes;
}

constexpr char const *access_attribute = "system.posix_acl_access";

// The attributes of files in memory, for file systems that have none.
std::map<ino_t, std::map<std::string, std::string>> in_memory;

ino_t inode_of(std::string const &path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 ? info.st_ino : 0;
}
ino_t inode_of(int descriptor) {
    struct stat info {};
    return ::fstat(descriptor, &info) == 0 ? info.st_ino : 0;
}

ssize_t names_in_memory(ino_t file, char *names, size_t size) {
    std::string all;
    for (auto const &[name, value] : in_memory[file]) all += name + '\0';
    return static_cast<ssize_t>(all.copy(names, size));
}

ssize_t value_in_memory(ino_t file, char const *name, void *value, size_t size) {
    auto const found = in_memory[file].find(name);
    if (found != in_memory[file].end())
        return static_cast<ssize_t>(found->second.copy(static_cast<char *>(value), size));
    errno = ENODATA;
    return -1;
}

void use_attributes_in_memory() {
    cat::os.listxattr = [](char const *path, char *names, size_t size) {
        return names_in_memory(inode_of(path), names, size);
    };
    cat::os.flistxattr = [](int file, char *names, size_t size) {
        return names_in_memory(inode_of(file), names, size);
    };
    cat::os.getxattr = [](char const *path, char const *name, void *value, size_t size) {
        return value_in_memory(inode_of(path), name, value, size);
    };
    cat::os.fgetxattr = [](int file, char const *name, void *value, size_t size) {
        return value_in_memory(inode_of(file), name, value, size);
    };
    cat::os.fsetxattr = [](int file, char const *name, void const *value, size_t size, int) {
        in_memory[inode_of(file)][name].assign(static_cast<char const *>(value), size);
        return 0;
    };
    cat::os.fremovexattr = [](int file, char const *name) {
        return in_memory[inode_of(file)].erase(name) == 1 ? 0 : -1;
    };
}

class Replace : public SaveTest {
  protected:
    Replace() { put(file_, "old"); }
    ~Replace() override { in_memory.clear(); }

    static std::string attribute(std::string const &path, char const *name) {
        std::string value(1000, '\0');
        ssize_t const size = cat::os.getxattr(path.c_str(), name, value.data(), value.size());
        return size < 0 ? "none" : value.substr(0, static_cast<size_t>(size));
    }
    static bool set_in_system(std::string const &path, char const *name, std::string const &value) {
        return ::setxattr(path.c_str(), name, value.data(), value.size(), 0) == 0;
    }
    void give(char const *name, std::string const &value) const {
        if (in_memory.empty() && set_in_system(file_, name, value)) return;
        use_attributes_in_memory();
        in_memory[inode_of(file_)][name] = value;
    }
    Replaced replace(cat::ReplaceOptions const &options) const {
        return cat::replace_file(file_, "new", options);
    }
    template <int Error> static int refuse_attribute(int, char const *, void const *, size_t, int) {
        errno = Error;
        return -1;
    }

    std::string const file_ = folder_.file("file");
    std::string const backup_ = folder_.file("file~");
};

// --- content that is not in memory ---

TEST_F(Replace, a_function_can_write_new_files_and_both_kinds_of_old_ones) {
    auto const write = [](int descriptor) {
        return cat::write_all(descriptor, "piece ") && cat::write_all(descriptor, "by piece");
    };
    std::string const other = folder_.file("other"), fresh = folder_.file("fresh");
    ASSERT_EQ(::link(file_.c_str(), other.c_str()), 0);
    EXPECT_EQ(cat::replace_file(file_, {14, write}, {}), Replaced::done);
    EXPECT_EQ(bytes_of(other), "piece by piece") << "a file with two links is written in place";
    ASSERT_EQ(::unlink(other.c_str()), 0);
    put(file_, "a text that is longer than the new one");
    ino_t const before = inode_of(file_);
    EXPECT_EQ(cat::replace_file(file_, {14, write}, {}), Replaced::done);
    EXPECT_EQ(bytes_of(file_), "piece by piece");
    EXPECT_NE(inode_of(file_), before);
    EXPECT_EQ(cat::replace_file(fresh, {14, write}, {}), Replaced::done);
    EXPECT_EQ(bytes_of(fresh), "piece by piece");
}

TEST_F(Replace, a_function_that_fails_leaves_the_file_unchanged) {
    auto const fail = [](int descriptor) {
        cat::write_all(descriptor, "piece");
        errno = ENOSPC;
        return false;
    };
    std::string const other = folder_.file("other"), fresh = folder_.file("fresh");
    EXPECT_EQ(cat::replace_file(file_, {10, fail}, {}), Replaced::failed);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(bytes_of(file_), "old");
    ASSERT_EQ(::link(file_.c_str(), other.c_str()), 0);
    EXPECT_EQ(cat::replace_file(file_, {10, fail}, {}), Replaced::failed);
    EXPECT_EQ(bytes_of(other), "old");
    EXPECT_EQ(cat::replace_file(fresh, {10, fail}, {}), Replaced::failed);
    EXPECT_FALSE(cat::file_exists(fresh));
}

// --- attributes ---

TEST_F(Replace, replacing_preserves_attributes) {
    give("user.origin", "here");
    give("user.empty", "");
    ino_t const before = inode_of(file_);
    EXPECT_TRUE(cat::replace_file(file_, "new"));
    EXPECT_NE(inode_of(file_), before);
    EXPECT_EQ(attribute(file_, "user.origin"), "here");
    EXPECT_EQ(attribute(file_, "user.empty"), "");
}

TEST_F(Replace, replacing_a_read_only_file_preserves_attributes) {
    give("user.origin", "here");
    ASSERT_EQ(::chmod(file_.c_str(), 0444), 0);
    bool const root = ::geteuid() == 0; // may also write read-only files
    EXPECT_EQ(cat::replace_file(file_, "new"), root);
    EXPECT_EQ(bytes_of(file_), root ? "new" : "old");
    EXPECT_EQ(attribute(file_, "user.origin"), "here");
    EXPECT_EQ(mode_of(file_), 0444u);
}

TEST_F(Replace, replacing_preserves_an_access_list) {
    std::string const list = access_list(6, 6);
    ASSERT_EQ(::chmod(file_.c_str(), 0660), 0); // the mode that the list has as its effect
    give(access_attribute, list);
    ASSERT_EQ(mode_of(file_), 0660u);
    EXPECT_TRUE(cat::replace_file(file_, "new"));
    EXPECT_EQ(attribute(file_, access_attribute), list);
    EXPECT_EQ(mode_of(file_), 0660u);
}

TEST_F(Replace, the_access_list_of_the_folder_grants_no_access_to_the_file) {
    std::string const list = access_list(6, 6);
    bool const has_lists = set_in_system(folder_.path(), "system.posix_acl_default", list);
    if (!has_lists) std::cout << "not tested: this file system has no access lists\n";
    ASSERT_EQ(::chmod(file_.c_str(), 0640), 0);
    for (bool const unnamed : {true, false}) {
        if (!unnamed) refuse_unnamed_files();
        EXPECT_TRUE(cat::replace_file(file_, "new"));
        EXPECT_EQ(attribute(file_, access_attribute), "none");
        EXPECT_EQ(mode_of(file_), 0640u);
    }
    EXPECT_TRUE(cat::replace_file(folder_.file("second"), "new"));
    EXPECT_EQ(attribute(folder_.file("second"), access_attribute) != "none", has_lists)
        << "a new file gets the default rule of its folder";
}

TEST_F(Replace, a_file_whose_attributes_cannot_be_copied_is_written_in_place) {
    give("user.origin", "here");
    ino_t const before = inode_of(file_);
    cat::os.fsetxattr = refuse_attribute<EPERM>;
    EXPECT_TRUE(cat::replace_file(file_, "new"));
    EXPECT_EQ(inode_of(file_), before);
    EXPECT_EQ(bytes_of(file_), "new");
    EXPECT_EQ(attribute(file_, "user.origin"), "here");
    EXPECT_EQ(folder_.names(), "file");
}

TEST_F(Replace, a_file_in_a_file_system_without_attributes_is_replaced_by_a_rename) {
    ino_t const before = inode_of(file_);
    cat::os.listxattr = [](char const *, char *, size_t) -> ssize_t {
        errno = ENOTSUP;
        return -1;
    };
    EXPECT_TRUE(cat::replace_file(file_, "new"));
    EXPECT_NE(inode_of(file_), before);
}

// --- expected content ---

TEST_F(Replace, a_file_with_the_expected_content_is_replaced) {
    EXPECT_EQ(replace({.expected = "old"}), Replaced::done);
    EXPECT_EQ(bytes_of(file_), "new");
}

TEST_F(Replace, a_changed_file_is_not_replaced) {
    std::filesystem::create_hard_link(file_, folder_.file("other"));
    for (char const *const expected : {"ol", "old ", "", "OLD"}) {
        EXPECT_EQ(replace({.expected = expected}), Replaced::changed);
        EXPECT_EQ(errno, ESTALE);
        EXPECT_EQ(bytes_of(file_), "old");
    }
    std::filesystem::remove(folder_.file("other"));
    EXPECT_EQ(replace({.expected = "ol", .backup = "~"}), Replaced::changed);
    EXPECT_EQ(bytes_of(file_), "old");
    EXPECT_EQ(folder_.names(), "file");
}

TEST_F(Replace, a_removed_file_is_not_created_again) {
    std::filesystem::remove(file_);
    EXPECT_EQ(replace({.expected = "old"}), Replaced::changed);
    EXPECT_EQ(folder_.names(), "");
}

// The comparison is the last step before the rename.
TEST_F(Replace, a_change_while_the_new_file_is_written_is_noticed) {
    static std::string const file = file_;
    cat::os.fsync = [](int) {
        put(file, "theirs");
        return 0;
    };
    EXPECT_EQ(replace({.expected = "old", .backup = "~"}), Replaced::changed);
    EXPECT_EQ(bytes_of(file_), "theirs");
    EXPECT_EQ(folder_.names(), "file");
}

// --- backups ---

TEST_F(Replace, a_backup_has_the_bytes_mode_and_attributes_of_the_old_file) {
    give("user.origin", "here");
    ASSERT_EQ(::chmod(file_.c_str(), 0640), 0);
    EXPECT_EQ(replace({.backup = "~"}), Replaced::done);
    EXPECT_EQ(bytes_of(file_), "new");
    EXPECT_EQ(bytes_of(backup_), "old");
    EXPECT_EQ(mode_of(backup_), 0640u);
    EXPECT_EQ(attribute(backup_, "user.origin"), "here");
}

TEST_F(Replace, an_older_backup_is_replaced_even_if_it_is_read_only) {
    put(backup_, "older");
    ASSERT_EQ(::chmod(backup_.c_str(), 0400), 0);
    EXPECT_EQ(replace({.backup = "~"}), Replaced::done);
    EXPECT_EQ(bytes_of(backup_), "old");
    EXPECT_EQ(folder_.names(), "file file~");
}

TEST_F(Replace, a_new_file_has_no_backup) {
    std::filesystem::remove(file_);
    EXPECT_EQ(replace({.backup = "~"}), Replaced::done);
    EXPECT_EQ(folder_.names(), "file");
}

TEST_F(Replace, a_link_has_its_backup_beside_its_target) {
    std::filesystem::create_directory(folder_.file("sub"));
    put(folder_.file("sub/target"), "old");
    std::filesystem::remove(file_);
    std::filesystem::create_symlink("sub/target", file_);
    EXPECT_EQ(replace({.backup = ".bak"}), Replaced::done);
    EXPECT_TRUE(std::filesystem::is_symlink(file_));
    EXPECT_EQ(bytes_of(folder_.file("sub/target.bak")), "old");
    EXPECT_EQ(bytes_of(folder_.file("sub/target")), "new");
}

TEST_F(Replace, a_file_with_two_names_has_a_backup_too) {
    std::filesystem::create_hard_link(file_, folder_.file("twin"));
    EXPECT_EQ(replace({.backup = "~"}), Replaced::done);
    EXPECT_EQ(bytes_of(folder_.file("twin")), "new");
    EXPECT_EQ(bytes_of(backup_), "old");
}

TEST_F(Replace, a_backup_that_is_another_name_of_the_file_becomes_a_separate_file) {
    std::filesystem::create_hard_link(file_, backup_);
    EXPECT_EQ(replace({.backup = "~"}), Replaced::done);
    EXPECT_EQ(bytes_of(file_), "new");
    EXPECT_EQ(bytes_of(backup_), "old");
}

TEST_F(Replace, nothing_is_written_if_the_backup_is_not_a_plain_file) {
    auto const refused = [this](int error, std::string const &suffix = "~") {
        EXPECT_EQ(replace({.backup = suffix}), Replaced::no_backup);
        EXPECT_EQ(std::string(std::strerror(errno)), std::strerror(error));
        EXPECT_EQ(bytes_of(file_), "old");
    };
    std::filesystem::create_directory(backup_);
    refused(EISDIR);
    std::filesystem::remove(backup_);
    put(folder_.file("other"), "other");
    std::filesystem::create_symlink("other", backup_);
    refused(EEXIST);
    EXPECT_EQ(bytes_of(folder_.file("other")), "other");
    EXPECT_TRUE(std::filesystem::is_symlink(backup_));
    std::filesystem::remove(backup_);
    refused(EINVAL, "/other");
    refused(ENAMETOOLONG, std::string(256, 'x'));
    EXPECT_EQ(folder_.names(), "file other");
}

TEST_F(Replace, a_backup_with_another_owner_is_closed_to_others) {
    ASSERT_EQ(::chmod(file_.c_str(), 0666), 0);
    cat::os.stat = [](char const *path, struct stat *info) {
        int const result = ::stat(path, info);
        info->st_uid = info->st_gid = 12345;
        return result;
    };
    cat::os.fchown = [](int, uid_t, gid_t) {
        errno = EPERM;
        return -1;
    };
    EXPECT_EQ(replace({.backup = "~"}), Replaced::done);
    EXPECT_EQ(mode_of(backup_), 0600u);
    EXPECT_EQ(bytes_of(backup_), "old");
    EXPECT_EQ(mode_of(file_), 0666u);
}

} // namespace
