// `fmt`: writes the values of files in the writer's layout.

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
    "  qrv fmt device.attr            prints the value in standard layout\n"
    "  qrv fmt --check *.attr         reports what is not in standard layout\n"
    "  qrv fmt -i device.attr         replaces the file\n"
    "fmt preserves all comments. It moves them with their entries and indents them again; a\n"
    "container on one line becomes many lines if a comment in it needs that. With --canonical\n"
    "some comments are lost. fmt reports those, and text after the first value, with their\n"
    "positions. Then -i does not replace the file unless --force is given. --check accepts blanks\n"
    "at line ends that the writer leaves there, such as those after the bracket in \"]; \".";

int run(cOptions const &options) {
    int status = exit_done;
    for (std::string const &name : options.files)
        status = std::max(status, rewrite(name, options, nullptr));
    return status;
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.required("FILE", options.files, "the files");
    arguments.flag("--check", options.check, "only report what would change");
    arguments.flag("-i,--in-place", options.in_place, "replace the file");
    arguments.exclude("--in-place", "--check");
    add_diff(arguments, options.diff);
    arguments.flag("--force", options.force, "replace the file even if data is lost");
    arguments.need("--force", "--in-place");
    add_target(arguments, options.target, "--in-place", [&options] { return options.in_place; });
    arguments.flag("--trailing-blanks", options.trailing_blanks,
                   "keep the blanks that the writer leaves at line ends");
    add_canonical(arguments, options.canonical);
    arguments.exclude("--trailing-blanks", "--canonical");
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(10, "fmt", "Write the value of a file in standard layout", help,
                       define<cOptions, add_arguments, run>);

} // namespace
