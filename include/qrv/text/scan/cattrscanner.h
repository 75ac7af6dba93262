#pragma once
// Tokens of the attribute text format. Three layers: attrFlexLexer finds the longest match in a
// stream's characters, cAttrLexer turns matches into tokens and updates the counters, cAttrScanner
// is the handle that readers use. All scanners on one stream share one cAttrLexer, so that a nested
// reader can open its own scanner on the stream without losing a token of look-ahead. The list of
// lexers is process-wide.

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "qrv/base/csignal.h"
#include "qrv/ccomp.h"
#include "qrv/diagnostics/ccaughterrors.h"
#include "qrv/qrvdefs.h"

// All token codes with their numbers. Codes 1 to 255 are single characters; a byte from 128 on has
// a negative code. 256, 268 and 269 are unused; callers rely on the numbers.
#define QRV_TOKENS(X)                                                                              \
    X(tkEof, 0)         /* end of input, the text is empty                              */         \
    X(tkInt, 257)       /* integer, decimal or hexadecimal                              */         \
    X(tkUnsigned, 258)  /* integer with the suffix u or U                               */         \
    X(tkFloat, 259)     /* floating-point number with the suffix f or F                 */         \
    X(tkDouble, 260)    /* floating-point number                                        */         \
    X(tkBool, 261)      /* the word true or false                                       */         \
    X(tkString, 262)    /* string in double or single quotes                            */         \
    X(tkConst, 263)     /* # directly followed by an identifier                         */         \
    X(tkIdent, 264)     /* identifier                                                   */         \
    X(tkComment, 265)   /* comment with the white space before it, see return_com       */         \
    X(tkSpace, 266)     /* white space, see return_ws                                   */         \
    X(tkBadIdent, 267)  /* digits directly followed by letters                          */         \
    X(tkAddAssign, 270) /* +=                                                           */         \
    X(tkShiftLeft, 271) /* <<                                                           */         \
    X(tkAndAssign, 272) /* &=                                                           */

#define QRV_TOKEN_ENUMERATOR(name, number) name = number,
enum attr_token : int { QRV_TOKENS(QRV_TOKEN_ENUMERATOR) };
#undef QRV_TOKEN_ENUMERATOR

namespace cat {
// The name of a token code, such as "tkInt"; null for single characters and unused numbers.
QRV_API char const *token_name(int code);

// Classes of token codes.
constexpr bool is_separator(int code) noexcept { return code == ';' || code == ','; }
constexpr bool is_opening(int code) noexcept {
    return code == '(' || code == '{' || code == '[' || code == '<';
}
constexpr bool is_closing(int code) noexcept {
    return code == ')' || code == '}' || code == ']' || code == '>';
}
// Is this cToken or cAttrLiteral the end of input? A byte 0 has the same code, but its text is not
// empty.
template <class Token> bool is_end(Token const &token) noexcept {
    return token.code == tkEof && token.text.empty();
}
} // namespace cat

// One token of the scanner. Its text is a view that is valid until the token after the next is read
// from any scanner on the stream.
struct cToken {
    std::string_view text;     // exactly as in the input, quotes and sign included
    int code = 0;              // an attr_token or a single character
    unsigned line = 1;         // of the first character, from 1
    unsigned column = 0;       // of the first character, from 0
    unsigned position = 0;     // the position counter at the first character
    unsigned outer_line = 1;   // see cAttrLiteral
    unsigned outer_column = 0; // see cAttrLiteral
};

// One token. A plain record with value semantics.
struct QRV_API cAttrLiteral {
    cAttrLiteral();
    // Copies the text of the view.
    explicit cAttrLiteral(cToken const &token);
    cAttrLiteral(cAttrLiteral const &);
    cAttrLiteral(cAttrLiteral &&) noexcept;
    cAttrLiteral &operator=(cAttrLiteral const &);
    cAttrLiteral &operator=(cAttrLiteral &&) noexcept;
    ~cAttrLiteral();

