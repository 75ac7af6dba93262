#include "tools/qrv/process/modules.h"

#include "qrv/base/platform/cplatform.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/modules/cmodule.h"
#include "qrv/modules/crepository.h"
#include "tools/qrv/output/message_line.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/output/thrown.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <sstream>

namespace {

// What --module has loaded.
struct cLoaded {
    std::vector<std::string> names;
    std::map<std::string, std::string> types; // from a type to the module that registered it
};

cLoaded &loaded() {
    static cLoaded all;
    return all;
}

// Allows only the given names, whose modules are already loaded.
bool is_allowed(std::string const &name) {
    std::vector<std::string> const &names = loaded().names;
    return std::find(names.begin(), names.end(), name) != names.end();
}

// Records the types that were registered, or that factories can create, since the last call.
void note_types(std::string const &module) {
    auto const note = [&](std::string const &type) { loaded().types.emplace(type, module); };
    cAttrHash const &types = cat::typemap().datamap();
    for (cAttrNode const *node = types.first(); node; node = types.next(node))
        note(node->key_as_string());
    for (std::string const &type : factories()) note(type);
}

bool report_failure(std::string const &name, std::string const &reasons) {
    put_error("qrv", "cannot load the module '" + name + "'");
    std::istringstream lines(reasons);
    for (std::string line; std::getline(lines, line);)
        put_lines(message_line("qrv", cRole::note, line));
    return false;
}

// The path, without ".so", of a module in the folder next to the program. Empty if the name is a
// path.
std::string beside_program(std::string const &name) {
    std::error_code error;
    std::filesystem::path const program = std::filesystem::read_symlink("/proc/self/exe", error);
    bool const is_path = name.empty() || name.find('/') != name.npos;
    return error || is_path ? "" : (program.parent_path() / "modules" / name).string();
}

// If the file next to the program can't be loaded, no other file of this name is tried. A name that
// ends with a slash would mean the program's own module, which has no types.
bool load(std::string const &name) {
    if (name.ends_with('/'))
        return report_failure(name, "give the name of a file, not of a folder");
    try {
        std::string const beside = beside_program(name);
        if (!beside.empty() && cModule::load(beside)) return true;
        std::string const reasons = beside.empty() ? "" : cModule::last_error() + "\n";
        bool const is_there =
            !beside.empty() && (cat::is_regular(beside + ".so") || cat::is_regular(beside));
        if (!is_there && cModule::load(name)) return true;
        return report_failure(name, is_there ? reasons : reasons + cModule::last_error());
    } catch (...) {
        return report_failure(name, thrown());
    }
}

} // namespace

bool load_modules(std::vector<std::string> const &names) {
    note_types(""); // the library's types
    for (std::string const &name : names) {
        if (!load(name)) return false;
        note_types(name);
    }
    loaded().names = names;
    qrv_set_module_filter(is_allowed);
    return true;
}

bool modules_are_loaded() { return !loaded().names.empty(); }

std::string module_of(cTypeObj const &type) {
    auto const found = loaded().types.find(type.name());
    return found == loaded().types.end() ? "" : found->second;
}

std::vector<std::string> factories() {
    std::vector<std::string> names;
    cRepositoryList *const list = cRepoImpl::get(typeid(cTypeCtor));
    for (auto const *entry = cRepoImpl::begin(list); entry != cRepoImpl::end(list);
         entry = cRepoImpl::next(entry))
        names.push_back(cRepoImpl::name(entry));
    return names;
}
