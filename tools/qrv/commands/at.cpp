// `at`: prints what is written at a position.

#include "qrv/text/read/csourcemap.h"
#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/output/exit_code.h"

#include <charconv>
#include <optional>

namespace {

constexpr char const *help =
    "Prints the path of the innermost entry at LINE:COLUMN, and the type of its value. Both count\n"
    "from 1, columns in bytes. The exit code is 1 if no entry is there.\n"
    "\n"
    "Example:\n"
    "  qrv at device.attr 12:7";

std::optional<cPlace> place_of(std::string const &text) {
    cPlace place;
    char const *const end = text.data() + text.size();
    auto const line = std::from_chars(text.data(), end, place.line);
    if (line.ec != std::errc() || line.ptr == end || *line.ptr != ':') return std::nullopt;
    auto const column = std::from_chars(line.ptr + 1, end, place.column);
    bool const whole = column.ec == std::errc() && column.ptr == end;
    return whole && place.line > 0 && place.column > 0 ? std::optional(place) : std::nullopt;
}

// The offset of a position; empty if the text has no such line, or the line no such column.
std::optional<std::uint32_t> offset_of(std::string const &bytes, cPlace place) {
    size_t begin = 0;
    for (unsigned line = 1; line < place.line; ++line) {
        begin = bytes.find('\n', begin);
        if (begin++ == bytes.npos) return std::nullopt;
    }
    size_t const end = std::min(bytes.find('\n', begin), bytes.size());
    if (place.column > end - begin + 1) return std::nullopt;
    return static_cast<std::uint32_t>(begin + place.column - 1);
}

void look(std::string const &position, std::string const &bytes, cMessages &messages,
          cReply &reply) {
    cPlace const place = *place_of(position);
    cat::SourceMap const map;
    cReading const reading = read_value(bytes, messages);
    if (!reading.clean) return;
    std::optional<std::uint32_t> const offset = offset_of(bytes, place);
    std::string const type = offset ? map.type_at(*offset) : "";
    reply.status = type.empty() ? exit_found : exit_done;
    if (!offset) return messages.error(place, "the file has no such position");
    if (type.empty()) return messages.error(place, "no entry is at this position");
    std::string const path = map.path_at(*offset);
    reply.text = "path      " + (path.empty() ? "/" : path) + "\ntype      " + type + "\n";
}

std::string wrong_position(std::string const &text) {
    return place_of(text) ? "" : "a position is LINE:COLUMN, both from 1, not " + text;
}

void add_arguments(cArguments &arguments, cQuestion &question) {
    arguments.required("FILE", question.file, "the file");
    arguments.required("LINE:COLUMN", question.about, {"", wrong_position}, "the position");
    add_max_errors(arguments, question.max_errors);
}

cCommand const command(64, "at", "Print the path at a position", help,
                       define<cQuestion, add_arguments, answer<look>>);

} // namespace
