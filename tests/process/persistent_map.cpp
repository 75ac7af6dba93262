// A static persistent map is saved at the end of the process, after main, while the library is
// still complete; also when exit() is called, and when the damaged file is preserved.

#include "process.h"
#include "qrv/containers/cattr.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/file/cpersistentmap.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

cPersistentMap static_map("static_map", true);

std::string bytes_of(char const *path) {
    std::ifstream is(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(is), std::istreambuf_iterator<char>()};
}

std::string saved(char const *entries) {
    return std::string("// Platform Quorvanta(R), Attributes version 2.0\n"
                       "// by the Quorvanta developers\n\n") +
           entries;
}

// A child's first argument has no folder, so its file is in the working folder.
int child(char const *how) {
    int runs = 0;
    cat::int_of(static_map.busmap()["runs"], runs);
    static_map.busmap()["runs"] = cat::of(runs + 1);
    if (std::strcmp(how, "exit") == 0) std::exit(0);
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    if (argc > 1) return child(argv[1]);
    std::string pattern = (std::filesystem::temp_directory_path() / "qrv_map_XXXXXX").string();
    std::filesystem::path const folder = ::mkdtemp(pattern.data());
    std::filesystem::current_path(folder);

    CHECK(run_self("return").status == 0);
    CHECK_TEXT(bytes_of("static_map"), saved("{\n  runs= 1;\n}"));
    CHECK(run_self("exit").status == 0);
    CHECK_TEXT(bytes_of("static_map"), saved("{\n  runs= 2;\n}"));

    std::ofstream("static_map") << "{ runs= 5; ";
    CHECK(run_self("return").status == 0);
    CHECK_TEXT(bytes_of("static_map"), saved("{runs= 6; }"));
    CHECK_TEXT(bytes_of("static_map.bad"), "{ runs= 5; ");

    CHECK(std::distance(std::filesystem::directory_iterator("."), {}) == 2);
    std::filesystem::current_path("/");
    std::filesystem::remove_all(folder);
    return failures != 0;
}
