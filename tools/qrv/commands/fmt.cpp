// `fmt`: the values of files in the writer's layout.

#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/editing/rewrite.h"

#include <algorithm>

namespace {

struct cOptions : cWriteOptions {
    std::vector<std::string> files;
};

constexpr char const *help =
    "Examples:\n"
    "  qrv fmt device.attr            writes it to standard output\n"
    "  qrv fmt --check *.attr         is everything in layout?\n"
    "  qrv fmt -i device.attr         rewrites the file, comments kept\n"
    "Comments that can't be kept, and text behind the first value, are told with\n"
    "their place; -i then refuses unless --force is given.";

int run(cOptions const &options) {
    int status = exit_done;
    for (std::string const &name : options.files)
        status = std::max(status, rewrite(name, options, nullptr));
    return status;
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.required("FILE", options.files, "files to write anew");
    arguments.flag("--check", options.check, "only tell what would change");
    arguments.flag("-i,--in-place", options.in_place, "replace the file");
    arguments.exclude("--in-place", "--check");
    arguments.flag("--force", options.force, "replace it even where something is lost");
    arguments.need("--force", "--in-place");
    add_target(arguments, options.target, "--in-place", [&options] { return options.in_place; });
    add_canonical(arguments, options.canonical);
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(10, "fmt", "Write the value of a file in standard layout", help,
                       define<cOptions, add_arguments, run>);

} // namespace
