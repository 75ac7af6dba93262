#include "bench/data.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <random>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace {

struct cMap;

// A key with a map, or with another value as text in both formats.
struct cEntry {
    std::string key;
    cMap *map = nullptr;
    std::string attr, json;
};

struct cMap {
    std::vector<cEntry> entries;
};

// Does not use the distributions of the standard library, which differ between implementations.
class cTreeMaker {
  public:
    cTreeMaker(std::size_t bytes, int words) : random_(bytes + static_cast<unsigned>(words)) {
        for (int i = 0; i < words; ++i) vocabulary_.push_back(name());
        maps_.emplace_back();
        for (std::size_t at = 0; at < maps_.size(); ++at) {
            std::size_t const waiting = maps_.size() - at - 1;
            fill(maps_[at], bytes_ + waiting * bytes_of_a_map < bytes);
        }
    }

    cData take() {
        write(maps_.front(), 0);
        data_.attr += '\n';
        return std::move(data_);
    }

  private:
    static constexpr std::size_t bytes_of_a_map = 300;

    int between(int low, int high) {
        return low + static_cast<int>(random_() % static_cast<unsigned>(high - low + 1));
    }
    double share() { return static_cast<double>(random_() >> 11) * 0x1p-53; } // from 0 below 1
    char letter() { return static_cast<char>('a' + between(0, 25)); }

    std::string name() {
        static constexpr char more[] =
            "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
        std::string text(1, letter());
        for (int n = between(3, 15); n; --n) text += more[between(0, sizeof more - 2)];
        return text;
    }

    std::string words() {
        std::string text;
        for (int n = between(2, 6); n; --n) {
            if (!text.empty()) text += ' ';
            for (int size = between(2, 9); size; --size) text += letter();
        }
        return text;
    }

    std::string integer() {
        auto const power = [this] { return static_cast<int>(std::pow(10, between(1, 9))); };
        int const low = -power();
        return std::to_string(between(low, power()));
    }

    // A number with a point, which our format needs, and with few enough digits for plain text.
    std::string number() {
        char text[32];
        double const value = (share() * 2 - 1) * std::pow(10, between(-2, 4));
        std::snprintf(text, sizeof text, "%.*g", between(1, 5), value);
        std::string made = text;
        if (made.find('.') == std::string::npos)
            made.insert(std::min(made.find('e'), made.size()), ".0");
        return made;
    }

    void make_list(cEntry &entry) {
        for (int n = between(3, 10); n; --n) {
            std::string const element = std::to_string(between(-100'000, 100'000));
            entry.json += entry.json.empty() ? "[" : ",";
            entry.json += element;
            entry.attr += element + ", ";
            ++data_.entries;
        }
        entry.json += ']';
        entry.attr = '[' + entry.attr + ']';
    }

    void make_leaf(cEntry &entry) {
        double const kind = share();
        if (kind < 0.40) {
            entry.attr = entry.json = integer();
        } else if (kind < 0.60) {
            entry.attr = entry.json = number();
        } else if (kind < 0.75) {
            entry.attr = name();
            entry.json = '"' + entry.attr + '"';
        } else if (kind < 0.90) {
            entry.attr = entry.json = '"' + words() + '"';
        } else if (kind < 0.95) {
            entry.attr = entry.json = between(0, 1) ? "true" : "false";
        } else {
            make_list(entry);
        }
    }

    void fill(cMap &map, bool grow) {
        int const most = between(5, 20);
        for (int i = 0; i < most; ++i) {
            cEntry entry;
            entry.key = vocabulary_.empty() ? name() : vocabulary_[random_() % vocabulary_.size()];
            auto const same = [&](cEntry const &other) { return other.key == entry.key; };
            if (std::ranges::any_of(map.entries, same)) continue;
            if (entry.key == "true" || entry.key == "false") continue;
            if (grow && (i == 0 || share() < 0.2))
                entry.map = &maps_.emplace_back(); // a deque: the other maps do not move
            else
                make_leaf(entry);
            bytes_ += entry.key.size() + 4 + (entry.map ? 2 : entry.json.size());
            ++data_.entries;
            map.entries.push_back(std::move(entry));
        }
    }

    void write(cMap const &map, std::size_t level) {
        data_.attr += "{\n";
        char before = '{';
        for (cEntry const &entry : map.entries) {
            data_.attr += std::string(2 * level + 2, ' ') + entry.key + "= " + entry.attr;
            data_.json += before + ('"' + entry.key) + "\":" + entry.json;
            if (entry.map) write(*entry.map, level + 1);
            data_.attr += ";\n";
            before = ',';
        }
        data_.attr += std::string(2 * level, ' ') + '}';
        data_.json += '}';
    }

    std::mt19937_64 random_;
    std::vector<std::string> vocabulary_;
    std::deque<cMap> maps_; // breadth first: each map before the maps in it
    std::size_t bytes_ = 0;
    cData data_;
};

cData flat_map(int keys) {
    cData data;
    data.entries = static_cast<std::size_t>(keys);
    data.attr = "{\n";
    for (int i = 0; i < keys; ++i) {
        std::string const number = std::to_string(i);
        data.attr += "  key" + number + "= " + number + ";\n";
        data.json += (i ? ",\"key" : "{\"key") + number + "\":" + number;
    }
    data.attr += "}\n";
    data.json += '}';
    return data;
}

} // namespace

cData data_of(std::string const &name) {
    int number = 0;
    char const *const end = name.data() + name.size();
    std::string_view unit(std::from_chars(name.data(), end, number).ptr, end);
    bool const counts = number > 0 && number < 100'000'000 && name.front() != '0';
    if (counts && unit.empty()) return flat_map(number);
    bool const repeats_keys = unit.ends_with('v');
    if (repeats_keys) unit.remove_suffix(1);
    if (!counts || (unit != "k" && unit != "M"))
        throw std::invalid_argument("no data has the name " + name);
    std::size_t const factor = unit == "k" ? 1'000 : 1'000'000;
    return cTreeMaker(static_cast<std::size_t>(number) * factor, repeats_keys ? 400 : 0).take();
}
