// Where a module's file is searched, and what happens with files that are missing or are not
// modules.

#include "qrv/modules/cmodule.h"

#include "tests/modules/loading.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class ModuleFile : public Loading {};
class ModuleFailure : public Loading {};

// --- missing files, and files that are not modules ---

TEST_F(ModuleFailure, a_missing_file_is_reported_with_every_path) {
    EXPECT_EQ(cModule::load("nowhere"), nullptr);
    std::string const words = ": cannot open shared object file: No such file or directory";
    std::string lines;
    for (char const *path : {"nowhere.so", "nowhere", "./nowhere.so", "./nowhere",
                             "modules/nowhere.so", "modules/nowhere"})
        lines += path + words + '\n';
    EXPECT_EQ(cModule::last_error() + '\n', lines);
    EXPECT_EQ(messages(), "");
}

TEST_F(ModuleFailure, an_absolute_name_is_searched_in_no_other_folder) {
    std::string const words = ": cannot open shared object file: No such file or directory";
    for (std::string const name : {"/nowhere/at/all", "x:/nowhere"}) {
        EXPECT_EQ(cModule::load(name), nullptr);
        EXPECT_EQ(cModule::last_error(), name + ".so" + words + '\n' + name + words);
    }
}

TEST_F(ModuleFailure, a_success_clears_the_last_error) {
    put("plain");
    EXPECT_EQ(cModule::load("nowhere"), nullptr);
    EXPECT_NE(cModule::last_error(), "");
    cModule *const module = cModule::load("plain");
    EXPECT_EQ(cModule::last_error(), "");
    EXPECT_EQ(cModule::load("nowhere"), nullptr);
    EXPECT_EQ(cModule::load("plain"), module); // only the count changes
    EXPECT_EQ(cModule::last_error(), "");
    EXPECT_FALSE(module->unload());
    EXPECT_TRUE(module->unload());
}

TEST_F(ModuleFailure, files_that_are_not_modules_are_skipped) {
    std::ofstream("bad.so") << "this is not a shared object, but as long as the header of one: "
                            << std::string(100, 'x');
    std::ofstream("./empty.so").flush();
    fs::create_directory("folder.so");
    fs::create_directory("folder");
    put("missing_symbol");
    EXPECT_EQ(cModule::load("bad"), nullptr);
    EXPECT_NE(cModule::last_error().find("./bad.so: invalid ELF header\n"), std::string::npos)
        << cModule::last_error();
    EXPECT_EQ(cModule::load("empty"), nullptr);
    EXPECT_NE(cModule::last_error().find("./empty.so: file too short\n"), std::string::npos)
        << cModule::last_error();
    EXPECT_EQ(cModule::load("folder"), nullptr);
    EXPECT_NE(cModule::last_error().find("./folder.so: cannot read file data: Is a directory\n"),
              std::string::npos)
        << cModule::last_error();
    EXPECT_EQ(cModule::load("missing_symbol"), nullptr);
    EXPECT_NE(cModule::last_error().find(
                  "./missing_symbol.so: undefined symbol: a_function_that_is_nowhere\n"),
              std::string::npos)
        << cModule::last_error();
    EXPECT_EQ(names(things()), "");
    put("plain", "modules/bad.so"); // the next path is tried
    cModule *const module = cModule::load("bad");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(module->name(), "bad");
    EXPECT_TRUE(module->unload());
}

TEST_F(ModuleFailure, a_path_that_is_not_a_regular_file_fails_at_once) {
    ::alarm(20); // opening a pipe without a writer would block
    ASSERT_EQ(::mkfifo("pipe.so", 0600), 0);
    ASSERT_EQ(::mkfifo("pipe", 0600), 0);
    fs::create_directory("modules");
    ASSERT_EQ(::mkfifo("modules/pipe.so", 0600), 0);
    fs::create_symlink("/dev/tty", "device.so");
    fs::create_symlink("pipe", "link.so");
    fs::create_directory("folder");
    EXPECT_EQ(cModule::load("pipe"), nullptr);
    std::string const missing = ": cannot open shared object file: No such file or directory\n";
    EXPECT_EQ(cModule::last_error() + '\n',
              "pipe.so" + missing + "pipe" + missing + "./pipe.so: not a regular file\n" +
                  "./pipe: not a regular file\nmodules/pipe.so: not a regular file\n" +
                  "modules/pipe" + missing);
    for (char const *name : {"./device", "./link", "/dev/zero", "/dev/null"}) {
        EXPECT_EQ(cModule::load(name), nullptr);
        EXPECT_NE(cModule::last_error().find(": not a regular file"), std::string::npos)
            << cModule::last_error();
    }
    std::string const here = fs::current_path();
    EXPECT_EQ(cModule::load(here + "/folder"), nullptr);
    EXPECT_EQ(cModule::last_error(), here + "/folder.so" + missing + here +
                                         "/folder: cannot read file data: Is a directory");
    put("plain", "modules/link.so"); // the next path is tried
    cModule *const module = cModule::load("link");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_TRUE(module->unload());
    ::alarm(0);
}

