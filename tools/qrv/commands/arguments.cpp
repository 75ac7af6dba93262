#include "tools/qrv/commands/arguments.h"

#include <CLI/CLI.hpp>

#include <string_view>

namespace {

// A name such as "-o,--output=FILE": the names for the parser, and the name of the value in the
// help.
struct cName {
    explicit cName(std::string_view name)
        : names(name.substr(0, name.find('='))),
          kind(name.size() > names.size() ? name.substr(names.size() + 1) : "TEXT") {}
    std::string names, kind;
};

CLI::Validator validator(cArguments::cTest const &test) { return {test.wrong, ""}; }

std::string with_default(std::string const &help, std::string const &value) {
    return value.empty() || value == "-" ? help : help + " (default: " + value + ")";
}

} // namespace

void cArguments::required(char const *name, std::string &value, char const *help) {
    command_.add_option(name, value, help)->required();
}

void cArguments::required(char const *name, std::vector<std::string> &values, char const *help) {
    command_.add_option(name, values, help)->required();
}

void cArguments::required(char const *name, std::string &value, cTest test, char const *help) {
    command_.add_option(name, value, help)->required()->check(validator(test));
}

// Adds one option for each value: if an option has several values, the parser splits values in
// square brackets at commas.
void cArguments::required(char const *name, std::vector<std::string> &values, cRange count,
                          char const *help) {
    for (int i = 0; i < count.highest; ++i) {
        CLI::Option *const option = command_.add_option_function<std::string>(
            i == 0 ? name : name + (" " + std::to_string(i)),
            [&values](std::string const &value) { values.push_back(value); }, help);
        option->required(i < count.lowest);
        if (i > 0) option->group("");
    }
}

void cArguments::repeated(char const *name, std::vector<std::string> &values, char const *help) {
    cName const option(name);
    command_.add_option(option.names, values, help)
        ->allow_extra_args(name[0] != '-')
        ->type_name(option.kind);
}

void cArguments::repeated(char const *name, std::vector<std::string> &values, cTest test,
                          char const *help) {
    repeated(name, values, help);
    command_.get_option(name)->check(validator(test))->type_name(test.kind);
}

void cArguments::flag(char const *name, bool &value, char const *help) {
    command_.add_flag(name, value, help)->disable_flag_override();
}

void cArguments::option(char const *name, std::string &value, char const *help) {
    cName const option(name);
    command_.add_option(option.names, value, with_default(help, value))->type_name(option.kind);
}

void cArguments::option(char const *name, std::optional<std::string> &value, char const *help) {
    cName const option(name);
    command_
        .add_option_function<std::string>(
            option.names, [&value](std::string const &given) { value = given; }, help)
        ->type_name(option.kind);
}

void cArguments::option(char const *name, int &value, cRange range, char const *help) {
    command_
        .add_option(name, value,
                    help + (" (" + std::to_string(range.lowest)) + " to " +
                        std::to_string(range.highest) + ", default: " + std::to_string(value) + ")")
        ->check(CLI::Range(range.lowest, range.highest).description(""))
        ->type_name("NUMBER");
}

void cArguments::option(char const *name, std::string &value,
                        std::vector<std::string> const &choices, char const *help) {
    command_.add_option(name, value, with_default(help, value))
        ->check(CLI::IsMember(choices).description(""))
        ->type_name(CLI::detail::join(choices, "|"));
}

void cArguments::option(char const *name, std::string &value, cTest test, char const *help) {
    command_.add_option(name, value, with_default(help, value))
        ->check(validator(test))
        ->type_name(test.kind);
}

void cArguments::flag(char const *name, std::string &value, char const *usual, cTest test,
                      char const *help) {
    command_.add_flag(std::string(name) + '{' + usual + '}', value, help)
        ->check(validator(test))
        ->type_name(test.kind);
}

void cArguments::exclude(char const *option, char const *other) {
    command_.get_option(option)->excludes(command_.get_option(other));
}

void cArguments::need(char const *option, char const *other) {
    command_.get_option(option)->needs(command_.get_option(other));
}

void cArguments::need(char const *option, char const *what, std::function<bool()> is_missing) {
    if (!checks_) {
        checks_ = std::make_shared<cChecks>();
        command_.callback([checks = checks_] {
            for (auto const &check : *checks) check();
        });
    }
    checks_->push_back([option, what, is_missing = std::move(is_missing)] {
        if (is_missing()) throw CLI::RequiresError(option, what);
    });
}
