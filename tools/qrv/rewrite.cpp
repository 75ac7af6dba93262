// The first value of a file in the writer's layout. Nothing is lost unseen:
//   1  the file is read, changed and written in a child process; every value that can't be written
//      is told, and a change that fails ends the work
//   2  if the new text differs, another child does the same with the file's comments numbered; each
//      one whose number doesn't come out is told; and so is text behind the value
//   3  the first child reads the new text and holds the value against the one that it wrote
//   4  another child reads the new text alone and writes it again: the bytes must be the same
// Only then the text is put out, or in the file's place. There a loss is refused unless forced, and
// what doesn't come back the same in step 4 in any case.

#include "rewrite.h"

#include "child.h"
#include "diff.h"
#include "output.h"
#include "qrv/diagnostics/ccout.h"
#include "qrv/platform/cplatform.h"
#include "qrv/text/cexacttext.h"
#include "raised.h"
#include "readback.h"
#include "reading.h"

#include <cerrno>
#include <optional>

namespace {

std::string written(cReading const &reading, bool canonical, cMessages &messages) {
    cRaisedErrors const unwritten(
        [&](cErr const &error) { messages.error(error.as_string(), error.code()); });
    std::optional<cat::ExactText> exact;
    if (!canonical) exact.emplace();
    std::string value;
    cOstringstream os(value);
    reading.value->writeobj(os);
    os.flush();
    return canonical ? value : reading.survey.head + value + "\n";
}

bool unchanged(cChanging const &, std::string &) { return true; }

// Reads a text, changes the value and writes it, in a process of its own. Status: is the reply's
// text the new one?
cReply rewritten(std::string const &name, std::string const &text, bool canonical,
                 cChange const &change, size_t first_number) {
    return in_child(name, [&](cReply &reply) {
        cMessages unheard(name, 1);
        cReading const reading = read_value(text, unheard);
        std::string told;
        if (!reading.clean || !change({reading.value, text, first_number}, told)) return;
        reply.text = written(reading, canonical, unheard);
        reply.status = exit_done;
    });
}

// Step 2. Texts of comments are not enough: equal ones occur, and a shared value's is written at
// each place of the value.
void tell_lost_comments(std::string const &bytes, std::vector<cComment> const &comments,
                        bool canonical, cChange const &change, cMessages &messages) {
    if (comments.empty()) return;
    cReply const reply = rewritten(messages.name(), numbered(bytes, comments, 0), canonical, change,
                                   comments.size());
    if (reply.status != exit_done) return messages.error("its comments could not be followed");
    std::set<size_t> const numbers = numbers_in(reply.text);
    for (size_t i = 0; i < comments.size(); ++i) {
        if (numbers.count(i)) continue;
        std::string const line = comments[i].text.substr(0, comments[i].text.find('\n'));
        messages.error(comments[i].place, "this comment would be lost: " + shortened(line));
    }
}

// Step 3.
void tell_changed_value(objref const &value, std::string const &text, cMessages &messages) {
    cMessages unheard(messages.name(), 1);
    cReading const again = read_value(text, unheard);
    if (!again.value || !same_value(value, again.value))
        messages.error("the value would come back changed: digits, or strings that read as "
                       "something else");
}

// Step 1 is done. All that is lost, as messages.
void tell_losses(cReading const &reading, cReply const &reply, bool canonical,
                 cChange const &change, cMessages &messages) {
    bool const all_written = messages.count() == 0;
    if (reply.text != reply.extra)
        tell_lost_comments(reply.extra, reading.survey.comments, canonical, change, messages);
    if (reading.behind)
        messages.error(*reading.behind, "text behind the first value would be lost");
    if (all_written) tell_changed_value(reading.value, reply.text, messages);
}

// Steps 1 to 3. The reply: text, losses as messages, and in `extra` the text as it is now.
void work(std::string const &name, cWriteOptions const &options, cChange const &change,
          cReply &reply) {
    cMessages messages(name, options.max_errors);
    std::string told;
    if (read_bytes(name, reply.extra, messages)) {
        cReading const reading = read_value(reply.extra, messages);
        if (reading.clean && change({reading.value, reply.extra, 0}, told)) {
            reply.text = written(reading, options.canonical, messages);
            tell_losses(reading, reply, options.canonical, change, messages);
            reply.status = messages.count() == 0 ? exit_done : exit_found;
        }
    }
    reply.messages = told + messages.text();
}

// Step 4.
bool comes_back(std::string const &name, std::string const &text, bool canonical) {
    cReply const reply = rewritten(name, text, canonical, unchanged, 0);
    return reply.status == exit_done && reply.text == text;
}

int refuse(std::string const &name, std::string const &why) {
    put_message(name + ": error: not written, for " + why);
    return exit_failed;
}

int replace(std::string const &name, cReply const &reply, cWriteOptions const &options) {
    if (reply.status != exit_done && !options.force)
        return refuse(name, "something would be lost; --force writes it");
    if (options.in_place && cat::file_exists(name) && !cat::is_regular(name))
        return refuse(name, "it is no plain file");
    if (options.in_place && reply.text == reply.extra) return exit_done;
    if (cat::replace_file(name, reply.text)) return exit_done;
    put_message(name + ": error: " + reason("cannot write", errno) + "; the file is as it was");
    return exit_failed;
}

int tell_changes(std::string const &name, cReply const &reply) {
    if (reply.text == reply.extra) return reply.status;
    return put_result(changes(name, reply.extra, reply.text)) ? exit_found : exit_failed;
}

} // namespace

int rewrite(std::string const &name, cWriteOptions const &options, cChange const &change) {
    if (options.in_place && name == "-") return refuse(name, "it is the standard input");
    cReply const reply =
        in_child(name, [&](cReply &r) { work(name, options, change ? change : unchanged, r); });
    put_lines(reply.messages);
    if (reply.status == exit_failed) return exit_failed;
    // The plain writer's bytes may not be readable: a loss that was told, but nothing to keep.
    bool const plain_output = options.canonical && !options.in_place;
    if (!plain_output && !comes_back(name, reply.text, options.canonical))
        return refuse(name, "the new text doesn't read back the same");
    if (options.check) return tell_changes(name, reply);
    if (options.in_place) return replace(name, reply, options);
    if (!options.output.empty()) return replace(options.output, reply, options);
    return put_result(reply.text) ? reply.status : exit_failed;
}
