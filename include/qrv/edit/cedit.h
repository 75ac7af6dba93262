#pragma once
// Edits of text that a person wrote. A program reads the text while a cat::SourceMap exists,
// changes the tree by any functions of the library, and receives the text with only those bytes
// replaced that the change requires. Comments, blank lines, alignment and the spelling of all other
// values stay as they are, byte for byte.
//
//   cat::SourceMap map;
//   objref root;
//   ... read `text` into root ...
//   text = qrv::edit::apply(text, map, root, [&] { root->setattrp("bus/baud = 9600", true); });

#include "qrv/core/cobj.h"
#include "qrv/text/read/csourcemap.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace qrv::edit {

// Calls `change`, which may change everything in the tree below `root` but must not replace the
// root object. Returns text that reads as the changed tree. `text` is the text from which root was
// read while `map` existed. Borrows its arguments. Exceptions of `change` leave the function.
//
//   changed literals   have the spelling of the old literal, where the value permits it
//   new entries        have the layout, separator and delimiter of their neighbours
//   removed entries    are removed with the comments that belong to them
//   moved entries      move with their comments
//   shared values      are written at their first position in the text; `#cRef` paths are adjusted
//
// Values without text, such as infinity, are omitted: read the result again and compare it before
// you store it. RUNS USER CODE   O(size of text and tree)
QRV_API std::string apply(std::string_view text, cat::SourceMap const &map, objref const &root,
                          std::function<void()> const &change);

// The same in steps, for a change that inserts values of another text into the tree, for example by
// cObj::attrcopy.
//
//   cat::SourceMap map;
//   ... read `text` into root ...
//   qrv::edit::Edit edit(text, map, root);
//   cat::SourceMap donor_map;
//   ... read `donor_text` into donor ...
//   edit.bring(donor_text, donor_map, donor);
//   root->attrcopy(*donor, "-xx");
//   text = edit.text();
class QRV_API Edit {
  public:
    // Records the tree before the change. Borrows text and map, shares root.   O(size)
    Edit(std::string_view text, cat::SourceMap const &map, objref const &root);
    Edit(Edit const &) = delete;
    Edit &operator=(Edit const &) = delete;
    ~Edit();

    // Records another text, once and before the change. A new entry whose value is from that text
    // gets the comments of that text, and inside its value the layout of that text; for the rest it
    // is like its neighbours. If a value is replaced by one from that text, and its entry has no
    // comment, the entry gets the comments of the new value. Copies both texts, which together must
    // be smaller than 4 GiB.   O(size)
    void bring(std::string_view text, cat::SourceMap const &map, objref const &root);

    // Between two entries there may be an empty line, or a comment that begins a section. By
    // default a new entry is written above these, next to the entry before it. After this call, a
    // new entry directly before the entry of this node is written below them, next to that entry.
    // `anid` is the cAttrNode::anid() of a node of the tree before the change; with any other
    // number, the call has no effect. A later call replaces this one.
    void put_above(std::uint32_t anid);

    // How to write a key that is repeated in the text. `each` keeps all its positions; `once`
    // writes it only once if it is near a change. Use `once` if the text with all positions does
    // not read as the changed tree: this happens if the key has values of several kinds, such as {}
    // and [], or lists of which one replaces values of another.
    enum class Repeated : unsigned char { each, once };

    // Whether the tree differs from the recorded one. RUNS USER CODE   O(size)
    bool changed() const;

    // The new text, after the change. Without a change it may differ from the text that was read,
    // if that has a repeated key or a reference to a #name.
    // RUNS USER CODE   O(size of text and tree)
    std::string text(Repeated repeated = Repeated::each) const;

  private:
    struct Notes;
    std::unique_ptr<Notes> notes_;
};

} // namespace qrv::edit
