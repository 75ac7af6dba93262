#pragma once
// What the modules for tests and the tests that load them share. They are connected only through
// the repository: a test enters a log there, and the modules write their events into it and enter
// things.

#include "qrv/modules/cmodule.h"
#include "qrv/modules/crepository.h"

#include <string>

struct QRV_API Thing {
    int number = 0;
};

struct QRV_API EventLog {
    std::string text;
};

inline cRepositoryList *things() { return cRepoImpl::get(typeid(Thing)); }

// Does nothing if no test has entered a log.
inline void note(std::string const &event) {
    auto *const list = cRepoImpl::get(typeid(EventLog));
    auto *const log = static_cast<EventLog *>(cRepoImpl::ptr(cRepoImpl::find(list, "log")));
    if (log) log->text += event + "; ";
}

// A thing that is in the repository as long as it exists.
class EnteredThing {
  public:
    explicit EnteredThing(std::string const &name, int number = 0)
        : thing_{number},
          entry_(cRepoImpl::create(things(), name, &thing_, typeid(Thing), typeid(Thing), "")) {}
    EnteredThing(EnteredThing const &) = delete;
    EnteredThing &operator=(EnteredThing const &) = delete;
    ~EnteredThing() { cRepoImpl::release(entry_); }

  private:
    Thing thing_;
    cRepositoryEntry *entry_;
};

// Logs its destruction, which is the end of the module if it is a static object.
class Mortal {
  public:
    explicit Mortal(char const *name) : name_(name) {}
    Mortal(Mortal const &) = delete;
    Mortal &operator=(Mortal const &) = delete;
    ~Mortal() { note(std::string(name_) + " ends"); }

  private:
    char const *name_;
};

#define QRV_SET_UP extern "C" QRV_API void quorvantaSetup()
