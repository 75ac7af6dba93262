// The watched program as a process: its environment, and failed starts.

#include "tools/watchdog/program.h"

#include "tests/support/paths.h"
#include "tests/watchdog/plain_path.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace watchdog;

namespace {

using cTexts = std::vector<std::string>;

TEST(WatchdogProgram, title_and_id_are_added_to_the_environment) {
    char const *const ours[] = {"A=1", "B=", nullptr};
    EXPECT_EQ(environment_of(ours, 4294967294u),
              (cTexts{"A=1", "B=", "QRV_STARTUP_TITLE=WatchDog", "QRV_WATCHDOG_ID=4294967294"}));
}

TEST(WatchdogProgram, variables_of_an_outer_watch_dog_are_replaced) {
    char const *const ours[] = {"QRV_STARTUP_TITLE=other", "QRV_STARTUP_TITLES=x",
                                "QRV_WATCHDOG_ID=5",       "QRV_WATCHDOG_ID=6",
                                "XQRV_WATCHDOG_ID=7",      nullptr};
    EXPECT_EQ(environment_of(ours, 1), (cTexts{"QRV_STARTUP_TITLES=x", "XQRV_WATCHDOG_ID=7",
                                               "QRV_STARTUP_TITLE=WatchDog", "QRV_WATCHDOG_ID=1"}));
}

TEST(WatchdogProgram, an_empty_environment_gets_title_and_id) {
    EXPECT_EQ(environment_of(nullptr, 2),
              (cTexts{"QRV_STARTUP_TITLE=WatchDog", "QRV_WATCHDOG_ID=2"}));
}

TEST(WatchdogProgram, a_failed_start_returns_its_error) {
    dog_test::cPlainPath const path;
    EXPECT_EQ(cProgram({"/no/such"}, 1).start(), ENOENT);
    EXPECT_EQ(cProgram({"no-such-program-anywhere"}, 1).start(), ENOENT);
    EXPECT_EQ(cProgram({""}, 1).start(), ENOENT);
    EXPECT_EQ(cProgram({"/"}, 1).start(), EACCES);
    EXPECT_EQ(cProgram({test::source_file("README.md")}, 1).start(), EACCES);
}

TEST(WatchdogProgram, a_program_not_started_has_not_ended_and_receives_no_signal) {
    cProgram program({"/no/such"}, 1);
    program.start();
    EXPECT_FALSE(program.is_running());
    EXPECT_FALSE(program.ended());
    program.signal(9); // process id 0 would mean the test's own process group
    EXPECT_EQ(program.full_name(), "such");
}

TEST(WatchdogProgram, an_adopted_orphan_leaves_no_zombie) {
    auto const ended_child = [] {
        siginfo_t info{};
        ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT);
        return info.si_pid;
    };
    ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    cProgram program({"/bin/sh", "-c", "(true &); exec sleep 100"}, 1);
    ASSERT_EQ(program.start(), 0);
    while (ended_child() == 0) ::usleep(1000);
    EXPECT_FALSE(program.ended());
    EXPECT_EQ(ended_child(), 0);
    program.signal(SIGKILL);
    std::optional<cEnd> end;
    while (!end) end = program.ended();
    EXPECT_TRUE(end->by_signal);
    EXPECT_EQ(end->number, SIGKILL);
    ::prctl(PR_SET_CHILD_SUBREAPER, 0);
}

TEST(WatchdogProgram, names_are_printed_without_folders) {
    EXPECT_EQ(cProgram({"a/b/c", "d/e"}, 1).name(), "c");
    EXPECT_EQ(cProgram({"c"}, 1).name(), "c");
    EXPECT_EQ(cProgram({"c/"}, 1).name(), "");
}

} // namespace
