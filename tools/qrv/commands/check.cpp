// `check`: every error with its place.

#include "tools/qrv/commands/commands.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/process/worker.h"
#include "tools/qrv/reading/reading.h"

namespace {

void check_file(std::string const &name, int max_errors, cReply &reply) {
    cMessages messages(name, max_errors);
    std::string bytes;
    if (read_bytes(name, bytes, messages)) {
        cReading const reading = read_value(bytes, messages);
        if (reading.behind)
            messages.error(*reading.behind, "text behind the first value is not read");
        if (!reading.empty) reply.status = messages.count() == 0 ? exit_done : exit_found;
    }
    reply.messages = messages.text();
}

} // namespace

int run_check(cCheckOptions const &options) {
    int status = exit_done;
    for (std::string const &name : options.files) {
        cReply const reply =
            in_child(name, [&](cReply &r) { check_file(name, options.max_errors, r); });
        put_lines(reply.messages);
        status = std::max(status, reply.status);
    }
    return status;
}
