// Writes the first value of a file in the writer's layout; splice.cpp replaces only the changed
// bytes. Each reading has a type scope, so that the types that one text declares are unknown to the
// next. No data is lost silently:
//   1  The file is read, changed and written, with marks in its comments. The messages are about
//      values that can't be written, comments whose mark was not written, and text after the value.
//      A change that fails runs once more without the marks, since its messages could show them;
//      then the work ends.
//   2  The new text is read. Its fingerprint must equal that of the written value, and writing it
//      again must produce the same bytes.
// `fmt` uses format.cpp for these steps, unless --canonical is given.
// Then the text is printed or replaces the file. A file is not replaced if data is lost, unless
// --force is given, nor if step 2 fails.

#include "tools/qrv/editing/rewrite.h"

#include "qrv/base/platform/cplatform.h"
#include "qrv/edit/cfingerprint.h"
#include "qrv/text/read/csourcemap.h"
#include "tools/qrv/editing/comment_marks.h"
#include "tools/qrv/editing/format.h"
#include "tools/qrv/editing/splice.h"
#include "tools/qrv/editing/type_order.h"
#include "tools/qrv/output/diff.h"
#include "tools/qrv/output/no_memory.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/output/writing.h"
#include "tools/qrv/process/apart.h"
#include "tools/qrv/reading/reading.h"
#include "tools/qrv/reading/scan.h"
#include "tools/qrv/rules/warnings.h"
#include "tools/qrv/verify/difference.h"

#include <filesystem>
#include <optional>

namespace {

bool unchanged(cChanging const &, std::string &) { return true; }

struct cTask {
    cWriteOptions const &options;
    cChange const &change;
    enum cWay : unsigned char { anew, spliced, formatted } way = anew;
    bool finds_lost = false; // report lost values of repeated keys, and lost escapes
};

// Reads the bytes, changes the value and writes it. The status is exit_done if the reply has the
// new text, and exit_found if the change failed while comments had marks.
void first_reading(std::string const &bytes, cTask const &task, bool marked, cMessages &messages,
                   cReply &reply) {
    cat::SourceMap const map;
    cReading const reading = read_value(bytes, messages);
    if (!reading.clean) return;
    std::optional<cTypeOrder> types;
    if (task.options.reformat) types.emplace(reading.value);
    std::optional<cCommentMarks> marks;
    if (marked && (reading.after || !map.comments().empty())) marks.emplace(bytes, map, reading);
    if (!task.change({reading.value, bytes, map, nullptr}, reply.messages)) {
        if (marks) reply.status = exit_found;
        return;
    }
    if (types && types->report_broken(reading.value, messages)) return;
    bool const canonical = task.options.canonical;
    reply.text = written(reading.value, head_of(bytes, map), canonical, messages);
    if (marks) reply.text = marks->removed_from(reply.text);
    if (messages.count() == 0) reply.fingerprint = qrv::edit::fingerprint(reading.value);
    if (task.finds_lost) add_lost_by_writing(bytes, map, messages);
    if (marks && reply.text != bytes) marks->report_lost(!canonical, messages);
    if (reading.after) messages.error(*reading.after, "text after the first value would be lost");
    reply.status = exit_done;
}

cReply changed(std::string const &bytes, cTask const &task, bool marked,
               cMessages const &messages) {
    return apart(messages.name(), [&](cReply &reply) {
        cMessages found(messages.name(), messages.limit());
        found.source(bytes);
        first_reading(bytes, task, marked, found, reply);
        reply.found = found.findings();
    });
}

// Step 1.
cReply changed(std::string const &bytes, cTask const &task, cMessages &messages) {
    cReply reply = changed(bytes, task, true, messages);
    bool const failed = reply.status == exit_found;
    if (failed) reply = changed(bytes, task, false, messages);
    messages.take(reply.found);
    if (failed && reply.status == exit_done) messages.error("cannot track its comments");
    return reply;
}

// Step 2. Returns whether writing the text again produces the same bytes.
bool verify(std::string const &text, std::string const &fingerprint, cWriteOptions const &options,
            cMessages &messages) {
    cReply const reply = apart(messages.name(), [&](cReply &r) {
        cMessages ignored(messages.name(), 1);
        cat::SourceMap const map;
        cReading const reading = read_value(text, ignored);
        if (!reading.clean) return;
        r.text = written(reading.value, head_of(text, map), options.canonical, ignored);
        if (ignored.count() == 0) r.fingerprint = qrv::edit::fingerprint(reading.value);
        r.status = exit_done;
    });
    bool const read = reply.status == exit_done;
    if (!fingerprint.empty() && (!read || reply.fingerprint != fingerprint))
        messages.error("the new text would not read as the same value: " +
                       what_differs(fingerprint, read ? reply.fingerprint : "", options.canonical));
    return read && reply.text == text;
}

// Both steps. The reply has the new text, lost data as messages, and the present text in `extra`.
void work(std::string const &name, cTask const &task, cReply &reply) {
    cMessages messages(name, task.options.max_errors);
    if (!read_bytes(name, reply.extra, messages)) {
        reply.found = messages.findings();
        return;
    }
    std::string const mark = cut_mark(reply.extra);
    messages.source(reply.extra);
    if (task.way == cTask::formatted) {
        format(reply.extra,
               {task.options.trailing_blanks, task.options.check, task.options.in_place}, messages,
               reply);
    } else if (task.way == cTask::spliced) {
        splice(reply.extra, task.change, messages, reply);
        reply.is_stable = reply.status == exit_done;
    } else {
        cReply const first = changed(reply.extra, task, messages);
        reply.messages = first.messages;
        if (first.status == exit_done) {
            reply.text = first.text;
            reply.is_stable = verify(reply.text, first.fingerprint, task.options, messages);
            reply.status = messages.count() == 0 ? exit_done : exit_found;
        }
    }
    reply.found = messages.findings();
    reply.extra.insert(0, mark);
    if (!task.options.canonical) reply.text.insert(0, mark);
}

int refuse(std::string const &name, std::string const &why) {
    put_error(name, "not written: " + why);
    return exit_failed;
}

int put_into(cTarget &target, cReply const &reply, cWriteOptions const &options,
             std::optional<std::string_view> expected) {
    std::string const &name = target.name();
    if (reply.status != exit_done && !options.force)
        return refuse(name, "data would be lost; --force writes the file anyway");
    if (options.in_place && cat::file_exists(name) && !cat::is_regular(name))
        return refuse(name, "it is not a regular file");
    if (options.in_place && reply.text == reply.extra) return exit_done;
    return target.replace(reply.text, expected);
}

// The file that is written, or "" for none.
std::string target_of(std::string const &name, cWriteOptions const &options) {
    if (options.in_place) return name;
    return options.output == "-" ? "" : options.output;
}

// Do both names mean the same file? Compares the paths first: if another process replaces the file
// between two queries of its number, one file would seem to be two.
bool is_same_file(std::string const &name, std::string const &other) {
    if (name == other) return true;
    std::error_code error;
    auto const path = std::filesystem::canonical(name, error);
    if (!error && path == std::filesystem::canonical(other, error) && !error) return true;
    return std::filesystem::equivalent(name, other, error);
}

int print_changes(std::string const &name, cReply const &reply, cWriteOptions const &options) {
    if (reply.text == reply.extra) return reply.status;
    std::string const text = options.diff ? unified_diff(name, reply.extra, reply.text)
                                          : changes(name, reply.extra, reply.text);
    return put_result(text) ? exit_found : exit_failed;
}

} // namespace

