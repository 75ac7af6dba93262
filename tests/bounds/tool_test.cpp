// The work of the tool's commands on a file: how many of its bytes they read, how many characters
// they parse, and how many they turn into tokens. A test compares the work on a file with the work
// on the same file with more entries, so that the characters of the command's arguments do not
// count.
#include "tests/support/memory_file.h"
#include "tests/support/paths.h"

#include "qrv/base/platform/cplatform.h"
#include "text/scan/cattrscanner_rules.h"
#include "tools/qrv/commands/command_line.h"

#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef QRV_CHECKS // the scanner counts in these builds only

namespace {

struct cCounts {
    unsigned long long read = 0, parsed = 0, lexed = 0;

    cCounts operator-(cCounts const &other) const {
        return {read - other.read, parsed - other.parsed, lexed - other.lexed};
    }
    cCounts operator+(cCounts const &other) const {
        return {read + other.read, parsed + other.parsed, lexed + other.lexed};
    }
};

unsigned long long bytes_read = 0;
cCounts at_fork;
// The counts of worker processes that have ended, in memory shared with them.
cCounts *in_children = nullptr;

cCounts counts_here() { return {bytes_read, scan::parsed, scan::lexed}; }

cCounts counts() { return counts_here() + *in_children; }

void prepare_for_children() {
    if (in_children) return;
    in_children = static_cast<cCounts *>(::mmap(nullptr, sizeof(cCounts), PROT_READ | PROT_WRITE,
                                                MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    ::pthread_atfork(nullptr, nullptr, [] { at_fork = counts_here(); });
}

} // namespace

// These functions replace the system calls, also for the library. Reads from pipes do not count. A
// worker process adds its counts when it ends: with --module a worker process does the work on a
// file.
extern "C" ssize_t read(int descriptor, void *to, std::size_t room) {
    ssize_t const count = ::syscall(SYS_read, descriptor, to, room);
    struct stat status {};
    bool const is_file = count > 0 && ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    if (is_file) bytes_read += static_cast<unsigned long long>(count);
    return count;
}
extern "C" void _exit(int status) {
    *in_children = *in_children + (counts_here() - at_fork);
    for (;;) ::syscall(SYS_exit_group, status);
}

namespace {

// of(n) returns text with n entries of one kind, followed by two others.
struct cText {
    std::string name;
    std::function<std::string(int entries)> of;
};

std::string entries(int count, std::string const &entry, std::string const &head = "") {
    std::string text = "{\n" + head;
    for (int i = 0; i < count; ++i) {
        std::string line = entry;
        for (size_t at = line.find('?'); at != line.npos; at = line.find('?', at))
            line.replace(at, 1, std::to_string(1000 + i));
        text += "  " + line + "\n";
    }
    return text + "  n= 1;\n  last= [2, 3, ];\n}\n";
}

std::vector<cText> texts() {
    std::string const types = "  Pixel= attlist(x= attspec(type= int; flag= #REQUIRED));\n"
                              "  Colour= choice({red= 1; green= 2;});\n";
    auto const of = [](std::string const &entry, std::string const &head = "") {
        return [=](int count) { return entries(count, entry, head); };
    };
    return {
        {"plain", of("entry?= {name= \"some words\"; list= [1, 2.5, true, ]; number= ?;};")},
        {"comments", of("// above\n  entry?= 12345; // after it\n  /* between */\n")},
        {"plain entries in a file with types", of("entry?= \"a n\xC3\xA4me/*\";", types)},
        {"objects", of("entry?= Pixel(x= ?;);", types)},
        {"choices", of("entry?= Colour(green);", types)},
        {"typed, with comments", of("entry?= intf(0x1F); // after it")},
        {"declarations", of("Type?= attlist(a= attspec(type= int; default= 12););")},
        {"nested typed values",
         of("Type?= attlist(a= attspec(type= intf; default= intf(0x1F);); b= attspec(default= "
            "\"a long text\"););")},
    };
}

cText mixed() {
    std::string const type = "  Pixel= attlist(x= attspec(type= int; flag= #REQUIRED));\n";
    return {"mixed", [=](int count) {
                return entries(count, "// above\n  entry?= Pixel(x= ?;); // after it\n", type);
            }};
}

// The number of characters. A character counts once more for each typed value whose brackets are
// around it.
unsigned long long weight(std::string const &text) {
    unsigned long long sum = 0;
    std::vector<bool> open; // for each open round bracket: does it belong to a typed value?
    unsigned depth = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == ')') {
            depth -= open.back();
            open.pop_back();
        }
        sum += 1 + depth;
        if (text[i] == '(') {
            open.push_back(i < 5 || text.compare(i - 5, 5, "#cRef") != 0);
            depth += open.back();
        }
    }
    return sum;
}

using cCommands = std::vector<std::vector<std::string>>;

struct cWork {
    double read, parsed, lexed;
};

class ToolWork : public testing::Test {
  protected:
    ToolWork() {
        prepare_for_children();
        std::string name = (std::filesystem::temp_directory_path() / "counted-XXXXXX").string();
        folder_ = ::mkdtemp(name.data());
    }
    ~ToolWork() override { std::filesystem::remove_all(folder_); }

