#pragma once
// Message output. Loading the library redirects std::cout and std::cerr into one buffer,
// cOutSigStreambuf; cprintf(), every cOstream and every error end there too. Its signal sig() is
// where a display, a log or a test listens. Text written before anyone can listen is kept: the
// first firing of sig_idle delivers it in one piece. A program that never fires sig_idle gets its
// text on descriptor 2 when it ends, also by std::terminate; one that wants to see it at once calls
// cat::use_console() (qrv/diagnostics/cconsole.h). An earlier terminate handler of the program is
// called afterwards; one that is set later replaces the library's.
// A slot on a message signal may print; what it throws while a stream is being flushed is dropped,
// since it would end the process. A slot that prints at every call has no end.

#include "qrv/base/csignal.h"
#include "qrv/ccomp.h"

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <istream>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>

// A write-only stream buffer that fires sig() with each finished piece: up to 1023 characters, cut
// where the buffer filled or at a flush. A NUL in the text ends its piece.
class QRV_API cOutStreambuf : public std::streambuf {
  public:
    cOutStreambuf(); // while the global buffer lives, cout and cerr are led to it again
    cOutStreambuf(cOutStreambuf const &) = delete;
    cOutStreambuf &operator=(cOutStreambuf const &) = delete;
    ~cOutStreambuf() override; // without a flush

    cSignal1<char const *> &sig() { return sig_; }
    cSignal1<char const *> const &sig() const { return sig_; }
    bool has_text() const { return pptr() != pbase(); } // something waits for a flush
    // With `on` each line end is a flush too. Flushes. RUNS USER CODE: the slots of sig()
    void flush_at_line_ends(bool on);

    // Takes a finished piece; here: fires sig(). Borrows the text for the call.
    virtual void out(char const *text);

  protected:
    int overflow(int c) override;
    int underflow() override;
    int sync() override;
    void empty(); // the put area

  private:
    // The character given to overflow() and a NUL behind it always fit.
    static constexpr std::size_t size = 1024;
    static constexpr std::size_t usable = size - 2;

    bool keep(int c, std::size_t length);

    std::array<char, size> buffer_;
    bool by_line_ = false;
    cSignal1<char const *> sig_;
};

// The one buffer behind std::cout and std::cerr.
class QRV_API cTheOutStreambuf : public cOutStreambuf {
  public:
    cTheOutStreambuf();
    cTheOutStreambuf(cTheOutStreambuf const &) = delete;
    cTheOutStreambuf &operator=(cTheOutStreambuf const &) = delete;
    ~cTheOutStreambuf() override; // leaves cout and cerr without a buffer

    // Keeps the text until the first sig_idle, fires sig() from then on.
    void out(char const *text) override;

    // Forgets the library's version text, if it is still kept.
    void drop_start_text();
    // For the end of the process: if sig_idle has not been fired, writes the program's text that is
    // kept or waits for a flush to descriptor 2, and forgets it. After cat::use_console() the text
    // that waits for a flush goes to descriptor 1.
    void write_last_words() noexcept;

  private:
    void _initsync();

    cSlot<cTheOutStreambuf> initslot_;
    bool synced_ = false;
    std::string pending_;
};

extern QRV_API cTheOutStreambuf cOutSigStreambuf;

// Passes a text on to the platform's debug output, in overlapping calls of 1023 characters each
// when it is long. Connected to the global buffer by the first sig_idle.
extern QRV_API cFunctionSlot1<char const *, void (*)(char const *)> debugout;

// Formats (2047 characters at most; more is cut) and sends the text to the message file and to the
// display route. The result is the length, or -1 when the text was cut or the format is faulty.
QRV_API int cprintf(char const *format, ...) QRV_PRINTF(1, 2);
QRV_API int cvprintf(char const *format, va_list args) QRV_PRINTF(1, 0);

// Opens the process's message file (truncating; an open one is closed first) and writes its start
// line by cprintf(). The file stays the library's. Null on failure, told by cprintf().
QRV_API std::FILE *cprintfopen(char const *path);
QRV_API void cprintfclose();

// Hands a text to the display route, behind what stands in the global buffer. Null is no text.
QRV_API void cMsgDispOut(char const *text);

// A new array, the caller's, with a CR before each LF and without BEL characters; `hadbell`, when
// given, tells whether there was one.
QRV_API char *cConvertNl(char const *text, bool *hadbell = nullptr);

// A message stream: to the display route if `dispout`, to a file of its own, and to the streams
// connected behind it. Connecting streams in a circle is an endless call. A listener may destroy
// the stream during cprintf() and cvprintf(), but not during `<<` and flush(): those are the
// standard library's, which looks at the stream afterwards.
class QRV_API cOstream : public std::ostream {
  public:
    explicit cOstream(bool dispout = true, char const *path = nullptr);
    cOstream(cOstream const &) = delete;
    cOstream &operator=(cOstream const &) = delete;
    ~cOstream() override; // flushes, closes the file

    // What this stream prints is also printed by `other`.
    void connect(cOstream const &other);
    cOutStreambuf *buf() const { return &outbuf_; }
    void set_dispout(bool dispout) { dispout_ = dispout; }

    // Opens this stream's file (truncating) and writes the start line. A failure is told by
    // ::cprintf(), and the output goes on without a file.
    void fileopen(char const *path);
    void fileclose();

    // As ::cprintf(), to this stream: what waits in it goes out first.
    int cprintf(char const *format, ...) QRV_PRINTF(2, 3);
    int cvprintf(char const *format, va_list args) QRV_PRINTF(2, 0);

  private:
    void do_out(char const *text);
    void do_sigout(char const *text);
    bool flush_own(); // false when a listener has destroyed the stream

    // In this order: the buffer goes first, then outslot_, then sigout_.
    cSlot1<cOstream, char const *> sigout_;
    cSlot1<cOstream, char const *> outslot_;
    std::FILE *file_ = nullptr;
    bool dispout_;
    std::shared_ptr<char const> life_ = std::make_shared<char>(); // ends with the stream
    mutable cOutStreambuf outbuf_;
};

// A stream into a string, its own or one that the caller keeps alive.
class QRV_API cOstringstream : public std::ostream {
  public:
    cOstringstream();
    explicit cOstringstream(std::string &target); // borrows
    cOstringstream(cOstringstream const &) = delete;
    cOstringstream &operator=(cOstringstream const &) = delete;
    ~cOstringstream() override; // without a flush

    // Both flush first.
    std::string str() const;
    void str(std::string const &text);

    // Empties the target without a flush: text still in the buffer comes afterwards. The stream's
    // error state goes too. (This hides std::ios::clear; call that by its full name.)
    void clear();

  protected:
    // A flush that fails sets the stream's bad state.
    void flush_text() const;

  private:
    void start();
    void do_strslot(char const *text) { *target_ += text; }

    cSlot1<cOstringstream, char const *> strslot_;
    std::string own_;
    std::string *target_;
    cOutStreambuf outbuf_;
};

namespace cat {

// std::cout and std::cerr, for code that must not start them itself. Usable at any time, also in
// static code that runs before the library's own.
QRV_API std::ostream &std_out();
QRV_API std::ostream &std_err();
// std::cin likewise; it is read as it is.
QRV_API std::istream &std_in();

// The global buffer while it lives; null before the library's start-up and after its end.
QRV_API cTheOutStreambuf *message_buffer();

// Writes a text to a file with each "%%" as one "%" and all else as it stands.
void write_percent_text(std::FILE *file, char const *text);

} // namespace cat
