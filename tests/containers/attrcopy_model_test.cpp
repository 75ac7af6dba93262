// attrcopy, assign and += compared with a simple model: every command of up to four letters on
// small random trees. The model works on copies of the same trees; results, shapes, the identity of
// objects, and errors must agree.

#include "containers/as_map.h"
#include "tests/containers/trees.h"
#include "tests/support/fixture.h"

#include <map>
#include <random>

using namespace trees;

namespace {

cAttrHash *hash_of(cObj *obj) {
    cMapObj *const map = cat::as_map(obj);
    return map ? &map->datamap() : nullptr;
}

std::vector<std::pair<objref, objref>> pairs_of(cObj *obj) {
    std::vector<std::pair<objref, objref>> pairs;
    if (cAttrHash const *const hash = hash_of(obj))
        for (cAttrNode const *node = hash->first(); node; node = hash->next(node))
            pairs.emplace_back(node->key(), node->valref());
    return pairs;
}

bool is_sequence(cObj *obj) { return cObj::is_vector(obj) || cObj::is_set(obj); }

// --- the model

bool model_copy(objref const &target, objref const &source, std::string const &commands);

bool model_assign(objref const &target, objref const &source) {
    if (cObj::is_void(target)) return false;
    if (cObj::is_void(source)) return true;
    if (cObj::is_map(target)) return model_copy(target, source, "0as");
    if (cObj::is_vector(target)) return model_copy(target, source, "0ax");
    if (!cObj::is_set(target)) return target->assign(source);
    hash_of(target)->clear();
    for (auto const &[key, value] : pairs_of(source)) target->append(value);
    return true;
}

std::string model_letters(std::string const &commands) {
    std::string const given = commands.substr(0, 3);
    if (given.find('?') == std::string::npos) return given;
    std::string letters = "0as"; // the member "cpcommands" of map, vector and set
    for (size_t i = 0; i < given.size(); ++i)
        if (given[i] != '?') letters[i] = given[i];
    return letters;
}

bool model_merge(objref const &target, objref const &key, objref const &value) {
    objref const present = target->getattr(key);
    if (cObj::is_map(present)) return model_copy(present, value, "-xx");
    if (!is_sequence(present)) return model_assign(present, value);
    if (is_sequence(value)) return model_copy(present, value, "-xx");
    present->append(value);
    return true;
}

bool model_copy(objref const &target, objref const &source, std::string const &commands) {
    if (!hash_of(source)) return false;
    std::string letters = model_letters(commands);
    letters.resize(3, '\0');
    std::vector<std::pair<objref, size_t>> list;
    cAttrHash const *const own = hash_of(target);
    for (auto const &[key, value] : pairs_of(target))
        list.emplace_back(key, hash_of(source)->find(key) ? 1 : 0);
    for (auto const &[key, value] : pairs_of(source))
        if (!own || !own->find(key)) list.emplace_back(key, 2);
    bool const seq = is_sequence(target);
    bool result = true;
    for (auto const &[key, key_class] : list) {
        char const c = letters[key_class];
        objref const value = key_class == 0 ? objref() : source->getattr(key);
        if (key_class == 0 || (key_class == 1 && c == '0')) {
            if (c == '0' && !seq) result &= target->setattr(key, nullptr);
        } else if (c == 'x' && seq) {
            target->append(value);
        } else if (c == 's' || (c == 'x' && key_class == 2)) {
            result &= target->setattr(key, value);
        } else if (c == 'x') {
            result &= model_merge(target, key, value);
        } else if (c == 'a' && key_class == 1) {
            result &= model_assign(target->getattr(key), value);
        }
    }
    if (seq)
        for (auto item = list.rbegin(); item != list.rend(); ++item)
            if (item->second < 2 && letters[item->second] == '0')
                result &= target->setattr(item->first, nullptr);
    return result;
}

bool model_add(objref const &target, objref const &source) {
    objref copy = cObj::is_map(source)      ? objref(make<cMapObj>())
                  : cObj::is_vector(source) ? objref(make<cVectorObj>())
                                            : objref(make<cSetObj>());
    model_assign(copy, source);
    for (auto const &[key, value] : pairs_of(copy)) {
        if (!cObj::is_map(target))
            target->append(value);
        else if (!hash_of(target)->find(key))
            target->setattr(key, value);
    }
    return true;
}

// --- trees and their comparison

// Trees generated from a seed; each object has the number of its creation.
class cWorld {
  public:
    explicit cWorld(unsigned seed) : random_(seed) {}

