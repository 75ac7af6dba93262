#include "event.h"

#include "abstract_socket.h"
#include "report.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace watchdog {

namespace {

constexpr unsigned int most_at_once = 1000000;

sem_t *made(std::string const &name) {
    sem_t *const semaphore = ::sem_open(name.c_str(), O_CREAT | O_EXCL, mode_t{0600}, 0u);
    return semaphore == SEM_FAILED ? nullptr : semaphore;
}

} // namespace

cEvent::cEvent(std::string const &name, uid_t user) : name_("/" + name), user_(user) {
    lock_ = bind_abstract("qrv-event-" + name);
    if (lock_)
        create();
    else if (errno == EADDRINUSE)
        why_not_ = "another watchdog has it";
    else
        why_not_ = reason("cannot lock it", errno);
}

// Creates the semaphore. One that exists although no process holds the name is stale.
void cEvent::create() {
    semaphore_ = made(name_);
    if (semaphore_) return;
    int error = errno;
    if (error == EEXIST && is_foreign()) {
        why_not_ = "it belongs to another user";
        return;
    }
    if (error == EEXIST) {
        if (::sem_unlink(name_.c_str()) == 0) semaphore_ = made(name_);
        error = errno;
    }
    if (!semaphore_) why_not_ = reason("cannot make it", error);
}

// Does the semaphore belong to another user? The superuser could remove it, so this tests the owner
// of its file.
bool cEvent::is_foreign() const {
    struct stat info {};
    std::string const file = "/dev/shm/sem." + name_.substr(1);
    return ::lstat(file.c_str(), &info) == 0 && info.st_uid != user_;
}

cEvent::~cEvent() {
    if (!semaphore_) return;
    ::sem_unlink(name_.c_str()); // before the lock is released: the next watchdog creates its own
    ::sem_close(semaphore_);
}

unsigned int cEvent::take() {
    unsigned int count = 0;
    if (semaphore_)
        while (count < most_at_once && ::sem_trywait(semaphore_) == 0) ++count;
    return count;
}

} // namespace watchdog
