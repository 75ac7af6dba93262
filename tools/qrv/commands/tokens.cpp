// `tokens`: prints the tokens of a file. Its use of memory does not grow with the file.

#include "tools/qrv/commands/command.h"
#include "tools/qrv/output/exit_code.h"
#include "tools/qrv/output/no_memory.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/output/progress.h"
#include "tools/qrv/reading/input.h"
#include "tools/qrv/reading/scan.h"

#include <istream>
#include <unistd.h>

namespace {

struct cOptions {
    std::string file;
    bool all = false;
};

constexpr char const *help = "Example:\n"
                             "  qrv tokens --all device.attr\n"
                             "Each line is TOKEN:code:position:line:column 'text'.";

int run(cOptions const &options) {
    cWorkOn const about(options.file);
    cInput input(options.file);
    bool const shows_tokens =
        ::isatty(STDOUT_FILENO) == 1; // a progress line would be mixed with the output
    cProgress progress(options.file, shows_tokens ? 0 : input.size());
    cPieces pieces([&] {
        std::string_view const piece = input.next();
        progress.add(piece.size());
        return piece;
    });
    std::istream is(&pieces);
    auto const put = [&](std::string_view lines) {
        return input.error().empty() && put_result(lines);
    };
    bool const done = dump(is, options.all, put);
    if (!input.error().empty()) put_error(options.file, input.error());
    return done ? exit_done : exit_failed;
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.required("FILE", options.file, "the file");
    arguments.flag("--all", options.all, "list comments and blanks, too");
}

cCommand const command(80, "tokens", "List the tokens of a file", help,
                       define<cOptions, add_arguments, run>);

} // namespace
