// The safety of saving: each system call fails once with each of several errors, or the process is
// killed there. Afterwards the file has the complete old or new text, the result reports which, and
// no other file is left.

#include "qrv/base/platform/cplatform.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/file/cfile.h"
#include "qrv/text/file/cpersistentmap.h"
#include "tests/text/file/save_support.h"

#include <cstring>
#include <functional>

using namespace save_test;

namespace {

constexpr int most_calls = 200;
int const errors[] = {EPERM, EINTR,  EIO,    EAGAIN, ENOMEM,       EACCES, EBUSY, EMFILE,
                      EFBIG, ENOSPC, EDQUOT, EROFS,  ENAMETOOLONG, EXDEV,  ELOOP};

// A file and its surroundings, created again for each run.
struct cScene {
    char const *name;
    std::function<void(cFolder const &)> make;
    char const *names;         // the names in the folder afterwards
    bool unnamed_files = true; // false: the file system does not support files without a name
};

std::string const old_text = "{old=1}";

std::vector<cScene> const scenes{
    {"a plain file", [](cFolder const &f) { put(f.file("map"), old_text); }, "map"},
    {"a plain file with another mode",
     [](cFolder const &f) {
         put(f.file("map"), old_text);
         EXPECT_EQ(::chmod(f.file("map").c_str(), 0640), 0);
     },
     "map"},
    {"a symbolic link",
     [](cFolder const &f) {
         put(f.file("target"), old_text);
         std::filesystem::create_symlink("target", f.file("map"));
     },
     "map target"},
    {"two names",
     [](cFolder const &f) {
         put(f.file("map"), old_text);
         std::filesystem::create_hard_link(f.file("map"), f.file("twin"));
     },
     "map twin"},
    {"a plain file on a file system without unnamed files",
     [](cFolder const &f) { put(f.file("map"), old_text); }, "map", false},
};
cScene const &two_names = scenes[3];

// The scene's file system, until the end of the scope.
class cFileSystem {
  public:
    explicit cFileSystem(cScene const &scene) {
        if (!scene.unnamed_files) refuse_unnamed_files();
    }
    cFileSystem(cFileSystem const &) = delete;
    cFileSystem &operator=(cFileSystem const &) = delete;
    ~cFileSystem() { cat::os = before_; }

  private:
    cat::os_calls const before_ = cat::os;
};

class SaveSweep : public PersistentTest {
  protected:
    std::string bytes() const { return bytes_of(folder_.file("map")); }
    void make(cScene const &scene) {
        for (auto const &entry : std::filesystem::directory_iterator(folder_.path()))
            std::filesystem::remove_all(entry.path());
        scene.make(folder_);
        messages();
    }
    // For each scene, error and call: runs the body, in which that call fails, then the check.
    void each_failing_call(std::vector<cScene> const &all, std::function<void()> const &body,
                           std::function<void(cScene const &, int error)> const &check) {
        for (cScene const &scene : all)
            for (int const error : errors)
                for (int n = 0; n < most_calls; ++n) {
                    make(scene);
                    std::string hit;
                    {
                        cFileSystem const system(scene);
                        cOsFaults const faults(n, error);
                        body();
                        hit = faults.hit();
                    }
                    if (hit.empty()) {
                        EXPECT_GT(n, 5) << scene.name;
                        break;
                    }
                    SCOPED_TRACE(std::string(scene.name) + ", call " + std::to_string(n) + ", " +
                                 hit + ": " + std::strerror(error));
                    check(scene, error);
                }
    }
    // For each scene and call: runs the body in a process that ends at the call, then the check.
    void each_deadly_call(std::vector<cScene> const &all, std::function<void()> const &body,
                          std::function<void(cScene const &)> const &check) {
        for (cScene const &scene : all)
            for (int n = 0; n < most_calls; ++n) {
                make(scene);
                int const status = in_child([&] {
                    cFileSystem const system(scene);
                    cOsFaults const faults(n, cOsFaults::dies);
                    body();
                });
                SCOPED_TRACE(std::string(scene.name) + ", call " + std::to_string(n));
                if (status == 0) {
                    EXPECT_GT(n, 5) << scene.name;
                    break;
                }
                EXPECT_EQ(status, 9);
                check(scene);
            }
    }
    // The names in the folder, except files that a killed process was writing.
    std::string names_but_unfinished() const {
        std::string names = folder_.names();
        for (auto end = names.find("~ "); names.starts_with(".qrv") && end != names.npos;
             end = names.find("~ "))
            names.erase(0, end + 2);
        return names;
    }
};

std::string const new_text = "{ a text that is longer than the old one }";

cScene const no_file{"no file", [](cFolder const &) {}, "map"};
cScene const link_to_nothing{
    "a link to nothing",
    [](cFolder const &f) { std::filesystem::create_symlink("target", f.file("map")); },
    "map target"};

} // namespace

