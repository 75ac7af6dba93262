#pragma once
// Message output. Loading the library redirects std::cout and std::cerr into one buffer,
// cOutSigStreambuf; the output of cprintf(), of every cOstream and of errors is sent there, too. A
// display, a log or a test connects to its signal sig().
//
// Output before the first sig_idle is stored and then delivered in one piece. To see output at
// once, call cat::use_console() (qrv/diagnostics/cconsole.h). If a program never fires sig_idle,
// the library writes the output to descriptor 2 at the end of the process, also in std::terminate.
// For that it installs a terminate handler, which then calls the program's earlier one; a handler
// that the program sets later replaces the library's.
//
// A slot on a message signal may print; one that prints at every call recurses without end. An
// exception of a slot is discarded while a stream is being flushed, since it would end the process.

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

// A write-only stream buffer that fires sig() with each finished piece: up to 1023 characters,
// ended by a full buffer or a flush. A NUL in the output ends its piece.
class QRV_API cOutStreambuf : public std::streambuf {
  public:
    cOutStreambuf(); // while the global buffer exists, cout and cerr are redirected to it again
    cOutStreambuf(cOutStreambuf const &) = delete;
    cOutStreambuf &operator=(cOutStreambuf const &) = delete;
    ~cOutStreambuf() override; // without a flush

    cSignal1<char const *> &sig() { return sig_; }
    cSignal1<char const *> const &sig() const { return sig_; }
    bool has_text() const { return pptr() != pbase(); } // pending until a flush
    // If `on`, each line end flushes too. Flushes now. RUNS USER CODE: the slots of sig()
    void flush_at_line_ends(bool on);

    // Processes a finished piece; here: fires sig(). Borrows the string during the call.
    virtual void out(char const *text);

  protected:
    int overflow(int c) override;
    int underflow() override;
    int sync() override;
    void empty(); // the put area

  private:
    // The argument of overflow() and a NUL after it always fit.
    static constexpr std::size_t size = 1024;
    static constexpr std::size_t usable = size - 2;

    bool keep(int c, std::size_t length);

    std::array<char, size> buffer_;
    bool by_line_ = false;
    cSignal1<char const *> sig_;
};

// The one buffer of std::cout and std::cerr.
class QRV_API cTheOutStreambuf : public cOutStreambuf {
  public:
    cTheOutStreambuf();
    cTheOutStreambuf(cTheOutStreambuf const &) = delete;
    cTheOutStreambuf &operator=(cTheOutStreambuf const &) = delete;
    ~cTheOutStreambuf() override; // leaves cout and cerr without a buffer

    // Stores the output until the first sig_idle; fires sig() from then on.
    void out(char const *text) override;

    // Discards the library's version text, if it is still pending.
    void drop_start_text();
    // For the end of the process: if sig_idle was never fired, writes the program's pending output
    // to descriptor 2 and discards it. After cat::use_console() the unflushed output goes to
    // descriptor 1.
    void write_last_words() noexcept;

  private:
    void _initsync();

    cSlot<cTheOutStreambuf> initslot_;
    bool synced_ = false;
    std::string pending_;
};

extern QRV_API cTheOutStreambuf cOutSigStreambuf;

// Passes a string to the platform's debug output. A long string is passed several times, each time
// without another 1023 characters at its start, since a debugger may cut it. The first sig_idle
// connects it to the global buffer.
extern QRV_API cFunctionSlot1<char const *, void (*)(char const *)> debugout;

// Formats (2047 characters at most; more is cut) and sends the text to the message file and to the
// global buffer. The result is the length, or -1 if the text was cut or the format is faulty.
QRV_API int cprintf(char const *format, ...) QRV_PRINTF(1, 2);
QRV_API int cvprintf(char const *format, va_list args) QRV_PRINTF(1, 0);

// Opens the process's message file (truncating; an open one is closed first) and writes its start
// line by cprintf(). The library owns the file. On failure it returns null and prints a message by
// cprintf().
QRV_API std::FILE *cprintfopen(char const *path);
QRV_API void cprintfclose();

// Delivers a string as one piece of the global buffer, after its contents. Null sends nothing.
QRV_API void cMsgDispOut(char const *text);

// Returns a copy of the string, null as "", with a CR before each LF and without BEL characters: a
// new array, which the caller owns (delete[]). Sets `*hadbell`, if not null, to whether there was a
// BEL.
QRV_API char *cConvertNl(char const *text, bool *hadbell = nullptr);

// A message stream. It writes to the global buffer if `dispout`, to its own file, and to the
// connected streams. Streams connected in a circle recurse without end. A listener may destroy the
// stream during cprintf() and cvprintf(), but not during `<<` and flush(): those belong to the
// standard library, which uses the stream afterwards.
class QRV_API cOstream : public std::ostream {
  public:
    // Opens the file `path`, unless null, as fileopen() does.
    explicit cOstream(bool dispout = true, char const *path = nullptr);
    cOstream(cOstream const &) = delete;
    cOstream &operator=(cOstream const &) = delete;
    ~cOstream() override; // flushes, closes the file

    // `other` then also prints this stream's output.
    void connect(cOstream const &other);
    cOutStreambuf *buf() const { return &outbuf_; }
    void set_dispout(bool dispout) { dispout_ = dispout; }

    // Opens this stream's file (truncating) and writes the start line. ::cprintf() prints a
    // failure, and the output continues without a file.
    void fileopen(char const *path);
    void fileclose();

    // Like ::cprintf(), for this stream: its pending output is sent first.
    int cprintf(char const *format, ...) QRV_PRINTF(2, 3);
    int cvprintf(char const *format, va_list args) QRV_PRINTF(2, 0);

  private:
    void do_out(char const *text);
    void do_sigout(char const *text);
    bool flush_own(); // false if a listener has destroyed the stream

    // The order of members matters: the buffer is destroyed first, then outslot_, then sigout_.
    cSlot1<cOstream, char const *> sigout_;
    cSlot1<cOstream, char const *> outslot_;
    std::FILE *file_ = nullptr;
    bool dispout_;
    std::shared_ptr<char const> life_ = std::make_shared<char>(); // ends with the stream
    mutable cOutStreambuf outbuf_;
};

// A stream that writes to its own string, or to a string that the caller owns and that must outlive
// the stream.
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

    // Empties the target without a flush: pending output follows later. Also resets the stream's
    // error state. (This hides std::ios::clear; call that by its full name.)
    void clear();

  protected:
    // Sets the stream's bad state if the flush fails.
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

// std::cout and std::cerr, for code that does not include <iostream>. Usable at any time, also in
// static code that runs before the library's own.
QRV_API std::ostream &std_out();
QRV_API std::ostream &std_err();
// std::cin, likewise; the library does not redirect it.
QRV_API std::istream &std_in();

// The global buffer while it exists; null before the library's start-up and after its end.
QRV_API cTheOutStreambuf *message_buffer();

// Writes a string to a file with each "%%" as one "%" and the rest unchanged.
void write_percent_text(std::FILE *file, char const *text);

} // namespace cat
