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
    // For a string stream, the writer does not record the path of each object.
    std::string text;
    text.reserve(room);
    if (!canonical) text = head;
    std::ostringstream os(std::move(text), std::ios_base::ate);
    value->writeobj(os);
    if (!canonical) os.put('\n');
    return std::move(os).str();
}

std::string without_line_end_blanks(std::string text) {
    size_t end = 0;
    bool quoted = false;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n' && !quoted)
            while (end > 0 && (text[end - 1] == ' ' || text[end - 1] == '\t')) --end;
        if (text[i] == '"') quoted = !quoted;
        bool const escapes = quoted && text[i] == '\\' && i + 1 < text.size();
        text[end++] = text[i];
        if (escapes) text[end++] = text[++i];
    }
    text.resize(end);
    return text;
}
