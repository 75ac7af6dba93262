#pragma once
// The command line of the tool, from its arguments to the exit code.

// Parses the arguments, loads the modules that they name and runs their command.
int run_command_line(int argc, char const *const *argv);
