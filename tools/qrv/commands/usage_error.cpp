#include "tools/qrv/commands/usage_error.h"

#include "tools/qrv/output/exit_code.h"
#include "tools/qrv/output/message_line.h"
#include "tools/qrv/output/messages.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/rules/suggestion.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace {

using cWords = std::vector<std::string>;

// Names of these commands in other programs.
constexpr std::pair<std::string_view, char const *> other_names[] = {
    {"add", "ins"},     {"cat", "get"},   {"delete", "del"}, {"edit", "set"},
    {"format", "fmt"},  {"grep", "find"}, {"insert", "ins"}, {"lint", "check"},
    {"list", "find"},   {"move", "mv"},   {"print", "get"},  {"read", "get"},
    {"remove", "del"},  {"rename", "mv"}, {"rm", "del"},     {"scan", "tokens"},
    {"search", "find"}, {"show", "get"},  {"update", "set"}, {"validate", "check"}};

// The arguments that the parser could not place, in their order.
cWords left_over(CLI::App const &app, cWords const &arguments) {
    cWords left = app.remaining(), found;
    for (std::string const &argument : arguments) {
        auto const at = std::find(left.begin(), left.end(), argument);
        if (at == left.end() || argument == "--") continue;
        left.erase(at);
        found.push_back(argument);
    }
    return found;
}

bool is_option(std::string const &argument) { return argument.size() > 1 && argument[0] == '-'; }

// The known name that begins with `unknown`, such as "--max-err", if there is only one; else the
// closest one.
std::string closest(std::string const &unknown, cWords const &known) {
    auto const begins = [&](std::string const &name) { return name.starts_with(unknown); };
    if (unknown.size() > 1 && std::count_if(known.begin(), known.end(), begins) == 1)
        return *std::find_if(known.begin(), known.end(), begins);
    cSuggestion suggestion(unknown);
    for (std::string const &name : known) suggestion.show(name);
    return suggestion.best();
}

std::string closest_option(CLI::App const &app, std::string const &argument) {
    cWords known;
    for (CLI::Option const *option : app.get_options())
        known.insert(known.end(), option->get_lnames().begin(), option->get_lnames().end());
    std::string const name =
        argument.substr(std::min(argument.find_first_not_of('-'), argument.size()));
    std::string const best = name.size() < 2 ? "" : closest(name, known);
    return best.empty() ? "" : "--" + best;
}

std::string about_unplaced(CLI::App const &app, std::string const &argument) {
    if (!is_option(argument)) return "unexpected argument " + quoted(argument);
    std::string const option = argument.substr(0, argument.find('='));
    return "unknown option " + quoted(option) + did_you_mean(closest_option(app, option));
}

// The option or argument that the parser's message is about, as in "--indent: ...".
CLI::Option const *named(CLI::App const &app, std::string const &message) {
    std::string const name = message.substr(0, std::min(message.find(": "), message.find(" was ")));
    for (char const *dashes : {"", "--", "-"})
        if (CLI::Option const *option = app.get_option_no_throw(dashes + name)) return option;
    return nullptr;
}

std::string about_values(CLI::App const &app, std::string const &message) {
    CLI::Option const *const option = named(app, message);
    if (!option) return message;
    if (option->get_positional()) return "unexpected argument " + quoted(option->results().back());
    if (option->get_type_name().empty()) return option->get_name() + " accepts no value";
    return option->get_name() +
           (option->count() > 1 ? " is given more than once" : " needs a value");
}

std::string words_for(CLI::App const &app, CLI::ParseError const &error, cWords const &arguments) {
    cWords const left = left_over(app, arguments);
    auto const kind = static_cast<CLI::ExitCodes>(error.get_exit_code());
    if (kind == CLI::ExitCodes::ExtrasError)
        return about_unplaced(app, left.empty() ? app.remaining().front() : left.front());
    if (kind == CLI::ExitCodes::RequiredError && !left.empty())
        return about_unplaced(app, left.front());
    if (kind == CLI::ExitCodes::RequiredError && app.get_require_subcommand_min() > 0)
        return "a command is needed";
    return kind == CLI::ExitCodes::ArgumentMismatch ? about_values(app, error.what())
                                                    : error.what();
}

int print(std::string const &text, std::string const &help) {
    put_lines(message_line("qrv", cRole::error, text) + message_line("qrv", cRole::note, help));
    return exit_failed;
}

constexpr char const *list_help = "'qrv help' lists the commands";

} // namespace

int refuse_command(CLI::App const &tool, std::string const &name) {
    cWords known;
    for (CLI::App const *command : tool.get_subcommands(nullptr))
        known.push_back(command->get_name());
    auto const *const other = std::find_if(std::begin(other_names), std::end(other_names),
                                           [&](auto const &entry) { return entry.first == name; });
    std::string const best = other == std::end(other_names) ? closest(name, known) : other->second;
    return print("unknown command " + quoted(name) + did_you_mean(best), list_help);
}

int refuse(CLI::App &command, CLI::ParseError const &error, cWords const &arguments) {
    std::string const name = command.get_name();
    return print(words_for(command, error, arguments),
                 name == "qrv" ? list_help
                               : "'qrv help" + name.substr(name.find(' ')) + "' shows its options");
}
