// Giving a file new content without losing the old one.
//
//   beside:    make a file in the target's folder --> owner and mode --> write --> fsync --> rename
//   in place:  open without truncating --> reserve room --> write --> cut to length --> fsync
//
// Beside is the way for a plain file: whatever fails, and wherever the process is killed, the name
// leads to the old or to the new content, whole. In place is for what a rename would change into
// something else. There a full disk is met before the first byte changes, but a device that fails
// in the middle leaves a mixture.

#include "platform/os_calls.h"
#include "qrv/platform/cplatform.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>

namespace {

enum class cOutcome { done, failed, not_possible };

constexpr int most_links = 40; // as many symbolic links as the system itself would follow
constexpr int most_names = 100;

// A descriptor; closed at the latest here.
class cDescriptor {
  public:
    cDescriptor(std::string const &path, int flags)
        : descriptor_(cat::os.open(path.c_str(), flags | O_CLOEXEC, 0666)) {}
    cDescriptor(cDescriptor const &) = delete;
    cDescriptor &operator=(cDescriptor const &) = delete;
    ~cDescriptor() { close(); }

    bool good() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; }
    bool close() {
        int const descriptor = descriptor_;
        descriptor_ = -1;
        return descriptor >= 0 && cat::os.close(descriptor) == 0;
    }

  private:
    int descriptor_;
};

std::string folder_of(std::string const &path) {
    auto const slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

std::string name_of(std::string const &path) { return path.substr(path.rfind('/') + 1); }

// The path behind a symbolic link, or an empty text if this is none.
std::string link_target(std::string const &path) {
    std::string target(PATH_MAX, '\0');
    ssize_t const length = ::readlink(path.c_str(), target.data(), target.size());
    if (length <= 0) return {};
    target.resize(static_cast<std::size_t>(length));
    return target.front() == '/' ? target : folder_of(path) + "/" + target;
}

// Where the content stands, or will stand when links lead to nothing yet.
std::string follow_links(std::string path) {
    for (int i = 0; i < most_links; ++i) {
        std::string next = link_target(path);
        if (next.empty()) return path;
        path = std::move(next);
    }
    return path;
}

// Did a step fail because this way is closed, rather than because something broke?
bool way_is_closed() {
    return errno == EACCES || errno == EPERM || errno == EROFS || errno == ENAMETOOLONG ||
           errno == EBUSY || errno == EXDEV;
}

cOutcome failure() { return way_is_closed() ? cOutcome::not_possible : cOutcome::failed; }

bool brought_to_disk(int descriptor) {
    return cat::os.fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP;
}

// A name for a new file in the folder of `path`; short, so that it fits where the path's does.
std::string new_name(std::string const &path, int attempt) {
    static constinit unsigned int count = 0;
    return folder_of(path) + "/.qrv" + std::to_string(::getpid()) + "-" +
           std::to_string(++count + static_cast<unsigned int>(attempt)) + "~";
}

// A new file that goes away unless it is renamed.
class cBeside {
  public:
    explicit cBeside(std::string const &path) {
        for (int i = 0; i < most_names; ++i) {
            name_ = new_name(path, i);
            file_ = std::make_unique<cDescriptor>(name_, O_WRONLY | O_CREAT | O_EXCL);
            if (file_->good() || errno != EEXIST) break;
        }
        made_ = file_->good();
    }
    cBeside(cBeside const &) = delete;
    cBeside &operator=(cBeside const &) = delete;
    ~cBeside() {
        if (made_) cat::os.unlink(name_.c_str());
    }

    bool made() const { return made_; }
    bool take_over(struct stat const &old) {
        struct stat info {};
        if (::fstat(file_->get(), &info) != 0) return false;
        bool const owned = info.st_uid == old.st_uid && info.st_gid == old.st_gid;
        if (!owned && cat::os.fchown(file_->get(), old.st_uid, old.st_gid) != 0) return false;
        return cat::os.fchmod(file_->get(), old.st_mode & 07777) == 0;
    }
    bool write(std::string_view bytes) {
        return cat::write_all(file_->get(), bytes) && brought_to_disk(file_->get()) &&
               file_->close();
    }
    bool rename_to(std::string const &path) {
        if (cat::os.rename(name_.c_str(), path.c_str()) != 0) return false;
        made_ = false;
        return true;
    }

  private:
    std::string name_;
    std::unique_ptr<cDescriptor> file_;
    bool made_ = false;
};

// `old` is null when there is no such file yet.
cOutcome write_beside(std::string const &path, struct stat const *old, std::string_view bytes) {
    cBeside beside(path);
    if (!beside.made()) return failure();
    if (old && !beside.take_over(*old)) return cOutcome::not_possible;
    if (!beside.write(bytes)) return cOutcome::failed;
    return beside.rename_to(path) ? cOutcome::done : failure();
}

// Room for `length` bytes, found before anything of the old content changes. A file system that
// can't reserve is tried all the same.
bool reserve(int descriptor, off_t old_length, off_t length) {
    if (length == 0) return true;
    int const error = cat::os.fallocate(descriptor, 0, length);
    if (error != ENOSPC && error != EDQUOT && error != EFBIG && error != EIO) return true;
    // Whatever was reserved behind the old end goes again; if that fails too, nothing was lost.
    static_cast<void>(cat::os.ftruncate(descriptor, old_length) == 0);
    return false;
}

bool write_in_place(std::string const &path, struct stat const &old, std::string_view bytes) {
    cDescriptor file(path, O_WRONLY);
    auto const length = static_cast<off_t>(bytes.size());
    return file.good() && reserve(file.get(), old.st_size, length) &&
           cat::write_all(file.get(), bytes) && cat::os.ftruncate(file.get(), length) == 0 &&
           brought_to_disk(file.get()) && file.close();
}

// A device, a pipe: nothing old to lose.
bool write_through(std::string const &path, std::string_view bytes) {
    cDescriptor file(path, O_WRONLY | O_TRUNC);
    return file.good() && cat::write_all(file.get(), bytes) && file.close();
}

// A descriptor that somebody holds open, reached by name: a rename would leave it behind.
bool names_a_descriptor(std::string const &path) {
    return path.starts_with("/dev/") || path.starts_with("/proc/");
}

bool can_make_file(std::string const &path) {
    std::string const target = follow_links(path);
    return !name_of(target).empty() && name_of(target).size() <= NAME_MAX &&
           cat::is_directory(folder_of(target)) &&
           ::faccessat(AT_FDCWD, folder_of(target).c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

} // namespace

bool cat::can_write_file(std::string const &path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return errno == ENOENT && can_make_file(path);
    if (S_ISDIR(info.st_mode) || S_ISSOCK(info.st_mode)) return false;
    if (S_ISREG(info.st_mode)) return cDescriptor(path, O_WRONLY).good();
    return ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

bool cat::replace_file(std::string const &path, std::string_view bytes) {
    struct stat old {};
    bool const exists = ::stat(path.c_str(), &old) == 0;
    if (!can_write_file(path)) return false;
    if (!exists) return write_beside(follow_links(path), nullptr, bytes) == cOutcome::done;
    if (!S_ISREG(old.st_mode)) return write_through(path, bytes);
    bool const movable = old.st_nlink == 1 && !names_a_descriptor(path);
    cOutcome const outcome =
        movable ? write_beside(follow_links(path), &old, bytes) : cOutcome::not_possible;
    if (outcome == cOutcome::not_possible) return write_in_place(path, old, bytes);
    return outcome == cOutcome::done;
}
