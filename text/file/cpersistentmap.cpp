// A map in a file. Its states:
//
//   created --busmap()--> placed: its path is known --read--> loaded, from a good or a damaged file
//
// The destructor saves a loaded map; it copies a damaged file first. If a handler throws while the
// file is read, the map stays placed, and the file is not overwritten.

#include "qrv/text/file/cpersistentmap.h"

#include "diagnostics/cerrline.h"
#include "qrv/base/cfilename.h"
#include "qrv/base/platform/cplatform.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/file/cfile.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "text/file/cfile_scan.h"

#include <cerrno>

namespace {

constexpr int most_kept = 99;

// Is the rest of the text only comments and at most one separator?
bool at_end(cAttrScan &scan) {
    cat::ReadReport const quiet; // discards errors in the text after the value
    scan.return_com(false);
    int const token = scan.gettok();
    if (cat::is_separator(token)) scan.gettok();
    return cat::is_end(scan.token());
}

// Does `value`, or an empty map for null, contain everything that is in the text? Otherwise writing
// it would lose data.
bool read_cleanly(cAttrScan &scan, int result, objref const &value) {
    if (scan.errcount() != 0) return false;
    if (result == 0 && (!cObj::is_map(value) || scan.token().code != '}')) return false;
    if (result < 0 && !cat::is_end(scan.token())) return false; // a bracket that closes nothing
    return at_end(scan);
}

} // namespace

cPersistentMap::cPersistentMap(char const *name, bool keep_comments)
    : name_(name ? name : ""), keep_comments_(keep_comments) {
    cat::nil(); // starts the core, so that it is torn down after this object
}

cPersistentMap::~cPersistentMap() {
    try {
        if (!name_.empty() && map_) save(); // RUNS USER CODE
        map_ = nullptr;                     // RUNS USER CODE
    } catch (...) {                         // the handler has reported the error
    }
}

cMapObj &cPersistentMap::busmap() {
    if (map_) return *map_;
    place();
    objref const value = load();
    auto *const map = cObj::is_map(value) ? dynamic_cast<cMapObj *>(value.get()) : nullptr;
    map_ = map ? cRef<cMapObj>::share(map) : make<cMapObj>();
    return *map_;
}

void cPersistentMap::place() {
    if (!placed_) name_.insert(0, extractDirName(cat::program_name().c_str()));
    placed_ = true;
}

objref cPersistentMap::load() {
    cFileScan file(name_.c_str(), true);
    cAttrScan &scan = file.scan(); // connected to cat::errhandler()
    scan.return_com(keep_comments_);
    if (!file.opened()) {
        // A file that can't be opened counts as damaged, unless it does not exist.
        damaged_ = cat::file_exists(name_) || (errno != ENOENT && errno != ENOTDIR);
        return {};
    }
    objref value;
    int const result = scan.scan_obj(value, nullptr);
    damaged_ = !read_cleanly(scan, result, value);
    return value;
}

void cPersistentMap::save() {
    bool const is_folder = cat::is_directory(name_);
    if (!is_folder && cat::is_read_only(name_)) cat::make_writable(name_);
    if (!cat::can_write_file(name_))
        cat::put_error_line("Cannot open file for write: " + name_);
    else if (damaged_ && !keep_damaged())
        cat::put_error_line("Cannot keep damaged file: " + name_);
    else if (!write2file(*map_, name_.c_str(), true))
        cat::put_error_line("Cannot write file: " + name_);
}

// Copies the damaged file, or finds such a copy. If there is no regular file, there is nothing to
// copy; true then, unless its kind can't be determined.
bool cPersistentMap::keep_damaged() const {
    errno = 0;
    if (!cat::is_regular(name_)) return errno == 0 || errno == ENOENT;
    std::string const bad = name_ + ".bad";
    for (int i = 1; i <= most_kept; ++i) {
        std::string const copy = i == 1 ? bad : bad + std::to_string(i);
        if (cat::same_content(name_, copy) || cat::copy_to_new_file(name_, copy)) return true;
        if (errno != EEXIST) return false;
    }
    return false;
}
