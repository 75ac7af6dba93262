// A program linked with the static library, whose static object lives longer than the library's
// own: the objects that start/startup.cpp creates do not exist yet, or no longer, and this has no
// effect.

#include "core/cregistry.h"
#include "process.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csignalobj.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "qrv/diagnostics/ccout.h"
#include "qrv/modules/cmodule.h"
#include "qrv/modules/crepository.h"
#include "qrv/util/cwatchdog.h"
#include "text/state/cchannels.h"

namespace {

class cScaleCtor : public cTypeCtor {
  public:
    typeref make() override { return typeref::adopt(new cTypeObj("scale")); }
};

int changes = 0;
void count_change() { ++changes; }

bool follows_paths() {
    objref const map = make<cMapObj>();
    map->setattr(cat::of("a"), cat::of(7));
    return cat::is_equal(map->getattrp("a"), 7);
}

struct cOutermost {
    cOutermost()
        : no_core(cat::core_state() == cat::cCoreState::none),
          no_hooks(!core.make_type && !core.fire_changed),
          no_channels(!cat::io_channel && !cat::lex_channel),
          streams_ready(cat::std_in().rdbuf() && cat::std_out().rdbuf() && cat::std_err().rdbuf()),
          no_modules(cModule::last_error().empty()),
          messages_wait((PostWatchDog(1, 2, 3), qrv_watchdog_queue_capacity() > 0)) {
        if (no_core) find_types();
        paths_followed = follows_paths();
        cat::std_out() << "[early]" << std::flush;
        objref const quiet = cat::of(1);
        quiet->set_omember("k", cat::of(2)); // fires `changed` when the signal cannot exist
        no_signal_types = !core.fire_changed;
        objref const observed = cat::of(1);
        cFunctionSlot<void (*)()> const slot(count_change, observed->force_changed_signal());
        observed->changed();
        signal_fired = changes == 1;
    }
    cOutermost(cOutermost const &) = delete;
    cOutermost &operator=(cOutermost const &) = delete;

    void find_types() {
        unknown_is_niltype = &cat::find_type("no such type") == &cat::type_nil();
        cScaleCtor scale;
        auto *const entry = cRepoImpl::create(cRepoImpl::get(typeid(cTypeCtor)), "scale",
                                              static_cast<cTypeCtor *>(&scale), typeid(cTypeCtor),
                                              typeid(cScaleCtor), "");
        factory_asked = cat::find_type("scale").name() == "scale";
        cRepoImpl::release(entry);
    }

    // The objects of the start-up have been destroyed. The core still exists: the constructor
    // started it.
    ~cOutermost() {
        std::printf("%s", !cat::io_channel && !cat::lex_channel ? "[no channels]" : "");
        std::printf("%s", follows_paths() ? "[paths]" : "");
        std::printf("%s", !cat::std_out().rdbuf() && !cat::std_err().rdbuf() ? "[no buffer]" : "");
        cat::std_err() << "nowhere" << std::flush;
        std::printf("%s", !cModule::load("any") ? "[no modules]" : "");
        std::fflush(stdout);
    }

    bool const no_core, no_hooks, no_channels, streams_ready, no_modules, messages_wait;
    bool unknown_is_niltype = false;
    bool factory_asked = false;
    bool paths_followed = false;
    bool no_signal_types = false;
    bool signal_fired = false;
} const outermost;

} // namespace

int main(int argc, char **) {
    if (argc > 1) {
        cSetTracing("catlex cat_io");
        return failures != 0;
    }
    CHECK(outermost.no_core);
    CHECK(outermost.no_hooks);
    CHECK(outermost.no_channels);
    CHECK(outermost.streams_ready);
    CHECK(outermost.no_modules);
    CHECK(outermost.messages_wait);
    CHECK(outermost.unknown_is_niltype);
    CHECK(outermost.factory_asked);
    CHECK(outermost.paths_followed);
    CHECK(outermost.no_signal_types);
    CHECK(outermost.signal_fired);
    CHECK(cat::io_channel == &cat::trace_io);
    CHECK(cat::lex_channel == &cat::trace_lex);
    cResult const child = run_self("child");
    CHECK(child.status == 0);
    CHECK_TEXT(child.output, "[early][no channels][paths][no buffer][no modules]");
    return failures != 0;
}
