// edit_lines [--every N] [--document] FILE...: shows what edits change in files that people wrote.
// The tool's commands make the edits, or qrv::document with --document. They change each scalar,
// delete each entry, insert an entry before and after each, and append one to each container, each
// time in the original file. A FILE whose name ends in .json is converted first. Each file has its
// own process, and as many processes run at a time as there are processors.
//
// Prints a table. The exit status is 1 if an edit was refused, changed another line, lost a comment
// or stored another value; each such edit is listed on standard error. With --every only each N-th
// edit is made.

#include "qrv/base/csignal.h"
#include "qrv/diagnostics/cconsole.h"
#include "qrv/text/file/cfile.h"
#include "tests/support/memory_file.h"
#include "tests/sweep/by_document.h"
#include "tests/sweep/sweep.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace sweep_test;

std::string row_of(std::string const &name, cTable const &table) {
    std::string text = "| " + name + " |";
    size_t lost = 0;
    for (cRow const &row : table) {
        text += ' ' + std::to_string(row.edits) + " | " + std::to_string(row.lines) + " |";
        lost += row.lost;
    }
    return text + ' ' + std::to_string(lost) + " |\n";
}

// Writes the row to the descriptor. Returns whether all edits were good.
bool sweep_file(char const *name, size_t every, cTool const &tool, int descriptor) {
    std::filesystem::path file(name);
    std::string text = cat::file2string(name);
    if (file.extension() == ".json") {
        text = run({"from-json", "@"}, text).out;
        file.replace_extension(".attr");
    }
    bool good = true;
    cTable const table = sweep(text, every, tool, [&](std::string const &what) {
        std::fprintf(stderr, "%s: %s\n", name, what.c_str());
        good = false;
    });
    std::string const row = row_of(file.filename(), table);
    return ::write(descriptor, row.data(), row.size()) == static_cast<ssize_t>(row.size()) && good;
}

class cProcesses {
  public:
    // Does the work in a forked process, which starts as soon as a processor is free.
    template <class Work> void begin(Work const &work) {
        while (running_ >= std::max(1u, std::thread::hardware_concurrency())) wait();
        pid_t const process = ::fork();
        if (process == 0) ::_exit(work() ? 0 : 1);
        good_ = good_ && process > 0;
        ++running_;
    }
    bool all_good() {
        while (running_ > 0) wait();
        return good_;
    }

  private:
    void wait() {
        int status = 0;
        good_ = ::wait(&status) > 0 && status == 0 && good_;
        --running_;
    }

    unsigned running_ = 0;
    bool good_ = true;
};

} // namespace

int main(int argc, char **argv) {
    sig_idle();
    cConsoleDisplay const messages(STDERR_FILENO);
    size_t every = 1;
    cTool tool = run;
    std::map<int, test::cMemory> rows; // by the index of the argument
    cProcesses processes;
    for (int i = 1; i < argc; ++i) {
        if (argv[i] == std::string("--every") && i + 1 < argc)
            every = std::max(1ul, std::strtoul(argv[++i], nullptr, 10));
        else if (argv[i] == std::string("--document"))
            tool = run_by_document;
        else
            processes.begin([&, descriptor = rows[i].descriptor()] {
                return sweep_file(argv[i], every, tool, descriptor);
            });
    }
    bool const good = !rows.empty() && processes.all_good();
    std::printf("| File | Changed | Lines | Deleted | Lines | Inserted | Lines | Appended | Lines |"
                " Lost comments |\n"
                "| :--- | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: |\n");
    for (auto const &[argument, row] : rows) std::fputs(row.bytes().c_str(), stdout);
    return good ? 0 : 1;
}
