#pragma once
// Shared by the tests of paths: a tree as one plain line, independent of its layout.

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"

#include <string>

namespace path_test {

// "{a=1;b=[2;3]}"; "null", "bad" and "badfind" for other results. Follows cycles to the tenth
// level.
inline std::string flat(objref const &value, int depth = 0) {
    if (!value) return "null";
    if (value == cat::bad()) return "bad";
    if (value == cat::badfind()) return "badfind";
    auto const *const map = dynamic_cast<cMapObj const *>(value.get());
    if (!map) return cat::as_text(value);
    if (depth == 10) return "...";
    bool const keyed = cObj::is_map(value);
    std::string text = keyed ? "{" : cObj::is_vector(value) ? "[" : "<";
    char const end = keyed ? '}' : cObj::is_vector(value) ? ']' : '>';
    cAttrHash const &hash = map->datamap();
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node)) {
        if (node != hash.first()) text += ';';
        if (keyed) text += cat::as_text(node->key()) + "=";
        text += flat(node->valref(), depth + 1);
    }
    return text + end;
}

inline objref read(std::string const &text) {
    objref value;
    cObj::readobj(text.c_str(), value);
    return value;
}

} // namespace path_test
