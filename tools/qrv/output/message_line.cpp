#include "tools/qrv/output/message_line.h"

#include "tools/qrv/output/escaped.h"

#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace {

struct cLook {
    char const *word;
    char const *colour; // bold red, magenta, cyan, green
};
constexpr cLook looks[] = {
    {"error", "\x1b[1;31m"}, {"warning", "\x1b[1;35m"}, {"note", "\x1b[1;36m"}, {"", "\x1b[1;32m"}};

cLook const &look_of(cRole role) { return looks[static_cast<size_t>(role)]; }

std::string_view variable(char const *name) {
    char const *const value = std::getenv(name);
    return value ? value : "";
}

bool terminal_has_colours() {
    return ::isatty(STDERR_FILENO) == 1 && variable("NO_COLOR").empty() &&
           variable("TERM") != "dumb";
}

bool &has_colours() {
    static bool has = terminal_has_colours();
    return has;
}

} // namespace

void choose_colours(std::string const &when) {
    has_colours() = when == "auto" ? terminal_has_colours() : when == "always";
}

std::string painted(std::string const &text, cRole role) {
    return has_colours() ? look_of(role).colour + text + "\x1b[0m" : text;
}

std::string message_line(std::string const &where, cRole kind, std::string const &text) {
    std::string const word = std::string(look_of(kind).word) + ":";
    return (where.empty() ? "''" : escaped(where)) + ": " + painted(word, kind) + " " + escaped(text) + "\n";
}
