#include "tools/qrv/editing/type_order.h"

#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/text/write/cwriter.h"

#include <functional>
#include <unordered_set>

namespace {

// Called with each value and its path, in the order of the text. Returns true to end the walk.
using cVisit = std::function<bool(objref const &value, std::string const &path)>;

class cWalk {
  public:
    explicit cWalk(cVisit const &visit) : visit_(visit) {}

    bool walk(objref const &value) {
        if (!value) return false;
        if (visit_(value, path_)) return true;
        auto const *const map = dynamic_cast<cMapObj const *>(value.get());
        if (!map || value->is_type() || !met_.insert(value.get()).second) return false;
        cAttrHash const &hash = map->datamap();
        for (cAttrNode const *node = hash.first(); node; node = hash.next(node)) {
            size_t const size = path_.size();
            path_ += '/' + cat::as_text(node->key());
            if (walk(node->valref())) return true;
            path_.resize(size);
        }
        return false;
    }

  private:
    cVisit const &visit_;
    std::string path_;
    std::unordered_set<cObj const *> met_;
};

// The types that the text of a value names.
std::vector<cTypeObj const *> types_named(objref const &value) {
    if (!value->is_type()) return {&value->type()};
    std::vector<cTypeObj const *> types;
    objref const specs = static_cast<cTypeObj const &>(*value).tmember("attspec");
    auto const *const map = dynamic_cast<cMapObj const *>(specs.get());
    if (!map) return types;
    cAttrHash const &hash = map->datamap();
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node)) {
        auto const *const spec = dynamic_cast<cAttspec const *>(node->valref().get());
        if (!spec) continue;
        if (spec->get_type()) types.push_back(spec->get_type());
        if (spec->get_default()) types.push_back(&spec->get_default()->type());
    }
    return types;
}

} // namespace

cTypeOrder::cTypeOrder(objref const &root) {
    cVisit const note = [&](objref const &value, std::string const &) {
        if (value->is_type()) declared_.emplace(value.get(), value);
        return false;
    };
    cWalk(note).walk(root);
}

bool cTypeOrder::report_broken(objref const &root, cMessages &messages) const {
    std::unordered_map<cObj const *, std::string> declared; // the path of each declared type
    cTypeObj const *missing = nullptr;
    std::string user;
    cVisit const search = [&](objref const &value, std::string const &path) {
        for (cTypeObj const *const type : types_named(value))
            if (declared_.contains(type) && !declared.contains(type) && !missing) {
                missing = type;
                user = path;
            }
        if (value->is_type()) declared.emplace(value.get(), path);
        return missing && declared.contains(missing);
    };
    cWalk(search).walk(root);
    if (!missing) return false;
    auto const found = declared.find(missing);
    std::string const name = quoted(missing->name());
    if (found == declared.end()) {
        messages.error(shortened(user) + " needs the type " + name +
                       ", which would not be declared any more");
        messages.note(no_place, "delete or change the values of a type before its declaration");
    } else {
        messages.error(shortened(user) + " needs the type " + name +
                       ", which would be declared only after it, at " + shortened(found->second));
        messages.note(no_place, "a type must be declared before its first use");
    }
    return true;
}
