// File names: components, version numbers, searches.

#include "qrv/base/cfilename.h"

#include "base/platform/os_calls.h"
#include "qrv/base/platform/cplatform.h"
#include "qrv/diagnostics/cfilesearch.h"
#include "tests/support/fixture.h"

#include <cerrno>
#include <climits>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

void touch(std::string const &path) { std::ofstream(path) << "x"; }

// Works in its own temporary folder, and restores the system calls afterwards.
class FileName : public QrvTest {
  protected:
    FileName() : before_(fs::current_path()) {
        std::string pattern = (fs::temp_directory_path() / "qrv_name_XXXXXX").string();
        folder_ = ::mkdtemp(pattern.data());
        fs::current_path(folder_);
    }
    ~FileName() override {
        cat::os = calls_;
        fs::current_path(before_);
        fs::remove_all(folder_);
    }

    fs::path folder_;

  private:
    fs::path const before_;
    cat::os_calls const calls_ = cat::os;
};

// The result of fNextReadName as one string: result, name, count.
std::string next_read(char const *name, char const *prev, int count, char const *tag) {
    std::string out;
    bool const good = fNextReadName(name, prev, out, count, tag);
    return std::string(good ? "true " : "false ") + out.c_str() + " " + std::to_string(count);
}

std::string next_written(char const *name, char const *prev, int count, char const *tag) {
    std::string out;
    bool const good = fNextWritName(name, prev, out, count, tag);
    return std::string(good ? "true " : "false ") + out.c_str() + " " + std::to_string(count);
}

std::string shown(char const *text) { return text ? text : "null"; }

class FileNameEdge : public FileName {};

} // namespace

// --- pieces ---

TEST_F(FileNameEdge, the_extension_begins_at_the_last_dot_of_the_last_component) {
    EXPECT_EQ(extractFileName("a/b.c.d", true), "b.c.d");
    EXPECT_EQ(extractFileName("a/b.c.d", false), "b.c");
    EXPECT_EQ(extractExtension("a/b"), "");
}

TEST_F(FileNameEdge, a_bare_name_has_no_folder) { EXPECT_EQ(extractDirName("b.txt"), ""); }

TEST_F(FileName, both_separators_end_the_folder_and_stay_with_it) {
    EXPECT_EQ(extractDirName("a/b\\c.txt"), "a/b\\");
    EXPECT_EQ(extractDirName("a\\b/c.txt"), "a\\b/");
    EXPECT_EQ(extractFileName("a\\c.txt", true), "c.txt");
    EXPECT_EQ(extractDirName("/"), "/");
    EXPECT_EQ(extractFileName("a/", true), "");
    EXPECT_EQ(extractDirName("c:\\a\\b.txt"), "c:\\a\\");
    EXPECT_EQ(extractFileName("c:b.txt", true), "c:b.txt") << "there are no drives";
}

TEST_F(FileName, a_dot_in_the_folder_does_not_begin_an_extension) {
    EXPECT_EQ(extractExtension("a.b/c"), "");
    EXPECT_EQ(extractFileName("a.b/c", false), "c");
    EXPECT_EQ(extractExtension("a.b\\c"), "");
}

TEST_F(FileName, a_dot_at_either_end_of_the_name_begins_an_extension) {
    EXPECT_EQ(extractExtension(".profile"), ".profile");
    EXPECT_EQ(extractFileName(".profile", false), "");
    EXPECT_EQ(extractExtension("a."), ".");
    EXPECT_EQ(extractFileName("a.", false), "a");
    EXPECT_EQ(extractExtension("a/.."), ".");
    EXPECT_EQ(extractFileName("a/..", false), ".");
}

TEST_F(FileName, a_new_extension_always_gets_a_dot) {
    EXPECT_EQ(changeExt("a/b.c.d", "txt"), "a/b.c.txt");
    EXPECT_EQ(changeExt("a/b", "txt"), "a/b.txt");
    EXPECT_EQ(changeExt("a.b/c", ".txt"), "a.b/c..txt");
    EXPECT_EQ(changeExt("a.b", ""), "a.");
    EXPECT_EQ(changeExt("", ""), ".");
}

