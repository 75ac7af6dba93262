// Giving a file new content without losing the old one.
//
//   beside:    make a file in the target's folder --> owner and mode --> write --> fsync --> rename
//   in place:  open without truncating --> note the old bytes --> reserve room --> write
//              --> cut to length --> fsync      any failure from there on --> write the old bytes
//   copy:      read --> beside, renamed to a name that must be free
//
// Beside is the way for a plain file: whatever fails, and wherever the process is killed, the name
// leads to the old or to the new content, whole. In place is for what a rename would change into
// something else. There a full disk is met before the first byte changes, and what fails later is
// undone; but a kill in the middle leaves a mixture, and so does a failing device if it refuses the
// old bytes too, or if they must not be read. A killed process can leave its file beside, `.qrv*~`.
//
// errno tells why a result is false.

#include "base/platform/os_calls.h"
#include "qrv/base/platform/cplatform.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <optional>
#include <sys/resource.h>

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

// The path behind a symbolic link; empty if this is none, nothing if that can't be told.
std::optional<std::string> link_target(std::string const &path) {
    std::string target(PATH_MAX, '\0');
    ssize_t const length = cat::os.readlink(path.c_str(), target.data(), target.size());
    if (length < 0 && errno != EINVAL && errno != ENOENT) return {};
    if (length <= 0) return std::string();
    target.resize(static_cast<std::size_t>(length));
    return target.front() == '/' ? target : folder_of(path) + "/" + target;
}

