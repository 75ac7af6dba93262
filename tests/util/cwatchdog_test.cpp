#include "qrv/util/cwatchdog.h"

#include "qrv/base/platform/cplatform.h"
#include "tests/support/fixture.h"
#include "tests/support/os_faults.h"
#include "util/cwatchdog_state.h"

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <vector>

namespace {

struct cPosted {
    std::uint32_t id, message, wParam;
    std::int32_t lParam;
    bool operator==(cPosted const &) const = default;
};
using Posts = std::vector<cPosted>;

Posts posts;
std::function<void(cPosted const &)> meanwhile; // called during each post

void take(std::uint32_t id, std::uint32_t message, std::uint32_t wParam, std::int32_t lParam) {
    cPosted const post{id, message, wParam, lParam};
    posts.push_back(post);
    if (auto const act = meanwhile) act(post);
}

// Resets the state of earlier tests, and collects posts instead of sending them.
class WatchDog : public QrvTest {
  protected:
    WatchDog() {
        forget();
        qrv_set_post_message(take);
        cat::os.sem_post = [](sem_t *) { return 0; }; // does not use the real event of the machine
        posts.clear();
        meanwhile = nullptr;
    }
    ~WatchDog() override {
        qrv_set_post_message(nullptr);
        ::unsetenv(watchdog_title_variable);
        ::unsetenv(watchdog_id_variable);
        forget();
        cat::os = calls_;
    }

    static void forget() {
        idWatchDog = watchdog_not_known;
        SetWatchDogID(watchdog_none);
        idWatchDog = watchdog_not_known;
    }
    static void start_with(char const *title) {
        if (title)
            ::setenv(watchdog_title_variable, title, 1);
        else
            ::unsetenv(watchdog_title_variable);
    }