TEST_F(FileName, null_is_an_empty_name) {
    EXPECT_EQ(changeExt(nullptr, nullptr), ".");
    EXPECT_EQ(extractFileName(nullptr, true), "");
    EXPECT_EQ(extractDirName(nullptr), "");
    EXPECT_EQ(extractExtension(nullptr), "");
    EXPECT_EQ(getNextVersion(nullptr), "_1");
    EXPECT_EQ(next_read(nullptr, "", 3, nullptr), "true  3");
    EXPECT_EQ(next_written(nullptr, "", 3, nullptr), "true 0003 4");
    EXPECT_EQ(pGetCfgFileName("none", false), nullptr);
}

TEST_F(FileName, names_of_any_length_stay_whole) {
    for (std::size_t const length : {255u, 256u, 259u, 260u, 5000u}) {
        std::string const part(length, 'n'), path = part + "/" + part + "." + part;
        EXPECT_EQ(extractDirName(path.c_str()), part + "/");
        EXPECT_EQ(extractFileName(path.c_str(), true), part + "." + part);
        EXPECT_EQ(extractExtension(path.c_str()), "." + part);
        EXPECT_EQ(changeExt(path.c_str(), part.c_str()), path);
        EXPECT_EQ(getNextVersion(path.c_str()), part + "/" + part + "_1." + part);
        EXPECT_EQ(next_written(path.c_str(), "", 0, part.c_str()),
                  "true " + part + "/" + part + "0000" + part + " 1");
        EXPECT_EQ(next_read(path.c_str(), "", 0, part.c_str()), "true " + path + " 0");
        EXPECT_EQ(pGetRuntimeFileName(path.c_str(), part.c_str(), true), nullptr);
        EXPECT_EQ(messages(), "could not open: " + part + "/" + path + "\n");
    }
}

// --- versions ---

TEST_F(FileNameEdge, the_next_version_is_the_first_free_number) {
    touch("x.txt");
    EXPECT_EQ(getNextVersion("x.txt"), "x_1.txt");
    fs::remove("x.txt");
    EXPECT_EQ(getNextVersion("x.txt"), "x_1.txt")
        << "whether the name without a number exists is not tested";
    touch("x_1.txt");
    EXPECT_EQ(getNextVersion("x.txt"), "x_2.txt");
    touch("x_3.txt");
    EXPECT_EQ(getNextVersion("x.txt"), "x_2.txt");
}

TEST_F(FileName, versions_keep_folder_and_extension) {
    fs::create_directory("a.b");
    touch("a.b/c_1");
    EXPECT_EQ(getNextVersion("a.b/c"), "a.b/c_2");
    EXPECT_EQ(getNextVersion("a.b/c.d.e"), "a.b/c.d_1.e");
    EXPECT_EQ(getNextVersion("%s%n.txt"), "%s%n_1.txt");
}

TEST_F(FileName, version_1000_is_the_last_and_may_exist) {
    static int asked;
    static std::string last;
    asked = 0;
    cat::os.access = [](char const *path, int) {
        ++asked;
        last = path;
        return asked < 1000 ? 0 : -1;
    };
    EXPECT_EQ(getNextVersion("x.txt"), "x_1000.txt");
    EXPECT_EQ(asked, 1000);
    EXPECT_EQ(last, "x_1000.txt");
    cat::os.access = [](char const *, int) { return 0; };
    EXPECT_EQ(getNextVersion("x.txt"), "x_1000.txt");
}

TEST_F(FileName, a_file_that_cannot_be_accessed_counts_as_absent) {
    cat::os.access = [](char const *, int) {
        errno = EIO;
        return -1;
    };
    EXPECT_EQ(getNextVersion("x.txt"), "x_1.txt");
    EXPECT_EQ(next_written("run.dat", "", 0, ".dat"), "true run0000.dat 1");
}

// --- series for reading ---

TEST_F(FileNameEdge, reading_a_series_continues_with_the_larger_number) {
    EXPECT_EQ(next_read("run0005.dat", "run0005.dat", 2, ".dat"), "true run0005.dat 6");
    EXPECT_EQ(next_read("run0005.dat", "run0005.dat", 9, ".dat"), "true run0009.dat 10");
}

TEST_F(FileName, an_equal_number_is_used_and_the_count_grows) {
    EXPECT_EQ(next_read("run0005.dat", "run0005.dat", 4, ".dat"), "true run0005.dat 6");
    EXPECT_EQ(next_read("run0005.dat", "run0005.dat", 5, ".dat"), "true run0005.dat 6");
    EXPECT_EQ(next_read("run0005.dat", "run0005.dat", 6, ".dat"), "true run0006.dat 7");
}

