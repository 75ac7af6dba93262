// `check`: reports every mistake with its position.

#include "qrv/text/read/csourcemap.h"
#include "tools/qrv/commands/command.h"
#include "tools/qrv/commands/shared.h"
#include "tools/qrv/output/message_line.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/output/report.h"
#include "tools/qrv/reading/reading.h"
#include "tools/qrv/rules/warnings.h"

namespace {

struct cOptions {
    std::vector<std::string> files;
    bool all = false;
    std::vector<std::string> warnings; // arguments of -W
    std::string format;                // the format of the report; no report if empty
    int max_errors = default_max_errors;
};

constexpr char const *help =
    "Each mistake is reported once, where it is, with a note where that helps. Errors that follow\n"
    "from it are counted.\n"
    "\n"
    "Examples:\n"
    "  qrv check *.attr\n"
    "  qrv check -W error -W no-leading-zero *.attr\n"
    "  qrv check --format=sarif *.attr >check.sarif\n"
    "Warnings do not change the exit code. They are duplicate-key, unknown-escape, leading-zero,\n"
    "wrapped-number, duplicate-member, empty-item, decimal-comma, mixed-brackets and\n"
    "comment-inside, and after -W strings also strings: words such as yes and null, which are\n"
    "strings. Of several -W about one warning the last one counts.\n"
    "With --format nothing else is printed: text is the messages as they are without it.";

std::string wrong_warning(std::string const &form) { return cWarningLevels().set(form); }

void check_file(std::string const &bytes, cWarningLevels const &levels, cMessages &messages,
                cReply &reply) {
    cat::SourceMap const map;
    cReading const reading = read_value(bytes, messages);
    report_text_after(bytes, reading, messages);
    add_warnings(bytes, map, levels, messages);
    messages.sort();
    if (!reading.empty) reply.status = messages.count() == 0 ? exit_done : exit_found;
}

int print_messages(cOptions const &options, cBytesWork const &check) {
    int status = exit_done;
    for (std::string const &name : options.files)
        status = std::max(status, with_bytes(name, options.max_errors, check).status);
    return status;
}

int print_report(cOptions const &options, cBytesWork const &check) {
    std::vector<cReport::cRule> const rules = warning_rules();
    cReport report(options.format, rules);
    auto const work = [&](std::string &bytes, cMessages &messages, cReply &reply) {
        check(bytes, messages, reply);
        reply.text = report.part(messages.findings(), bytes);
    };
    choose_colours("never"); // colours are for standard error, not for the report
    int status = exit_done;
    bool written = put_result(report.begin());
    for (std::string const &name : options.files) {
        cReply const reply = on_bytes(name, options.max_errors, work);
        status = std::max(status, reply.status);
        std::string const part = reply.text.empty() ? report.part(reply.found, "") : reply.text;
        written = written && put_result(report.next(part));
    }
    return written && put_result(report.end()) ? status : exit_failed;
}

int run(cOptions const &options) {
    cWarningLevels levels;
    for (std::string const &form : options.warnings) levels.set(form);
    auto const check = [&](std::string const &bytes, cMessages &messages, cReply &reply) {
        if (options.all) messages.show_all();
        check_file(bytes, levels, messages, reply);
    };
    return options.format.empty() ? print_messages(options, check) : print_report(options, check);
}

void add_arguments(cArguments &arguments, cOptions &options) {
    arguments.required("FILE", options.files, "the files");
    arguments.flag("--all", options.all, "report each error as the library does, without notes");
    arguments.repeated("-W", options.warnings, {"NAME", wrong_warning},
                       "switch a warning on (NAME) or off (no-NAME), or count it as an error "
                       "(error=NAME, or error for all)");
    arguments.option("--format", options.format, cReport::formats(),
                     "print a report on the standard output in this format");
    add_max_errors(arguments, options.max_errors);
}

cCommand const command(70, "check", "Report every error of a file", help,
                       define<cOptions, add_arguments, run>);

} // namespace
