#pragma once
// Tokens of the attribute text format. Three layers: attrFlexLexer finds the longest match in a
// stream's characters, cAttrLexer turns matches into tokens and keeps the counters, cAttrScanner is
// the handle that readers work with. All scanners on one stream share one cAttrLexer, so that a
// nested reader opens its own scanner on the stream and no token of look-ahead is lost.
// The list of lexers is process-wide.

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "qrv/base/csignal.h"
#include "qrv/ccomp.h"
#include "qrv/diagnostics/cerr.h"
#include "qrv/qrvdefs.h"

// Every token code with its number, once. Codes 1 to 255 are single characters; a byte from 128 on
// comes as a negative code. 256, 268 and 269 stand for nothing; callers rely on the numbers.
#define QRV_TOKENS(X)                                                                              \
    X(tkEof, 0)         /* end of input, the text is empty                              */         \
    X(tkInt, 257)       /* integer, decimal or hexadecimal                              */         \
    X(tkUnsigned, 258)  /* integer with u or U behind it                                */         \
    X(tkFloat, 259)     /* floating-point number with f or F behind it                  */         \
    X(tkDouble, 260)    /* floating-point number                                        */         \
    X(tkBool, 261)      /* the word true or false                                       */         \
    X(tkString, 262)    /* string in double or single quotes                            */         \
    X(tkConst, 263)     /* # directly followed by an identifier                         */         \
    X(tkIdent, 264)     /* identifier                                                   */         \
    X(tkComment, 265)   /* comment with the white space before it, see return_com       */         \
    X(tkSpace, 266)     /* white space, see return_ws                                   */         \
    X(tkBadIdent, 267)  /* digits that run straight into letters                        */         \
    X(tkAddAssign, 270) /* +=                                                           */         \
    X(tkShiftLeft, 271) /* <<                                                           */         \
    X(tkAndAssign, 272) /* &=                                                           */

#define QRV_TOKEN_ENUMERATOR(name, number) name = number,
enum attr_token : int { QRV_TOKENS(QRV_TOKEN_ENUMERATOR) };
#undef QRV_TOKEN_ENUMERATOR

namespace cat {
// The name of a token code, such as "tkInt"; null for single characters and unused numbers.
QRV_API char const *token_name(int code);
} // namespace cat

// One token as the scanner sees it. Its text is a view, which stays valid until the second next
// token is read from any scanner on the stream.
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
    explicit cAttrLiteral(cToken const &token);
    cAttrLiteral(cAttrLiteral const &);
    cAttrLiteral(cAttrLiteral &&) noexcept;
    cAttrLiteral &operator=(cAttrLiteral const &);
    cAttrLiteral &operator=(cAttrLiteral &&) noexcept;
    ~cAttrLiteral();

    int code = 0;          // an attr_token or a single character
    std::string text;      // exactly as it stands in the input, quotes and sign included
    unsigned line = 1;     // of the first character, from 1
    unsigned column = 0;   // of the first character, from 0
    unsigned position = 0; // the position counter at the first character
    // Where the token stands in the text that a person sees: the same as line and column, unless
    // the input is a stretch cut out of another text and outer_places() was told where that came
    // from.
    unsigned outer_line = 1;
    unsigned outer_column = 0;
};

// Says that the bytes of an input from `offset` on (newlines counted) come from this place of an
// outer text, up to the next newline or the next such record.
struct cAttrPlace {
    std::size_t offset;
    unsigned line;   // from 1
    unsigned column; // from 0
};

