#pragma once
// Shared by several commands: arguments, and the steps from a file to the output.

#include "tools/qrv/commands/arguments.h"
#include "tools/qrv/editing/rewrite.h"
#include "tools/qrv/process/apart.h"
#include "tools/qrv/reading/reading.h"

#include <functional>
#include <string>

void add_max_errors(cArguments &arguments, int &max_errors);
void add_canonical(cArguments &arguments, bool &canonical);
void add_convert(cArguments &arguments, bool &convert);
void add_diff(cArguments &arguments, bool &diff);
// Adds the options that say how a file is written, for commands that write one if the option `what`
// is given.
void add_target(cArguments &arguments, cTargetOptions &options, char const *what,
                std::function<bool()> const &writes_file);
// Adds the options for the destination: standard output, the file itself, or another file.
void add_destination(cArguments &arguments, cWriteOptions &options);

// Changes entries of the value of a file and writes it by the options, unless `change` reports an
// error. Returns the exit code.
int change_entries(std::string const &file, cWriteOptions const &options,
                   std::function<void(objref const &value, cMessages &messages)> const &change);

// Runs `work` on the bytes of a file, isolated from other files; with_bytes() also prints the
// messages. Removes a byte order mark. `work` may release the bytes. If the file cannot be read,
// the reply has status exit_failed.
using cBytesWork = std::function<void(std::string &bytes, cMessages &messages, cReply &)>;
cReply on_bytes(std::string const &file, int max_errors, cBytesWork const &work);
cReply with_bytes(std::string const &file, int max_errors, cBytesWork const &work);

// The same with the value of the file, which must have no errors.
struct cRead {
    objref const &value;
    cReading const &reading;
    std::string const &bytes;
    cMessages &messages;
};
using cValueWork = std::function<void(cRead const &file, cReply &reply)>;
cReply with_value(std::string const &file, int max_errors, cValueWork const &work);

// Prints the text of the reply. Returns the exit code.
int print(cReply const &reply);

// The options of a command that answers a question about a file: its run() is answer<...>.
struct cQuestion {
    std::string file;
    std::string about;
    int max_errors = default_max_errors;
};
template <void (*find)(std::string const &about, std::string const &bytes, cMessages &, cReply &)>
int answer(cQuestion const &question) {
    return print(with_bytes(question.file, question.max_errors,
                            [&](std::string const &bytes, cMessages &messages, cReply &reply) {
                                find(question.about, bytes, messages, reply);
                            }));
}

// Writes the text to the file `output`, or prints it if the name is empty or -. Does nothing if the
// work failed. Returns the exit code.
int print_to(std::string const &output, cTargetOptions const &options, cReply const &reply);
