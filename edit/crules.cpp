#include "qrv/edit/crules.h"

#include "containers/as_map.h"
#include "edit/csnapshot.h"
#include "qrv/containers/cattspec.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>
#include <utility>

namespace qrv::edit {

namespace {

using Pairs = std::vector<std::pair<objref, objref>>;

// A copy of the keys and values, for loops that may run user code.
Pairs pairs_in(cMapObj const *map) {
    Pairs pairs;
    if (!map) return pairs;
    cAttrHash const &hash = map->datamap();
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node))
        pairs.emplace_back(node->key(), node->valref());
    return pairs;
}

bool is_attlist(cTypeObj const &type) { return &type.type() == &cat::typetype_attlist(); }
bool is_choice(cTypeObj const &type) { return &type.type() == &cat::typetype_choice(); }

class Check {
  public:
    explicit Check(cTypeObj &type) : type_(typeref::share(&type)) {}

    std::vector<BrokenRule> run(objref const &value) {
        bool const is_object = value && &value->type() == type_.get();
        if (is_attlist(*type_) && (is_object || cObj::is_map(value)))
            test_attributes(value, is_object);
        else if (is_choice(*type_) && !is_object && cObj::is_good(value))
            test_choice(value);
        else if (!is_object)
            add(Rule::type, nullptr, type_, value);
        return std::move(found_);
    }

  private:
    void test_attributes(objref const &value, bool is_object) {
        cMapObj const *const map = cat::as_map(value);
        for (auto const &[key, attribute] : pairs_in(map)) test(key, attribute);
        if (is_object || !map) return; // an object gets all declared keys when it is created
        objref const specs = type_->tmember("attspec");
        for (auto const &[key, spec] : pairs_in(cat::as_map(specs))) {
            auto const *const attspec = dynamic_cast<cAttspec const *>(spec.get());
            if (attspec && attspec->is_required() && !map->datamap().find(key))
                add(Rule::required, key, nullptr, nullptr);
        }
    }

    // Like the library's own test, but continues after the first broken rule.
    void test(objref const &key, objref const &value) {
        objref const declared = type_->getattr(key); // RUNS USER CODE
        auto const *const spec = dynamic_cast<cAttspec const *>(declared.get());
        if (!spec) return add(Rule::declared, key, nullptr, value);
        if (spec->is_required() && cObj::is_void(value))
            return add(Rule::required, key, nullptr, value);
        cTypeObj *const type = spec->get_type();
        if (type && value != cat::nil() && (!value || &value->type() != type))
            return add(Rule::type, key, objref::share(type), value);
        if (spec->is_fixref() && value != spec->get_default())
            add(Rule::fixed, key, spec->get_default(), value);
    }

    void test_choice(objref const &key) {
        objref const choices = type_->tmember("choices");
        cMapObj const *const map = cat::as_map(choices);
        if (!map || !map->datamap().find(key)) add(Rule::choice, nullptr, nullptr, key);
    }

    void add(Rule rule, objref const &key, objref const &expected, objref const &actual) {
        found_.push_back({rule, "", type_, key, expected, actual});
    }

    typeref type_;
    std::vector<BrokenRule> found_;
};

// Visits containers in the order of the tree. A program can nest them deeper than the stack allows,
// so the waiting ones are in a list, the next one last. Creates the text of a path only for a
// broken rule.
class Walk {
  public:
    std::vector<BrokenRule> run(objref const &value, cTypeObj &type) {
        take(broken_rules(value, type), 0);
        seen_.emplace(value.get(), value);
        enter(value, 0);
        while (!todo_.empty()) {
            auto const [inside, step] = std::move(todo_.back());
            todo_.pop_back();
            if (!seen_.emplace(inside.get(), inside).second) continue;
            if (is_attlist(inside->type())) take(broken_rules(inside, inside->type()), step);
            enter(inside, step);
        }
        return std::move(found_);
    }

  private:
    struct Step {
        std::size_t from; // an index in steps_
        objref key;
    };

    void take(std::vector<BrokenRule> &&broken, std::size_t step) {
        std::string const path = broken.empty() ? "" : path_to(step);
        for (BrokenRule &rule : broken) {
            rule.path = path;
            found_.push_back(std::move(rule));
        }
    }

    std::string path_to(std::size_t step) const {
        std::vector<objref> keys;
        for (; step != 0; step = steps_[step].from) keys.push_back(steps_[step].key);
        std::string path;
        for (std::size_t i = keys.size(); i-- > 0;) {
            path += '/';
            path += cat::as_text(keys[i]); // RUNS USER CODE
        }
        return path;
    }

    void enter(objref const &value, std::size_t step) {
        auto const first = static_cast<std::ptrdiff_t>(todo_.size());
        for (auto const &[key, inside] : pairs_in(container_in(value))) {
            if (!container_in(inside) || seen_.contains(inside.get())) continue;
            todo_.emplace_back(inside, steps_.size());
            steps_.push_back({step, key});
        }
        std::reverse(todo_.begin() + first, todo_.end());
    }

    std::vector<Step> steps_{{0, nullptr}}; // the first one is the value itself
    std::vector<std::pair<objref, std::size_t>> todo_;
    std::unordered_map<cObj const *, objref>
        seen_; // holds them: user code may remove them from the value
    std::vector<BrokenRule> found_;
};

} // namespace

std::vector<BrokenRule> broken_rules(objref const &value, cTypeObj &type) {
    return Check(type).run(value);
}

std::vector<BrokenRule> all_broken_rules(objref const &value, cTypeObj &type) {
    return Walk().run(value, type);
}

} // namespace qrv::edit
