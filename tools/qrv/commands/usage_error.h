#pragma once
// What is wrong with a command line, in words: the parser's own do not say which command or option
// was meant.

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

// Prints the error, and a note that says where the help is. Returns the exit code. `arguments` are
// those that this command, or the tool itself, could not parse.
int refuse(CLI::App &command, CLI::ParseError const &error,
           std::vector<std::string> const &arguments);
// The same for a word that is none of the tool's commands.
int refuse_command(CLI::App const &tool, std::string const &name);
