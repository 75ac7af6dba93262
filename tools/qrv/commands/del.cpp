// `del`: removes entries from the value of a file.

#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/editing/entries.h"

namespace {

struct cOptions : cWriteOptions {
    std::string file;
    std::vector<std::string> paths;
};

constexpr char const *help =
    "Each entry goes with its own comments: those on the lines directly above it and after it on\n"
    "its line. Everything else stays as it is. A value that is referred to elsewhere is written\n"
    "at the first reference then. A declared type that is still used can't be deleted.\n"
    "Paths apply in order: after the first value of a list is deleted, the next is the first.\n"
    "If one entry can't be deleted, nothing is written and the exit code is 2.\n"
    "\n"
    "Examples:\n"
    "  qrv del device.attr bus/parity               # the new text, on standard output\n"
    "  qrv del -i device.attr sensors/0 bus/retries  # replaces the file";

int run(cOptions const &options) {
    return change_entries(options.file, options, [&](objref const &value, cMessages &messages) {
        for (std::string const &path : options.paths) remove_entry(value, path, messages);
    });
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.required("FILE", options.file, "the file");
    arguments.required("PATH", options.paths, "keys with / between them");
    add_destination(arguments, options);
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(22, "del", "Delete entries", help, define<cOptions, add_arguments, run>);

} // namespace
