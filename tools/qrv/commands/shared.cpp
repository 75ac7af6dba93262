#include "tools/qrv/commands/shared.h"

#include "tools/qrv/output/output.h"

void add_max_errors(cArguments &arguments, int &max_errors) {
    arguments.option("--max-errors", max_errors, {1, 1000000},
                     "report at most this many errors, and as many warnings, for a file");
}

void add_canonical(cArguments &arguments, bool &canonical) {
    arguments.flag("--canonical", canonical,
                   "the library's own format: six digits, no final line feed");
}

void add_convert(cArguments &arguments, bool &convert) {
    arguments.flag("--convert", convert,
                   "store numbers even if they change, such as 1.9 as 1 in an int");
}

void add_diff(cArguments &arguments, bool &diff) {
    arguments.flag("--diff", diff, "print what changes, as a unified diff");
}

namespace {

std::string wrong_suffix(std::string const &suffix) {
    return suffix.find('/') == suffix.npos ? "" : "a suffix cannot contain a slash: " + suffix;
}

} // namespace

void add_target(cArguments &arguments, cTargetOptions &options, char const *what,
                std::function<bool()> const &writes_file) {
    arguments.flag("--backup", options.backup, "~", {"SUFFIX", wrong_suffix},
                   "preserve the old file as FILE~, or with the suffix of --backup=SUFFIX");
    arguments.flag("--no-wait", options.no_wait,
                   "do not wait up to 30 seconds for another process that writes there");
    arguments.need("--backup", what,
                   [&options, writes_file] { return !options.backup.empty() && !writes_file(); });
    arguments.need("--no-wait", what,
                   [&options, writes_file] { return options.no_wait && !writes_file(); });
}

void add_destination(cArguments &arguments, cWriteOptions &options) {
    arguments.flag("-i,--in-place", options.in_place, "replace the file");
    arguments.option("-o,--output=FILE", options.output, "write to this file");
    arguments.exclude("--output", "--in-place");
    arguments.flag("--force", options.force, "write the file even if data is lost");
    add_diff(arguments, options.diff);
    arguments.flag("--reformat", options.reformat, "write the whole file anew in standard layout");
    auto const writes_file = [&options] { return options.in_place || !options.output.empty(); };
    arguments.need("--force", "--in-place or --output",
                   [&options, writes_file] { return options.force && !writes_file(); });
    add_target(arguments, options.target, "--in-place or --output", writes_file);
}

cReply on_bytes(std::string const &file, int max_errors, cBytesWork const &work) {
    return apart(file, [&](cReply &reply) {
        cMessages messages(file, max_errors);
        std::string bytes;
        if (read_bytes(file, bytes, messages)) {
            cut_mark(bytes);
            messages.source(bytes);
            work(bytes, messages, reply);
        }
        reply.found = messages.findings();
    });
}

cReply with_bytes(std::string const &file, int max_errors, cBytesWork const &work) {
    cReply reply = on_bytes(file, max_errors, work);
    put_messages(reply);
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

int change_entries(std::string const &file, cWriteOptions const &options,
                   std::function<void(objref const &value, cMessages &messages)> const &change) {
    return rewrite(file, options, [&](cChanging const &changing, std::string &errors) {
        cMessages messages(file, options.max_errors);
        change(changing.value, messages);
        errors = messages.text();
        return messages.count() == 0;
    });
}

int print_to(std::string const &output, cTargetOptions const &options, cReply const &reply) {
    if (reply.status != exit_done) return reply.status;
    if (output.empty() || output == "-") return print(reply);
    return cTarget(output, options).replace(reply.text);
}