// --- the platform's replacement ---

TEST_F(SaveSweep, a_replacement_with_a_failing_call_leaves_old_or_new_and_reports_why) {
    bool done = false;
    int why = 0;
    each_failing_call(
        scenes,
        [&] {
            errno = 0;
            done = cat::replace_file(folder_.file("map"), new_text);
            why = errno;
        },
        [&](cScene const &scene, int error) {
            EXPECT_EQ(bytes(), done ? new_text : old_text);
            if (!done) {
                EXPECT_EQ(std::string(std::strerror(why)), std::strerror(error));
            }
            EXPECT_EQ(folder_.names(), scene.names);
        });
}

TEST_F(SaveSweep, a_file_shortened_in_place_is_also_restored_completely) {
    bool done = false;
    each_failing_call(
        {two_names}, [&] { done = cat::replace_file(folder_.file("map"), "{}"); },
        [&](cScene const &scene, int) {
            EXPECT_EQ(bytes(), done ? "{}" : old_text);
            EXPECT_EQ(folder_.names(), scene.names);
        });
}

TEST_F(SaveSweep, any_failure_preserves_permissions_and_links) {
    bool done = false;
    each_failing_call(
        scenes, [&] { done = cat::replace_file(folder_.file("map"), new_text); },
        [&](cScene const &scene, int) {
            std::string const name = scene.name;
            std::string const file = folder_.file("map");
            if (name == "a plain file with another mode") {
                EXPECT_EQ(mode_of(file), 0640u);
            }
            if (name == "a symbolic link") {
                EXPECT_TRUE(std::filesystem::is_symlink(file));
            }
            if (name == "two names") {
                EXPECT_EQ(bytes_of(folder_.file("twin")), bytes());
            }
        });
}

TEST_F(SaveSweep, a_replacement_killed_at_any_call_leaves_old_or_new) {
    int old_cases = 0, new_cases = 0, unfinished = 0;
    each_deadly_call(
        scenes, [&] { cat::replace_file(folder_.file("map"), new_text); },
        [&](cScene const &scene) {
            ++(bytes() == new_text ? new_cases : old_cases);
            EXPECT_TRUE(bytes() == new_text || bytes() == old_text) << bytes();
            EXPECT_EQ(names_but_unfinished(), scene.names);
            unfinished += folder_.names() != scene.names;
            cat::remove_unfinished(folder_.file("map"));
            EXPECT_EQ(folder_.names(), scene.names);
        });
    EXPECT_GT(old_cases, 20);
    EXPECT_GT(new_cases, 0);
    EXPECT_GT(unfinished, 5);
}

TEST_F(SaveSweep, a_new_file_is_complete_or_absent) {
    bool done = false;
    auto const check = [&](cScene const &scene, bool with_result) {
        bool const there = std::filesystem::exists(folder_.file("map"));
        if (there) {
            EXPECT_EQ(bytes(), new_text);
        }
        if (with_result) {
            EXPECT_EQ(there, done);
        }
        std::string const names = with_result ? folder_.names() : names_but_unfinished();
        std::string const without =
            scene.name == no_file.name ? "" : "map"; // the link itself always exists
        if (!names.starts_with(".qrv")) {            // the temporary file of a killed process
            EXPECT_EQ(names, there ? scene.names : without);
        }
    };
    auto const body = [&] { done = cat::replace_file(folder_.file("map"), new_text); };
    each_failing_call({no_file, link_to_nothing}, body,
                      [&](cScene const &scene, int) { check(scene, true); });
    each_deadly_call({no_file, link_to_nothing}, body,
                     [&](cScene const &scene) { check(scene, false); });
}

