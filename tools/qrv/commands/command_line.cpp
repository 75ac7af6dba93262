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
    "Exit codes: 0 done, found or clean; 1 absent, different or with findings; 2 the work\n"
    "could not be done. The file name - is the standard input.\n"
    "\n"
    "--module is accepted before and after the command, and more than once. A NAME without a\n"
    "slash is searched for in the folder 'modules' beside the program, then where the system\n"
    "has its shared objects, in the current folder and in its folder 'modules'. A file never\n"
    "makes the tool load a module. A type is unknown unless the tool, a loaded module or the\n"
    "file defines it.";

} // namespace

int run_command_line(int argc, char const *const *argv) {
    CLI::App app("Reads, checks and rewrites files of object trees.", "qrv");
    app.set_version_flag("--version", std::string(QRV_VERSION_TEXT));
    app.require_subcommand(1);
    app.fallthrough(); // the options of all commands stand before or behind the command
    std::vector<std::string> modules;
    app.add_option("--module", modules, "load this module first, for the types that it defines")
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
