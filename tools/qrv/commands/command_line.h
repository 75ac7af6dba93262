#pragma once

// Parses the arguments, loads the modules that they name and runs their command. The exit code.
int run_command_line(int argc, char const *const *argv);
