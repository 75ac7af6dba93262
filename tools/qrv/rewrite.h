#pragma once
// The first value of a file, changed or as it is, written anew: what fmt, set and merge do.

#include "commands.h"
#include "qrv/core/cobj.h"

#include <functional>
#include <string>

// Changes the value that was read from the file. False, with lines in `told`: nothing is written.
// It is run once or twice, in processes of their own. The second time the file's comments have
// numbers below `first_number`, and comments from elsewhere are to be numbered from there on; the
// first time that is 0.
using cChange = std::function<bool(objref const &value, size_t first_number, std::string &told)>;

// Reads, changes and writes by the options. The exit code.
int rewrite(std::string const &name, cWriteOptions const &options, cChange const &change);
