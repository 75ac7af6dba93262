#include "tell.h"

#include <algorithm>
#include <cstring>
#include <poll.h>
#include <unistd.h>

namespace watchdog {

namespace {

// A pipe with room has room for 4,096 bytes, so a line below that is written whole and at once.
constexpr size_t longest_line = 1000;
constexpr int moment = 200; // milliseconds

bool has_room() {
    static constinit bool had_room = true;
    pollfd output{STDERR_FILENO, POLLOUT, 0};
    return had_room = ::poll(&output, 1, had_room ? moment : 0) == 1;
}

} // namespace

void tell(std::string const &line) {
    std::string shown = "qrv-watchdog: " + line;
    std::replace_if(
        shown.begin(), shown.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
    if (shown.size() > longest_line) shown.resize(longest_line);
    shown += '\n';
    if (has_room() && ::write(STDERR_FILENO, shown.data(), shown.size()) < 0)
        return; // nobody to tell
}

std::string reason(std::string const &what, int error) {
    return what + ": " + std::strerror(error);
}

} // namespace watchdog
