// The watchdog and real programs: how they run, hang, end, and are restarted.

#include "tests/watchdog/dog_run.h"
#include "tests/watchdog/plain_path.h"

using dog_test::cDog, dog_test::cRun, dog_test::child, dog_test::run, dog_test::shell;
using dog_test::shared_child;

namespace {

std::string const counts_of_nothing =
    "qrv-watchdog: signs of life: 0 messages, 0 events; other messages: 0; ignored: 0\n";

// Both programs: linked with the library's objects, and with the shared library.
TEST(WatchdogLives, a_program_that_ends_with_0_is_normal_and_nothing_is_printed) {
    EXPECT_EQ(run({}, child({"init", "take", "step", "3", "say", "done"})),
              (cRun{0, "linked\ndone\n", ""}));
    EXPECT_EQ(run({}, shared_child({"init", "take", "step", "3", "say", "done"})),
              (cRun{0, "linked\ndone\n", ""}));
}

TEST(WatchdogLives, with_signs_of_life_a_program_runs_longer_than_the_timeout) {
    cDog dog({"--timeout", "2", "--grace", "60"}, child({"init", "take", "busy", "say", "done"}));
    EXPECT_EQ(dog.line(), "linked");
    ::sleep(5);
    dog.end_input();
    EXPECT_EQ(dog.finish(), (cRun{0, "done\n", ""}));
}

TEST(WatchdogLives, without_signs_of_life_it_is_terminated_with_status_124) {
    EXPECT_EQ(run({"--timeout", "0.3"}, shell("exec sleep 100")),
              (cRun{124, "",
                    "qrv-watchdog: no sign of life from sh (pid N) for 0.3 s: it is ended\n"
                    "qrv-watchdog: sh died of signal 15, Terminated\n"}));
}

TEST(WatchdogLives, a_program_that_stops_sending_signs_of_life_is_terminated) {
    cRun const result =
        run({"--timeout", "3"}, child({"init", "take", "step", "5", "say", "hangs", "hang"}));
    EXPECT_EQ(result,
              (cRun{124, "linked\nhangs\n",
                    "qrv-watchdog: no sign of life from watchdog_child (pid N) for 3 s: it is "
                    "ended\n"
                    "qrv-watchdog: watchdog_child died of signal 15, Terminated\n"}));
}

TEST(WatchdogLives, messages_other_than_1027_are_not_signs_of_life) {
    cRun const result =
        run({"--timeout", "0.5"},
            shell("exec " + child({})[0] + " init take post 1026 0 0 post 1028 0 0 hang"));
    EXPECT_EQ(result.status, 124);
}

TEST(WatchdogLives, a_program_that_ignores_SIGTERM_is_killed) {
    EXPECT_EQ(run({"--timeout", "0.3", "--grace", "0.2"},
                  shell("trap '' TERM; while :; do sleep 0.1; done")),
              (cRun{124, "",
                    "qrv-watchdog: no sign of life from sh (pid N) for 0.3 s: it is ended\n"
                    "qrv-watchdog: sh (pid N) did not end within 0.2 s: it is killed\n"
                    "qrv-watchdog: sh died of signal 9, Killed\n"}));
}

TEST(WatchdogLives, a_hung_program_may_clean_up_within_the_grace_period) {
    EXPECT_EQ(run({"--timeout", "0.3", "--grace", "60"},
                  shell("trap 'echo ordered; exit 0' TERM; while :; do sleep 0.05; done")),
              (cRun{124, "ordered\n",
                    "qrv-watchdog: no sign of life from sh (pid N) for 0.3 s: it is ended\n"}));
}

TEST(WatchdogLives, a_stopped_program_counts_as_hung_and_may_still_clean_up) {
    EXPECT_EQ(run({"--timeout", "1", "--grace", "60"},
                  shell("trap 'echo ordered; exit 4' TERM; kill -STOP $$; "
                        "while :; do sleep 0.05; done")),
              (cRun{124, "ordered\n",
                    "qrv-watchdog: no sign of life from sh (pid N) for 1 s: it is ended\n"
                    "qrv-watchdog: sh ended with status 4\n"}));
}

TEST(WatchdogLives, the_programs_status_is_passed_on) {
    EXPECT_EQ(run({}, shell("exit 3")), (cRun{3, "", "qrv-watchdog: sh ended with status 3\n"}));
    EXPECT_EQ(run({}, shell("exit 255")),
              (cRun{255, "", "qrv-watchdog: sh ended with status 255\n"}));
}

TEST(WatchdogLives, a_program_ended_by_a_signal_gives_128_plus_its_number) {
    EXPECT_EQ(run({}, shell("kill -SEGV $$")),
              (cRun{139, "", "qrv-watchdog: sh died of signal 11, Segmentation fault\n"}));
}

TEST(WatchdogLives, restarts_are_counted_and_each_is_reported) {
    EXPECT_EQ(run({"--restart", "2"}, shell("echo life; exit 3")),
              (cRun{3, "life\nlife\nlife\n",
                    "qrv-watchdog: sh ended with status 3\n"
                    "qrv-watchdog: sh is started again, 1 of 2\n"
                    "qrv-watchdog: sh ended with status 3\n"
                    "qrv-watchdog: sh is started again, 2 of 2\n"
                    "qrv-watchdog: sh ended with status 3\n"}));
}

TEST(WatchdogLives, a_hung_program_is_also_restarted) {
    EXPECT_EQ(run({"--timeout", "0.3", "--restart", "1"}, shell("exec sleep 100")),
              (cRun{124, "",
                    "qrv-watchdog: no sign of life from sh (pid N) for 0.3 s: it is ended\n"
                    "qrv-watchdog: sh died of signal 15, Terminated\n"
                    "qrv-watchdog: sh is started again, 1 of 1\n"
                    "qrv-watchdog: no sign of life from sh (pid N) for 0.3 s: it is ended\n"
                    "qrv-watchdog: sh died of signal 15, Terminated\n"}));
}

TEST(WatchdogLives, a_successful_restart_is_the_last) {
    // The first run reads the only line, the second run finds no input.
    cDog dog({"--restart", "5"}, shell("echo life; read line && kill -ABRT $$; exit 0"));
    EXPECT_EQ(dog.line(), "life");
    dog.write("\n");
    EXPECT_EQ(dog.line(), "life");
    dog.end_input();
    EXPECT_EQ(dog.finish(), (cRun{0, "",
                                  "qrv-watchdog: sh died of signal 6, Aborted\n"
                                  "qrv-watchdog: sh is started again, 1 of 5\n"}));
}

TEST(WatchdogLives, two_hundred_restarts_leak_no_zombie_and_no_descriptor) {
    // If the watchdog kept a descriptor for each run, the last run would see more of them.
    cRun const result = run({"--restart", "200"}, shell("ls /proc/$PPID/fd | wc -l; "
                                                        "ps --ppid $PPID | wc -l 2>&1; exit 1"));
    EXPECT_EQ(result.status, 1);
    std::vector<std::string> lines;
    for (size_t at = 0, end; (end = result.out.find('\n', at)) != std::string::npos; at = end + 1)
        lines.push_back(result.out.substr(at, end - at));
    ASSERT_EQ(lines.size(), 402u);
    EXPECT_EQ(lines[0], lines[400]);
    EXPECT_EQ(lines[1], lines[401]);
}

TEST(WatchdogLives, a_failed_start_is_reported_with_the_reason) {
    dog_test::cPlainPath const path;
    EXPECT_EQ(run({"--restart", "3"}, {"/no/such/program"}),
              (cRun{127, "",
                    "qrv-watchdog: cannot start /no/such/program: No such file or "
                    "directory\n"}));
    EXPECT_EQ(run({}, {"no-such-program-anywhere"}),
              (cRun{127, "",
                    "qrv-watchdog: cannot start no-such-program-anywhere: No such file "
                    "or directory\n"}));
    EXPECT_EQ(run({}, {"/"}), (cRun{126, "", "qrv-watchdog: cannot start /: Permission denied\n"}));
    EXPECT_EQ(run({}, {""}), (cRun{127, "",
                                   "qrv-watchdog: cannot start : No such file or "
                                   "directory\n"}));
}

TEST(WatchdogLives, control_characters_in_a_name_are_not_printed) {
    dog_test::cPlainPath const path;
    EXPECT_EQ(run({}, {"a\n\x1B[2Jb\x7F"}).err,
              "qrv-watchdog: cannot start a??[2Jb?: No such file or directory\n");
}

TEST(WatchdogLives, a_long_name_is_truncated) {
    std::string const name(5000, 'n');
    cRun const result = run({}, {name});
    EXPECT_EQ(result.status, 126);
    EXPECT_EQ(result.err, ("qrv-watchdog: cannot start " + name).substr(0, 1000) + "\n");
}

TEST(WatchdogLives, the_program_receives_standard_streams_and_arguments) {
    cDog dog({}, shell("cat; echo \"$0\" >&2"));
    dog.write("in\n");
    EXPECT_EQ(dog.line(), "in");
    dog.end_input();
    EXPECT_EQ(dog.finish(), (cRun{0, "", "/bin/sh\n"}));
    EXPECT_EQ(run({}, {"/bin/echo", "--timeout", "a b", "", "--"}),
              (cRun{0, "--timeout a b  --\n", ""}));
}

TEST(WatchdogLives, the_program_inherits_no_descriptor_of_the_watch_dog) {
    cRun const alone = run({}, child({"open"}));
    EXPECT_EQ(alone, (cRun{0, "open 0 1 2\n", ""}));
}

TEST(WatchdogLives, the_program_begins_with_default_signals_except_ignored_terminal_signals) {
    // First only the watchdog itself has changed signals, then also a shell that ignores seven.
    std::string const dog = test::binary_file("bin/qrv-watchdog");
    cDog plain({}, child({"mask"}));
    EXPECT_EQ(plain.finish(), (cRun{0, "not as by default\n", ""}));
    cRun const ignoring =
        run({}, shell("trap '' HUP INT QUIT TERM CHLD PIPE USR1; exec " + dog + " --event " +
                      dog_test::own_name() + " -- " + child({})[0] + " mask"));
    EXPECT_EQ(ignoring, (cRun{0, "not as by default 1 2 3\n", ""}));
}

TEST(WatchdogLives, streams_that_the_caller_closed_are_closed_for_the_program) {
    std::string const dog = test::binary_file("bin/qrv-watchdog");
    EXPECT_EQ(
        run({}, shell("exec 3>&1 0<&- 2>&-; exec " + dog + " --event " + dog_test::own_name() +
                      " -- /bin/sh -c '[ -e /proc/$$/fd/0 ] || "
                      "[ -e /proc/$$/fd/2 ] || echo closed >&3'"))
            .out,
        "closed\n");
}

TEST(WatchdogLives, verbose_reports_starts_messages_and_counts) {
    EXPECT_EQ(run({"--verbose"}, child({"init", "take", "post", "5", "6", "-7", "step", "2"})),
              (cRun{0, "linked\n",
                    "qrv-watchdog: started watchdog_child (pid N), id N\n"
                    "qrv-watchdog: message 5 (wParam 6, lParam -7)\n"
                    "qrv-watchdog: signs of life: 2 messages, 2 events; other messages: 1; "
                    "ignored: 0\n"}));
    EXPECT_EQ(run({"--verbose"}, {"true"}),
              (cRun{0, "", "qrv-watchdog: started true (pid N), id N\n" + counts_of_nothing}));
}

TEST(WatchdogLives, a_reader_that_does_not_read_delays_nothing) {
    // Standard error is a full pipe that no process empties.
    std::string const dog = test::binary_file("bin/qrv-watchdog");
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    ASSERT_EQ(::fcntl(ends[1], F_SETFL, O_NONBLOCK), 0);
    std::string const much(4096, 'x');
    while (::write(ends[1], much.data(), much.size()) > 0) {
    }
    ASSERT_EQ(::fcntl(ends[1], F_SETFL, 0), 0);
    std::string const full =
        "/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(ends[1]);
    EXPECT_EQ(run({}, shell("exec " + dog + " --restart 50 --event " + dog_test::own_name() +
                            " -- /bin/sh -c 'exit 3' 2>" + full))
                  .status,
              3);
    for (int descriptor : {ends[0], ends[1]}) ::close(descriptor);
}

} // namespace
