// The paths at which a module is searched. The loader of these tests only records them; the tests
// of modules load real files.

#include "base/platform/cloader.h"

#include "base/platform/os_calls.h"
#include "qrv/base/platform/cplatform.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

namespace {

std::vector<std::string> tried; // the paths, in order
int loads_at = 0;               // which of the paths can be loaded, counted from 1; 0: none of them
char failure[] = "no";
int library = 0;

class Loader : public testing::Test {
  protected:
    Loader() {
        tried.clear();
        loads_at = 0;
        cat::os.dlopen = [](char const *path, int flags) -> void * {
            EXPECT_EQ(flags, RTLD_NOW | RTLD_LOCAL);
            tried.emplace_back(path);
            return static_cast<int>(tried.size()) == loads_at ? &library : nullptr;
        };
        cat::os.dlerror = [] { return failure; };
    }
    ~Loader() override {
        cat::os = calls_;
        qrv_set_module_filter(nullptr);
    }

    using Paths = std::vector<std::string>;
    static Paths paths(std::string const &name) {
        tried.clear();
        std::string failures;
        EXPECT_EQ(cat::open_module(name, failures), nullptr);
        return tried;
    }

  private:
    cat::os_calls const calls_ = cat::os;
};

TEST_F(Loader, a_name_is_tried_in_three_folders_with_and_without_suffix) {
    EXPECT_EQ(paths("part"),
              (Paths{"part.so", "part", "./part.so", "./part", "modules/part.so", "modules/part"}));
    EXPECT_EQ(paths("sub/part"), (Paths{"sub/part.so", "sub/part", "./sub/part.so", "./sub/part",
                                        "modules/sub/part.so", "modules/sub/part"}));
    EXPECT_EQ(paths("x:part").size(), 6u);
    EXPECT_EQ(paths(".so"),
              (Paths{".so.so", ".so", "./.so.so", "./.so", "modules/.so.so", "modules/.so"}));
}

TEST_F(Loader, a_name_with_the_suffix_is_tried_only_with_a_second_one) {
    EXPECT_EQ(paths("part.so"), (Paths{"part.so.so", "./part.so.so", "modules/part.so.so"}));
    EXPECT_EQ(paths("a.sO"), (Paths{"a.sO.so", "./a.sO.so", "modules/a.sO.so"}));
    EXPECT_EQ(paths("/part.so"), (Paths{"/part.so.so"}));
    EXPECT_EQ(paths("part\x0Eso").size(), 6u);
    EXPECT_EQ(paths("part.so.1").size(), 6u);
}

TEST_F(Loader, an_absolute_name_is_tried_in_no_other_folder) {
    for (std::string const name :
         {"/part", "\\part", "x:/part", "x:\\part", "/", "\\", "::/", "::\\"})
        EXPECT_EQ(paths(name), (Paths{name + ".so", name})) << name;
    for (char const *name : {"x:", "x", "xy:/part", ":/", "./part"})
        EXPECT_EQ(paths(name).size(), 6u) << name;
}

TEST_F(Loader, the_first_path_that_can_be_loaded_ends_the_search) {
    for (loads_at = 1; loads_at <= 6; ++loads_at) {
        tried.clear();
        std::string failures;
        EXPECT_EQ(cat::open_module("part", failures), &library);
        EXPECT_EQ(tried.size(), static_cast<std::size_t>(loads_at));
    }
}

TEST_F(Loader, each_failure_adds_a_line_to_the_message) {
    std::string failures;
    EXPECT_EQ(cat::open_module("/part", failures), nullptr);
    EXPECT_EQ(failures, "/part.so: no\n/part: no");
    cat::os.dlerror = [] { return static_cast<char *>(nullptr); };
    failures.clear();
    EXPECT_EQ(cat::open_module("/part", failures), nullptr);
    EXPECT_EQ(failures, "/part.so: cannot be loaded\n/part: cannot be loaded");
    static char with_path[] = "/part.so: bad format";
    cat::os.dlerror = [] { return with_path; };
    failures.clear();
    EXPECT_EQ(cat::open_module("/part", failures), nullptr);
    EXPECT_EQ(failures, "/part.so: bad format\n/part: /part.so: bad format");
}

TEST_F(Loader, an_impossible_path_is_not_passed_to_the_system) {
    std::string failures;
    EXPECT_EQ(cat::open_module(std::string("a\0b", 3), failures), nullptr);
    EXPECT_TRUE(tried.empty());
    EXPECT_NE(failures.find(": a zero byte in the name"), std::string::npos);
    EXPECT_EQ(paths(std::string(PATH_MAX - 1 - 8, 'n')).size(),
              5u); // the path in modules/ with .so is too long
    EXPECT_EQ(paths(std::string(PATH_MAX - 1 - 3, 'n')).size(), 3u);
    EXPECT_EQ(paths(std::string(PATH_MAX - 1, 'n')).size(), 1u);
    EXPECT_EQ(paths(std::string(PATH_MAX, 'n')).size(), 0u);
    failures.clear();
    EXPECT_EQ(cat::open_module(std::string(PATH_MAX, 'n'), failures), nullptr);
    EXPECT_EQ(failures, "A name of 4096 characters is too long");
}

TEST_F(Loader, a_path_to_a_pipe_a_device_or_a_socket_is_not_loaded) {
    for (int const mode : {S_IFIFO, S_IFCHR, S_IFBLK, S_IFSOCK}) {
        static mode_t kind;
        kind = static_cast<mode_t>(mode);
        cat::os.stat = [](char const *path, struct stat *info) {
            if (std::string(path) != "/part.so") return -1;
            info->st_mode = kind | 0600;
            return 0;
        };
        std::string failures;
        tried.clear();
        EXPECT_EQ(cat::open_module("/part", failures), nullptr);
        EXPECT_EQ(failures, "/part.so: not a regular file\n/part: no");
        EXPECT_EQ(tried, Paths{"/part"});
    }
    for (int const mode : {S_IFREG, S_IFDIR}) {
        static mode_t kind;
        kind = static_cast<mode_t>(mode);
        cat::os.stat = [](char const *, struct stat *info) {
            info->st_mode = kind | 0600;
            return 0;
        };
        EXPECT_EQ(paths("/part"), (Paths{"/part.so", "/part"}));
    }
}

TEST_F(Loader, a_path_refused_by_the_filter_is_not_loaded) {
    cat::os.stat = [](char const *, struct stat *info) {
        info->st_mode = S_IFREG | 0600;
        return 0;
    };
    std::string failures;
    tried.clear();
    auto const refusal = [](std::string const &path) -> std::string {
        return path.ends_with(".so") ? "refused" : "";
    };
    EXPECT_EQ(cat::open_module("./part", failures, refusal), nullptr);
    EXPECT_EQ(tried, (Paths{"./part", "././part", "modules/./part"}));
    EXPECT_TRUE(failures.starts_with("./part.so: refused\n./part: no\n")) << failures;
}

TEST_F(Loader, is_same_file_compares_the_files_of_two_paths) {
    EXPECT_TRUE(cat::is_same_file("/proc/self/exe", cat::program_file()));
    EXPECT_FALSE(cat::is_same_file("/proc/self/exe", "/dev/null"));
    EXPECT_FALSE(cat::is_same_file("/nowhere/at/all", "/nowhere/at/all"));
}

TEST_F(Loader, the_base_name_is_the_part_between_folder_and_suffix) {
    struct {
        char const *name, *base;
    } const cases[] = {{"part", "part"},
                       {"part.so", "part"},
                       {"part.SO", "part"},
                       {"a.so", "a"},
                       {".so", ".so"},
                       {"a/.so", ""},
                       {"sub/part", "part"},
                       {"a\\b/c:d", "d"},
                       {"a:b\\c", "c"},
                       {"x:part.So", "part"},
                       {"sub/", ""},
                       {"", ""},
                       {"part.so.so", "part.so"},
                       {"part.so.1", "part.so.1"},
                       {"so", "so"},
                       {"a.so/b", "b"},
                       {"part.s", "part.s"},
                       {"xso", "xso"}};
    for (auto const &[name, base] : cases) EXPECT_EQ(cat::module_base_name(name), base) << name;
    std::string const with_zero("a/b\0c.so", 8);
    EXPECT_EQ(cat::module_base_name(with_zero), std::string("b\0c", 3));
}

TEST_F(Loader, only_a_function_defined_in_the_file_itself_is_found) {
    void *const program = ::dlopen(nullptr, RTLD_NOW);
    EXPECT_EQ(cat::function_in(program, "a function that does not exist"), nullptr);
    EXPECT_EQ(cat::function_in(program, "gnu_get_libc_version"),
              nullptr); // the function exists, but in another file
    cat::os.dlinfo = [](void *, int, void *) { return -1; };
    EXPECT_EQ(cat::function_in(program, "gnu_get_libc_version"), nullptr);
    EXPECT_EQ(cat::library_path(program), "");
    ::dlclose(program);
}

TEST_F(Loader, the_filter_is_stored) {
    EXPECT_EQ(cat::the_module_filter(), nullptr);
    auto const filter = [](std::string const &) { return false; };
    qrv_set_module_filter(filter);
    EXPECT_EQ(cat::the_module_filter(), static_cast<cat::module_filter>(filter));
}

} // namespace
