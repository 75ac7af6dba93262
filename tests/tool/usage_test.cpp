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
    EXPECT_EQ(
        help,
        (cRun{
            0,
            "Reads, checks and rewrites files of object trees.\n"
            "Usage: qrv [OPTIONS] SUBCOMMAND\n"
            "\n"
            "Options:\n"
            "  -h,--help                   Print this help message and exit\n"
            "  --version                   Display program version information and exit\n"
            "  --module NAME ...           load this module first, for the types that it defines\n"
            "\n"
            "Subcommands:\n"
            "  fmt                         Write the value of a file in standard layout\n"
            "  set                         Set values at paths\n"
            "  del                         Delete entries\n"
            "  mv                          Move or rename an entry\n"
            "  ins                         Insert an entry next to another one\n"
            "  merge                       Merge the value of a file into another's\n"
            "  get                         Print the values at paths\n"
            "  find                        Print the entries that match a pattern\n"
            "  explain                     Print what is known about one value\n"
            "  where                       Print the position of a value\n"
            "  at                          Print the path at a position\n"
            "  check                       Report every error of a file\n"
            "  tokens                      List the tokens of a file\n"
            "  types                       List the known types\n"
            "  from-json                   Convert JSON to the file format\n"
            "  to-json                     Convert the value of a file to JSON\n"
            "\n"
            "Exit codes: 0 done, found or clean; 1 absent, different or with findings; 2 the work\n"
            "could not be done. The file name - is the standard input.\n"
            "\n"
            "--module is accepted before and after the command, and more than once. A NAME without "
            "a\n"
            "slash is searched for in the folder 'modules' beside the program, then where the "
            "system\n"
            "has its shared objects, in the current folder and in its folder 'modules'. A file "
            "never\n"
            "makes the tool load a module. A type is unknown unless the tool, a loaded module or "
            "the\n"
            "file defines it.\n",
            ""}));
    EXPECT_EQ(run({"-h"}), help);
}

TEST_F(ToolUsage, help_of_fmt) {
    EXPECT_EQ(
        run({"fmt", "--help"}),
        (cRun{
            0,
            "Write the value of a file in standard layout\n"
            "Usage: qrv fmt [OPTIONS] FILE...\n"
            "\n"
            "Positionals:\n"
            "  FILE TEXT ... REQUIRED      the files\n"
            "\n"
            "Options:\n"
            "  -h,--help                   Print this help message and exit\n"
            "  --check Excludes: --in-place\n"
            "                              only report what would change\n"
            "  -i,--in-place Excludes: --check\n"
            "                              replace the file\n"
            "  --diff                      print what changes, as a unified diff\n"
            "  --force Needs: --in-place   replace the file even if data is lost\n"
            "  --backup{~}                 preserve the old file as FILE~, or with the suffix of "
            "--backup=SUFFIX\n"
            "  --no-wait                   do not wait up to 30 seconds for another process that "
            "writes there\n"
            "  --trailing-blanks Excludes: --canonical\n"
            "                              keep the blanks that the writer leaves at line ends\n"
            "  --canonical Excludes: --trailing-blanks\n"
            "                              the library's own format: six digits, no final line "
            "feed\n"
            "  --max-errors INT:INT in [1 - 1000000]=100\n"
            "                              report at most this many errors, and as many "
            "warnings, for a file\n"
            "\n"
            "Examples:\n"
            "  qrv fmt device.attr            prints the value in standard layout\n"
            "  qrv fmt --check *.attr         reports what is not in standard layout\n"
            "  qrv fmt -i device.attr         replaces the file\n"
            "fmt preserves all comments. It moves them with their entries and indents them again; "
            "a\n"
            "container on one line becomes many lines if a comment in it needs that. With "
            "--canonical\n"
            "some comments are lost. fmt reports those, and text after the first value, with "
            "their\n"
            "positions. Then -i does not replace the file unless --force is given. --check "
            "accepts blanks\n"
            "at line ends that the writer leaves there, such as those after the bracket in \"]; "
            "\".\n",
            ""}));
}

