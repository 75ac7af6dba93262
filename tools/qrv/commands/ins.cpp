// `ins`: inserts an entry before or after another one in the value of a file.

#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/editing/entries.h"
#include "tools/qrv/editing/statements.h"
#include "tools/qrv/output/exit_code.h"
#include "tools/qrv/output/output.h"

namespace {

struct cOptions : cWriteOptions {
    std::string file;
    std::string path;
    std::string where;
    std::vector<std::string> entry; // key and value, or a value
    bool convert = false;
};

constexpr char const *help =
    "PATH names an existing entry. KEY is the key of the new one; leave it out in vectors and\n"
    "sets. VALUE is written as in a file. The new entry is laid out like its neighbours and is\n"
    "written next to PATH: before it, that is above the comment that PATH has directly above it.\n"
    "An error in KEY or VALUE is reported as entry:line:column, its position in 'KEY = VALUE' or\n"
    "in ' = VALUE'. If there is one, nothing is written and the exit code is 2.\n"
    "\n"
    "Examples:\n"
    "  qrv ins device.attr bus/baud after parity even\n"
    "  qrv ins -i device.attr sensors/0 before '{id= T0; channel= 9}'";

// Reads "KEY = VALUE" as `set` does. False, with errors, if the text is not one entry.
bool read_entry(cOptions const &options, cNewEntry &entry, cMessages &messages) {
    bool const keyed = options.entry.size() == 2;
    std::string const text = (keyed ? options.entry[0] : "") + " = " + options.entry.back();
    std::string const statement = keyed ? text : 'x' + text;
    cNamedValues none;
    cStatements statements(statement, none, options.convert, messages);
    cStatement read, second;
    if (!statements.next(read) || statements.next(second) || messages.count() > 0) {
        if (messages.count() == 0) messages.error("one key and one value are needed");
        return false;
    }
    entry.after = options.where == "after";
    entry.value = read.value;
    if (!keyed) return true;
    std::vector<objref> const keys = keys_of(read.path, messages);
    if (keys.size() != 1 || read.operation != '=') {
        messages.error("KEY must be a single key");
        return false;
    }
    entry.key = keys[0];
    entry.value = declared(entry.value, entry.key);
    return true;
}

int run(cOptions const &options) {
    return rewrite(options.file, options, [&](cChanging const &file, std::string &errors) {
        cMessages about_entry("entry", options.max_errors),
            messages(options.file, options.max_errors);
        cNewEntry entry{};
        bool const good = read_entry(options, entry, about_entry) &&
                          insert_entry(file.value, options.path, entry, file.edit, messages);
        errors = about_entry.text() + messages.text();
        return good;
    });
}

std::string wrong_place(std::string const &word) {
    return word == "before" || word == "after" ? "" : "it must be before or after, not " + word;
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.required("FILE", options.file, "the file");
    arguments.required("PATH", options.path, "an entry that is there");
    arguments.required("before|after", options.where, {"", wrong_place}, "where the new one goes");
    arguments.required("[KEY] VALUE", options.entry, {1, 2}, "the new entry");
    add_convert(arguments, options.convert);
    add_destination(arguments, options);
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(26, "ins", "Insert an entry next to another one", help,
                       define<cOptions, add_arguments, run>);

} // namespace
