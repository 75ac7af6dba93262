// `from-json`: a JSON text as a file of the format. The new text is verified before it is printed:
// when it is read, it must write the same bytes and be the same JSON. The first tree is destroyed
// before the second is read, so that one tree and two texts are in memory.

#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/json/reading.h"
#include "tools/qrv/json/writing.h"
#include "tools/qrv/output/writing.h"
#include "tools/qrv/reading/reading.h"

#include <functional>
#include <optional>

namespace {

struct cOptions {
    std::string file = "-";
    std::string output; // a file, instead of standard output
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

// The hash of the value as JSON.
size_t json_hash(objref const &value, size_t room, cMessages &messages) {
    return std::hash<std::string>()(json_text(value, {.compact = true, .room = room}, messages));
}

struct cResult {
    std::string text;
    size_t json_size; // of the file that was read
    size_t json_hash;
};

std::string layout_of(objref const &value, size_t room, cMessages &messages) {
    return without_line_end_blanks(written(value, "", false, messages, room));
}

bool reads_back(cResult const &result, cMessages const &messages) {
    cMessages unheard(messages.name(), 1);
    cReading const again = read_value(result.text, unheard);
    if (!again.clean) return false;
    bool const same = layout_of(again.value, result.text.size(), unheard) == result.text;
    return same && json_hash(again.value, result.json_size, unheard) == result.json_hash;
}

std::optional<cResult> result_of(std::string &bytes, cJsonRules const &rules, cMessages &messages) {
    objref const value = read_json(bytes, rules, messages);
    if (!value) return std::nullopt;
    size_t const size = bytes.size();
    std::string().swap(bytes);
    return cResult{layout_of(value, 4 * size, messages), size, json_hash(value, size, messages)};
}

void convert(cJsonRules const &rules, std::string &bytes, cMessages &messages, cReply &reply) {
    std::optional<cResult> result = result_of(bytes, rules, messages);
    if (messages.count() == 0 && !reads_back(*result, messages))
        messages.error("not written: the new text would change when it is read and written again");
    reply.status = messages.count() == 0 ? exit_done : exit_failed;
    if (result) reply.text = std::move(result->text);
}

int run(cOptions const &options) {
    return print_to(options.output, options.target,
                    with_raw_bytes(options.file, options.max_errors,
                                   [&](std::string &bytes, cMessages &messages, cReply &reply) {
                                       convert(rules_of(options), bytes, messages, reply);
                                   }));
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
