// `check`: every error with its place.

#include "child.h"
#include "commands.h"
#include "output.h"
#include "reading.h"

namespace {

void check_file(std::string const &name, int max_errors, cReply &reply) {
    cMessages messages(name, max_errors);
    std::string bytes;
    reply.status = exit_failed;
    if (read_bytes(name, bytes, messages)) {
        cReading const reading = read_value(bytes, messages);
        for (cPlace place : reading.behind)
            messages.error(place, "text behind the first value is not read");
        if (messages.count() == 0)
            reply.status = exit_done;
        else if (reading.value || !reading.clean)
            reply.status = exit_found;
    }
    reply.messages = messages.text();
}

} // namespace

int run_check(cCheckOptions const &options) {
    int status = exit_done;
    for (std::string const &name : options.files) {
        cReply const reply = in_child([&](cReply &r) { check_file(name, options.max_errors, r); });
        put_lines(reply.messages);
        status = std::max(status, reply.status);
    }
    return status;
}
