// The command line tool `qrv`: reads, checks and rewrites files of object trees. What it is asked
// for goes to standard output, what it has to say to standard error, and of a good file it says
// nothing.

#include "commands.h"
#include "output.h"
#include "qrv/cvers.h"
#include "qrv/diagnostics/cconsole.h"
#include "qrv/signals/csignal.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <sstream>
#include <unistd.h>

namespace {

constexpr char const *footer =
    "Exit codes: 0 done, found or clean; 1 absent, different or with findings; 2 the work could\n"
    "not be done. A file name of - is the standard input.";

void add_common(CLI::App &command, cCommon &common) {
    command.add_option("--max-errors", common.max_errors, "messages for one file at most")
        ->check(CLI::Range(1, 1000000))
        ->capture_default_str();
}

void add_canonical(CLI::App &command, cCommon &common) {
    command.add_flag("--canonical", common.canonical,
                     "the plain writer's bytes: six digits, no last line feed");
}

void add_fmt(CLI::App &app, cFmtOptions &options) {
    CLI::App &command = *app.add_subcommand("fmt", "Write the value of a file in standard layout");
    command.add_option("FILE", options.files, "files to write anew")->required();
    CLI::Option *const check =
        command.add_flag("--check", options.check, "only tell what would change");
    CLI::Option *const in_place =
        command.add_flag("-i,--in-place", options.in_place, "replace the file")->excludes(check);
    command.add_flag("--force", options.force, "replace it even where something is lost")
        ->needs(in_place);
    add_canonical(command, options);
    add_common(command, options);
    command.footer("Examples:\n"
                   "  qrv fmt device.attr            writes it to standard output\n"
                   "  qrv fmt --check *.attr         is everything in layout?\n"
                   "  qrv fmt -i device.attr         rewrites the file, comments kept\n"
                   "Comments that can't be kept, and text behind the first value, are told with\n"
                   "their place; -i then refuses unless --force is given.");
}

void add_get(CLI::App &app, cGetOptions &options) {
    CLI::App &command = *app.add_subcommand("get", "Print the values at paths");
    command.add_option("FILE", options.file, "the file")->required();
    command.add_option("PATH", options.paths, "keys with / between them")->required();
    command.add_flag("--text", options.text, "print the written form, strings in quotes");
    CLI::Option *const value =
        command.add_option("--default", options.default_value, "printed for what is absent");
    command.callback([&options, value] { options.has_default = value->count() > 0; });
    add_canonical(command, options);
    add_common(command, options);
    command.footer("Examples:\n"
                   "  qrv get device.attr bus/baud            a number, as it stands\n"
                   "  qrv get device.attr limits sensors/0    containers as text\n"
                   "  qrv get --default 8 device.attr slots   8 if there is no such key");
}

void add_check(CLI::App &app, cCheckOptions &options) {
    CLI::App &command = *app.add_subcommand("check", "Tell every error of a file");
    command.add_option("FILE", options.files, "files to check")->required();
    add_common(command, options);
    command.footer("Example:\n"
                   "  qrv check *.attr");
}

void add_tokens(CLI::App &app, cTokensOptions &options) {
    CLI::App &command = *app.add_subcommand("tokens", "List the tokens of a file");
    command.add_option("FILE", options.file, "the file")->required();
    command.add_flag("--all", options.all, "comments and blanks too");
    add_common(command, options);
    command.footer("Example:\n"
                   "  qrv tokens --all device.attr\n"
                   "A line is TOKEN:code:position:line:column 'text'.");
}

int run(int argc, char **argv) {
    CLI::App app("Reads, checks and rewrites files of object trees.", "qrv");
    app.set_version_flag("--version", std::string(QRV_VERSION_TEXT));
    app.require_subcommand(1);
    app.footer(footer);
    cFmtOptions fmt;
    cGetOptions get;
    cCheckOptions check;
    cTokensOptions tokens;
    add_fmt(app, fmt);
    add_get(app, get);
    add_check(app, check);
    add_tokens(app, tokens);
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const &error) {
        std::ostringstream out, err;
        int const status = app.exit(error, out, err);
        bool const written = put_result(out.str());
        put_lines(err.str());
        return status == 0 && written ? exit_done : exit_failed;
    }
    if (app.got_subcommand("fmt")) return run_fmt(fmt);
    if (app.got_subcommand("get")) return run_get(get);
    if (app.got_subcommand("check")) return run_check(check);
    return run_tokens(tokens);
}

} // namespace

int main(int argc, char **argv) {
    fill_standard_descriptors();
    std::signal(SIGPIPE, SIG_IGN); // a reader that has gone is an exit code
    sig_idle();                    // the start-up text goes where nobody listens
    cConsoleDisplay const messages(STDERR_FILENO);
    try {
        return run(argc, argv);
    } catch (std::exception const &error) {
        put_message(std::string("qrv: error: ") + error.what());
        return exit_failed;
    }
}
