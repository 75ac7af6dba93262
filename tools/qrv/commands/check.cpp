// `check`: every mistake with its position.

#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/reading/reading.h"
#include "tools/qrv/rules/hints.h"

namespace {

struct cOptions {
    std::vector<std::string> files;
    bool all = false;
    int max_errors = default_max_errors;
};

constexpr char const *help =
    "Each mistake is reported once, where it is, with a note where that helps. Errors that follow\n"
    "from it are counted.\n"
    "\n"
    "Example:\n"
    "  qrv check *.attr";

// A bracket that closes too much has often caused an error before it on its line.
void add_text_after(std::string const &bytes, cPlace place, cMessages &messages) {
    if (messages.shows_all()) return messages.error(place, text_after_first_value);
    cDiagnostic found = text_after_value(bytes, place);
    std::vector<cDiagnostic> const &before = messages.findings().diagnostics;
    bool const follows =
        found.place != place && !before.empty() && before.back().place.line == found.place.line;
    if (follows)
        messages.following();
    else
        messages.add(std::move(found));
}

void check_file(std::string const &bytes, cMessages &messages, cReply &reply) {
    cReading const reading = read_value(bytes, messages);
    if (reading.behind) add_text_after(bytes, *reading.behind, messages);
    if (!reading.empty) reply.status = messages.count() == 0 ? exit_done : exit_found;
}

int run(cOptions const &options) {
    int status = exit_done;
    auto const check = [&](std::string const &bytes, cMessages &messages, cReply &reply) {
        if (options.all) messages.show_all();
        check_file(bytes, messages, reply);
    };
    for (std::string const &name : options.files)
        status = std::max(status, with_bytes(name, options.max_errors, check).status);
    return status;
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.required("FILE", options.files, "the files");
    arguments.flag("--all", options.all, "report each error as the library does, without notes");
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(70, "check", "Report every mistake in a file", help,
                       define<cOptions, add_arguments, run>);

} // namespace
