#pragma once
// Tracing and timing. A cTracer is a named channel that stays in the code permanently; one string,
// passed to cSetTracing() at run time, selects the channels that write, and their targets:
//
//   spec    = token { blank token }           "+cat-catlex:cerr,/tmp/x.log loader"
//   token   = names [ ":" stream { "," stream } ]
//   names   = [ "+" | "-" ] name { ( "+" | "-" ) name }
//
// A name is a channel's name or a prefix of it; the longest matching rule decides. "-" switches
// off. A stream is "cerr" (the default), "cout", or a file to append to. A string that begins with
// "+" or "-" amends the existing rules, any other replaces them all; so "" ends all tracing.
//
// A disabled channel costs one test at each `<<`. There are no failures: a rule also applies to
// channels that are created later, and if a file cannot be opened, "cerr" replaces it and shows a
// message.

#include "qrv/base/cref.h"
#include "qrv/ccomp.h"
#include "qrv/qrvdefs.h"

#include <concepts>
#include <cstdint>
#include <ios>
#include <memory>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

// A target of channels, shared by its name. Copies write to the same stream.
class QRV_API cTraceStream : public cShared {
  public:
    // Opens; the empty name is "cerr". "cerr" and "cout" write to the message output
    // (qrv/diagnostics/ccout.h).
    explicit cTraceStream(std::string const &name);
    cTraceStream(cTraceStream const &other);
    cTraceStream &operator=(cTraceStream const &other);
    ~cTraceStream();

    // os() is valid as long as a copy of this object exists.
    std::string const &name() const { return name_; }
    std::ostream &os() const { return *os_; }

    // The existing stream of that name, or a new one; never null.
    static cRef<cTraceStream> open(std::string const &name);

    // For the end of the message output: from this call on, streams that use that buffer discard
    // their output.
    static void detach(std::streambuf const *buffer);

  private:
    void enter_list();

    std::string name_;
    std::shared_ptr<std::ostream> os_;
    cTraceStream *prev_ = nullptr; // the list of all existing streams, in order of opening
    cTraceStream *next_ = nullptr;
};

// Sets, amends or removes the rules and applies them to all existing channels. File names may have
// any length; a hostile string can at worst create files.
QRV_API void cSetTracing(std::string const &spec);

// A named channel. Usable as a static object of any file; the library's own are cat::trace_io
// ("cat_io.capio") and cat::trace_lex ("catlex").
class QRV_API cTracer {
  public:
    using streams = std::vector<cRef<cTraceStream>>;

    // Follows the current rules. `flags` is a word for the program's own use, like indent().
    explicit cTracer(std::string const &ident, int flags = 0);
    // Copies have all fields and are separate channels: they follow later rules.
    cTracer(cTracer const &other);
    cTracer &operator=(cTracer const &other);
    ~cTracer();

    // The streams that the channel writes to (it skips null); the name by which rules select it;
    // and indent and flags, which are for the program's own use.
    streams &strlist() { return strlist_; }
    streams const &strlist() const { return strlist_; }
    std::string &ident() { return ident_; }
    std::string const &ident() const { return ident_; }
    int &indent() { return indent_; }
    int indent() const { return indent_; }
    int flags() const { return flags_; }
    void flags(int flags) { flags_ = flags; }

    operator bool() const { return enabled_; }
    // In effect until rules are applied again.
    void enable(bool enabled) { enabled_ = enabled; }
    // Enabled if and only if there is a stream to write to.
    void initenabled() { enabled_ = !strlist_.empty(); }

    // Writes to every stream of strlist(), in order; nothing if not enabled. A listener of the
    // message output may destroy the channel in the last `<<` of a chain.
    template <class T> cTracer &operator<<(T const &value) {
        return each([&value](std::ostream &os) { os << value; });
    }
    // Null writes nothing.
    cTracer &operator<<(char const *text) {
        return each([text](std::ostream &os) {
            if (text) os << text;
        });
    }
    // Writes an object in object notation; null writes nothing. RUNS USER CODE
    template <class T, class Traits>
    requires std::convertible_to<T *, cObj const *> cTracer &
    operator<<(cRef<T, Traits> const &ref) {
        return write_object(ref.get());
    }
    // Manipulators.
    cTracer &operator<<(std::ostream &(*manipulator)(std::ostream &)) {
        return each([manipulator](std::ostream &os) { os << manipulator; });
    }
    cTracer &operator<<(std::ios_base &(*manipulator)(std::ios_base &)) {
        return each([manipulator](std::ostream &os) { os << manipulator; });
    }

