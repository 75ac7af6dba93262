// `mv`: renames or moves one entry of the value of a file, with its comments.

#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/editing/entries.h"

namespace {

struct cOptions : cWriteOptions {
    std::string file;
    std::string from;
    std::string to;
};

constexpr char const *help =
    "FROM and TO are paths. Within one map the entry gets another key and keeps its place. Else "
    "it\n"
    "comes last in the map of TO, or to the position that TO names in a vector or a set. Its\n"
    "comments come along, and paths of references to it are changed.\n"
    "There must be nothing at TO yet. If the entry can't be moved, nothing is written and the "
    "exit\n"
    "code is 2.\n"
    "\n"
    "Examples:\n"
    "  qrv mv device.attr bus/baud bus/speed        # another key\n"
    "  qrv mv -i device.attr sensors/2 sensors/0    # the third comes first\n"
    "  qrv mv -i device.attr bus/retries retries    # one level up";

int run(cOptions const &options) {
    return change_entries(options.file, options, [&](objref const &value, cMessages &messages) {
        move_entry(value, options.from, options.to, messages);
    });
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.required("FILE", options.file, "the file");
    arguments.required("FROM", options.from, "where the entry is");
    arguments.required("TO", options.to, "where it is to be");
    add_destination(arguments, options);
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(24, "mv", "Move or rename an entry", help,
                       define<cOptions, add_arguments, run>);

} // namespace
