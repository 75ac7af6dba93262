// `tokens`: the scanner's view of a file.

#include "tools/qrv/commands/commands.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/process/worker.h"
#include "tools/qrv/reading/reading.h"

int run_tokens(cTokensOptions const &options) {
    cReply const reply = in_child(options.file, [&](cReply &r) {
        cMessages messages(options.file, options.max_errors);
        std::string bytes;
        if (read_bytes(options.file, bytes, messages)) {
            r.text = dump_of(bytes, options.all);
            r.status = exit_done;
        }
        r.messages = messages.text();
    });
    put_lines(reply.messages);
    return put_result(reply.text) ? reply.status : exit_failed;
}