    int code = 0;          // an attr_token or a single character
    std::string text;      // exactly as in the input, quotes and sign included
    unsigned line = 1;     // of the first character, from 1
    unsigned column = 0;   // of the first character, from 0
    unsigned position = 0; // the position counter at the first character
    // The token's position in the text that a person sees: equal to line and column, unless the
    // input is a part of another text and outer_places() has set its origin.
    unsigned outer_line = 1;
    unsigned outer_column = 0;
};

// The bytes of an input from `offset` on (newlines counted) come from this position of an outer
// text, up to the next newline or the next such record.
struct cAttrPlace {
    std::size_t offset;
    unsigned line;   // from 1
    unsigned column; // from 0
};

// Saves a variable's value and restores it at the end of a scope. Borrows the variable.
template <class T> class cSetTmp {
  public:
    cSetTmp() = default;
    // Saves the value of `target` and assigns a new one.
    cSetTmp(T &target, T value) {
        take(target);
        target = value;
    }
    cSetTmp(cSetTmp const &) = delete;
    cSetTmp &operator=(cSetTmp const &) = delete;
    ~cSetTmp() { restore(); }
    // Saves the current value of `target`. First restores the variable that was saved before.
    void take(T &target) {
        restore();
        target_ = &target;
        old_ = target;
    }

  private:
    void restore() {
        if (target_) *target_ = old_;
    }
    T *target_ = nullptr;
    T old_{};
};

struct cEnclosedText; // see text/scan/cenclosed_text.h

// An input, and the characters that were read from it and not used yet.
struct yy_buffer_state;

// The interface of a matching engine.
class QRV_API FlexLexer {
  public:
    FlexLexer() = default;
    FlexLexer(FlexLexer const &) = delete;
    FlexLexer &operator=(FlexLexer const &) = delete;
    virtual ~FlexLexer();
    // Switches to `buffer` and adopts it; null means no input. A previous buffer of the caller
    // belongs to the caller again; one that the engine created is deleted.
    virtual void yy_switch_to_buffer(yy_buffer_state *buffer) = 0;
    // A new buffer on a borrowed stream; `size` is its initial capacity. The caller owns it until
    // an engine switches to it.
    virtual yy_buffer_state *yy_create_buffer(std::istream *in, int size) = 0;
    // Deletes a buffer. If it was the current one, there is no input afterwards.
    virtual void yy_delete_buffer(yy_buffer_state *buffer) = 0;
    // Drops the look-ahead and continues with `in`.
    virtual void yyrestart(std::istream *in) = 0;
    // The next token's code.
    virtual int yylex() = 0;
    // Deletes the current buffer and continues with a new one on `in`, and writes to `out`. Null
    // leaves the input or output unchanged.
    virtual void switch_streams(std::istream *in, std::ostream *out) = 0;
};

// The matching engine: longest match, and among equally long ones the lower rule number. Reads no
// more characters from the stream than it needs to determine the longest match.
class QRV_API attrFlexLexer : public FlexLexer {
  public:
    // Borrows both. Null for no input, and for the standard output stream.
    explicit attrFlexLexer(std::istream *in = nullptr, std::ostream *out = nullptr);
    attrFlexLexer(attrFlexLexer const &) = delete;
    attrFlexLexer &operator=(attrFlexLexer const &) = delete;
    ~attrFlexLexer() override;
    void yy_switch_to_buffer(yy_buffer_state *buffer) override;
    yy_buffer_state *yy_create_buffer(std::istream *in, int size) override;
    void yy_delete_buffer(yy_buffer_state *buffer) override;
    void yyrestart(std::istream *in) override;
    int yylex() override; // ends the process: the engine alone creates no tokens
    void switch_streams(std::istream *in, std::ostream *out) override;

    // The rules; among equally long matches the lower number wins.
    enum rule : int {
        r_true = 1,
        r_false,
        r_hex,
        r_unsigned,
        r_bad_ident,
        r_int,
        r_float,
        r_double,
        r_string,
        r_const,
        r_ident,
        r_add_assign,
        r_shift_left,
        r_and_assign,
        r_line_comment,
        r_block_comment, // its opening; yylex reads the rest in pieces
        r_space = 19,
        r_char,
        r_end
    };

