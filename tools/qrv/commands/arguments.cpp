#include "tools/qrv/commands/arguments.h"

#include <CLI/CLI.hpp>

void cArguments::required(char const *name, std::string &value, char const *help) {
    command_.add_option(name, value, help)->required();
}

void cArguments::required(char const *name, std::vector<std::string> &values, char const *help) {
    command_.add_option(name, values, help)->required();
}

void cArguments::required(char const *name, std::string &value, cTest test, char const *help) {
    command_.add_option(name, value, help)
        ->required()
        ->check(CLI::Validator(test.wrong, test.kind));
}

void cArguments::required(char const *name, std::vector<std::string> &values, cRange count,
                          char const *help) {
    command_.add_option(name, values, help)->required()->expected(count.lowest, count.highest);
}

void cArguments::repeated(char const *name, std::vector<std::string> &values, char const *help) {
    command_.add_option(name, values, help)->allow_extra_args(name[0] != '-');
}

void cArguments::repeated(char const *name, std::vector<std::string> &values, cTest test,
                          char const *help) {
    repeated(name, values, help);
    command_.get_option(name)->check(CLI::Validator(test.wrong, test.kind));
}

void cArguments::flag(char const *name, bool &value, char const *help) {
    command_.add_flag(name, value, help);
}

void cArguments::option(char const *name, std::string &value, char const *help) {
    command_.add_option(name, value, help)->capture_default_str();
}

void cArguments::option(char const *name, std::optional<std::string> &value, char const *help) {
    command_.add_option_function<std::string>(
        name, [&value](std::string const &given) { value = given; }, help);
}

void cArguments::option(char const *name, int &value, cRange range, char const *help) {
    command_.add_option(name, value, help)
        ->check(CLI::Range(range.lowest, range.highest))
        ->capture_default_str();
}

void cArguments::option(char const *name, std::string &value,
                        std::vector<std::string> const &choices, char const *help) {
    command_.add_option(name, value, help)->check(CLI::IsMember(choices))->capture_default_str();
}

void cArguments::option(char const *name, std::string &value, cTest test, char const *help) {
    command_.add_option(name, value, help)
        ->check(CLI::Validator(test.wrong, test.kind))
        ->capture_default_str();
}

void cArguments::flag(char const *name, std::string &value, char const *usual, cTest test,
                      char const *help) {
    command_.add_flag(std::string(name) + '{' + usual + '}', value, help)
        ->check(CLI::Validator(test.wrong, test.kind));
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
