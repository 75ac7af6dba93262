#include "text/path/cpath_scan.h"

#include "qrv/core/ctypeobj.h"
#include "text/state/cchannels.h"

#include <locale>

cPathScan::cPathScan(std::string const &text, bool report) : in_(text), scan_(in_, report) {
    in_.imbue(std::locale::classic());
}

void cPathScan::begin_path() {
    scan_.gettok(token_);
    if (token_.code == '/') scan_.gettok(token_);
    scan_.gettok(follower_);
}

void cPathScan::begin_statement() {
    do scan_.gettok(token_);
    while (cat::is_separator(token_.code));
    if (token_.code == '/') scan_.gettok(token_);
    scan_.gettok(follower_);
}

void cPathScan::next() {
    scan_.gettok(token_);
    scan_.gettok(follower_);
}

objref cPathScan::key() const {
    objref key;
    if (!cat::read_stdtype(token_.code, token_.text.c_str(), key)) return {};
    if (!key || !key->type().is_keytype()) return {};
    if (cat::is_on(cat::lex_channel)) *cat::lex_channel << key << std::endl;
    return key;
}
