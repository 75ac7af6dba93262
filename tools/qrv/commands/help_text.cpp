#include "tools/qrv/commands/help_text.h"

#include <set>
#include <sstream>

namespace {

constexpr size_t left_column = 26;
constexpr size_t right_column = 54;

// Breaks the text at blanks, into lines of at most `width` characters.
std::string in_lines(std::string const &text, size_t width) {
    std::string lines;
    size_t length = 0;
    std::istringstream words(text);
    for (std::string word; words >> word; length += word.size()) {
        bool const begins = length == 0, fits = length + 1 + word.size() <= width;
        if (!begins) lines += fits ? ' ' : '\n';
        length = begins || !fits ? 0 : length + 1;
        lines += word;
    }
    return lines;
}

std::string listed(std::set<CLI::Option *> const &options) {
    std::string names;
    for (CLI::Option const *option : options)
        names += (names.empty() ? "" : ", ") + option->get_name();
    return names;
}

} // namespace

cHelpText::cHelpText() {
    column_width(left_column);
    label("Positionals", "Arguments");
    label("SUBCOMMAND", "COMMAND");
}

std::string cHelpText::of(CLI::App const &command) const {
    return short_of(command) + '\n' + make_footer(&command);
}

std::string cHelpText::short_of(CLI::App const &command) const {
    auto const mode = CLI::AppFormatMode::Normal;
    std::string text = make_description(&command) + make_usage(&command, command.get_name()) +
                       make_positionals(&command) + make_groups(&command, mode) +
                       make_subcommands(&command, mode);
    text = CLI::detail::find_and_replace(text, " \n", "\n"); // follows hidden arguments
    text = CLI::detail::find_and_replace(text, "\n\n\n", "\n\n");
    return text.erase(text.find_last_not_of('\n') + 1) + '\n';
}

std::string cHelpText::make_option(CLI::Option const *option, bool is_positional) const {
    std::ostringstream text;
    CLI::detail::format_help(text,
                             make_option_name(option, is_positional) +
                                 (is_positional ? "" : make_option_opts(option)),
                             in_lines(make_option_desc(option), right_column), get_column_width());
    return text.str();
}

std::string cHelpText::make_option_name(CLI::Option const *option, bool is_positional) const {
    if (is_positional) return option->get_name(true, false);
    std::string names;
    for (std::string const &name : option->get_snames()) names += "-" + name;
    for (std::string const &name : option->get_lnames())
        names += (names.empty() ? "--" : ", --") + name;
    return names;
}

// A name with a blank has an optional part, and shows the number of values itself. Hidden arguments
// have no name here.
std::string cHelpText::make_option_usage(CLI::Option const *option) const {
    std::string const name = make_option_name(option, true);
    bool const plain = !name.empty() && name.find(' ') == name.npos;
    return plain ? Formatter::make_option_usage(option) : name;
}

std::string cHelpText::make_option_opts(CLI::Option const *option) const {
    std::string const kind = option->get_type_name();
    if (kind.empty()) return "";
    return option->get_items_expected_min() == 0 ? "[=" + kind + "]" : " " + kind;
}

std::string cHelpText::make_option_desc(CLI::Option const *option) const {
    std::string text = option->get_description();
    if (!option->get_excludes().empty()) text += "; not with " + listed(option->get_excludes());
    if (!option->get_needs().empty()) text += "; only with " + listed(option->get_needs());
    return text;
}
