// The start-up: every object of the library with a dynamic initialiser, in the order of creation.
// The end of the process destroys them in reverse order. No other file of the library has such an
// object; all others are constant-initialised, or created on first use after a simple test.
//
// <iostream> comes first: it creates the standard streams, which must exist before they are
// redirected to the message output. No other file of the library includes it.

#include <iostream>

#include "diagnostics/ccout_state.h"
#include "modules/cmodule_state.h"
#include "modules/crepository_state.h"
#include "qrv/base/csignal.h"
#include "qrv/diagnostics/ccout.h"
#include "qrv/diagnostics/ctrace.h"
#include "qrv/modules/cmodule.h"
#include "qrv/util/cundo.h"
#include "qrv/util/cutil.h"
#include "qrv/util/cwatchdog.h"
#include "text/state/cchannels.h"
#include "util/cintf_type.h"
#include "util/cwatchdog_state.h"

namespace {

constinit bool started = false; // the standard streams exist

// Static code of a program that links the library statically may run before this file.
void start_standard_streams() {
    if (!started) std::ios_base::Init const now;
}

struct cStarted {
    cStarted() { started = true; }
    cStarted(cStarted const &) = delete;
    cStarted &operator=(cStarted const &) = delete;
    ~cStarted() = default;
};

// The two tables of the repository, created here unless static code of a program needed them
// earlier.
struct cSharedTableStart {
    cSharedTableStart() { cat::start_shared_table(); }
    cSharedTableStart(cSharedTableStart const &) = delete;
    cSharedTableStart &operator=(cSharedTableStart const &) = delete;
    ~cSharedTableStart() = default;
};

struct cRepositoriesStart {
    cRepositoriesStart() { cat::start_repositories(); }
    cRepositoriesStart(cRepositoriesStart const &) = delete;
    cRepositoriesStart &operator=(cRepositoriesStart const &) = delete;
    ~cRepositoriesStart() = default;
};

// Lets the text layers write to a channel during its lifetime.
class cChannelUse {
  public:
    cChannelUse(cTracer *&user, cTracer &channel) : user_(user) { user = &channel; }
    cChannelUse(cChannelUse const &) = delete;
    cChannelUse &operator=(cChannelUse const &) = delete;
    ~cChannelUse() { user_ = nullptr; }

  private:
    cTracer *&user_;
};

struct cTraceRulesCloser {
    cTraceRulesCloser() = default;
    cTraceRulesCloser(cTraceRulesCloser const &) = delete;
    cTraceRulesCloser &operator=(cTraceRulesCloser const &) = delete;
    ~cTraceRulesCloser() { cat::clear_trace_rules(); }
};

struct cMessageFileCloser {
    cMessageFileCloser() = default;
    cMessageFileCloser(cMessageFileCloser const &) = delete;
    cMessageFileCloser &operator=(cMessageFileCloser const &) = delete;
    ~cMessageFileCloser() { cprintfclose(); }
};

struct cVersionText {
    cVersionText() { std::cerr << cversionstring() << "\n"; }
    cVersionText(cVersionText const &) = delete;
    cVersionText &operator=(cVersionText const &) = delete;
    ~cVersionText() { std::cerr << cat::end_text; }
};

struct cConsoleCloser {
    cConsoleCloser() = default;
    cConsoleCloser(cConsoleCloser const &) = delete;
    cConsoleCloser &operator=(cConsoleCloser const &) = delete;
    ~cConsoleCloser() { cat::end_console(); }
};

} // namespace

cat::cStandardStreams cat::standard_streams() {
    start_standard_streams();
    return {std::cin, std::cout, std::cerr};
}

// ---- the order starts here; <iostream> has created the standard streams ----

static cStarted streams_started;

static cSharedTableStart shared_table_start;
static cRepositoriesStart repositories_start;

constinit cSignal sig_idle;
constinit cSignal sig_init;
constinit cSignal sig_exit;
constinit cSignal sig_inittemplates;
constinit cSignal1<bool &> sig_closetemplates;

static cTraceRulesCloser trace_rules_closer; // outlives the library's channels
cTracer cat::trace_io("cat_io.capio", 3);
static cChannelUse io_use(cat::io_channel, cat::trace_io);
cTracer cat::trace_lex("catlex", 3);
static cChannelUse lex_use(cat::lex_channel, cat::trace_lex);

cFunctionSlot1<char const *, void (*)(char const *)> debugout(cat::pass_to_debug_output);
cTheOutStreambuf cOutSigStreambuf;
static cMessageFileCloser message_file_closer;
static cVersionText version_text;     // prints its final text while the message output still exists
static cConsoleCloser console_closer; // a console does not show that text

constinit cModuleList cat::loaded_modules;
static cModule main_module("quorvanta", "quorvanta main module", false);
cModule &cGetMainModule() { return main_module; }
// the repository's text "unknown" is created on first use and never destroyed

static cIntfTypeCtor intf; // starts the object core

cUndoGlobalList undoGlobalList(true);
cUndoGlobalList redoGlobalList(false);

[[maybe_unused]] static void const *const stack_base = cGetStackBase();

constinit cWatchDogQueue cat::watchdog_queue;
static cFunctionSlot<void (*)()> startup_test(cat::watchdog_startup_test, sig_init);
static cWatchDogSend watchdog_send;
cSignal &sig_progstep = watchdog_send.sig;
constinit cSignal2<int, int> sig_proginit;
constinit cSignal sig_progbegin;
