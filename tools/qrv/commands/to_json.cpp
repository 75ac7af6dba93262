// `to-json`: the first value of a file as JSON. Whatever JSON can't say is told: values by their
// paths, comments and text behind the value by their places.

#include "tools/qrv/commands/commands.h"
#include "tools/qrv/json/writing.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/output/writing.h"
#include "tools/qrv/process/worker.h"
#include "tools/qrv/reading/reading.h"

namespace {

void tell_lost_text(cReading const &reading, cMessages &messages) {
    for (cComment const &comment : reading.survey.comments)
        messages.warning(comment.place,
                         "this comment is lost: " +
                             shortened(comment.text.substr(0, comment.text.find('\n'))));
    if (reading.behind) messages.warning(*reading.behind, "text behind the first value is lost");
}

int status_of(cMessages const &messages, bool strict) {
    if (messages.count() > 0) return exit_failed;
    return strict && messages.warnings() > 0 ? exit_found : exit_done;
}

void convert(cToJsonOptions const &options, cReply &reply) {
    cMessages messages(options.file, options.max_errors);
    if (options.strict) messages.call_warnings("error");
    std::string bytes;
    if (read_bytes(options.file, bytes, messages)) {
        cReading const reading = read_value(bytes, messages);
        if (reading.clean) {
            size_t const longest = longest_text_from(bytes.size());
            reply.text =
                json_text(reading.value, {options.indent, options.compact, longest}, messages) +
                "\n";
            tell_lost_text(reading, messages);
        }
    }
    reply.status = status_of(messages, options.strict);
    reply.messages = messages.text();
}

} // namespace

int run_to_json(cToJsonOptions const &options) {
    cReply const reply = in_child(options.file, [&](cReply &r) { convert(options, r); });
    put_lines(reply.messages);
    return reply.status == exit_done ? put_out(options.output, reply.text) : reply.status;
}
