#include "tools/qrv/output/writing.h"

#include "qrv/base/platform/cplatform.h"
#include "qrv/diagnostics/ccout.h"
#include "qrv/text/write/cexacttext.h"
#include "tools/qrv/output/exit_code.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/output/raised.h"

#include <cerrno>
#include <optional>

std::string written(objref const &value, std::string const &head, bool canonical,
                    cMessages &messages) {
    cRaisedErrors const unwritten(
        [&](cErr const &error) { messages.error(error.as_string(), error.code()); });
    std::optional<cat::ExactText> exact;
    if (!canonical) exact.emplace();
    std::string text;
    cOstringstream os(text);
    value->writeobj(os);
    os.flush();
    return canonical ? text : head + text + "\n";
}

int replace(std::string const &name, std::string const &text) {
    if (cat::replace_file(name, text)) return exit_done;
    put_message(name + ": error: " + reason("cannot write", errno) + "; the file is as it was");
    return exit_failed;
}

int put_out(std::string const &file, std::string const &text) {
    if (!file.empty()) return replace(file, text);
    return put_result(text) ? exit_done : exit_failed;
}
