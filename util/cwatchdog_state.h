#pragma once
// The watch dog's queue, and the object that sends the signs of life. Both stand in
// start/startup.cpp, which tells when they are made and go.

#include "qrv/util/cwatchdog.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

// Messages in the order of their arrival; none is ever taken out, but each is handed out once.
//
//   messages_:  [ handed out | waiting | room, all zeros )
//               0           next_    count_           capacity_
//
// Constant-initialised, so that it can be used before its place in the start-up has come. After its
// end it takes nothing more.
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

    // False if there is no memory: the queue is as before then.   O(1), amortised by the system,
    // which moves large blocks without copying them
    bool append(cMSG const &message) noexcept;

    cMSG take() noexcept { return messages_[next_++]; } // the oldest that waits; there must be one
    std::size_t taken() const { return next_; }
    std::size_t count() const { return count_; }
    std::size_t capacity() const { return capacity_; }
    cMSG const *begin() const { return messages_; } // all, up to the capacity

    // Where memory comes from; tests refuse it.
    static constinit inline auto *resize = &std::realloc;

  private:
    bool grow() noexcept;

    cMSG *messages_ = nullptr;
    std::size_t next_ = 0;
    std::size_t count_ = 0;
    std::size_t capacity_ = 0;
};

// Listens to its own signal, which is sig_progstep for everybody else.
class cWatchDogSend {
  public:
    cWatchDogSend(); // opens the event; without one the messages alone are the signs of life
    cWatchDogSend(cWatchDogSend const &) = delete;
    cWatchDogSend &operator=(cWatchDogSend const &) = delete;
    ~cWatchDogSend();

  private:
    void send();

    void *event_; // null: there is none
    cSlot<cWatchDogSend> slot_;

  public:
    cSignal sig;
};

namespace cat {

extern cWatchDogQueue watchdog_queue;

// What sig_init calls: a process that no watch dog started has none.
void watchdog_startup_test();

} // namespace cat
