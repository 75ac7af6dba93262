// Direct copies equal the copies that the methods of the types create. A type whose entries were
// changed once is never again treated as the library's, so this is a separate process: first all
// copies are made directly, then strings and ints get entries of their types that do the same.

#include "containers/cplain_copy.h"
#include "process.h"
#include "qrv/core/cexe.h"
#include "qrv/core/ctypes.h"
#include "tests/containers/trees.h"

#include <map>
#include <random>
#include <string>
#include <vector>

namespace {

constinit cProcedure1 library_create = nullptr;
bool own_create(cObj &obj) { return library_create(obj); }

void give_own_entries() {
    library_create = reinterpret_cast<cProcedure1>(cat::type_int().method(mid_create));
    for (cTypeObj *type : {&cat::type_int(), &cat::type_string()})
        type->set_tmember("create", make<cExeMember>(own_create));
}

// Random containers with shared parts and cycles.
class cGraph {
  public:
    explicit cGraph(unsigned seed) : random_(seed) {}

    objref container(int depth) {
        unsigned const kind = below(8);
        objref const made = kind < 4   ? objref(make<cMapObj>())
                            : kind < 7 ? objref(make<cVectorObj>())
                                       : objref(make<cSetObj>());
        cAttrHash &hash = dynamic_cast<cMapObj &>(*made).datamap();
        if (below(3) == 0) parts_.push_back(made);
        for (unsigned n = depth == 0 && below(20) == 0 ? 90 : below(8); n > 0; --n) {
            objref const part = below(40) == 0 ? made : value(depth);
            if (kind < 4)
                hash.mapitem(key(), part);
            else
                made->append(part);
        }
        if (below(10) == 0) made->set_omember("//", cat::of("comment"));
        if (below(20) == 0) hash.insert(cat::of("nothing"), nullptr, nullptr);
        return made;
    }

  private:
    unsigned below(unsigned n) { return static_cast<unsigned>(random_() % n); }
    objref key() {
        if (below(30) == 0) return cat::of(0.5 * below(4));
        return below(3) ? cat::of("k" + std::to_string(below(200))) : cat::of(below(40));
    }
    objref value(int depth) {
        if (!parts_.empty() && below(9) == 0) return parts_[below(unsigned(parts_.size()))];
        if (depth > 0 && below(3) == 0) return container(depth - 1);
        objref made = scalar();
        if (below(20) == 0) parts_.push_back(made);
        return made;
    }
    objref scalar() {
        switch (below(9)) {
        case 0:
            return cat::of(2.5);
        case 1:
            return cat::of(1.5f);
        case 2:
            return cat::of(below(2) == 0);
        case 3:
            return cat::nil();
        case 4:
            return cat::of(std::string(40, 'x'));
        case 5: {
            objref made = cat::of(5);
            made->setflags(of_const);
            return made;
        }
        default:
            return below(2) ? cat::of(below(1000)) : cat::of("s" + std::to_string(below(100)));
        }
    }

    std::mt19937 random_;
    std::vector<objref> parts_;
};

// All visible properties of a graph: values, keys, flags, counts, slots, and what is shared.
class cPicture {
  public:
    std::string of(objref const &root) {
        add(root);
        std::string order;
        for (auto const &[id, number] : ids_) order += " " + std::to_string(number);
        return text_ + order;
    }

  private:
    void add(objref const &value) {
        if (!value) return void(text_ += "null;");
        auto const [place, is_new] = seen_.try_emplace(value.get(), seen_.size());
        text_ += "#" + std::to_string(place->second);
        if (!is_new) return;
        if (value->obid()) ids_[value->obid()] = place->second;
        text_ += value->type().name() + " " + std::to_string(value->flags());
        if (value != cat::nil()) text_ += " " + std::to_string(value->refs());
        auto const *const map = dynamic_cast<cMapObj const *>(value.get());
        if (!map) return void(text_ += " " + trees::shape(value) + ";");
        cAttrHash const &hash = map->datamap();
        text_ += " " + std::to_string(hash.slots()) + hash.broken_rule(true) + "{";
        for (cAttrNode const *node = hash.first(); node; node = hash.next(node)) {
            text_ += node->key_as_string() + (node->map() == &hash ? "=" : "~");
            add(node->valref());
        }
        text_ += "}";
    }