namespace {

std::string const older_text = "{ an older backup }";
std::vector<cScene> const backup_scenes{
    {"no backup yet", [](cFolder const &f) { put(f.file("map"), old_text); }, "map map~"},
    {"an older backup",
     [](cFolder const &f) {
         put(f.file("map"), old_text);
         put(f.file("map~"), older_text);
     },
     "map map~"},
    {"two names, and an older backup",
     [](cFolder const &f) {
         put(f.file("map"), old_text);
         put(f.file("map~"), older_text);
         std::filesystem::create_hard_link(f.file("map"), f.file("twin"));
     },
     "map map~ twin"},
    {"an older backup on a file system without unnamed files",
     [](cFolder const &f) {
         put(f.file("map"), old_text);
         put(f.file("map~"), older_text);
     },
     "map map~", false},
};

} // namespace

TEST_F(SaveSweep, a_backup_is_complete_after_any_failure_or_kill) {
    cat::Replaced result{};
    auto const body = [&] {
        result =
            cat::replace_file(folder_.file("map"), new_text, {.expected = old_text, .backup = "~"});
    };
    auto const check = [&](cScene const &scene, bool with_result) {
        EXPECT_TRUE(bytes() == new_text || bytes() == old_text) << bytes();
        bool const there = std::filesystem::exists(folder_.file("map~"));
        std::string const backup = there ? bytes_of(folder_.file("map~")) : older_text;
        EXPECT_TRUE(backup == old_text || backup == older_text) << backup;
        if (bytes() == new_text) {
            EXPECT_EQ(backup, old_text);
        }
        std::string const names = with_result ? folder_.names() : names_but_unfinished();
        EXPECT_EQ(names, there ? scene.names : "map");
    };
    each_failing_call(backup_scenes, body, [&](cScene const &scene, int) {
        check(scene, true);
        EXPECT_EQ(bytes() == new_text, result == cat::Replaced::done);
        EXPECT_NE(result, cat::Replaced::changed);
    });
    each_deadly_call(backup_scenes, body, [&](cScene const &scene) { check(scene, false); });
}

// --- copies ---

TEST_F(SaveSweep, a_copy_is_complete_or_absent) {
    bool done = false;
    auto const body = [&] {
        done = cat::copy_to_new_file(folder_.file("map"), folder_.file("copy"));
    };
    auto const check = [&](bool with_result) {
        bool const there = std::filesystem::exists(folder_.file("copy"));
        if (there) {
            EXPECT_EQ(bytes_of(folder_.file("copy")), old_text);
        }
        if (with_result) {
            EXPECT_EQ(there, done);
        }
        EXPECT_EQ(bytes(), old_text);
        std::string const names = with_result ? folder_.names() : names_but_unfinished();
        EXPECT_EQ(names, there ? "copy map" : "map");
    };
    std::vector<cScene> const all{scenes.front(), scenes.back()};
    each_failing_call(all, body, [&](cScene const &, int) { check(true); });
    each_deadly_call(all, body, [&](cScene const &) { check(false); });
}

// --- write2file ---

TEST_F(SaveSweep, write2file_with_a_failing_call_leaves_old_or_new_and_reports) {
    objref const number = cat::of(1234567890);
    bool done = false;
    std::string const refused = "Cannot open file for write: " + folder_.file("map") + "\n";
    int reported_cases = 0;
    each_failing_call(
        scenes, [&] { done = write2file(*number, folder_.file("map").c_str(), false); },
        [&](cScene const &scene, int) {
            EXPECT_EQ(bytes(), done ? "1234567890" : old_text);
            EXPECT_EQ(folder_.names(), scene.names);
            std::string const reported = messages();
            EXPECT_TRUE(reported == "" || reported == refused) << reported;
            if (done) {
                EXPECT_EQ(reported, "");
            }
            reported_cases += reported == refused;
        });
    EXPECT_GT(reported_cases, 20);
}

TEST_F(SaveSweep, write2file_killed_at_any_call_leaves_old_or_new) {
    objref const number = cat::of(1234567890);
    each_deadly_call(
        scenes, [&] { write2file(*number, folder_.file("map").c_str(), false); },
        [&](cScene const &scene) {
            std::string const now = bytes();
            EXPECT_TRUE(now == old_text || now == "1234567890") << now;
            EXPECT_EQ(names_but_unfinished(), scene.names);
        });
}

