// The connection to a watchdog in separate processes, with the shared library: with and without
// the title, with an event that exists, is missing or is created too late, with a receiver that
// checks the sender, and the position of the connection in the order of start-up and end.
//
// The program defines the functions that look for, open and close the event, which replace the
// system's: they use another name for the event, and record the state at these moments.

#include "process.h"
#include "qrv/base/platform/cplatform.h"
#include "qrv/diagnostics/ccout.h"
#include "qrv/util/cutil.h"
#include "qrv/util/cwatchdog.h"

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <semaphore.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace {

constexpr char const *own_event = "QRV_TEST_EVENT"; // the name used in place of the event's
constexpr char const *event_file = "/dev/shm/sem.EreignisQuorvanta";

// The state at load time, when the event was opened.
struct cAtLoad {
    int looks = 0;
    bool waits_for_init = false;
    bool has_base = false;
    bool has_step = true;
    std::size_t room = 1;
} at_load;

std::string closing; // printed when the event is closed
cFunctionSlot<void (*)()> *listener = nullptr;

bool has_listener() { return listener && listener->isconnected(); }

template <class Function> Function *real(char const *name) {
    return reinterpret_cast<Function *>(::dlsym(RTLD_NEXT, name));
}

using cSemOpen = sem_t *(char const *, int, ...);

} // namespace

extern "C" int lstat(char const *path, struct stat *info) noexcept {
    std::string instead = path;
    if (instead == event_file) {
        ++at_load.looks;
        at_load.waits_for_init = sig_init.isconnected();
        at_load.has_base = cIsOnStack(&instead);
        at_load.has_step = sig_progbegin.isconnected();
        at_load.room = qrv_watchdog_queue_capacity();
        char const *const own = std::getenv(own_event);
        if (own) instead = std::string("/dev/shm/sem.") + (own + 1);
    }
    return ::fstatat(AT_FDCWD, instead.c_str(), info, AT_SYMLINK_NOFOLLOW);
}

extern "C" sem_t *sem_open(char const *name, int flags, ...) noexcept {
    char const *const own = std::getenv(own_event);
    bool const known = std::strcmp(name, watchdog_event_name) == 0;
    if (!known || flags != 0)
        std::_Exit(99); // only the permission to set the event may be requested
    return real<cSemOpen>("sem_open")(own ? own : name, 0);
}

extern "C" int sem_close(sem_t *semaphore) noexcept {
    if (!closing.empty())
        say(closing + (sig_init.isconnected() ? "init " : "") +
            (has_listener() ? "progress " : "") +
            (qrv_watchdog_queue_capacity() > 0 ? "queue" : "") + "]");
    return real<int(sem_t *)>("sem_close")(semaphore);
}

