// Modules of every kind that are still loaded when the process ends; static objects of the program
// that use modules; types of a module that lives as long as the process.

#include "process.h"
#include "qrv/base/csignal.h"
#include "qrv/core/ctypes.h"
#include "qrv/modules/cmodule.h"
#include "qrv/modules/crepository.h"
#include "tests/modules/shared/module.h"
#include "tests/support/paths.h"

#include <memory>

namespace {

// Destroyed after everything below, and checks the events of the modules at the end.
struct LastWords {
    LastWords() = default;
    LastWords(LastWords const &) = delete;
    LastWords &operator=(LastWords const &) = delete;
    ~LastWords() {
        if (cModule::load("quorvanta") != &cGetMainModule()) std::_Exit(100);
        if (cModule::unload(&cGetMainModule())) std::_Exit(101);
    }
};
LastWords const last_words;

cModule own("the program's own", "", false);
cModuleUse const use_of_own(own);
cModuleUse const use_of_main(cGetMainModule());
std::unique_ptr<cModuleUse> use_of_loaded; // destroyed while the file is still loaded

EventLog event_log;
cRepositoryEntry *log_entry = nullptr;

cModule *load(char const *name) {
    cModule *const module =
        cModule::load(test::binary_file(std::string("tests/modules_to_load/") + name));
    if (!module) std::fprintf(stderr, "%s\n", cModule::last_error().c_str());
    return module;
}

void check_never_unloaded() {
    cModule *const not_counted = load("not_counted");
    CHECK(not_counted && not_counted->name() == "not counted itself");
    CHECK(cModule::usage(not_counted) == -1);
    CHECK(cModule::handle(not_counted) != nullptr);
    CHECK(!cModule::canunload(not_counted));
    CHECK(!cModule::unload(not_counted));

    cModule *const in_use = load("holds_use");
    CHECK(cModule::usage(in_use) == 1);
    CHECK(!cModule::unload(in_use));
}

void check_type() {
    cModule *const types = load("type_factory");
    CHECK(types && !types->canunload());
    cTypeObj &type = cat::find_type("Temperature");
    CHECK(type.name() == "Temperature");
    CHECK(&cat::find_type("Temperature") == &type);
    CHECK_TEXT(event_log.text, "a type is made; ");
    CHECK(!cModule::unload(types));
    CHECK(&cat::find_type("Temperature") == &type);
}

void check_loaded() {
    for (char const *name : {"plain", "own_module", "two_modules", "bare", "leaves"}) {
        cModule *const module = load(name);
        CHECK(module && module->canunload());
    }
    auto *const plain = static_cast<cModule *>(
        cRepoImpl::ptr(cRepoImpl::find(cRepoImpl::get(typeid(cModule)), "plain")));
    use_of_loaded = std::make_unique<cModuleUse>(plain);
    CHECK(cModule::usage(plain) == 1);
}

} // namespace

int main() {
    sig_idle();
    log_entry = cRepoImpl::create(cRepoImpl::get(typeid(EventLog)), "log", &event_log,
                                  typeid(EventLog), typeid(EventLog), "");
    check_type();
    check_never_unloaded();
    check_loaded();
    CHECK(own.usage() == 1);
    CHECK(!own.unload());
    cRepoImpl::release(log_entry);
    return failures;
}
