#pragma once
// Reading object text. cAttrScan reads one value from a stream and reports errors. The `read`
// method of a type, called through cObj::read, reads the inside of an object.
//
// A scan doesn't stop at an error: it reports each bad value, replaces it by cat::bad() or skips
// it, and continues at the next delimiter. The error count shows whether it succeeded. The
// scanner's signal sends reports to cat::errhandler(), which prints or throws them. While a
// cat::ReadReport exists, it receives them instead.
//
// The lexer, and with it the counters and the error count, belongs to the stream: all scanners on
// one stream share them. Streams must outlive their scanners. Reading runs user code (`newobj`,
// `read`, hooks of key types) and may load types. Path, back references and collected comments are
// process-wide.

#include "qrv/core/ceros.h"
#include "qrv/core/cobj.h"
#include "qrv/text/scan/cattrscanner.h"

#include <memory>

namespace cat {
// The opening bracket `c` and the closing one that matches it. Both are 0 if `c` is not an opening
// bracket.
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

// The limit on the nesting of values in text, default 1000; lower if the stack is exhausted first.
// A deeper value is skipped:   0x40000001 "Nesting is deeper than <number>, path : <path>"
extern QRV_API int max_read_depth;
// The same for typed values inside typed values, whose text is scanned again at each level.
constexpr int max_typed_depth = 64;
} // namespace cat

class QRV_API cAttrScan : public cAttrScanner {
  public:
    // Result of a scan. The code of a reported error is 0x40000000 plus the number.
    enum ASR : int {
        asrSyntax = 1,      // misplaced =, failed conversion, missing pattern, unclosed container
        asrToken = 2,       // unexpected token, missing delimiter, digits followed by letters
        asrRef = 3,         // a #cRef that leads nowhere
        asrConst = 4,       // an unknown # constant
        asrUnknownType = 5, // an unknown type name before a bracket
        asrType = 6,        // a type that can't be instantiated or read
        asrSeparator = 7    // a superfluous separator
    };

    // With report, the destructor prints the summary if there were errors. The error count is the
    // stream's: a summary inside another scan of the same stream clears that scan's count too. A
    // null stream means the standard input.
    cAttrScan(std::istream &is, bool report);
    cAttrScan(std::istream *is, bool report);
    cAttrScan(cAttrScan const &) = delete;
    cAttrScan &operator=(cAttrScan const &) = delete;
    ~cAttrScan(); // throws nothing

    // The next token except comments, which are collected while return_com is on. After the first
    // token with a code of 0 or below, such as a byte from 128 outside strings and comments, each
    // call returns 0.
    int gettok(cAttrLiteral &token);
    int gettok();

    // Reads one value. 0: `result` has it. Positive: an ASR, which was reported; `result` is
    // unchanged. -1: a closing bracket or the end of input was read instead. `delim`, if not null,
    // receives the token that ended the value, if it was read: ')' after every typed value and
    // reference. Throws the exceptions of the report's handlers.
    int scan_obj(objref &result, int *delim);

    // Reads up to the closing bracket; returns it, or 0 at the end of input. Appends the text in
    // between without comments; with null, skips it.
    int read_subentry(cat::Brackets const &brackets, std::string &text);
    int read_subentry(cat::Brackets const &brackets, std::string *text);
    // Skips up to `;`, `,`, the end of input or a single character of `set`; returns that.
    int read_to_delimiter(std::string const &set);
    // Skips a bracketed part whose opening bracket was read; any other argument skips the part
    // after the next opening bracket.
    void read_to_endcontainer(int open);

    // These begin an error whose text starts with the position, and for errp also the path. The
    // caller appends the rest and calls fire(). An asr above 0 sets the code and increases the
    // error count; otherwise the error has `handled` set.
    cErrStream &errs();
    cErrStream &errs(ASR asr);
    cErrStream &errp(ASR asr);
    // Sends the composed error to the current report, or else a copy of it by sig(). Throws what
    // the handlers throw.
    void fire();
    // The same for an error composed elsewhere; not counted.
    void fire(cErr const &error);
    cSignal1<cErr &> &sig() { return sig_error(); }
    // Sets the token that the next report is about; the default is the current one.
    void about(cAttrLiteral const &token) noexcept;
    void about(unsigned line, unsigned column) noexcept; // from 1 and from 0, in the outer text
    // Like about(), for the opening bracket of a container that ended with the current token.
    void unclosed(cAttrLiteral const &bracket) noexcept;
    void unclosed(unsigned line, unsigned column) noexcept;

    // "name (line) ", or "Line 12: " without a file name; empty if oneline.
    std::string posstring() const;
    // Prints the summary on the standard output stream and clears the count. Without errors it
    // prints only if always.
    void scan_report(bool always);

    // Opens the std::ifstream that this scanner reads, in binary mode, at its start. False for a
    // file that can't be read, also for a directory; unless quiet it reports the error 1 "Cannot
    // open file: ".
    bool openfile(char const *name, bool quiet);
    // Omits positions in messages.
    void set_oneline() noexcept { oneline_ = true; }
    bool oneline() const noexcept { return oneline_; }

    // The comment text collected since the last value of this process.
    static std::string &com_collected();
    // Attaches the collected comments to the value of the last call, and records this value for the
    // next call; null records none. No effect while return_com is off.
    void note_object(objref const &value);

  private:
    friend class cHashReader;
    friend class cValueReader;

    // Exists while a scan reads the inside of a container whose opening bracket it has read. Saves
    // the scan's end-of-input flag and oneline setting, and resets them.
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
    int next(); // like gettok; the token is the current one
    int next_after(int code);
    int enclose(cat::Brackets const &brackets, cEnclosedText &to); // like read_enclosed()
    int skip_to_close(cat::Brackets const &brackets);
    bool read_inner(cMapObj &map, cTypeObj &type);
    static bool reads_entries(cTypeObj const &type);
    void note_new(objref const &value); // null, or not a constant
    void hand_comment();
    bool made_container(objref const &value) const noexcept {
        return made_ && made_ == value.get();
    }
    void begin(ASR asr);
    void forget_about() noexcept;
    void fire_from(cErr const &error, size_t prefix);

    cObj const *made_ = nullptr;    // the last value, if it is a container without a type name
    unsigned connected_round_ = 0;  // the handler is connected for this round of late entries
    bool separator_passed_ = false; // before the next value
    bool eof_seen_ = false;
    bool report_;
    bool oneline_ = false;
    std::unique_ptr<cErrStream> err_; // the error being composed, created on first use
    size_t prefix_ = 0;               // length of the position and path in the text being composed
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
// Reads a container, or up to the end of input a list of entries without brackets, which becomes a
// map. 0: success; 1: errors, and `result` is set only with keep; else the result of scan_obj.
QRV_API int scan_container(std::istream &is, objref &result, bool keep);

// Methods `read` for types; `args` holds the stream. scan_attrset reads one value and assigns or
// converts it to obj. scan_attrcopy copies the entries that it reads to a new object and assigns
// that to obj.
QRV_API bool scan_attrset(cObj &obj, objref &args);
QRV_API bool scan_attrcopy(cObj &obj, objref &args);
// For types without text: reads nothing; true.
QRV_API bool read_voiddata(cObj &obj, objref &args);

// The object for the text of a token from tkInt to tkIdent; false if it doesn't fit its type.
QRV_API bool read_stdtype(int token, char const *text, objref &result);

// True while any text is being read.
QRV_API bool is_reading() noexcept;
} // namespace cat
