// `get`: the values at paths, each a line or more.

#include "qrv/core/cobjd.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tools/qrv/commands/commands.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/process/worker.h"
#include "tools/qrv/reading/reading.h"
#include "tools/qrv/search/at_path.h"

#include <optional>

namespace {

// A string without quotes, a bool as a word, a float without its letter; all else as written.
std::string raw(objref const &value) {
    cTypeObj const &type = value->type();
    if (&type == &cat::type_bool())
        return static_cast<cObjDR<bool> const &>(*value).val() ? "true" : "false";
    std::string text = cat::as_string(value);
    if (&type == &cat::type_float()) text.pop_back();
    return text;
}

int get_path(objref const &top, std::string const &path, cGetOptions const &options,
             cMessages &messages, std::vector<std::string> &texts) {
    objref value;
    if (!find_at(top, path, value, messages)) return exit_failed;
    if (value) {
        texts.push_back(options.text ? cat::as_text(value) : raw(value));
    } else if (options.has_default) {
        texts.push_back(options.default_value);
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

void get_values(cGetOptions const &options, cReply &reply) {
    cMessages messages(options.file, options.max_errors);
    std::string bytes;
    if (read_bytes(options.file, bytes, messages)) {
        cReading const reading = read_value(bytes, messages);
        if (reading.clean) {
            std::optional<cat::ExactText> exact;
            if (!options.canonical) exact.emplace();
            std::vector<std::string> texts;
            reply.status = exit_done;
            for (std::string const &path : options.paths)
                reply.status =
                    std::max(reply.status, get_path(reading.value, path, options, messages, texts));
            reply.text = joined(texts, options.canonical);
        }
    }
    reply.messages = messages.text();
}

} // namespace

int run_get(cGetOptions const &options) {
    cReply const reply = in_child(options.file, [&](cReply &r) { get_values(options, r); });
    put_lines(reply.messages);
    return put_result(reply.text) ? reply.status : exit_failed;
}
