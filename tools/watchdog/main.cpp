// The reference watchdog `qrv-watchdog`: starts a program. If the program gives no sign of life,
// ends it and starts it again. Uses the constants of the library, but does not link the library,
// which would redirect the standard streams.

#include "report.h"
#include "watch.h"

#include <exception>
#include <string_view>
#include <unistd.h>

namespace {

bool put(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t const count = ::write(descriptor, bytes.data(), bytes.size());
        if (count <= 0) return false;
        bytes.remove_prefix(static_cast<size_t>(count));
    }
    return true;
}

int watch(watchdog::cOptions const &options) {
    watchdog::cWatch watcher(options);
    try {
        return watcher.run();
    } catch (std::exception const &error) {
        bool const runs = watcher.program().is_running();
        watchdog::report(
            error.what() +
            (runs ? "; " + watcher.program().full_name() + " is left alone" : std::string()));
        return watchdog::status_failure;
    }
}

} // namespace

int main(int argc, char **argv) {
    // O_CLOEXEC: a standard descriptor that our caller has closed is closed in the program, too.
    constexpr int flags = O_RDWR | O_CLOEXEC;
    fill_standard_descriptors(flags, flags);
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
