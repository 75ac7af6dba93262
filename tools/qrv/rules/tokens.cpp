#include "tools/qrv/rules/tokens.h"

#include <sstream>
#include <utility>

namespace {

// Positions count no line ends.
cTextToken token_of(cToken const &token) {
    return {size_t{token.position} + token.line - 1, static_cast<unsigned>(token.text.size()),
            token.code, place_of(token)};
}

} // namespace

std::vector<cTextToken> const &cTextTokens::all() const {
    if (std::exchange(scanned_, true)) return all_;
    std::istringstream is(bytes_);
    cAttrScanner const scanner(is);
    scanner.return_com(true);
    while (!cat::is_end(scanner.next_token())) all_.push_back(token_of(scanner.current()));
    return all_;
}

void cTextTokens::add_typed(cToken const &token) {
    if (token.code != tkSpace) typed_.push_back(token_of(token));
}
