// What the commands of the tool do with a file: how many of its bytes they read, how many
// characters they parse, and how many they make tokens of. Counted is what a file costs that is
// longer by some entries, so that neither statements nor paths count.
#include "tests/support/memory_file.h"

#include "text/scan/cattrscanner_rules.h"
#include "tools/qrv/commands/command_line.h"

#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#ifdef QRV_CHECKS // the scanner counts in such builds only

namespace {

unsigned long long bytes_read = 0;

} // namespace

// In place of the system's, also for the library.
extern "C" ssize_t read(int descriptor, void *to, std::size_t room) {
    ssize_t const count = ::syscall(SYS_read, descriptor, to, room);
    if (count > 0) bytes_read += static_cast<unsigned long long>(count);
    return count;
}

namespace {

// A text of so many entries, and two more at its end.
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

// The characters, those between the brackets of typed values once more for each of these.
unsigned long long weight(std::string const &text) {
    unsigned long long sum = 0;
    std::vector<bool> open; // of round brackets: typed?
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
        std::string name = (std::filesystem::temp_directory_path() / "counted-XXXXXX").string();
        folder_ = ::mkdtemp(name.data());
    }
    ~ToolWork() override { std::filesystem::remove_all(folder_); }

    std::string path(std::string const &name) const { return folder_ + "/" + name; }
    void write(std::string const &name, std::string const &text) const {
        std::ofstream(path(name), std::ios::binary) << text;
    }

    cWork work_of(std::vector<std::string> arguments) const {
        auto const read = bytes_read, parsed = scan::parsed, lexed = scan::lexed;
        arguments.insert(arguments.begin(), "qrv");
        for (std::string &argument : arguments)
            if (argument == "FILE" || argument == "SOURCE" || argument == "JSON")
                argument = path(argument);
        std::vector<char const *> argv;
        for (std::string const &argument : arguments) argv.push_back(argument.c_str());
        run(static_cast<int>(argv.size()), argv.data());
        return {static_cast<double>(bytes_read - read), static_cast<double>(scan::parsed - parsed),
                static_cast<double>(scan::lexed - lexed)};
    }

    // In the writer's layout, so that `fmt` makes no longer text of it, but for a blank at the end.
    std::string laid_out(std::string const &text) const {
        write("FILE", text);
        work_of({"fmt", "-i", "FILE"});
        std::ifstream is(path("FILE"), std::ios::binary);
        return {std::istreambuf_iterator<char>(is), {}};
    }

    // What the command does more with the longer text.
    cWork more_work(std::string const &shorter, std::string const &longer,
                    std::vector<std::string> const &arguments) const {
        write("FILE", shorter + " \n");
        write("JSON", json(few));
        write("SOURCE", "{new= 1; last= [4, ]; }");
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
            std::string const what = text.name + ": " + command[0] + ' ' + command[1];
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

  private:
    // Outputs go where nobody looks.
    static void run(int argc, char const *const *argv) {
        test::cMemory const out;
        int const descriptors[] = {STDOUT_FILENO, STDERR_FILENO};
        int kept[2];
        for (int i = 0; i < 2; ++i) {
            kept[i] = ::dup(descriptors[i]);
            ::dup2(out.descriptor(), descriptors[i]);
        }
        int const status = run_command_line(argc, argv);
        for (int i = 0; i < 2; ++i) {
            ::dup2(kept[i], descriptors[i]);
            ::close(kept[i]);
        }
        EXPECT_LE(status, 1) << argv[1] << '\n' << out.bytes();
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
        {"fmt", "-i", "FILE"},
        {"set", "-i", "FILE", "last/1 = 4"},
        {"merge", "-i", "FILE", "SOURCE"},
        {"del", "-i", "FILE", "last/1"},
        {"mv", "-i", "FILE", "n", "m"},
        {"ins", "-i", "FILE", "n", "before", "m", "2"},
    };
}

// What does the same work as another one, but for the output.
cCommands variants() {
    return {
        {"tokens", "--all", "FILE"},
        {"fmt", "FILE"},
        {"fmt", "--diff", "FILE"},
        {"set", "FILE", "last/1 = 4"},
        {"del", "FILE", "last/1"},
        {"mv", "FILE", "n", "m"},
        {"ins", "FILE", "n", "after", "m", "2"},
    };
}

} // namespace

TEST_F(ToolWork, the_weight_of_a_text) {
    EXPECT_EQ(weight("{a= 1;}"), 7u);
    EXPECT_EQ(weight("a= T(12);"), 9u + 2u);
    EXPECT_EQ(weight("a= T(U(1));"), 11u + 4u + 1u);
    EXPECT_EQ(weight("a= #cRef(/b);"), 13u);
}

TEST_F(ToolWork, each_byte_and_character_at_most_twice) {
    for (cText const &text : texts()) expect_little_work(text, commands());
    expect_little_work(texts().front(), variants());
    expect_little_work(texts().back(), variants());
}

TEST_F(ToolWork, a_json_text_is_read_once_and_the_result_scanned_once) {
    cWork const work = more_work("1", "1", {"from-json", "JSON"});
    auto const size = static_cast<double>(json(many).size() - json(few).size());
    EXPECT_GE(work.read, size);
    EXPECT_LE(work.read, 1.1 * size);
    EXPECT_GE(work.lexed, size / 2); // it has fewer quotes and commas
    EXPECT_LE(work.lexed, 2.1 * size);
    EXPECT_LE(work.parsed, 2.1 * size);
}

#endif
