#pragma once
// Entries that commands remove, move and insert, by paths. What can't be done is an error in the
// messages and leaves the value as it was.

#include "qrv/core/cobj.h"
#include "qrv/edit/cedit.h"
#include "tools/qrv/output/messages.h"
#include "tools/qrv/search/at_path.h"

#include <string>
#include <vector>

// The container of a path and the node of its last key; the node is null, with an error, if nothing
// is there.
struct cFoundEntry {
    objref container;
    cAttrNode *node = nullptr;
};
cFoundEntry entry_at(objref const &root, std::vector<objref> const &keys, std::string const &path,
                     cMessages &messages);

// A type that is given for a key of a map is declared by it, as in a file: it gets the key as its
// name, and later values can have it. Other values are returned as they are.
objref declared(objref const &value, objref const &key);
// The same for the value that is to be stored at a path.
objref declared_at(objref const &root, std::string const &path, objref const &value);

bool remove_entry(objref const &root, std::string const &path, cMessages &messages);
bool move_entry(objref const &root, std::string const &from, std::string const &to,
                cMessages &messages);

struct cNewEntry {
    bool after; // the entry at the path, or before it
    objref key; // null in vectors and sets
    objref value;
};
// `edit` may be null.
bool insert_entry(objref const &root, std::string const &path, cNewEntry const &entry,
                  qrv::edit::Edit *edit, cMessages &messages);
