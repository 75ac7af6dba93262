#include "tools/qrv/editing/splice.h"

// The new text is read again, and its fingerprint must equal that of the changed value. If it
// doesn't, repeated keys may be the reason: the change is made again, and keys around it are
// written once.

#include "qrv/edit/cedit.h"
#include "qrv/edit/cfingerprint.h"
#include "tools/qrv/editing/type_order.h"
#include "tools/qrv/output/writing.h"
#include "tools/qrv/reading/reading.h"

#include <optional>

namespace {

using Repeated = qrv::edit::Edit::Repeated;

// Isolated, so that the types that the old text declares are unknown when the new text is read.
cReply changed_text(std::string const &bytes, cChange const &change, Repeated repeated,
                    cMessages const &about) {
    return apart(about.name(), [&](cReply &reply) {
        cMessages messages(about.name(), about.limit());
        messages.source(bytes);
        std::optional<cat::SourceMap> map(std::in_place);
        cReading const reading = read_value(bytes, messages);
        std::string errors;
        if (reading.clean) {
            qrv::edit::Edit edit(bytes, *map, reading.value);
            if (change({reading.value, bytes, *map, &edit}, errors)) {
                reply.text = edit.text(repeated);
                reply.status = exit_done;
            }
        }
        map.reset(); // the fingerprint needs the memory
        reply.found = messages.findings();
        reply.messages = errors;
        if (reply.status == exit_done) reply.fingerprint = qrv::edit::fingerprint(reading.value);
    });
}

// The fingerprint of the first value in the text; empty if the text has errors.
std::string fingerprint_of(std::string const &text, std::string const &name) {
    cReply const reply = apart(name, [&](cReply &r) {
        cMessages ignored(name, 1);
        cReading const reading = read_value(text, ignored);
        if (reading.clean) r.fingerprint = qrv::edit::fingerprint(reading.value);
    });
    return reply.fingerprint;
}

// Reports why the change can't be made, and what to do.
void report_why(std::string const &bytes, cChange const &change, std::string const &fingerprint,
                cMessages &messages) {
    cReply const reply = apart(messages.name(), [&](cReply &r) {
        cMessages found(messages.name(), messages.limit());
        cat::SourceMap const map;
        cReading const reading = read_value(bytes, found);
        cTypeOrder const types(reading.value);
        std::string ignored;
        change({reading.value, bytes, map, nullptr}, ignored);
        if (!types.report_broken(reading.value, found))
            r.text = written(reading.value, "", false, found);
        r.found = found.findings();
    });
    if (reply.text.empty()) return messages.take(reply.found);
    messages.error("this change can't be made in the text as it is");
    messages.note(no_place, fingerprint_of(reply.text, messages.name()) == fingerprint
                                ? "--reformat writes the whole file anew"
                                : "no text can be read as the changed value");
}

} // namespace

void splice(std::string const &bytes, cChange const &change, cMessages &messages, cReply &reply) {
    cReply changed;
    for (Repeated const repeated : {Repeated::each, Repeated::once}) {
        changed = changed_text(bytes, change, repeated, messages);
        if (repeated == Repeated::each) {
            messages.take(changed.found);
            reply.messages = changed.messages;
        }
        if (changed.status != exit_done) return;
        reply.text = changed.text;
        if (changed.fingerprint != fingerprint_of(changed.text, messages.name())) continue;
        reply.status = exit_done;
        return;
    }
    report_why(bytes, change, changed.fingerprint, messages);
}
