// cObj::getattrp: a value deep in a tree by a path such as a/b/0.
//
// The path is cut by the scanner of the text format, so keys have the lexical rules of a file: foo
// and "foo" are the same key, 0 is an index, #name a constant, and a// is a followed by a comment.
// Tokens are taken in pairs, a key and what follows it.
// DELIBERATE: any token stands as a separator between two keys.   Pinned: any_token_separates_keys
// DELIBERATE: what is wrong with a path is a line, not an error with a code.

#include "diagnostics/cerrline.h"
#include "qrv/core/cobj.h"
#include "qrv/core/ctypeobj.h"
#include "qrv/core/ctypes.h"
#include "qrv/diagnostics/ctrace.h"
#include "qrv/text/cattrscan.h"

#include <locale>
#include <sstream>

namespace {

// The key that a token stands for; null if it can be none.
objref key_of(cAttrLiteral const &token) {
    objref key;
    bool const read = cat::read_stdtype(token.code, token.text.c_str(), key);
    return read && key && key->type().is_keytype() ? key : objref();
}

objref refused(std::string const &path, std::string const &reason) {
    cat::error_line("ERROR in call of getattrp, path '" + path + "'" + reason);
    return cat::bad();
}

// A key and the token behind it; each has code 0 and no text at the end.
struct cPathPair {
    explicit cPathPair(std::string const &path) : in_(path), scan_(in_, false) {
        in_.imbue(std::locale::classic());
        scan_.gettok(token);
        if (token.code == '/') scan_.gettok(token);
        scan_.gettok(follower);
    }
    cPathPair(cPathPair const &) = delete;
    cPathPair &operator=(cPathPair const &) = delete;

    void next() {
        scan_.gettok(token);
        scan_.gettok(follower);
    }

    cAttrLiteral token;
    cAttrLiteral follower;

  private:
    std::istringstream in_;
    cAttrScan scan_;
};

} // namespace

objref cObj::getattrp(std::string const &path) {
    cat::trace_lex << path << std::endl;
    cPathPair pair(path);
    objref value;
    for (cObj *at = this;; at = value.get()) {
        objref const key = key_of(pair.token);
        if (!key) return refused(path, ", bad entry: " + pair.token.text);
        cat::trace_lex << key << std::endl;             // RUNS FOREIGN CODE, when the channel is on
        value = at ? at->getattr(key) : cat::badfind(); // RUNS FOREIGN CODE
        if (pair.follower.code == tkEof || value == cat::badfind()) return value;
        pair.next();
        if (pair.token.code == '/' && pair.follower.code == tkEof)
            return refused(path, "  Wrong final / ");
    }
}
