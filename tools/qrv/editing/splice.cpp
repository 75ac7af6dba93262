#include "tools/qrv/editing/splice.h"

// The text is never trusted: it is read again, and its fingerprint must be that of the changed
// value.

#include "qrv/edit/cedit.h"
#include "tools/qrv/reading/reading.h"
#include "tools/qrv/verify/fingerprint.h"

namespace {

// The fingerprint of the first value in the text; empty if it has errors. The types that the text
// declares are known to this process already, so another one reads it.
std::string fingerprint_of(std::string const &text, std::string const &name) {
    cReply const reply = in_child(name, [&](cReply &r) {
        cMessages unheard(name, 1);
        cReading const reading = read_value(text, unheard);
        if (reading.clean) r.image = image_of(reading.value);
    });
    return reply.image;
}

} // namespace

void splice(std::string const &bytes, cChange const &change, cMessages &messages, cReply &reply) {
    cat::SourceMap const map;
    cReading const reading = read_value(bytes, messages);
    if (!reading.clean) return;
    bool changed = false;
    std::string told;
    reply.text = qrv::edit::apply(bytes, map, reading.value, [&] {
        changed = change({reading.value, bytes, 0}, told);
    });
    reply.messages += told;
    if (!changed) return;
    std::string const wanted = image_of(reading.value);
    if (wanted != fingerprint_of(reply.text, messages.name()))
        return messages.error("this change can't be made in the text as it is; --reformat writes "
                              "the whole file anew");
    reply.status = exit_done;
}
