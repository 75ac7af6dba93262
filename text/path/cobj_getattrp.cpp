// cObj::getattrp finds a value deep in a tree by a path such as a/b/0.
//
// DELIBERATE: any token separates two keys.   Pinned: any_token_separates_keys
// DELIBERATE: an error in a path is printed as a line and has no code.
//   Pinned: a_wrong_path_prints_a_line_without_an_error_code

#include "diagnostics/cerr_names.h"
#include "diagnostics/cerrline.h"
#include "qrv/core/ctypes.h"
#include "text/path/cpath_scan.h"
#include "text/state/cchannels.h"

namespace {
objref refused(std::string const &path, std::string const &reason) {
    cat::error_line(whole_error(err_getattrp_path, cNamed::key(path), "'", reason));
    return cat::bad();
}
} // namespace

objref cObj::getattrp(std::string const &path) {
    if (cat::is_on(cat::lex_channel)) *cat::lex_channel << path << std::endl;
    cPathScan scan(path, false);
    scan.begin_path();
    objref value;
    for (cObj *at = this;; at = value.get()) {
        objref const key = scan.key();
        if (!key) return refused(path, ", bad entry: " + scan.token().text);
        value = at ? at->getattr(key) : cat::badfind(); // RUNS USER CODE
        if (scan.follower().code == tkEof || value == cat::badfind()) return value;
        scan.next();
        if (scan.token().code == '/' && scan.follower().code == tkEof)
            return refused(path, "  Wrong final / ");
    }
}
