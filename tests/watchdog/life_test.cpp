// The decisions of the watchdog, with a clock that the tests set.

#include "tools/watchdog/life.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>

using namespace watchdog;
using namespace std::chrono_literals;
using cStep = cLife::cStep;

namespace {

cTime at(cSpan span) { return cTime(std::chrono::hours(1)) + span; }

cLife started(int restarts = 0) {
    cLife life({10s, 3s, 4s, restarts});
    life.started(at(0s));
    return life;
}

constexpr cEnd exit_with(int status) { return {false, status}; }
constexpr cEnd died_of(int signal) { return {true, signal}; }

TEST(WatchdogLife, the_start_counts_as_the_first_sign) {
    cLife life = started();
    EXPECT_EQ(life.deadline(), at(10s));
    EXPECT_EQ(life.look(at(10s - 1ns)), cStep::none);
    EXPECT_EQ(life.look(at(10s)), cStep::terminate);
}

TEST(WatchdogLife, each_sign_of_life_restarts_the_wait) {
    cLife life = started();
    life.sign_of_life(at(4s));
    life.sign_of_life(at(9s));
    EXPECT_EQ(life.deadline(), at(19s));
    EXPECT_EQ(life.look(at(19s - 1ns)), cStep::none);
    EXPECT_EQ(life.look(at(19s)), cStep::terminate);
}

TEST(WatchdogLife, a_hang_ends_in_three_steps_each_reported_once) {
    cLife life = started();
    EXPECT_EQ(life.look(at(10s)), cStep::terminate);
    EXPECT_EQ(life.look(at(10s)), cStep::none);
    EXPECT_EQ(life.look(at(13s - 1ns)), cStep::none);
    EXPECT_EQ(life.look(at(13s)), cStep::kill);
    EXPECT_EQ(life.look(at(17s - 1ns)), cStep::none);
    EXPECT_EQ(life.look(at(17s)), cStep::give_up);
    EXPECT_EQ(life.status(), status_failure);
    EXPECT_EQ(life.look(at(100s)), cStep::none);
}

TEST(WatchdogLife, a_sign_of_life_is_too_late_once_termination_has_begun) {
    cLife life = started();
    life.look(at(10s));
    life.sign_of_life(at(11s));
    EXPECT_EQ(life.deadline(), at(13s));
    EXPECT_FALSE(life.ended(exit_with(0)));
    EXPECT_EQ(life.status(), status_no_life);
}

TEST(WatchdogLife, a_deadline_missed_by_a_second_still_counts) {
    cLife life = started();
    EXPECT_EQ(life.look(at(11s)), cStep::terminate);
}

TEST(WatchdogLife, a_deadline_missed_by_more_restarts_because_the_watch_dog_slept) {
    cLife life = started();
    EXPECT_EQ(life.look(at(11s + 1ns)), cStep::none);
    EXPECT_EQ(life.deadline(), at(21s + 1ns));
    EXPECT_EQ(life.look(at(21s + 1ns)), cStep::terminate);
    EXPECT_EQ(life.look(at(100s)), cStep::none);
    EXPECT_EQ(life.look(at(103s)), cStep::kill);
    EXPECT_EQ(life.look(at(200s)), cStep::none);
    EXPECT_EQ(life.look(at(204s)), cStep::give_up);
}

TEST(WatchdogLife, a_watch_dog_that_was_stopped_restarts_each_wait) {
    cLife life = started();
    life.slept(at(10s)); // it would be due now
    EXPECT_EQ(life.look(at(20s - 1ns)), cStep::none);
    EXPECT_EQ(life.look(at(20s)), cStep::terminate);
    life.slept(at(22s));
    EXPECT_EQ(life.deadline(), at(25s));
    EXPECT_EQ(life.look(at(25s)), cStep::kill);
    life.slept(at(28s));
    EXPECT_EQ(life.deadline(), at(32s));
    life.ended(exit_with(0));
    life.slept(at(40s));
    EXPECT_EQ(life.look(at(50s)), cStep::none);
}

TEST(WatchdogLife, exit_0_is_the_normal_end_with_any_number_of_restarts_left) {
    cLife life = started(5);
    EXPECT_FALSE(life.ended(exit_with(0)));
    EXPECT_EQ(life.status(), 0);
    EXPECT_EQ(life.restarts(), 0);
}

TEST(WatchdogLife, without_restarts_the_status_is_passed_on) {
    cLife life = started();
    EXPECT_FALSE(life.ended(exit_with(3)));
    EXPECT_EQ(life.status(), 3);
    life = started();
    EXPECT_FALSE(life.ended(died_of(SIGSEGV)));
    EXPECT_EQ(life.status(), 128 + SIGSEGV);
}

TEST(WatchdogLife, every_kind_of_end_uses_a_restart_and_the_last_status_is_final) {
    cLife life = started(3);
    EXPECT_TRUE(life.ended(exit_with(1)));
    life.started(at(1s));
    EXPECT_TRUE(life.ended(died_of(SIGABRT)));
    life.started(at(2s));
    EXPECT_EQ(life.look(at(12s)), cStep::terminate);
    EXPECT_TRUE(life.ended(died_of(SIGTERM)));
    EXPECT_EQ(life.restarts(), 3);
    life.started(at(13s));
    EXPECT_EQ(life.deadline(), at(23s));
    EXPECT_FALSE(life.ended(exit_with(7))) << "an earlier hang does not count";
    EXPECT_EQ(life.status(), 7);
}

TEST(WatchdogLife, a_hung_program_that_ends_with_0_is_restarted) {
    cLife life = started(1);
    life.look(at(10s));
    EXPECT_TRUE(life.ended(exit_with(0)));
}

TEST(WatchdogLife, no_step_is_due_between_an_end_and_the_next_start) {
    cLife life = started(1);
    life.ended(exit_with(1));
    EXPECT_EQ(life.look(at(10s)), cStep::none);
    life.sign_of_life(at(10s));
    EXPECT_EQ(life.look(at(20s)), cStep::none);
}

TEST(WatchdogLife, a_stop_waits_for_the_grace_period_and_starts_nothing) {
    cLife life = started(5);
    life.stop(SIGINT, at(1s));
    EXPECT_TRUE(life.is_stopping());
    EXPECT_EQ(life.look(at(4s - 1ns)), cStep::none);
    EXPECT_EQ(life.look(at(4s)), cStep::kill);
    EXPECT_FALSE(life.ended(died_of(SIGKILL)));
    EXPECT_EQ(life.status(), 128 + SIGINT);
}

TEST(WatchdogLife, a_second_signal_does_not_extend_the_grace_period) {
    cLife life = started();
    life.stop(SIGHUP, at(1s));
    life.stop(SIGTERM, at(3s));
    EXPECT_EQ(life.deadline(), at(4s));
    EXPECT_FALSE(life.ended(exit_with(0)));
    EXPECT_EQ(life.status(), 128 + SIGHUP);
}

TEST(WatchdogLife, a_stop_during_a_hang_does_not_change_the_grace_period) {
    cLife life = started(5);
    life.look(at(10s));
    life.stop(SIGTERM, at(12s));
    EXPECT_EQ(life.look(at(13s)), cStep::kill);
    EXPECT_FALSE(life.ended(died_of(SIGKILL)));
    EXPECT_EQ(life.status(), 128 + SIGTERM);
}

TEST(WatchdogLife, a_stop_before_the_start_ends_the_started_program) {
    cLife life({10s, 3s, 4s, 0});
    life.stop(SIGTERM, at(0s));
    life.started(at(1s));
    EXPECT_EQ(life.look(at(4s)), cStep::kill);
    EXPECT_FALSE(life.ended(died_of(SIGTERM)));
    EXPECT_EQ(life.status(), 128 + SIGTERM);
}

TEST(WatchdogLife, a_failed_start_has_a_status_that_explains_it) {
    struct cCase {
        int error, status;
    };
    for (cCase const &c : {cCase{ENOENT, 127}, cCase{EACCES, 126}, cCase{ENOEXEC, 126},
                           cCase{ENOTDIR, 126}, cCase{EAGAIN, 125}, cCase{ENOMEM, 125}}) {
        cLife life({10s, 3s, 4s, 0});
        life.not_started(c.error);
        EXPECT_EQ(life.status(), c.status) << c.error;
        EXPECT_EQ(life.look(at(100s)), cStep::none);
    }
}

} // namespace
