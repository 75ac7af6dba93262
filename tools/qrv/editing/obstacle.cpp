#include "tools/qrv/editing/obstacle.h"

#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"
#include "tools/qrv/editing/entries.h"
#include "tools/qrv/search/at_path.h"
#include "tools/qrv/verify/mismatch.h"

namespace {

std::string name_of(std::vector<objref> const &keys, size_t count) {
    std::string path;
    for (size_t i = 0; i < count; ++i) {
        if (i > 0) path += '/';
        path += cat::as_text(keys[i]);
    }
    return path.empty() ? "the outermost value" : shortened(path);
}

cAttspec const *spec_of(objref const &container, objref const &key) {
    objref const specs = container->type().tmember("attspec");
    auto const *const map = dynamic_cast<cMapObj const *>(specs.get());
    cAttrNode const *const node = map ? map->datamap().find(key) : nullptr;
    return node ? dynamic_cast<cAttspec const *>(node->valref().get()) : nullptr;
}

std::optional<cObstacle> in_list(objref const &list, objref const &key, std::string const &name) {
    size_t const size = static_cast<cMapObj const &>(*list).datamap().used();
    std::string const append = name + " << VALUE appends one";
    if (&key->type() != &cat::type_int())
        return cObstacle{name + " is " + kind_of(list) + ", whose values have no keys", append};
    int const index = cat::as_index(key);
    if (index < 0 || static_cast<size_t>(index) > size)
        return cObstacle{name + " has " + std::to_string(size) +
                             (size == 1 ? " value" : " values") + ", counted from 0",
                         append};
    return {};
}

} // namespace

std::optional<cObstacle> obstacle_at(objref const &root, std::string const &path) {
    cMessages ignored(path, 1);
    std::vector<objref> const keys = keys_of(path, ignored);
    objref container = root;
    for (size_t i = 0; i < keys.size() && container; ++i) {
        std::string const name = name_of(keys, i);
        auto const *const map = dynamic_cast<cMapObj const *>(container.get());
        if (container->is_type())
            return cObstacle{
                name + " is a type, and its declaration can only be replaced as a whole", ""};
        if (!map)
            return cObstacle{name + " is " + kind_of(container) + ", which has no entries",
                             i > 0 ? name + " &= {} makes it a map" : ""};
        bool const list = cObj::is_vector(container) || cObj::is_set(container);
        if (auto const found = list ? in_list(container, keys[i], name) : std::nullopt)
            return found;
        bool const declared = !list && !cObj::is_map(container);
        if (declared && !spec_of(container, keys[i]))
            return cObstacle{
                "the type " + container->type().name() + " declares no key " + shown(keys[i]), ""};
        if (declared && i + 1 == keys.size())
            if (cTypeObj const *const type = spec_of(container, keys[i])->get_type())
                return cObstacle{"the type " + container->type().name() +
                                     " demands a value of the type " + type->name(),
                                 ""};
        cAttrNode const *const node =
            list ? map->datamap().findpos(static_cast<unsigned>(cat::as_index(keys[i])))
                 : map->datamap().find(keys[i]);
        container = node ? node->valref() : objref();
    }
    return {};
}
