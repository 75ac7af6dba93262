#include "tools/qrv/commands/command_line.h"

#include "qrv/cvers.h"
#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/help_text.h"
#include "tools/qrv/commands/usage_error.h"
#include "tools/qrv/output/exit_code.h"
#include "tools/qrv/output/message_line.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/process/modules.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <optional>

namespace {

constexpr char const *help_summary = "Print the help, or that of a command";
constexpr char const *footer =
    "Exit codes: 0 done, found or clean; 1 absent, different or with findings; 2 the work\n"
    "could not be done. The file name - is the standard input. After -- an argument that\n"
    "begins with - is not an option.\n"
    "\n"
    "The options of all commands may be before or after the command, --module more than once.\n"
    "A NAME without a slash is searched for in the folder 'modules' beside the program, then\n"
    "where the system has its shared objects, in the current folder and in its folder\n"
    "'modules'. A file never makes the tool load a module. A type is unknown unless the tool, a\n"
    "loaded module or the file defines it.";

using cWords = std::vector<std::string>;

// The parts of the command line. Options before the command are parsed like those after it.
struct cSplit {
    std::optional<std::string> command;
    cWords arguments;
};

cSplit split(CLI::App &general, cWords const &words) {
    size_t at = 0;
    while (at < words.size() && words[at].size() > 1 && words[at][0] == '-') {
        if (words[at] == "--") break;
        CLI::Option const *const option = general.get_option_no_throw(words[at]);
        at += option && option->get_items_expected_min() > 0 ? 2 : 1;
    }
    size_t const command = at < words.size() && words[at] == "--" ? at + 1 : at;
    if (command >= words.size()) return {{}, words};
    cSplit parts{words[command], words};
    parts.arguments.erase(parts.arguments.begin() + static_cast<std::ptrdiff_t>(command));
    return parts;
}

// A parser with the options that all commands have.
class cParser {
  public:
    cParser(std::string const &summary, std::string const &name) : app_(summary, name) {
        app_.formatter(help_);
        app_.set_help_flag("--help", "print the help, with explanations and examples");
        app_.set_help_all_flag("-h", "print the short help");
        app_.set_version_flag("--version", std::string(QRV_VERSION_TEXT), "print the version");
        app_.add_option("--module", modules_,
                        "load this module first, for the types that it defines")
            ->type_name("NAME")
            ->allow_extra_args(false);
        app_.add_flag("--color{always}", colours_,
                      "colour messages always, never, or auto: on a terminal")
            ->check(CLI::IsMember({"auto", "always", "never"}).description(""))
            ->type_name("WHEN");
        for (char const *const general : {"--version", "--color", "--module"})
            app_.get_option(general)->group("Options of all commands");
    }
    cParser(cParser const &) = delete;
    cParser &operator=(cParser const &) = delete;
    ~cParser() = default;

    CLI::App &app() { return app_; }
    std::string help() const { return help_->of(app_); }

    // The exit code; empty if there is work to do.
    std::optional<int> parse(cWords const &arguments) {
        try {
            refuse_empty_values(arguments);
            app_.parse(cWords(arguments.rbegin(), arguments.rend()));
        } catch (CLI::CallForVersion const &) {
            return print(std::string(QRV_VERSION_TEXT) + "\n");
        } catch (CLI::CallForHelp const &) {
            return print(help_->of(app_));
        } catch (CLI::CallForAllHelp const &) {
            return print(help_->short_of(app_));
        } catch (CLI::ParseError const &error) {
            choose_colours(colours_);
            return refuse(app_, error, arguments);
        }
        choose_colours(colours_);
        return load_modules(modules_) ? std::nullopt : std::optional<int>(exit_failed);
    }

    static int print(std::string const &text) { return put_result(text) ? exit_done : exit_failed; }

  private:
    // Refuses "--output=" without a value: the parser would use the next argument.
    void refuse_empty_values(cWords const &arguments) const {
        for (std::string const &argument : arguments) {
            if (argument == "--") return;
            if (!argument.starts_with("--") || !argument.ends_with('=')) continue;
            std::string const name = argument.substr(0, argument.size() - 1);
            CLI::Option const *const option = app_.get_option_no_throw(name);
            if (option && option->get_items_expected_min() > 0)
                throw CLI::ArgumentMismatch(name + ": ", CLI::ExitCodes::ArgumentMismatch);
        }
    }

    std::shared_ptr<cHelpText> help_ = std::make_shared<cHelpText>();
    CLI::App app_;
    cWords modules_;
    std::string colours_ = "auto";
};

// The parser of the tool itself. It lists the commands, which parse their own arguments.
class cToolParser : public cParser {
  public:
    cToolParser() : cParser("Reads, checks and rewrites files of object trees.", "qrv") {
        for (cCommand const *const command : cCommand::all())
            app().add_subcommand(command->name(), command->summary())->group("Commands");
        app().add_subcommand("help", help_summary)->group("Commands");
        app().require_subcommand(1);
        app().footer(footer);
    }
};

// The parser of a command.
class cCommandParser : public cParser {
  public:
    explicit cCommandParser(cCommand const &command)
        : cParser(command.summary(), std::string("qrv ") + command.name()) {
        cArguments arguments(app());
        work_ = command.add_to(arguments);
        app().footer(command.help());
    }
    int run(cWords const &arguments) {
        std::optional<int> const status = parse(arguments);
        return status ? *status : work_();
    }

  private:
    std::function<int()> work_;
};

cCommand const *find_command(std::string const &name) {
    for (cCommand const *const command : cCommand::all())
        if (command->name() == name) return command;
    return nullptr;
}

int run_help(cToolParser &tool, cWords const &arguments) {
    cParser parser(help_summary, "qrv help");
    std::string topic;
    parser.app().add_option("COMMAND", topic, "the command");
    parser.app().footer("Example:\n  qrv help fmt");
    if (std::optional<int> const status = parser.parse(arguments)) return *status;
    if (topic.empty()) return cParser::print(tool.help());
    if (topic == "help") return cParser::print(parser.help());
    cCommand const *const command = find_command(topic);
    return command ? cParser::print(cCommandParser(*command).help())
                   : refuse_command(tool.app(), topic);
}

} // namespace

int run_command_line(int argc, char const *const *argv) {
    cToolParser tool;
    auto const [name, arguments] = split(tool.app(), cWords(argv + 1, argv + argc));
    if (!name) return tool.parse(arguments).value_or(exit_failed);
    if (*name == "help") return run_help(tool, arguments);
    cCommand const *const command = find_command(*name);
    return command ? cCommandParser(*command).run(arguments) : refuse_command(tool.app(), *name);
}
