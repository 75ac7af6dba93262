// cat::SourceMap::spans by a path: like cObj::getattrp, but walks over nodes.

#include "qrv/containers/cmapobj.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/text/read/csourcemap.h"
#include "text/path/cpath_scan.h"

namespace {
// The attributes of a value that text can set; null if it has no such attributes.
cAttrHash *attributes_of(cObj &value) {
    if (auto *const map = dynamic_cast<cMapObj *>(&value)) return &map->datamap();
    auto *const type = dynamic_cast<cTypeObj *>(&value);
    if (!type) return nullptr;
    for (char const *const member : {"attspec", "choices"})
        if (objref const rules = type->tmember(std::string(member)); cObj::is_map(rules))
            return &static_cast<cMapObj &>(*rules).datamap();
    return nullptr;
}
} // namespace

std::vector<cat::SourceEntry> cat::SourceMap::spans(cObj const &root,
                                                    std::string const &path) const {
    cPathScan scan(path, false);
    scan.begin_path();
    if (scan.at_end()) return written(root);
    objref value = objref::share(const_cast<cObj *>(&root));
    for (;;) {
        objref const key = scan.key();
        cAttrHash *const attributes = key && value ? attributes_of(*value) : nullptr;
        cAttrNode const *const node = attributes ? attributes->find(key) : nullptr;
        if (!node) return {};
        if (scan.follower().code == tkEof) return spans(node->anid());
        value = node->valref();
        scan.next();
    }
}
