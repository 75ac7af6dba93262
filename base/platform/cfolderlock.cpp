// The lock of a folder. It is polled, since only a signal could interrupt a blocking call, and
// signals belong to the program.

#include "qrv/base/platform/cfolderlock.h"

#include "base/platform/clinks.h"
#include "base/platform/os_calls.h"
#include "qrv/base/platform/cplatform.h"

#include <cerrno>
#include <thread>

namespace {

constexpr std::chrono::milliseconds between_tries(5);

} // namespace

cat::FolderLock::FolderLock(std::string const &path, std::chrono::milliseconds wait) {
    auto const end = std::chrono::steady_clock::now() + wait;
    std::optional<std::string> const target = follow_links(path);
    if (!target) return;
    descriptor_ = os.open(folder_of(*target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
    if (descriptor_ < 0) return;
    while (os.flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR) continue;
        if (errno != EWOULDBLOCK) return;
        state_ = cState::busy;
        if (std::chrono::steady_clock::now() >= end) return;
        std::this_thread::sleep_for(between_tries);
        state_ = cState::none;
    }
    state_ = cState::held;
}

cat::FolderLock::~FolderLock() {
    if (held()) os.flock(descriptor_, LOCK_UN); // also for processes that fork() created
    if (descriptor_ >= 0) os.close(descriptor_);
}

cat::FileLock::FileLock(std::string const &path, std::chrono::milliseconds wait) {
    if (file_exists(path) && !is_regular(path)) return;
    folder_.emplace(path, wait);
    if (!folder_->busy()) remove_unfinished(path);
}