    // Deleted, since they would convert the channel to bool and use that as a number.
    friend void operator-(cTracer const &, auto const &) = delete;
    friend void operator-(auto const &, cTracer const &) = delete;
    friend void operator+(cTracer const &, auto const &) = delete;
    friend void operator+(auto const &, cTracer const &) = delete;
    friend void operator<(cTracer const &, auto const &) = delete;
    friend void operator<(auto const &, cTracer const &) = delete;
    friend void operator>(cTracer const &, auto const &) = delete;
    friend void operator>(auto const &, cTracer const &) = delete;
    friend void operator<=(cTracer const &, auto const &) = delete;
    friend void operator<=(auto const &, cTracer const &) = delete;
    friend void operator>=(cTracer const &, auto const &) = delete;
    friend void operator>=(auto const &, cTracer const &) = delete;
    friend void operator<=>(cTracer const &, auto const &) = delete;
    friend void operator<=>(auto const &, cTracer const &) = delete;
    template <class Stream>
    requires std::derived_from<std::remove_cvref_t<Stream>, std::ios_base>
    friend void operator<<(Stream &&, cTracer const &) = delete;

  private:
    friend void cSetTracing(std::string const &spec);

    void enter_list();
    void apply_rules();
    cTracer &write_object(cObj const *object); // defined in the text layer

    // Writing may run user code that sets other rules or destroys the channel: so each stream is
    // held while it is written to.
    template <class Write> cTracer &each(Write const &write) {
        if (!enabled_) return *this;
        std::weak_ptr<char const> const life = life_;
        for (streams::size_type i = 0; !life.expired() && i < strlist_.size(); ++i) {
            cRef<cTraceStream> const stream = strlist_[i];
            if (stream) write(stream->os()); // RE-ENTERS
        }
        return *this;
    }

    streams strlist_;
    std::string ident_;
    bool enabled_ = false;
    int indent_ = 0;
    int flags_;
    std::shared_ptr<char const> life_ = std::make_shared<char>(); // ends with the channel
    cTracer *prev_ = nullptr; // the list of all existing channels, in order of construction
    cTracer *next_ = nullptr;
};

// Increases a channel's indent() by one step during its own lifetime.
class QRV_API cTraceIndent {
  public:
    // Borrows the channel.
    explicit cTraceIndent(cTracer &tracer) : tracer_(&tracer) { inc(); }
    cTraceIndent(cTraceIndent const &) = delete;
    cTraceIndent &operator=(cTraceIndent const &) = delete;
    ~cTraceIndent() { dec(); }

    // Add or remove a step. The destructor removes only the step that the constructor added.
    void inc() const { ++tracer_->indent(); }
    void dec() const { --tracer_->indent(); }

  private:
    cTracer *tracer_;
};

// The high-resolution timer. Times are in seconds.
class QRV_API cStopWatch {
  public:
    cStopWatch(); // starts
    cStopWatch(cStopWatch const &) = default;
    cStopWatch &operator=(cStopWatch const &) = default;
    ~cStopWatch() = default;

    void Start(); // starts again from 0
    // The time since the last reading; starts the next lap.
    double operator()() const;
    // The same without starting a new lap.
    double Elapsed() const;
    // The raw counter.
    std::int64_t clock() const;

    // The length of one counter step; 0.0 before the first measurement.
    static double freq;
    static void queryfreq(); // sets freq

  private:
    double seconds_to(std::int64_t now) const;

    std::int64_t start_;
    mutable std::int64_t last_;
};

// Reads a lap (like operator(), so it restarts the watch) and writes it as "0.001234 s". Restores
// the stream's precision and flags.
QRV_API std::ostream &operator<<(std::ostream &os, cStopWatch const &watch);

namespace cat {

// The channels of the reader and writer, and of the token scanner.
extern QRV_API cTracer trace_io;
extern QRV_API cTracer trace_lex;

// Removes the rules, and with them the streams that no channel uses. For the end of the process.
void clear_trace_rules();

} // namespace cat
