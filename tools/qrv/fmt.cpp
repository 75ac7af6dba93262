// `fmt`: the first value of a file in the writer's layout. Nothing is lost unseen:
//   1  the file is read and written in a child process; every comment that isn't in the new text
//      any more is told, and so is text behind the value and every value that can't be written
//   2  the child reads the new text and holds the value against the first one
//   3  another child reads the new text alone and writes it again: the bytes must be the same
// Only then the text is put out, or in the file's place. A loss is refused there unless forced;
// a text that doesn't come back the same is never written.

#include "child.h"
#include "commands.h"
#include "diff.h"
#include "output.h"
#include "qrv/diagnostics/ccout.h"
#include "qrv/diagnostics/cerr.h"
#include "qrv/platform/cplatform.h"
#include "qrv/text/cexacttext.h"
#include "reading.h"

#include <cerrno>
#include <optional>
#include <sstream>

namespace {

// What the writer can't write, told on the error route while this lives.
class cWriteErrors {
  public:
    explicit cWriteErrors(cMessages &messages)
        : before_(cat::errhandler()), messages_(messages), slot_(this, &cWriteErrors::take) {
        cat::errhandler() = cErrHandler(0, 0, 0xFFFFFFFFu);
        cat::sig_error().connect(slot_);
    }
    cWriteErrors(cWriteErrors const &) = delete;
    cWriteErrors &operator=(cWriteErrors const &) = delete;
    ~cWriteErrors() { cat::errhandler() = before_; }

  private:
    void take(cErr &error) { messages_.error(error.as_string()); }

    cErrHandler before_;
    cMessages &messages_;
    cSlot1<cWriteErrors, cErr &> slot_;
};

std::string written(cReading const &reading, bool canonical, cMessages &messages) {
    cWriteErrors const errors(messages);
    std::optional<cat::ExactText> exact;
    if (!canonical) exact.emplace();
    std::string text = canonical ? "" : reading.head;
    std::string value;
    cOstringstream os(value);
    reading.value->writeobj(os);
    os.flush();
    text += value;
    if (!canonical) text += '\n';
    return text;
}

std::vector<std::string> texts_of(std::vector<cComment> const &comments) {
    std::vector<std::string> texts;
    for (cComment const &comment : comments) texts.push_back(comment.text);
    return texts;
}

void tell_lost_comments(std::string const &before, std::string const &after, cMessages &messages) {
    std::vector<cComment> const comments = comments_of(before);
    std::vector<int> const kept = kept_in(texts_of(comments), texts_of(comments_of(after)));
    for (size_t i = 0; i < kept.size(); ++i)
        if (kept[i] < 0)
            messages.error(comments[i].place,
                           "this comment would be lost: " +
                               shortened(comments[i].text.substr(0, comments[i].text.find('\n'))));
}

// Step 2. Values whose types have no `equal` of their own are the reader's affair.
void tell_changed_value(objref const &value, std::string const &text, cMessages &messages) {
    cMessages again(messages.name(), 1);
    cReading const reading = read_value(text, again);
    if (!reading.value || !value->equal(reading.value))
        messages.error("the value would come back changed: digits, or strings that read as "
                       "something else");
}

// Steps 1 and 2. The reply: text, losses as messages, and in `extra` the text as it is now.
void format(std::string const &name, cFmtOptions const &options, cReply &reply) {
    cMessages messages(name, options.max_errors);
    if (read_bytes(name, reply.extra, messages)) {
        cReading const reading = read_value(reply.extra, messages);
        if (reading.clean && reading.value) {
            for (cPlace place : reading.behind)
                messages.error(place, "text behind the first value would be lost");
            reply.text = written(reading, options.canonical, messages);
            tell_lost_comments(reply.extra, reply.text, messages);
            tell_changed_value(reading.value, reply.text, messages);
            reply.status = messages.count() == 0 ? exit_done : exit_found;
        }
    }
    reply.messages = messages.text();
}

// Step 3.
bool comes_back(std::string const &name, std::string const &text, bool canonical) {
    cReply const reply = in_child([&](cReply &r) {
        cMessages messages(name, 1);
        cReading const reading = read_value(text, messages);
        if (reading.clean && reading.value) r.text = written(reading, canonical, messages);
        r.status = exit_done;
    });
    return reply.text == text;
}

std::vector<std::string> lines_of(std::string const &text) {
    std::vector<std::string> lines;
    std::istringstream is(text);
    for (std::string line; std::getline(is, line);) lines.push_back(line);
    return lines;
}

// Each stretch that differs: where it begins, the lines that go and the lines that come.
std::string changes(std::string const &name, std::string const &before, std::string const &after) {
    std::vector<std::string> const a = lines_of(before), b = lines_of(after);
    std::vector<int> const kept = kept_in(a, b);
    std::string told;
    size_t i = 0, j = 0;
    while (i < a.size() || j < b.size()) {
        size_t const line = i;
        std::string stretch;
        while (i < a.size() && kept[i] < 0) stretch += "- " + a[i++] + "\n";
        size_t const next = i < a.size() ? static_cast<size_t>(kept[i]) : b.size();
        while (j < next) stretch += "+ " + b[j++] + "\n";
        if (!stretch.empty())
            told += name + ":" + std::to_string(line + 1) + ": would change\n" + stretch;
        ++i, ++j;
    }
    if (told.empty()) told = name + ": would change: the line end of the last line\n";
    return told;
}

int replace(std::string const &name, std::string const &text, bool changed) {
    if (name == "-") return put_result(text) ? exit_done : exit_failed;
    if (!changed || cat::replace_file(name, text)) return exit_done;
    put_message(name + ": error: " + reason("cannot write", errno) + "; the file is as it was");
    return exit_failed;
}

int finish(std::string const &name, cReply const &reply, cFmtOptions const &options) {
    bool const changed = reply.text != reply.extra;
    if (options.check) {
        if (changed && !put_result(changes(name, reply.extra, reply.text))) return exit_failed;
        return changed ? exit_found : reply.status;
    }
    if (!options.in_place) return put_result(reply.text) ? reply.status : exit_failed;
    if (reply.status != exit_done && !options.force) {
        put_message(name + ": error: not written, for something would be lost; --force writes it");
        return exit_failed;
    }
    return replace(name, reply.text, changed);
}

int format_file(std::string const &name, cFmtOptions const &options) {
    cReply const reply = in_child([&](cReply &r) { format(name, options, r); });
    put_lines(reply.messages);
    if (reply.status == exit_failed) return exit_failed;
    bool const exact = !options.canonical || reply.status == exit_done;
    if (exact && !comes_back(name, reply.text, options.canonical)) {
        put_message(name + ": error: not written, for the new text doesn't read back the same");
        return exit_failed;
    }
    return finish(name, reply, options);
}

} // namespace

int run_fmt(cFmtOptions const &options) {
    int status = exit_done;
    for (std::string const &name : options.files)
        status = std::max(status, format_file(name, options));
    return status;
}
