// Flat maps with keys of 6 to 16 letters: filling, finding and replacing, compared with an ordered
// hash map of the same keys. Both store counted references to the same kind of object, created
// before the measurement. Only `map_ints`, which measures memory, creates its values during it.
#include "bench/row.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"

#include <tsl/ordered_map.h>

#include <memory>
#include <random>
#include <unordered_set>

namespace {

using cPeer = tsl::ordered_map<std::string, objref>;

std::vector<std::string> distinct_keys(int n) {
    std::mt19937 random(1);
    std::unordered_set<std::string> seen;
    std::vector<std::string> keys;
    while (keys.size() < static_cast<std::size_t>(n)) {
        std::string key(6 + random() % 11, ' ');
        for (char &letter : key) letter = static_cast<char>('a' + random() % 26);
        if (seen.insert(key).second) keys.push_back(std::move(key));
    }
    return keys;
}

struct cInput {
    explicit cInput(int n) : keys(distinct_keys(n)), shuffled(keys) {
        for (int i = 0; i < n; ++i) values.push_back(cat::of(i));
        std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(2));
        for (auto const &key : shuffled) key_objects.push_back(cat::of(key));
    }
    template <class Insert> void each(Insert insert) const {
        for (std::size_t i = 0; i < keys.size(); ++i) insert(keys[i], values[i]);
    }

    std::vector<std::string> keys, shuffled;
    std::vector<objref> values, key_objects;
};

struct cOurs {
    cRef<cMapObj> map = make<cMapObj>();
    cAttrHash &hash = map->datamap();

    void insert(std::string const &key, objref const &value) { hash.mapitem(key, value); }
    bool has(char const *key) const { return hash.find(key) != nullptr; }
    bool has(objref const &key) const { return hash.find(key) != nullptr; }
    bool has(std::string const &, objref const &key) const { return has(key); }
    void erase(std::string const &key) { hash.delitem(key); }
    std::size_t size() const { return hash.used(); }
};

// The peer. It uses the erasure that ignores the order, since `erase` would move all following
// entries.
struct cTheirs {
    cPeer map;

    void insert(std::string const &key, objref const &value) { map.insert_or_assign(key, value); }
    bool has(char const *key) const { return map.find(key) != map.end(); }
    bool has(std::string const &key, objref const &) const { return map.find(key) != map.end(); }
    void erase(std::string const &key) { map.unordered_erase(key); }
    std::size_t size() const { return map.size(); }
};

template <class Map> std::shared_ptr<Map> filled(cInput const &input) {
    auto map = std::make_shared<Map>();
    input.each([&](auto const &key, auto const &value) { map->insert(key, value); });
    return map;
}

std::function<std::string()> number(std::size_t n) {
    return [n] { return std::to_string(n); };
}

template <class Map> cRounds insert(int n) {
    return [input = std::make_shared<cInput>(n)](cRound &round) {
        Map map;
        round.measure([&] {
            input->each([&](auto const &key, auto const &value) { map.insert(key, value); });
        });
        round.answer = number(map.size());
    };
}

template <class Map> cRounds find_text(int n) {
    auto const input = std::make_shared<cInput>(n);
    return [input, map = filled<Map>(*input)](cRound &round) {
        std::size_t found = 0;
        round.measure([&] {
            for (auto const &key : input->shuffled) found += map->has(key.c_str());
        });
        round.answer = number(found);
    };
}

template <class Map> cRounds find_key(int n) {
    auto const input = std::make_shared<cInput>(n);
    return [input, map = filled<Map>(*input)](cRound &round) {
        std::size_t found = 0;
        round.measure([&] {
            for (std::size_t i = 0; i < input->shuffled.size(); ++i)
                found += map->has(input->shuffled[i], input->key_objects[i]);
        });
        round.answer = number(found);
    };
}

template <class Map> cRounds replace(int n) {
    auto const input = std::make_shared<cInput>(n);
    return [input, map = filled<Map>(*input)](cRound &round) {
        round.measure([&] {
            for (std::size_t i = 0; i < input->shuffled.size(); ++i) {
                map->erase(input->shuffled[i]);
                map->insert(input->shuffled[i], input->values[i]);
            }
        });
        round.answer = number(map->size());
    };
}

cRounds ints_qrv(int n) {
    return [keys = distinct_keys(n)](cRound &round) {
        cOurs map;
        round.measure([&] {
            int number = 0;
            for (auto const &key : keys) map.insert(key, cat::of(number++));
        });
        round.answer = number(map.size());
    };
}

cRounds ints_tsl(int n) {
    return [keys = distinct_keys(n)](cRound &round) {
        tsl::ordered_map<std::string, int> map;
        round.measure([&] {
            int number = 0;
            for (auto const &key : keys) map[key] = number++;
        });
        round.answer = number(map.size());
    };
}

cSide side(char const *library, cRounds (*rounds)(int)) {
    return {library, [rounds](std::string const &size) {
                int const n = std::stoi(size);
                return cPrepared{static_cast<std::size_t>(n), size, rounds(n)};
            }};
}

} // namespace

std::vector<cWork> map_works() {
    std::vector<std::string> const sizes = {"1000", "100000", "1000000"};
    auto const sides = [](auto ours, auto theirs) {
        return std::vector<cSide>{side("qrv", ours), side("ordered-map", theirs)};
    };
    return {
        {"map_insert", sizes, sizes, sides(insert<cOurs>, insert<cTheirs>)},
        {"map_find", sizes, sizes, sides(find_text<cOurs>, find_text<cTheirs>)},
        {"map_find_key", sizes, sizes, sides(find_key<cOurs>, find_key<cTheirs>)},
        {"map_replace", sizes, sizes, sides(replace<cOurs>, replace<cTheirs>)},
        {"map_ints", sizes, {"100000"}, sides(ints_qrv, ints_tsl)},
    };
}
