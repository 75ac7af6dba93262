#pragma once
// Small object trees for tests, and their shape as one string: {1=a, b=[1, 2]} for a map, [..] for
// a vector, <..> for a set; ints, strings and bools plain; null, nil, bad or badfind; and "?" for
// any other value.

#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"

#include <initializer_list>
#include <string>
#include <utility>

namespace trees {

inline objref of(int number) { return cat::of(number); }
inline objref of(char const *text) { return cat::of(text); }
inline objref of(objref const &obj) { return obj; }

struct cItem {
    objref key;
    objref value;
    template <class K, class V> cItem(K const &k, V const &v)
        : key(trees::of(k)), value(trees::of(v)) {}
};

struct cValue {
    objref value;
    template <class V> cValue(V const &v) : value(trees::of(v)) {}
};

using mapref = cRef<cMapObj>;
using vectorref = cRef<cVectorObj>;
using setref = cRef<cSetObj>;

inline mapref map(std::initializer_list<cItem> items = {}) {
    mapref made = make<cMapObj>();
    for (cItem const &item : items) made->datamap().mapitem(item.key, item.value);
    return made;
}

inline vectorref vector(std::initializer_list<cValue> values = {}) {
    vectorref made = make<cVectorObj>();
    for (cValue const &item : values) made->datamap().vect_append(item.value);
    return made;
}

inline setref set(std::initializer_list<cValue> values = {}) {
    setref made = make<cSetObj>();
    for (cValue const &item : values) made->datamap().vect_append(item.value);
    return made;
}

// `count` ints, beginning with `first`.
inline vectorref ints(int count, int first = 0) {
    vectorref made = make<cVectorObj>();
    for (int i = 0; i < count; ++i) made->datamap().vect_append(cat::of(first + i));
    return made;
}

std::string inline shape(cObj const *obj);

inline std::string inside(cMapObj const &map, bool with_keys) {
    std::string text;
    cAttrHash const &hash = map.datamap();
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node)) {
        if (!text.empty()) text += ", ";
        if (with_keys) text += node->key_as_string() + "=";
        text += shape(node->valref());
    }
    return text;
}

std::string inline shape(cObj const *obj) {
    if (!obj) return "null";
    if (cObj::is_nil(obj)) return "nil";
    if (cObj::is_kill(obj)) return "badfind";
    if (cObj::is_bad(obj)) return "bad";
    auto const *const map = dynamic_cast<cMapObj const *>(obj);
    if (cObj::is_vector(obj)) return "[" + inside(*map, false) + "]";
    if (cObj::is_set(obj)) return "<" + inside(*map, false) + ">";
    if (map) return "{" + inside(*map, true) + "}";
    if (auto const *const number = dynamic_cast<cObjDR<int> const *>(obj))
        return std::to_string(number->val());
    if (auto const *const text = dynamic_cast<cObjDR<std::string> const *>(obj)) return text->val();
    if (auto const *const flag = dynamic_cast<cObjDR<bool> const *>(obj))
        return flag->val() ? "true" : "false";
    return "?";
}
template <class T> std::string shape(cRef<T> const &ref) {
    return shape(static_cast<cObj const *>(ref.get()));
}

// Assigns a number to the int under a key.
inline void put_int(cMapObj &map, objref const &key, int number) {
    map.datamap().getitem(key)->assign(cat::of(number));
}

} // namespace trees
