// `get`: the values at paths.

#include "child.h"
#include "commands.h"
#include "output.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/cexacttext.h"
#include "qrv/text/creadreport.h"
#include "reading.h"

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

// The value at the path, null when there is none; false when the path can't be read.
bool find(objref const &top, std::string const &path, objref &value, cMessages &messages) {
    cat::ReadReport report;
    value = top->getattrp(path);
    bool readable = true;
    for (cat::ReadError const &error : report.entries()) {
        if (error.code == 0x48000000u) continue; // a value without attributes: nothing is there
        messages.error("path '" + shortened(path) + "': " + error.text);
        readable = false;
    }
    if (!cObj::is_good(value)) value = nullptr;
    return readable;
}

void get_path(objref const &top, std::string const &path, cGetOptions const &options,
              cMessages &messages, cReply &reply) {
    objref value;
    if (!find(top, path, value, messages)) {
        reply.status = exit_failed;
    } else if (value) {
        reply.text += (options.text ? cat::as_text(value) : raw(value)) + "\n";
    } else if (options.has_default) {
        reply.text += options.default_value + "\n";
    } else {
        messages.error("nothing at path '" + shortened(path) + "'");
        reply.status = std::max(reply.status, static_cast<int>(exit_found));
    }
}

void get_values(cGetOptions const &options, cReply &reply) {
    cMessages messages(options.file, options.max_errors);
    std::string bytes;
    if (read_bytes(options.file, bytes, messages)) {
        cReading const reading = read_value(bytes, messages);
        if (reading.clean && reading.value) {
            std::optional<cat::ExactText> exact;
            if (!options.canonical) exact.emplace();
            reply.status = exit_done;
            for (std::string const &path : options.paths)
                get_path(reading.value, path, options, messages, reply);
        }
    }
    reply.messages = messages.text();
}

} // namespace

int run_get(cGetOptions const &options) {
    cReply const reply = in_child([&](cReply &r) { get_values(options, r); });
    put_lines(reply.messages);
    return put_result(reply.text) ? reply.status : exit_failed;
}