TEST_F(FileName, another_name_begins_a_new_series) {
    EXPECT_EQ(next_read("run0005.dat", "run0004.dat", 9, ".dat"), "true run0005.dat 6");
    EXPECT_EQ(next_read("run0000.dat", "", 9, ".dat"), "true run0000.dat 1");
    EXPECT_EQ(next_read("ru.dat", "", 9, ".dat"), "true ru.dat 0");
}

TEST_F(FileName, a_series_is_read_in_ascending_order) {
    std::string name = "run0008.dat", out, all;
    int count = 0;
    for (int i = 0; i < 4; ++i) {
        ASSERT_TRUE(fNextReadName(name.c_str(), name, out, count, ".dat"));
        all += out + " ";
    }
    EXPECT_EQ(all, "run0008.dat run0009.dat run0010.dat run0011.dat ");
}

TEST_F(FileName, a_name_without_the_tag_is_reported) {
    EXPECT_EQ(next_read("run0005.txt", "run0005.txt", 9, ".dat"), "false run0005.txt 9");
    EXPECT_EQ(messages(), "other format required\n");
    EXPECT_EQ(next_read("run0005.txt", "other", 9, ".dat"), "false run0005.txt 0");
    EXPECT_EQ(messages(), "other format required\n");
}

TEST_F(FileName, a_tag_before_position_4_leaves_name_and_count_unchanged) {
    EXPECT_EQ(next_read("005.dat", "005.dat", 9, ".dat"), "true 005.dat 9");
    EXPECT_EQ(next_read("0005.dat", "0005.dat", 9, ".dat"), "true 0009.dat 10");
    EXPECT_EQ(next_read("run0005.dat", "run0005.dat", 9, ""), "true run0005.dat 9");
    EXPECT_EQ(messages(), "");
}

TEST_F(FileName, the_first_occurrence_of_the_tag_counts) {
    EXPECT_EQ(next_read("a.dat0005.dat", "a.dat0005.dat", 9, ".dat"), "true a.dat0005.dat 9");
    EXPECT_EQ(next_read("0001.dat0005.dat", "0001.dat0005.dat", 9, ".dat"), "true 0009.dat 10");
}

TEST_F(FileName, a_missing_number_leaves_name_and_count_unchanged) {
    for (char const *name : {"abcd.dat", "x-+1.dat", "--12.dat", "   -.dat", "    .dat"})
        EXPECT_EQ(next_read(name, name, 9, ".dat"), std::string("true ") + name + " 9");
    EXPECT_EQ(messages(), "");
}

TEST_F(FileName, blanks_and_a_sign_may_precede_the_digits) {
    EXPECT_EQ(next_read("  12.dat", "  12.dat", 2, ".dat"), "true   12.dat 13");
    EXPECT_EQ(next_read("+012.dat", "+012.dat", 2, ".dat"), "true +012.dat 13");
    EXPECT_EQ(next_read("-012.dat", "-012.dat", -50, ".dat"), "true -012.dat -11");
    EXPECT_EQ(next_read("-012.dat", "-012.dat", 2, ".dat"), "true 0002.dat 3");
    EXPECT_EQ(next_read("12ab.dat", "12ab.dat", 2, ".dat"), "true 12ab.dat 13");
    EXPECT_EQ(next_read("a12345.dat", "a12345.dat", 2, ".dat"), "true a12345.dat 2346");
    EXPECT_EQ(next_read("    7", "    7", 2, "7"), "true     7 8")
        << "the digits may continue in the tag";
}

TEST_F(FileName, a_shorter_name_ends_at_a_null_character_and_the_string_never_shrinks) {
    std::string out;
    int count = 9;
    std::string const name = "run0005.dat.backup";
    ASSERT_TRUE(fNextReadName(name.c_str(), name, out, count, ".dat"));
    EXPECT_STREQ(out.c_str(), "run0009.dat");
    EXPECT_EQ(out, std::string("run0009.dat\0backup", 18));
}

TEST_F(FileName, a_number_with_more_digits_lengthens_the_string) {
    std::string out;
    int count = 12345;
    ASSERT_TRUE(fNextReadName("run0005.dat", "run0005.dat", out, count, ".dat"));
    EXPECT_EQ(out, "run12345.dat");
    EXPECT_EQ(next_read("run0005.dat.b", "run0005.dat.b", 12345, ".dat"),
              "true run12345.dat 12346");
    EXPECT_EQ(next_read("run0005.dat", "run0005.dat", INT_MAX, ".dat"),
              "true run2147483647.dat 2147483647");
}

// --- series for writing ---