    objref container(int depth) {
        objref const made = below(3) == 0   ? objref(make<cMapObj>())
                            : below(2) == 0 ? objref(make<cVectorObj>())
                                            : objref(make<cSetObj>());
        note(made);
        for (int count = below(5); count > 0; --count) {
            objref const value = depth > 0 && below(3) == 0 ? container(depth - 1) : scalar();
            if (!cObj::is_map(made))
                made->append(value);
            else
                hash_of(made)->mapitem(key(), value);
        }
        return made;
    }

    // The shape, with the number of each generated object. Objects created later have none.
    std::string text(cObj *obj) const {
        auto const birth = births_.find(obj);
        std::string result = birth == births_.end() ? "" : std::to_string(birth->second) + ":";
        if (!hash_of(obj)) return result + shape(obj);
        result += is_sequence(obj) ? (cObj::is_set(obj) ? "<" : "[") : "{";
        for (auto const &[key, value] : pairs_of(obj))
            result += shape(key) + "=" + text(value) + " ";
        return result + "}";
    }

    int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

  private:
    void note(objref const &obj) {
        births_.emplace(obj.get(), births_.size());
        held_.push_back(obj);
    }
    objref scalar() {
        int const number = below(5);
        if (number == 4) return cat::nil();
        objref const made = of(number);
        note(made);
        return made;
    }
    objref key() {
        int const number = below(6);
        return number < 4 ? of(number) : of(number == 4 ? "a" : "b");
    }

    std::mt19937 random_;
    std::map<cObj const *, size_t> births_;
    std::vector<objref> held_;
};

// Target and source for a seed; sometimes the target itself or a part of it is the source.
std::pair<objref, objref> grow(cWorld &world) {
    objref const target = world.container(2);
    objref const source = world.container(2);
    switch (world.below(8)) {
    case 0:
        return {target, target};
    case 1: {
        auto const pairs = pairs_of(target);
        return {target, pairs.empty() ? source : pairs.front().second};
    }
    default:
        return {target, source};
    }
}

template <class Real, class Model> void compare(unsigned seed, Real real, Model model) {
    cWorld one(seed), two(seed);
    auto const [target, source] = grow(one);
    auto const [model_target, model_source] = grow(two);
    std::string const before = one.text(target) + " from " + one.text(source);
    cErrorLog errors;
    bool const result = real(target, source);
    std::string const said = errors.text();
    errors.clear();
    EXPECT_EQ(result, model(model_target, model_source)) << before;
    EXPECT_EQ(one.text(target), two.text(model_target)) << before;
    EXPECT_EQ(one.text(source), two.text(model_source)) << before;
    EXPECT_EQ(said, errors.text()) << before;
    for (objref const &obj : {target, source}) {
        if (hash_of(obj)) {
            EXPECT_EQ(hash_of(obj)->broken_rule(true), "") << before;
        }
    }
}

class AttrcopyModel : public QrvTest {};

TEST_F(AttrcopyModel, every_command_of_up_to_four_letters_follows_the_model) {
    std::string const alphabet = "0asx-?";
    std::vector<std::string> commands = {""};
    for (size_t i = 0; i < commands.size(); ++i)
        if (commands[i].size() < 4)
            for (char const letter : alphabet) commands.push_back(commands[i] + letter);
    unsigned seed = 0;
    for (std::string const &command : commands) {
        SCOPED_TRACE("command '" + command + "'");
        for (int round = 0; round < 12 && !HasFailure(); ++round)
            compare(
                ++seed,
                [&](objref const &t, objref const &s) { return t->attrcopy(*s, command.c_str()); },
                [&](objref const &t, objref const &s) { return model_copy(t, s, command); });
    }
}

TEST_F(AttrcopyModel, assigning) {
    for (unsigned seed = 1; seed < 3000 && !HasFailure(); ++seed)
        compare(
            seed, [](objref const &t, objref const &s) { return t->assign(s); },
            [](objref const &t, objref const &s) { return model_assign(t, s); });
}

TEST_F(AttrcopyModel, adding) {
    for (unsigned seed = 1; seed < 3000 && !HasFailure(); ++seed)
        compare(
            seed, [](objref const &t, objref const &s) { return t->add(s); },
            [](objref const &t, objref const &s) { return !hash_of(s) || model_add(t, s); });
}

} // namespace