  protected:
    // Reads up to `room` characters, at present one. 0 at the end, below 0 on a broken stream.
    virtual int LexerInput(char *to, int room);
    virtual void LexerOutput(char const *text, int size);
    // Writes the string as a line to the standard error stream and ends the process with status 2.
    virtual void LexerError(char const *text);

    std::istream *input() const; // null if there is no input
    // Finds the longest match from the current position. matched() is its text, until consume().
    rule match();
    std::string_view matched() const;
    void consume(); // moves past the match
    // Inside a block comment: matches up to and including its end. False if the input ends before
    // that.
    bool match_comment();
    void drop_lookahead();

    yy_buffer_state *buffer() const { return buffer_; }
    std::size_t offset_ = 0; // characters used

  private:
    friend class cStreamChars;
    yy_buffer_state *buffer_; // owned
    bool made_ = true;        // the engine created buffer_; false: the caller did
    std::ostream *out_;       // borrowed, null means the standard output stream
    std::size_t size_ = 0;    // length of the match
};

// Tokens with their positions, shared by all scanners on one stream.
class QRV_API cAttrLexer : public attrFlexLexer {
  public:
    explicit cAttrLexer(std::istream &in); // borrows the stream, which must outlive it
    cAttrLexer(cAttrLexer const &) = delete;
    cAttrLexer &operator=(cAttrLexer const &) = delete;
    ~cAttrLexer() override;
    // The next token's code, from the stream.
    int yylex() override;

    // The existing lexer on this stream, or null.
    static cAttrLexer *find(std::istream const &in);
    static unsigned living(); // the number of existing lexers

  private:
    friend class cAttrScanner;
    friend class cCommonTokens;
    int gettoken();
    cToken const &next();
    cToken const &next_of_any_kind();
    cToken const &held_token();
    cToken const &scan();
    cToken const &scan_slowly();
    bool scan_stream();
    bool is_wanted(rule r) const;
    void unget();
    void unget(cAttrLiteral const &token);
    void reset(unsigned position, unsigned line, unsigned column);
    unsigned column() const { return static_cast<unsigned>(offset_) - line_start_; }
    unsigned position() const { return static_cast<unsigned>(offset_) - uncounted_; }
    void place(unsigned position, unsigned line, unsigned column);
    void begin_token();
    void pass_lines(std::size_t lines, std::size_t column);
    void pass_lines(std::string_view text);
    std::string &next_text();
    void append(std::string &text);
    cToken const &finish();
    cToken const &finish_watched();
    void set_outer_place();
    cAttrLiteral const &literal();
    void fill_literal();
    void settle();
    void dump() const;

    cToken token_; // the current one
    // The running counters. The first is the line; of each other counter, the difference from the
    // offset is stored.
    unsigned line_ = 1;
    unsigned line_start_ = 0;       // of the column
    unsigned uncounted_ = 0;        // of the position
    std::size_t before_places_ = 0; // of the offset in outer places
    bool return_ws_ = false;
    bool return_com_ = false;
    bool watch_com_ = false; // comments are tokens even without return_com_
    bool special_ = true;    // the next token needs a special case, or is watched
    bool watched_ = false;   // tokens need more than their fields: one of the next two, or places_
    bool literal_known_ = false; // the caller may hold a reference to literal_
    bool dump_ = false;
    bool literal_filled_ = false;
    bool plain_ = false;               // created by a scanner, so not an object of a derived class
    bool again_ = false;               // the current token is returned again
    cAttrLiteral literal_;             // the current token as a string, once requested
    std::vector<cAttrLiteral> pushed_; // a stack, below the token that is returned again
    // The texts of the last two tokens, if views of the input would not stay valid: short ones and
    // others.
    static constexpr std::size_t short_text = 32;
    char short_texts_[2][short_text];
    std::string texts_[2];
    unsigned last_text_ = 0;
    int users_ = 0;
    unsigned errors_ = 0;
    cErrorSignal sig_error_;
    std::string filename_;
    std::vector<cAttrPlace> places_;
    cAttrLexer *next_ = nullptr; // in the list of all lexers
    static cAttrLexer *first_;
};

