// Refusals of the system, and worker processes that are killed: each is reported with exit status
// 2, and nothing else happens.

#include "tests/support/refused_calls.h"
#include "tests/tool/tool_run.h"

#include <cerrno>
#include <csignal>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>

using tool_test::cProcess;
using tool_test::cRun;
using tool_test::times;

namespace {

class ToolBadFiles : public tool_test::Tool {
  protected:
    // All commands on the file "f" report this, and print nothing.
    void each_command_reports(std::string const &err, tool_test::cStart const &start = {}) const {
        cRun const expected{2, "", err};
        EXPECT_EQ(run({"fmt", "f"}, start), expected);
        EXPECT_EQ(run({"fmt", "-i", "f"}, start), expected);
        EXPECT_EQ(run({"fmt", "-i", "--force", "f"}, start), expected);
        EXPECT_EQ(run({"fmt", "--check", "f"}, start), expected);
        EXPECT_EQ(run({"get", "f", "a"}, start), expected);
        EXPECT_EQ(run({"get", "f", "a", "--default", "1"}, start), expected);
        EXPECT_EQ(run({"check", "f"}, start), expected);
        EXPECT_EQ(run({"tokens", "f"}, start), expected);
    }
    void copy_module(std::string const &name) const {
        std::filesystem::copy_file(test::binary_file("tests/modules_to_load/" + name + ".so"),
                                   path(name + ".so"));
    }
};

// An open descriptor, closed at the end of the scope.
class cOpen {
  public:
    explicit cOpen(int descriptor) : descriptor_(descriptor) { EXPECT_GE(descriptor, 0); }
    cOpen(cOpen const &) = delete;
    cOpen &operator=(cOpen const &) = delete;
    ~cOpen() { ::close(descriptor_); }
    int get() const { return descriptor_; }

  private:
    int descriptor_;
};

// A pipe; each end is closed explicitly or at the end of the scope.
struct cPipe {
    cPipe() { EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0); }
    cPipe(cPipe const &) = delete;
    cPipe &operator=(cPipe const &) = delete;
    ~cPipe() {
        close(0);
        close(1);
    }
    void close(int end) {
        if (ends[end] >= 0) ::close(ends[end]);
        ends[end] = -1;
    }
    int ends[2] = {-1, -1};
};

// --- input ---

TEST_F(ToolBadFiles, a_missing_file_is_reported) {
    each_command_reports("f: error: cannot read: No such file or directory\n");
    EXPECT_FALSE(std::filesystem::exists(path("f")));
}

TEST_F(ToolBadFiles, a_dangling_link_is_reported) {
    std::filesystem::create_symlink("nowhere", path("f"));
    each_command_reports("f: error: cannot read: No such file or directory\n");
}

TEST_F(ToolBadFiles, a_folder_is_reported) {
    std::filesystem::create_directory(path("f"));
    each_command_reports("f: error: cannot read: Is a directory\n");
}

TEST_F(ToolBadFiles, an_unreadable_file_is_reported) {
    write("f", "{a=1}");
    ::chmod(path("f").c_str(), 0);
    each_command_reports("f: error: cannot read: Permission denied\n",
                         {.prepare = tool_test::give_up_rights_over_files});
    ::chmod(path("f").c_str(), 0600);
    EXPECT_EQ(read("f"), "{a=1}");
}

TEST_F(ToolBadFiles, a_file_whose_reading_fails_is_reported) {
    std::filesystem::create_symlink("/proc/self/mem", path("f"));
    each_command_reports("f: error: cannot read: Input/output error\n");
}

TEST_F(ToolBadFiles, a_closed_standard_input_is_reported) {
    cRun const run = this->run({"check", "-"}, {.prepare = [] { ::close(STDIN_FILENO); }});
    EXPECT_EQ(run, (cRun{2, "", "-: error: cannot read: Bad file descriptor\n"}));
}

std::vector<std::string> words(std::string const &line) {
    std::istringstream is(line);
    return {std::istream_iterator<std::string>(is), {}};
}

// --- output ---

TEST_F(ToolBadFiles, a_full_output_device_is_reported) {
    write("f", "{a=1}");
    cOpen const full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    cRun const expected{2, "", "qrv: error: cannot write the output: No space left on device\n"};
    for (std::vector<std::string> const &arguments :
         std::vector<std::vector<std::string>>{{"fmt", "f"},
                                               {"fmt", "--check", "f"},
                                               {"get", "f", "a"},
                                               {"tokens", "f"},
                                               {"--version"},
                                               {"--help"}})
        EXPECT_EQ(run(arguments, {.out = full.get()}), expected) << arguments[0];
    EXPECT_EQ(run({"check", "f"}, {.out = full.get()}), (cRun{0, "", ""})) << "check has no output";
    EXPECT_EQ(run({"fmt", "-i", "f"}, {.out = full.get()}), (cRun{0, "", ""}));
}