TEST_F(FileNameEdge, writing_a_series_ends_at_number_1000) {
    static std::string last;
    cat::os.access = [](char const *path, int) {
        last = path;
        return last == "run1000.dat" ? -1 : 0;
    };
    EXPECT_EQ(next_written("run.dat", "run.dat", 0, ".dat"), "true run1000.dat 1001");
    cat::os.access = [](char const *path, int) {
        last = path;
        return 0;
    };
    EXPECT_EQ(next_written("run.dat", "run.dat", 0, ".dat"), "false run1000.dat 1001");
    EXPECT_EQ(last, "run1000.dat");
    EXPECT_EQ(next_written("run.dat", "run.dat", 1000, ".dat"), "false run1000.dat 1001");
}

TEST_F(FileNameEdge, a_count_of_1001_or_more_tries_one_number) {
    static int asked;
    asked = 0;
    cat::os.access = [](char const *, int) {
        ++asked;
        return 0;
    };
    EXPECT_EQ(next_written("run.dat", "run.dat", 1001, ".dat"), "false run1001.dat 1002");
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(next_written("run.dat", "run.dat", INT_MAX, ".dat"),
              "false run2147483647.dat 2147483647");
    EXPECT_EQ(asked, 2);
    cat::os.access = [](char const *, int) { return -1; };
    EXPECT_EQ(next_written("run.dat", "run.dat", 1001, ".dat"), "true run1001.dat 1002");
}

TEST_F(FileName, numbers_in_use_are_skipped) {
    touch("run0000.dat");
    touch("run0001.dat");
    EXPECT_EQ(next_written("run.dat", "", 7, ".dat"), "true run0002.dat 3");
    EXPECT_EQ(next_written("run.dat", "run.dat", 7, ".dat"), "true run0007.dat 8");
    EXPECT_EQ(next_written("run.dat", "run.dat", -7, ".dat"), "true run-007.dat -6");
}

TEST_F(FileName, the_number_is_inserted_at_the_last_dot) {
    EXPECT_EQ(next_written("run", "", 0, ".dat"), "true run0000.dat 1");
    EXPECT_EQ(next_written("a.b.c", "", 0, ""), "true a.b0000 1");
    EXPECT_EQ(next_written("", "", 0, ".dat"), "true 0000.dat 1");
}

TEST_F(FileName, a_dot_in_the_folder_is_used_when_the_name_has_none) {
    EXPECT_EQ(next_written("a.b/run", "", 0, ".dat"), "true a0000.dat 1");
}

TEST_F(FileName, a_shorter_result_leaves_old_characters_after_its_null_character) {
    std::string out;
    int count = 0;
    ASSERT_TRUE(fNextWritName("run.a-long-ending", "", out, count, ".d"));
    EXPECT_EQ(out, std::string("run0000.d\0-ending", 17));
    ASSERT_TRUE(fNextWritName("run.dat", "", out, count, ".dat"));
    EXPECT_EQ(out, "run0000.dat") << "the result is longer than the name, so the string grows";
}

TEST_F(FileName, arguments_may_point_into_the_result) {
    std::string out = "run0005.dat";
    int count = 0;
    ASSERT_TRUE(fNextReadName(out.c_str(), "", out, count, out.c_str() + 7));
    EXPECT_EQ(out, "run0005.dat");
    ASSERT_TRUE(fNextReadName(out.c_str(), out, out, count, out.c_str() + 7));
    EXPECT_EQ(out, "run0006.dat");
    ASSERT_TRUE(fNextWritName(out.c_str(), "", out, count, out.c_str() + 7));
    EXPECT_EQ(out, "run00060000.dat");
}

// --- searches ---

namespace {

// The folder of this program, with a separator at its end.
std::string program_folder() { return extractDirName(cat::program_file().c_str()); }

// A file near the program, and its folder if needed; both are removed at the end.
class cNearProgram {
  public:
    explicit cNearProgram(std::string const &name) : path_(program_folder() + name) {
        fs::path const folder = fs::path(path_).parent_path();
        if (fs::create_directory(folder)) made_ = folder;
        touch(path_);
    }
    cNearProgram(cNearProgram const &) = delete;
    cNearProgram &operator=(cNearProgram const &) = delete;
    ~cNearProgram() {
        fs::remove(path_);
        if (!made_.empty()) fs::remove(made_);
    }
    std::string const &path() const { return path_; }

  private:
    std::string path_;
    fs::path made_;
};

} // namespace

