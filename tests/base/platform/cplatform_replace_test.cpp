// Replacing a file: attributes and access lists, what the file must hold before, and backups.

#include "qrv/base/platform/cplatform.h"
#include "tests/text/file/save_support.h"

#include <array>
#include <cstdint>
#include <cstring>

using namespace save_test;
using cat::Replaced;

namespace {

// An access list as the system has it in an attribute: these entries, of the user `named` too.
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

class Replace : public SaveTest {
  protected:
    Replace() { put(file_, "old"); }

    static std::string attribute(std::string const &path, char const *name) {
        std::string value(1000, '\0');
        ssize_t const size = ::getxattr(path.c_str(), name, value.data(), value.size());
        return size < 0 ? "none" : value.substr(0, static_cast<size_t>(size));
    }
    static bool give(std::string const &path, char const *name, std::string const &value) {
        return ::setxattr(path.c_str(), name, value.data(), value.size(), 0) == 0;
    }
    static ino_t inode_of(std::string const &path) {
        struct stat info {};
        return ::stat(path.c_str(), &info) == 0 ? info.st_ino : 0;
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

TEST_F(Replace, content_by_a_function_goes_to_new_files_and_to_both_kinds_of_old_ones) {
    auto const write = [](int descriptor) {
        return cat::write_all(descriptor, "piece ") && cat::write_all(descriptor, "by piece");
    };
    std::string const other = folder_.file("other"), fresh = folder_.file("fresh");
    ASSERT_EQ(::link(file_.c_str(), other.c_str()), 0);
    EXPECT_EQ(cat::replace_file(file_, {14, write}, {}), Replaced::done);
    EXPECT_EQ(bytes_of(other), "piece by piece") << "written in place";
    ASSERT_EQ(::unlink(other.c_str()), 0);
    put(file_, "a text that is longer than the new one");
    ino_t const before = inode_of(file_);
    EXPECT_EQ(cat::replace_file(file_, {14, write}, {}), Replaced::done);
    EXPECT_EQ(bytes_of(file_), "piece by piece");
    EXPECT_NE(inode_of(file_), before);
    EXPECT_EQ(cat::replace_file(fresh, {14, write}, {}), Replaced::done);
    EXPECT_EQ(bytes_of(fresh), "piece by piece");
}

TEST_F(Replace, a_function_that_fails_leaves_the_file_as_it_was) {
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

TEST_F(Replace, attributes_stay) {
    if (!give(file_, "user.origin", "here")) return; // no attributes in this file system
    ASSERT_TRUE(give(file_, "user.empty", ""));
    ino_t const before = inode_of(file_);
    EXPECT_TRUE(cat::replace_file(file_, "new"));
    EXPECT_NE(inode_of(file_), before);
    EXPECT_EQ(attribute(file_, "user.origin"), "here");
    EXPECT_EQ(attribute(file_, "user.empty"), "");
}

TEST_F(Replace, attributes_of_a_file_without_permission_to_write_stay) {
    if (!give(file_, "user.origin", "here")) return; // no attributes in this file system
    ASSERT_EQ(::chmod(file_.c_str(), 0444), 0);
    if (::geteuid() != 0) return;
    EXPECT_TRUE(cat::replace_file(file_, "new"));
    EXPECT_EQ(attribute(file_, "user.origin"), "here");
    EXPECT_EQ(mode_of(file_), 0444u);
}

TEST_F(Replace, an_access_list_stays) {
    std::string const list = access_list(6, 6);
    if (!give(file_, access_attribute, list)) return; // no access lists in this file system
    ASSERT_EQ(mode_of(file_), 0660u);
    EXPECT_TRUE(cat::replace_file(file_, "new"));
    EXPECT_EQ(attribute(file_, access_attribute), list);
    EXPECT_EQ(mode_of(file_), 0660u);
}

TEST_F(Replace, the_access_list_of_the_folder_opens_the_file_to_nobody) {
    std::string const list = access_list(6, 6);
    if (!give(folder_.path(), "system.posix_acl_default", list))
        return; // no access lists in this file system
    ASSERT_EQ(::chmod(file_.c_str(), 0640), 0);
    for (bool const unnamed : {true, false}) {
        if (!unnamed) refuse_unnamed_files();
        EXPECT_TRUE(cat::replace_file(file_, "new"));
        EXPECT_EQ(attribute(file_, access_attribute), "none");
        EXPECT_EQ(mode_of(file_), 0640u);
    }
    EXPECT_TRUE(cat::replace_file(folder_.file("second"), "new"));
    EXPECT_NE(attribute(folder_.file("second"), access_attribute), "none") << "the folder's rule";
}

TEST_F(Replace, a_file_whose_attributes_cannot_be_given_to_another_is_written_in_place) {
    if (!give(file_, "user.origin", "here")) return; // no attributes in this file system
    ino_t const before = inode_of(file_);
    cat::os.fsetxattr = refuse_attribute<EPERM>;
    EXPECT_TRUE(cat::replace_file(file_, "new"));
    EXPECT_EQ(inode_of(file_), before);
    EXPECT_EQ(bytes_of(file_), "new");
    EXPECT_EQ(attribute(file_, "user.origin"), "here");
    EXPECT_EQ(folder_.names(), "file");
}

TEST_F(Replace, a_file_in_a_file_system_without_attributes_is_written_beside) {
    ino_t const before = inode_of(file_);
    cat::os.listxattr = [](char const *, char *, size_t) -> ssize_t {
        errno = ENOTSUP;
        return -1;
    };
    EXPECT_TRUE(cat::replace_file(file_, "new"));
    EXPECT_NE(inode_of(file_), before);
}

// --- what the file must hold ---

TEST_F(Replace, a_file_that_holds_what_is_expected_is_replaced) {
    EXPECT_EQ(replace({.expected = "old"}), Replaced::done);
    EXPECT_EQ(bytes_of(file_), "new");
}

TEST_F(Replace, a_file_that_was_changed_stays) {
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

TEST_F(Replace, a_file_that_was_removed_is_not_created_again) {
    std::filesystem::remove(file_);
    EXPECT_EQ(replace({.expected = "old"}), Replaced::changed);
    EXPECT_EQ(folder_.names(), "");
}

// The comparison is the last thing before the rename.
TEST_F(Replace, a_change_while_the_new_file_is_written_is_seen) {
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

TEST_F(Replace, a_backup_has_bytes_and_mode_and_attributes_of_the_old_file) {
    bool const attributes = give(file_, "user.origin", "here");
    ASSERT_EQ(::chmod(file_.c_str(), 0640), 0);
    EXPECT_EQ(replace({.backup = "~"}), Replaced::done);
    EXPECT_EQ(bytes_of(file_), "new");
    EXPECT_EQ(bytes_of(backup_), "old");
    EXPECT_EQ(mode_of(backup_), 0640u);
    if (attributes) {
        EXPECT_EQ(attribute(backup_, "user.origin"), "here");
    }
}

TEST_F(Replace, an_older_backup_is_replaced_even_one_that_must_not_be_written) {
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

TEST_F(Replace, a_backup_that_is_the_files_other_name_becomes_a_file_of_its_own) {
    std::filesystem::create_hard_link(file_, backup_);
    EXPECT_EQ(replace({.backup = "~"}), Replaced::done);
    EXPECT_EQ(bytes_of(file_), "new");
    EXPECT_EQ(bytes_of(backup_), "old");
}

TEST_F(Replace, without_a_plain_file_for_the_backup_nothing_is_written) {
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

TEST_F(Replace, a_backup_that_cannot_have_the_owner_has_no_rights_for_others) {
    if (::geteuid() != 0) return; // only root can give files away
    ASSERT_EQ(::chown(file_.c_str(), 12345, 12345), 0);
    ASSERT_EQ(::chmod(file_.c_str(), 0666), 0);
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
