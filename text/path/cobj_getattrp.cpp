// cObj::getattrp: a value deep in a tree by a path such as a/b/0.
//
// DELIBERATE: any token stands as a separator between two keys.   Pinned: any_token_separates_keys
// DELIBERATE: what is wrong with a path is a line, not an error with a code.
//   Pinned: a_wrong_path_is_a_line_and_no_error_with_a_code

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
        value = at ? at->getattr(key) : cat::badfind(); // RUNS FOREIGN CODE
        if (scan.follower().code == tkEof || value == cat::badfind()) return value;
        scan.next();
        if (scan.token().code == '/' && scan.follower().code == tkEof)
            return refused(path, "  Wrong final / ");
    }
}
