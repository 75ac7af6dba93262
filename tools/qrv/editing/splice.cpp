#include "tools/qrv/editing/splice.h"

// The text is never trusted: it is read again, and its fingerprint must be that of the changed
// value.

#include "qrv/edit/cedit.h"
#include "tools/qrv/reading/reading.h"
#include "tools/qrv/verify/fingerprint.h"

#include <optional>

namespace {

// The two readings are apart: the types that the old text declares are unknown to the new one.
cReply changed_text(std::string const &bytes, cChange const &change, cMessages const &about) {
    return apart(about.name(), [&](cReply &reply) {
        cMessages messages(about.name(), about.limit());
        messages.source(bytes);
        std::optional<cat::SourceMap> map(std::in_place);
        cReading const reading = read_value(bytes, messages);
        std::string told;
        if (reading.clean) {
            qrv::edit::Edit edit(bytes, *map, reading.value);
            if (change({reading.value, bytes, *map, &edit}, told)) {
                reply.text = edit.text();
                reply.status = exit_done;
            }
        }
        map.reset(); // the fingerprint needs the memory
        reply.found = messages.findings();
        reply.messages = told;
        if (reply.status == exit_done) reply.image = image_of(reading.value);
    });
}

// Of the first value in the text; empty if that has errors.
std::string fingerprint_of(std::string const &text, std::string const &name) {
    cReply const reply = apart(name, [&](cReply &r) {
        cMessages unheard(name, 1);
        cReading const reading = read_value(text, unheard);
        if (reading.clean) r.image = image_of(reading.value);
    });
    return reply.image;
}

} // namespace

void splice(std::string const &bytes, cChange const &change, cMessages &messages, cReply &reply) {
    cReply const changed = changed_text(bytes, change, messages);
    messages.take(changed.found);
    reply.messages = changed.messages;
    if (changed.status != exit_done) return;
    reply.text = changed.text;
    if (changed.image != fingerprint_of(changed.text, messages.name()))
        return messages.error("this change can't be made in the text as it is; --reformat writes "
                              "the whole file anew");
    reply.status = exit_done;
}