namespace {

void show_post(std::uint32_t id, std::uint32_t message, std::uint32_t wParam, std::int32_t lParam) {
    say("[" + std::to_string(id) + ": " + std::to_string(message) + " " + std::to_string(wParam) +
        " " + std::to_string(lParam) + "]");
}

// ---- the children ----

int without_title() {
    qrv_set_post_message(show_post);
    sig_progstep();
    PostWatchDog(1, 2, 3);
    sig_init();
    if (idWatchDog != watchdog_none) return 1;
    sig_progstep();
    PostWatchDog(4, 5, 6);
    SetWatchDogID(77);
    return qrv_take_watchdog_id() || idWatchDog != watchdog_none ? 2 : 0;
}

int with_title() {
    qrv_set_post_message(show_post);
    sig_progstep();
    PostWatchDog(1, 2, 3);
    sig_init();
    say("init");
    PostWatchDog(4, 5, -6);
    SetWatchDogID(77);
    say("id");
    SetWatchDogID(78);
    sig_progstep();
    return idWatchDog == 77 ? 0 : 1;
}

int taken_id() {
    qrv_set_post_message(show_post);
    sig_progstep();
    sig_init();
    return qrv_take_watchdog_id() ? 0 : 1;
}

// The queue's capacity is 0 until it is used. Prints three of the steps in which it grows.
int room() {
    std::size_t last = qrv_watchdog_queue_capacity();
    if (last != 0) return 1;
    for (std::uint32_t count = 0; count <= 20000; ++count) {
        PostWatchDog(count, 0, 0);
        std::size_t const now = qrv_watchdog_queue_capacity();
        if (now != last && (count == 16 || count == 40 || count == 16446))
            say(std::to_string(last) + "+" + std::to_string(now - last) + " ");
        last = now;
    }
    return 0;
}

// A static object of the program that sends signs of life before and after main.
constexpr char const *statics_step = "QRV_TEST_STATICS";

struct cStatic {
    cStatic() { step(); }
    cStatic(cStatic const &) = delete;
    cStatic &operator=(cStatic const &) = delete;
    ~cStatic() { step(); }
    static void step() {
        if (std::getenv(statics_step)) sig_progstep();
    }
} const of_program;

int statics() {
    qrv_set_post_message(show_post);
    sig_init();
    SetWatchDogID(77);
    say("end");
    return 0;
}

int steps() {
    for (int i = 0; i < 3; ++i) sig_progstep();
    return at_load.looks == 1 ? 0 : 1;
}

// The event must have existed at load time.
int made_too_late() {
    sem_t *const made =
        real<cSemOpen>("sem_open")(std::getenv(own_event), O_CREAT | O_EXCL, 0600, 0u);
    if (made == SEM_FAILED) return 1;
    sig_progstep();
    int value = -1;
    ::sem_getvalue(made, &value);
    real<int(sem_t *)>("sem_close")(made);
    ::sem_unlink(std::getenv(own_event));
    return value == 0 ? 0 : 2;
}

int to_a_socket() {
    sig_init();
    for (std::uint32_t i = 0; i < 3; ++i) PostWatchDog(i, 0, 0);
    if (!qrv_take_watchdog_id()) return 1;
    sig_progstep();
    return 0;
}

// Nothing ever blocks: without a receiver, and with one that does not read.
int flood() {
    errno = EDOM;
    for (std::uint32_t i = 0; i < 100'000; ++i) PostWatchDog(i, 0, 0);
    sig_init();
    if (!qrv_take_watchdog_id()) return 1;
    for (int i = 0; i < 100'000; ++i) sig_progstep();
    return errno == EDOM ? 0 : 2;
}

// Never destroyed, so it still listens when the library is destroyed.
void show(char const *text) {
    say(text);
    if (std::strcmp(text, "Quorvanta unloaded\n") == 0)
        say(sig_init.isconnected() || qrv_watchdog_queue_capacity() ? "[still linked]"
                                                                    : "[link gone]");
}

void nothing() {}

int order() {
    auto *const display = new cFunctionSlot1<char const *, void (*)(char const *)>(show);
    sig_idle();
    cOutSigStreambuf.sig().connect(*display);
    static auto *const keep = display; // reachable until the end
    listener = new cFunctionSlot<void (*)()>(nothing);
    sig_progbegin.connect(*listener);
    sig_proginit.connect(*listener);
    PostWatchDog(1, 2, 3);
    closing = "[closed: ";
    bool const before = at_load.looks == 1 && at_load.waits_for_init && at_load.has_base &&
                        !at_load.has_step && at_load.room == 0;
    return before && keep ? 0 : 1;
}

int child(std::string const &what) {
    if (what == "without title") return without_title();
    if (what == "with title") return with_title();
    if (what == "taken id") return taken_id();
    if (what == "statics") return statics();
    if (what == "room") return room();
    if (what == "steps") return steps();
    if (what == "made too late") return made_too_late();
    if (what == "to a socket") return to_a_socket();
    if (what == "flood") return flood();
    return what == "order" ? order() : 98;
}

// ---- the parent ----

std::string const number = std::to_string(::getpid()); // an id that no other run uses

using cEnvironment = std::vector<std::pair<std::string, std::string>>;
cEnvironment const titled{{watchdog_title_variable, watchdog_title}};
cEnvironment const linked{{watchdog_title_variable, watchdog_title},
                          {watchdog_id_variable, number}};

void check(char const *what, cEnvironment const &environment, std::string const &output) {
    cResult const result = run_self(what, environment);
    if (result.status != 0) std::fprintf(stderr, "%s: status %i\n", what, result.status);
    CHECK(result.status == 0);
    CHECK_TEXT(result.output, output);
}

class cOwnEvent {
  public:
    cOwnEvent() : semaphore_(real<cSemOpen>("sem_open")(name(), O_CREAT | O_EXCL, 0600, 0u)) {}
    cOwnEvent(cOwnEvent const &) = delete;
    cOwnEvent &operator=(cOwnEvent const &) = delete;
    ~cOwnEvent() {
        if (semaphore_ == SEM_FAILED) return;
        real<int(sem_t *)>("sem_close")(semaphore_);
        ::sem_unlink(name());
    }
    int value() const {
        int value = -1;
        return semaphore_ != SEM_FAILED && ::sem_getvalue(semaphore_, &value) == 0 ? value : -1;
    }
    static char const *name() {
        static std::string const text = "/qrv-test-" + number;
        return text.c_str();
    }

  private:
    sem_t *const semaphore_;
};

void check_event() {
    check("steps", {}, "");
    {
        cOwnEvent const event;
        CHECK(event.value() == 0);
        check("steps", {}, "");
        CHECK(event.value() == 3);
        check("order", {}, "[closed: init queue]Quorvanta unloaded\n[link gone]");
    }
    check("made too late", {}, "");
}

int bound_socket() {
    int const made = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::string const name = watchdog_socket_prefix + number;
    name.copy(address.sun_path + 1, sizeof address.sun_path - 1);
    auto const length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    int const on = 1;
    CHECK(::bind(made, reinterpret_cast<sockaddr *>(&address), length) == 0);
    CHECK(::setsockopt(made, SOL_SOCKET, SO_PASSCRED, &on, sizeof on) == 0);
    return made;
}

// The numbers of the next message of this user, or an empty string.
std::string receive(int descriptor) {
    unsigned char bytes[64];
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(ucred))];
    iovec part{bytes, sizeof bytes};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    ssize_t const size = ::recvmsg(descriptor, &message, 0);
    cmsghdr const *const head = size == 12 ? CMSG_FIRSTHDR(&message) : nullptr;
    if (!head || head->cmsg_type != SCM_CREDENTIALS) return {};
    ucred sender;
    std::memcpy(&sender, CMSG_DATA(head), sizeof sender);
    if (sender.uid != ::getuid()) return {};
    std::string text;
    for (int i = 0; i < 12; i += 4)
        text += std::to_string(bytes[i] | bytes[i + 1] << 8 | bytes[i + 2] << 16) + " ";
    return text;
}

void check_socket() {
    int const receiver = bound_socket();
    check("to a socket", linked, "");
    for (char const *text : {"0 0 0 ", "1 0 0 ", "2 0 0 ", "1027 0 0 ", ""})
        CHECK_TEXT(receive(receiver), text);
    check("flood", linked, "");
    CHECK_TEXT(receive(receiver), "0 0 0 ");
    ::close(receiver);
    check("flood", linked, "");
    check("to a socket", linked, "");
}

} // namespace

int main(int argc, char **argv) {
    if (argc > 1) return child(argv[1]);
    ::unsetenv(watchdog_title_variable);
    ::unsetenv(watchdog_id_variable);
    ::setenv(own_event, cOwnEvent::name(), 1); // for the child processes
    check("without title", {}, "");
    check("without title", {{watchdog_title_variable, "Watchdog"}, {watchdog_id_variable, "5"}},
          "");
    check("with title", titled, "init[77: 1027 0 0][77: 1 2 3][77: 4 5 -6]id[77: 1027 0 0]");
    check("taken id", linked, "[" + number + ": 1027 0 0]");
    check("statics", {titled[0], {statics_step, "1"}}, "[77: 1027 0 0]end[77: 1027 0 0]");
    check("room", titled, "16+4 40+5 16446+1024 ");
    check_event();
    check_socket();
    return failures != 0;
}
