#include "base/platform/cbeside.h"

#include "base/platform/cattributes.h"
#include "base/platform/cchars.h"
#include "base/platform/clinks.h"

#include <algorithm>
#include <dirent.h>
#include <memory>

namespace {

constexpr int most_names = 100;

// A name for a new file in the folder of `path`; short, so that it fits wherever the name in `path`
// fits.
std::string new_name(std::string const &path) {
    static constinit unsigned int count = 0;
    return cat::folder_of(path) + ".qrv" + std::to_string(::getpid()) + "-" +
           std::to_string(++count) + "~";
}

// Accepts exactly the form of new_name(): `.qrvrc~` may be a person's backup of `.qrvrc`.
bool is_new_name(std::string_view name) {
    if (!name.starts_with(".qrv") || !name.ends_with("~")) return false;
    name = name.substr(4, name.size() - 5);
    auto const dash = name.find('-');
    if (dash == name.npos || dash == 0 || dash + 1 == name.size()) return false;
    return std::all_of(name.begin(), name.begin() + static_cast<std::ptrdiff_t>(dash), is_digit) &&
           std::all_of(name.begin() + static_cast<std::ptrdiff_t>(dash) + 1, name.end(), is_digit);
}

// 0, or errno: EWOULDBLOCK if another process has the lock.
int lock(int descriptor) {
    while (cat::os.flock(descriptor, LOCK_EX | LOCK_NB) != 0)
        if (errno != EINTR) return errno;
    return 0;
}

// Closes a duplicate, since closing can report a write error; the first descriptor keeps the lock.
bool closes_without_error(int descriptor) {
    int const other = cat::os.dup(descriptor);
    return other >= 0 && cat::os.close(other) == 0;
}

// A new file is private until it has the rights of the old one.
mode_t first_mode(struct stat const *old) { return old ? 0600 : 0666; }

// Whether a step failed because this method is impossible here, rather than because of a fault.
bool is_impossible_here() {
    return errno == EACCES || errno == EPERM || errno == EROFS || errno == ENAMETOOLONG ||
           errno == EBUSY || errno == EXDEV;
}

cat::cOutcome failure() {
    return is_impossible_here() ? cat::cOutcome::not_possible : cat::cOutcome::failed;
}

bool is_own_file(struct stat const &info) {
    return S_ISREG(info.st_mode) && info.st_uid == ::geteuid();
}

// Removes the file if its process has ended.
void remove_if_unfinished(std::string const &path) {
    struct stat before {
    }, opened{}, now{};
    if (cat::os.lstat(path.c_str(), &before) != 0 || !is_own_file(before)) return;
    // Some file systems lock only files that are open for writing.
    cat::cDescriptor file(path, O_WRONLY | O_NOFOLLOW | O_NONBLOCK);
    if (!file.good() && !file.open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK)) return;
    if (lock(file.get()) != 0) return;
    // Until the lock was acquired, the name may have passed to another file or disappeared.
    if (cat::os.fstat(file.get(), &opened) != 0 || !is_own_file(opened)) return;
    if (cat::os.lstat(path.c_str(), &now) != 0) return;
    if (opened.st_dev == now.st_dev && opened.st_ino == now.st_ino) cat::os.unlink(path.c_str());
}

} // namespace

bool cat::bring_to_disk(int descriptor) {
    return os.fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP;
}

cat::Content cat::content_of(std::string_view bytes) {
    return {bytes.size(), [bytes](int descriptor) { return write_all(descriptor, bytes); }};
}

bool cat::cBeside::create_unnamed() {
    std::string const folder = folder_of(target_);
    if (!file_.open(folder, O_WRONLY | O_TMPFILE, first_mode(content_.old))) return false;
    lock(file_.get());
    return true;
}

bool cat::cBeside::create_named() {
    for (int i = 0; i < most_names; ++i) {
        std::string const name = new_name(target_);
        if (!file_.open(name, O_WRONLY | O_CREAT | O_EXCL, first_mode(content_.old))) {
            if (errno == EEXIST) continue;
            return false;
        }
        name_ = name;
        if (keeps_name()) return true;
        remove();
    }
    errno = EEXIST;
    return false;
}

// Whether it was locked before another process began to remove it. Where locks do not exist, nobody
// removes it.
bool cat::cBeside::keeps_name() const {
    struct stat info {};
    bool const locked = lock(file_.get()) != EWOULDBLOCK;
    return locked && (os.fstat(file_.get(), &info) != 0 || info.st_nlink != 0);
}

bool cat::cBeside::give_name() {
    for (int i = 0; name_.empty() && i < most_names; ++i) {
        std::string const name = new_name(target_);
        if (os.link_open(file_.get(), name.c_str()) == 0)
            name_ = name;
        else if (errno != EEXIST)
            return false;
    }
    return !name_.empty();
}

void cat::cBeside::remove() {
    int const error = errno; // the reason for the removal
    if (!name_.empty()) os.unlink(name_.c_str());
    name_.clear();
    errno = error;
}

cat::cOutcome cat::cBeside::write() { return create_unnamed() ? fill() : write_named(); }

cat::cOutcome cat::cBeside::write_named() { return create_named() ? fill() : failure(); }

cat::cOutcome cat::cBeside::fill() {
    struct stat const *const old = content_.old;
    if (old && !take_over(*old)) {
        if (!narrow_) return cOutcome::not_possible;
        static_cast<void>(os.fchmod(file_.get(), old->st_mode & 0700) == 0);
    }
    bool const written = content_.content.write(file_.get()) && bring_to_disk(file_.get()) &&
                         closes_without_error(file_.get());
    return written ? cOutcome::done : cOutcome::failed;
}

// Sets the mode last: until then only the owner has access to the file.
bool cat::cBeside::take_over(struct stat const &old) {
    struct stat info {};
    if (os.fstat(file_.get(), &info) != 0) return false;
    bool const owned = info.st_uid == old.st_uid && info.st_gid == old.st_gid;
    if (!owned && os.fchown(file_.get(), old.st_uid, old.st_gid) != 0) return false;
    return copy_attributes(content_.path, file_.get()) &&
           os.fchmod(file_.get(), old.st_mode & 07777) == 0;
}

cat::cOutcome cat::cBeside::rename() {
    cOutcome const outcome = name_.empty() && !give_name() ? write_named() : cOutcome::done;
    if (outcome != cOutcome::done) return outcome;
    if (os.rename(name_.c_str(), target_.c_str()) != 0) return failure();
    name_.clear();
    return cOutcome::done;
}

bool cat::cBeside::rename_to_new() {
    if (name_.empty()) {
        if (os.link_open(file_.get(), target_.c_str()) == 0) return true;
        if (errno == EEXIST || write_named() != cOutcome::done) return false;
    }
    if (os.rename_new(name_.c_str(), target_.c_str()) == 0) {
        name_.clear();
        return true;
    }
    bool const unknown = errno == EINVAL || errno == ENOSYS || errno == ENOTSUP;
    return unknown && os.link(name_.c_str(), target_.c_str()) == 0;
}

void cat::remove_unfinished(std::string const &path) {
    std::optional<std::string> const target = follow_links(path);
    if (!target) return;
    std::string const folder = folder_of(*target);
    std::unique_ptr<DIR, int (*)(DIR *)> const entries(::opendir(folder.c_str()), ::closedir);
    while (dirent const *const entry = entries ? ::readdir(entries.get()) : nullptr)
        if (is_new_name(entry->d_name)) remove_if_unfinished(folder + entry->d_name);
}
