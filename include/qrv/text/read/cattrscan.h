#pragma once
// Reading object text. cAttrScan reads one value from a stream and reports errors; the `read`
// method of a type, reached through cObj::read, decides how the inside of an object is read.
//
// A scan doesn't stop at an error: each bad value is reported, given cat::bad() or skipped, and
// reading goes on at the next delimiter. The error count tells success. Reports go through the
// scanner's signal to cat::errhandler(), which prints or throws them; while a cat::ReadReport
// lives they go there instead.
//
// The lexer, and with it the counters and the error count, belongs to the stream: all scanners on
// one stream share them. Streams must outlive their scanners. Reading runs foreign code (`newobj`,
// `read`, hooks of key types) and may load types. Path, back references and gathered comments are
// process-wide.

#include "qrv/core/ceros.h"
#include "qrv/core/cobj.h"
#include "qrv/text/scan/cattrscanner.h"

#include <memory>

namespace cat {
// The brackets around the text of a value: built from the opening one, 0 and 0 from others.
struct QRV_API Brackets {
    constexpr explicit Brackets(int c) noexcept : open(0), close(0) {
        switch (c) {
        case '(':
            open = '(', close = ')';
            break;
        case '<':
            open = '<', close = '>';
            break;
        case '[':
            open = '[', close = ']';
            break;
        case '{':
            open = '{', close = '}';
            break;
        default:
            break;
        }
    }
    char open;
    char close;
};

// How deep values may stand in each other in a text, default 1000; less if the stack ends before.
// A deeper one is skipped:   0x40000001 "Nesting is deeper than <number>, path : <path>"
extern QRV_API int max_read_depth;
// The same for typed values in typed values, whose text is scanned again at each level.
constexpr int max_typed_depth = 64;
} // namespace cat

class QRV_API cAttrScan : public cAttrScanner {
  public:
    // Result of a scan. The code of a reported error is 0x40000000 plus the number.
    enum ASR : int {
        asrSyntax = 1,      // misplaced =, failed conversion, missing pattern, unclosed container
        asrToken = 2,       // unexpected token, missing delimiter, digits that run into letters
        asrRef = 3,         // a #cRef that finds nothing
        asrConst = 4,       // an unknown # constant
        asrUnknownType = 5, // an unknown type name before a bracket
        asrType = 6,        // a type that can't be instantiated or read
        asrSeparator = 7    // a superfluous separator
    };

    // With report, the destructor prints the summary if there were errors. The error count is the
    // stream's: a summary inside another scan of the same stream clears that one's count too.
    // A null stream means the standard input.
    cAttrScan(std::istream &is, bool report);
    cAttrScan(std::istream *is, bool report);
    cAttrScan(cAttrScan const &) = delete;
    cAttrScan &operator=(cAttrScan const &) = delete;
    ~cAttrScan(); // lets no exception out

    // The next token but comments, which are gathered while return_com is on. From the first token
    // of code 0 or below on (a byte from 128 outside of strings and comments is one) it is 0.
    int gettok(cAttrLiteral &token);
    int gettok();

    // Reads one value. 0: `result` has it. Positive: an ASR, reported; `result` as it was. -1: a
    // closing bracket or the end of input came instead. `delim`, if not null, takes the token that
    // ended the value, as far as it was read: ')' after every typed value and reference.
    // Throws what the handlers of its reports throw.
    int scan_obj(objref &result, int *delim);

    // Reads up to the bracket that closes, which is the result, or 0 at the end of input. The
    // text between is appended without comments; null skips it.
    int read_subentry(cat::Brackets const &brackets, std::string &text);
    int read_subentry(cat::Brackets const &brackets, std::string *text);
    // Skips up to `;`, `,`, the end of input or a single character of `set`, which is the result.
    int read_to_delimiter(std::string const &set);
    // Skips a bracketed stretch whose opening bracket was read; with any other argument the one
    // after the next opening bracket.
    void read_to_endcontainer(int open);

