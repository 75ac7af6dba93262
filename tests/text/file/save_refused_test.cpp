// Saving when the system refuses: limits on the length of files, full devices, permissions, and
// names of something other than a plain file. Either the old file stays intact or the new one
// replaces it; the message names the file.

#include "qrv/containers/cattr.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/file/cfile.h"
#include "qrv/text/file/cpersistentmap.h"
#include "tests/text/file/save_support.h"

#include <csignal>
#include <sys/resource.h>
#include <thread>

using namespace save_test;

namespace {

std::string const text_of_1000 = std::string(1000, 'x'); // its text is the same, without quotes
std::string const old_text = "{old=1}";

class SaveRefused : public PersistentTest {
  protected:
    std::string const file_ = folder_.file("map");

    bool save(std::string const &name) const {
        return write2file(*cat::of(text_of_1000), name.c_str(), false);
    }
    bool save() const { return save(file_); }
    static std::string refused(std::string const &name) {
        return "Cannot open file for write: " + name + "\n";
    }
    // Loads the map, adds a long entry, and saves it.
    static void load_and_save() {
        cPersistentMap map("map", false);
        map.busmap()["long"] = cat::of(text_of_1000);
    }
    // Runs the body in a child process of the user nobody; its expectations must hold.
    template <class Body> void as_nobody(Body const &body) {
        EXPECT_EQ(in_child([&] {
                      become_nobody(folder_);
                      body();
                  }),
                  0);
    }
};

// Limits the length of files to 100 bytes.
void limit_files(bool ignore_signal) {
    rlimit const limit{100, 100};
    EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    EXPECT_NE(::signal(SIGXFSZ, ignore_signal ? SIG_IGN : SIG_DFL), SIG_ERR);
}

} // namespace

// --- space ---

TEST_F(SaveRefused,
       a_limit_on_the_length_of_files_leaves_the_old_file_and_does_not_end_the_process) {
    for (bool const ignore_signal : {true, false})
        for (bool const linked : {false, true}) {
            std::filesystem::remove(folder_.file("twin"));
            put(file_, old_text);
            if (linked) std::filesystem::create_hard_link(file_, folder_.file("twin"));
            int const status = in_child([&] {
                limit_files(ignore_signal);
                bool const done = save();
                int const why = errno;
                if (done) ::_exit(2);
                if (why != EFBIG) ::_exit(3);
            });
            EXPECT_EQ(status, 0);
            EXPECT_EQ(bytes_of(file_), old_text);
            EXPECT_EQ(folder_.names(), linked ? "map twin" : "map");
        }
}

TEST_F(SaveRefused, a_file_as_long_as_the_limit_is_written) {
    put(file_, old_text);
    EXPECT_EQ(in_child([&] {
                  limit_files(false);
                  if (!write2file(*cat::of(std::string(100, 'x')), file_.c_str(), false))
                      ::_exit(2);
                  if (write2file(*cat::of(std::string(101, 'y')), file_.c_str(), false)) ::_exit(3);
              }),
              0);
    EXPECT_EQ(bytes_of(file_), std::string(100, 'x'));
}

TEST_F(SaveRefused, a_persistent_map_without_space_is_reported_and_leaves_the_old_file) {
    for (std::string const &text : {old_text, std::string("[damaged]")}) {
        put(file_, text);
        EXPECT_EQ(in_child([&] {
                      limit_files(false);
                      load_and_save();
                      if (messages() != "Cannot write file: " + file_ + "\n") ::_exit(2);
                  }),
                  0);
        EXPECT_EQ(bytes_of(file_), text);
    }
    EXPECT_EQ(folder_.names(), "map map.bad");
    EXPECT_EQ(bytes_of(file_ + ".bad"), "[damaged]");
}

TEST_F(SaveRefused, a_damaged_file_without_space_for_a_copy_is_not_replaced) {
    std::string const text = "[" + std::string(200, ' ') + "]";
    put(file_, text);
    EXPECT_EQ(in_child([&] {
                  limit_files(false);
                  { cPersistentMap("map", false).busmap(); } // its own text is short enough
                  if (messages() != "Cannot keep damaged file: " + file_ + "\n") ::_exit(2);
              }),
              0);
    EXPECT_EQ(bytes_of(file_), text);
    EXPECT_EQ(folder_.names(), "map");
}

TEST_F(SaveRefused, a_full_device_returns_false) {
    EXPECT_FALSE(save("/dev/full"));
    EXPECT_EQ(errno, ENOSPC);
    std::filesystem::create_symlink("/dev/full", file_);
    EXPECT_FALSE(save());
    load_and_save();
    EXPECT_EQ(messages(), "Cannot write file: " + file_ + "\n");
    EXPECT_EQ(folder_.names(), "map");
    EXPECT_TRUE(std::filesystem::is_symlink(file_));
}

