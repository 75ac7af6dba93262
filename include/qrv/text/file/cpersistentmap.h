#pragma once
// cPersistentMap, a map that is kept in a file: read on first use, written by the destructor.
//
//   { cPersistentMap runs("runs.attr", true); runs.busmap()["last"] = cat::of("today"); }
//
// The file lies beside the program: the first busmap() puts the folder of the process's first
// argument in front of the name. A map that nobody asked for is never written. One that was asked
// for is written always, changed or not, with the two comment lines ahead. The old file or the new
// one is whole at every moment (qrv/text/file/cfile.h).
//
// Nothing of a file is lost that could not be read. A file is damaged if an error was counted while
// it was read, if its value isn't a closed map, if it holds more than that value and comments, or
// if it could not be opened at all. Before such a file is overwritten a copy is put beside it,
// named
// `<name>.bad`; where that is taken, by another damaged file or whatever else, `<name>.bad2` and so
// on to `<name>.bad99`. What has one of these names is never changed, and a copy that is there
// already isn't made again. When no copy can be made the file stays and the map isn't saved:
// "Cannot keep damaged file: " and the name on the standard error stream. A save that fails is told
// there too: "Cannot open file for write: " or "Cannot write file: " and the name.

#include "qrv/containers/cmapobj.h"

#include <string>

class QRV_API cPersistentMap {
  public:
    // Touches no file; null is an empty name. With keep_comments the comments of values are read,
    // and so written again. Objects of static life are saved before the library is torn down.
    cPersistentMap(char const *name, bool keep_comments);
    cPersistentMap(cPersistentMap const &) = delete;
    cPersistentMap &operator=(cPersistentMap const &) = delete;
    // Saves the map if it was loaded and there is a name. A read-only mark on the file (no
    // permission to write for its owner) is taken away, the others stay. RUNS USER CODE; lets no
    // exception out.
    virtual ~cPersistentMap();

    // The map; borrowed. The first call loads it: what came through of a damaged file, told by the
    // scanner's errors, and an empty map if the value isn't of exactly type "map" or there is no
    // file, which is no error. Throws only what the handlers of its errors throw; nothing is loaded
    // then, so that nothing will be written, and the next call tries again.
    cMapObj &busmap();

    std::string const &name() const noexcept { return name_; } // with the folder once it is known
    cRef<cMapObj> const &map() const noexcept { return map_; } // null until it is loaded
    bool keep_comments() const noexcept { return keep_comments_; }

  private:
    void place();
    objref load();
    void save();
    bool keep_damaged() const;

    std::string name_;
    cRef<cMapObj> map_;
    bool keep_comments_;
    bool placed_ = false;  // the folder is in front of the name
    bool damaged_ = false; // writing the map would lose something of the file
};
