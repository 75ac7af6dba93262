#include "tools/qrv/commands/shared.h"

#include "tools/qrv/output/output.h"
#include "tools/qrv/output/writing.h"

void add_max_errors(cArguments &arguments, int &max_errors) {
    arguments.option("--max-errors", max_errors, {1, 1000000}, "messages for one file at most");
}

void add_canonical(cArguments &arguments, bool &canonical) {
    arguments.flag("--canonical", canonical,
                   "the plain writer's bytes: six digits, no last line feed");
}

void add_convert(cArguments &arguments, bool &convert) {
    arguments.flag("--convert", convert,
                   "store numbers that must be changed to fit, as 1 for 1.9 in an int");
}

void add_destination(cArguments &arguments, cWriteOptions &options) {
    arguments.flag("-i,--in-place", options.in_place, "replace the file");
    arguments.option("-o,--output", options.output, "write to this file");
    arguments.exclude("--output", "--in-place");
    arguments.flag("--force", options.force, "write the file even where something is lost");
    arguments.need("--force", "--in-place or --output", [&options] {
        return options.force && !options.in_place && options.output.empty();
    });
}

cReply with_bytes(std::string const &file, int max_errors, cBytesWork const &work) {
    cReply const reply = in_child(file, [&](cReply &r) {
        cMessages messages(file, max_errors);
        std::string bytes;
        if (read_bytes(file, bytes, messages)) work(bytes, messages, r);
        r.messages.insert(0, messages.text());
    });
    put_lines(reply.messages);
    return reply;
}

cReply with_value(std::string const &file, int max_errors, cValueWork const &work) {
    return with_bytes(file, max_errors,
                      [&](std::string const &bytes, cMessages &messages, cReply &reply) {
                          cReading const reading = read_value(bytes, messages);
                          if (reading.clean) work({reading.value, reading, bytes, messages}, reply);
                      });
}

int print(cReply const &reply) { return put_result(reply.text) ? reply.status : exit_failed; }

int print_to(std::string const &output, cReply const &reply) {
    return reply.status == exit_done ? put_out(output, reply.text) : reply.status;
}
