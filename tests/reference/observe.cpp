// Runs generated operations and prints every visible result, to compare two states of
// the library. It uses only public headers, so that it can be built with either state.
//
//   reference_observe MODE FIRST LAST         for each seed a line "seed fingerprint"
//   reference_observe --show MODE FIRST LAST  the whole transcripts
//
// MODE is read, write, copy, hash or scan. The same seed gives the same work everywhere. A seed
// that runs for more than 5 seconds ends the process. Files are in a new folder below TMPDIR; it
// remains only if a signal ends the process.

#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csignalobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/diagnostics/ccout.h"
#include "qrv/diagnostics/ctrace.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"
#include "tests/reference/folder.h"
#include "tests/reference/transcript.h"
#include "tests/reference/user_types.h"
#include "tests/reference/world.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <unistd.h>

// Makes the hashes of strings, which are randomly seeded after an attack, and with them the
// colliding keys the same in every process. The program's own definition replaces that of the
// runtime.
unsigned std::random_device::_M_getval() { return 12345; }

namespace reference {

namespace {
std::unique_ptr<cWorld> the_world;
} // namespace

cWorld &world() { return *the_world; }

namespace {

// Logs the message output and the errors.
class cListener {
  public:
    cListener() : messages_(this, &cListener::message), errors_(this, &cListener::error) {
        cOutSigStreambuf.sig().connect(messages_);
        cat::sig_error().connect(errors_);
    }
    cListener(cListener const &) = delete;
    cListener &operator=(cListener const &) = delete;
    ~cListener() = default;

  private:
    void message(char const *text) { say("message " + shown(text)); }
    void error(cErr &error) {
        char code[16];
        std::snprintf(code, sizeof code, "%08x", error.code());
        say(std::string("error ") + code + " " + shown(error.as_string()));
        if (world().calm || !world().user.one_in(10)) return;
        if (world().user.one_in(2)) {
            error.set_code(error.code() & 0x3FFFFFFFu);
            say("  forgiven");
        } else {
            act();
        }
    }

    cSlot1<cListener, char const *> messages_;
    cSlot1<cListener, cErr &> errors_;
};

void choose_handling() {
    cRandom &random = world().input;
    auto &handler = cat::errhandler();
    handler.throw_mask(0x90000000u);
    handler.clear_mask(0);
    handler.silent_mask(0);
    static constexpr unsigned masks[] = {0x40000000u, 0x1u, 0x00020000u, 0x2u, 0x4u, 0x00400000u};
    switch (random.below(8)) {
    case 0:
        return handler.throw_mask(random.pick(masks));
    case 1:
        return handler.clear_mask(random.pick(masks));
    case 2:
        return handler.silent_mask(0xFFFFFFFFu);
    default:
        return;
    }
}

using cEntries = std::map<std::string, objref>;
cEntries entries_of(cAttrHash const &hash) {
    cEntries entries;
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node))
        entries[node->key_as_string()] = node->valref();
    return entries;
}

// Types declared by text, and constants.
void remove_new_types(cEntries const &before) {
    cAttrHash &types = *cat::type_hash_ptr();
    for (auto const &[name, type] : entries_of(types))
        if (!before.contains(name)) types.delitem(name);
}

void forget_comments() {
    cAttrScan::com_collected().clear();
    std::istringstream nothing;
    cAttrScan scan(nothing, false);
    scan.return_com(true, nullptr);
    scan.note_object(nullptr);
    scan.return_com(false, nullptr);
    cAttrScan::com_collected().clear();
}

using cMode = void (*)();
std::map<std::string, cMode> const modes{{"read", read_mode},
                                         {"write", write_mode},
                                         {"copy", copy_mode},
                                         {"hash", hash_mode},
                                         {"scan", scan_mode}};

void work(cMode mode) {
    choose_handling();
    if (world().input.one_in(6)) cSetTracing("+cat_io.capio+catlex:cerr");
    if (world().input.one_in(12)) {
        cat::write_indent = static_cast<int>(world().input.below(6));
        cat::write_indent0 = static_cast<int>(world().input.below(6));
    }
    try {
        mode();
    } catch (std::exception const &error) {
        say(std::string("exception ") + shown(error.what()));
    }
}
} // namespace

namespace {
// When a value that contains itself is copied until the stack ends, the result depends on the sizes
// of frames.
bool stack_has_ended() {
    return transcript().find("Nesting is too deep in object type") != std::string::npos;
}
} // namespace

void run_seed(std::string const &mode, std::uint64_t seed) {
    transcript().clear();
    the_world = std::make_unique<cWorld>(seed);
    std::uint32_t const census = cObjBase::ob_count();
    {
        cListener const listener;
        cEntries const types = entries_of(*cat::type_hash_ptr());
        work(modes.at(mode));
        world().written.clear();
        world().calm = true;
        forget_comments();
        remove_new_types(types);
        std::cout << std::flush;
        std::cerr << std::flush;
        cSetTracing("");
        cat::write_indent = 4;
        cat::write_indent0 = 2;
        cat::max_read_depth = 1000;
        cat::errhandler().throw_mask(0x90000000u);
        cat::errhandler().clear_mask(0);
        cat::errhandler().silent_mask(0);
        eros().clear();
    }
    if (stack_has_ended()) transcript() = "the stack has ended\n";
    say("left " + std::to_string(static_cast<int>(cObjBase::ob_count() - census)) + " objects" +
        (cat::is_reading() ? ", still reading" : ""));
}

namespace {

std::uint64_t fingerprint(std::string const &text) {
    std::uint64_t h = 14695981039346656037u;
    for (char const c : text) h = (h ^ static_cast<unsigned char>(c)) * 1099511628211u;
    return h;
}

// The core and everything that it creates on first use.
void warm_up() {
    make_user_types();
    for (char const *const name : {"intf", "choice", "attlist", "attspec", "iterator", "signal"})
        cat::find_type(name);
    cat::type_signal();
    cat::type_signal1();
    cat::type_slot1();
    cat::type_slot2();
    sig_idle();
}

int run(bool show, std::string const &mode, std::uint64_t first, std::uint64_t last) {
    if (!modes.contains(mode)) {
        std::fprintf(stderr, "no such mode: %s\n", mode.c_str());
        return 2;
    }
    cFolder const folder;
    warm_up();
    for (std::uint64_t seed = first; seed <= last; ++seed) {
        alarm(5);
        run_seed(mode, seed);
        if (show)
            std::printf("==== %s %" PRIu64 "\n%s", mode.c_str(), seed, transcript().c_str());
        else
            std::printf("%" PRIu64 " %016" PRIx64 "\n", seed, fingerprint(transcript()));
        std::fflush(stdout); // so that the output shows where a crash happened
    }
    return 0;
}
} // namespace

} // namespace reference

int main(int argc, char **argv) {
    bool const show = argc > 1 && std::string(argv[1]) == "--show";
    char **const args = argv + (show ? 1 : 0);
    if (argc - (show ? 1 : 0) != 4) {
        std::fprintf(stderr, "usage: %s [--show] MODE FIRST LAST\n", argv[0]);
        return 2;
    }
    return reference::run(show, args[1], std::strtoull(args[2], nullptr, 10),
                          std::strtoull(args[3], nullptr, 10));
}