TEST_F(ModuleFailure, names_that_cannot_be_paths_return_null) {
    put("plain");
    std::string const with_zero("plain\0.so", 9);
    EXPECT_EQ(cModule::load(with_zero), nullptr);
    EXPECT_NE(cModule::last_error().find(": a zero byte in the name"), std::string::npos);
    for (std::string const start : {"", "./", "/"}) {
        EXPECT_EQ(cModule::load(start + std::string(300, 'n')), nullptr);
        EXPECT_NE(cModule::last_error().find(".so: cannot open shared object file: File name too "
                                             "long\n"),
                  std::string::npos)
            << cModule::last_error();
    }
    for (std::size_t const length : {10000u, 10000000u}) {
        EXPECT_EQ(cModule::load(std::string(length, 'n')), nullptr);
        EXPECT_EQ(cModule::last_error(),
                  "A name of " + std::to_string(length) + " characters is too long");
    }
    for (char const *name : {"%s%n", "$ORIGIN", "a\nb", " ", ".", "..", ".so", "x.", "\xff\xfe"})
        EXPECT_EQ(cModule::load(name), nullptr) << name;
}

// --- where files are looked for ---

TEST_F(ModuleFile, folders_and_suffixes_are_tried_in_order) {
    // The files for the name sub/part, removed one after the other. Two of its six paths,
    // ./sub/part.so and ./sub/part, are the first two files again.
    char const *const paths[] = {"sub/part.so", "sub/part", "modules/sub/part.so",
                                 "modules/sub/part"};
    char const *const kinds[] = {"plain", "bare", "own_module", "releases"};
    char const *const results[] = {"plain thing;", "bare thing;", "own thing;", "stays;"};
    for (int i = 0; i < 4; ++i) put(kinds[i], paths[i]);
    for (int i = 0; i < 4; ++i) {
        cModule *const module = cModule::load("sub/part");
        ASSERT_NE(module, nullptr) << cModule::last_error();
        EXPECT_EQ(module->basename(), "part");
        EXPECT_EQ(names(things()), results[i]);
        EXPECT_TRUE(module->unload());
        fs::remove(paths[i]);
    }
    EXPECT_EQ(cModule::load("sub/part"), nullptr);
}

TEST_F(ModuleFile, a_bare_name_is_searched_in_the_working_folder_before_modules) {
    put("plain", "part.so");
    put("bare", "part");
    put("releases", "modules/part.so");
    for (char const *result : {"plain thing;", "bare thing;", "stays;"}) {
        cModule *const module = cModule::load("part");
        ASSERT_NE(module, nullptr) << cModule::last_error();
        EXPECT_EQ(names(things()), result);
        EXPECT_TRUE(module->unload());
        if (!fs::remove("part.so")) fs::remove("part");
    }
}

TEST_F(ModuleFile, an_absolute_name_is_loaded) {
    put("plain");
    std::string const path = fs::current_path() / "plain";
    fs::create_directory("elsewhere");
    fs::current_path("elsewhere");
    cModule *const module = cModule::load(path);
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(module->name(), "plain");
    EXPECT_TRUE(module->unload());
    fs::current_path("..");
}

TEST_F(ModuleFile, a_name_with_the_suffix_is_searched_only_with_a_second_one) {
    put("plain");
    EXPECT_EQ(cModule::load("plain.so"), nullptr);
    EXPECT_EQ(cModule::load("plain.SO"), nullptr);
    put("plain", "plain.SO.so");
    cModule *const module = cModule::load("plain.SO");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(module->name(), "plain");
    EXPECT_EQ(module->basename(), "plain");
    EXPECT_TRUE(module->unload());
}

TEST_F(ModuleFile, a_backslash_separates_folders_only_for_the_base_name) {
    put("plain", "sub\\part.so");
    cModule *const module = cModule::load("sub\\part");
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(module->name(), "part");
    EXPECT_TRUE(module->unload());
}

TEST_F(ModuleFile, a_long_base_name_is_not_truncated) {
    std::string const name(252, 'n');
    put("plain", name + ".so"); // the longest name that a file can have
    cModule *const module = cModule::load(name);
    ASSERT_NE(module, nullptr) << cModule::last_error();
    EXPECT_EQ(module->basename(), name);
    EXPECT_TRUE(module->unload());
    std::string const deep = std::string(200, 'd') + '/' + std::string(200, 'e') + '/' + name;
    put("bare", deep + ".so");
    cModule *const other = cModule::load(deep);
    ASSERT_NE(other, nullptr) << cModule::last_error();
    EXPECT_EQ(other->basename(), name);
    EXPECT_TRUE(other->unload());
}

TEST_F(ModuleFile, a_name_without_a_base_is_the_first_built_in_module) {
    for (char const *name : {"sub/", "x:", "\\", "sub/.so"})
        EXPECT_EQ(cModule::load(name), &cGetMainModule()) << name;
    EXPECT_FALSE(cGetMainModule().canunload());
}

} // namespace
