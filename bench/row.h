#pragma once
// The rows of the benchmark. A work, such as reading, has rows of several sizes: "read/1M". In each
// row the library and its peers do the same work on the same data.

#include <valgrind/callgrind.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

// One round of one library: its measurements and its result.
class cRound {
  public:
    // Calls `work`, and measures its time, instructions and memory. Call it once in a round.
    template <class Work> void measure(Work const &work) {
        long long const memory = memory_in_use();
        double const start = processor_seconds();
        CALLGRIND_START_INSTRUMENTATION;
        work();
        CALLGRIND_STOP_INSTRUMENTATION;
        seconds_ = processor_seconds() - start;
        bytes_ = memory_in_use() - memory;
    }
    double seconds() const { return seconds_; }
    long long bytes() const { return bytes_; } // growth of the memory in use during the work

    // The resulting value, as JSON with sorted keys. Called only in the first round, after the
    // measurement.
    std::function<std::string()> answer;

  private:
    static double processor_seconds();
    static long long memory_in_use();

    double seconds_ = 0;
    long long bytes_ = 0;
};

using cRounds = std::function<void(cRound &)>; // each call is one round

struct cPrepared {
    std::size_t entries; // or slots: the divisor of times and counts
    std::string answer;  // the result that each library must produce
    cRounds rounds;
};

struct cSide {
    char const *library;
    std::function<cPrepared(std::string const &size)> prepare;
};

struct cWork {
    std::string name;
    std::vector<std::string> sizes; // three, for counting; the last is at least 100 times the first
    std::vector<std::string> timed; // the sizes of rows that are timed
    std::vector<cSide> sides;       // ours first
};

std::vector<cWork> text_works();   // text_rows.cpp
std::vector<cWork> object_works(); // object_rows.cpp
std::vector<cWork> vector_works(); // vector_rows.cpp
std::vector<cWork> value_works();  // value_rows.cpp
std::vector<cWork> call_works();   // call_rows.cpp
std::vector<cWork> signal_works(); // signal_rows.cpp
std::vector<cWork> map_works();    // map_rows.cpp

// Ends the program: a library failed, so there is nothing to compare.
[[noreturn]] inline void stop(std::string const &what) {
    std::fprintf(stderr, "qrv_bench: %s\n", what.c_str());
    std::exit(1);
}