    std::string path(std::string const &name) const { return folder_ + "/" + name; }
    void write(std::string const &name, std::string const &text) const {
        std::ofstream(path(name), std::ios::binary) << text;
    }

    cWork work_of(std::vector<std::string> arguments) const {
        cCounts const before = counts();
        arguments.insert(arguments.begin(), "qrv");
        for (std::string &argument : arguments)
            if (argument == "FILE" || argument == "SOURCE" || argument == "JSON" ||
                argument == "STATEMENTS" || argument == "OUTPUT")
                argument = path(argument);
        std::vector<char const *> argv;
        for (std::string const &argument : arguments) argv.push_back(argument.c_str());
        auto const argc = static_cast<int>(argv.size());
        if (in_copies_)
            run_in_copy(argc, argv.data());
        else
            run(argc, argv.data());
        cCounts const work = counts() - before;
        return {static_cast<double>(work.read), static_cast<double>(work.parsed),
                static_cast<double>(work.lexed)};
    }

    // Formatted text: with the blank that more_work() appends, `fmt` has something to change, but
    // does not lengthen the text.
    std::string laid_out(std::string const &text) const {
        write("FILE", text);
        work_of({"fmt", "-i", "FILE"});
        std::ifstream is(path("FILE"), std::ios::binary);
        return {std::istreambuf_iterator<char>(is), {}};
    }

    // How much more work the command does on the longer text.
    cWork more_work(std::string const &shorter, std::string const &longer,
                    std::vector<std::string> const &arguments) const {
        write("FILE", shorter + " \n");
        write("JSON", json(few));
        write("SOURCE", "{new= 1; last= [4, ]; }");
        write("STATEMENTS", "last/1 = 4");
        cWork const less = work_of(arguments);
        write("FILE", longer + " \n");
        write("JSON", json(many));
        cWork const more = work_of(arguments);
        return {more.read - less.read, more.parsed - less.parsed, more.lexed - less.lexed};
    }

    void expect_little_work(cText const &text, cCommands const &commands) const {
        std::string const less = laid_out(text.of(few)), more = laid_out(text.of(many));
        auto const size = static_cast<double>(more.size() - less.size());
        auto const weighed = static_cast<double>(weight(more) - weight(less));
        for (std::vector<std::string> const &command : commands) {
            cWork const work = more_work(less, more, command);
            std::string what = text.name + ":";
            for (std::string const &argument : command) what += ' ' + argument;
            EXPECT_GE(work.read, size) << what;
            EXPECT_LE(work.read, 2.1 * size) << what;
            EXPECT_LE(work.parsed, 2.1 * size) << what;
            EXPECT_GE(work.lexed, size) << what;
            EXPECT_LE(work.lexed, 2.1 * weighed) << what;
        }
    }

    static std::string json(int count) {
        std::string text = "{\n";
        for (int i = 0; i < count; ++i)
            text += "  \"entry" + std::to_string(1000 + i) + "\": \"some words\",\n";
        return text + "  \"last\": 1\n}\n";
    }

    static constexpr int few = 10, many = 30;
    std::string folder_;
    int worst_status_ = 1; // the highest exit status that a command may return
    // Runs each command in a copy of this process: a process can load a module only once.
    bool in_copies_ = false;

  private:
    void run_in_copy(int argc, char const *const *argv) const {
        pid_t const child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            qrv_set_module_filter(nullptr); // an earlier command in this process has set a filter
            run(argc, argv);
            ::_exit(HasFailure());
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0) << argv[1];
    }

    // Discards the outputs of the command.
    void run(int argc, char const *const *argv) const {
        test::cMemory const out;
        int const descriptors[] = {STDOUT_FILENO, STDERR_FILENO};
        int saved[2];
        for (int i = 0; i < 2; ++i) {
            saved[i] = ::dup(descriptors[i]);
            ::dup2(out.descriptor(), descriptors[i]);
        }
        int const status = run_command_line(argc, argv);
        for (int i = 0; i < 2; ++i) {
            ::dup2(saved[i], descriptors[i]);
            ::close(saved[i]);
        }
        EXPECT_LE(status, worst_status_) << argv[1] << '\n' << out.bytes();
    }
};