TEST_F(FileNameEdge, the_working_folder_is_searched_before_the_programs_folder) {
    cNearProgram const there("qrv_test_find.cfg");
    EXPECT_EQ(shown(pGetCfgFileName("qrv_test_find.cfg", true)), there.path());
    touch("qrv_test_find.cfg");
    EXPECT_EQ(shown(pGetCfgFileName("qrv_test_find.cfg", true)), "qrv_test_find.cfg");
    EXPECT_EQ(messages(), "");
}

TEST_F(FileName, configuration_is_searched_beside_the_program_then_one_folder_up) {
    cNearProgram const up("../qrv_test_find.cfg");
    EXPECT_EQ(shown(pGetCfgFileName("qrv_test_find.cfg", true)), up.path());
    cNearProgram const beside("qrv_test_find.cfg");
    EXPECT_EQ(shown(pGetCfgFileName("qrv_test_find.cfg", true)), beside.path());
}

TEST_F(FileName, run_time_files_are_searched_in_four_folders_in_order) {
    cNearProgram const last("../runtime/qrv_test_find.bin");
    EXPECT_EQ(shown(pGetRuntimeFileName("qrv_test_find.bin", "", true)), last.path());
    cNearProgram const third("runtime/qrv_test_find.bin");
    EXPECT_EQ(shown(pGetRuntimeFileName("qrv_test_find.bin", "", true)), third.path());
    cNearProgram const second("../qrv_test_find.bin");
    EXPECT_EQ(shown(pGetRuntimeFileName("qrv_test_find.bin", "", true)), second.path());
    cNearProgram const first("qrv_test_find.bin");
    EXPECT_EQ(shown(pGetRuntimeFileName("qrv_test_find.bin", nullptr, true)), first.path());
    touch("qrv_test_find.bin");
    EXPECT_EQ(shown(pGetRuntimeFileName("qrv_test_find.bin", "", true)), "qrv_test_find.bin");
}

TEST_F(FileName, configuration_is_not_searched_in_run_time_folders) {
    cNearProgram const one("runtime/qrv_test_find.cfg");
    cNearProgram const two("../runtime/qrv_test_find.cfg");
    EXPECT_EQ(pGetCfgFileName("qrv_test_find.cfg", false), nullptr);
}

TEST_F(FileName, a_run_time_file_name_may_contain_a_folder) {
    cNearProgram const there("qrv_test_sub/find.bin");
    EXPECT_EQ(shown(pGetRuntimeFileName("find.bin", "qrv_test_sub", true)), there.path());
    EXPECT_EQ(pGetRuntimeFileName("find.bin", "", false), nullptr);
    fs::create_directory("qrv_test_sub");
    touch("qrv_test_sub/find.bin");
    EXPECT_EQ(shown(pGetRuntimeFileName("find.bin", "qrv_test_sub", true)),
              "qrv_test_sub/find.bin");
}

TEST_F(FileName, a_file_that_is_not_found_is_reported_on_request) {
    EXPECT_EQ(pGetCfgFileName("qrv_test_none", true), nullptr);
    EXPECT_EQ(messages(), "could not open: qrv_test_none\n");
    EXPECT_EQ(pGetRuntimeFileName("qrv_test_none", "sub", true), nullptr);
    EXPECT_EQ(messages(), "could not open: sub/qrv_test_none\n");
    EXPECT_EQ(pGetCfgFileName("qrv_test_none", false), nullptr);
    EXPECT_EQ(pGetRuntimeFileName("qrv_test_none", "sub", false), nullptr);
    EXPECT_EQ(messages(), "");
}

TEST_F(FileName, a_result_can_be_searched_again) {
    touch("qrv_test_a");
    char const *const first = pGetCfgFileName("qrv_test_a", true);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(shown(pGetCfgFileName(first, true)), "qrv_test_a");
    EXPECT_EQ(shown(pGetRuntimeFileName(pGetCfgFileName("qrv_test_a", true), "", true)),
              "qrv_test_a");
}

TEST_F(FileName, the_path_of_the_program_is_queried_once) {
    static int asked;
    asked = 0;
    pGetCfgFileName("qrv_test_none", false);
    cat::os.readlink = [](char const *path, char *target, size_t size) {
        ++asked;
        return ::readlink(path, target, size);
    };
    pGetCfgFileName("qrv_test_none", false);
    pGetRuntimeFileName("qrv_test_none", "", false);
    EXPECT_EQ(asked, 0);
}