    std::string text_;
    std::map<cObj const *, size_t> seen_;
    std::map<unsigned, size_t> ids_; // in the order of creation
};

// Breaks the cycles.
void empty_all(objref const &root) {
    std::vector<objref> values{root};
    for (size_t i = 0; i < values.size(); ++i) {
        auto *const map = dynamic_cast<cMapObj *>(values[i].get());
        if (!map) continue;
        for (cAttrNode const *node : cat::nodes_of(map->datamap()))
            values.push_back(node->valref());
        map->clear();
    }
}

using cWork = objref (*)(objref const &source);

objref cloned(objref const &source) { return source->clone(); }

objref copied_deep(objref const &source) {
    objref const copy = source->clone();
    cat::detach(copy, true);
    return copy;
}

objref detached(objref const &source) {
    objref const copy = source->clone();
    dynamic_cast<cMapObj &>(*copy).detach(false);
    return copy;
}

objref merged(objref const &source) {
    objref const target = source->type().newobj();
    target->attrcopy(*source, cObj::is_map(source) ? "-xs" : "-xx");
    return target;
}

// The visible properties of the result and of its source, and the number of new objects.
std::string picture_of(unsigned seed, cWork work) {
    objref const source = cGraph(seed).container(3);
    auto const before = cObj::ob_count();
    objref const result = work(source);
    std::string const count = std::to_string(cObj::ob_count() - before);
    std::string const picture = cPicture().of(result) + " " + cPicture().of(source) + " " + count;
    empty_all(result);
    empty_all(source);
    return picture;
}

std::vector<std::string> all_pictures() {
    std::vector<std::string> pictures;
    for (cWork const work : {cloned, copied_deep, detached, merged})
        for (unsigned seed = 0; seed < 200; ++seed) pictures.push_back(picture_of(seed, work));
    return pictures;
}

void check_sizes() {
    for (int size : {0, 1, 8, 9, 16, 17, 77, 78, 157, 158, 1000}) {
        auto const map = make<cMapObj>();
        for (int i = 0; i < size; ++i) map->datamap().mapitem(cat::of(2 * i), cat::of(i));
        for (objref const &source : {objref(map), objref(trees::ints(size))}) {
            CHECK(cat::copies_plainly(*source));
            objref const copy = source->clone();
            cAttrHash const &hash = dynamic_cast<cMapObj &>(*copy).datamap();
            CHECK(hash.slots() == dynamic_cast<cMapObj &>(*source).datamap().slots());
            CHECK(hash.broken_rule(true).empty());
            CHECK(hash.is_vector() == (size < 2 || !cObj::is_map(source)));
            for (int i = 0; i < size; ++i) CHECK(hash.find(cObj::is_map(source) ? 2 * i : i));
        }
    }
}

void check_what_is_plain() {
    auto const map = trees::map({{"a", 1}});
    CHECK(cat::copies_plainly(*map));
    CHECK(!cat::copies_plainly(*trees::set({1})));
    CHECK(!cat::copies_plainly(*trees::map({{cat::of(0.5), 1}})));
    map->datamap().insert(cat::of("null"), nullptr, nullptr);
    CHECK(!cat::copies_plainly(*map));
    CHECK(trees::shape(cat::clone_plainly(*cat::of("text"))) == "text");
    CHECK(!cat::clone_plainly(*map));
    CHECK(!cat::clone_plainly(*cat::nil()));
    objref const claims = cat::of(5);
    claims->set_type(&cat::type_string());
    CHECK(!cat::clone_plainly(*claims));
}

// The methods would notice that the target is inside the part, and report a cycle.
void check_a_part_that_holds_the_target() {
    auto const target = make<cMapObj>();
    auto const part = trees::map({{"target", objref(target)}});
    auto const source = trees::map({{"part", objref(part)}});
    CHECK(!cat::copy_plainly(*target, *source));
    CHECK(cat::copy_plainly(*make<cMapObj>(), *source));
    part->clear();
}

} // namespace

int main() {
    check_sizes();
    check_what_is_plain();
    check_a_part_that_holds_the_target();
    std::vector<std::string> const directly = all_pictures();
    give_own_entries();
    CHECK(!cat::clone_plainly(*cat::of(5)));
    CHECK(!cat::copies_plainly(*trees::map({{"a", 1}})));
    CHECK(all_pictures() == directly);
    return failures ? 1 : 0;
}
