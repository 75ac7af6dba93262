// `tokens`: the scanner's view of a file.

#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/reading/scan.h"

namespace {

struct cOptions {
    std::string file;
    bool all = false;
    int max_errors = default_max_errors;
};

constexpr char const *help = "Example:\n"
                             "  qrv tokens --all device.attr\n"
                             "Each line is TOKEN:code:position:line:column 'text'.";

int run(cOptions const &options) {
    return print(with_raw_bytes(options.file, options.max_errors,
                                [&](std::string const &bytes, cMessages &, cReply &reply) {
                                    reply.text = dump_of(bytes, options.all);
                                    reply.status = exit_done;
                                }));
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.required("FILE", options.file, "the file");
    arguments.flag("--all", options.all, "list comments and blanks, too");
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(80, "tokens", "List the tokens of a file", help,
                       define<cOptions, add_arguments, run>);

} // namespace
