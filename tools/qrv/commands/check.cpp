// `check`: every error with its place.

#include "qrv/text/read/csourcemap.h"
#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/reading/reading.h"
#include "tools/qrv/rules/warnings.h"

namespace {

struct cOptions {
    std::vector<std::string> files;
    std::vector<std::string> warnings; // as -W takes them
    int max_errors = default_max_errors;
};

constexpr char const *help = "Example:\n"
                             "  qrv check *.attr";

std::string wrong_warning(std::string const &form) { return cWarningLevels().set(form); }

void check_file(std::string const &bytes, cWarningLevels const &levels, cMessages &messages,
                cReply &reply) {
    cat::SourceMap const map;
    cReading const reading = read_value(bytes, messages);
    if (reading.behind) messages.error(*reading.behind, "text after the first value is not read");
    add_warnings(bytes, map, levels, messages);
    messages.sort();
    if (!reading.empty) reply.status = messages.count() == 0 ? exit_done : exit_found;
}

int run(cOptions const &options) {
    cWarningLevels levels;
    for (std::string const &form : options.warnings) levels.set(form);
    auto const work = [&](std::string const &bytes, cMessages &messages, cReply &reply) {
        check_file(bytes, levels, messages, reply);
    };
    int status = exit_done;
    for (std::string const &name : options.files)
        status = std::max(status, with_bytes(name, options.max_errors, work).status);
    return status;
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.required("FILE", options.files, "the files");
    arguments.repeated("-W", options.warnings, {"NAME", wrong_warning},
                       "switch a warning on (NAME) or off (no-NAME), or count it as an error "
                       "(error=NAME, or error for all)");
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(70, "check", "Report every error of a file", help,
                       define<cOptions, add_arguments, run>);

} // namespace
