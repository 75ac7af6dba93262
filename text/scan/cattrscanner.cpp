// Tokens: the current one, pushed back ones, the counters, and the shared lexers.
//
// Each match begins a token at the current counters, and the counters then advance over the matched
// text. Only a block comment consists of several matches, all of which belong to the token that the
// first one began. A token that is pushed back and read again does not change the counters.
//
// The text of a token is a view: of text in memory, of one of the lexer's two copies, or of a table
// of single characters. The string that token() returns is filled at the first call, and from then
// on with each token, since the caller may have stored the reference.
//
// A lexer is in the list of lexers from its constructor to its destructor, and exists while a
// scanner uses it. The list is searched by the address of the stream. So a stream must not be
// destroyed before its scanners: a new stream at its address would find its lexer.

#include "qrv/text/scan/cattrscanner.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <istream>
#include <ostream>
#include <utility>

#include "qrv/diagnostics/ccout.h"
#include "qrv/diagnostics/cerr.h"
#include "text/scan/cattrlexer_inline.h"
#include "text/scan/cattrscanner_rules.h"
#include "text/scan/cattrscanner_window.h"

char const *cat::token_name(int code) {
#define QRV_TOKEN_NAME(name, number)                                                               \
    case name:                                                                                     \
        return #name;
    switch (code) { QRV_TOKENS(QRV_TOKEN_NAME) }
#undef QRV_TOKEN_NAME
    return nullptr;
}

cAttrLiteral::cAttrLiteral() = default;
cAttrLiteral::cAttrLiteral(cToken const &token)
    : code(token.code), text(token.text), line(token.line), column(token.column),
      position(token.position), outer_line(token.outer_line), outer_column(token.outer_column) {}
cAttrLiteral::cAttrLiteral(cAttrLiteral const &) = default;
cAttrLiteral::cAttrLiteral(cAttrLiteral &&) noexcept = default;
cAttrLiteral &cAttrLiteral::operator=(cAttrLiteral const &) = default;
cAttrLiteral &cAttrLiteral::operator=(cAttrLiteral &&) noexcept = default;
cAttrLiteral::~cAttrLiteral() = default;

namespace {

// Queries the buffer, since tellg would set the fail state of a stream at its end.
unsigned stream_offset(std::istream &in) {
    if (in.fail()) return static_cast<unsigned>(-1);
    return static_cast<unsigned>(
        static_cast<std::streamoff>(in.rdbuf()->pubseekoff(0, std::ios::cur, std::ios::in)));
}

void copy(cToken const &token, cAttrLiteral &literal) {
    literal.code = token.code;
    literal.text.assign(token.text);
    literal.line = token.line;
    literal.column = token.column;
    literal.position = token.position;
    literal.outer_line = token.outer_line;
    literal.outer_column = token.outer_column;
}

// Codes of the tokens by rule number. The code of a single character is the character itself.
constexpr std::array<int, 22> codes = {
    0,         tkBool,   tkBool,  tkInt,   tkUnsigned,  tkBadIdent,  tkInt,       tkFloat,
    tkDouble,  tkString, tkConst, tkIdent, tkAddAssign, tkShiftLeft, tkAndAssign, tkComment,
    tkComment, 0,        0,       tkSpace, 0,           tkEof};

int code_of(attrFlexLexer::rule r, std::string_view text) {
    return r == attrFlexLexer::r_char ? static_cast<signed char>(text.front())
                                      : codes[static_cast<std::size_t>(r)];
}

} // namespace

constinit cAttrLexer *cAttrLexer::first_ = nullptr;

cAttrLexer::cAttrLexer(std::istream &in) : attrFlexLexer(&in) {
    place(stream_offset(in), 1, 0);
    token_.position = position();
    cAttrLexer **end = &first_;
    while (*end) end = &(*end)->next_;
    *end = this;
}

