// `where`: prints the position of the value at a path.

#include "qrv/text/read/csourcemap.h"
#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/output/exit_code.h"
#include "tools/qrv/search/at_path.h"

namespace {

constexpr char const *help =
    "The position is LINE:COLUMN of the value's first byte, both from 1, columns in bytes. For a\n"
    "key that is written several times it is that of the last value, and for a value that is\n"
    "referred to, that of the text of the value. The path / is the outermost value. The exit code\n"
    "is 1 if nothing is there.\n"
    "\n"
    "Example:\n"
    "  vi +$(qrv where device.attr bus/baud | cut -d: -f1) device.attr";

void locate(std::string const &path, std::string const &bytes, cMessages &messages, cReply &reply) {
    cat::SourceMap const map;
    cReading const reading = read_value(bytes, messages);
    objref value;
    if (!reading.clean || !find_at(reading.value, path, value, messages)) return;
    std::vector<cat::SourceEntry> const entries =
        map.spans(*reading.value, is_outermost(path) ? "" : path);
    reply.status = entries.empty() ? exit_found : exit_done;
    if (!value) return report_absent(path, messages);
    if (entries.empty())
        return messages.error("the value at path '" + shortened(path) +
                              "' is a default, which is not written in the file");
    reply.text = line_and_column(place_after({}, bytes, entries.back().value.begin)) + "\n";
}

void add_arguments(cArguments &arguments, cQuestion &question) {
    arguments.required("FILE", question.file, "the file");
    arguments.required("PATH", question.about, "keys with / between them");
    add_max_errors(arguments, question.max_errors);
}

cCommand const command(62, "where", "Print the position of a value", help,
                       define<cQuestion, add_arguments, answer<locate>>);

} // namespace
