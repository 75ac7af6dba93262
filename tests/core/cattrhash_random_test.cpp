// The attribute hash against a model that is too simple to be wrong: a list of pairs.
#include "qrv/core/cattrhash.h"

#include "tests/core/hash_support.h"
#include "tests/support/fixture.h"

#include <algorithm>
#include <random>
#include <variant>

namespace {

class HashModel : public QrvTest {};

using cKey = std::variant<int, std::string, double>;

objref object(cKey const &key) {
    return std::visit([](auto const &value) { return cat::of(value); }, key);
}

struct cModel {
    std::vector<std::pair<cKey, int>> items;

    size_t find(cKey const &key) const {
        auto const at =
            std::find_if(items.begin(), items.end(), [&](auto &item) { return item.first == key; });
        return static_cast<size_t>(at - items.begin());
    }
    bool has(cKey const &key) const { return find(key) < items.size(); }
    void map(cKey const &key, int value) {
        if (has(key))
            items[find(key)].second = value;
        else
            items.emplace_back(key, value);
    }
    void remove(cKey const &key) {
        if (has(key)) items.erase(items.begin() + static_cast<std::ptrdiff_t>(find(key)));
    }
    void move_before(cKey const &key, cKey const &place) {
        if (key == place) return;
        auto const item = items[find(key)];
        remove(key);
        items.insert(items.begin() + static_cast<std::ptrdiff_t>(find(place)), item);
    }
    void rename(cKey const &from, cKey const &to) {
        if (!has(from) || from == to) return;
        remove(to);
        items[find(from)].first = to;
    }
    int after_last() const {
        int greatest = -1;
        for (auto const &[key, value] : items) {
            if (auto const *number = std::get_if<int>(&key)) greatest = std::max(greatest, *number);
            if (auto const *real = std::get_if<double>(&key))
                greatest = std::max(greatest, static_cast<int>(*real));
        }
        return greatest + 1;
    }
    bool is_vector() const {
        for (size_t i = 0; i < items.size(); ++i)
            if (items[i].first != cKey(static_cast<int>(i))) return false;
        return true;
    }
    void set_vector() {
        for (size_t i = 0; i < items.size(); ++i) items[i].first = static_cast<int>(i);
    }
    void erase_place(size_t i) {
        if (i >= items.size()) return;
        for (; i + 1 < items.size(); ++i) items[i].second = items[i + 1].second;
        items.pop_back();
    }
    void insert_place(size_t i, int value) {
        items.emplace_back(after_last(), 0);
        for (size_t j = items.size() - 1; j > i; --j) items[j].second = items[j - 1].second;
        items[i].second = value;
    }
    std::string ring() const {
        std::string text;
        for (auto const &[key, value] : items)
            text += short_text(object(key)) + "=" + std::to_string(value) + " ";
        return text;
    }
};

class cTwins {
  public:
    cTwins(unsigned int seed, int range) : random_(seed), range_(range) {}

    void step() {
        cKey const key = any_key(), other = any_key();
        int const value = ++serial_;
        auto const place = static_cast<size_t>(any(static_cast<int>(model_.items.size()) + 1));
        switch (any(16)) {
        case 0:
        case 1:
        case 2:
        case 3:
            EXPECT_TRUE(hash_.mapitem(object(key), cat::of(value)));
            model_.map(key, value);
            break;
        case 4:
        case 5:
            EXPECT_TRUE(hash_.delitem(object(key)));
            model_.remove(key);
            break;
        case 6:
            EXPECT_EQ(hash_.setitem(object(key), cat::of(value)), model_.has(key));
            if (model_.has(key)) model_.map(key, value);
            break;
        case 7:
            hash_.rename(object(key), object(other));
            model_.rename(key, other);
            break;
        case 8: {
            cAttrNode *const before = hash_.find(object(other));
            EXPECT_EQ(before != nullptr, model_.has(other));
            hash_.insert(object(key), cat::of(value), before);
            model_.map(key, value);
            if (before) model_.move_before(key, other);
            break;
        }
        case 9:
        case 10:
            EXPECT_EQ(hash_.vect_append(cat::of(value)), true);
            model_.items.emplace_back(model_.after_last(), value);
            break;
        case 11:
            EXPECT_TRUE(hash_.vect_erase(static_cast<int>(place)));
            model_.erase_place(place);
            break;
        case 12:
            EXPECT_TRUE(hash_.vect_insert(static_cast<int>(place), cat::of(value)));
            model_.insert_place(place, value);
            break;
        case 13:
            if (any(20) == 0) hash_.set_vector(), model_.set_vector();
            break;
        case 14:
            if (any(100) == 0) hash_.clear(), model_.items.clear();
            break;
        case 15:
            hash_.mapitem(object(key), objref());
            model_.remove(key);
            break;
        }
        compare(key, place);
    }
    void compare_all() {
        ASSERT_EQ(ring(hash_), model_.ring());
        ASSERT_EQ(hash_.broken_rule(true), "");
    }

