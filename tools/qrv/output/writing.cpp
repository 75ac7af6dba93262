#include "tools/qrv/output/writing.h"

#include "qrv/text/write/cexacttext.h"
#include "tools/qrv/output/raised.h"

#include <optional>
#include <sstream>

std::string written(objref const &value, std::string const &head, bool canonical,
                    cMessages &messages, size_t room) {
    cRaisedErrors const unwritten(
        [&](cErr const &error) { messages.error(error.as_string(), error.code()); });
    std::optional<cat::ExactText> exact;
    if (!canonical) exact.emplace();
    // The writer composes text for this stream and remembers no paths of single objects.
    std::string text;
    text.reserve(room);
    if (!canonical) text = head;
    std::ostringstream os(std::move(text), std::ios_base::ate);
    value->writeobj(os);
    if (!canonical) os.put('\n');
    return std::move(os).str();
}
