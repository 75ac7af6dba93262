// Tokens: the current one, those pushed back, the counters, and who shares them.
//
// Each match begins a token at the running counters, except inside a block comment that is read in
// pieces, which extend the token begun by its opening. Then the counters go over the matched text.
// A token pushed back and read again doesn't move them. The text of a token is a view: of a text in
// memory, of one of the lexer's two copies, or of a table of single characters. The string that
// token() returns is filled when it is first asked for; since the caller may keep the reference,
// from then on with each token. A lexer is in the list of lexers from its constructor to its
// destructor, and lives as long as a scanner uses it. The list is searched by the stream's address:
// a stream that dies before its scanners leaves a lexer that a new stream at that address would
// find.

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

// Asked of the buffer: tellg would set the fail state of a stream that is at its end.
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

// Codes of the tokens by rule number; a single character has its own.
constexpr std::array<int, 22> codes = {
    0,         tkBool,   tkBool,  tkInt,   tkUnsigned,  tkBadIdent,  tkInt,       tkFloat,
    tkDouble,  tkString, tkConst, tkIdent, tkAddAssign, tkShiftLeft, tkAndAssign, tkComment,
    tkComment, 0,        0,       tkSpace, 0,           tkEof};

constexpr std::array<char, 256> make_singles() {
    std::array<char, 256> singles{};
    for (unsigned i = 0; i < singles.size(); ++i)
        singles[i] = static_cast<char>(static_cast<unsigned char>(i));
    return singles;
}
// Each character by itself, for the texts of tokens of one.
constexpr std::array<char, 256> singles = make_singles();

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
    if (again_ || !pushed_.empty()) return pushed_token();
    return plain_ ? scan() : yylex();
}

int cAttrLexer::pushed_token() {
    if (std::exchange(again_, false)) return token_.code;
    literal_ = std::move(pushed_.back());
    pushed_.pop_back();
    literal_filled_ = true;
    token_ = {
        next_text() = literal_.text, literal_.code,       literal_.line,        literal_.column,
        literal_.position,           literal_.outer_line, literal_.outer_column};
    return token_.code;
}

void cAttrLexer::unget() {
    if (again_) pushed_.emplace_back(token_);
    again_ = true;
}

void cAttrLexer::unget(cAttrLiteral const &token) {
    if (std::exchange(again_, false)) pushed_.emplace_back(token_);
    pushed_.push_back(token);
}

// --- matches become tokens ---

int cAttrLexer::yylex() { return scan(); }

bool cAttrLexer::is_wanted(rule r) const {
    if (r == r_space) return return_ws_;
    return return_com_ || (r != r_line_comment && r != r_block_comment);
}

int cAttrLexer::scan() {
    for (;;) {
        scan::cWindow window(buffer(), plain_);
        scan::cWhite white;
        if (!return_ws_) white = window.pass_white();
        scan::cRules<scan::cWindow> rules(window);
        rule const r = rules.match();
        // A comment without an end begins with what the stream has and asks for more.
        if (r == r_block_comment && (!rules.match_comment(rules.size()) || window.met_end()))
            window.give_up();
        if (window.ran_out()) {
            if (scan_stream()) return token_.code;
            continue;
        }
        if (white.size > 0) pass(white.size, white.lines, white.column);
        window.take();
        if (char c; window.met_end()) attrFlexLexer::LexerInput(&c, 1); // the stream notes it
        begin_token();
        std::string_view text = window.text(rules.size());
        if (rules.lines())
            pass(text);
        else
            pass(text.size(), 0, 0);
        bool const wanted = is_wanted(r);
        int code = codes[static_cast<std::size_t>(r)];
        if (r == r_char) {
            code = static_cast<signed char>(text.front());
            text = {&singles[static_cast<unsigned char>(code)], 1};
        } else if (wanted && !window.lasting()) {
            text = next_text().assign(text);
        }
        window.consume(rules.size());
        if (!wanted) continue;
        finish(code, text);
        return code;
    }
}

