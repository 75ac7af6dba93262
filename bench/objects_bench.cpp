// Trees: reading, writing, finding, appending, cloning and destroying, at three sizes, beside the
// same work done by nlohmann::json on the same data. The data is a flat map of n entries with keys
// "key0" and so on and numbers as values; appending is to a vector.
#include "bench/measured.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

namespace {

using nlohmann::json;

constexpr int small = 1'000, middle = 16'000, large = 160'000;

std::string key_of(int i) { return "key" + std::to_string(i); }

std::string attr_text(int n) {
    std::string text = "{\n";
    for (int i = 0; i < n; ++i) text += "  " + key_of(i) + "= " + std::to_string(i) + ";\n";
    return text + "}";
}

objref attr_map(int n) {
    cRef<cMapObj> const map = make<cMapObj>();
    for (int i = 0; i < n; ++i) map->datamap().mapitem(key_of(i), cat::of(i));
    return map;
}

json json_map(int n) {
    json map = json::object();
    for (int i = 0; i < n; ++i) map[key_of(i)] = i;
    return map;
}

// Keys in an order that is neither that of insertion nor sorted.
std::vector<std::string> keys_to_find(int n) {
    std::vector<std::string> keys;
    for (long long i = 0; i < n; ++i) keys.push_back(key_of(static_cast<int>(i * 7919 % n)));
    return keys;
}

int size_of(benchmark::State const &state) { return static_cast<int>(state.range(0)); }

void count_items(benchmark::State &state) {
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

[[noreturn]] void stop(char const *what) {
    std::fprintf(stderr, "bench: %s\n", what);
    std::abort();
}

void read_qrv(benchmark::State &state) {
    std::string const text = attr_text(size_of(state));
    for (auto _ : cMeasured(state)) {
        std::istringstream is(text);
        objref map;
        if (cObj::readobj(is, map) != 0) stop("the text does not read");
        cUnmeasured const rest(state); // destroying has a line of its own
        map = nullptr;
    }
    count_items(state);
}

void read_json(benchmark::State &state) {
    std::string const text = json_map(size_of(state)).dump(2);
    for (auto _ : cMeasured(state)) {
        std::istringstream is(text);
        json map = json::parse(is);
        benchmark::DoNotOptimize(map);
        cUnmeasured const rest(state);
        map = nullptr;
    }
    count_items(state);
}

void write_qrv(benchmark::State &state) {
    objref const map = attr_map(size_of(state));
    for (auto _ : cMeasured(state)) {
        std::ostringstream os;
        map->writeobj(os);
        benchmark::DoNotOptimize(os.tellp());
    }
    count_items(state);
}

void write_json(benchmark::State &state) {
    json const map = json_map(size_of(state));
    for (auto _ : cMeasured(state)) {
        std::ostringstream os;
        os << map.dump(2);
        benchmark::DoNotOptimize(os.tellp());
    }
    count_items(state);
}

void find_qrv(benchmark::State &state) {
    objref const map = attr_map(size_of(state));
    cAttrHash &hash = static_cast<cMapObj &>(*map).datamap();
    auto const keys = keys_to_find(size_of(state));
    for (auto _ : cMeasured(state))
        for (auto const &key : keys) benchmark::DoNotOptimize(hash.find(key));
    count_items(state);
}

void find_json(benchmark::State &state) {
    json const map = json_map(size_of(state));
    auto const keys = keys_to_find(size_of(state));
    for (auto _ : cMeasured(state))
        for (auto const &key : keys) benchmark::DoNotOptimize(map.find(key));
    count_items(state);
}

void append_qrv(benchmark::State &state) {
    for (auto _ : cMeasured(state)) {
        objref vector = make<cVectorObj>();
        for (int i = 0; i < size_of(state); ++i) vector->append(cat::of(i));
        cUnmeasured const rest(state);
        vector = nullptr;
    }
    count_items(state);
}

void append_json(benchmark::State &state) {
    for (auto _ : cMeasured(state)) {
        json vector = json::array();
        for (int i = 0; i < size_of(state); ++i) vector.push_back(i);
        benchmark::DoNotOptimize(vector);
        cUnmeasured const rest(state);
        vector = nullptr;
    }
    count_items(state);
}

// Values are shared by a clone of ours and copied by the other.
void clone_qrv(benchmark::State &state) {
    objref const map = attr_map(size_of(state));
    for (auto _ : cMeasured(state)) {
        objref copy = map->clone();
        cUnmeasured const rest(state);
        copy = nullptr;
    }
    count_items(state);
}

void clone_json(benchmark::State &state) {
    json const map = json_map(size_of(state));
    for (auto _ : cMeasured(state)) {
        json copy = map;
        benchmark::DoNotOptimize(copy);
        cUnmeasured const rest(state);
        copy = nullptr;
    }
    count_items(state);
}

void destroy_qrv(benchmark::State &state) {
    for (auto _ : cMeasured(state)) {
        objref map;
        {
            cUnmeasured const rest(state);
            map = attr_map(size_of(state));
        }
        map = nullptr;
    }
    count_items(state);
}

void destroy_json(benchmark::State &state) {
    for (auto _ : cMeasured(state)) {
        json map;
        {
            cUnmeasured const rest(state);
            map = json_map(size_of(state));
        }
        map = nullptr;
    }
    count_items(state);
}

void sizes(benchmark::internal::Benchmark *each) {
    each->Arg(small)->Arg(middle)->Arg(large)->Unit(benchmark::kMicrosecond);
    few_rounds_when_counted(each, 1);
}

BENCHMARK(read_qrv)->Apply(sizes);
BENCHMARK(read_json)->Apply(sizes);
BENCHMARK(write_qrv)->Apply(sizes);
BENCHMARK(write_json)->Apply(sizes);
BENCHMARK(find_qrv)->Apply(sizes);
BENCHMARK(find_json)->Apply(sizes);
BENCHMARK(append_qrv)->Apply(sizes);
BENCHMARK(append_json)->Apply(sizes);
BENCHMARK(clone_qrv)->Apply(sizes);
BENCHMARK(clone_json)->Apply(sizes);
BENCHMARK(destroy_qrv)->Apply(sizes);
BENCHMARK(destroy_json)->Apply(sizes);

} // namespace