TEST_F(ToolBadFiles, a_closed_output_is_reported) {
    write("f", "{a=1}");
    EXPECT_EQ(run({"fmt", "f"}, {.prepare = [] { ::close(STDOUT_FILENO); }}),
              (cRun{2, "", "qrv: error: cannot write the output: Bad file descriptor\n"}));
}

TEST_F(ToolBadFiles, the_tool_ends_if_the_reader_of_its_output_has_ended) {
    write("g", "[2, 3]");
    write("f", "[" + times("1,", 100000) + "]");
    cPipe pipe;
    pipe.close(0);
    EXPECT_EQ(run({"fmt", "f"}, {.out = pipe.ends[1]}), (cRun{2, "", ""}));
    EXPECT_EQ(run({"tokens", "f"}, {.out = pipe.ends[1]}), (cRun{2, "", ""}));
    EXPECT_EQ(run({"get", "f", "0"}, {.out = pipe.ends[1]}), (cRun{2, "", ""}));
    EXPECT_EQ(run({"fmt", "--check", "f"}, {.out = pipe.ends[1]}), (cRun{2, "", ""}));
    for (char const *const command :
         {"explain g 0", "find g 2", "where g 0", "at g 1:2", "types g", "to-json g", "set g 0=1",
          "del g 0", "mv g 0 1", "ins g 0 after 1", "merge g g", "help", "--version", "check -h"})
        EXPECT_EQ(run(words(command), {.out = pipe.ends[1]}), (cRun{2, "", ""})) << command;
}

TEST_F(ToolBadFiles, the_tool_ends_if_the_reader_of_its_output_ends) {
    write("f", "[" + times("1,", 100000) + "]");
    cPipe pipe;
    cProcess tool(folder_, {"tokens", "f"}, {.out = pipe.ends[1]});
    pipe.close(1);
    char byte = 0;
    EXPECT_EQ(::read(pipe.ends[0], &byte, 1), 1);
    EXPECT_EQ(byte, 'T');
    pipe.close(0);
    EXPECT_EQ(tool.wait(), (cRun{2, "", ""}));
}

// --- children ---

// A child of that process, as soon as it has one; 0 after ten seconds.
pid_t child_of(pid_t parent) {
    for (int i = 0; i < 1000; ++i) {
        for (auto const &entry : std::filesystem::directory_iterator("/proc")) {
            std::string const name = entry.path().filename().string();
            std::ifstream is(entry.path() / "stat");
            std::string id, command, state;
            pid_t of = 0;
            if (is >> id >> command >> state >> of && of == parent && id == name)
                return static_cast<pid_t>(std::stol(id));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return 0;
}

// Code of modules may crash, so it runs in a worker process. Without modules the tool needs no such
// process.
TEST_F(ToolBadFiles, only_modules_need_a_worker_process) {
    copy_module("type_factory");
    write("f", "{a=1}");
    tool_test::cStart const start{.prepare = [] {
        ::setenv("ASAN_OPTIONS", "detect_leaks=0", 1); // which starts a process, too
        test::refuse_call(SYS_clone, EAGAIN);
    }};
    EXPECT_EQ(run({"check", "f"}, start), (cRun{0, "", ""}));
    EXPECT_EQ(run({"set", "f", "a= 2"}, start), (cRun{0, "{a=2}", ""}));
    EXPECT_EQ(
        run({"check", "f", "--module", "./type_factory"}, start),
        (cRun{2, "", "f: error: cannot start a process: Resource temporarily unavailable\n"}));
}

TEST_F(ToolBadFiles, a_killed_worker_process_is_reported) {
    copy_module("type_factory");
    for (std::vector<std::string> arguments :
         std::vector<std::vector<std::string>>{{"fmt", "-"}, {"check", "-"}, {"get", "-", "a"}}) {
        arguments.insert(arguments.end(), {"--module", "./type_factory"});
        cPipe input; // never ends, so that the worker process waits
        cProcess tool(folder_, arguments, {.in = input.ends[0]});
        pid_t const child = child_of(tool.pid());
        ASSERT_GT(child, 0);
        ::kill(child, SIGKILL);
        EXPECT_EQ(tool.wait(),
                  (cRun{2, "", "-: error: the work ended too early: signal Killed\n"}));
    }
}

TEST_F(ToolBadFiles, the_next_file_is_processed_after_a_worker_process_is_killed) {
    copy_module("type_factory");
    write("f", "[1]");
    cPipe input;
    cProcess tool(folder_, {"fmt", "--module", "./type_factory", "-", "f"}, {.in = input.ends[0]});
    pid_t const child = child_of(tool.pid());
    ASSERT_GT(child, 0);
    ::kill(child, SIGKILL);
    EXPECT_EQ(tool.wait(),
              (cRun{2, "[1, ]\n", "-: error: the work ended too early: signal Killed\n"}));
}

} // namespace