cCommands commands() {
    return {
        {"check", "FILE"},
        {"tokens", "FILE"},
        {"types", "FILE"},
        {"get", "FILE", "last/1", "n"},
        {"find", "FILE", "n"},
        {"where", "FILE", "last/1"},
        {"at", "FILE", "4:5"},
        {"explain", "FILE", "last/1"},
        {"to-json", "FILE"},
        {"fmt", "--check", "FILE"},
        {"fmt", "FILE"},
        {"set", "FILE", "last/1 = 4"},
        {"merge", "FILE", "SOURCE"},
        {"del", "FILE", "last/1"},
        {"mv", "FILE", "n", "m"},
        {"ins", "FILE", "n", "before", "m", "2"},
        {"fmt", "--canonical", "FILE"},
        {"set", "--reformat", "FILE", "last/1 = 4"},
        {"merge", "--reformat", "FILE", "SOURCE"},
    };
}

// The same commands with other options, which must not cause more work.
cCommands variants() {
    cCommands all{
        {"check", "-W", "strings", "FILE"},
        {"check", "--format=sarif", "FILE"},
        {"tokens", "--all", "FILE"},
        {"get", "--json", "FILE", "last"},
        {"to-json", "FILE", "-o", "OUTPUT"},
        {"fmt", "-i", "FILE"},
        {"fmt", "--diff", "FILE"},
        {"fmt", "-i", "--diff", "--backup", "--no-wait", "FILE"},
        {"fmt", "--check", "--trailing-blanks", "FILE"},
        {"fmt", "--canonical", "--check", "FILE"},
        {"fmt", "--canonical", "-i", "--force", "--backup", "FILE"},
        {"set", "FILE", "-f", "STATEMENTS"},
        {"set", "FILE", "--arg", "x=4", "-e", "n &= $x"},
    };
    cCommands const edits{
        {"set", "FILE", "last/1 = 4"},
        {"merge", "FILE", "SOURCE"},
        {"merge", "--commands=-ax", "FILE", "SOURCE"},
        {"del", "FILE", "last/1"},
        {"mv", "FILE", "n", "m"},
        {"ins", "FILE", "n", "after", "m", "2"},
    };
    for (std::vector<std::string> const &edit : edits)
        for (std::vector<std::string> const &options :
             cCommands{{"-i"}, {"--diff"}, {"-o", "OUTPUT"}, {"-i", "--diff", "--backup=.old"}}) {
            std::vector<std::string> command = edit;
            command.insert(command.end(), options.begin(), options.end());
            all.push_back(command);
            command.insert(command.end(), {"--reformat", "--force"});
            if (options.size() > 1) all.push_back(command);
        }
    return all;
}

} // namespace

TEST_F(ToolWork, the_weight_counts_a_character_once_more_for_each_typed_value_around_it) {
    EXPECT_EQ(weight("{a= 1;}"), 7u);
    EXPECT_EQ(weight("a= T(12);"), 9u + 2u);
    EXPECT_EQ(weight("a= T(U(1));"), 11u + 4u + 1u);
    EXPECT_EQ(weight("a= #cRef(/b);"), 13u);
}

TEST_F(ToolWork, each_byte_and_character_is_read_at_most_twice) {
    for (cText const &text : texts()) expect_little_work(text, commands());
}

TEST_F(ToolWork, each_byte_and_character_is_read_at_most_twice_with_any_options) {
    expect_little_work(mixed(), variants());
}

TEST_F(ToolWork, a_failed_edit_reads_the_file_at_most_twice) {
    worst_status_ = 2;
    expect_little_work(mixed(), {{"set", "FILE", "n = {}"},
                                 {"set", "--reformat", "FILE", "n = {}"},
                                 {"merge", "--reformat", "FILE", "SOURCE", "--commands=0a-"}});
}

TEST_F(ToolWork, each_byte_and_character_is_read_at_most_twice_with_modules) {
    in_copies_ = true;
    std::string const module = test::binary_file("bin/modules/colour");
    cCommands all = commands();
    for (std::vector<std::string> &command : all)
        command.insert(command.end(), {"--module", module});
    expect_little_work(mixed(), all);
}

TEST_F(ToolWork, from_json_reads_each_byte_once_and_scans_at_most_two_characters_for_it) {
    cWork const work = more_work("1", "1", {"from-json", "JSON"});
    auto const size = static_cast<double>(json(many).size() - json(few).size());
    EXPECT_GE(work.read, size);
    EXPECT_LE(work.read, 1.1 * size);
    EXPECT_GE(work.lexed, size / 2); // the text has fewer quotes and commas than the JSON
    EXPECT_LE(work.lexed, 2.1 * size);
    EXPECT_LE(work.parsed, 2.1 * size);
}

#endif