TEST_F(ToolUsage, help_of_set) {
    EXPECT_EQ(
        run({"set", "--help"}),
        (cRun{0,
              "Set values at paths\n"
              "Usage: qrv set [OPTIONS] FILE [STATEMENTS...]\n"
              "\n"
              "Positionals:\n"
              "  FILE TEXT REQUIRED          the file\n"
              "  STATEMENTS TEXT ...         paths, operators and values\n"
              "\n"
              "Options:\n"
              "  -h,--help                   Print this help message and exit\n"
              "  -e,--expression TEXT ...    more statements\n"
              "  -f,--file TEXT ...          a file of statements; - is standard input\n"
              "  --arg TEXT:NAME=VALUE ...   $NAME in statements is this string\n"
              "  --no-create                 do not create missing levels\n"
              "  --convert                   store numbers even if they change, such as 1.9 as 1 "
              "in an int\n"
              "  -i,--in-place Excludes: --output\n"
              "                              replace the file\n"
              "  -o,--output TEXT Excludes: --in-place\n"
              "                              write to this file\n"
              "  --force                     write the file even if data is lost\n"
              "  --diff                      print what changes, as a unified diff\n"
              "  --reformat                  write the whole file anew in standard layout\n"
              "  --backup{~}                 preserve the old file as FILE~, or with the suffix of "
              "--backup=SUFFIX\n"
              "  --no-wait                   do not wait up to 30 seconds for another process that "
              "writes there\n"
              "  --max-errors INT:INT in [1 - 1000000]=100\n"
              "                              report at most this many errors, and as many "
              "warnings, for a file\n"
              "\n"
              "Statements are separated by ; or , and run in order, those of --expression and "
              "--file last:\n"
              "  path = value    assign the value to what is there, or create an entry\n"
              "  path &= value   replace what is there, of whatever type, or create an entry\n"
              "  path += value   add to a number or a string; add to a map the keys that it lacks\n"
              "  path << value   append to a vector or a set\n"
              "A path is keys separated by /. A value is written as in a file. A string that is "
              "not a\n"
              "single word needs quotes, so it is best to put all STATEMENTS in single quotes.\n"
              "\n"
              "Examples:\n"
              "  qrv set device.attr 'bus/baud = 9600; bus/parity = even'\n"
              "  qrv set -i device.attr 'location/room = \"0.15\"'      # replaces the file\n"
              "  qrv set -i device.attr 'installed &= #false'         # #true and #nil need &=\n"
              "  qrv set device.attr 'supply/phases << N; bus += {dialect= 2; retries= 5}'\n"
              "  qrv set -o new.attr device.attr 'spare/fan/type = axial'\n"
              "\n"
              "set compares what it stored with what was given, and refuses a number that would "
              "change,\n"
              "such as 1.9 in an int. If several paths lead to one value, by #cRef, then = changes "
              "it\n"
              "at all of them and &= at one. &= preserves the comment. STATEMENTS cannot contain\n"
              "comments. Errors are reported as statements:line:column. After an error nothing is\n"
              "written and the exit code is 2.\n"
              "\n"
              "Only what changes is written: all other bytes of the file stay as they are. With "
              "--reformat\n"
              "set reports each comment that would be lost; then -i and -o need --force.\n"
              "\n"
              "In a script give strings by --arg. Whatever VALUE contains, $NAME is one string, "
              "also as a\n"
              "key. Inside quotes $NAME is plain text.\n"
              "  qrv set -i device.attr --arg \"room=$room\" 'location/room = $room'\n",
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
            "  TARGET TEXT REQUIRED        the file to merge into\n"
            "  SOURCE TEXT REQUIRED        the file to merge\n"
            "\n"
            "Options:\n"
            "  -h,--help                   Print this help message and exit\n"
            "  --commands TEXT:LETTERS=-xx what happens to keys: three letters\n"
            "  --convert                   store numbers even if they change, such as 1.9 as 1 in "
            "an int\n"
            "  -i,--in-place Excludes: --output\n"
            "                              replace the file\n"
            "  -o,--output TEXT Excludes: --in-place\n"
            "                              write to this file\n"
            "  --force                     write the file even if data is lost\n"
            "  --diff                      print what changes, as a unified diff\n"
            "  --reformat                  write the whole file anew in standard layout\n"
            "  --backup{~}                 preserve the old file as FILE~, or with the suffix of "
            "--backup=SUFFIX\n"
            "  --no-wait                   do not wait up to 30 seconds for another process that "
            "writes there\n"
            "  --max-errors INT:INT in [1 - 1000000]=100\n"
            "                              report at most this many errors, and as many warnings, "
            "for a file\n"
            "\n"
            "There is one letter for each class of keys:\n"
            "  only in TARGET   -  keep the value\n"
            "                   0  remove it\n"
            "  in both          a  assign SOURCE's value\n"
            "                   s  replace it by SOURCE's value\n"
            "                   x  merge: maps by -xx, vectors and sets by appending, all else "
            "like a\n"
            "                   -  keep the value\n"
            "                   0  remove it\n"
            "  only in SOURCE   s  store the value\n"
            "                   x  store it; append it to vectors and sets\n"
            "                   -  do not store it\n"
            "The letter ? stands for the letter that TARGET's type defines.\n"
            "\n"
            "Examples:\n"
            "  qrv merge device.attr site.attr                    # all of SOURCE; removes "
            "nothing\n"
            "  qrv merge --commands=-a- device.attr site.attr     # new values for existing keys\n"
            "  qrv merge --commands=0ax device.attr site.attr     # exactly SOURCE's keys\n"
            "\n"
            "merge preserves TARGET's comments. It copies SOURCE's comments with the keys that "
            "only\n"
            "SOURCE has, and with values that replace a value without a comment. It refuses a "
            "number\n"
            "that would change, such as 1.9 in an int. If anything fails, nothing is written and "
            "the\n"
            "exit code is 2. merge reports each comment of TARGET that would be lost. Then -i and "
            "-o\n"
            "write nothing unless --force is given.\n",
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
    EXPECT_EQ(examples, 9);
}

TEST_F(ToolUsage, help_of_get) {
    EXPECT_EQ(
        run({"get", "--help"}),
        (cRun{
            0,
            "Print the values at paths\n"
            "Usage: qrv get [OPTIONS] FILE PATH...\n"
            "\n"
            "Positionals:\n"
            "  FILE TEXT REQUIRED          the file\n"
            "  PATH TEXT ... REQUIRED      keys separated by /\n"
            "\n"
            "Options:\n"
            "  -h,--help                   Print this help message and exit\n"
            "  --raw Excludes: --text --json\n"
            "                              print strings without quotes (the default)\n"
            "  --text Excludes: --raw --json\n"
            "                              print values as in a file, with quotes around strings\n"
            "  --json Excludes: --raw --text\n"
            "                              print values as JSON\n"
            "  --default TEXT              print this for a path without a value\n"
            "  --canonical                 the library's own format: six digits, no final line "
            "feed\n"
            "  --max-errors INT:INT in [1 - 1000000]=100\n"
            "                              report at most this many errors, and as many warnings, "
            "for a file\n"
            "\n"
            "Examples:\n"
            "  qrv get device.attr bus/baud            prints a number\n"
            "  qrv get device.attr limits sensors/0    prints containers as in a file\n"
            "  qrv get --default 8 device.attr slots   prints 8 if there is no such key\n",
            ""}));
}

TEST_F(ToolUsage, help_of_find) {
    EXPECT_EQ(
        run({"find", "--help"}),
        (cRun{
            0,
            "Print the entries that match a pattern\n"
            "Usage: qrv find [OPTIONS] FILE PATTERN\n"
            "\n"
            "Positionals:\n"
            "  FILE TEXT REQUIRED          the file\n"
            "  PATTERN TEXT REQUIRED       compared with keys and values\n"
            "\n"
            "Options:\n"
            "  -h,--help                   Print this help message and exit\n"
            "  --first                     use the first match, not the longest\n"
            "  --max-errors INT:INT in [1 - 1000000]=100\n"
            "                              report at most this many errors, and as many warnings, "
            "for a file\n"
            "\n"
            "find prints each entry whose key matches the whole pattern, or whose value does. The\n"
            "text of a value is the characters of a string, and what a file would contain for any\n"
            "other value. Indices of vectors and sets are not keys. find skips declarations of "
            "types.\n"
            "\n"
            "  ?         any character\n"
            "  *         any number of characters; at the end of a pattern write *? for one or "
            "more,\n"
            "            because a * there never matches the last character\n"
            "  [a-z_]    one of these characters, [!a-z] any but these\n"
            "  {ab,c*d}  one of these patterns\n"
            "  \\x        the character x itself\n"
            "A * or { chooses what leads to the longest match, or with --first to the first "
            "match.\n"
            "\n"
            "Examples:\n"
            "  qrv find device.attr humidity           is humidity\n"
            "  qrv find device.attr '{*bus,*bus*?}'    contains bus\n"
            "  qrv find device.attr '[!-0-9]*[0-9]'    ends with a digit and is not a number\n"
            "\n"
            "find prints each entry as a statement for set. set accepts all of them together, "
            "except\n"
            "for a file of one value and a path with a key that is neither a number nor a string. "
            "If\n"
            "several paths lead to a value, find examines it at the first of them. If nothing is\n"
            "found, the exit code is 1.\n",
            ""}));
}

TEST_F(ToolUsage, help_of_explain) {
    EXPECT_EQ(run({"explain", "--help"}),
              (cRun{0,
                    "Print what is known about one value\n"
                    "Usage: qrv explain [OPTIONS] FILE PATH\n"
                    "\n"
                    "Positionals:\n"
                    "  FILE TEXT REQUIRED          the file\n"
                    "  PATH TEXT REQUIRED          keys separated by /\n"
                    "\n"
                    "Options:\n"
                    "  -h,--help                   Print this help message and exit\n"
                    "  --max-errors INT:INT in [1 - 1000000]=100\n"
                    "                              report at most this many errors, and as many "
                    "warnings, for a file\n"
                    "\n"
                    "Example:\n"
                    "  qrv explain device.attr sensors/0/calibration\n"
                    "explain prints a line for each of these that applies:\n"
                    "  path      the path, as in a reference\n"
                    "  type      its type, and where the file declares that type\n"
                    "  name      the name of a type\n"
                    "  constant  the name of a constant, such as #nil\n"
                    "  place     line:column of what the file contains for the value\n"
                    "  rule      what the type of the containing object requires\n"
                    "  default   the default of that rule\n"
                    "  choice    the choice of a choice value\n"
                    "  choices   the choices of its type\n"
                    "  entries   the number of entries\n"
                    "  layout    whether the entries are written on one line or on many\n"
                    "  comment   a line of its comment\n"
                    "  shared    another path to the same value, at most eight of them\n",
                    ""}));
}

TEST_F(ToolUsage, the_exit_codes_of_every_help_are_those_of_the_list) {
    std::string const done = std::to_string(exit_done), found = std::to_string(exit_found),
                      failed = std::to_string(exit_failed);
    EXPECT_NE(run({"--help"})
                  .out.find("Exit codes: " + done + " done, found or clean; " + found +
                            " absent, different or with findings; " + failed +
                            " the work\ncould not be done."),
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
                    "Report every error of a file\n"
                    "Usage: qrv check [OPTIONS] FILE...\n"
                    "\n"
                    "Positionals:\n"
                    "  FILE TEXT ... REQUIRED      the files\n"
                    "\n"
                    "Options:\n"
                    "  -h,--help                   Print this help message and exit\n"
                    "  --max-errors INT:INT in [1 - 1000000]=100\n"
                    "                              report at most this many errors, and as many "
                    "warnings, for a file\n"
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
                    "  --all                       list comments and blanks, too\n"
                    "  --max-errors INT:INT in [1 - 1000000]=100\n"
                    "                              report at most this many errors, and as many "
                    "warnings, for a file\n"
                    "\n"
                    "Example:\n"
                    "  qrv tokens --all device.attr\n"
                    "Each line is TOKEN:code:position:line:column 'text'.\n",
                    ""}));
}

TEST_F(ToolUsage, help_of_from_json) {
    EXPECT_EQ(
        run({"from-json", "--help"}),
        (cRun{
            0,
            "Convert JSON to the file format\n"
            "Usage: qrv from-json [OPTIONS] [FILE]\n"
            "\n"
            "Positionals:\n"
            "  FILE TEXT=-                 the file with JSON\n"
            "\n"
            "Options:\n"
            "  -h,--help                   Print this help message and exit\n"
            "  -o,--output TEXT            write to this file\n"
            "  --backup{~}                 preserve the old file as FILE~, or with the suffix of "
            "--backup=SUFFIX\n"
            "  --no-wait                   do not wait up to 30 seconds for another process that "
            "writes there\n"
            "  --big TEXT:{error,double,string}=error\n"
            "                              a whole number that fits neither int nor double becomes "
            "this\n"
            "  --duplicates TEXT:{error,last}=error\n"
            "                              for a key that occurs twice: an error, or the last "
            "value\n"
            "  --max-errors INT:INT in [1 - 1000000]=100\n"
            "                              report at most this many errors, and as many warnings, "
            "for a file\n"
            "\n"
            "Examples:\n"
            "  qrv from-json data.json -o data.attr\n"
            "  qrv from-json <data.json | qrv get - items/0/name\n"
            "  qrv from-json --big=string tickets.json -o tickets.attr\n"
            "Objects become maps, and arrays become vectors. A whole number becomes an int if it "
            "fits\n"
            "and a double otherwise. null becomes #nil. What a file cannot contain is an error "
            "with\n"
            "position and path, and nothing is written: a whole number that no double represents\n"
            "exactly, a key that occurs twice in an object, a character 0, nesting that is too "
            "deep to\n"
            "be read.\n"
            "With --big=double such a number is rounded; with --big=string its digits are stored "
            "as a\n"
            "string. With --duplicates=last a key has its last value, at the position of the "
            "first.\n",
            ""}));
}

TEST_F(ToolUsage, help_of_to_json) {
    EXPECT_EQ(
        run({"to-json", "--help"}),
        (cRun{0,
              "Convert the value of a file to JSON\n"
              "Usage: qrv to-json [OPTIONS] [FILE]\n"
              "\n"
              "Positionals:\n"
              "  FILE TEXT=-                 the file\n"
              "\n"
              "Options:\n"
              "  -h,--help                   Print this help message and exit\n"
              "  -o,--output TEXT            write to this file\n"
              "  --backup{~}                 preserve the old file as FILE~, or with the suffix of "
              "--backup=SUFFIX\n"
              "  --no-wait                   do not wait up to 30 seconds for another process that "
              "writes there\n"
              "  --indent INT:INT in [0 - 16]=2 Excludes: --compact\n"
              "                              the columns of each level\n"
              "  --compact Excludes: --indent\n"
              "                              write no blanks and only one line\n"
              "  --integers                  write whole doubles below 2^53 without a point\n"
              "  --strict                    write nothing if data is lost\n"
              "  --max-errors INT:INT in [1 - 1000000]=100\n"
              "                              report at most this many errors, and as many "
              "warnings, for a file\n"
              "\n"
              "Examples:\n"
              "  qrv to-json device.attr -o device.json\n"
              "  qrv to-json --compact device.attr 2>/dev/null | jq .bus.baud\n"
              "Reported as lost, on standard error:\n"
              "  a set                              becomes an array\n"
              "  a float                            becomes a number, which is read as a double\n"
              "  #true, #false                      become true, false; #nil becomes null, without "
              "a loss\n"
              "  an object of a declared type       becomes an object of its attributes\n"
              "  other constants, objects, types    become strings with their text\n"
              "  a non-string key                   becomes its text\n"
              "  a value that several paths share   is written in full at each of them\n"
              "  comments, text after the value     are left out\n"
              "The exit code is 0 all the same; with --strict it is 1. It is 2, and nothing is "
              "written,\n"
              "for a string that is not UTF-8, for two keys with the same text, and for sharing "
              "that\n"
              "would make the text many times longer than the file.\n",
              ""}));
}

TEST_F(ToolUsage, examples_of_from_json_and_to_json_work) {
    write("data.json", R"({"items": [{"name": "Ann"}]})");
    EXPECT_EQ(run({"from-json", "data.json", "-o", "data.attr"}), (cRun{0, "", ""}));
    EXPECT_EQ(run({"get", "data.attr", "items/0/name"}), (cRun{0, "Ann\n", ""}));
    write("tickets.json", R"({"id": 12345678901234567891})");
    EXPECT_EQ(run({"from-json", "--big=string", "tickets.json", "-o", "tickets.attr"}),
              (cRun{0, "", ""}));
    EXPECT_EQ(run({"get", "tickets.attr", "id"}), (cRun{0, "12345678901234567891\n", ""}));
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
                    "List the known types\n"
                    "Usage: qrv types [OPTIONS] [FILE]\n"
                    "\n"
                    "Positionals:\n"
                    "  FILE TEXT                   also list the types that this file declares\n"
                    "\n"
                    "Options:\n"
                    "  -h,--help                   Print this help message and exit\n"
                    "  --format TEXT:{text,json}=text\n"
                    "                              text or json\n"
                    "  --max-errors INT:INT in [1 - 1000000]=100\n"
                    "                              report at most this many errors, and as many "
                    "warnings, for a file\n"
                    "\n"
                    "Examples:\n"
                    "  qrv types shapes.attr                    also lists the types of the file, "
                    "with their keys\n"
                    "  qrv types --module ./colour              also lists the types of a module\n"
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
