// One round: wait, process everything that has arrived, then read the clock. In this order, a sign
// of life that arrived in time counts even if the round begins late, and the last messages of a
// program are processed before its end.

#include "watch.h"

#include "qrv/util/cwatchdog.h"
#include "report.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <unistd.h>

namespace watchdog {

namespace {

constexpr int most_messages = 1024; // in one round, so that the clock is read in time
constexpr int looks = 4;            // queries of the event, which wakes nobody, in one timeout

cTime now() { return std::chrono::steady_clock::now(); }

std::string described(cMessage const &message) {
    return "message " + std::to_string(message.message) + " (wParam " +
           std::to_string(message.w_param) + ", lParam " + std::to_string(message.l_param) + ")";
}

std::string described(cEnd end) {
    if (!end.by_signal) return "ended with status " + std::to_string(end.number);
    return "died of signal " + std::to_string(end.number) + ", " + ::strsignal(end.number);
}

std::string described(cDatagram const &datagram) {
    switch (datagram.kind) {
    case cDatagram::cKind::foreign:
        return "sent by user " + std::to_string(datagram.user);
    case cDatagram::cKind::wrong_length:
        return "of a wrong length";
    default:
        return "without a sender";
    }
}

} // namespace

cWatch::cWatch(cOptions const &options)
    : options_(options), link_(static_cast<std::uint32_t>(::getpid())), event_(options.event),
      program_(options.command, link_.id()), life_(options.rules) {
    if (!event_.is_owned())
        report("event " + options.event + ": " + event_.why_not() + "; messages alone count");
}

int cWatch::run() {
    if (start())
        while (round()) {
        }
    if (options_.verbose) say_counts();
    return life_.status();
}

bool cWatch::start() {
    int const error = program_.start();
    if (error != 0) {
        life_.not_started(error);
        report(reason("cannot start " + options_.command[0], error));
        return false;
    }
    life_.started(now());
    if (options_.verbose)
        report("started " + program_.full_name() + ", id " + std::to_string(link_.id()));
    return true;
}

bool cWatch::round() {
    wait();
    take_signals();
    std::optional<cEnd> const end = program_.ended();
    bool const by_message = take_messages();
    bool const by_event = take_events();
    if (end) return ended(*end);
    if (by_message || by_event) life_.sign_of_life(now());
    cLife::cStep const step = life_.look(now());
    act(step);
    return step != cLife::cStep::give_up;
}

void cWatch::wait() const {
    cSpan span = life_.deadline() - now();
    if (event_.is_owned()) span = std::min(span, options_.rules.timeout / looks);
    auto const rest = std::chrono::ceil<std::chrono::milliseconds>(span).count();
    pollfd sources[] = {{signals_.descriptor(), POLLIN, 0}, {link_.descriptor(), POLLIN, 0}};
    if (::poll(sources, 2, static_cast<int>(std::max<decltype(rest)>(rest, 0))) < 0 &&
        errno != EINTR)
        throw cFailure(reason("cannot wait", errno));
}

void cWatch::take_signals() {
    for (cSignals::cTaken taken = signals_.take(); taken.number != 0; taken = signals_.take()) {
        if (taken.number == SIGCONT) life_.slept(now());
        if (taken.number == SIGCHLD || taken.number == SIGCONT) continue;
        life_.stop(taken.number, now());
        if (!taken.by_terminal) end_by(taken.number);
    }
}

bool cWatch::take_messages() {
    bool alive = false;
    for (int i = 0; i < most_messages; ++i) {
        cDatagram const datagram = link_.take();
        if (datagram.kind == cDatagram::cKind::nothing) break;
        if (take_datagram(datagram)) alive = true;
    }
    return alive;
}

// Returns whether the datagram is a sign of life.
bool cWatch::take_datagram(cDatagram const &datagram) {
    if (datagram.kind != cDatagram::cKind::message) {
        ++counts_.ignored;
        say_ignored(datagram);
        return false;
    }
    if (datagram.message.message == watchdog_alive_message) {
        ++counts_.signs;
        return true;
    }
    ++counts_.others;
    if (options_.verbose) report(described(datagram.message));
    return false;
}

bool cWatch::take_events() {
    unsigned int const count = event_.take();
    counts_.events += count;
    return count != 0;
}

// Reports how the program ended. Returns whether it was started again.
bool cWatch::ended(cEnd end) {
    bool const again = life_.ended(end);
    if (!end.is_good() && !life_.is_stopping()) report(program_.name() + " " + described(end));
    if (!again) return false;
    report(program_.name() + " is started again, " + std::to_string(life_.restarts()) + " of " +
           std::to_string(options_.rules.restarts));
    return start();
}

void cWatch::act(cLife::cStep step) {
    switch (step) {
    case cLife::cStep::none:
        return;
    case cLife::cStep::terminate:
        report("no sign of life from " + program_.full_name() + " for " + options_.timeout +
               " s: it is ended");
        return end_by(SIGTERM);
    case cLife::cStep::kill:
        report(program_.full_name() + " did not end within " + options_.grace + " s: it is killed");
        return program_.signal(SIGKILL);
    case cLife::cStep::give_up:
        report(program_.full_name() + " cannot be killed: it is left alone");
    }
}

// Also continues the program: a stopped program would not act on the signal.
void cWatch::end_by(int signal) const {
    program_.signal(signal);
    program_.signal(SIGCONT);
}

void cWatch::say_ignored(cDatagram const &datagram) {
    unsigned int const bit = 1u << static_cast<unsigned int>(datagram.kind);
    if (!options_.verbose || (said_ & bit) != 0) return;
    said_ |= bit;
    report("a datagram " + described(datagram) + " is ignored, as all like it");
}

void cWatch::say_counts() const {
    report("signs of life: " + std::to_string(counts_.signs) + " messages, " +
           std::to_string(counts_.events) + " events; other messages: " +
           std::to_string(counts_.others) + "; ignored: " + std::to_string(counts_.ignored));
}

} // namespace watchdog