// Keeps a variable's value and puts it back at the end of a scope. Borrows the variable.
template <class T> class cSetTmp {
  public:
    cSetTmp() = default;
    // Keeps the value of `target` and gives it a new one.
    cSetTmp(T &target, T value) {
        take(target);
        target = value;
    }
    cSetTmp(cSetTmp const &) = delete;
    cSetTmp &operator=(cSetTmp const &) = delete;
    ~cSetTmp() { restore(); }
    // Keeps the present value of `target`. What was kept before is put back first.
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

// One input with the characters that were taken from it and not used yet.
struct yy_buffer_state;

// What every matching engine offers.
class QRV_API FlexLexer {
  public:
    FlexLexer() = default;
    FlexLexer(FlexLexer const &) = delete;
    FlexLexer &operator=(FlexLexer const &) = delete;
    virtual ~FlexLexer();
    // Works on `buffer` from now on and adopts it; null leaves no input. A buffer of the caller
    // that was worked on before belongs to the caller again; one that the engine made is deleted.
    virtual void yy_switch_to_buffer(yy_buffer_state *buffer) = 0;
    // A new buffer on a borrowed stream; `size` is the room made at once. The caller owns it until
    // an engine works on it.
    virtual yy_buffer_state *yy_create_buffer(std::istream *in, int size) = 0;
    // Deletes a buffer. After the one worked on was deleted there is no input.
    virtual void yy_delete_buffer(yy_buffer_state *buffer) = 0;
    // Drops the look-ahead and goes on with `in`.
    virtual void yyrestart(std::istream *in) = 0;
    virtual int yylex() = 0;
    // Deletes the buffer worked on and continues with a new one on `in`, and writes to `out`. Null
    // leaves the one as it is.
    virtual void switch_streams(std::istream *in, std::ostream *out) = 0;
};

// The matching engine: longest match, and between equally long ones the lower rule number.
// Takes no character from the stream beyond what the longest match needs to be told.
class QRV_API attrFlexLexer : public FlexLexer {
  public:
    explicit attrFlexLexer(std::istream *in = nullptr, std::ostream *out = nullptr);
    attrFlexLexer(attrFlexLexer const &) = delete;
    attrFlexLexer &operator=(attrFlexLexer const &) = delete;
    ~attrFlexLexer() override;
    void yy_switch_to_buffer(yy_buffer_state *buffer) override;
    yy_buffer_state *yy_create_buffer(std::istream *in, int size) override;
    void yy_delete_buffer(yy_buffer_state *buffer) override;
    void yyrestart(std::istream *in) override;
    int yylex() override; // ends the process: the engine alone makes no tokens
    void switch_streams(std::istream *in, std::ostream *out) override;

    // The rules, by the numbers that decide between equally long matches.
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
        r_block_comment, // its opening; the rest is read by yylex piece by piece
        r_space = 19,
        r_char,
        r_end
    };

  protected:
    // Reads up to `room` characters, in truth one. 0 at the end, below 0 on a broken stream.
    virtual int LexerInput(char *to, int room);
    virtual void LexerOutput(char const *text, int size);
    // Writes the text as a line to the standard error stream and ends the process with status 2.
    virtual void LexerError(char const *text);

    std::istream *input() const; // null if there is none
    // Finds the longest match from the current place. Its text is matched(), until consume().
    rule match();
    std::string_view matched() const;
    void consume(); // goes after the match
    // Inside a block comment: matches up to and with its end. False if the input ends before that.
    bool match_comment();
    void drop_lookahead();

    yy_buffer_state *buffer() const { return buffer_; }
    std::size_t offset_ = 0; // characters used

  private:
    friend class cStreamChars;
    yy_buffer_state *buffer_; // owned
    bool made_ = true;        // by the engine; false after a switch to one of the caller
    std::ostream *out_;       // borrowed, null means the standard output stream
    std::size_t size_ = 0;    // length of the match
};

// Tokens with their places, shared by all scanners on one stream.
class QRV_API cAttrLexer : public attrFlexLexer {
  public:
    explicit cAttrLexer(std::istream &in); // borrows the stream, which must outlive it
    cAttrLexer(cAttrLexer const &) = delete;
    cAttrLexer &operator=(cAttrLexer const &) = delete;
    ~cAttrLexer() override;
    // The next token's code, from the stream.
    int yylex() override;

