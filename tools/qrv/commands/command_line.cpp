#include "tools/qrv/commands/command_line.h"

#include "qrv/cvers.h"
#include "tools/qrv/commands/command.h"
#include "tools/qrv/output/exit_code.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/process/modules.h"

#include <CLI/CLI.hpp>

#include <sstream>
#include <utility>

namespace {

constexpr char const *footer =
    "Exit codes: 0 done, found or clean; 1 absent, different or with findings; 2 the work could\n"
    "not be done. A file name of - is the standard input.\n"
    "\n"
    "--module may stand before or behind the command, and more than once. A NAME without a slash\n"
    "is searched in the folder 'modules' beside the program, then where the system has its shared\n"
    "objects, in the current folder and in its folder 'modules'. No file makes the tool load one:\n"
    "a type that nothing has brought is unknown, whatever its name.";

} // namespace

int run_command_line(int argc, char const *const *argv) {
    CLI::App app("Reads, checks and rewrites files of object trees.", "qrv");
    app.set_version_flag("--version", std::string(QRV_VERSION_TEXT));
    app.require_subcommand(1);
    app.fallthrough(); // the options of all commands stand before or behind the command
    std::vector<std::string> modules;
    app.add_option("--module", modules, "load this module first, for the types that it brings")
        ->type_name("NAME")
        ->allow_extra_args(false);
    app.footer(footer);
    std::vector<std::pair<CLI::App *, std::function<int()>>> runs;
    for (cCommand const *const command : cCommand::all()) {
        CLI::App *const parser = app.add_subcommand(command->name(), command->summary());
        cArguments arguments(*parser);
        runs.emplace_back(parser, command->add_to(arguments));
        parser->footer(command->help());
    }
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const &error) {
        std::ostringstream out, err;
        int const status = app.exit(error, out, err);
        bool const written = put_result(out.str());
        put_lines(err.str());
        return status == 0 && written ? exit_done : exit_failed;
    }
    if (!load_modules(modules)) return exit_failed;
    for (auto const &[parser, run] : runs)
        if (parser->parsed()) return run();
    return exit_failed;
}
