// `from-json`: converts JSON to a file of the format. Verifies all of the new text before writing
// any of it.

#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/json/reading.h"
#include "tools/qrv/output/no_memory.h"
#include "tools/qrv/output/output.h"

namespace {

struct cOptions {
    std::string file = "-";
    std::string output; // a file; standard output if empty
    cTargetOptions target;
    std::string big = "error";
    std::string duplicates = "error";
    int max_errors = default_max_errors;
};

constexpr char const *help =
    "Examples:\n"
    "  qrv from-json data.json -o data.attr\n"
    "  qrv from-json <data.json | qrv get - items/0/name\n"
    "  qrv from-json --big=string tickets.json -o tickets.attr\n"
    "Objects become maps, and arrays become vectors. A whole number becomes an int if it fits\n"
    "and a double otherwise. null becomes #nil. What a file cannot contain is an error with\n"
    "position and path, and nothing is written: a whole number that no double represents\n"
    "exactly, a key that occurs twice in an object, a character 0, nesting that is too deep to\n"
    "be read.\n"
    "With --big=double such a number is rounded; with --big=string its digits are stored as a\n"
    "string. With --duplicates=last a key has its last value, at the position of the first.";

cJsonRules rules_of(cOptions const &options) {
    using cBig = cJsonRules::cBig;
    return {options.big == "double"   ? cBig::nearest_double
            : options.big == "string" ? cBig::string
                                      : cBig::error,
            options.duplicates == "last"};
}

// Writes the text to the output file, or prints it if the name is empty or -.
int write(cJsonFile const &json, cOptions const &options) {
    if (options.output.empty() || options.output == "-")
        return json.write(put_result) ? exit_done : exit_failed;
    return cTarget(options.output, options.target).replace({json.size(), [&json](int descriptor) {
                                                                return json.write(
                                                                    [&](std::string_view piece) {
                                                                        return cat::write_all(
                                                                            descriptor, piece);
                                                                    });
                                                            }});
}

int run(cOptions const &options) {
    cWorkOn const about(options.file);
    cMessages messages(options.file, options.max_errors);
    std::string bytes;
    if (!read_bytes(options.file, bytes, messages)) {
        put_lines(messages.text());
        return exit_failed;
    }
    cJsonFile const json(bytes, rules_of(options), messages);
    put_lines(messages.text());
    return json.is_good() ? write(json, options) : exit_failed;
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.option("FILE", options.file, "the file with JSON");
    arguments.option("-o,--output=FILE", options.output, "write to this file");
    add_target(arguments, options.target, "--output",
               [&options] { return !options.output.empty(); });
    arguments.option("--big", options.big, {"error", "double", "string"},
                     "a whole number that fits neither int nor double becomes this");
    arguments.option("--duplicates", options.duplicates, {"error", "last"},
                     "for a key that occurs twice: an error, or the last value");
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(100, "from-json", "Convert JSON to the file format", help,
                       define<cOptions, add_arguments, run>);

} // namespace