// A counted share in the lexer of one stream. Streams must outlive their scanners.
class QRV_API cAttrScanner {
  public:
    // Shares the existing lexer on this stream, or creates one. Changes nothing in the stream.
    explicit cAttrScanner(std::istream &in);
    // The same; null means the standard input.
    explicit cAttrScanner(std::istream *in);
    cAttrScanner(cAttrScanner const &) = delete;
    cAttrScanner &operator=(cAttrScanner const &) = delete;
    ~cAttrScanner();

    // Pushed back tokens are returned again, the last one first. They don't change the running
    // counters.
    void ungettoken() const;
    void ungettoken(cAttrLiteral const &token) const;
    // Reads the next token; code 0 and no text at the end of input, repeatedly. Does not call the
    // yylex() of a derived lexer.
    cToken const &next_token() const { return lexer_->next(); }
    // The current token; changes when the next one is read from any scanner on the stream.
    cAttrLiteral const &token() const;
    // The same as a view. Costs nothing. In contrast, after the first call of token() the text of
    // each token is copied.
    cToken const &current() const { return lexer_->token_; }

    // Go back to the start of the current token, of `token`, or to this position: drop pushed back
    // tokens and look-ahead, clear the stream's state and seek. A stream that can't seek keeps its
    // position, in a good state. Since the position counter omits newlines, the result is correct
    // only if no newline was read since the start of the stream.
    void resettoken() const;
    void resettoken(cAttrLiteral const &token) const;
    void reset(unsigned position, unsigned line, unsigned column) const;
    void flush() const; // the same, to the running counters

    // Whether white space and comments are returned as tokens. `keep` restores the former value in
    // its destructor; it must be destroyed before this scanner.
    bool return_ws() const;
    bool return_com() const { return lexer_->return_com_; }
    void return_ws(bool on, cSetTmp<bool> *keep = nullptr) const;
    void return_com(bool on, cSetTmp<bool> *keep = nullptr) const;
    void return_all(bool on) const;
    // After this call, comments are returned as tokens even while return_com is off, so the callers
    // must skip them.
    void watch_comments() const;
    // If `on`, writes every token that is read as a line to the standard error stream. Returns the
    // old value.
    bool setdump(bool on) const;
    bool is_dumping() const;

    // The running counters: the position after the last token read.
    unsigned position() const;
    unsigned lineno() const;
    unsigned column() const;
    std::size_t passed() const; // characters since the first scanner of the stream was created

    // The file name for messages; empty if never set. Null empties it.
    std::string const &filename() const;
    void set_filename(char const *name) const;

    // The error count belongs to the stream, not to this scanner.
    unsigned errcount() const;
    void errincr();
    void errclear();
    cSignal1<cErr &> &sig_error() const;
    std::istream &is() const;

    // For an input that is a part of another text: sets the origin of its bytes, by ascending
    // offset. It determines the outer position of each token that is read afterwards.
    void outer_places(std::vector<cAttrPlace> places) const;
    // True if only this scanner uses the only existing lexer: no other reading is in progress.
    bool alone() const;

  protected:
    // The next token's code; 0 at the end of input, repeatedly. The token stays in the lexer.
    int gettoken() const;
    int gettoken(cAttrLiteral &token) const; // and a copy of it
    // Reads up to the closing bracket, after the opening one was read; returns its code. Returns 0
    // if the input ends first, or at a token with a code below 0.
    int read_enclosed(int open, int close, cEnclosedText &to) const;

  private:
    // The next character of an input that is text in memory; null for other inputs.
    char const *memory_place() const;
    cAttrLexer *lexer_;
};
