// Ownership of the event: the first watchdog has it until its end, and replaces one that a killed
// watchdog left.

#include "tools/watchdog/event.h"

#include "tests/watchdog/dog_run.h"
#include "tools/watchdog/abstract_socket.h"

#include <cstdint>
#include <sys/stat.h>

using dog_test::own_name;
using watchdog::cEvent;

namespace {

// The event as a program opens it; null if it does not exist.
class cOpened {
  public:
    explicit cOpened(std::string const &name) : semaphore_(::sem_open(("/" + name).c_str(), 0)) {}
    cOpened(cOpened const &) = delete;
    cOpened &operator=(cOpened const &) = delete;
    ~cOpened() {
        if (is_there()) ::sem_close(semaphore_);
    }
    bool is_there() const { return semaphore_ != SEM_FAILED; }
    void raise() { ::sem_post(semaphore_); }

  private:
    sem_t *semaphore_;
};

// Leaves what a killed watchdog leaves: a raised event whose lock no process holds.
void leave_behind(std::string const &name) {
    sem_t *const semaphore = ::sem_open(("/" + name).c_str(), O_CREAT | O_EXCL, 0600, 7u);
    ASSERT_NE(semaphore, SEM_FAILED);
    ::sem_close(semaphore);
}

TEST(WatchdogEvent, exists_for_this_user_as_long_as_its_owner) {
    std::string const name = own_name();
    {
        cEvent const event(name);
        EXPECT_TRUE(event.is_owned());
        EXPECT_EQ(event.why_not(), "");
        struct stat info {};
        ASSERT_EQ(::stat(("/dev/shm/sem." + name).c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 07777u, 0600u);
    }
    EXPECT_FALSE(cOpened(name).is_there());
}

TEST(WatchdogEvent, a_new_event_was_not_raised) {
    cEvent event(own_name());
    EXPECT_EQ(event.take(), 0u);
}

TEST(WatchdogEvent, take_counts_how_often_it_was_raised) {
    std::string const name = own_name();
    cEvent event(name);
    cOpened opened(name);
    ASSERT_TRUE(opened.is_there());
    for (int i = 0; i < 5; ++i) opened.raise();
    EXPECT_EQ(event.take(), 5u);
    EXPECT_EQ(event.take(), 0u);
}

TEST(WatchdogEvent, take_has_a_limit_and_leaves_the_rest) {
    std::string const name = own_name();
    cEvent event(name);
    cOpened opened(name);
    for (int i = 0; i < 1000001; ++i) opened.raise();
    EXPECT_EQ(event.take(), 1000000u);
    EXPECT_EQ(event.take(), 1u);
}

TEST(WatchdogEvent, a_second_watch_dog_gets_no_event_and_does_not_affect_the_first) {
    std::string const name = own_name();
    cEvent first(name);
    {
        cEvent second(name);
        EXPECT_FALSE(second.is_owned());
        EXPECT_EQ(second.why_not(), "another watchdog has it");
        EXPECT_EQ(second.take(), 0u);
    }
    cOpened opened(name);
    ASSERT_TRUE(opened.is_there());
    opened.raise();
    EXPECT_EQ(first.take(), 1u);
}

TEST(WatchdogEvent, the_next_watch_dog_gets_it_when_the_first_has_ended) {
    std::string const name = own_name();
    { cEvent const first(name); }
    EXPECT_TRUE(cEvent(name).is_owned());
}

TEST(WatchdogEvent, a_stale_event_is_replaced_and_its_state_discarded) {
    std::string const name = own_name();
    leave_behind(name);
    {
        cEvent event(name);
        EXPECT_TRUE(event.is_owned());
        EXPECT_EQ(event.take(), 0u);
    }
    EXPECT_FALSE(cOpened(name).is_there());
}

TEST(WatchdogEvent, an_event_of_another_user_is_not_used) {
    std::string const name = own_name();
    leave_behind(name);
    {
        cEvent const event(name, ::geteuid() + 1);
        EXPECT_FALSE(event.is_owned());
        EXPECT_EQ(event.why_not(), "it belongs to another user");
    }
    EXPECT_TRUE(cOpened(name).is_there());
    ::sem_unlink(("/" + name).c_str());
}

TEST(WatchdogEvent, a_name_that_the_system_refuses_is_reported) {
    cEvent const longer(std::string(200, 'x'));
    EXPECT_FALSE(longer.is_owned());
    EXPECT_EQ(longer.why_not(), "cannot lock it: File name too long");
    cEvent const folder("no/such");
    EXPECT_FALSE(folder.is_owned());
    EXPECT_EQ(folder.why_not().substr(0, 16), "cannot make it: ");
}

} // namespace
