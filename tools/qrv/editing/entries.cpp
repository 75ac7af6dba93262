#include "tools/qrv/editing/entries.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/creadreport.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tools/qrv/search/at_path.h"
#include "tools/qrv/verify/attempt.h"
#include "tools/qrv/verify/mismatch.h"

#include <locale>
#include <sstream>
#include <unordered_set>

namespace {

cMapObj *map_in(objref const &value) {
    return value && !value->is_type() ? dynamic_cast<cMapObj *>(value.get()) : nullptr;
}

bool is_list(objref const &value) { return cObj::is_vector(value) || cObj::is_set(value); }

// The node by key, or by position in vectors and sets.
cAttrNode *node_in(objref const &container, objref const &key) {
    cMapObj *const map = map_in(container);
    if (!map || !key) return nullptr;
    if (!is_list(container)) return map->datamap().find(key);
    if (&key->type() != &cat::type_int()) return nullptr;
    int const position = cat::as_index(key);
    return position < 0 ? nullptr : map->datamap().findpos(static_cast<unsigned>(position));
}

int position_of(objref const &list, cAttrNode const *node) {
    return map_in(list)->datamap().posofkey(node->key());
}

bool refuse(std::string const &path, std::string const &why, cMessages &messages) {
    messages.error(shortened(path) + ": " + why);
    return false;
}

// Makes a change. If it fails, reports the library's errors, or `reason` if it has raised no error.
bool attempt(std::string const &path, std::string const &reason, cMessages &messages,
             std::function<bool()> const &change) {
    cAttempt const made(change);
    for (cAttemptError const &error : made.errors)
        messages.error(shortened(path) + ": " + error.text, error.code);
    if (made.done && made.errors.empty()) return true;
    return made.errors.empty() ? refuse(path, reason, messages) : false;
}

bool erase(objref const &container, cAttrNode *node, std::string const &path, cMessages &messages) {
    std::string const reason = is_list(container) || cObj::is_map(container)
                                   ? "it can't be removed"
                                   : "the type " + container->type().name() + " needs this key";
    return attempt(path, reason, messages, [&] {
        cMapObj &map = *map_in(container);
        if (is_list(container)) return map.datamap().vect_erase(position_of(container, node));
        objref const key = node->key();
        return map.setattr(key, objref()) && !map.datamap().find(key);
    });
}

// Does any object in the tree have this type, or does another type name it?
bool is_used(objref const &root, cObj const *type) {
    std::unordered_set<cObj const *> seen{root.get()};
    std::vector<objref> todo{root};
    while (!todo.empty()) {
        objref const value = std::move(todo.back());
        todo.pop_back();
        if (&value->type() == type) return true;
        cMapObj const *map = map_in(value);
        objref declared;
        if (value->is_type() && value.get() != type) {
            auto const &other = static_cast<cTypeObj const &>(*value);
            declared = other.tmember("attspec");
            map = dynamic_cast<cMapObj const *>(declared.get());
            std::string const text = cat::as_text(value);
            std::string const name = static_cast<cTypeObj const *>(type)->name();
            if (text.find("type=" + name + ";") != text.npos) return true;
        }
        if (!map) continue;
        for (cAttrNode const *node = map->datamap().first(); node; node = map->datamap().next(node))
            if (node->valref() && seen.insert(node->valref().get()).second)
                todo.push_back(node->valref());
    }
    return false;
}

} // namespace

cFoundEntry entry_at(objref const &root, std::vector<objref> const &keys, std::string const &path,
                     cMessages &messages) {
    cFoundEntry found{root, nullptr};
    for (size_t i = 0; i < keys.size(); ++i) {
        if (i > 0) found.container = found.node->valref();
        found.node = node_in(found.container, keys[i]);
        if (!found.node) {
            report_absent(path, messages);
            break;
        }
    }
    return found;
}

objref declared(objref const &value, objref const &key) {
    if (!value || !value->is_type() || !static_cast<cTypeObj const &>(*value).name().empty())
        return value;
    cat::ExactText const exact;
    cat::ReadReport const errors;
    std::istringstream text('{' + cat::as_text(key) + "= " + cat::as_text(value) + '}');
    objref map;
    if (cObj::readobj(text, map) != 0 || !errors.empty()) return value;
    cAttrNode const *const node = map_in(map)->datamap().find(key);
    return node ? node->valref() : value;
}

