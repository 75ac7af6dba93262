// The command line tool `qrv`: reads, checks and rewrites files of object trees. What it is asked
// for goes to standard output, what it has to say to standard error, and of a good file it says
// nothing.

#include "qrv/base/csignal.h"
#include "qrv/cvers.h"
#include "qrv/diagnostics/cconsole.h"
#include "tools/qrv/commands/commands.h"
#include "tools/qrv/output/output.h"
#include "tools/qrv/output/thrown.h"
#include "tools/qrv/process/modules.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <sstream>
#include <unistd.h>

namespace {

constexpr char const *footer =
    "Exit codes: 0 done, found or clean; 1 absent, different or with findings; 2 the work could\n"
    "not be done. A file name of - is the standard input.\n"
    "\n"
    "--module may stand before or behind the command, and more than once. A NAME without a slash\n"
    "is searched in the folder 'modules' beside the program, then where the system has its shared\n"
    "objects, in the current folder and in its folder 'modules'. No file makes the tool load one:\n"
    "a type that nothing has brought is unknown, whatever its name.";

void add_common(CLI::App &command, cCommon &common) {
    command.add_option("--max-errors", common.max_errors, "messages for one file at most")
        ->check(CLI::Range(1, 1000000))
        ->capture_default_str();
}

void add_canonical(CLI::App &command, cCommon &common) {
    command.add_flag("--canonical", common.canonical,
                     "the plain writer's bytes: six digits, no last line feed");
}

void add_fmt(CLI::App &app, cFmtOptions &options) {
    CLI::App &command = *app.add_subcommand("fmt", "Write the value of a file in standard layout");
    command.add_option("FILE", options.files, "files to write anew")->required();
    CLI::Option *const check =
        command.add_flag("--check", options.check, "only tell what would change");
    CLI::Option *const in_place =
        command.add_flag("-i,--in-place", options.in_place, "replace the file")->excludes(check);
    command.add_flag("--force", options.force, "replace it even where something is lost")
        ->needs(in_place);
    add_canonical(command, options);
    add_common(command, options);
    command.footer("Examples:\n"
                   "  qrv fmt device.attr            writes it to standard output\n"
                   "  qrv fmt --check *.attr         is everything in layout?\n"
                   "  qrv fmt -i device.attr         rewrites the file, comments kept\n"
                   "Comments that can't be kept, and text behind the first value, are told with\n"
                   "their place; -i then refuses unless --force is given.");
}

// To standard output, in the file's place, or into another file.
void add_destination(CLI::App &command, cWriteOptions &options) {
    CLI::Option *const in_place =
        command.add_flag("-i,--in-place", options.in_place, "replace the file");
    command.add_option("-o,--output", options.output, "write to this file")->excludes(in_place);
    command.add_flag("--force", options.force, "write the file even where something is lost");
    command.callback([&options] {
        if (options.force && !options.in_place && options.output.empty())
            throw CLI::RequiresError("--force", "--in-place or --output");
        if (options.output == "-") options.output.clear();
    });
}

// Empty if these are letters for `merge`.
std::string wrong_commands(std::string const &commands) {
    static constexpr char const *known[] = {"-0?", "-asx0?", "-sx?"};
    static constexpr char const *keys[] = {"only TARGET has", "both have", "only SOURCE has"};
    if (commands.size() != 3) return "three letters are needed, one for each class of keys";
    for (size_t i = 0; i < 3; ++i)
        if (std::string_view(known[i]).find(commands[i]) == std::string_view::npos)
            return "'" + commands.substr(i, 1) + "' is no letter for keys that " + keys[i] +
                   ", which are " + known[i];
    return "";
}

void add_set(CLI::App &app, cSetOptions &options) {
    CLI::App &command = *app.add_subcommand("set", "Set values at paths");
    command.add_option("FILE", options.file, "the file")->required();
    command.add_option("STATEMENTS", options.statements, "paths, operators and values")->required();
    command.add_flag_callback(
        "--no-create", [&options] { options.create = false; }, "make no missing levels");
    command.add_flag("--convert", options.convert,
                     "store numbers that must be changed to fit, as 1 for 1.9 in an int");
    add_destination(command, options);
    add_common(command, options);
    command.footer(
        "STATEMENTS are parted by ; or , and do, in order:\n"
        "  path = value    give what stands there a new value, or store it\n"
        "  path &= value   store it in the place of what stands there, whatever that is\n"
        "  path += value   add to a number or a text; to a map the keys that it lacks\n"
        "  path << value   append to a vector or a set\n"
        "A path is keys with / between them, a value is written as in a file: a text that is not\n"
        "a single word needs quotes, so it is best to have the whole in single quotes.\n"
        "\n"
        "Examples:\n"
        "  qrv set device.attr 'bus/baud = 9600; bus/parity = even'\n"
        "  qrv set -i device.attr 'location/room = \"0.15\"'      # in the file's place\n"
        "  qrv set -i device.attr 'installed &= #false'         # #true and #nil take no =\n"
        "  qrv set device.attr 'supply/phases << N; bus += {dialect= 2; retries= 5}'\n"
        "  qrv set -o new.attr device.attr 'spare/fan/type = axial'\n"
        "\n"
        "What was stored is read back. A number that would change is refused, as 1.9 where an\n"
        "int stands. Where one value stands at several paths, by #cRef, = changes it at all of\n"
        "them and &= at one. &= keeps the comment. No comments can be given in STATEMENTS.\n"
        "An error is told as statements:line:column. If there is one, nothing is written and the\n"
        "exit code is 2. A comment of the file that would be lost is told; -i and -o then write\n"
        "nothing unless --force is given.");
}

void add_merge(CLI::App &app, cMergeOptions &options) {
    CLI::App &command = *app.add_subcommand("merge", "Merge the value of a file into another's");
    command.add_option("TARGET", options.target, "the file that is merged into")->required();
    command.add_option("SOURCE", options.source, "the file that is merged")->required();
    command.add_option("--commands", options.commands, "what to do with keys, three letters")
        ->check(CLI::Validator(wrong_commands, "LETTERS"))
        ->capture_default_str();
    command.add_flag("--convert", options.convert,
                     "store numbers that must be changed to fit, as 1 for 1.9 in an int");
    add_destination(command, options);
    add_common(command, options);
    command.footer(
        "The letters are one each for keys that\n"
        "  only TARGET has   - stay   0 go\n"
        "  both have         a get SOURCE's value   s are replaced by SOURCE's value\n"
        "                    x are merged: maps by -xx, vectors and sets by appending, all else as "
        "a\n"
        "                    - stay   0 go\n"
        "  only SOURCE has   s come   x come; in vectors and sets they are appended   - don't\n"
        "and ? is the letter that TARGET's type has.\n"
        "\n"
        "Examples:\n"
        "  qrv merge device.attr site.attr                    # all of SOURCE, nothing goes\n"
        "  qrv merge --commands=-a- device.attr site.attr     # new values for known keys\n"
        "  qrv merge --commands=0ax device.attr site.attr     # exactly SOURCE's keys\n"
        "\n"
        "TARGET's comments stay; SOURCE's come with the keys that only it has, and with values\n"
        "that replace one without a comment. A number that would change is refused, as 1.9 where\n"
        "an int stands. If anything fails, nothing is written and the exit code is 2. A comment\n"
        "of TARGET that would be lost is told; -i and -o then write nothing unless --force is\n"
        "given.");
}

void add_get(CLI::App &app, cGetOptions &options) {
    CLI::App &command = *app.add_subcommand("get", "Print the values at paths");
    command.add_option("FILE", options.file, "the file")->required();
    command.add_option("PATH", options.paths, "keys with / between them")->required();
    command.add_flag("--text", options.text, "print the written form, strings in quotes");
    CLI::Option *const value =
        command.add_option("--default", options.default_value, "printed for what is absent");
    command.callback([&options, value] { options.has_default = value->count() > 0; });
    add_canonical(command, options);
    add_common(command, options);
    command.footer("Examples:\n"
                   "  qrv get device.attr bus/baud            a number, as it stands\n"
                   "  qrv get device.attr limits sensors/0    containers as text\n"
                   "  qrv get --default 8 device.attr slots   8 if there is no such key");
}

void add_find(CLI::App &app, cFindOptions &options) {
    CLI::App &command = *app.add_subcommand("find", "Print the values that a pattern finds");
    command.add_option("FILE", options.file, "the file")->required();
    command.add_option("PATTERN", options.pattern, "what keys and texts are held against")
        ->required();
    command.add_flag("--first", options.first, "the first choice that works, not the longest");
    add_common(command, options);
    command.footer(
        "Found is each entry whose key matches the whole pattern from end to end, or the text of\n"
        "its value: a string's characters, or what the file would hold. Indices of vectors and\n"
        "sets are no keys, and declarations of types are passed over.\n"
        "\n"
        "  ?         any character\n"
        "  *         any number of characters; at the end of a pattern write *? for one or more,\n"
        "            for there * never takes the last one\n"
        "  [a-z_]    one of these, [!a-z] any but these\n"
        "  {ab,c*d}  one of these patterns\n"
        "  \\x        the character x itself\n"
        "A * or { takes what leads to the longest match; with --first, the first that works.\n"
        "\n"
        "Examples:\n"
        "  qrv find device.attr humidity           keys and values, as they stand\n"
        "  qrv find device.attr '{*bus,*bus*?}'    whatever has bus in it\n"
        "  qrv find device.attr '[!-0-9]*[0-9]'    ends with a digit and is no number\n"
        "\n"
        "Each is printed as a statement that set takes, and so are all of them together, but\n"
        "for a file of one value and a path with a key that is no number and no string. A value\n"
        "that stands at several paths is looked at under the first of them. If nothing is\n"
        "found, the exit code is 1.");
}

void add_explain(CLI::App &app, cExplainOptions &options) {
    CLI::App &command = *app.add_subcommand("explain", "Tell what is known of one value");
    command.add_option("FILE", options.file, "the file")->required();
    command.add_option("PATH", options.path, "keys with / between them")->required();
    add_common(command, options);
    command.footer("Example:\n"
                   "  qrv explain device.attr sensors/0/calibration\n"
                   "Lines of a word and what it says, those that apply:\n"
                   "  path      the path, as a reference would have it\n"
                   "  type      its type, and where the file declares that\n"
                   "  name      the name of a type\n"
                   "  constant  the name, #nil or the like\n"
                   "  place     line:column in the file, of what was written there\n"
                   "  rule      what the type of the object that it belongs to asks of it\n"
                   "  default   what that type gives where there is none\n"
                   "  choice    what is chosen, and\n"
                   "  choices   from what\n"
                   "  entries   how many it has\n"
                   "  layout    whether these stand on one line or on many\n"
                   "  comment   its comment, a line each\n"
                   "  shared    another path to the same value, eight of them at most");
}

void add_check(CLI::App &app, cCheckOptions &options) {
    CLI::App &command = *app.add_subcommand("check", "Tell every error of a file");
    command.add_option("FILE", options.files, "files to check")->required();
    add_common(command, options);
    command.footer("Example:\n"
                   "  qrv check *.attr");
}

void add_tokens(CLI::App &app, cTokensOptions &options) {
    CLI::App &command = *app.add_subcommand("tokens", "List the tokens of a file");
    command.add_option("FILE", options.file, "the file")->required();
    command.add_flag("--all", options.all, "comments and blanks too");
    add_common(command, options);
    command.footer("Example:\n"
                   "  qrv tokens --all device.attr\n"
                   "A line is TOKEN:code:position:line:column 'text'.");
}

void add_types(CLI::App &app, cTypesOptions &options) {
    CLI::App &command = *app.add_subcommand("types", "List the types that are known");
    command.add_option("FILE", options.file, "with those that this file declares");
    command.add_option("--format", options.format, "text or json")
        ->check(CLI::IsMember({"text", "json"}))
        ->capture_default_str();
    add_common(command, options);
    command.footer("Examples:\n"
                   "  qrv types shapes.attr                    and what each key must be\n"
                   "  qrv types --module ./colour              what a module brings\n"
                   "  qrv types --format=json shapes.attr | jq '.[].name'");
}

void add_from_json(CLI::App &app, cFromJsonOptions &options) {
    CLI::App &command = *app.add_subcommand("from-json", "Write a JSON text as a file");
    command.add_option("FILE", options.file, "the JSON text")->capture_default_str();
    command.add_option("-o,--output", options.output, "write to this file");
    add_common(command, options);
    command.footer(
        "Examples:\n"
        "  qrv from-json data.json -o data.attr\n"
        "  qrv from-json <data.json | qrv get - items/0/name\n"
        "Objects become maps, arrays vectors, whole numbers int if they fit and double otherwise,\n"
        "null #nil. What can't be kept is an error with place and path, and nothing is written:\n"
        "a whole number that no double holds exactly, a key that stands twice in an object or\n"
        "begins with #, a character 0, nesting that is too deep to be read.");
}

void add_to_json(CLI::App &app, cToJsonOptions &options) {
    CLI::App &command = *app.add_subcommand("to-json", "Write the value of a file as JSON");
    command.add_option("FILE", options.file, "the file")->capture_default_str();
    command.add_option("-o,--output", options.output, "write to this file");
    CLI::Option *const indent =
        command.add_option("--indent", options.indent, "columns for each level")
            ->check(CLI::Range(0, 16))
            ->capture_default_str();
    command.add_flag("--compact", options.compact, "no blanks, all on one line")->excludes(indent);
    command.add_flag("--strict", options.strict, "write nothing if something is lost");
    add_common(command, options);
    command.footer(
        "Examples:\n"
        "  qrv to-json device.attr -o device.json\n"
        "  qrv to-json --compact device.attr 2>/dev/null | jq .bus.baud\n"
        "Told as lost, on standard error:\n"
        "  a set                              becomes an array\n"
        "  a float                            a number, which is a double when it is read again\n"
        "  #true, #false                      true, false; #nil is null, and nothing is lost\n"
        "  an object of a declared type       an object of its attributes\n"
        "  other constants, objects, types    their text, as a string\n"
        "  a key that is no string            its text\n"
        "  a value that several places share  is written in full at each\n"
        "  comments, text behind the value    are left out\n"
        "The exit code is 0 all the same; with --strict it is 1. It is 2, and nothing is written,\n"
        "for a string that is no UTF-8, two keys with the same text, and sharing that would make\n"
        "the text many times longer than the file.");
}

int run(int argc, char **argv) {
    CLI::App app("Reads, checks and rewrites files of object trees.", "qrv");
    app.set_version_flag("--version", std::string(QRV_VERSION_TEXT));
    app.require_subcommand(1);
    app.fallthrough(); // the options of all commands stand before or behind the command
    std::vector<std::string> modules;
    app.add_option("--module", modules, "load this module first, for the types that it brings")
        ->type_name("NAME")
        ->allow_extra_args(false);
    app.footer(footer);
    cFmtOptions fmt;
    cSetOptions set;
    cMergeOptions merge;
    cGetOptions get;
    cFindOptions find;
    cExplainOptions explain;
    cCheckOptions check;
    cTokensOptions tokens;
    cTypesOptions types;
    cFromJsonOptions from_json;
    cToJsonOptions to_json;
    add_fmt(app, fmt);
    add_set(app, set);
    add_merge(app, merge);
    add_get(app, get);
    add_find(app, find);
    add_explain(app, explain);
    add_check(app, check);
    add_tokens(app, tokens);
    add_types(app, types);
    add_from_json(app, from_json);
    add_to_json(app, to_json);
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const &error) {
        std::ostringstream out, err;
        int const status = app.exit(error, out, err);
        bool const written = put_result(out.str());
        put_lines(err.str());
        return status == 0 && written ? exit_done : exit_failed;
    }
    if (!load_modules(modules)) return exit_failed;
    if (app.got_subcommand("fmt")) return run_fmt(fmt);
    if (app.got_subcommand("set")) return run_set(set);
    if (app.got_subcommand("merge")) return run_merge(merge);
    if (app.got_subcommand("get")) return run_get(get);
    if (app.got_subcommand("find")) return run_find(find);
    if (app.got_subcommand("explain")) return run_explain(explain);
    if (app.got_subcommand("check")) return run_check(check);
    if (app.got_subcommand("types")) return run_types(types);
    if (app.got_subcommand("from-json")) return run_from_json(from_json);
    if (app.got_subcommand("to-json")) return run_to_json(to_json);
    return run_tokens(tokens);
}

} // namespace

int main(int argc, char **argv) {
    fill_standard_descriptors();
    std::signal(SIGPIPE, SIG_IGN); // a reader that has gone is an exit code
    sig_idle();                    // the start-up text goes where nobody listens
    cConsoleDisplay const messages(STDERR_FILENO);
    try {
        return run(argc, argv);
    } catch (...) {
        put_message("qrv: error: " + thrown());
        return exit_failed;
    }
}
