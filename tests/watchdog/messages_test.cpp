// Messages and the event, from programs that use the library to the watchdog.

#include "tests/watchdog/dog_run.h"
#include "tools/watchdog/event.h"

#include <regex>

using dog_test::cDog, dog_test::cRun, dog_test::child, dog_test::cWords, dog_test::own_name;
using dog_test::run, dog_test::shared_child;

namespace {

// Runs a program without a watchdog.
cRun alone(cWords const &command) {
    std::string line = "unset QRV_STARTUP_TITLE QRV_WATCHDOG_ID; exec";
    for (std::string const &word : command) line += " '" + word + "'";
    // The watchdog starts a shell; the program that the shell starts does not receive the id.
    return run({}, dog_test::shell(line));
}

TEST(WatchdogMessages, messages_wait_for_the_id_and_are_sent_in_order) {
    cDog dog({"--verbose"},
             child({"post", "1",    "10", "-1", "init", "post", "2",    "0", "0", "step", "1",
                    "id",   "post", "3",  "0",  "0",    "take", "post", "4", "0", "0"}));
    cRun const result = dog.finish();
    EXPECT_EQ(result, (cRun{0, "id 0\nlinked\n",
                            "qrv-watchdog: started watchdog_child (pid N), id N\n"
                            "qrv-watchdog: message 1 (wParam 10, lParam -1)\n"
                            "qrv-watchdog: message 2 (wParam 0, lParam 0)\n"
                            "qrv-watchdog: message 3 (wParam 0, lParam 0)\n"
                            "qrv-watchdog: message 4 (wParam 0, lParam 0)\n"
                            "qrv-watchdog: signs of life: 1 messages, 1 events; other messages: 4; "
                            "ignored: 0\n"}));
}

TEST(WatchdogMessages, extreme_numbers_arrive_unchanged) {
    cRun const result = run({"--verbose"}, child({"init", "take", "post", "-1", "-1", "-2147483648",
                                                  "post", "0", "2147483647", "2147483647"}));
    EXPECT_NE(result.err.find("message 4294967295 (wParam 4294967295, lParam -2147483648)\n"),
              std::string::npos);
    EXPECT_NE(result.err.find("message 0 (wParam 2147483647, lParam 2147483647)\n"),
              std::string::npos);
}

TEST(WatchdogMessages, a_program_without_a_watch_dog_connects_to_nothing_and_opens_nothing) {
    cRun const result = alone(shared_child(
        {"post", "1", "2", "3", "init", "id", "step", "1000", "post", "1", "2", "3", "open"}));
    EXPECT_EQ(result, (cRun{0, "id 4294967295\nopen 0 1 2\n", ""}));
}

TEST(WatchdogMessages, a_program_without_a_watch_dog_accepts_no_id) {
    EXPECT_EQ(alone(shared_child({"init", "take", "id"})),
              (cRun{0, "not linked\nid 4294967295\n", ""}));
}

TEST(WatchdogMessages, a_hundred_thousand_signs_of_life_are_handled) {
    cRun const result =
        run({"--verbose"}, child({"init", "take", "step", "100000", "say", "done"}));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "linked\ndone\n");
    std::smatch counts;
    ASSERT_TRUE(std::regex_search(result.err, counts,
                                  std::regex("signs of life: ([0-9]+) messages, 100000 events; "
                                             "other messages: 0; ignored: 0\n")))
        << result.err;
    // Messages sent while the socket is full are lost.
    EXPECT_GE(std::stoi(counts[1]), 1);
    EXPECT_LE(std::stoi(counts[1]), 100000);
}

TEST(WatchdogMessages, the_event_alone_keeps_a_program_alive) {
    // The program never takes the id, so its messages stay in its queue.
    cDog dog({"--timeout", "2", "--verbose"}, child({"init", "id", "busy", "say", "done"}));
    EXPECT_EQ(dog.line(), "id 0");
    ::sleep(5);
    dog.end_input();
    cRun const result = dog.finish();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "done\n");
    EXPECT_NE(result.err.find("signs of life: 0 messages, "), std::string::npos) << result.err;
    EXPECT_EQ(result.err.find(", 0 events"), std::string::npos) << result.err;
}

TEST(WatchdogMessages, messages_alone_keep_a_program_alive) {
    std::string const name = own_name();
    watchdog::cEvent const taken(name);
    ASSERT_TRUE(taken.is_owned());
    cDog dog({"--timeout", "2"}, child({"init", "take", "busy", "say", "done"}), name);
    EXPECT_EQ(dog.error_line(),
              "qrv-watchdog: event " + name + ": another watchdog has it; messages alone count");
    EXPECT_EQ(dog.line(), "linked");
    ::sleep(5);
    dog.end_input();
    EXPECT_EQ(dog.finish(), (cRun{0, "done\n", ""}));
}

