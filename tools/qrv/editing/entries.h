#pragma once
// Removes, moves and inserts entries by paths. If a change is impossible, the functions add an
// error to the messages and leave the value as it was.

#include "qrv/core/cobj.h"
#include "qrv/edit/cedit.h"
#include "tools/qrv/output/messages.h"
#include "tools/qrv/search/at_path.h"

#include <string>
#include <vector>

// The container of a path and the node of its last key; the node is null, with an error, if the
// entry does not exist.
struct cFoundEntry {
    objref container;
    cAttrNode *node = nullptr;
};
cFoundEntry entry_at(objref const &root, std::vector<objref> const &keys, std::string const &path,
                     cMessages &messages);

// A type that is stored under a key of a map is thereby declared, as in a file: the key becomes its
// name, and later values can have the type. Other values are returned unchanged.
objref declared(objref const &value, objref const &key);
// The same for a value that will be stored at a path.
objref declared_at(objref const &root, std::string const &path, objref const &value);

bool remove_entry(objref const &root, std::string const &path, cMessages &messages);
bool move_entry(objref const &root, std::string const &from, std::string const &to,
                cMessages &messages);

struct cNewEntry {
    bool after; // insert after the entry at the path; if false, before it
    objref key; // null in vectors and sets
    objref value;
};
// `edit` may be null.
bool insert_entry(objref const &root, std::string const &path, cNewEntry const &entry,
                  qrv::edit::Edit *edit, cMessages &messages);