// --- permissions ---

TEST_F(SaveRefused, an_old_file_in_a_read_only_folder_is_written_in_place) {
    put(file_, old_text);
    as_nobody([&] {
        EXPECT_EQ(::chmod(folder_.path().c_str(), 0555), 0);
        struct stat before {
        }, after{};
        EXPECT_EQ(::stat(file_.c_str(), &before), 0);
        EXPECT_TRUE(save());
        EXPECT_EQ(::stat(file_.c_str(), &after), 0);
        EXPECT_EQ(before.st_ino, after.st_ino);
        EXPECT_FALSE(save(folder_.file("new")));
        EXPECT_EQ(messages(), refused(folder_.file("new")));
    });
    EXPECT_EQ(bytes_of(file_), text_of_1000);
    EXPECT_EQ(folder_.names(), "map");
}

TEST_F(SaveRefused, a_damaged_file_in_a_read_only_folder_is_not_replaced) {
    put(file_, "[damaged]");
    as_nobody([&] {
        EXPECT_EQ(::chmod(folder_.path().c_str(), 0555), 0);
        load_and_save();
        EXPECT_EQ(messages(), "Cannot keep damaged file: " + file_ + "\n");
    });
    EXPECT_EQ(bytes_of(file_), "[damaged]");
    EXPECT_EQ(folder_.names(), "map");
}

TEST_F(SaveRefused, a_folder_without_search_permission_is_reported) {
    put(file_, old_text);
    as_nobody([&] {
        EXPECT_EQ(::chmod(folder_.path().c_str(), 0), 0);
        EXPECT_FALSE(save());
        EXPECT_EQ(messages(), refused(file_));
        load_and_save();
        EXPECT_EQ(messages(), refused(file_));
        EXPECT_EQ(::chmod(folder_.path().c_str(), 0700), 0);
    });
    EXPECT_EQ(bytes_of(file_), old_text);
}

TEST_F(SaveRefused, a_permission_lost_between_loading_and_saving_is_reported) {
    put(file_, old_text);
    as_nobody([&] {
        {
            cPersistentMap map("map", false);
            map.busmap()["new"] = cat::of(2);
            EXPECT_EQ(::chmod(folder_.path().c_str(), 0), 0);
        }
        EXPECT_EQ(messages(), refused(file_));
        EXPECT_EQ(::chmod(folder_.path().c_str(), 0700), 0);
    });
    EXPECT_EQ(bytes_of(file_), old_text);
}

TEST_F(SaveRefused, a_read_only_file_is_reported_and_unchanged) {
    put(file_, old_text);
    as_nobody([&] {
        EXPECT_EQ(::chmod(file_.c_str(), 0400), 0);
        EXPECT_FALSE(save());
        EXPECT_EQ(messages(), refused(file_));
        EXPECT_EQ(mode_of(file_), 0400u);
    });
    EXPECT_EQ(bytes_of(file_), old_text);
}

TEST_F(SaveRefused, a_read_only_file_of_a_persistent_map_is_written) {
    put(file_, old_text);
    as_nobody([&] {
        EXPECT_EQ(::chmod(file_.c_str(), 0444), 0);
        { cPersistentMap("map", false).busmap(); }
        EXPECT_EQ(messages(), "");
        EXPECT_EQ(mode_of(file_), 0644u);
    });
    EXPECT_NE(bytes_of(file_), old_text);
}

TEST_F(SaveRefused, a_file_that_may_be_written_but_not_read_is_replaced) {
    put(file_, old_text);
    as_nobody([&] {
        EXPECT_EQ(::chmod(file_.c_str(), 0200), 0);
        EXPECT_TRUE(save());
        EXPECT_EQ(messages(), "");
        EXPECT_EQ(mode_of(file_), 0200u);
    });
    EXPECT_EQ(::chmod(file_.c_str(), 0600), 0);
    EXPECT_EQ(bytes_of(file_), text_of_1000);
}

TEST_F(SaveRefused, a_persistent_map_never_overwrites_a_file_that_it_could_not_read) {
    put(file_, old_text);
    as_nobody([&] {
        EXPECT_EQ(::chmod(file_.c_str(), 0200), 0);
        load_and_save();
        EXPECT_EQ(messages(), "Cannot keep damaged file: " + file_ + "\n");
    });
    EXPECT_EQ(::chmod(file_.c_str(), 0600), 0);
    EXPECT_EQ(bytes_of(file_), old_text);
    EXPECT_EQ(folder_.names(), "map");
}

