// The reference watch dog `qrv-watchdog`: starts a program. If the program gives no sign of life,
// ends it and starts it again. Uses the constants of the library, but does not link the library,
// which would redirect the standard streams.

#include "report.h"
#include "watch.h"

#include <exception>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace {

// Opens those of the descriptors 0 to 2 that the caller has closed, so that no socket gets one.
// They are closed again for the program.
void fill_standard_descriptors() {
    for (int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(descriptor, F_GETFD) < 0) ::open("/dev/null", O_RDWR | O_CLOEXEC);
}

bool put(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t const count = ::write(descriptor, bytes.data(), bytes.size());
        if (count <= 0) return false;
        bytes.remove_prefix(static_cast<size_t>(count));
    }
    return true;
}

int watch(watchdog::cOptions const &options) {
    watchdog::cWatch over(options);
    try {
        return over.run();
    } catch (std::exception const &error) {
        bool const runs = over.program().is_running();
        watchdog::report(error.what() + (runs ? "; " + over.program().full_name() + " is left alone"
                                              : std::string()));
        return watchdog::status_failure;
    }
}

} // namespace

int main(int argc, char **argv) {
    fill_standard_descriptors();
    try {
        watchdog::cParsed const parsed = watchdog::parse(argc, argv);
        if (parsed.options) return watch(*parsed.options);
        bool const done = put(STDOUT_FILENO, parsed.output) && put(STDERR_FILENO, parsed.error);
        return done ? parsed.status : watchdog::status_failure;
    } catch (std::exception const &error) {
        watchdog::report(error.what());
        return watchdog::status_failure;
    }
}
