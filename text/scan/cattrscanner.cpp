// Tokens: the current one, those pushed back, the counters, and who shares them.
//
// Each match begins a token at the running counters, except inside a block comment, whose pieces
// extend the token begun by its opening. Then the counters go over the matched text. A token pushed
// back and read again doesn't move them.
// A lexer is in the list of lexers from its constructor to its destructor, and lives as long as a
// scanner uses it. The list is searched by the stream's address: a stream that dies before its
// scanners leaves a lexer that a new stream at that address would find.

#include "qrv/text/scan/cattrscanner.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdint>
#include <istream>
#include <ostream>
#include <utility>

#include "qrv/diagnostics/ccout.h"
#include "qrv/diagnostics/cerr.h"

char const *cat::token_name(int code) {
#define QRV_TOKEN_NAME(name, number)                                                               \
    case name:                                                                                     \
        return #name;
    switch (code) { QRV_TOKENS(QRV_TOKEN_NAME) }
#undef QRV_TOKEN_NAME
    return nullptr;
}

cAttrLiteral::cAttrLiteral() = default;
cAttrLiteral::cAttrLiteral(cAttrLiteral const &) = default;
cAttrLiteral::cAttrLiteral(cAttrLiteral &&) noexcept = default;
cAttrLiteral &cAttrLiteral::operator=(cAttrLiteral const &) = default;
cAttrLiteral &cAttrLiteral::operator=(cAttrLiteral &&) noexcept = default;
cAttrLiteral::~cAttrLiteral() = default;

namespace {

// Asked of the buffer: tellg would set the fail state of a stream that is at its end.
unsigned stream_offset(std::istream &in) {
    if (in.fail()) return static_cast<unsigned>(-1);
    return static_cast<unsigned>(
        static_cast<std::streamoff>(in.rdbuf()->pubseekoff(0, std::ios::cur, std::ios::in)));
}

// Codes of the rules that always return a token with a fixed code, by rule number.
constexpr std::array<int, 15> codes = {tkEof,      tkBool,  tkBool,      tkInt,       tkUnsigned,
                                       tkBadIdent, tkInt,   tkFloat,     tkDouble,    tkString,
                                       tkConst,    tkIdent, tkAddAssign, tkShiftLeft, tkAndAssign};

} // namespace

constinit cAttrLexer *cAttrLexer::first_ = nullptr;

cAttrLexer::cAttrLexer(std::istream &in)
    : attrFlexLexer(&in), position_(stream_offset(in)), offset_(position_) {
    token_.position = position_;
    cAttrLexer **end = &first_;
    while (*end) end = &(*end)->next_;
    *end = this;
}

cAttrLexer::~cAttrLexer() {
    cAttrLexer **link = &first_;
    while (*link != this) link = &(*link)->next_;
    *link = next_;
}

cAttrLexer *cAttrLexer::find(std::istream const &in) {
    for (cAttrLexer *l = first_; l; l = l->next_) {
        if (l->input() == &in) return l;
    }
    return nullptr;
}

unsigned cAttrLexer::living() {
    unsigned n = 0;
    for (cAttrLexer const *l = first_; l; l = l->next_) ++n;
    return n;
}

int cAttrLexer::gettoken() {
    if (pushed_.empty()) return yylex();
    token_ = std::move(pushed_.back());
    pushed_.pop_back();
    return token_.code;
}

int cAttrLexer::yylex() {
    for (;;) {
        rule const r = match();
        begin_token();
        switch (r) {
        case r_end:
            return finish(tkEof);
        case r_char:
            return finish(static_cast<signed char>(append(true)));
        case r_space:
            append(return_ws_);
            if (return_ws_) return finish(tkSpace);
            break;
        case r_line_comment:
            append(return_com_);
            if (return_com_) return finish(tkComment);
            break;
        case r_block_comment:
            if (read_block_comment()) return finish(tkComment);
            break;
        default:
            append(true);
            return finish(codes[static_cast<std::size_t>(r)]);
        }
    }
}

// True if the comment is complete and wanted. One that the input ends in is dropped.
bool cAttrLexer::read_block_comment() {
    append(return_com_);
    bool const closed = match_comment();
    append(return_com_);
    return closed && return_com_;
}

void cAttrLexer::begin_token() {
    token_.text.clear();
    token_.line = token_.outer_line = line_;
    token_.column = token_.outer_column = column_;
    token_.position = position_;
    if (!places_.empty()) set_outer_place();
}

void cAttrLexer::set_outer_place() {
    auto const behind = [](std::size_t offset, cAttrPlace const &p) { return offset < p.offset; };
    auto next = std::upper_bound(places_.begin(), places_.end(), offset_, behind);
    if (next == places_.begin()) return;
    cAttrPlace const &place = *--next;
    token_.outer_line = place.line;
    token_.outer_column = place.column + static_cast<unsigned>(offset_ - place.offset);
}

