// The command line itself: help, version, and what can't be understood.

#include "tests/tool/tool_run.h"
#include "tools/qrv/output/exit_code.h"

#include <regex>

using tool_test::cRun;

namespace {

class ToolUsage : public tool_test::Tool {
  protected:
    // What a usage error tells; it is 2, and nothing is put out.
    std::string refused(std::vector<std::string> arguments) const {
        cRun const run = this->run(std::move(arguments));
        EXPECT_EQ(run.status, 2);
        EXPECT_EQ(run.out, "");
        return run.err;
    }
};

std::string with_hint(std::string const &text) {
    return text + "\nRun with --help for more information.\n";
}

TEST_F(ToolUsage, version) {
    EXPECT_EQ(run({"--version"}), (cRun{0, "Quorvanta v1.0.0\nby the Quorvanta developers\n", ""}));
}

TEST_F(ToolUsage, help_lists_the_commands_and_the_exit_codes) {
    cRun const help = run({"--help"});
    EXPECT_EQ(help,
              (cRun{0,
                    "Reads, checks and rewrites files of object trees.\n"
                    "Usage: qrv [OPTIONS] SUBCOMMAND\n"
                    "\n"
                    "Options:\n"
                    "  -h,--help                   Print this help message and exit\n"
                    "  --version                   Display program version information and exit\n"
                    "  --module NAME ...           load this module first, for the types that it "
                    "brings\n"
                    "\n"
                    "Subcommands:\n"
                    "  fmt                         Write the value of a file in standard layout\n"
                    "  set                         Set values at paths\n"
                    "  merge                       Merge the value of a file into another's\n"
                    "  get                         Print the values at paths\n"
                    "  find                        Print the values that a pattern finds\n"
                    "  explain                     Tell what is known of one value\n"
                    "  check                       Tell every error of a file\n"
                    "  tokens                      List the tokens of a file\n"
                    "  types                       List the types that are known\n"
                    "  from-json                   Write a JSON text as a file\n"
                    "  to-json                     Write the value of a file as JSON\n"
                    "\n"
                    "Exit codes: 0 done, found or clean; 1 absent, different or with findings; 2 "
                    "the work could\n"
                    "not be done. A file name of - is the standard input.\n"
                    "\n"
                    "--module may stand before or behind the command, and more than once. A NAME "
                    "without a slash\n"
                    "is searched in the folder 'modules' beside the program, then where the system "
                    "has its shared\n"
                    "objects, in the current folder and in its folder 'modules'. No file makes the "
                    "tool load one:\n"
                    "a type that nothing has brought is unknown, whatever its name.\n",
                    ""}));
    EXPECT_EQ(run({"-h"}), help);
}

TEST_F(ToolUsage, help_of_fmt) {
    EXPECT_EQ(run({"fmt", "--help"}),
              (cRun{0,
                    "Write the value of a file in standard layout\n"
                    "Usage: qrv fmt [OPTIONS] FILE...\n"
                    "\n"
                    "Positionals:\n"
                    "  FILE TEXT ... REQUIRED      files to write anew\n"
                    "\n"
                    "Options:\n"
                    "  -h,--help                   Print this help message and exit\n"
                    "  --check Excludes: --in-place\n"
                    "                              only tell what would change\n"
                    "  -i,--in-place Excludes: --check\n"
                    "                              replace the file\n"
                    "  --force Needs: --in-place   replace it even where something is lost\n"
                    "  --canonical                 the plain writer's bytes: six digits, no last "
                    "line feed\n"
                    "  --max-errors INT:INT in [1 - 1000000]=100\n"
                    "                              messages for one file at most\n"
                    "\n"
                    "Examples:\n"
                    "  qrv fmt device.attr            writes it to standard output\n"
                    "  qrv fmt --check *.attr         is everything in layout?\n"
                    "  qrv fmt -i device.attr         rewrites the file, comments kept\n"
                    "Comments that can't be kept, and text behind the first value, are told with\n"
                    "their place; -i then refuses unless --force is given.\n",
                    ""}));
}

TEST_F(ToolUsage, help_of_set) {
    EXPECT_EQ(
        run({"set", "--help"}),
        (cRun{
            0,
            "Set values at paths\n"
            "Usage: qrv set [OPTIONS] FILE STATEMENTS\n"
            "\n"
            "Positionals:\n"
            "  FILE TEXT REQUIRED          the file\n"
            "  STATEMENTS TEXT REQUIRED    paths, operators and values\n"
            "\n"
            "Options:\n"
            "  -h,--help                   Print this help message and exit\n"
            "  --no-create                 make no missing levels\n"
            "  --convert                   store numbers that must be changed to fit, as 1 for 1.9 "
            "in an int\n"
            "  -i,--in-place Excludes: --output\n"
            "                              replace the file\n"
            "  -o,--output TEXT Excludes: --in-place\n"
            "                              write to this file\n"
            "  --force                     write the file even where something is lost\n"
            "  --max-errors INT:INT in [1 - 1000000]=100\n"
            "                              messages for one file at most\n"
            "\n"
            "STATEMENTS are parted by ; or , and do, in order:\n"
            "  path = value    give what stands there a new value, or store it\n"
            "  path &= value   store it in the place of what stands there, whatever that is\n"
            "  path += value   add to a number or a text; to a map the keys that it lacks\n"
            "  path << value   append to a vector or a set\n"
            "A path is keys with / between them, a value is written as in a file: a text that is "
            "not\n"
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
            "int stands. Where one value stands at several paths, by #cRef, = changes it at all "
            "of\n"
            "them and &= at one. &= keeps the comment. No comments can be given in STATEMENTS.\n"
            "An error is told as statements:line:column. If there is one, nothing is written and "
            "the\n"
            "exit code is 2. A comment of the file that would be lost is told; -i and -o then "
            "write\n"
            "nothing unless --force is given.\n",
            ""}));
}

TEST_F(ToolUsage, help_of_merge) {
    EXPECT_EQ(
        run({"merge", "--help"}),
        (cRun{
            0,
            "Merge the value of a file into another's\n"
            "Usage: qrv merge [OPTIONS] TARGET SOURCE\n"
            "\n"
            "Positionals:\n"
            "  TARGET TEXT REQUIRED        the file that is merged into\n"
            "  SOURCE TEXT REQUIRED        the file that is merged\n"
            "\n"
            "Options:\n"
            "  -h,--help                   Print this help message and exit\n"
            "  --commands TEXT:LETTERS=-xx what to do with keys, three letters\n"
            "  --convert                   store numbers that must be changed to fit, as 1 for 1.9 "
            "in an int\n"
            "  -i,--in-place Excludes: --output\n"
            "                              replace the file\n"
            "  -o,--output TEXT Excludes: --in-place\n"
            "                              write to this file\n"
            "  --force                     write the file even where something is lost\n"
            "  --max-errors INT:INT in [1 - 1000000]=100\n"
            "                              messages for one file at most\n"
            "\n"
            "The letters are one each for keys that\n"
            "  only TARGET has   - stay   0 go\n"
            "  both have         a get SOURCE's value   s are replaced by SOURCE's value\n"
            "                    x are merged: maps by -xx, vectors and sets by appending, all "
            "else as a\n"
            "                    - stay   0 go\n"
            "  only SOURCE has   s come   x come; in vectors and sets they are appended   - don't\n"
            "and ? is the letter that TARGET's type has.\n"
            "\n"
            "Examples:\n"
            "  qrv merge device.attr site.attr                    # all of SOURCE, nothing goes\n"
            "  qrv merge --commands=-a- device.attr site.attr     # new values for known keys\n"
            "  qrv merge --commands=0ax device.attr site.attr     # exactly SOURCE's keys\n"
            "\n"
            "TARGET's comments stay; SOURCE's come with the keys that only it has, and with "
            "values\n"
            "that replace one without a comment. A number that would change is refused, as 1.9 "
            "where\n"
            "an int stands. If anything fails, nothing is written and the exit code is 2. A "
            "comment\n"
            "of TARGET that would be lost is told; -i and -o then write nothing unless --force is\n"
            "given.\n",
            ""}));
}

// Each is run by a shell, in a folder with the files that it names.
TEST_F(ToolUsage, examples_of_set_and_merge_work) {
    write_example("device.attr");
    write("site.attr", "{bus= {baud= 9600; }; site= Bonn; }");
    std::string const tool = test::binary_file("bin/qrv");
    int examples = 0;
    for (std::string const command : {"set", "merge"}) {
        std::istringstream help(run({command, "--help"}).out);
        for (std::string line; std::getline(help, line);) {
            if (line.rfind("  qrv " + command + " ", 0) != 0) continue;
            ++examples;
            std::string const shell =
                "( cd '" + folder_ + "'; '" + tool + "'" + line.substr(5) + "\n) >/dev/null 2>&1";
            int const status = std::system(shell.c_str());
            bool const loses_comments = line.find("--commands") != std::string::npos;
            EXPECT_EQ(WEXITSTATUS(status), loses_comments ? 1 : 0) << line;
        }
    }
    EXPECT_EQ(examples, 8);
}

TEST_F(ToolUsage, help_of_get) {
    EXPECT_EQ(run({"get", "--help"}),
              (cRun{0,
                    "Print the values at paths\n"
                    "Usage: qrv get [OPTIONS] FILE PATH...\n"
                    "\n"
                    "Positionals:\n"
                    "  FILE TEXT REQUIRED          the file\n"
                    "  PATH TEXT ... REQUIRED      keys with / between them\n"
                    "\n"
                    "Options:\n"
                    "  -h,--help                   Print this help message and exit\n"
                    "  --text                      print the written form, strings in quotes\n"
                    "  --default TEXT              printed for what is absent\n"
                    "  --canonical                 the plain writer's bytes: six digits, no last "
                    "line feed\n"
                    "  --max-errors INT:INT in [1 - 1000000]=100\n"
                    "                              messages for one file at most\n"
                    "\n"
                    "Examples:\n"
                    "  qrv get device.attr bus/baud            a number, as it stands\n"
                    "  qrv get device.attr limits sensors/0    containers as text\n"
                    "  qrv get --default 8 device.attr slots   8 if there is no such key\n",
                    ""}));
}

TEST_F(ToolUsage, help_of_find) {
    EXPECT_EQ(
        run({"find", "--help"}),
        (cRun{
            0,
            "Print the values that a pattern finds\n"
            "Usage: qrv find [OPTIONS] FILE PATTERN\n"
            "\n"
            "Positionals:\n"
            "  FILE TEXT REQUIRED          the file\n"
            "  PATTERN TEXT REQUIRED       what keys and texts are held against\n"
            "\n"
            "Options:\n"
            "  -h,--help                   Print this help message and exit\n"
            "  --first                     the first choice that works, not the longest\n"
            "  --max-errors INT:INT in [1 - 1000000]=100\n"
            "                              messages for one file at most\n"
            "\n"
            "Found is each entry whose key matches the whole pattern from end to end, or the text "
            "of\n"
            "its value: a string's characters, or what the file would hold. Indices of vectors "
            "and\n"
            "sets are no keys, and declarations of types are passed over.\n"
            "\n"
            "  ?         any character\n"
            "  *         any number of characters; at the end of a pattern write *? for one or "
            "more,\n"
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
            "for a file of one value and a path with a key that is no number and no string. A "
            "value\n"
            "that stands at several paths is looked at under the first of them. If nothing is\n"
            "found, the exit code is 1.\n",
            ""}));
}

TEST_F(ToolUsage, the_exit_codes_of_every_help_are_those_of_the_list) {
    std::string const done = std::to_string(exit_done), found = std::to_string(exit_found),
                      failed = std::to_string(exit_failed);
    EXPECT_NE(run({"--help"})
                  .out.find("Exit codes: " + done + " done, found or clean; " + found +
                            " absent, different or with findings; " + failed +
                            " the work could\nnot be done."),
              std::string::npos);
    std::string named;
    for (char const *command : {"fmt", "set", "merge", "get", "find", "explain", "check", "tokens",
                                "types", "from-json", "to-json"}) {
        std::string const help = run({command, "--help"}).out;
        std::regex const code(R"((?:exit\s+code is|it is|It is) (\d+))");
        for (std::sregex_iterator at(help.begin(), help.end(), code), end; at != end; ++at)
            named += std::string(command) + " " + (*at)[1].str() + "; ";
    }
    EXPECT_EQ(named, "set " + failed + "; merge " + failed + "; find " + found + "; to-json " +
                         done + "; to-json " + found + "; to-json " + failed + "; ");
}

TEST_F(ToolUsage, help_of_check) {
    EXPECT_EQ(run({"check", "--help"}),
              (cRun{0,
                    "Tell every error of a file\n"
                    "Usage: qrv check [OPTIONS] FILE...\n"
                    "\n"
                    "Positionals:\n"
                    "  FILE TEXT ... REQUIRED      files to check\n"
                    "\n"
                    "Options:\n"
                    "  -h,--help                   Print this help message and exit\n"
                    "  --max-errors INT:INT in [1 - 1000000]=100\n"
                    "                              messages for one file at most\n"
                    "\n"
                    "Example:\n"
                    "  qrv check *.attr\n",
                    ""}));
}

TEST_F(ToolUsage, help_of_tokens) {
    EXPECT_EQ(run({"tokens", "--help"}),
              (cRun{0,
                    "List the tokens of a file\n"
                    "Usage: qrv tokens [OPTIONS] FILE\n"
                    "\n"
                    "Positionals:\n"
                    "  FILE TEXT REQUIRED          the file\n"
                    "\n"
                    "Options:\n"
                    "  -h,--help                   Print this help message and exit\n"
                    "  --all                       comments and blanks too\n"
                    "  --max-errors INT:INT in [1 - 1000000]=100\n"
                    "                              messages for one file at most\n"
                    "\n"
                    "Example:\n"
                    "  qrv tokens --all device.attr\n"
                    "A line is TOKEN:code:position:line:column 'text'.\n",
                    ""}));
}

TEST_F(ToolUsage, help_of_from_json) {
    EXPECT_EQ(
        run({"from-json", "--help"}),
        (cRun{
            0,
            "Write a JSON text as a file\n"
            "Usage: qrv from-json [OPTIONS] [FILE]\n"
            "\n"
            "Positionals:\n"
            "  FILE TEXT=-                 the JSON text\n"
            "\n"
            "Options:\n"
            "  -h,--help                   Print this help message and exit\n"
            "  -o,--output TEXT            write to this file\n"
            "  --max-errors INT:INT in [1 - 1000000]=100\n"
            "                              messages for one file at most\n"
            "\n"
            "Examples:\n"
            "  qrv from-json data.json -o data.attr\n"
            "  qrv from-json <data.json | qrv get - items/0/name\n"
            "Objects become maps, arrays vectors, whole numbers int if they fit and double "
            "otherwise,\n"
            "null #nil. What can't be kept is an error with place and path, and nothing is "
            "written:\n"
            "a whole number that no double holds exactly, a key that stands twice in an object or\n"
            "begins with #, a character 0, nesting that is too deep to be read.\n",
            ""}));
}

TEST_F(ToolUsage, help_of_to_json) {
    EXPECT_EQ(
        run({"to-json", "--help"}),
        (cRun{
            0,
            "Write the value of a file as JSON\n"
            "Usage: qrv to-json [OPTIONS] [FILE]\n"
            "\n"
            "Positionals:\n"
            "  FILE TEXT=-                 the file\n"
            "\n"
            "Options:\n"
            "  -h,--help                   Print this help message and exit\n"
            "  -o,--output TEXT            write to this file\n"
            "  --indent INT:INT in [0 - 16]=2 Excludes: --compact\n"
            "                              columns for each level\n"
            "  --compact Excludes: --indent\n"
            "                              no blanks, all on one line\n"
            "  --strict                    write nothing if something is lost\n"
            "  --max-errors INT:INT in [1 - 1000000]=100\n"
            "                              messages for one file at most\n"
            "\n"
            "Examples:\n"
            "  qrv to-json device.attr -o device.json\n"
            "  qrv to-json --compact device.attr 2>/dev/null | jq .bus.baud\n"
            "Told as lost, on standard error:\n"
            "  a set                              becomes an array\n"
            "  a float                            a number, which is a double when it is read "
            "again\n"
            "  #true, #false                      true, false; #nil is null, and nothing is lost\n"
            "  an object of a declared type       an object of its attributes\n"
            "  other constants, objects, types    their text, as a string\n"
            "  a key that is no string            its text\n"
            "  a value that several places share  is written in full at each\n"
            "  comments, text behind the value    are left out\n"
            "The exit code is 0 all the same; with --strict it is 1. It is 2, and nothing is "
            "written,\n"
            "for a string that is no UTF-8, two keys with the same text, and sharing that would "
            "make\n"
            "the text many times longer than the file.\n",
            ""}));
}

TEST_F(ToolUsage, examples_of_from_json_and_to_json_work) {
    write("data.json", R"({"items": [{"name": "Ann"}]})");
    EXPECT_EQ(run({"from-json", "data.json", "-o", "data.attr"}), (cRun{0, "", ""}));
    EXPECT_EQ(run({"get", "data.attr", "items/0/name"}), (cRun{0, "Ann\n", ""}));
    write_example("device.attr");
    EXPECT_EQ(run({"to-json", "device.attr", "-o", "device.json"}).status, 0);
    cRun const compact = run({"to-json", "--compact", "device.attr"});
    EXPECT_EQ(compact.status, 0);
    EXPECT_NE(compact.out.find("\"baud\":115200,"), std::string::npos);
    EXPECT_EQ(run({"from-json", "device.json", "-o", "device.attr"}), (cRun{0, "", ""}));
    EXPECT_EQ(run({"to-json", "--compact", "--strict", "device.attr"}), (cRun{0, compact.out, ""}));
}

TEST_F(ToolUsage, help_of_types) {
    EXPECT_EQ(run({"types", "--help"}),
              (cRun{0,
                    "List the types that are known\n"
                    "Usage: qrv types [OPTIONS] [FILE]\n"
                    "\n"
                    "Positionals:\n"
                    "  FILE TEXT                   with those that this file declares\n"
                    "\n"
                    "Options:\n"
                    "  -h,--help                   Print this help message and exit\n"
                    "  --format TEXT:{text,json}=text\n"
                    "                              text or json\n"
                    "  --max-errors INT:INT in [1 - 1000000]=100\n"
                    "                              messages for one file at most\n"
                    "\n"
                    "Examples:\n"
                    "  qrv types shapes.attr                    and what each key must be\n"
                    "  qrv types --module ./colour              what a module brings\n"
                    "  qrv types --format=json shapes.attr | jq '.[].name'\n",
                    ""}));
}

TEST_F(ToolUsage, a_command_is_needed) {
    EXPECT_EQ(refused({}), with_hint("A subcommand is required"));
    EXPECT_EQ(refused({"frob"}), with_hint("A subcommand is required"));
}

TEST_F(ToolUsage, arguments_that_are_missing) {
    EXPECT_EQ(refused({"fmt"}), with_hint("FILE is required"));
    EXPECT_EQ(refused({"check"}), with_hint("FILE is required"));
    EXPECT_EQ(refused({"tokens"}), with_hint("FILE is required"));
    EXPECT_EQ(refused({"get"}), with_hint("FILE is required"));
    EXPECT_EQ(refused({"get", "f"}), with_hint("PATH is required"));
    EXPECT_EQ(refused({"get", "f", "a", "--default"}),
              with_hint("--default: 1 required TEXT missing"));
}

TEST_F(ToolUsage, arguments_that_nobody_knows) {
    EXPECT_EQ(refused({"fmt", "f", "--frob"}),
              with_hint("The following argument was not expected: --frob"));
    EXPECT_EQ(refused({"tokens", "f", "g"}),
              with_hint("The following argument was not expected: g"));
    EXPECT_EQ(refused({"check", "f", "-i"}),
              with_hint("The following argument was not expected: -i"));
    EXPECT_EQ(refused({"to-json", "f", "g"}),
              with_hint("The following argument was not expected: g"));
    EXPECT_EQ(refused({"from-json", "f", "--canonical"}),
              with_hint("The following argument was not expected: --canonical"));
}

TEST_F(ToolUsage, options_that_exclude_or_need_each_other) {
    EXPECT_EQ(refused({"fmt", "-i", "--check", "f"}), with_hint("--check excludes --in-place"));
    EXPECT_EQ(refused({"fmt", "--force", "f"}), with_hint("--force requires --in-place"));
    EXPECT_EQ(refused({"to-json", "--indent", "2", "--compact", "f"}),
              with_hint("--indent excludes --compact"));
}

TEST_F(ToolUsage, limits_of_the_indent) {
    for (std::string const value : {"17", "-1", "wide"})
        EXPECT_EQ(refused({"to-json", "--indent", value, "f"}),
                  with_hint("--indent: Value " + value + " not in range 0 to 16"));
    EXPECT_EQ(run_on("[\n1]", {"to-json", "--indent", "16"}),
              (cRun{0, "[\n                1\n]\n", ""}));
}

TEST_F(ToolUsage, limits_of_the_number_of_messages) {
    for (std::string const value : {"0", "1000001", "-1", "many"})
        EXPECT_EQ(refused({"check", "--max-errors", value, "f"}),
                  with_hint("--max-errors: Value " + value + " not in range 1 to 1000000"));
    EXPECT_EQ(run_on("1", {"check", "--max-errors", "1"}), (cRun{0, "", ""}));
    EXPECT_EQ(run_on("1", {"check", "--max-errors", "1000000"}), (cRun{0, "", ""}));
}

} // namespace