    // The living lexer on this stream, or null.
    static cAttrLexer *find(std::istream const &in);
    static unsigned living();

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
    // The running counters: what the offset is less than them.
    unsigned line_ = 1;
    unsigned line_start_ = 0;       // of the column
    unsigned uncounted_ = 0;        // of the position
    std::size_t before_places_ = 0; // of the offset in outer places
    bool return_ws_ = false;
    bool return_com_ = false;
    bool watch_com_ = false; // comments come as tokens all the same
    bool special_ = true;    // the next token is not simply scanned, or is one of those watched
    bool watched_ = false;   // tokens need more than their fields: one of the next two, or places_
    bool literal_known_ = false; // someone may keep literal_ and look at it again
    bool dump_ = false;
    bool literal_filled_ = false;
    bool plain_ = false;               // made by a scanner, and so of no derived class
    bool again_ = false;               // the current token comes again
    cAttrLiteral literal_;             // the current token with a string, once that was asked for
    std::vector<cAttrLiteral> pushed_; // a stack, below the token that comes again
    // The texts of the last two tokens, where views of the input don't last: short ones and others.
    static constexpr std::size_t short_text = 32;
    char short_texts_[2][short_text];
    std::string texts_[2];
    unsigned last_text_ = 0;
    int users_ = 0;
    unsigned errors_ = 0;
    cSignal1<cErr &> sig_error_;
    std::string filename_;
    std::vector<cAttrPlace> places_;
    cAttrLexer *next_ = nullptr; // in the list of all lexers
    static cAttrLexer *first_;
};

// A counted share in the lexer of one stream. Streams must outlive their scanners.
class QRV_API cAttrScanner {
  public:
    // Shares the lexer that works on this stream, or makes one. Changes nothing in the stream.
    explicit cAttrScanner(std::istream &in);
    // The same; null means the standard input.
    explicit cAttrScanner(std::istream *in);
    cAttrScanner(cAttrScanner const &) = delete;
    cAttrScanner &operator=(cAttrScanner const &) = delete;
    ~cAttrScanner();

    // Pushed back tokens come again, the last one first. They don't move the running counters.
    void ungettoken() const;
    void ungettoken(cAttrLiteral const &token) const;
    // The current token; changes with the next one read from any scanner on the stream.
    cAttrLiteral const &token() const;
    // The same as a view. Costs nothing, where token() copies the text, of later tokens too.
    cToken const &current() const { return lexer_->token_; }

    // Going back: forgets tokens pushed back and look-ahead, clears the stream's state and seeks. A
    // stream that can't seek stays where it is, in a good state. Since the position counts no
    // newlines, the place is right only if none was passed since the start of the stream.
    void resettoken() const;
    void resettoken(cAttrLiteral const &token) const;
    void reset(unsigned position, unsigned line, unsigned column) const;
    void flush() const; // to the running counters themselves

    // Whether white space and comments come as tokens. `keep` puts the former value back when it
    // dies; it must die before this scanner.
    bool return_ws() const;
    bool return_com() const { return lexer_->return_com_; }
    void return_ws(bool on, cSetTmp<bool> *keep = nullptr) const;
    void return_com(bool on, cSetTmp<bool> *keep = nullptr) const;
    void return_all(bool on) const;
    // From now on comments come as tokens also while return_com is off, to those who pass over
    // them.
    void watch_comments() const;
    // Writes every token read from now on as a line to the standard error stream. The old value.
    bool setdump(bool on) const;
    bool is_dumping() const;

    // The running counters: the place after the last token read.
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

    // For an input cut out of another text: where its bytes come from, by growing offset. Tokens
    // read from then on carry it as their outer place.
    void outer_places(std::vector<cAttrPlace> places) const;
    // True if this scanner alone uses the only lexer there is: no other reading is under way.
    bool alone() const;

  protected:
    // The next token's code; 0 at the end of input, again and again. The token stays in the lexer.
    int gettoken() const;
    int gettoken(cAttrLiteral &token) const;                    // and a copy of it
    cToken const &next_token() const { return lexer_->next(); } // and the current token itself
    // Reads up to the bracket that closes, after one that was read; its code. 0 if the input ends
    // first, or a token of a code below 0 comes.
    int read_enclosed(int open, int close, cEnclosedText &to) const;

  private:
    // Where the next token is looked for, if the input is a text in memory; else null.
    char const *memory_place() const;
    cAttrLexer *lexer_;
};
