#include "signals.h"

#include "report.h"

#include <cerrno>
#include <csignal>
#include <sys/signalfd.h>

namespace watchdog {

namespace {

bool is_ignored(int number) {
    struct sigaction action {};
    return ::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

} // namespace

cSignals::cSignals() {
    std::signal(SIGPIPE, SIG_IGN); // a closed standard error must not end the watchdog
    std::signal(SIGCHLD,
                SIG_DFL); // if the caller ignores it, waitpid cannot return how a program ended
    sigset_t set{};
    ::sigemptyset(&set);
    for (int number : {SIGCHLD, SIGCONT, SIGTERM}) ::sigaddset(&set, number);
    for (int number : {SIGINT, SIGHUP})
        if (!is_ignored(number)) ::sigaddset(&set, number);
    ::sigprocmask(SIG_BLOCK, &set, nullptr);
    descriptor_ = cDescriptor(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!descriptor_) throw cFailure(reason("cannot listen to signals", errno));
}

cSignals::cTaken cSignals::take() const {
    signalfd_siginfo info{};
    if (::read(descriptor(), &info, sizeof info) != static_cast<ssize_t>(sizeof info)) return {};
    return {static_cast<int>(info.ssi_signo),
            info.ssi_signo == SIGINT && info.ssi_code == SI_KERNEL};
}

} // namespace watchdog