// Takes the match into the token's text, if that is wanted, and moves the counters over it. Returns
// its first character.
// DELIBERATE: the position counts every character but the newline.
//   Pinned: scanner_position_skips_newlines
char cAttrLexer::append(bool keep_text) {
    std::string_view const text = matched();
    if (text.empty()) return 0;
    char const first = text.front();
    if (keep_text) token_.text.append(text);
    auto const size = static_cast<unsigned>(text.size());
    auto const newlines = static_cast<unsigned>(std::count(text.begin(), text.end(), '\n'));
    line_ += newlines;
    column_ = newlines ? static_cast<unsigned>(text.size() - 1 - text.rfind('\n')) : column_ + size;
    position_ += size - newlines;
    offset_ += text.size();
    consume();
    return first;
}

int cAttrLexer::finish(int code) {
    token_.code = code;
    if (dump_) dump();
    return code;
}

void cAttrLexer::dump() const {
    cat::std_err() << "TOKEN:" << token_.code << ':' << token_.position << ':' << token_.line << ':'
                   << token_.column << " '" << token_.text << "'" << std::endl;
}

// The seek goes to the stream's buffer: a failure then leaves the stream's state good. A position
// of -1, from an input that can't tell its offset, must not become one of four thousand million.
void cAttrLexer::reset(unsigned position, unsigned line, unsigned column) {
    pushed_.clear();
    position_ = position;
    offset_ = position;
    line_ = line;
    column_ = column;
    token_.code = tkEof;
    drop_lookahead();
    std::istream &in = *input();
    in.clear();
    if (!in.rdbuf()) return;
    in.rdbuf()->pubseekpos(static_cast<std::int32_t>(position), std::ios::in);
}

cAttrScanner::cAttrScanner(std::istream &in) : lexer_(cAttrLexer::find(in)) {
    if (!lexer_) lexer_ = new cAttrLexer(in);
    ++lexer_->users_;
}

cAttrScanner::cAttrScanner(std::istream *in) : cAttrScanner(in ? *in : cat::std_in()) {}

cAttrScanner::~cAttrScanner() {
    assert(lexer_->users_ > 0);
    if (--lexer_->users_ == 0) delete lexer_;
}

int cAttrScanner::gettoken() const { return lexer_->gettoken(); }

int cAttrScanner::gettoken(cAttrLiteral &token) const {
    lexer_->gettoken();
    token = lexer_->token_;
    return token.code;
}

void cAttrScanner::ungettoken() const { lexer_->pushed_.push_back(lexer_->token_); }
void cAttrScanner::ungettoken(cAttrLiteral const &token) const { lexer_->pushed_.push_back(token); }
cAttrLiteral const &cAttrScanner::token() const { return lexer_->token_; }

void cAttrScanner::resettoken() const { resettoken(lexer_->token_); }
void cAttrScanner::resettoken(cAttrLiteral const &token) const {
    lexer_->reset(token.position, token.line, token.column);
}
void cAttrScanner::reset(unsigned position, unsigned line, unsigned column) const {
    lexer_->reset(position, line, column);
}
void cAttrScanner::flush() const {
    lexer_->reset(lexer_->position_, lexer_->line_, lexer_->column_);
}

bool cAttrScanner::return_ws() const { return lexer_->return_ws_; }
bool cAttrScanner::return_com() const { return lexer_->return_com_; }
void cAttrScanner::return_ws(bool on, cSetTmp<bool> *keep) const {
    if (keep) keep->take(lexer_->return_ws_);
    lexer_->return_ws_ = on;
}
void cAttrScanner::return_com(bool on, cSetTmp<bool> *keep) const {
    if (keep) keep->take(lexer_->return_com_);
    lexer_->return_com_ = on;
}
void cAttrScanner::return_all(bool on) const { lexer_->return_ws_ = lexer_->return_com_ = on; }
bool cAttrScanner::setdump(bool on) const { return std::exchange(lexer_->dump_, on); }

unsigned cAttrScanner::position() const { return lexer_->position_; }
unsigned cAttrScanner::lineno() const { return lexer_->line_; }
unsigned cAttrScanner::column() const { return lexer_->column_; }

std::string const &cAttrScanner::filename() const { return lexer_->filename_; }
void cAttrScanner::set_filename(char const *name) const { lexer_->filename_ = name ? name : ""; }

unsigned cAttrScanner::errcount() const { return lexer_->errors_; }
void cAttrScanner::errincr() { ++lexer_->errors_; }
void cAttrScanner::errclear() { lexer_->errors_ = 0; }
cSignal1<cErr &> &cAttrScanner::sig_error() const { return lexer_->sig_error_; }
std::istream &cAttrScanner::is() const { return *lexer_->input(); }

void cAttrScanner::outer_places(std::vector<cAttrPlace> places) const {
    lexer_->places_ = std::move(places);
}
bool cAttrScanner::alone() const { return lexer_->users_ == 1 && cAttrLexer::living() == 1; }
