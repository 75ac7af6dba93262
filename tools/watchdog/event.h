#pragma once
// The named event that programs raise with each sign of life: a semaphore of this user's, made
// before the program is started and removed at the end.
//
// There is one of each name and may be several watch dogs. Who holds the socket "qrv-event-<name>"
// has the event; the system frees that name with its holder, so a semaphore that a killed watch dog
// left behind is known as such and replaced. One of another user is left alone.
//
// Limits: an event says that some program of this user's lives. Which one, only messages tell.

#include "descriptor.h"

#include <semaphore.h>
#include <string>

namespace watchdog {

class cEvent {
  public:
    // `name` as programs know it, without the slash, for that user. Never throws for a system that
    // says no: then the event is not owned, and why_not() tells the reason.
    explicit cEvent(std::string const &name, uid_t user = ::geteuid());
    cEvent(cEvent const &) = delete;
    cEvent &operator=(cEvent const &) = delete;
    ~cEvent();

    bool is_owned() const { return semaphore_ != nullptr; }
    std::string const &why_not() const { return why_not_; }
    // How many times it was raised since the last call; a limit keeps the call short.
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
