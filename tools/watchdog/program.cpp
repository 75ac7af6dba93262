#include "program.h"

#include "qrv/util/cwatchdog.h"
#include "report.h"

#include <cerrno>
#include <csignal>
#include <spawn.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace watchdog {

namespace {

// Pointers to the strings and a final null, as system calls expect them. Borrows the strings.
std::vector<char *> pointers(std::vector<std::string> &texts) {
    std::vector<char *> list;
    for (std::string &text : texts) list.push_back(text.data());
    list.push_back(nullptr);
    return list;
}

// The program starts with the usual signal handling, independent of the signals that the watchdog
// blocks or ignores. But it ignores the signals of a terminal that the caller of the watchdog
// ignores, as with nohup.
class cAttributes {
  public:
    cAttributes() {
        sigset_t none{}, all{};
        ::sigemptyset(&none);
        ::sigfillset(&all);
        for (int number : {SIGHUP, SIGINT, SIGQUIT}) ::sigdelset(&all, number);
        int const error = ::posix_spawnattr_init(&attributes_);
        if (error != 0) throw cFailure(reason("cannot prepare a start", error));
        ::posix_spawnattr_setsigmask(&attributes_, &none);
        ::posix_spawnattr_setsigdefault(&attributes_, &all);
        ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    cAttributes(cAttributes const &) = delete;
    cAttributes &operator=(cAttributes const &) = delete;
    ~cAttributes() { ::posix_spawnattr_destroy(&attributes_); }

    posix_spawnattr_t const *get() const { return &attributes_; }

  private:
    posix_spawnattr_t attributes_;
};

} // namespace

std::vector<std::string> environment_of(char const *const *ours, std::uint32_t id) {
    std::string const title = watchdog_title_variable + std::string("=");
    std::string const number = watchdog_id_variable + std::string("=");
    std::vector<std::string> list;
    for (; ours && *ours; ++ours) {
        std::string_view const entry = *ours;
        if (!entry.starts_with(title) && !entry.starts_with(number)) list.emplace_back(entry);
    }
    list.push_back(title + watchdog_title);
    list.push_back(number + std::to_string(id));
    return list;
}

cProgram::cProgram(std::vector<std::string> command, std::uint32_t id)
    : command_(std::move(command)), environment_(environment_of(environ, id)) {}

int cProgram::start() {
    cAttributes const attributes;
    pid_t pid = 0;
    int const error = ::posix_spawnp(&pid, command_[0].c_str(), nullptr, attributes.get(),
                                     pointers(command_).data(), pointers(environment_).data());
    if (error == 0) pid_ = pid;
    return error;
}

std::optional<cEnd> cProgram::ended() {
    if (pid_ <= 0) return std::nullopt;
    int status = 0;
    pid_t found = 0;
    do found = ::waitpid(-1, &status, WNOHANG);
    while (found > 0 && found != pid_); // skips orphans that this process has inherited
    if (found == 0 || (found < 0 && errno == EINTR)) return std::nullopt;
    if (found < 0) throw cFailure(reason("cannot wait for " + full_name(), errno));
    pid_ = 0;
    if (WIFSIGNALED(status)) return cEnd{true, WTERMSIG(status)};
    return cEnd{false, WEXITSTATUS(status)};
}

void cProgram::signal(int number) const {
    if (pid_ > 0) ::kill(pid_, number); // not waited for yet, so the id is still this program's
}

std::string cProgram::name() const {
    return command_[0].substr(command_[0].rfind('/') + 1); // npos + 1 is 0
}

std::string cProgram::full_name() const {
    return is_running() ? name() + " (pid " + std::to_string(pid_) + ")" : name();
}

} // namespace watchdog