  private:
    int any(int below) { return static_cast<int>(random_() % static_cast<unsigned int>(below)); }
    cKey any_key() {
        int const number = any(range_) - 3;
        switch (any(6)) {
        case 0:
            return "k" + std::to_string(number);
        case 1:
            return number + 0.5;
        default:
            return number;
        }
    }
    void compare(cKey const &key, size_t place) {
        ASSERT_EQ(hash_.used(), model_.items.size());
        ASSERT_EQ(hash_.is_vector(), model_.is_vector());
        ASSERT_EQ(hash_.after_last_index(), model_.after_last());
        ASSERT_EQ(hash_.find(object(key)) != nullptr, model_.has(key));
        cAttrNode const *const node = hash_.findpos(static_cast<unsigned int>(place));
        ASSERT_EQ(node != nullptr, place < model_.items.size());
        if (!node) return;
        ASSERT_EQ(short_text(node->key()), short_text(object(model_.items[place].first)));
        ASSERT_EQ(val<int>(node->valref()), model_.items[place].second);
        ASSERT_EQ(hash_.posofkey(node->key()), static_cast<int>(place));
    }

    std::mt19937 random_;
    int range_;
    int serial_ = 0;
    cAttrHash hash_{nullptr};
    cModel model_;
};

void run(unsigned int seed, int range, int steps) {
    SCOPED_TRACE(seed);
    cTwins twins(seed, range);
    for (int i = 0; i < steps; ++i) {
        twins.step();
        if (i % 16 == 0) twins.compare_all();
        if (testing::Test::HasFailure()) return;
    }
    twins.compare_all();
}

} // namespace

TEST_F(HashModel, a_hash_with_few_keys_follows_the_model) {
    for (unsigned int seed = 0; seed < 30; ++seed) run(seed, 6, 600);
}

TEST_F(HashModel, a_hash_with_many_keys_follows_the_model) {
    for (unsigned int seed = 100; seed < 106; ++seed) run(seed, 300, 2500);
}

// Vectors only: positions and indices by the table against those by the walk.
TEST_F(HashModel, vectors) {
    std::mt19937 random(7);
    cAttrHash hash(nullptr);
    std::vector<int> model;
    for (int i = 0; i < 5000; ++i) {
        auto const place = static_cast<int>(random() % (model.size() + 1));
        if (random() % 5 < 3) {
            ASSERT_TRUE(hash.vect_insert(place, cat::of(i)));
            model.insert(model.begin() + place, i);
        } else {
            ASSERT_TRUE(hash.vect_erase(place));
            if (place < static_cast<int>(model.size())) model.erase(model.begin() + place);
        }
        ASSERT_TRUE(hash.is_vector());
        ASSERT_EQ(hash.used(), model.size());
        if (model.size() > 200) hash.clear(), model.clear();
        for (size_t j = 0; j < model.size(); j += 1 + random() % 40)
            ASSERT_EQ(val<int>(hash.findpos(static_cast<unsigned int>(j))->valref()), model[j]);
    }
}
