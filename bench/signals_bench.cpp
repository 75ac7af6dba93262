// Signals: firing one with n slots, and connecting and disconnecting n slots, beside libsigc++.
// Ours looks for an earlier connection of the same pair at each connect and so is quadratic in n.
#include "bench/measured.h"
#include "qrv/base/csignal.h"

#include <benchmark/benchmark.h>
#include <sigc++/sigc++.h>

#include <deque>

namespace {

struct cCounter {
    void take(int by) { sum += by; }
    long long sum = 0;
};

using cIntSlot = cSlot1<cCounter, int>;

int size_of(benchmark::State const &state) { return static_cast<int>(state.range(0)); }

void emit_qrv(benchmark::State &state) {
    cCounter counter;
    cSignal1<int> signal;
    std::deque<cIntSlot> slots;
    for (int i = 0; i < size_of(state); ++i)
        signal.connect(slots.emplace_back(&counter, &cCounter::take));
    for (auto _ : cMeasured(state)) signal(1);
    benchmark::DoNotOptimize(counter.sum);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void emit_sigc(benchmark::State &state) {
    cCounter counter;
    sigc::signal<void, int> signal;
    for (int i = 0; i < size_of(state); ++i)
        signal.connect(sigc::mem_fun(counter, &cCounter::take));
    for (auto _ : cMeasured(state)) signal.emit(1);
    benchmark::DoNotOptimize(counter.sum);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void connect_qrv(benchmark::State &state) {
    cCounter counter;
    std::deque<cIntSlot> slots;
    for (int i = 0; i < size_of(state); ++i) slots.emplace_back(&counter, &cCounter::take);
    for (auto _ : cMeasured(state)) {
        cSignal1<int> const signal;
        for (cIntSlot const &slot : slots) signal.connect(slot);
        signal.disconnect();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void connect_sigc(benchmark::State &state) {
    cCounter counter;
    for (auto _ : cMeasured(state)) {
        sigc::signal<void, int> signal;
        for (int i = 0; i < size_of(state); ++i)
            signal.connect(sigc::mem_fun(counter, &cCounter::take));
        signal.clear();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void sizes(benchmark::internal::Benchmark *each) {
    each->Arg(1)->Arg(100)->Arg(1'000)->Unit(benchmark::kMicrosecond);
    few_rounds_when_counted(each, 100);
}

BENCHMARK(emit_qrv)->Apply(sizes);
BENCHMARK(emit_sigc)->Apply(sizes);
BENCHMARK(connect_qrv)->Apply(sizes);
BENCHMARK(connect_sigc)->Apply(sizes);

} // namespace
