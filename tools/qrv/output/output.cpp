#include "tools/qrv/output/output.h"

#include "qrv/base/platform/cplatform.h"
#include "tools/qrv/output/message_line.h"

#include <cerrno>
#include <unistd.h>

bool put_result(std::string_view bytes) {
    if (cat::write_all(STDOUT_FILENO, bytes)) return true;
    if (errno != EPIPE) put_error("qrv", reason("cannot write the output", errno));
    return false;
}

void put_error(std::string const &where, std::string const &text) {
    put_lines(message_line(where, cRole::error, text));
}

void put_lines(std::string_view lines) { cat::write_all(STDERR_FILENO, lines); }
