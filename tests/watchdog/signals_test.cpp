// Signals to the watchdog: it passes them on, waits, and cleans everything up.

#include "tests/watchdog/dog_run.h"

#include <fstream>
#include <sys/ioctl.h>

using dog_test::cDog, dog_test::cRun, dog_test::child, dog_test::shell;

namespace {

bool is_there(cDog const &dog) {
    return ::access(("/dev/shm/sem." + dog.event()).c_str(), F_OK) == 0;
}

std::string trapping(char const *signals) {
    return "trap 'echo got it; exit 0' " + std::string(signals) +
           "; echo ready; while :; do sleep 0.05; done";
}

TEST(WatchdogSignals, are_passed_on_and_the_status_is_128_plus_the_number) {
    struct cCase {
        char const *name;
        int number;
    };
    for (cCase const &c : {cCase{"TERM", SIGTERM}, cCase{"INT", SIGINT}, cCase{"HUP", SIGHUP}}) {
        cDog dog({"--restart", "5", "--grace", "60"}, shell(trapping(c.name)));
        EXPECT_EQ(dog.line(), "ready");
        EXPECT_TRUE(is_there(dog));
        dog.signal(c.number);
        EXPECT_EQ(dog.finish(), (cRun{128 + c.number, "got it\n", ""})) << c.name;
        EXPECT_FALSE(is_there(dog));
    }
}

TEST(WatchdogSignals, a_program_ended_by_the_signal_is_not_reported) {
    cDog dog({}, child({"init", "take", "wait"}));
    EXPECT_EQ(dog.line(), "linked");
    dog.signal(SIGTERM);
    EXPECT_EQ(dog.finish(), (cRun{143, "", ""}));
}

TEST(WatchdogSignals, a_program_that_ignores_it_is_killed_after_the_grace_period) {
    cDog dog({"--grace", "0.3"}, child({"deaf", "say", "ready", "wait"}));
    EXPECT_EQ(dog.line(), "ready");
    dog.signal(SIGTERM);
    EXPECT_EQ(dog.finish(),
              (cRun{143, "",
                    "qrv-watchdog: watchdog_child (pid N) did not end within 0.3 s: it is "
                    "killed\n"}));
    EXPECT_FALSE(is_there(dog));
}

TEST(WatchdogSignals, a_stopped_program_receives_it_and_is_continued) {
    cDog dog({"--grace", "60"}, child({"say", "ready", "stop", "say", "not reached", "wait"}));
    EXPECT_EQ(dog.line(), "ready");
    dog.signal(SIGTERM);
    EXPECT_EQ(dog.status(), 143);
}

TEST(WatchdogSignals, a_second_signal_is_also_passed_on_and_the_first_determines_the_status) {
    cDog dog({"--grace", "60"}, shell("trap 'echo hup' HUP; trap 'echo term; exit 9' TERM; "
                                      "echo ready; while :; do sleep 0.05; done"));
    EXPECT_EQ(dog.line(), "ready");
    dog.signal(SIGHUP);
    EXPECT_EQ(dog.line(), "hup");
    dog.signal(SIGTERM);
    EXPECT_EQ(dog.finish(), (cRun{128 + SIGHUP, "term\n", ""}));
}

TEST(WatchdogSignals, a_watch_dog_that_was_stopped_restarts_its_wait) {
    cDog dog({"--timeout", "3"}, child({"say", "ready", "hang"}));
    EXPECT_EQ(dog.line(), "ready");
    dog.signal(SIGSTOP);
    ::sleep(2);
    dog.signal(SIGCONT);
    auto const start = std::chrono::steady_clock::now();
    EXPECT_EQ(dog.status(), 124);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(2900));
}

TEST(WatchdogSignals, a_signal_that_the_caller_ignores_ends_no_process) {
    // The outer watchdog passes the signal on to the inner one.
    cDog dog({"--grace", "60"},
             shell("trap '' HUP; exec " + test::binary_file("bin/qrv-watchdog") + " --event " +
                   dog_test::own_name() + " -- " + child({})[0] + " say ready wait say done"));
    EXPECT_EQ(dog.line(), "ready");
    dog.signal(SIGHUP);
    ::usleep(300000); // time for the signal to arrive
    dog.end_input();
    EXPECT_EQ(dog.finish(), (cRun{128 + SIGHUP, "done\n", ""}));
}

// Returns whether an interrupt was sent to the process that it has not received yet.
bool has_pending_interrupt(std::string const &process) {
    std::ifstream status("/proc/" + process + "/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("ShdPnd:"))
            return (std::stoull(line.substr(7), nullptr, 16) & 1U << (SIGINT - 1)) != 0;
    ADD_FAILURE() << "no status of process " << process;
    return false;
}

// A terminal sends its interrupt to the whole process group, so the watchdog must not send it
// again.
TEST(WatchdogSignals, an_interrupt_from_the_terminal_arrives_once) {
    int const terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(terminal, 0);
    ASSERT_EQ(::grantpt(terminal), 0);
    ASSERT_EQ(::unlockpt(terminal), 0);
    std::string const name = ::ptsname(terminal);
    // In a new session the shell gets the terminal as its controlling terminal; the watchdog is in
    // the process group of the shell.
    cDog dog({"--grace", "60"},
             {"setsid", "-w", "/bin/sh", "-c",
              "exec <" + name + "; exec " + test::binary_file("bin/qrv-watchdog") +
                  " --grace 60 --event " + dog_test::own_name() +
                  " -- /bin/sh -c 'n=0; trap \"n=\\$((n+1)); echo int \\$n\" INT; "
                  "trap \"echo at the end \\$n; exit 0\" TERM; echo ready $PPID; "
                  "while :; do sleep 0.05; done'"});
    std::string const ready = dog.line();
    ASSERT_TRUE(ready.starts_with("ready ")) << ready;
    ASSERT_EQ(::write(terminal, "\x03", 1), 1);
    EXPECT_EQ(dog.line(), "int 1");
    ASSERT_EQ(::write(terminal, "\x03", 1), 1);
    EXPECT_EQ(dog.line(), "int 2");
    // A hangup would be received before a pending interrupt.
    while (has_pending_interrupt(ready.substr(6))) ::usleep(1000);
    ::close(terminal); // sends a hangup, by which the program ends
    EXPECT_EQ(dog.finish(), (cRun{130, "", "qrv-watchdog: setsid ended with status 130\n"}));
}

} // namespace