  private:
    cat::os_calls const calls_ = cat::os;
};

using WatchDogEdge = WatchDog;
using WatchDogId = WatchDog;
using WatchDogTest = WatchDog;

// ---- the edges ----

TEST_F(WatchDogEdge, without_the_title_messages_are_stored_until_sig_init_and_then_dropped) {
    start_with(nullptr);
    PostWatchDog(1, 2, 3);
    sig_init();
    EXPECT_EQ(idWatchDog, watchdog_none);
    PostWatchDog(4, 5, 6);
    SetWatchDogID(7);
    PostWatchDog(8, 9, 10);
    EXPECT_EQ(posts, Posts{});
    EXPECT_EQ(idWatchDog, watchdog_none);
}

TEST_F(WatchDogEdge, with_the_title_messages_wait_for_the_id_and_are_sent_in_order) {
    start_with("WatchDog");
    PostWatchDog(1, 2, 3);
    sig_init();
    EXPECT_EQ(idWatchDog, watchdog_not_known);
    PostWatchDog(4, 5, -6);
    EXPECT_EQ(posts, Posts{});
    SetWatchDogID(77);
    EXPECT_EQ(posts, (Posts{{77, 1, 2, 3}, {77, 4, 5, -6}}));
    PostWatchDog(7, 8, 9);
    ASSERT_EQ(posts.size(), 3u);
    EXPECT_EQ(posts.back(), (cPosted{77, 7, 8, 9}));
}

TEST_F(WatchDogEdge, a_second_id_changes_nothing) {
    PostWatchDog(1, 2, 3);
    SetWatchDogID(77);
    SetWatchDogID(78);
    EXPECT_EQ(idWatchDog, 77u);
    EXPECT_EQ(posts, (Posts{{77, 1, 2, 3}}));
    PostWatchDog(4, 5, 6);
    EXPECT_EQ(posts, (Posts{{77, 1, 2, 3}, {77, 4, 5, 6}}));
}

TEST_F(WatchDogEdge, an_id_is_ignored_when_there_is_no_watch_dog) {
    PostWatchDog(1, 2, 3);
    idWatchDog = 0xFFFFFFFF;
    SetWatchDogID(77);
    EXPECT_EQ(idWatchDog, 0xFFFFFFFF);
    EXPECT_EQ(posts, Posts{});
}

// Fills the queue and returns the number of messages by which the next one lengthens it.
std::size_t growth_of_full(std::size_t count) {
    cWatchDogQueue queue;
    while (queue.count() < count) queue.append({1, 2, 3});
    EXPECT_EQ(queue.capacity(), count);
    EXPECT_TRUE(queue.append({4, 5, 6}));
    return queue.capacity() - count;
}

TEST_F(WatchDogEdge, a_full_queue_grows_by_an_eighth_within_4_and_1024) {
    EXPECT_EQ(growth_of_full(16), 4u);
    EXPECT_EQ(growth_of_full(40), 5u);
    EXPECT_EQ(cWatchDogQueue::growth(16000), 1024u);
    EXPECT_EQ(growth_of_full(16446), 1024u); // the first full queue above 16,000 messages
}

// ---- the queue ----

TEST_F(WatchDogTest, the_growth_changes_at_its_limits) {
    EXPECT_EQ(cWatchDogQueue::growth(0), 4u);
    EXPECT_EQ(cWatchDogQueue::growth(39), 4u);
    EXPECT_EQ(cWatchDogQueue::growth(40), 5u);
    EXPECT_EQ(cWatchDogQueue::growth(8191), 1023u);
    EXPECT_EQ(cWatchDogQueue::growth(8192), 1024u);
    EXPECT_EQ(cWatchDogQueue::growth(8200), 1024u);
}

TEST_F(WatchDogTest, the_capacity_follows_the_rule_at_every_count) {
    cWatchDogQueue queue;
    EXPECT_EQ(queue.capacity(), 0u);
    std::size_t capacity = 0;
    for (std::size_t count = 0; count < 30000; ++count) {
        if (count == capacity) capacity += cWatchDogQueue::growth(count);
        ASSERT_TRUE(queue.append({static_cast<std::uint32_t>(count), 0, 0}));
        ASSERT_EQ(queue.capacity(), capacity);
        ASSERT_EQ(queue.count(), count + 1);
    }
}

TEST_F(WatchDogTest, new_space_is_zero_and_old_messages_stay) {
    cWatchDogQueue queue;
    for (std::uint32_t count = 1; count <= 41; ++count) queue.append({count, count, -1});
    ASSERT_EQ(queue.capacity(), 45u);
    for (std::size_t i = 0; i < queue.capacity(); ++i) {
        cMSG const &message = queue.begin()[i];
        EXPECT_EQ(message.message, i < 41 ? i + 1 : 0);
        EXPECT_EQ(message.wParam, i < 41 ? i + 1 : 0);
        EXPECT_EQ(message.lParam, i < 41 ? -1 : 0);
    }
}

TEST_F(WatchDogTest, the_queue_is_not_cleared_after_posting) {
    for (std::uint32_t i = 0; i < 100; ++i) PostWatchDog(i, 0, 0);
    std::size_t const capacity = qrv_watchdog_queue_capacity();
    EXPECT_GE(capacity, 100u);
    SetWatchDogID(77);
    EXPECT_EQ(posts.size(), 100u);
    EXPECT_EQ(qrv_watchdog_queue_capacity(), capacity);
}

TEST_F(WatchDogTest, a_hundred_thousand_messages_wait_for_the_id) {
    constexpr std::uint32_t many = 100'000;
    for (std::uint32_t i = 0; i < many; ++i) PostWatchDog(i, ~i, -static_cast<std::int32_t>(i));
    SetWatchDogID(0xFFFFFFFE);
    ASSERT_EQ(posts.size(), many);
    for (std::uint32_t i = 0; i < many; ++i)
        ASSERT_EQ(posts[i], (cPosted{0xFFFFFFFE, i, ~i, -static_cast<std::int32_t>(i)}));
}

TEST_F(WatchDogTest, only_messages_without_memory_are_lost) {
    cWatchDogQueue queue;
    for (std::uint32_t i = 0; i < 4; ++i) ASSERT_TRUE(queue.append({i, 0, 0}));
    auto *const before = cWatchDogQueue::resize;
    cWatchDogQueue::resize = [](void *, std::size_t) noexcept -> void * {
        errno = ENOMEM;
        return nullptr;
    };
    bool const kept = queue.append({4, 0, 0});
    cWatchDogQueue::resize = before;
    EXPECT_FALSE(kept);
    EXPECT_EQ(queue.count(), 4u);
    EXPECT_EQ(queue.capacity(), 4u);
    EXPECT_TRUE(queue.append({5, 0, 0}));
    for (std::uint32_t message : {0u, 1u, 2u, 3u, 5u}) EXPECT_EQ(queue.take().message, message);
    EXPECT_EQ(queue.taken(), queue.count());
}

TEST_F(WatchDogTest, lack_of_memory_is_not_reported) {
    do PostWatchDog(1, 0, 0);
    while (qrv_watchdog_queue_capacity() > cat::watchdog_queue.count());
    auto *const before = cWatchDogQueue::resize;
    cWatchDogQueue::resize = [](void *, std::size_t) noexcept -> void * {
        errno = ENOMEM;
        return nullptr;
    };
    errno = EDOM;
    PostWatchDog(2, 0, 0);
    sig_progstep();
    cWatchDogQueue::resize = before;
    EXPECT_EQ(errno, EDOM);
    SetWatchDogID(7);
    EXPECT_FALSE(posts.empty());
    for (cPosted const &post : posts) EXPECT_EQ(post, (cPosted{7, 1, 0, 0}));
}

// ---- numbers ----

TEST_F(WatchDogTest, numbers_have_the_widths_of_the_message_format) {
    static_assert(std::is_same_v<decltype(cMSG::message), std::uint32_t>);
    static_assert(std::is_same_v<decltype(cMSG::wParam), std::uint32_t>);
    static_assert(std::is_same_v<decltype(cMSG::lParam), std::int32_t>);
    static_assert(std::is_same_v<decltype(idWatchDog), std::uint32_t>);
    PostWatchDog(0xFFFFFFFF, 0x80000000, std::numeric_limits<std::int32_t>::min());
    SetWatchDogID(1);
    PostWatchDog(0, 0, std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(posts, (Posts{{1, 0xFFFFFFFF, 0x80000000, INT32_MIN}, {1, 0, 0, INT32_MAX}}));
}

TEST_F(WatchDogTest, id_1_and_the_second_largest_number_are_valid_ids) {
    for (std::uint32_t id : {1u, 0xFFFFFFFEu}) {
        forget();
        posts.clear();
        SetWatchDogID(id);
        PostWatchDog(1, 2, 3);
        EXPECT_EQ(posts, (Posts{{id, 1, 2, 3}}));
    }
}

// ---- the two values that are not ids ----

TEST_F(WatchDogTest, id_0_means_no_id_and_messages_remain_queued) {
    PostWatchDog(1, 2, 3);
    SetWatchDogID(0);
    EXPECT_EQ(idWatchDog, watchdog_not_known);
    EXPECT_EQ(posts, Posts{});
    PostWatchDog(4, 5, 6);
    SetWatchDogID(77);
    EXPECT_EQ(posts, (Posts{{77, 1, 2, 3}, {77, 4, 5, 6}}));
}

TEST_F(WatchDogTest, the_value_for_no_watch_dog_drops_queued_messages) {
    PostWatchDog(1, 2, 3);
    SetWatchDogID(0xFFFFFFFF);
    EXPECT_EQ(idWatchDog, watchdog_none);
    PostWatchDog(4, 5, 6);
    SetWatchDogID(77);
    EXPECT_EQ(posts, Posts{});
    idWatchDog = watchdog_not_known;
    SetWatchDogID(77);
    EXPECT_EQ(posts, Posts{});
}

TEST_F(WatchDogTest, resetting_the_id_never_sends_a_message_twice) {
    PostWatchDog(1, 2, 3);
    SetWatchDogID(77);
    idWatchDog = watchdog_not_known;
    PostWatchDog(4, 5, 6);
    SetWatchDogID(78);
    EXPECT_EQ(posts, (Posts{{77, 1, 2, 3}, {78, 4, 5, 6}}));
}

// ---- the start-up test ----

TEST_F(WatchDogTest, the_title_must_match_exactly) {
    for (char const *title : {"", "watchdog", "WatchDo", "WatchDogs", "WatchDog ", " WatchDog"}) {
        idWatchDog = watchdog_not_known;
        start_with(title);
        sig_init();
        EXPECT_EQ(idWatchDog, watchdog_none) << title;
    }
    idWatchDog = watchdog_not_known;
    start_with("WatchDog");
    sig_init();
    EXPECT_EQ(idWatchDog, watchdog_not_known);
}

TEST_F(WatchDogTest, the_title_keeps_a_known_id_and_a_missing_title_ends_the_link) {
    start_with("WatchDog");
    SetWatchDogID(77);
    sig_init();
    EXPECT_EQ(idWatchDog, 77u);
    start_with(nullptr);
    sig_init();
    EXPECT_EQ(idWatchDog, watchdog_none);
    start_with("WatchDog");
    sig_init();
    EXPECT_EQ(idWatchDog, watchdog_none);
}

// ---- the id out of the environment ----

TEST_F(WatchDogId, is_used_when_the_title_matches) {
    start_with("WatchDog");
    ::setenv(watchdog_id_variable, "4294967294", 1);
    PostWatchDog(1, 2, 3);
    EXPECT_TRUE(qrv_take_watchdog_id());
    EXPECT_EQ(idWatchDog, 4294967294u);
    EXPECT_EQ(posts, (Posts{{4294967294u, 1, 2, 3}}));
}

TEST_F(WatchDogId, is_ignored_when_the_title_does_not_match) {
    ::setenv(watchdog_id_variable, "77", 1);
    for (char const *title : {static_cast<char const *>(nullptr), "", "watchdog"}) {
        start_with(title);
        EXPECT_FALSE(qrv_take_watchdog_id());
        EXPECT_EQ(idWatchDog, watchdog_not_known);
    }
}

TEST_F(WatchDogId, is_ignored_when_it_is_not_a_valid_id) {
    start_with("WatchDog");
    EXPECT_FALSE(qrv_take_watchdog_id());
    for (char const *text : {"", "0", "4294967295", "4294967296", "99999999999999999999", "-1",
                             "+1", " 1", "1 ", "1.0", "0x1", "1a", "a"}) {
        ::setenv(watchdog_id_variable, text, 1);
        EXPECT_FALSE(qrv_take_watchdog_id()) << text;
        EXPECT_EQ(idWatchDog, watchdog_not_known) << text;
    }
}

TEST_F(WatchDogId, is_at_least_1_and_may_have_leading_zeros) {
    start_with("WatchDog");
    for (char const *text : {"1", "0001"}) {
        idWatchDog = watchdog_not_known;
        ::setenv(watchdog_id_variable, text, 1);
        EXPECT_TRUE(qrv_take_watchdog_id()) << text;
        EXPECT_EQ(idWatchDog, 1u) << text;
    }
}

TEST_F(WatchDogId, does_not_replace_a_known_id) {
    start_with("WatchDog");
    SetWatchDogID(5);
    ::setenv(watchdog_id_variable, "77", 1);
    EXPECT_TRUE(qrv_take_watchdog_id());
    EXPECT_EQ(idWatchDog, 5u);
}

// ---- posts in the middle of posts ----

TEST_F(WatchDogTest, a_message_posted_during_a_post_is_sent_at_once) {
    PostWatchDog(1, 0, 0);
    PostWatchDog(2, 0, 0);
    meanwhile = [](cPosted const &post) {
        if (post.message == 1) PostWatchDog(10, 0, 0);
    };
    SetWatchDogID(7);
    EXPECT_EQ(posts, (Posts{{7, 1, 0, 0}, {7, 10, 0, 0}, {7, 2, 0, 0}}));
}

TEST_F(WatchDogTest, a_sign_of_life_during_a_post_is_sent_at_once) {
    PostWatchDog(1, 0, 0);
    PostWatchDog(2, 0, 0);
    meanwhile = [](cPosted const &post) {
        if (post.message == 1) sig_progstep();
    };
    SetWatchDogID(7);
    EXPECT_EQ(posts, (Posts{{7, 1, 0, 0}, {7, 1027, 0, 0}, {7, 2, 0, 0}}));
}

TEST_F(WatchDogTest, an_id_set_during_a_post_changes_nothing) {
    PostWatchDog(1, 0, 0);
    PostWatchDog(2, 0, 0);
    meanwhile = [](cPosted const &) { SetWatchDogID(8); };
    SetWatchDogID(7);
    EXPECT_EQ(posts, (Posts{{7, 1, 0, 0}, {7, 2, 0, 0}}));
    EXPECT_EQ(idWatchDog, 7u);
}

TEST_F(WatchDogTest, the_start_up_test_during_a_post_ends_the_link_after_the_stored_messages) {
    PostWatchDog(1, 0, 0);
    PostWatchDog(2, 0, 0);
    meanwhile = [](cPosted const &) { sig_init(); };
    SetWatchDogID(7);
    EXPECT_EQ(posts, (Posts{{7, 1, 0, 0}, {7, 2, 0, 0}}));
    EXPECT_EQ(idWatchDog, watchdog_none);
    PostWatchDog(3, 0, 0);
    EXPECT_EQ(posts.size(), 2u);
}

// The queue grows, and so its memory moves, during the iteration.
TEST_F(WatchDogTest, resetting_the_id_during_a_post_queues_new_messages) {
    PostWatchDog(1, 0, 0);
    PostWatchDog(2, 0, 0);
    meanwhile = [](cPosted const &post) {
        if (post.message != 1) return;
        idWatchDog = watchdog_not_known;
        for (std::uint32_t i = 0; i < 5000; ++i) PostWatchDog(100 + i, 0, 0);
    };
    SetWatchDogID(7);
    EXPECT_EQ(posts, (Posts{{7, 1, 0, 0}, {7, 2, 0, 0}}));
    SetWatchDogID(8);
    ASSERT_EQ(posts.size(), 5002u);
    for (std::uint32_t i = 0; i < 5000; ++i) ASSERT_EQ(posts[2 + i], (cPosted{8, 100 + i, 0, 0}));
}

TEST_F(WatchDogTest, another_id_set_during_a_post_receives_the_remaining_messages) {
    for (std::uint32_t i = 1; i <= 3; ++i) PostWatchDog(i, 0, 0);
    meanwhile = [](cPosted const &post) {
        if (post.id != 7) return;
        idWatchDog = watchdog_not_known;
        SetWatchDogID(8);
    };
    SetWatchDogID(7);
    EXPECT_EQ(posts, (Posts{{7, 1, 0, 0}, {8, 2, 0, 0}, {8, 3, 0, 0}}));
    EXPECT_EQ(idWatchDog, 8u);
}

TEST_F(WatchDogTest, another_function_set_during_a_post_receives_the_remaining_messages) {
    static Posts others;
    others.clear();
    PostWatchDog(1, 0, 0);
    PostWatchDog(2, 0, 0);
    meanwhile = [](cPosted const &) {
        qrv_set_post_message(
            [](std::uint32_t id, std::uint32_t message, std::uint32_t wParam, std::int32_t lParam) {
                others.push_back({id, message, wParam, lParam});
            });
    };
    SetWatchDogID(7);
    EXPECT_EQ(posts, (Posts{{7, 1, 0, 0}}));
    EXPECT_EQ(others, (Posts{{7, 2, 0, 0}}));
}

TEST_F(WatchDogTest, an_exception_of_a_post_propagates) {
    meanwhile = [](cPosted const &) { throw std::runtime_error("post"); };
    SetWatchDogID(7);
    errno = EDOM;
    EXPECT_THROW(PostWatchDog(1, 0, 0), std::runtime_error);
    EXPECT_THROW(sig_progstep(), std::runtime_error);
    EXPECT_EQ(errno, EDOM);
    meanwhile = nullptr;
    sig_progstep();
    EXPECT_EQ(posts, (Posts{{7, 1, 0, 0}, {7, 1027, 0, 0}, {7, 1027, 0, 0}}));
}

TEST_F(WatchDogTest, exceptions_of_posts_lose_no_message_and_the_first_is_rethrown_at_the_end) {
    for (std::uint32_t i = 1; i <= 4; ++i) PostWatchDog(i, 0, 0);
    meanwhile = [](cPosted const &post) {
        if (post.message % 2 == 0) throw std::runtime_error(std::to_string(post.message));
    };
    std::string thrown;
    try {
        SetWatchDogID(7);
    } catch (std::runtime_error const &error) {
        thrown = error.what();
    }
    EXPECT_EQ(thrown, "2");
    EXPECT_EQ(posts, (Posts{{7, 1, 0, 0}, {7, 2, 0, 0}, {7, 3, 0, 0}, {7, 4, 0, 0}}));
    EXPECT_EQ(idWatchDog, 7u);
}

// ---- signs of life ----

TEST_F(WatchDogTest, a_step_is_a_message_of_1027_and_two_zeros) {
    static_assert(watchdog_alive_message == 1027 && watchdog_alive_message == 0x403);
    SetWatchDogID(7);
    sig_progstep();
    EXPECT_EQ(posts, (Posts{{7, 1027, 0, 0}}));
}

TEST_F(WatchDogTest, steps_before_the_start_up_test_wait_with_the_messages) {
    start_with("WatchDog");
    sig_progstep();
    PostWatchDog(1, 2, 3);
    sig_progstep();
    sig_init();
    SetWatchDogID(7);
    EXPECT_EQ(posts, (Posts{{7, 1027, 0, 0}, {7, 1, 2, 3}, {7, 1027, 0, 0}}));
}

TEST_F(WatchDogTest, the_library_connects_only_to_the_step_signal) {
    EXPECT_TRUE(sig_progstep.isconnected());
    EXPECT_FALSE(sig_proginit.isconnected());
    EXPECT_FALSE(sig_progbegin.isconnected());
    static_assert(std::is_same_v<decltype(sig_progstep), cSignal &>);
    static_assert(std::is_same_v<decltype(sig_proginit), cSignal2<int, int>>);
    static_assert(std::is_same_v<decltype(sig_progbegin), cSignal>);
    SetWatchDogID(7);
    sig_progbegin();
    sig_proginit(1, 100);
    EXPECT_EQ(posts, Posts{});
}

void other_slot() { posts.push_back({0, 0, 0, 0}); }

TEST_F(WatchDogTest, other_slots_of_the_step_signal_are_called_after_the_sign_of_life) {
    cFunctionSlot<void (*)()> const display(other_slot, sig_progstep);
    SetWatchDogID(7);
    sig_progstep();
    EXPECT_EQ(posts, (Posts{{7, 1027, 0, 0}, {0, 0, 0, 0}}));
}

// ---- the event ----

std::string events;

// Logs each system call about the event, in order.
void watch_events(bool there) {
    static int semaphore;
    static bool exists;
    exists = there;
    events.clear();
    cat::os.sem_open = [](char const *name) -> sem_t * {
        events += std::string("open ") + name + "; ";
        errno = ENOENT;
        return exists ? reinterpret_cast<sem_t *>(&semaphore) : nullptr;
    };
    cat::os.sem_post = [](sem_t *) {
        events += "set; ";
        errno = EOVERFLOW;
        return -1;
    };
    cat::os.sem_close = [](sem_t *) {
        events += "close; ";
        errno = EINVAL;
        return -1;
    };
}

TEST_F(WatchDogTest, the_event_is_opened_set_after_the_message_and_closed) {
    watch_events(true);
    meanwhile = [](cPosted const &) { events += "post; "; };
    SetWatchDogID(7);
    {
        cWatchDogSend const send;
        send.sig();
        send.sig();
    }
    EXPECT_EQ(events, "open /EreignisQuorvanta; post; set; post; set; close; ");
}

TEST_F(WatchDogTest, without_an_event_the_messages_are_still_sent) {
    watch_events(false);
    SetWatchDogID(7);
    {
        cWatchDogSend const send;
        send.sig();
    }
    EXPECT_EQ(events, "open /EreignisQuorvanta; ");
    EXPECT_EQ(posts, (Posts{{7, 1027, 0, 0}}));
}

TEST_F(WatchDogTest, the_event_is_set_even_if_the_message_is_not_sent) {
    watch_events(true);
    cWatchDogSend const send;
    send.sig(); // stored
    idWatchDog = watchdog_none;
    send.sig(); // dropped
    EXPECT_EQ(events, "open /EreignisQuorvanta; set; set; ");
}

TEST_F(WatchDogTest, the_event_does_not_change_errno) {
    watch_events(true);
    qrv_set_post_message(
        [](std::uint32_t, std::uint32_t, std::uint32_t, std::int32_t) { errno = 1; });
    PostWatchDog(1, 0, 0);
    errno = EDOM;
    {
        cWatchDogSend const send;
        SetWatchDogID(7);
        send.sig();
        PostWatchDog(1, 0, 0);
        EXPECT_EQ(errno, EDOM);
    }
    EXPECT_EQ(errno, EDOM);
}

// ---- the system refuses ----

TEST_F(WatchDogTest, a_failed_call_loses_nothing_else) {
    qrv_set_post_message(nullptr);
    std::string failed;
    for (int n = 0;; ++n) {
        forget();
        PostWatchDog(1, 2, 3);
        cOsFaults const faults(n, EMFILE);
        errno = EDOM;
        {
            cWatchDogSend const send;
            SetWatchDogID(4294967294u);
            send.sig();
        }
        EXPECT_EQ(errno, EDOM) << faults.hit();
        EXPECT_EQ(idWatchDog, 4294967294u) << faults.hit();
        if (cOsFaults::hit().empty()) break;
        failed += cOsFaults::hit() + "; ";
    }
    EXPECT_NE(failed.find("sem_open; "), std::string::npos) << failed;
    EXPECT_NE(failed.find("fstat; "), std::string::npos) << failed;
    EXPECT_NE(failed.find("sendto; "), std::string::npos) << failed;
}

} // namespace
