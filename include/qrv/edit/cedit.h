#pragma once
// Edits of a text that a person wrote. A program reads the text while a cat::SourceMap lives,
// changes the tree by any function of the library, and gets the text back with only those bytes
// replaced that the change asks for. Comments, blank lines, alignment and the spelling of all other
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

// Calls `change`, which may do anything to the tree below `root` but replace the root object, and
// returns the text that reads as the changed tree. `text` is the one that root was read from while
// `map` lived; all three are borrowed. What `change` throws is passed on.
//
//   changed literals   are spelt like the literal that was there, where the value allows it
//   new entries        take layout, separator and delimiter of their neighbours
//   removed entries    take the comments with them that belong to them
//   moved entries      bring their comments
//   shared values      are written where the text comes to them first; `#cRef` paths are mended
//
// What has no text, such as infinity, is left out: read the result again and compare before you
// store it. RUNS USER CODE.   O(size of text and tree)
QRV_API std::string apply(std::string_view text, cat::SourceMap const &map, objref const &root,
                          std::function<void()> const &change);

// The same in steps, for a change that puts values of another text into the tree, for instance by
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
    // Notes the tree before the change. Borrows the text and the map.   O(size)
    Edit(std::string_view text, cat::SourceMap const &map, objref const &root);
    Edit(Edit const &) = delete;
    Edit &operator=(Edit const &) = delete;
    ~Edit();

    // Notes another text, once and before the change. New entries whose values come from it have
    // their comments, and the layout inside containers, from there; all else is like their
    // neighbours. An entry without a comment whose value one from there replaces gets the comments
    // of that one. Both texts are copied; together they must have less than 4 GiB.   O(size)
    void bring(std::string_view text, cat::SourceMap const &map, objref const &root);

    // Without this, a new entry is written next to the one before it: above an empty line or a
    // comment that begins a section. A new entry directly before that of this node, as it was
    // before the change, is then written next to that one.
    void put_above(std::uint32_t anid);

    // How a key is written that is repeated in the text: at each of its places, or, around a
    // change, once. Where its values are of several kinds, such as {} and [], or lists of which one
    // replaces values of another, no text with all places may read as the changed tree.
    enum class Repeated : unsigned char { each, once };

    // Does the tree differ from the one that was noted? RUNS USER CODE.   O(size)
    bool changed() const;

    // The new text, after the change. Without one it can differ from the text that was read, where
    // that has a repeated key or a reference to a #name. RUNS USER CODE.   O(size of text and tree)
    std::string text(Repeated repeated = Repeated::each) const;

  private:
    struct Notes;
    std::unique_ptr<Notes> notes_;
};

} // namespace qrv::edit
