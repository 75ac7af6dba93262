#include "tools/qrv/output/output.h"

#include "qrv/base/platform/cplatform.h"
#include "tools/qrv/output/message_line.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

void fill_standard_descriptors() {
    for (int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(descriptor, F_GETFD) < 0)
            ::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

bool put_result(std::string_view bytes) {
    if (cat::write_all(STDOUT_FILENO, bytes)) return true;
    if (errno != EPIPE) put_error("qrv", reason("cannot write the output", errno));
    return false;
}

void put_error(std::string const &where, std::string const &text) {
    put_lines(message_line(where, cRole::error, text));
}

std::string reason(char const *what, int error) {
    return std::string(what) + ": " + std::strerror(error);
}

void put_lines(std::string_view lines) { cat::write_all(STDERR_FILENO, lines); }
