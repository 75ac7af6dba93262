// The operating system: debug output, descriptors, time, and tests of files.

#include "qrv/base/platform/cplatform.h"

#include "base/platform/clink.h"
#include "base/platform/os_calls.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <poll.h>

namespace {

// Anybody may create a file in the folder of named semaphores, and a file that is too short would
// end the process at its first use. So the file must belong to us or to root: then nobody else can
// replace it between the check and the opening, since only its owner may remove it from that
// folder.
sem_t *open_semaphore(char const *name) {
    std::string const path = std::string("/dev/shm/sem.") + (name + (*name == '/'));
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0) return SEM_FAILED;
    bool const sound = S_ISREG(info.st_mode) && info.st_size >= off_t{sizeof(sem_t)};
    if (sound && cat::trusts_owner(info.st_uid, ::geteuid())) return ::sem_open(name, 0);
    errno = EACCES;
    return SEM_FAILED;
}

// Uses /proc, since linking a descriptor directly needs a right that few processes have.
int link_open(int descriptor, char const *to) {
    std::string const from = "/proc/self/fd/" + std::to_string(descriptor);
    return ::linkat(AT_FDCWD, from.c_str(), AT_FDCWD, to, AT_SYMLINK_FOLLOW);
}

} // namespace

constinit cat::os_calls cat::os{
    [](char const *path, int flags, mode_t mode) { return ::open(path, flags, mode); },
    ::read,
    ::write,
    ::close,
    [](int descriptor) { return ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0); },
    ::flock,
    ::fsync,
    [](int descriptor, off_t offset, off_t length) {
        return ::fallocate(descriptor, FALLOC_FL_KEEP_SIZE, offset, length);
    },
    ::ftruncate,
    ::fchmod,
    ::fchown,
    ::rename,
    [](char const *from, char const *to) {
        return ::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE);
    },
    ::link,
    link_open,
    ::unlink,
    ::stat,
    ::lstat,
    ::fstat,
    ::listxattr,
    ::getxattr,
    ::flistxattr,
    ::fgetxattr,
    ::fsetxattr,
    ::fremovexattr,
    ::access,
    [](char const *path, int mode) { return ::faccessat(AT_FDCWD, path, mode, AT_EACCESS); },
    ::chmod,
    ::readlink,
    ::dlopen,
    ::dlsym,
    ::dlinfo,
    ::dlclose,
    ::dlerror,
    ::pthread_getattr_np,
    ::socket,
    ::sendto,
    open_semaphore,
    ::sem_post,
    ::sem_close,
};

namespace {

constexpr int not_asked = -2; // the environment was not read yet
constexpr int nowhere = -1;

using cDebugHook = void (*)(char const *text);
constinit cDebugHook debug_hook = nullptr;
constinit int debug_descriptor = not_asked;

int open_debug_target() {
    char const *const target = ::secure_getenv("QRV_DEBUGOUT");
    if (!target || !*target) return nowhere;
    if (std::string_view(target) == "stderr") return STDERR_FILENO;
    return ::open(target, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
}

// Whether the rest can be tried again after a failed write.
bool may_retry(int descriptor) {
    if (errno == EINTR) return true;
    if (errno != EAGAIN && errno != EWOULDBLOCK) return false;
    pollfd waiting{descriptor, POLLOUT, 0};
    return ::poll(&waiting, 1, -1) >= 0 || errno == EINTR;
}

} // namespace

void qrv_set_debug_output(void (*function)(char const *text)) { debug_hook = function; }

void cat::debug_output(char const *text) {
    if (!text) return;
    if (debug_hook) return debug_hook(text);
    if (debug_descriptor == not_asked) debug_descriptor = open_debug_target();
    if (debug_descriptor != nowhere) write_all(debug_descriptor, text);
}

bool cat::write_all(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t const done = os.write(descriptor, bytes.data(), bytes.size());
        if (done > 0)
            bytes.remove_prefix(static_cast<std::size_t>(done));
        else if (done == 0 || !may_retry(descriptor))
            return false;
    }
    return true;
}

bool cat::is_terminal(int descriptor) { return ::isatty(descriptor) == 1; }

std::int64_t cat::counter() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * counter_frequency() + now.tv_nsec;
}

std::int64_t cat::counter_frequency() { return 1'000'000'000; }

std::string cat::local_time(char const *format) {
    std::time_t const now = std::time(nullptr);
    std::tm parts{};
    if (!::localtime_r(&now, &parts)) return {};
    std::array<char, 128> text;
    return {text.data(), std::strftime(text.data(), text.size(), format, &parts)};
}

std::string cat::program_name() { return program_invocation_name ? program_invocation_name : ""; }

std::string cat::program_file() {
    std::array<char, PATH_MAX> path;
    ssize_t const length = os.readlink("/proc/self/exe", path.data(), path.size());
    auto const size = static_cast<std::size_t>(length < 0 ? 0 : length);
    return size < path.size() ? std::string(path.data(), size) : std::string(); // else cut off
}

bool cat::file_exists(std::string const &path) { return os.access(path.c_str(), F_OK) == 0; }

bool cat::is_directory(std::string const &path) {
    struct stat info {};
    return os.stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool cat::is_regular(std::string const &path) {
    struct stat info {};
    return os.stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

bool cat::is_read_only(std::string const &path) {
    struct stat info {};
    return os.stat(path.c_str(), &info) == 0 && !(info.st_mode & S_IWUSR);
}

bool cat::make_writable(std::string const &path) {
    struct stat info {};
    if (os.stat(path.c_str(), &info) != 0) return false;
    return os.chmod(path.c_str(), (info.st_mode & 07777) | S_IWUSR) == 0;
}
