// `where`: prints the position of the value at a path.

#include "qrv/text/read/csourcemap.h"
#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/output/exit_code.h"
#include "tools/qrv/search/at_path.h"

namespace {

struct cOptions {
    std::string file;
    std::string path;
    int max_errors = default_max_errors;
};

constexpr char const *help =
    "The position is LINE:COLUMN of the value's first byte, both from 1, columns in bytes. For a\n"
    "key that is written several times it is that of the last value, and for a value that is\n"
    "referred to, that of the text of the value. The path / is the outermost value. The exit code\n"
    "is 1 if nothing is there.\n"
    "\n"
    "Example:\n"
    "  vi +$(qrv where device.attr bus/baud | cut -d: -f1) device.attr";

std::string position(std::string const &bytes, size_t offset) {
    cPlace const place = place_after({}, bytes, offset);
    return std::to_string(place.line) + ':' + std::to_string(place.column);
}

void locate(cOptions const &options, std::string const &bytes, cMessages &messages, cReply &reply) {
    cat::SourceMap const map;
    cReading const reading = read_value(bytes, messages);
    objref value;
    if (!reading.clean || !find_at(reading.value, options.path, value, messages)) return;
    std::vector<cat::SourceEntry> const entries =
        map.spans(*reading.value, is_outermost(options.path) ? "" : options.path);
    reply.status = entries.empty() ? exit_found : exit_done;
    if (!value) return report_absent(options.path, messages);
    if (entries.empty())
        return messages.error("the value at path '" + shortened(options.path) +
                              "' is a default, which is not written in the file");
    reply.text = position(bytes, entries.back().value.begin) + "\n";
}

int run(cOptions const &options) {
    return print(with_bytes(options.file, options.max_errors,
                            [&](std::string const &bytes, cMessages &messages, cReply &reply) {
                                locate(options, bytes, messages, reply);
                            }));
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.required("FILE", options.file, "the file");
    arguments.required("PATH", options.path, "keys with / between them");
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(62, "where", "Print the position of a value", help,
                       define<cOptions, add_arguments, run>);

} // namespace