// Where the content stands, or will stand when links lead to nothing yet. Nothing if a link can't
// be read: the file must not take the link's place.
std::optional<std::string> follow_links(std::string path) {
    for (int i = 0; i < most_links; ++i) {
        std::optional<std::string> next = link_target(path);
        if (!next) return {};
        if (next->empty()) return path;
        path = std::move(*next);
    }
    errno = ELOOP;
    return {};
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
        int const error = errno; // why it isn't wanted
        if (made_) cat::os.unlink(name_.c_str());
        errno = error;
    }

    bool made() const { return made_; }
    bool take_over(struct stat const &old) {
        struct stat info {};
        if (cat::os.fstat(file_->get(), &info) != 0) return false;
        bool const owned = info.st_uid == old.st_uid && info.st_gid == old.st_gid;
        if (!owned && cat::os.fchown(file_->get(), old.st_uid, old.st_gid) != 0) return false;
        return cat::os.fchmod(file_->get(), old.st_mode & 07777) == 0;
    }
    // Where the owner must be another: at least nobody else may do more than before.
    void narrow(struct stat const &old) {
        static_cast<void>(cat::os.fchmod(file_->get(), old.st_mode & 0700) == 0);
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
    bool rename_to_new(std::string const &path) {
        if (cat::os.rename_new(name_.c_str(), path.c_str()) == 0) {
            made_ = false;
            return true;
        }
        bool const unknown = errno == EINVAL || errno == ENOSYS || errno == ENOTSUP;
        return unknown && cat::os.link(name_.c_str(), path.c_str()) == 0;
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

// May a file be that long? Asked first, since the system ends a process that goes on.
bool within_limit(std::size_t length) {
    rlimit limit{};
    bool const good = ::getrlimit(RLIMIT_FSIZE, &limit) != 0 || length <= limit.rlim_cur;
    if (!good) errno = EFBIG;
    return good;
}

// Room for `length` bytes, found before anything of the old content changes. A file system that
// can't reserve is tried all the same.
bool reserve(int descriptor, off_t old_length, off_t length) {
    if (length == 0) return true;
    if (cat::os.fallocate(descriptor, 0, length) == 0) return true;
    int const error = errno;
    if (error != ENOSPC && error != EDQUOT && error != EFBIG && error != EIO) return true;
    // Whatever was reserved behind the old end goes again; if that fails too, nothing was lost.
    static_cast<void>(cat::os.ftruncate(descriptor, old_length) == 0);
    errno = error;
    return false;
}

bool read_file(std::string const &path, std::string &bytes) {
    cDescriptor const file(path, O_RDONLY);
    std::array<char, 1 << 14> piece;
    while (file.good()) {
        ssize_t const count = cat::os.read(file.get(), piece.data(), piece.size());
        if (count == 0) return true;
        if (count > 0)
            bytes.append(piece.data(), static_cast<std::size_t>(count));
        else if (errno != EINTR)
            return false;
    }
    return false;
}

bool overwrite(cDescriptor &file, std::string_view bytes) {
    return cat::write_all(file.get(), bytes) &&
           cat::os.ftruncate(file.get(), static_cast<off_t>(bytes.size())) == 0 &&
           brought_to_disk(file.get()) && file.close();
}

bool write_in_place(std::string const &path, struct stat const &old, std::string_view bytes) {
    cDescriptor file(path, O_WRONLY);
    if (!file.good()) return false;
    std::string before;
    bool const known = read_file(path, before);
    if (!reserve(file.get(), old.st_size, static_cast<off_t>(bytes.size()))) return false;
    if (overwrite(file, bytes)) return true;
    int const error = errno;
    cDescriptor again(path, O_WRONLY);
    if (known && again.good()) static_cast<void>(overwrite(again, before));
    errno = error;
    return false;
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

// A working folder that was removed is still a folder, but has no name and takes nothing.
bool takes_files(std::string const &folder) {
    struct stat info {};
    if (cat::os.stat(folder.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) return false;
    if (info.st_nlink == 0) errno = ENOENT;
    return info.st_nlink != 0;
}

bool can_make_file(std::string const &path) {
    std::optional<std::string> const target = follow_links(path);
    if (!target) return false;
    std::string const name = name_of(*target), folder = folder_of(*target);
    if (name.size() > NAME_MAX) errno = ENAMETOOLONG;
    return !name.empty() && name.size() <= NAME_MAX && takes_files(folder) &&
           cat::os.faccess(folder.c_str(), W_OK | X_OK) == 0;
}

} // namespace

bool cat::can_write_file(std::string const &path) {
    struct stat info {};
    if (os.stat(path.c_str(), &info) != 0) return errno == ENOENT && can_make_file(path);
    if (S_ISDIR(info.st_mode)) errno = EISDIR;
    if (S_ISSOCK(info.st_mode)) errno = ENXIO;
    if (S_ISDIR(info.st_mode) || S_ISSOCK(info.st_mode)) return false;
    if (S_ISREG(info.st_mode)) return cDescriptor(path, O_WRONLY).good();
    return os.faccess(path.c_str(), W_OK) == 0;
}

bool cat::replace_file(std::string const &path, std::string_view bytes) {
    struct stat old {};
    bool const exists = os.stat(path.c_str(), &old) == 0;
    if (!exists && errno != ENOENT) return false;
    if (!can_write_file(path)) return false;
    if (exists && !S_ISREG(old.st_mode)) return write_through(path, bytes);
    if (!within_limit(bytes.size())) return false;
    cOutcome outcome = cOutcome::not_possible;
    if (!exists || (old.st_nlink == 1 && !names_a_descriptor(path))) {
        std::optional<std::string> const target = follow_links(path);
        if (!target) return false;
        outcome = write_beside(*target, exists ? &old : nullptr, bytes);
    }
    if (outcome == cOutcome::not_possible && exists) return write_in_place(path, old, bytes);
    return outcome == cOutcome::done;
}

bool cat::copy_to_new_file(std::string const &path, std::string const &copy) {
    struct stat old {};
    std::string bytes;
    if (os.stat(path.c_str(), &old) != 0) return false;
    bool const taken = file_exists(copy); // the rename finds it out again, and for sure
    if (taken || !S_ISREG(old.st_mode)) {
        errno = taken ? EEXIST : EINVAL;
        return false;
    }
    if (!read_file(path, bytes) || !within_limit(bytes.size())) return false;
    cBeside beside(copy);
    if (!beside.made()) return false;
    if (!beside.take_over(old)) beside.narrow(old);
    return beside.write(bytes) && beside.rename_to_new(copy);
}

bool cat::same_content(std::string const &path, std::string const &other) {
    struct stat one {
    }, two{};
    if (os.stat(path.c_str(), &one) != 0 || os.stat(other.c_str(), &two) != 0) return false;
    if (!S_ISREG(one.st_mode) || !S_ISREG(two.st_mode)) return false;
    if (one.st_dev == two.st_dev && one.st_ino == two.st_ino) return false;
    std::string bytes, others;
    return read_file(path, bytes) && read_file(other, others) && bytes == others;
}
