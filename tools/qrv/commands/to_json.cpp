// `to-json`: converts the first value of a file to JSON. Reports everything that JSON can't
// express: values by their paths, comments and text after the value by their positions.

#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/json/writing.h"
#include "tools/qrv/reading/reading.h"
#include "tools/qrv/reading/scan.h"

namespace {

struct cOptions {
    std::string file = "-";
    std::string output;
    cTargetOptions target;
    int indent = 2;
    bool compact = false;
    bool integers = false;
    bool strict = false; // treat lost data as an error
    int max_errors = default_max_errors;
};

constexpr char const *help =
    "Examples:\n"
    "  qrv to-json device.attr -o device.json\n"
    "  qrv to-json --compact device.attr 2>/dev/null | jq .bus.baud\n"
    "Reported as lost, on standard error:\n"
    "  a set                              becomes an array\n"
    "  a float                            becomes a number, which is read as a double\n"
    "  #true, #false                      become true, false; #nil becomes null, without a loss\n"
    "  an object of a declared type       becomes an object of its attributes\n"
    "  other constants, objects, types    become strings with their text\n"
    "  a non-string key                   becomes its text\n"
    "  a value that several paths share   is written in full at each of them\n"
    "  comments, text after the value     are left out\n"
    "The exit code is 0 all the same; with --strict it is 1. It is 2, and nothing is written,\n"
    "for a string that is not UTF-8, for two keys with the same text, and for sharing that\n"
    "would make the text many times longer than the file.";

// A quick test: scanning would store all tokens of the file, which a file without comments does not
// need.
bool may_have_comments(std::string const &bytes) {
    return bytes.find("//") != bytes.npos || bytes.find("/*") != bytes.npos;
}

void report_lost_text(cReading const &reading, std::string const &bytes, cMessages &messages) {
    cTextScan const found = may_have_comments(bytes) ? scan_of(bytes) : cTextScan();
    for (cComment const &comment : found.comments)
        messages.warning(comment.place,
                         "this comment is lost: " +
                             shortened(comment.text.substr(0, comment.text.find('\n'))));
    if (reading.after) messages.warning(*reading.after, "text after the first value is lost");
}

int status_of(cMessages const &messages, bool strict) {
    if (messages.count() > 0) return exit_failed;
    return strict && messages.warnings() > 0 ? exit_found : exit_done;
}

void convert(cOptions const &options, cRead const &file, cReply &reply) {
    if (options.strict) file.messages.warnings_are_errors();
    cJsonForm const form{options.indent, options.compact, options.integers,
                         longest_text_from(file.bytes.size())};
    reply.text = json_text(file.value, form, file.messages) + "\n";
    report_lost_text(file.reading, file.bytes, file.messages);
    reply.status = status_of(file.messages, options.strict);
}

int run(cOptions const &options) {
    return print_to(
        options.output, options.target,
        with_value(options.file, options.max_errors,
                   [&](cRead const &file, cReply &reply) { convert(options, file, reply); }));
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.option("FILE", options.file, "the file");
    arguments.option("-o,--output=FILE", options.output, "write to this file");
    add_target(arguments, options.target, "--output",
               [&options] { return !options.output.empty(); });
    arguments.option("--indent", options.indent, {0, 16}, "the columns of each level");
    arguments.flag("--compact", options.compact, "write no blanks and only one line");
    arguments.exclude("--compact", "--indent");
    arguments.flag("--integers", options.integers,
                   "write whole doubles below 2^53 without a point");
    arguments.flag("--strict", options.strict, "write nothing if data is lost");
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(110, "to-json", "Convert the value of a file to JSON", help,
                       define<cOptions, add_arguments, run>);

} // namespace