cAttrLexer::~cAttrLexer() {
    cAttrLexer **link = &first_;
    while (*link != this) link = &(*link)->next_;
    *link = next_;
#ifdef QRV_CHECKS
    scan::lexed += offset_;
#endif
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

// --- tokens pushed back ---

int cAttrLexer::gettoken() {
    bool const scanned = !again_ && pushed_.empty();
    return scanned && !plain_ ? yylex() : next().code;
}

cToken const &cAttrLexer::held_token() {
    if (again_) {
        again_ = false;
        settle();
        return token_;
    }
    literal_ = std::move(pushed_.back());
    pushed_.pop_back();
    settle();
    literal_filled_ = true;
    token_ = {
        next_text() = literal_.text, literal_.code,       literal_.line,        literal_.column,
        literal_.position,           literal_.outer_line, literal_.outer_column};
    return token_;
}

void cAttrLexer::unget() {
    if (again_) pushed_.emplace_back(token_);
    again_ = special_ = true;
}

void cAttrLexer::unget(cAttrLiteral const &token) {
    if (std::exchange(again_, false)) pushed_.emplace_back(token_);
    pushed_.push_back(token);
    special_ = true;
}

void cAttrLexer::settle() {
    watched_ = literal_known_ || dump_ || !places_.empty();
    special_ = watched_ || again_ || !pushed_.empty() || !plain_;
}

// --- matches become tokens ---

int cAttrLexer::yylex() { return scan().code; }

bool cAttrLexer::is_wanted(rule r) const {
    if (r == r_space) return return_ws_;
    return return_com_ || watch_com_ || (r != r_line_comment && r != r_block_comment);
}

// Counts the lines of text that ends at offset_.
void cAttrLexer::pass_lines(std::string_view text) {
    auto const lines = std::count(text.begin(), text.end(), '\n');
    pass_lines(static_cast<std::size_t>(lines), text.size() - 1 - text.rfind('\n'));
}

cToken const &cAttrLexer::finish() {
    literal_filled_ = false;
    return watched_ ? finish_watched() : token_;
}

cToken const &cAttrLexer::next_of_any_kind() {
    if (again_ || !pushed_.empty()) return held_token();
    if (plain_) return scan();
    yylex();
    return token_;
}

cToken const &cAttrLexer::scan() {
    for (;;) {
        scan::cWindow window(buffer(), offset_);
        scan::cWhite white;
        if (!return_ws_) white = window.pass_white();
        scan::cRules<scan::cWindow> rules(window);
        rule const r = rules.match();
        if (r == r_block_comment) rules.match_comment(rules.size());
        std::size_t const size = rules.size();
        if (window.fails(size)) return scan_slowly();

        offset_ += white.size;
        pass_lines(white.lines, white.column);
        begin_token();
        offset_ += size;
        token_.text = window.text(size);
        if (rules.lines()) pass_lines(token_.text);
        window.consume(size);
        if (!is_wanted(r)) continue;
        token_.code = code_of(r, token_.text);
        if (!buffer()->in_memory) token_.text = next_text().assign(token_.text);
        return finish();
    }
}

// Scans a token for which the characters in memory do not suffice.
cToken const &cAttrLexer::scan_slowly() {
    while (!scan_stream()) continue;
    return finish();
}

// Processes one match. True if it is a token that the caller wants.
bool cAttrLexer::scan_stream() {
    rule const r = match();
    begin_token();
    std::string &text = next_text();
    text.clear();
    append(text);
    if (r == r_block_comment) {
        bool const closed = match_comment();
        append(text);
        if (!closed) return false; // discarded: the input ends inside it
    }
    token_.code = code_of(r, text);
    token_.text = text;
    return is_wanted(r);
}

void cAttrLexer::append(std::string &text) {
    std::string_view const match = matched();
    text.append(match);
    consume();
    pass_lines(std::string_view(text).substr(text.size() - match.size()));
}

// Storage for the text of the next token, different from that of the previous one.
std::string &cAttrLexer::next_text() { return texts_[last_text_ ^= 1]; }

cToken const &cAttrLexer::finish_watched() {
    if (!places_.empty()) set_outer_place();
    if (literal_known_) fill_literal();
    if (dump_) dump();
    return token_;
}

void cAttrLexer::set_outer_place() {
    std::size_t const offset = offset_ - token_.text.size() - before_places_;
    auto const is_before = [](std::size_t at, cAttrPlace const &p) { return at < p.offset; };
    auto next = std::upper_bound(places_.begin(), places_.end(), offset, is_before);
    if (next == places_.begin()) return;
    cAttrPlace const &place = *--next;
    token_.outer_line = place.line;
    token_.outer_column = place.column + static_cast<unsigned>(offset - place.offset);
}

cAttrLiteral const &cAttrLexer::literal() {
    literal_known_ = true;
    settle();
    if (!literal_filled_) fill_literal();
    return literal_;
}

void cAttrLexer::fill_literal() {
    literal_filled_ = true;
    copy(token_, literal_);
}

void cAttrLexer::dump() const {
    cat::std_err() << "TOKEN:" << token_.code << ':' << token_.position << ':' << token_.line << ':'
                   << token_.column << " '" << token_.text << "'" << std::endl;
}

// --- going back ---

void cAttrLexer::place(unsigned position, unsigned line, unsigned column) {
    line_ = line;
    line_start_ = static_cast<unsigned>(offset_) - column;
    uncounted_ = static_cast<unsigned>(offset_) - position;
    before_places_ = offset_ - position;
}

// Seeks in the stream's buffer, so that a failure leaves the stream's state good. An input without
// an offset has the position -1, which the cast preserves; otherwise it would become 4294967295.
void cAttrLexer::reset(unsigned position, unsigned line, unsigned column) {
    pushed_.clear();
    again_ = false;
    settle();
    place(position, line, column);
    token_.code = tkEof;
    literal_.code = tkEof;
    drop_lookahead();
    std::istream &in = *input();
    in.clear();
    if (!in.rdbuf()) return;
    in.rdbuf()->pubseekpos(static_cast<std::int32_t>(position), std::ios::in);
}

cAttrScanner::cAttrScanner(std::istream &in) : lexer_(cAttrLexer::find(in)) {
    if (!lexer_) {
        lexer_ = new cAttrLexer(in);
        lexer_->plain_ = true;
        lexer_->settle();
    }
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
    copy(lexer_->token_, token);
    return token.code;
}

char const *cAttrScanner::memory_place() const {
    std::istream *const in = lexer_->input();
    return in ? scan::memory_place(*lexer_->buffer()) : nullptr;
}

void cAttrScanner::ungettoken() const { lexer_->unget(); }
void cAttrScanner::ungettoken(cAttrLiteral const &token) const { lexer_->unget(token); }
cAttrLiteral const &cAttrScanner::token() const { return lexer_->literal(); }

void cAttrScanner::resettoken() const {
    cToken const &token = lexer_->token_;
    lexer_->reset(token.position, token.line, token.column);
}
void cAttrScanner::resettoken(cAttrLiteral const &token) const {
    lexer_->reset(token.position, token.line, token.column);
}
void cAttrScanner::reset(unsigned position, unsigned line, unsigned column) const {
    lexer_->reset(position, line, column);
}
void cAttrScanner::flush() const {
    lexer_->reset(lexer_->position(), lexer_->line_, lexer_->column());
}

bool cAttrScanner::return_ws() const { return lexer_->return_ws_; }
void cAttrScanner::return_ws(bool on, cSetTmp<bool> *keep) const {
    if (keep) keep->take(lexer_->return_ws_);
    lexer_->return_ws_ = on;
}
void cAttrScanner::return_com(bool on, cSetTmp<bool> *keep) const {
    if (keep) keep->take(lexer_->return_com_);
    lexer_->return_com_ = on;
}
void cAttrScanner::return_all(bool on) const { lexer_->return_ws_ = lexer_->return_com_ = on; }
void cAttrScanner::watch_comments() const { lexer_->watch_com_ = true; }
bool cAttrScanner::is_dumping() const { return lexer_->dump_; }

bool cAttrScanner::setdump(bool on) const {
    bool const before = std::exchange(lexer_->dump_, on);
    lexer_->settle();
    return before;
}

unsigned cAttrScanner::position() const { return lexer_->position(); }
std::size_t cAttrScanner::passed() const { return lexer_->offset_; }
unsigned cAttrScanner::lineno() const { return lexer_->line_; }
unsigned cAttrScanner::column() const { return lexer_->column(); }

std::string const &cAttrScanner::filename() const { return lexer_->filename_; }
void cAttrScanner::set_filename(char const *name) const { lexer_->filename_ = name ? name : ""; }

unsigned cAttrScanner::errcount() const { return lexer_->errors_; }
void cAttrScanner::errincr() { ++lexer_->errors_; }
void cAttrScanner::errclear() { lexer_->errors_ = 0; }
cSignal1<cErr &> &cAttrScanner::sig_error() const { return lexer_->sig_error_; }
std::istream &cAttrScanner::is() const { return *lexer_->input(); }

void cAttrScanner::outer_places(std::vector<cAttrPlace> places) const {
    lexer_->places_ = std::move(places);
    lexer_->settle();
}
bool cAttrScanner::alone() const { return lexer_->users_ == 1 && cAttrLexer::living() == 1; }
