#pragma once
// cPersistentMap, a map that is stored in a file: read at its first use, written by the destructor.
//
//   { cPersistentMap runs("runs.attr", true); runs.busmap()["last"] = cat::of("today"); }
//
// The file is next to the program: the first busmap() inserts the folder of the process's first
// argument before the name. A map that was never used is not written. A map that was used is always
// written, changed or not, after the two comment lines. Writing replaces the file in one step
// (write2file).
//
// Content of a file that could not be read is never lost. A file counts as damaged if reading it
// caused an error, if its value is not a closed map, if it has more than that value and comments,
// or if it could not be opened. Before such a file is overwritten, it is copied to `<name>.bad`
// next to it; if that name exists, to `<name>.bad2` and so on up to `<name>.bad99`. Files with
// these names are never changed. If one of them is a copy already, no other copy is made. If no
// copy can be made, the file stays and the map is not saved: "Cannot keep damaged file: " and the
// name is printed on the standard error stream. A failure to save is printed there, too: "Cannot
// open file for write: " or "Cannot write file: " and the name.

#include "qrv/containers/cmapobj.h"

#include <string>

class QRV_API cPersistentMap {
  public:
    // Accesses no file. A null name counts as empty. With keep_comments, reading preserves the
    // comments of values, so they are written again. A static object is saved before the library
    // ends.
    cPersistentMap(char const *name, bool keep_comments);
    cPersistentMap(cPersistentMap const &) = delete;
    cPersistentMap &operator=(cPersistentMap const &) = delete;
    // Saves the map if it was loaded and the name is not empty. Makes a read-only file (without the
    // owner's permission to write) writable. Discards exceptions. RUNS USER CODE
    virtual ~cPersistentMap();

    // The map; borrowed. The first call loads it. From a damaged file it loads what can be read;
    // the scanner reports the errors. The map is empty if the value is not of exactly type "map",
    // or if the file does not exist, which is not an error. Throws only what handlers of these
    // errors throw: then nothing is loaded, so nothing will be written, and the next call tries
    // again. RUNS USER CODE
    cMapObj &busmap();

    // The name of the file; includes the folder after the first call of busmap().
    std::string const &name() const noexcept { return name_; }
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
    bool placed_ = false;  // the name includes the folder
    bool damaged_ = false; // writing the map would lose content of the file
};
