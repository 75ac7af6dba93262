#pragma once
// What a row measures: its clock and callgrind's counter start and stop together. `./dev bench
// --count` starts callgrind with the counter off; without callgrind its requests do nothing.

#include <benchmark/benchmark.h>
#include <valgrind/callgrind.h>

// The rounds of a row: for (auto _ : cMeasured(state)).
class cMeasured {
  public:
    explicit cMeasured(benchmark::State &state) : state_(state) {}
    cMeasured(cMeasured const &) = delete;
    cMeasured &operator=(cMeasured const &) = delete;
    ~cMeasured() { CALLGRIND_TOGGLE_COLLECT; }
    auto begin() { return state_.begin(); }
    auto end() {
        auto const last = state_.end(); // starts the clock
        CALLGRIND_TOGGLE_COLLECT;
        return last;
    }

  private:
    benchmark::State &state_;
};

// A part of a round that is not measured.
class cUnmeasured {
  public:
    explicit cUnmeasured(benchmark::State &state) : state_(state) {
        CALLGRIND_TOGGLE_COLLECT;
        state_.PauseTiming();
    }
    cUnmeasured(cUnmeasured const &) = delete;
    cUnmeasured &operator=(cUnmeasured const &) = delete;
    ~cUnmeasured() {
        state_.ResumeTiming();
        CALLGRIND_TOGGLE_COLLECT;
    }

  private:
    benchmark::State &state_;
};

// Counts hardly vary from round to round, and callgrind is slow.
inline void few_rounds_when_counted(benchmark::internal::Benchmark *each, int rounds) {
    if (RUNNING_ON_VALGRIND) each->Iterations(rounds);
}
