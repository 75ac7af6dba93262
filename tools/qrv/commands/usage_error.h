#pragma once
// Reports errors in a command line. The parser's own messages lack the command or option that was
// meant.

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

// Prints the error, and a note that points to the help. Returns the exit code. `arguments` is the
// command line that this command, or the tool itself, could not parse.
int refuse(CLI::App &command, CLI::ParseError const &error,
           std::vector<std::string> const &arguments);
// The same for a word that is not a command of the tool.
int refuse_command(CLI::App const &tool, std::string const &name);