    // Begin an error: the text so far is the place, with errp also the path. The caller writes on
    // and calls fire(). An asr above 0 sets the code and counts; else `handled` is set.
    cErrStream &errs();
    cErrStream &errs(ASR asr);
    cErrStream &errp(ASR asr);
    // Sends what was composed: sig() with a copy, or to the living report. Throws by the handlers.
    void fire();
    // The same for an error composed elsewhere; not counted.
    void fire(cErr const &error);
    cSignal1<cErr &> &sig() { return sig_error(); }
    // The token that the next report is about, for reports; otherwise the current one.
    void about(cAttrLiteral const &token) noexcept;
    void about(unsigned line, unsigned column) noexcept; // from 1 and from 0, in the outer text
    // Like about(), for the opening bracket of a container that ended with the current token.
    void unclosed(cAttrLiteral const &bracket) noexcept;
    void unclosed(unsigned line, unsigned column) noexcept;

    // "name (line) ", or "Line 12: " without a file name; empty if oneline.
    std::string posstring() const;
    // Prints the summary on the standard output stream, clearing the count; nothing without errors
    // unless always.
    void scan_report(bool always);

    // Opens the std::ifstream that this scanner reads, in binary, at its start. False, unless quiet
    // with the error 1 "Cannot open file: ", for what can't be read, a directory too.
    bool openfile(char const *name, bool quiet);
    // Leaves positions out of messages.
    void set_oneline() noexcept { oneline_ = true; }
    bool oneline() const noexcept { return oneline_; }

    // The comment text gathered since the last value of this process.
    static std::string &com_collected();
    // Hands gathered comments to the value noted last and notes this one; null notes none. Nothing
    // while return_com is off.
    void note_object(objref const &value);

  private:
    friend class cHashReader;
    friend class cValueReader;

    // While the inside of a container is read by the scan that read its bracket: its own latch, and
    // places in messages.
    class cInner {
      public:
        explicit cInner(cAttrScan &scan) noexcept
            : scan_(scan), eof_seen_(scan.eof_seen_), oneline_(scan.oneline_) {
            scan.connect_handler();
            scan.eof_seen_ = scan.oneline_ = false;
        }
        cInner(cInner const &) = delete;
        cInner &operator=(cInner const &) = delete;
        ~cInner() {
            scan_.eof_seen_ = eof_seen_;
            scan_.oneline_ = oneline_;
        }

      private:
        cAttrScan &scan_;
        bool const eof_seen_, oneline_;
    };

    void start();
    void connect_handler();
    int next(); // as gettok; the token is the current one
    int next_after(int code);
    int enclose(cat::Brackets const &brackets, cEnclosedText &to); // as read_enclosed()
    int skip_to_close(cat::Brackets const &brackets);
    bool read_inner(cMapObj &map, cTypeObj &type);
    static bool reads_entries(cTypeObj const &type);
    void note_new(objref const &value); // null, or no constant
    void hand_comment();
    bool made_container(objref const &value) const noexcept {
        return made_ && made_ == value.get();
    }
    void begin(ASR asr);
    void forget_about() noexcept;
    void fire_from(cErr const &error, size_t prefix);

    cObj const *made_ = nullptr; // the container that the last value is, if brackets alone made it
    unsigned connected_round_ = 0;  // the handler is connected for this round of late entries
    bool separator_passed_ = false; // in front of the next value
    bool eof_seen_ = false;
    bool report_;
    bool oneline_ = false;
    std::unique_ptr<cErrStream> err_; // the error under composition, made by the first one
    size_t prefix_ = 0;               // of the text under composition: place and path
    unsigned about_line_ = 0;         // 0: the current token
    unsigned about_column_ = 0;
    bool about_unclosed_ = false;
};

inline int cAttrScan::next() {
    if (eof_seen_) return tkEof;
    int const code = next_token().code;
    return code > 0 && code != tkComment ? code : next_after(code);
}

namespace cat {
// A container, or a bare list of entries up to the end of input, which becomes a map. 0 success;
// 1 errors: then `result` is set only with keep; else what scan_obj gave.
QRV_API int scan_container(std::istream &is, objref &result, bool keep);

// Methods `read` for types. args holds the stream. One value, assigned or converted to obj; and
// entries, copied onto a new object that obj is then assigned.
QRV_API bool scan_attrset(cObj &obj, objref &args);
QRV_API bool scan_attrcopy(cObj &obj, objref &args);
// Of types without text: reads nothing; true.
QRV_API bool read_voiddata(cObj &obj, objref &args);

// The object for the text of a token from tkInt to tkIdent; false if it doesn't fit its type.
QRV_API bool read_stdtype(int token, char const *text, objref &result);

// True while any text is being read.
QRV_API bool is_reading() noexcept;
} // namespace cat
