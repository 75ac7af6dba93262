// `get`: the values at paths, each a line or more.

#include "qrv/core/cobjd.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/reading/reading.h"
#include "tools/qrv/search/at_path.h"

#include <optional>

namespace {

struct cOptions {
    std::string file;
    std::vector<std::string> paths;
    bool text = false;
    std::optional<std::string> default_value;
    bool canonical = false;
    int max_errors = default_max_errors;
};

constexpr char const *help = "Examples:\n"
                             "  qrv get device.attr bus/baud            a number, as it stands\n"
                             "  qrv get device.attr limits sensors/0    containers as text\n"
                             "  qrv get --default 8 device.attr slots   8 if there is no such key";

// A string without quotes, a bool as a word, a float without its letter; all else as written.
std::string raw(objref const &value) {
    cTypeObj const &type = value->type();
    if (&type == &cat::type_bool())
        return static_cast<cObjDR<bool> const &>(*value).val() ? "true" : "false";
    std::string text = cat::as_string(value);
    if (&type == &cat::type_float()) text.pop_back();
    return text;
}

int get_path(objref const &top, std::string const &path, cOptions const &options,
             cMessages &messages, std::vector<std::string> &texts) {
    objref value;
    if (!find_at(top, path, value, messages)) return exit_failed;
    if (value) {
        texts.push_back(options.text ? cat::as_text(value) : raw(value));
    } else if (options.default_value) {
        texts.push_back(*options.default_value);
    } else {
        tell_absent(path, messages);
        return exit_found;
    }
    return exit_done;
}

std::string joined(std::vector<std::string> const &texts, bool canonical) {
    std::string all;
    for (std::string const &text : texts) all += text + "\n";
    if (canonical && !all.empty()) all.pop_back(); // the writer ends with no line feed
    return all;
}

void get_values(cOptions const &options, cRead const &file, cReply &reply) {
    std::optional<cat::ExactText> exact;
    if (!options.canonical) exact.emplace();
    std::vector<std::string> texts;
    reply.status = exit_done;
    for (std::string const &path : options.paths)
        reply.status =
            std::max(reply.status, get_path(file.value, path, options, file.messages, texts));
    reply.text = joined(texts, options.canonical);
}

int run(cOptions const &options) {
    return print(
        with_value(options.file, options.max_errors,
                   [&](cRead const &file, cReply &reply) { get_values(options, file, reply); }));
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.required("FILE", options.file, "the file");
    arguments.required("PATH", options.paths, "keys with / between them");
    arguments.flag("--text", options.text, "print the written form, strings in quotes");
    arguments.option("--default", options.default_value, "printed for what is absent");
    add_canonical(arguments, options.canonical);
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(40, "get", "Print the values at paths", help,
                       define<cOptions, add_arguments, run>);

} // namespace
