// A module name without a folder is first searched where the system searches shared objects, here
// in the folders of LD_LIBRARY_PATH. The system reads this variable when a process starts, so each
// search runs in a new process.

#include "process.h"
#include "qrv/base/csignal.h"
#include "qrv/modules/cmodule.h"
#include "qrv/modules/crepository.h"
#include "tests/modules/shared/module.h"
#include "tests/support/paths.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;

void put(char const *module, fs::path const &to) {
    fs::create_directories(to.parent_path());
    fs::copy_file(test::binary_file(std::string("tests/modules_to_load/") + module + ".so"), to,
                  fs::copy_options::overwrite_existing);
}

std::string loaded_thing() {
    cModule *const module = cModule::load("part");
    if (!module) return cModule::last_error();
    std::string const name = cRepoImpl::name(cRepoImpl::begin(things()));
    return module->unload() ? name : "not unloaded";
}

} // namespace

int main(int count, char **) {
    if (count > 1) { // the process that run_self() starts
        say(loaded_thing());
        return 0;
    }
    sig_idle();
    fs::path const folder =
        fs::temp_directory_path() / ("qrv_search_" + std::to_string(::getpid()));
    fs::create_directories(folder);
    fs::current_path(folder);
    put("plain", folder / "system/part.so");
    put("bare", folder / "part.so");
    put("releases", folder / "modules/part.so");
    std::string const system = folder / "system";
    CHECK_TEXT(run_self("run", {{"LD_LIBRARY_PATH", system}}).output, "plain thing");
    CHECK_TEXT(run_self("run").output, "bare thing");
    fs::remove("part.so");
    CHECK_TEXT(run_self("run").output, "stays");
    fs::current_path("/");
    fs::remove_all(folder);
    return failures;
}
