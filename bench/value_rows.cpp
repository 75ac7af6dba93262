// qrv::value compared with the object system underneath: reading an int at a path of three keys,
// walking the values of a vector, and building a tree from the inside out.
#include "bench/row.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/value.h"

namespace {

// {a= {b= {c= i}}}, n times.
std::vector<qrv::value> trees(int n) {
    std::vector<qrv::value> result;
    for (int i = 0; i < n; ++i) result.emplace_back().set("a/b/c", i);
    return result;
}

cRounds get_by_path(int n) {
    return [trees = trees(n)](cRound &round) {
        long long sum = 0;
        round.measure([&] {
            for (qrv::value const &tree : trees) sum += *tree.get<int>("a/b/c");
        });
        round.answer = [sum] { return std::to_string(sum); };
    };
}

// The object at a key of a map, and the int in an object.
cObj *entry(cObj *object, std::string_view key) {
    if (!object || object->object_class() != cObjClass::map) return nullptr;
    cAttrNode const *const node = static_cast<cMapObj *>(object)->datamap().find(key);
    return node ? node->valref().get() : nullptr;
}

int number(cObj const *object) {
    if (!object || object->object_class() != cObjClass::integer) stop("value_get: not an int");
    return static_cast<cObjDR<int> const *>(object)->val();
}

cRounds get_by_calls(int n) {
    std::vector<objref> objects;
    for (qrv::value const &tree : trees(n)) objects.push_back(tree.object());
    return [objects](cRound &round) {
        long long sum = 0;
        round.measure([&] {
            for (objref const &tree : objects)
                sum += number(entry(entry(entry(tree, "a"), "b"), "c"));
        });
        round.answer = [sum] { return std::to_string(sum); };
    };
}

qrv::value vector_of(int n) {
    qrv::value result;
    for (int i = 0; i < n; ++i) result.push_back(i);
    return result;
}

cRounds walk_values(int n) {
    return [vector = vector_of(n)](cRound &round) {
        long long sum = 0;
        round.measure([&] {
            for (qrv::value const &item : vector) sum += item.get<int>();
        });
        round.answer = [sum] { return std::to_string(sum); };
    };
}

cRounds walk_nodes(int n) {
    return [object = vector_of(n).object()](cRound &round) {
        long long sum = 0;
        round.measure([&] {
            cAttrHash const &hash = static_cast<cMapObj const &>(*object).datamap();
            for (cAttrNode *node = hash.first(); node; node = hash.next(node))
                sum += number(objref(node->valref()));
        });
        round.answer = [sum] { return std::to_string(sum); };
    };
}

// {a= i; b= {a= i - 1; b= ... }}. The answer is the sum of its ints.
template <class Nest> cRounds build_inside_out(int n, Nest const &nest) {
    return [n, nest](cRound &round) {
        qrv::value tree;
        round.measure([&] {
            for (int i = 0; i < n; ++i) tree = nest(tree, i);
        });
        round.answer = [tree] {
            long long sum = 0;
            for (qrv::value at = tree; !at.is_nil(); at = at["b"]) sum += at["a"].get<int>();
            return std::to_string(sum);
        };
    };
}

cRounds build_values(int n) {
    return build_inside_out(n, [](qrv::value const &inner, int i) -> qrv::value {
        return qrv::map{{"a", i}, {"b", inner}};
    });
}

cRounds build_maps(int n) {
    return build_inside_out(n, [](qrv::value const &inner, int i) {
        auto const map = make<cMapObj>();
        map->datamap().mapitem("a", cat::of(i));
        map->datamap().mapitem("b", inner.object());
        return qrv::value(objref(map));
    });
}

cSide side(char const *library, cRounds (*rounds)(int)) {
    return {library, [rounds](std::string const &size) {
                long long const n = std::stoll(size);
                return cPrepared{static_cast<std::size_t>(n), std::to_string(n * (n - 1) / 2),
                                 rounds(static_cast<int>(n))};
            }};
}

} // namespace

std::vector<cWork> value_works() {
    std::vector<std::string> const counted = {"1000", "10000", "100000"};
    return {
        {"value_get", counted, {"10000"}, {side("qrv", get_by_path), side("calls", get_by_calls)}},
        {"value_build", counted, {"10000"}, {side("qrv", build_values), side("calls", build_maps)}},
        {"value_walk", counted, {"10000"}, {side("qrv", walk_values), side("nodes", walk_nodes)}},
    };
}
