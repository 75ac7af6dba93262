#pragma once
// For programs that read a file, change it and write it again, and must not lose what another such
// program writes at the same time.
//
//   cat::FolderLock const lock(path, std::chrono::seconds(30));
//   if (lock.busy()) return give_up();
//   std::string const before = read(path);
//   cat::replace_file(path, changed(before), {.expected = before});

#include "qrv/ccomp.h"

#include <chrono>
#include <string>

namespace cat {

// Holds the exclusive lock of the folder where the content of `path` is or would be: links are
// followed, the file need not exist. The lock keeps out only those who ask for it: other
// FolderLocks, in this process too, and the system's command for such locks. A process that dies
// releases it; one that a fork created holds it too.
class QRV_API FolderLock {
  public:
    // Waits until nobody has the lock, but not longer than `wait`; zero doesn't wait at all. A
    // folder that can't be opened or has no locks is not waited for: then nobody is kept out.
    // Never throws but for lack of memory.
    FolderLock(std::string const &path, std::chrono::milliseconds wait);
    FolderLock(FolderLock const &) = delete;
    FolderLock &operator=(FolderLock const &) = delete;
    ~FolderLock();

    bool held() const { return state_ == cState::held; }
    bool busy() const { return state_ == cState::busy; } // another had it all the time

  private:
    enum class cState { none, held, busy };

    int descriptor_ = -1;
    cState state_ = cState::none;
};

} // namespace cat
