// Replaces the content of a file without losing the old one.
//
//   beside:    create a file in the target's folder --> owner, attributes and mode --> write
//              --> fsync --> last look --> rename
//   in place:  last look --> open without truncating --> remember the old bytes --> reserve room
//              --> write --> cut to length --> fsync
//              any failure from there on --> write the old bytes
//   copy:      read --> beside, renamed to a name that must be free
//   last look: the backup is written beside --> the file is compared with the expected bytes
//              --> the backup is renamed
//
// "Beside" is the method for regular files: if any step fails, and wherever the process is
// killed, the name leads to the whole old or the whole new content. "In place" is for files that a
// rename would turn into something else. It detects a full disk before the first byte changes, and
// undoes later failures. But a kill in the middle leaves a mixture of both contents, and so does a
// failing device if it rejects the old bytes too, or if they must not be read.
//
// errno has the reason of a false result.

#include "base/platform/cbeside.h"
#include "base/platform/clinks.h"
#include "base/platform/os_calls.h"
#include "qrv/base/platform/cplatform.h"

#include <array>
#include <cerrno>
#include <climits>
#include <sys/resource.h>

namespace {

using cat::cBeside, cat::content_of, cat::cDescriptor, cat::cOutcome, cat::Replaced;

// Whether a file may have that length. Checked first, since the system ends a process that writes
// beyond its limit.
bool within_limit(std::uint64_t length) {
    rlimit limit{};
    bool const good = ::getrlimit(RLIMIT_FSIZE, &limit) != 0 || length <= limit.rlim_cur;
    if (!good) errno = EFBIG;
    return good;
}

// Reserves room for `length` bytes before the old content changes. If the file system cannot
// reserve, the write is tried all the same.
bool reserve(int descriptor, off_t old_length, off_t length) {
    if (length == 0) return true;
    if (cat::os.fallocate(descriptor, 0, length) == 0) return true;
    int const error = errno;
    if (error != ENOSPC && error != EDQUOT && error != EFBIG && error != EIO) return true;
    // Frees the room that was reserved after the old end; a failure here loses no data.
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

bool overwrite(cDescriptor &file, cat::Content const &content) {
    return content.write(file.get()) &&
           cat::os.ftruncate(file.get(), static_cast<off_t>(content.size)) == 0 &&
           cat::bring_to_disk(file.get()) && file.close();
}

bool write_in_place(std::string const &path, struct stat const &old, cat::Content const &content) {
    cDescriptor file(path, O_WRONLY);
    if (!file.good()) return false;
    std::string before;
    bool const known = read_file(path, before);
    if (!reserve(file.get(), old.st_size, static_cast<off_t>(content.size))) return false;
    if (overwrite(file, content)) return true;
    int const error = errno;
    cDescriptor again(path, O_WRONLY);
    if (known && again.good()) static_cast<void>(overwrite(again, content_of(before)));
    errno = error;
    return false;
}

// Writes to a device or a pipe, which has no old content to lose.
bool write_through(std::string const &path, cat::Content const &content) {
    cDescriptor file(path, O_WRONLY | O_TRUNC);
    return file.good() && content.write(file.get()) && file.close();
}

// An open descriptor, reached by name: a rename would not affect it. /dev/shm/ has regular files.
bool names_a_descriptor(std::string const &path) {
    return (path.starts_with("/dev/") && !path.starts_with("/dev/shm/")) ||
           path.starts_with("/proc/");
}

// A removed working folder is still a folder, but has no name and accepts no files.
bool accepts_files(std::string const &folder) {
    struct stat info {};
    if (cat::os.stat(folder.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) return false;
    if (info.st_nlink == 0) errno = ENOENT;
    return info.st_nlink != 0;
}

bool can_make_file(std::string const &path) {
    std::optional<std::string> const target = cat::follow_links(path);
    if (!target) return false;
    std::string const name = cat::name_of(*target), folder = cat::folder_of(*target);
    if (name.size() > NAME_MAX) errno = ENAMETOOLONG;
    return !name.empty() && name.size() <= NAME_MAX && accepts_files(folder) &&
           cat::os.faccess(folder.c_str(), W_OK | X_OK) == 0;
}

// A backup replaces an existing one, but only a regular file.
bool may_be_backup(std::string const &name, std::string const &suffix) {
    struct stat info {};
    if (suffix.find('/') != suffix.npos) {
        errno = EINVAL;
        return false;
    }
    if (cat::os.lstat(name.c_str(), &info) != 0) return errno == ENOENT;
    if (!S_ISREG(info.st_mode)) errno = S_ISDIR(info.st_mode) ? EISDIR : EEXIST;
    return S_ISREG(info.st_mode);
}

// Replaces or creates a regular file.
class cReplacement {
  public:
    // `old` is null if the file does not exist yet.
    cReplacement(std::string const &path, struct stat const *old, cat::Content const &content,
                 cat::ReplaceOptions const &options)
        : path_(path), old_(old), content_(content), options_(options) {}

    Replaced run() {
        std::optional<std::string> const target = cat::follow_links(path_);
        if (!target) return Replaced::failed;
        target_ = *target;
        cOutcome outcome = cOutcome::not_possible;
        if (!old_ || (old_->st_nlink == 1 && !names_a_descriptor(path_))) outcome = write_beside();
        if (outcome == cOutcome::not_possible && old_) outcome = write_in_place();
        return outcome == cOutcome::done ? Replaced::done : result_;
    }

  private:
    cOutcome write_beside() {
        cBeside beside(target_, {path_, old_, content_});
        cOutcome const outcome = beside.write();
        if (outcome != cOutcome::done) return outcome;
        return last_look() ? beside.rename() : cOutcome::failed;
    }

    cOutcome write_in_place() {
        bool const written = last_look() && ::write_in_place(path_, *old_, content_);
        return written ? cOutcome::done : cOutcome::failed;
    }

    // Whether the file may change now.
    bool last_look() {
        if (options_.backup.empty() || !old_) return is_expected();
        std::string const name = target_ + options_.backup;
        std::string bytes;
        if (!options_.expected && !read_file(path_, bytes)) return refuse(Replaced::no_backup);
        cBeside backup(name, {path_, old_, content_of(options_.expected.value_or(bytes))});
        backup.may_be_narrow();
        if (!may_be_backup(name, options_.backup) || backup.write() != cOutcome::done)
            return refuse(Replaced::no_backup);
        return is_expected() && (backup.rename() == cOutcome::done || refuse(Replaced::no_backup));
    }

    bool is_expected() {
        if (!options_.expected) return true;
        std::string now;
        bool const read = read_file(path_, now);
        if (!read && errno != ENOENT) return false;
        if (read && now == *options_.expected) return true;
        errno = ESTALE;
        return refuse(Replaced::changed);
    }

    bool refuse(Replaced result) {
        result_ = result;
        return false;
    }

    std::string const &path_;
    struct stat const *const old_;
    cat::Content const &content_;
    cat::ReplaceOptions const &options_;
    std::string target_;
    Replaced result_ = Replaced::failed; // until it is done
};

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
    return replace_file(path, bytes, {}) == Replaced::done;
}

cat::Replaced cat::replace_file(std::string const &path, std::string_view bytes,
                                ReplaceOptions const &options) {
    return replace_file(path, content_of(bytes), options);
}

cat::Replaced cat::replace_file(std::string const &path, Content const &content,
                                ReplaceOptions const &options) {
    struct stat old {};
    bool const exists = os.stat(path.c_str(), &old) == 0;
    if (!exists && errno != ENOENT) return Replaced::failed;
    if (!can_write_file(path)) return Replaced::failed;
    if (exists && !S_ISREG(old.st_mode))
        return write_through(path, content) ? Replaced::done : Replaced::failed;
    if (!within_limit(content.size)) return Replaced::failed;
    return cReplacement(path, exists ? &old : nullptr, content, options).run();
}

bool cat::copy_to_new_file(std::string const &path, std::string const &copy) {
    struct stat old {};
    std::string bytes;
    if (os.stat(path.c_str(), &old) != 0) return false;
    bool const taken = file_exists(copy); // a hint only: the rename itself detects an existing file
    if (taken || !S_ISREG(old.st_mode)) {
        errno = taken ? EEXIST : EINVAL;
        return false;
    }
    if (!read_file(path, bytes) || !within_limit(bytes.size())) return false;
    cBeside beside(copy, {path, &old, content_of(bytes)});
    beside.may_be_narrow();
    return beside.write() == cOutcome::done && beside.rename_to_new();
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