// --- persistent maps ---

namespace {

std::string const saved = "// Platform Quorvanta(R), Attributes version 2.0\n"
                          "// by the Quorvanta developers\n"
                          "\n"
                          "{old= 1; }";

// Loads and saves the map.
void load_and_save() {
    cPersistentMap map("map", false);
    map.busmap();
}

std::string const damaged_text = "{old=1} damaged";
cScene const damaged{"a damaged file", [](cFolder const &f) { put(f.file("map"), damaged_text); },
                     "map map.bad"};
cScene const damaged_again{"a damaged file beside another",
                           [](cFolder const &f) {
                               put(f.file("map"), damaged_text);
                               put(f.file("map.bad"), "earlier");
                           },
                           "map map.bad map.bad2"};
cScene const read_only{"a read-only file",
                       [](cFolder const &f) {
                           put(f.file("map"), old_text);
                           EXPECT_EQ(::chmod(f.file("map").c_str(), 0444), 0);
                       },
                       "map"};

} // namespace

TEST_F(SaveSweep, a_persistent_map_with_a_failing_call_is_saved_or_reports) {
    std::vector<cScene> all = scenes;
    all.push_back(read_only);
    std::string const file = folder_.file("map");
    int unsaved = 0;
    each_failing_call(all, load_and_save, [&](cScene const &scene, int) {
        std::string const reported = messages();
        if (reported.empty()) {
            EXPECT_EQ(bytes(), saved);
        } else {
            EXPECT_EQ(bytes(), old_text);
            // write2file() reports the first message, and the map then adds the second.
            std::string const refused = "Cannot open file for write: " + file + "\n";
            std::string const failed = "Cannot write file: " + file + "\n";
            EXPECT_TRUE(reported == refused || reported == failed || reported == refused + failed)
                << reported;
            ++unsaved;
        }
        EXPECT_EQ(folder_.names(), scene.names);
    });
    EXPECT_GT(unsaved, 100);
}

TEST_F(SaveSweep, no_failure_loses_a_damaged_file) {
    std::string const file = folder_.file("map");
    int not_copied = 0;
    each_failing_call({damaged, damaged_again}, load_and_save, [&](cScene const &scene, int) {
        bool const beside = std::string(scene.name) == damaged_again.name;
        if (beside) {
            EXPECT_EQ(bytes_of(file + ".bad"), "earlier");
        }
        std::string const copy = file + (beside ? ".bad2" : ".bad");
        bool const copied = std::filesystem::exists(copy);
        if (copied) {
            EXPECT_EQ(bytes_of(copy), damaged_text);
        }
        std::string const reported = messages();
        if (reported.empty()) {
            EXPECT_TRUE(copied);
            EXPECT_EQ(bytes(), saved);
        } else {
            EXPECT_EQ(bytes(), damaged_text);
            EXPECT_TRUE(reported.starts_with("Cannot ")) << reported;
        }
        if (reported == "Cannot keep damaged file: " + file + "\n") ++not_copied;
        EXPECT_EQ(folder_.names(), copied ? scene.names : beside ? "map map.bad" : "map");
    });
    EXPECT_GT(not_copied, 100);
}

TEST_F(SaveSweep, a_persistent_map_killed_at_any_call_loses_nothing) {
    std::vector<cScene> all = scenes;
    all.insert(all.end(), {read_only, damaged, damaged_again});
    each_deadly_call(all, load_and_save, [&](cScene const &scene) {
        std::string const file = folder_.file("map");
        if (std::string(scene.name).find("damaged") == std::string::npos) {
            EXPECT_TRUE(bytes() == saved || bytes() == old_text) << bytes();
            return;
        }
        bool const beside = scene.name == damaged_again.name;
        if (beside) {
            EXPECT_EQ(bytes_of(file + ".bad"), "earlier");
        }
        std::string const copy = file + (beside ? ".bad2" : ".bad");
        if (bytes() == damaged_text) return;
        EXPECT_EQ(bytes(), saved);
        EXPECT_EQ(bytes_of(copy), damaged_text);
    });
}
