// `from-json`: a JSON text as a file of the format. Before it is put out, what was written is read
// back: it must write the same bytes, and be the same value by its image. The first tree is gone
// when the second is read.

#include "tools/qrv/commands/commands.h"
#include "tools/qrv/json/reading.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/output/writing.h"
#include "tools/qrv/process/worker.h"
#include "tools/qrv/reading/reading.h"
#include "tools/qrv/verify/fingerprint.h"

#include <optional>

namespace {

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

std::optional<cResult> result_of(std::string const &name, cMessages &messages) {
    std::string bytes;
    if (!read_bytes(name, bytes, messages)) return std::nullopt;
    objref const value = read_json(bytes, messages);
    if (!value) return std::nullopt;
    return cResult(value, messages);
}

void convert(cFromJsonOptions const &options, cReply &reply) {
    cMessages messages(options.file, options.max_errors);
    std::optional<cResult> result = result_of(options.file, messages);
    if (messages.count() == 0 && !reads_back(*result, messages))
        messages.error("not written, for the new text doesn't read back the same");
    reply.status = messages.count() == 0 ? exit_done : exit_failed;
    reply.messages = messages.text();
    if (result) reply.text = std::move(result->text);
}

} // namespace

int run_from_json(cFromJsonOptions const &options) {
    cReply const reply = in_child(options.file, [&](cReply &r) { convert(options, r); });
    put_lines(reply.messages);
    return reply.status == exit_done ? put_out(options.output, reply.text) : reply.status;
}