// The file belongs to another user, but its mode allows writing. A new file cannot be given to that
// user, so the old one is overwritten.
TEST_F(SaveRefused, a_file_of_another_owner_is_written_in_place_and_its_copy_is_private) {
    put(file_, "[damaged]");
    EXPECT_EQ(::chmod(file_.c_str(), 0664), 0);
    cat::os.fstat = [](int descriptor, struct stat *info) {
        int const result = ::fstat(descriptor, info);
        ++info->st_uid;
        return result;
    };
    cat::os.fchown = [](int, uid_t, gid_t) {
        errno = EPERM;
        return -1;
    };
    struct stat before {
    }, after{};
    ASSERT_EQ(::stat(file_.c_str(), &before), 0);
    load_and_save();
    EXPECT_EQ(messages(), "");
    ASSERT_EQ(::stat(file_.c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(mode_of(file_), 0664u);
    EXPECT_NE(bytes_of(file_), "[damaged]");
    EXPECT_EQ(bytes_of(file_ + ".bad"), "[damaged]");
    EXPECT_EQ(mode_of(file_ + ".bad"), 0600u);
    EXPECT_EQ(folder_.names(), "map map.bad");
}

// --- names ---

TEST_F(SaveRefused, saving_to_a_dangling_link_creates_its_target) {
    std::filesystem::create_symlink("target", file_);
    EXPECT_TRUE(save());
    EXPECT_TRUE(std::filesystem::is_symlink(file_));
    EXPECT_EQ(bytes_of(folder_.file("target")), text_of_1000);
    EXPECT_EQ(folder_.names(), "map target");
    EXPECT_EQ(messages(), "");
}

TEST_F(SaveRefused, a_link_into_a_missing_folder_or_to_itself_is_reported) {
    for (char const *target : {"none/target", "map"}) {
        std::filesystem::remove(file_);
        std::filesystem::create_symlink(target, file_);
        EXPECT_FALSE(save());
        EXPECT_EQ(messages(), refused(file_));
        load_and_save();
        EXPECT_EQ(messages(), refused(file_));
        EXPECT_EQ(folder_.names(), "map");
    }
}

TEST_F(SaveRefused, a_folder_and_a_missing_one_are_reported) {
    std::filesystem::create_directory(file_);
    for (std::string const &name : {file_, file_ + "/", folder_.file("none/map"), file_ + "/x/y"}) {
        EXPECT_FALSE(save(name));
        EXPECT_EQ(messages(), refused(name));
    }
    load_and_save();
    EXPECT_EQ(messages(), refused(file_));
    EXPECT_EQ(folder_.names(), "map");
    EXPECT_TRUE(std::filesystem::is_empty(file_));
}

TEST_F(SaveRefused, a_pipe_receives_the_text_and_stays_a_pipe) {
    ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
    std::string read;
    std::thread reader([&] {
        std::ifstream is(file_, std::ios::binary);
        read.assign(std::istreambuf_iterator<char>(is), std::istreambuf_iterator<char>());
    });
    EXPECT_TRUE(save());
    reader.join();
    EXPECT_EQ(read, text_of_1000);
    EXPECT_TRUE(std::filesystem::is_fifo(file_));
    EXPECT_EQ(folder_.names(), "map");
}

TEST_F(SaveRefused, a_name_may_contain_a_line_feed_or_any_bytes) {
    for (std::string const &name :
         {std::string("a\nb"), std::string("\xff\x01 %s%n"), std::string(251, 'n')}) {
        std::string const file = folder_.file(name);
        put(file, old_text);
        EXPECT_TRUE(save(file));
        EXPECT_EQ(bytes_of(file), text_of_1000);
        EXPECT_EQ(folder_.names(), name);
        std::string const below = file + "/x";
        EXPECT_FALSE(save(below));
        EXPECT_EQ(messages(), refused(below));
        std::filesystem::remove(file);
    }
}

TEST_F(SaveRefused, a_damaged_file_is_not_replaced_if_the_name_of_its_copy_is_too_long) {
    for (std::size_t const length : {251u, 252u}) {
        std::string const name(length, 'n'), file = folder_.file(name);
        put(file, "[damaged]");
        { cPersistentMap(name.c_str(), false).busmap(); }
        bool const fits = length + 4 <= 255;
        EXPECT_EQ(messages(), fits ? "" : "Cannot keep damaged file: " + file + "\n");
        EXPECT_EQ(bytes_of(file) == "[damaged]", !fits);
    }
}

TEST_F(SaveRefused, a_too_long_name_is_reported) {
    std::string const name = folder_.file(std::string(256, 'n')), path(5000, '/');
    EXPECT_FALSE(save(name));
    EXPECT_EQ(messages(), refused(name));
    EXPECT_FALSE(save(path));
    EXPECT_EQ(messages(), refused(path));
    { cPersistentMap(std::string(5000, 'n').c_str(), false).busmap(); }
    EXPECT_EQ(messages(), refused(folder_.file(std::string(5000, 'n'))));
}
