#include "tools/qrv/rules/tokens.h"

#include <sstream>
#include <utility>

namespace {

class cScanner : public cAttrScanner {
  public:
    using cAttrScanner::cAttrScanner;
    using cAttrScanner::gettoken;
};

// Positions count no line ends.
cTextToken token_of(cToken const &token) {
    return {size_t{token.position} + token.line - 1,
            static_cast<unsigned>(token.text.size()),
            token.code,
            {token.line, token.column + 1}};
}

} // namespace

std::vector<cTextToken> const &cTextTokens::all() const {
    if (std::exchange(scanned_, true)) return all_;
    std::istringstream is(bytes_);
    cScanner scanner(is);
    scanner.return_com(true);
    // A byte 0 has the code tkEof, too.
    while (scanner.gettoken() != tkEof || !scanner.current().text.empty())
        all_.push_back(token_of(scanner.current()));
    return all_;
}

void cTextTokens::add_typed(cToken const &token) {
    if (token.code != tkSpace) typed_.push_back(token_of(token));
}
