#include "tools/qrv/output/writing.h"

#include "qrv/diagnostics/ccout.h"
#include "qrv/text/write/cexacttext.h"
#include "tools/qrv/output/raised.h"

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
