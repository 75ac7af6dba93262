#pragma once
// The watch over one program, from its first start to its last end.

#include "event.h"
#include "life.h"
#include "options.h"
#include "program.h"
#include "signals.h"
#include "thread_link.h"

#include <cstdint>

namespace watchdog {

class cWatch {
  public:
    // Creates link and event, before the program runs. Throws cFailure.
    explicit cWatch(cOptions const &options);
    cWatch(cWatch const &) = delete;
    cWatch &operator=(cWatch const &) = delete;

    // Watches until the end. Returns the exit status. Throws cFailure; then the program continues.
    int run();
    cProgram const &program() const { return program_; }

  private:
    struct cCounts {
        std::uint64_t signs = 0;
        std::uint64_t events = 0;
        std::uint64_t others = 0;
        std::uint64_t ignored = 0;
    };

    bool start();
    bool round(); // false when it is over
    void wait() const;
    void take_signals();
    bool take_messages();
    bool take_datagram(cDatagram const &datagram);
    bool take_events();
    bool ended(cEnd end);
    void act(cLife::cStep step);
    void end_by(int signal) const;
    void say_ignored(cDatagram const &datagram);
    void say_counts() const;

    cOptions const &options_;
    cSignals signals_;
    cThreadLink link_;
    cEvent event_;
    cProgram program_;
    cLife life_;
    cCounts counts_{};
    unsigned int said_ = 0; // a bit for each kind of datagram that was reported
};

} // namespace watchdog