objref declared_at(objref const &root, std::string const &path, objref const &value) {
    if (!value || !value->is_type()) return value;
    cMessages ignored(path, 1);
    std::vector<objref> keys = keys_of(path, ignored);
    if (keys.empty()) return value;
    objref const last = keys.back();
    keys.pop_back();
    cFoundEntry const around = entry_at(root, keys, path, ignored);
    objref const container = around.node ? around.node->valref() : root;
    bool const absent = !keys.empty() && !around.node;
    return !absent && is_list(container) ? value : declared(value, last);
}

bool remove_entry(objref const &root, std::string const &path, cMessages &messages) {
    cFoundEntry const found = entry_at(root, keys_of(path, messages), path, messages);
    objref const &container = found.container;
    cAttrNode *const node = found.node;
    if (!node) return false;
    objref const value = node->valref();
    if (!erase(container, node, path, messages)) return false;
    if (!value->is_type() || !is_used(root, value.get())) return true;
    return refuse(path, "this type is still used", messages);
}

bool move_entry(objref const &root, std::string const &from, std::string const &to,
                cMessages &messages) {
    std::vector<objref> const source = keys_of(from, messages);
    std::vector<objref> target = keys_of(to, messages);
    if (source.empty() || target.empty()) return false;
    cFoundEntry const found = entry_at(root, source, from, messages);
    objref const &container = found.container;
    cAttrNode *const node = found.node;
    if (!node) return false;
    objref const value = node->valref();
    objref const last = target.back();
    target.pop_back();
    objref into = root;
    for (objref const &key : target) {
        cAttrNode const *const level = node_in(into, key);
        if (!level) {
            report_absent(to, messages);
            return false;
        }
        into = level->valref();
        if (into == value) return refuse(to, "it is inside of what is moved", messages);
    }
    if (value->is_type() && !last->equal(node->key()))
        return refuse(to, "a declared type keeps its name, which is its key", messages);
    if (!map_in(into)) return refuse(to, "there is no container to move it into", messages);
    if (is_list(into)) {
        if (&last->type() != &cat::type_int())
            return refuse(to, "the last key must be a position", messages);
        int const size = map_in(into)->size() - (into == container ? 1 : 0);
        int const position = cat::as_index(last);
        if (position < 0 || position > size)
            return refuse(to, "the position is not in the list, nor directly after it", messages);
        if (!erase(container, node, from, messages)) return false;
        return attempt(to, "it can't be stored there", messages,
                       [&] { return map_in(into)->datamap().vect_insert(position, value); });
    }
    if (cAttrNode const *const present = node_in(into, last))
        return present == node || refuse(to, "there is a value already; delete it first", messages);
    if (into == container && cObj::is_map(into)) {
        return attempt(to, "it can't be stored there", messages, [&] {
            map_in(into)->datamap().rename(node->key(), last);
            return map_in(into)->datamap().find(last) != nullptr;
        });
    }
    if (!erase(container, node, from, messages)) return false;
    return attempt(to, "it can't be stored there", messages,
                   [&] { return into->setattr(last, value) && node_in(into, last); });
}

bool insert_entry(objref const &root, std::string const &path, cNewEntry const &entry,
                  qrv::edit::Edit *edit, cMessages &messages) {
    cFoundEntry const found = entry_at(root, keys_of(path, messages), path, messages);
    objref const &container = found.container;
    cAttrNode *const node = found.node;
    if (!node) return false;
    if (edit && !entry.after) edit->put_above(node->anid());
    cAttrHash &hash = map_in(container)->datamap();
    if (is_list(container)) {
        if (entry.key)
            return refuse(path, "values in " + kind_of(container) + " have no keys: leave KEY out",
                          messages);
        int const position = position_of(container, node) + (entry.after ? 1 : 0);
        if (cObj::is_set(container) && hash.findvalue(entry.value))
            return refuse(path, "the set holds " + shown(entry.value) + " already", messages);
        return attempt(path, "it can't be stored there", messages,
                       [&] { return hash.vect_insert(position, entry.value); });
    }
    if (!entry.key) return refuse(path, "the key of the new entry is missing", messages);
    if (!cObj::is_map(container))
        return refuse(path, "the type " + container->type().name() + " sets the order of its keys",
                      messages);
    if (hash.find(entry.key))
        return refuse(path, "there is a key " + shown(entry.key) + " already", messages);
    cAttrNode *const before = entry.after ? hash.next(node) : node;
    return attempt(path, "it can't be stored there", messages, [&] {
        return container->setattr(entry.key, entry.value) &&
               hash.insert(entry.key, entry.value, before);
    });
}
