// Objects: finding keys in a flat map, appending to a vector, and `clone`, which shares the values
// where the peer copies them.
#include "bench/data.h"
#include "bench/row.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"

#include <nlohmann/json.hpp>

#include <memory>

namespace {

using nlohmann::json;

std::string key_of(int i) { return "key" + std::to_string(i); }

cRef<cMapObj> attr_map(int n) {
    cRef<cMapObj> const map = make<cMapObj>();
    for (int i = 0; i < n; ++i) map->datamap().mapitem(key_of(i), cat::of(i));
    return map;
}

json json_map(int n) {
    json map = json::object();
    for (int i = 0; i < n; ++i) map[key_of(i)] = i;
    return map;
}

// The keys in an order that is neither the order of insertion nor sorted.
std::vector<std::string> keys_to_find(int n) {
    std::vector<std::string> keys;
    for (long long i = 0; i < n; ++i) keys.push_back(key_of(static_cast<int>(i * 7919 % n)));
    return keys;
}

cRounds find_qrv(int n) {
    return [map = attr_map(n), keys = keys_to_find(n)](cRound &round) {
        cAttrHash const &hash = map->datamap();
        int found = 0;
        round.measure([&] {
            for (auto const &key : keys) found += hash.find(key) != nullptr;
        });
        round.answer = [found] { return std::to_string(found); };
    };
}

cRounds find_nlohmann(int n) {
    return [map = json_map(n), keys = keys_to_find(n)](cRound &round) {
        int found = 0;
        round.measure([&] {
            for (auto const &key : keys) found += map.find(key) != map.end();
        });
        round.answer = [found] { return std::to_string(found); };
    };
}

cRounds append_qrv(int n) {
    return [n](cRound &round) {
        cRef<cVectorObj> const vector = make<cVectorObj>();
        round.measure([&] {
            for (int i = 0; i < n; ++i) vector->append(cat::of(i));
        });
        round.answer = [size = vector->size()] { return std::to_string(size); };
    };
}

cRounds append_nlohmann(int n) {
    return [n](cRound &round) {
        json vector = json::array();
        round.measure([&] {
            for (int i = 0; i < n; ++i) vector.push_back(i);
        });
        round.answer = [size = vector.size()] { return std::to_string(size); };
    };
}

cRounds clone_qrv(int n) {
    return [map = attr_map(n)](cRound &round) {
        objref copy;
        round.measure([&] { copy = map->clone(); });
        int const size = static_cast<cMapObj const &>(*copy).size();
        round.answer = [size] { return std::to_string(size); };
    };
}

cRounds clone_nlohmann(int n) {
    return [map = json_map(n)](cRound &round) {
        json copy;
        round.measure([&] { copy = map; });
        round.answer = [size = copy.size()] { return std::to_string(size); };
    };
}

cSide side(char const *library, cRounds (*rounds)(int)) {
    return {library, [rounds](std::string const &size) {
                int const n = std::stoi(size);
                return cPrepared{static_cast<std::size_t>(n), size, rounds(n)};
            }};
}

} // namespace

std::vector<cWork> object_works() {
    std::vector<std::string> const sizes = {"1600", "16000", "160000"};
    return {
        {"find", sizes, {"160000"}, {side("qrv", find_qrv), side("nlohmann", find_nlohmann)}},
        {"append", sizes, {"160000"}, {side("qrv", append_qrv), side("nlohmann", append_nlohmann)}},
        {"clone", sizes, {"160000"}, {side("qrv", clone_qrv), side("nlohmann", clone_nlohmann)}},
    };
}
