// `from-json`: a JSON text as a file of the format. Before it is put out, what was written is read
// back: it must write the same bytes, and be the same value by its image. The first tree is gone
// when the second is read.

#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/json/reading.h"
#include "tools/qrv/output/writing.h"
#include "tools/qrv/reading/reading.h"
#include "tools/qrv/verify/fingerprint.h"

#include <optional>

namespace {

struct cOptions {
    std::string file = "-";
    std::string output; // a file, instead of standard output
    cTargetOptions target;
    int max_errors = default_max_errors;
};

constexpr char const *help =
    "Examples:\n"
    "  qrv from-json data.json -o data.attr\n"
    "  qrv from-json <data.json | qrv get - items/0/name\n"
    "Objects become maps, and arrays become vectors. A whole number becomes an int if it fits\n"
    "and a double otherwise. null becomes #nil. What a file cannot contain is an error with\n"
    "position and path, and nothing is written: a whole number that no double represents\n"
    "exactly, a key that occurs twice in an object or begins with #, a character 0, nesting\n"
    "that is too deep to be read.";

struct cResult {
    cResult(objref const &value, cMessages &messages)
        : text(written(value, "", false, messages)), image(image_of(value)) {}
    bool operator==(cResult const &) const = default;

    std::string text, image;
};

bool reads_back(cResult const &result, cMessages const &messages) {
    cMessages unheard(messages.name(), 1);
    cReading const again = read_value(result.text, unheard);
    return again.clean && cResult(again.value, unheard) == result;
}

std::optional<cResult> result_of(std::string const &bytes, cMessages &messages) {
    objref const value = read_json(bytes, messages);
    if (!value) return std::nullopt;
    return cResult(value, messages);
}

void convert(std::string const &bytes, cMessages &messages, cReply &reply) {
    std::optional<cResult> result = result_of(bytes, messages);
    if (messages.count() == 0 && !reads_back(*result, messages))
        messages.error("not written: the new text would change when it is read and written again");
    reply.status = messages.count() == 0 ? exit_done : exit_failed;
    if (result) reply.text = std::move(result->text);
}

int run(cOptions const &options) {
    return print_to(options.output, options.target,
                    with_bytes(options.file, options.max_errors, convert));
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.option("FILE", options.file, "the file with JSON");
    arguments.option("-o,--output=FILE", options.output, "write to this file");
    add_target(arguments, options.target, "--output",
               [&options] { return !options.output.empty(); });
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(100, "from-json", "Convert JSON to the file format", help,
                       define<cOptions, add_arguments, run>);

} // namespace
