// Signals, slots and repository entries of a program with the shared library: the library's signals
// accept a slot type that only the program knows, and vice versa; static objects of the program
// that are connected to the library's signals, or are in its repository, are created and destroyed
// in any order without a fault. Returns the number of the failed check, or 0 if all succeed.

#include "qrv/base/csignal.h"
#include "qrv/modules/crepository.h"

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace {

std::string calls;

// Destroyed after everything below.
struct LastWords {
    LastWords() = default;
    LastWords(LastWords const &) = delete;
    LastWords &operator=(LastWords const &) = delete;
    ~LastWords() {
        if (calls != "idle;") std::_Exit(103);
    }
};
LastWords last_words;

struct Listener {
    void idle() { calls += "idle;"; }
    void flag(bool &on) {
        on = true;
        calls += "flag;";
    }
    void text(char const *what) { calls += std::string(what) + ";"; }
};

Listener listener;

// Connected while the program starts, and still connected when it ends.
cSlot<Listener> static_slot(&listener, &Listener::idle, sig_idle);
cSignal static_signal;
cDeleteSignal static_end(static_slot); // fires when the program ends
cSlot1<Listener, bool &> static_flag(&listener, &Listener::flag, sig_closetemplates);

struct Thing {
    Thing()
        : entry(cRepoImpl::create(cRepoImpl::get(typeid(Thing)), "thing", this, typeid(Thing),
                                  typeid(Thing), "")),
          count(cRef<cShared>::share(cGetShared(this))) {}
    Thing(Thing const &) = delete;
    Thing &operator=(Thing const &) = delete;
    ~Thing() {
        if (cRepoImpl::find(cRepoImpl::get(typeid(Thing)), "thing") != entry) std::_Exit(100);
        if (cGetShared(this) != count) std::_Exit(101);
        cRepoImpl::release(entry);
        if (cRepoImpl::find(cRepoImpl::get(typeid(Thing)), "thing")) std::_Exit(102);
        cPutShared(this);
    }
    cRepositoryEntry *entry;
    cRef<cShared> count;
};

Thing static_thing;

std::string taken() {
    std::string result;
    result.swap(calls);
    return result;
}

} // namespace

int main() {
    sig_idle();
    if (taken() != "idle;") return 1;

    bool on = false;
    sig_closetemplates(on);
    if (!on || taken() != "flag;") return 2;

    // A signal compiled in the library, with targets of types that the library does not know.
    cSignal1<char const *> const text;
    cSlot<Listener> const plain(&listener, &Listener::idle, text);
    cSlot1<Listener, char const *> const with_text(&listener, &Listener::text, text);
    text("x");
    if (taken() != "idle;x;") return 3;

    // A signal compiled in the program, with a signal of the library as target.
    cSignal1<std::string const &> const own;
    cSignal const forward(plain);
    own.connect(forward);
    own("y");
    if (taken() != "idle;") return 4;

    cSigInfo const info;
    info.connect(text);
    info("%d%s", 1, "z");
    if (taken() != "idle;1z;") return 5;

    // An exception of the program's slot propagates through the library.
    struct Thrower {
        void run() { throw std::runtime_error("run"); }
    } thrower;
    cSlot<Thrower> const throwing(&thrower, &Thrower::run, static_signal);
    try {
        static_signal();
        return 6;
    } catch (std::exception const &error) {
        if (std::string(error.what()) != "run") return 7;
    }
    if (cConnection::lock_count() != 0 || cConnection::queue_length() != 0) return 8;
    if (cRepoImpl::ptr(static_thing.entry) != &static_thing) return 9;
    return 0;
}
