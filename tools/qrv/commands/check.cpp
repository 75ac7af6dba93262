// `check`: every error with its place.

#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/reading/reading.h"

namespace {

struct cOptions {
    std::vector<std::string> files;
    int max_errors = default_max_errors;
};

constexpr char const *help = "Example:\n"
                             "  qrv check *.attr";

void check_file(std::string const &bytes, cMessages &messages, cReply &reply) {
    cReading const reading = read_value(bytes, messages);
    if (reading.behind) messages.error(*reading.behind, "text behind the first value is not read");
    if (!reading.empty) reply.status = messages.count() == 0 ? exit_done : exit_found;
}

int run(cOptions const &options) {
    int status = exit_done;
    for (std::string const &name : options.files)
        status = std::max(status, with_bytes(name, options.max_errors, check_file).status);
    return status;
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.required("FILE", options.files, "files to check");
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(70, "check", "Tell every error of a file", help,
                       define<cOptions, add_arguments, run>);

} // namespace
