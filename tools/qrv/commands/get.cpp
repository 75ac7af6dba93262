// `get`: prints the values at paths, each on one line or more.

#include "qrv/core/cobjd.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/json/writing.h"
#include "tools/qrv/reading/reading.h"
#include "tools/qrv/search/at_path.h"
#include "tools/qrv/verify/mismatch.h"

#include <charconv>
#include <cmath>
#include <optional>

namespace {

struct cOptions {
    std::string file;
    std::vector<std::string> paths;
    bool text = false;
    bool raw = false; // the default form
    bool json = false;
    std::optional<std::string> default_value;
    bool canonical = false;
    int max_errors = default_max_errors;
};

constexpr char const *help =
    "The path / is the outermost value.\n"
    "\n"
    "Examples:\n"
    "  qrv get device.attr bus/baud            prints a number\n"
    "  qrv get device.attr limits sensors/0    prints containers as in a file\n"
    "  qrv get --default 8 device.attr slots   prints 8 if there is no such key";

// A whole number as text without exponent; empty for other numbers.
std::optional<std::string> text_if_whole(double value) {
    if (std::trunc(value) != value || !std::isfinite(value)) return {};
    char text[400]; // the largest double has 309 digits
    auto const end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed).ptr;
    return std::string(text, end) + '.';
}

// A string without quotes, a bool as a word, a float without its letter; other values as written.
std::string raw(objref const &value) {
    cTypeObj const &type = value->type();
    if (&type == &cat::type_bool())
        return static_cast<cObjDR<bool> const &>(*value).val() ? "true" : "false";
    std::string text = cat::as_string(value);
    if (&type == &cat::type_float()) text.pop_back();
    std::optional<double> const number = number_of(value);
    if (number && text.find('e') != text.npos) return text_if_whole(*number).value_or(text);
    return text;
}

std::string as_asked(objref const &value, cOptions const &options, cRead const &file) {
    if (options.json)
        return json_text(value, {.longest = longest_text_from(file.bytes.size())}, file.messages);
    return options.text ? cat::as_text(value) : raw(value);
}

int get_path(cRead const &file, std::string const &path, cOptions const &options,
             std::vector<std::string> &texts) {
    objref value;
    cMessages &messages = file.messages;
    if (!find_at(file.value, path, value, messages)) return exit_failed;
    if (value) {
        texts.push_back(as_asked(value, options, file));
    } else if (options.default_value) {
        texts.push_back(*options.default_value);
    } else {
        report_absent(path, messages);
        return exit_found;
    }
    return exit_done;
}

std::string joined(std::vector<std::string> const &texts, bool canonical) {
    std::string all;
    for (std::string const &text : texts) all += text + "\n";
    if (canonical && !all.empty()) all.pop_back(); // the writer ends without a line feed
    return all;
}

void get_values(cOptions const &options, cRead const &file, cReply &reply) {
    std::optional<cat::ExactText> exact;
    if (!options.canonical) exact.emplace();
    std::vector<std::string> texts;
    reply.status = exit_done;
    for (std::string const &path : options.paths)
        reply.status = std::max(reply.status, get_path(file, path, options, texts));
    if (file.messages.count() > 0 && options.json)
        reply.status = std::max<int>(reply.status, exit_found);
    reply.text = joined(texts, options.canonical);
}

int run(cOptions const &options) {
    return print(
        with_value(options.file, options.max_errors,
                   [&](cRead const &file, cReply &reply) { get_values(options, file, reply); }));
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.required("FILE", options.file, "the file");
    arguments.required("PATH", options.paths, "keys separated by /");
    arguments.flag("--raw", options.raw, "print strings without quotes (the default)");
    arguments.flag("--text", options.text, "print values as in a file, with quotes around strings");
    arguments.flag("--json", options.json, "print values as JSON");
    arguments.exclude("--raw", "--text");
    arguments.exclude("--raw", "--json");
    arguments.exclude("--text", "--json");
    arguments.option("--default", options.default_value, "print this for a path without a value");
    add_canonical(arguments, options.canonical);
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(40, "get", "Print the values at paths", help,
                       define<cOptions, add_arguments, run>);

} // namespace