// One match for which more of the stream is needed than lies in memory. True if a token came of it.
bool cAttrLexer::scan_stream() {
    rule const r = match();
    begin_token();
    std::string &text = next_text();
    text.clear();
    append(text);
    if (r == r_block_comment) {
        bool const closed = match_comment();
        append(text);
        if (!closed) return false; // dropped: the input ends in it
    }
    if (!is_wanted(r)) return false;
    finish(r == r_char ? static_cast<signed char>(text.front())
                       : codes[static_cast<std::size_t>(r)],
           text);
    return true;
}

void cAttrLexer::append(std::string &text) {
    pass(matched());
    text.append(matched());
    consume();
}

void cAttrLexer::begin_token() {
    token_.line = token_.outer_line = line_;
    token_.column = token_.outer_column = column_;
    token_.position = position_;
}

// Moves the counters over `size` characters with so many newlines, and `column` characters after
// the last newline if there is one.
// DELIBERATE: the position counts every character but the newline.
//   Pinned: scanner_position_skips_newlines
void cAttrLexer::pass(std::size_t size, std::size_t lines, std::size_t column) {
    line_ += static_cast<unsigned>(lines);
    column_ = static_cast<unsigned>(lines ? column : column_ + size);
    position_ += static_cast<unsigned>(size - lines);
    offset_ += size;
}

void cAttrLexer::pass(std::string_view text) {
    auto const lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    pass(text.size(), lines, text.size() - 1 - text.rfind('\n'));
}

// A string for the text of the next token, other than that of the one before.
std::string &cAttrLexer::next_text() { return texts_[last_text_ ^= 1]; }

void cAttrLexer::finish(int code, std::string_view text) {
    token_.code = code;
    token_.text = text;
    literal_filled_ = false;
    if (watched_) finish_watched();
}

void cAttrLexer::finish_watched() {
    if (!places_.empty()) set_outer_place();
    if (literal_known_) fill_literal();
    if (dump_) dump();
}

void cAttrLexer::set_outer_place() {
    std::size_t const offset = offset_ - token_.text.size();
    auto const behind = [](std::size_t at, cAttrPlace const &p) { return at < p.offset; };
    auto next = std::upper_bound(places_.begin(), places_.end(), offset, behind);
    if (next == places_.begin()) return;
    cAttrPlace const &place = *--next;
    token_.outer_line = place.line;
    token_.outer_column = place.column + static_cast<unsigned>(offset - place.offset);
}

cAttrLiteral const &cAttrLexer::literal() {
    literal_known_ = true;
    watch();
    if (!literal_filled_) fill_literal();
    return literal_;
}

void cAttrLexer::fill_literal() {
    literal_filled_ = true;
    copy(token_, literal_);
}

void cAttrLexer::watch() { watched_ = literal_known_ || dump_ || !places_.empty(); }

void cAttrLexer::dump() const {
    cat::std_err() << "TOKEN:" << token_.code << ':' << token_.position << ':' << token_.line << ':'
                   << token_.column << " '" << token_.text << "'" << std::endl;
}

// The seek goes to the stream's buffer: a failure then leaves the stream's state good. A position
// of -1, from an input that can't tell its offset, must not become one of four thousand million.
void cAttrLexer::reset(unsigned position, unsigned line, unsigned column) {
    pushed_.clear();
    again_ = false;
    position_ = position;
    offset_ = position;
    line_ = line;
    column_ = column;
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

cToken const &cAttrScanner::next_token() const {
    lexer_->gettoken();
    return lexer_->token_;
}

void cAttrScanner::ungettoken() const { lexer_->unget(); }
void cAttrScanner::ungettoken(cAttrLiteral const &token) const { lexer_->unget(token); }
cAttrLiteral const &cAttrScanner::token() const { return lexer_->literal(); }
cToken const &cAttrScanner::current() const { return lexer_->token_; }

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
bool cAttrScanner::setdump(bool on) const {
    bool const before = std::exchange(lexer_->dump_, on);
    lexer_->watch();
    return before;
}

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
    lexer_->watch();
}
bool cAttrScanner::alone() const { return lexer_->users_ == 1 && cAttrLexer::living() == 1; }
