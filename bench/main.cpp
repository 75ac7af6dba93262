// qrv_bench --works                prints the works, as JSON: [{work, sizes, timed, libraries}]
// qrv_bench --write FOLDER         writes the data of the timed rows, as NAME.attr and NAME.json
// qrv_bench WORK/SIZE LIBRARY      runs one round and compares the result with the data; then runs
//                                  another round for each line of the input. Prints a line for
//                                  each: {entries, bytes} for the first, then the seconds
// qrv_bench WORK/SIZE              runs one round of the library alone, for callgrind: {entries}
//
// Each library runs in a separate process, whose heap no other library has used; the caller runs
// them in turn. The first round shows all the memory that the work needs, since there was no
// earlier round whose memory it could use again.
#include "bench/data.h"
#include "bench/row.h"

#include <malloc.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>

double cRound::processor_seconds() {
    timespec time;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

// The memory in use from the C library's allocator, including its headers, and all other writable
// pages. So it includes pages that a library maps itself, or does not return.
long long cRound::memory_in_use() {
    long long pages[6] = {}; // the last element: data and stack
    std::ifstream statm("/proc/self/statm");
    for (long long &number : pages) statm >> number;
    if (!statm) stop("/proc/self/statm cannot be read");
    struct mallinfo2 const heap = mallinfo2();
    auto const signed_size = [](std::size_t size) { return static_cast<long long>(size); };
    return pages[5] * sysconf(_SC_PAGESIZE) - signed_size(heap.arena) + signed_size(heap.uordblks);
}

namespace {

using nlohmann::json;

// std::cout belongs to the library.
void print(json const &value) {
    std::printf("%s\n", value.dump().c_str());
    std::fflush(stdout);
}

std::vector<cWork> all_works() {
    std::vector<cWork> works = text_works();
    for (auto const &more :
         {object_works(), map_works(), vector_works(), value_works(), call_works(), signal_works()})
        works.insert(works.end(), more.begin(), more.end());
    return works;
}

json names_of_works() {
    json names = json::array();
    for (cWork const &work : all_works()) {
        names.push_back({{"work", work.name}, {"sizes", work.sizes}, {"timed", work.timed}});
        for (cSide const &side : work.sides) names.back()["libraries"].push_back(side.library);
    }
    return names;
}

void write_data(std::string const &folder) {
    for (cWork const &work : text_works())
        for (std::string const &name : work.timed) {
            cData const data = data_of(name);
            std::ofstream(folder + '/' + name + ".attr") << data.attr;
            std::ofstream(folder + '/' + name + ".json") << data.json;
        }
}

// The side of a row for this library; by default ours.
cPrepared prepare(std::string const &row, std::string const &library = "qrv") {
    auto const slash = std::min(row.find('/'), row.size() - 1);
    for (cWork const &work : all_works())
        for (cSide const &side : work.sides)
            if (work.name == row.substr(0, slash) && side.library == library)
                return side.prepare(row.substr(slash + 1));
    stop("there is no row " + row + " of " + library);
}

// The median of as many rounds as fit in a tenth of a second, at least three: the first round is
// slower, since another process has used the processor's caches.
double turn(cPrepared const &side) {
    std::vector<double> seconds;
    auto const start = std::clock();
    do {
        cRound round;
        side.rounds(round);
        seconds.push_back(round.seconds());
    } while (seconds.size() < 3 || std::clock() - start < CLOCKS_PER_SEC / 10);
    auto const middle = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() / 2);
    std::nth_element(seconds.begin(), middle, seconds.end());
    return *middle;
}

void run_in_turn(cPrepared const &side) {
    {
        cRound first;
        side.rounds(first);
        if (first.answer() != side.answer) stop("the result is not that of the data");
        print({{"entries", side.entries}, {"bytes", first.bytes()}});
    }
    while (std::getchar() != EOF) print(turn(side));
}

} // namespace

int main(int argc, char **argv) {
    std::vector<std::string> const arguments(argv + 1, argv + argc);
    if (arguments == std::vector<std::string>{"--works"}) {
        print(names_of_works());
    } else if (arguments.size() == 2 && arguments[0] == "--write") {
        write_data(arguments[1]);
    } else if (arguments.size() == 2) {
        run_in_turn(prepare(arguments[0], arguments[1]));
    } else if (arguments.size() == 1) {
        cPrepared const side = prepare(arguments[0]);
        cRound round;
        side.rounds(round);
        print({{"entries", side.entries}});
    } else {
        stop("the first lines of bench/main.cpp say how to call it");
    }
    return 0;
}
