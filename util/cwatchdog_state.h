#pragma once
// The watchdog's queue, and the object that sends the signs of life. Both are defined in
// start/startup.cpp, which determines when they are created and destroyed.

#include "qrv/util/cwatchdog.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

// Messages in the order of their arrival. Messages are never removed, but each is returned once.
//
//   messages_:  [ returned | waiting | room, all zeros )
//               0          next_     count_           capacity_
//
// Constant-initialised, so that it can be used before the start-up reaches it. After its
// destruction PostWatchDog() does not use it, and drops messages that would be stored.
class cWatchDogQueue {
  public:
    constexpr cWatchDogQueue() noexcept = default;
    cWatchDogQueue(cWatchDogQueue const &) = delete;
    cWatchDogQueue &operator=(cWatchDogQueue const &) = delete;
    ~cWatchDogQueue();

    // How much a full queue of `count` messages grows.
    static constexpr std::size_t growth(std::size_t count) {
        return std::clamp<std::size_t>(count / 8, 4, 1024);
    }

    // False if memory is exhausted: the queue is then unchanged.   O(1), amortised by the system,
    // which moves large blocks without copying them
    bool append(cMSG const &message) noexcept;

    cMSG take() noexcept { return messages_[next_++]; } // the oldest waiting message; requires one
    std::size_t taken() const { return next_; }
    std::size_t count() const { return count_; }
    std::size_t capacity() const { return capacity_; }
    cMSG const *begin() const { return messages_; } // all, up to the capacity

    // The allocator; tests substitute one that fails.
    static constinit inline auto *resize = &std::realloc;

  private:
    bool grow() noexcept;

    cMSG *messages_ = nullptr;
    std::size_t next_ = 0;
    std::size_t count_ = 0;
    std::size_t capacity_ = 0;
};

// Sends a sign of life each time its signal fires. Other code knows the signal as sig_progstep.
class cWatchDogSend {
  public:
    cWatchDogSend(); // opens the event; without an event only the messages are signs of life
    cWatchDogSend(cWatchDogSend const &) = delete;
    cWatchDogSend &operator=(cWatchDogSend const &) = delete;
    ~cWatchDogSend();

  private:
    void send();

    void *event_; // null if it does not exist
    cSlot<cWatchDogSend> slot_;

  public:
    cSignal sig;
};

namespace cat {

extern cWatchDogQueue watchdog_queue;

// Called by sig_init: disables the link in a process that no watchdog started.
void watchdog_startup_test();

} // namespace cat
