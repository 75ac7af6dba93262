// Compares vectors with Tcl's lists: creating and appending values, and reading each by its index,
// as a borrowed pointer and as a counted handle. Compares sets with the library's own map:
// appending ints one by one.
#include "bench/row.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"

#include <tcl.h>

#include <memory>

namespace {

std::string const text = "a text";

// An int, a double or a short string.
objref value_of(int i) {
    if (i % 3 == 0) return cat::of(i);
    return i % 3 == 1 ? cat::of(i * 0.5) : cat::of(text);
}

Tcl_Obj *tcl_value_of(int i) {
    if (i % 3 == 0) return Tcl_NewIntObj(i);
    if (i % 3 == 1) return Tcl_NewDoubleObj(i * 0.5);
    return Tcl_NewStringObj(text.data(), static_cast<int>(text.size()));
}

class cTclList {
  public:
    cTclList() : list_(new_list()) { Tcl_IncrRefCount(list_); }
    cTclList(cTclList const &) = delete;
    cTclList &operator=(cTclList const &) = delete;
    ~cTclList() { Tcl_DecrRefCount(list_); }

    void fill(int n) {
        for (int i = 0; i < n; ++i) Tcl_ListObjAppendElement(nullptr, list_, tcl_value_of(i));
    }
    Tcl_Obj *at(int i) const {
        Tcl_Obj *value = nullptr;
        Tcl_ListObjIndex(nullptr, list_, i, &value);
        return value;
    }
    int size() const {
        int n = 0;
        Tcl_ListObjLength(nullptr, list_, &n);
        return n;
    }

  private:
    static Tcl_Obj *new_list() {
        Tcl_FindExecutable(nullptr); // initialises Tcl's allocator
        return Tcl_NewListObj(0, nullptr);
    }
    Tcl_Obj *list_;
};

void fill(cVectorObj &vector, int n) {
    for (int i = 0; i < n; ++i) vector.append(value_of(i));
}

cRounds append_qrv(int n) {
    return [n](cRound &round) {
        cRef<cVectorObj> const vector = make<cVectorObj>();
        round.measure([&] { fill(*vector, n); });
        round.answer = [size = vector->size()] { return std::to_string(size); };
    };
}

cRounds append_tcl(int n) {
    return [n](cRound &round) {
        cTclList list;
        round.measure([&] { list.fill(n); });
        round.answer = [size = list.size()] { return std::to_string(size); };
    };
}

template <class Take> cRounds index_qrv(int n, Take take) {
    cRef<cVectorObj> const vector = make<cVectorObj>();
    fill(*vector, n);
    return [n, vector, take](cRound &round) {
        int found = 0;
        round.measure([&] {
            for (int i = 0; i < n; ++i) found += take(*vector, i);
        });
        round.answer = [found] { return std::to_string(found); };
    };
}

template <class Take> cRounds index_tcl(int n, Take take) {
    auto const list = std::make_shared<cTclList>();
    list->fill(n);
    return [n, list, take](cRound &round) {
        int found = 0;
        round.measure([&] {
            for (int i = 0; i < n; ++i) found += take(list->at(i));
        });
        round.answer = [found] { return std::to_string(found); };
    };
}

cRounds borrow_qrv(int n) {
    return index_qrv(
        n, [](cVectorObj &vector, int i) { return vector.datamap().valueof(i) != nullptr; });
}

cRounds borrow_tcl(int n) {
    return index_tcl(n, [](Tcl_Obj *value) { return value != nullptr; });
}

cRounds own_qrv(int n) {
    return index_qrv(n, [](cVectorObj &vector, int i) {
        objref const value = vector / i;
        return cObj::is_good(value);
    });
}

cRounds own_tcl(int n) {
    return index_tcl(n, [](Tcl_Obj *value) {
        if (!value) return false;
        Tcl_IncrRefCount(value);
        Tcl_DecrRefCount(value);
        return true;
    });
}

cRounds set_append(int n) {
    return [n](cRound &round) {
        cRef<cSetObj> const set = make<cSetObj>();
        round.measure([&] {
            for (int i = 0; i < n; ++i) set->append(cat::of(i));
        });
        round.answer = [size = set->size()] { return std::to_string(size); };
    };
}

cRounds map_insert(int n) {
    std::vector<std::string> keys;
    for (int i = 0; i < n; ++i) keys.push_back("key" + std::to_string(100 + i));
    return [n, keys](cRound &round) {
        cRef<cMapObj> const map = make<cMapObj>();
        round.measure([&] {
            for (int i = 0; i < n; ++i)
                map->datamap().mapitem(keys[static_cast<std::size_t>(i)], cat::of(i));
        });
        round.answer = [size = map->size()] { return std::to_string(size); };
    };
}

cSide side(char const *library, cRounds (*rounds)(int)) {
    return {library, [rounds](std::string const &size) {
                int const n = std::stoi(size);
                return cPrepared{static_cast<std::size_t>(n), size, rounds(n)};
            }};
}

} // namespace

std::vector<cWork> vector_works() {
    std::vector<std::string> const counted = {"1000", "10000", "100000"};
    std::vector<std::string> const timed = {"1000", "100000", "1000000"};
    return {
        {"vector_append", counted, timed, {side("qrv", append_qrv), side("Tcl", append_tcl)}},
        {"vector_index", counted, timed, {side("qrv", borrow_qrv), side("Tcl", borrow_tcl)}},
        {"vector_value", counted, timed, {side("qrv", own_qrv), side("Tcl", own_tcl)}},
        {"set_append", counted, timed, {side("qrv", set_append), side("map", map_insert)}},
    };
}