int rewrite(std::string const &name, cWriteOptions const &options, cChange const &change) {
    cWorkOn const about(name);
    if (options.in_place && name == "-") return refuse(name, "it is the standard input");
    cChange const made = change ? change : unchanged;
    cTask::cWay way = options.reformat || options.canonical ? cTask::anew : cTask::spliced;
    if (!change && !options.canonical) way = cTask::formatted;
    cTarget target(target_of(name, options), options.target);
    // If the command doesn't read the target, it locks the folder only while it writes: until then
    // its input may be a pipe from a process that needs the lock.
    bool const reads_target = !target.name().empty() && is_same_file(name, target.name());
    if (reads_target && !target.lock()) return exit_failed;
    cReply const reply = apart(name, [&](cReply &r) {
        work(name, {options, made, way, !change && options.in_place}, r);
    });
    put_messages(reply);
    if (reply.status == exit_failed) return exit_failed;
    // The plain writer's text may read as another value. That is reported, and no file is replaced.
    bool const plain_output = options.canonical && !options.in_place;
    if (!plain_output && !reply.is_stable)
        return refuse(name, "the new text would change when it is read and written again");
    bool const only_printed = options.check || (options.diff && target.name().empty());
    if (only_printed || options.diff) {
        int const status = print_changes(name, reply, options);
        if (only_printed || status == exit_failed) return status;
    }
    if (target.name().empty()) return put_result(reply.text) ? reply.status : exit_failed;
    return put_into(target, reply, options,
                    reads_target ? std::optional<std::string_view>(reply.extra) : std::nullopt);
}