TEST(WatchdogMessages, the_second_of_two_watch_dogs_has_no_event) {
    cDog first({"--verbose"}, child({"init", "take", "wait", "step", "1"}));
    EXPECT_EQ(first.line(), "linked");
    cDog second({"--verbose"}, child({"init", "take", "step", "2"}), first.event());
    EXPECT_EQ(second.finish(),
              (cRun{0, "linked\n",
                    "qrv-watchdog: event " + first.event() +
                        ": another watchdog has it; messages alone count\n"
                        "qrv-watchdog: started watchdog_child (pid N), id N\n"
                        "qrv-watchdog: signs of life: 2 messages, 0 events; other messages: 0; "
                        "ignored: 0\n"}));
    first.end_input();
    // There is only one event of a name: the second program's signs of life raised it, too.
    EXPECT_EQ(first.finish(),
              (cRun{0, "",
                    "qrv-watchdog: started watchdog_child (pid N), id N\n"
                    "qrv-watchdog: signs of life: 1 messages, 3 events; other messages: 0; "
                    "ignored: 0\n"}));
}

TEST(WatchdogMessages, the_event_of_a_killed_watch_dog_is_replaced) {
    std::string const name = own_name();
    cDog killed({}, child({"init", "take", "wait"}), name);
    EXPECT_EQ(killed.line(), "linked");
    killed.signal(SIGKILL);
    EXPECT_EQ(killed.status(), 128 + SIGKILL);
    EXPECT_EQ(::access(("/dev/shm/sem." + name).c_str(), F_OK), 0);
    cDog next({"--verbose"}, child({"init", "take", "step", "1"}), name);
    EXPECT_EQ(next.finish(),
              (cRun{0, "linked\n",
                    "qrv-watchdog: started watchdog_child (pid N), id N\n"
                    "qrv-watchdog: signs of life: 1 messages, 1 events; other messages: 0; "
                    "ignored: 0\n"}));
    EXPECT_NE(::access(("/dev/shm/sem." + name).c_str(), F_OK), 0);
    killed.end_input(); // its program still runs, and ends now
    EXPECT_EQ(killed.rest(), "");
}

TEST(WatchdogMessages, datagrams_of_a_wrong_length_are_ignored_and_reported_once) {
    cRun const result =
        run({"--verbose"},
            child({"init", "take", "raw", "11", "raw", "13", "raw", "0", "post", "9", "0", "0"}));
    EXPECT_EQ(result,
              (cRun{0, "linked\n",
                    "qrv-watchdog: started watchdog_child (pid N), id N\n"
                    "qrv-watchdog: a datagram of a wrong length is ignored, as all like it\n"
                    "qrv-watchdog: message 9 (wParam 0, lParam 0)\n"
                    "qrv-watchdog: signs of life: 0 messages, 0 events; other messages: 1; "
                    "ignored: 3\n"}));
}

TEST(WatchdogMessages, without_verbose_messages_are_not_reported) {
    EXPECT_EQ(run({}, child({"init", "take", "raw", "11", "post", "9", "0", "0"})),
              (cRun{0, "linked\n", ""}));
}

// Only the superuser can become another user. thread_link_test.cpp tests the rest with forged
// credentials.
TEST(WatchdogMessages, messages_of_another_user_are_ignored_and_reported_once) {
    bool const root = ::geteuid() == 0;
    std::string const reported =
        root ? "qrv-watchdog: a datagram sent by user 65534 is ignored, as all like it\n" : "";
    EXPECT_EQ(
        run({"--verbose"}, child({"init", "take", "step", "1", "user",
                                  root ? "65534" : std::to_string(::geteuid()), "step", "2"})),
        (cRun{0, root ? "linked\n" : "linked\nno other user\n",
              "qrv-watchdog: started watchdog_child (pid N), id N\n" + reported +
                  "qrv-watchdog: signs of life: " + (root ? "1" : "3") +
                  " messages, 3 events; other messages: 0; ignored: " + (root ? "2" : "0") +
                  "\n"}));
}

// The shared library uses the default name of the event. If another watchdog on this machine owns
// the event, only messages are tested.
TEST(WatchdogMessages, the_shared_library_uses_the_default_event) {
    cDog dog({"--verbose", "--", shared_child({})[0], "init", "take", "step", "3"});
    cRun const result = dog.finish();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "linked\n");
    bool const owner = result.err.find("event EreignisQuorvanta: ") == std::string::npos;
    RecordProperty("event", owner ? "owner" : "not owner");
    std::printf("tested as %s of the event\n", owner ? "owner" : "one who is not the owner");
    std::smatch counts;
    ASSERT_TRUE(std::regex_search(
        result.err, counts,
        std::regex("signs of life: 3 messages, ([0-9]+) events; other messages: 0; ignored: 0\n")))
        << result.err;
    if (owner)
        EXPECT_GE(std::stoi(counts[1]), 3); // other programs may raise it, too
    else
        EXPECT_EQ(counts[1], "0");
}

} // namespace
