#pragma once
// The named event that programs raise with each sign of life: a semaphore of this user, created
// before the program is started and removed at the end.
//
// Several watchdogs may use the same name, but only one can own the event: the one that holds the
// socket "qrv-event-<name>". The system frees that name with its holder, so the semaphore of a
// killed watchdog is recognised as stale and replaced. A semaphore of another user is not touched.
//
// Limits: an event shows that some program of this user is alive; only messages show which one.

#include "descriptor.h"

#include <semaphore.h>
#include <string>

namespace watchdog {

class cEvent {
  public:
    // `name` is the programs' name for the event, without the slash. Does not throw if a system
    // call fails: then the event is not owned, and why_not() returns the reason.
    explicit cEvent(std::string const &name, uid_t user = ::geteuid());
    cEvent(cEvent const &) = delete;
    cEvent &operator=(cEvent const &) = delete;
    ~cEvent();

    bool is_owned() const { return semaphore_ != nullptr; }
    std::string const &why_not() const { return why_not_; }
    // How many times the event was raised since the last call, up to a limit that keeps the call
    // short.
    unsigned int take();

  private:
    void create();
    bool is_foreign() const;

    std::string name_; // with the slash
    uid_t user_;
    cDescriptor lock_;
    sem_t *semaphore_ = nullptr;
    std::string why_not_;
};

} // namespace watchdog
