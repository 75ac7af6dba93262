#pragma once
// Locks for programs that read a file, change it and write it again, so that two of them do not
// overwrite each other's changes.
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

// Holds the exclusive lock, flock(), of the folder of the file `path`. Links are followed; the file
// need not exist. The lock stops only programs that request it too: by other FolderLocks, also in
// this process, or by the command flock. The end of a process releases its lock; a child of fork()
// shares it.
class QRV_API FolderLock {
  public:
    // Waits until the lock is free, at most for `wait`; zero does not wait. If the folder cannot be
    // opened or locked, it does not wait and stops nobody. Throws only std::bad_alloc.
    FolderLock(std::string const &path, std::chrono::milliseconds wait);
    FolderLock(FolderLock const &) = delete;
    FolderLock &operator=(FolderLock const &) = delete;
    ~FolderLock();

    // Both are false if locking is not possible.
    bool held() const { return state_ == cState::held; }
    bool busy() const { return state_ == cState::busy; } // somebody else held it until `wait` ended

  private:
    enum class cState { none, held, busy };

    int descriptor_ = -1;
    cState state_ = cState::none;
};

// For a file that is replaced: holds the lock of its folder from before it is read until it has its
// new content, and removes what killed processes left there (cat::remove_unfinished). Devices and
// pipes are not locked: they store nothing that could be lost, and the process at a pipe's other
// end may need the lock.
class QRV_API FileLock {
  public:
    static constexpr std::chrono::seconds usual_wait{30};

    // Waits like a FolderLock.
    explicit FileLock(std::string const &path, std::chrono::milliseconds wait = usual_wait);
    FileLock(FileLock const &) = delete;
    FileLock &operator=(FileLock const &) = delete;
    ~FileLock() = default;

    bool busy() const { return folder_ && folder_->busy(); } // as in a FolderLock

  private:
    std::optional<FolderLock> folder_;
};

} // namespace cat
