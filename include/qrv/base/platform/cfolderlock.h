#pragma once
// For programs that read a file, change it and write it again, and must not lose what another such
// program writes at the same time.
//
//   cat::FileLock const lock(path);
//   if (lock.busy()) return give_up();
//   std::string const before = read(path);
//   cat::replace_file(path, changed(before), {.expected = before});

#include "qrv/ccomp.h"

#include <chrono>
#include <optional>
#include <string>

namespace cat {

// Holds the exclusive lock of the folder that has, or will have, the content of `path`: links are
// followed, the file need not exist. The lock excludes only those who ask for it: other
// FolderLocks, also in this process, and the system's command for such locks. The end of a process
// releases its lock; a child of fork() holds it too.
class QRV_API FolderLock {
  public:
    // Waits until the lock is free, at most for `wait`; zero does not wait. If the folder cannot be
    // opened or has no locks, it does not wait and excludes nobody. Throws only std::bad_alloc.
    FolderLock(std::string const &path, std::chrono::milliseconds wait);
    FolderLock(FolderLock const &) = delete;
    FolderLock &operator=(FolderLock const &) = delete;
    ~FolderLock();

    // held() is false as well if locking is not possible.
    bool held() const { return state_ == cState::held; }
    bool busy() const { return state_ == cState::busy; } // another held it until `wait` ended

  private:
    enum class cState { none, held, busy };

    int descriptor_ = -1;
    cState state_ = cState::none;
};

// For a file that is replaced: holds the lock of its folder from before it is read until it has its
// new content, and removes what killed processes left there (cat::remove_unfinished). A device or a
// pipe stores nothing that could be lost, and the process at a pipe's other end may need the lock:
// for these no lock is held.
class QRV_API FileLock {
  public:
    static constexpr std::chrono::seconds usual_wait{30};

    // Waits like a FolderLock.
    explicit FileLock(std::string const &path, std::chrono::milliseconds wait = usual_wait);
    FileLock(FileLock const &) = delete;
    FileLock &operator=(FileLock const &) = delete;
    ~FileLock() = default;

    bool busy() const { return folder_ && folder_->busy(); } // another had it all the time

  private:
    std::optional<FolderLock> folder_;
};

} // namespace cat
