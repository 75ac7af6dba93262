// The matching engine: inputs, and matching character by character.
//
// Characters are read from the stream only when they are needed. Runs are copied directly from the
// stream buffer's get area; an empty get area is filled by the stream's own `get`, which also
// flushes a tied stream and sets the stream's state. So an ordinary character needs no virtual
// call.

#include <algorithm>
#include <cstdlib>
#include <istream>
#include <memory>
#include <ostream>
#include <utility>

#include "qrv/diagnostics/ccout.h"
#include "qrv/text/scan/cattrscanner.h"
#include "text/scan/cattrscanner_buffer.h"
#include "text/scan/cattrscanner_rules.h"
#include "text/scan/cattrscanner_window.h"

#ifdef QRV_CHECKS
unsigned long long scan::compared = 0;
unsigned long long scan::lexed = 0;
unsigned long long scan::parsed = 0;
#endif

// A used-up buffer with more capacity than this releases it, so that one huge token does not occupy
// memory until the end of the input.
constexpr std::size_t room_kept = 1 << 16;
// Used characters are removed if there are this many and they are the greater part.
constexpr std::size_t used_kept = 1 << 12;

void yy_buffer_state::take(char const *first, std::size_t n) {
    if (look_.empty()) look_.assign(ahead);
    std::size_t used = look_.size() - ahead.size();
    if (used > used_kept && used > look_.size() / 2) {
        look_.erase(0, used);
        used = 0;
    }
    look_.append(first, n);
    ahead = std::string_view(look_).substr(used);
}

void yy_buffer_state::consume(std::size_t n) {
    ahead.remove_prefix(n);
    if (ahead.size() > few) return;
    look_ahead(ahead.data(), ahead.size());
    if (look_.capacity() > room_kept) std::string().swap(look_);
    look_.clear();
}

// Different characters follow, so the knowledge about strings is discarded.
void yy_buffer_state::drop() {
    consume(ahead.size());
    no_close[0] = no_close[1] = 0;
}

void yy_buffer_state::recognise() {
    std::streambuf *const b = in ? in->rdbuf() : nullptr;
    if (b == known) return;
    known = b;
    in_memory = dynamic_cast<cMemoryBuf const *>(known) != nullptr;
}

// Characters for the engine, read from the stream one by one.
class cStreamChars {
  public:
    explicit cStreamChars(attrFlexLexer &engine) : engine_(engine), buffer_(*engine.buffer_) {}

    int at(std::size_t i) {
        if (i >= buffer_.ahead.size() && !more()) return -1;
        return scan::look_at(buffer_.ahead.data() + i);
    }
    int run(std::size_t &i, unsigned set);
    std::string_view text(std::size_t size) const { return buffer_.ahead.substr(0, size); }
    bool never_closed(int quote) const {
        return engine_.offset_ < buffer_.no_close[quote == '"' ? 0 : 1];
    }
    void set_no_close(int quote, std::size_t i) {
        buffer_.no_close[quote == '"' ? 0 : 1] = engine_.offset_ + i;
    }

  private:
    std::streambuf *ready() const;
    bool more();
    bool take_run(unsigned set);

    attrFlexLexer &engine_;
    yy_buffer_state &buffer_;
};

// The stream's buffer if its get area has characters, else null.
std::streambuf *cStreamChars::ready() const {
    std::streambuf *const b = buffer_.stream->rdbuf();
    bool const some =
        buffer_.stream->good() && scan::cGetArea::begin(*b) != scan::cGetArea::end(*b);
    return some ? b : nullptr;
}

// Reads one more character of look-ahead; false at the end of input.
bool cStreamChars::more() {
    if (!buffer_.in) return false;
    char c;
    if (std::streambuf *const b = ready()) {
        c = std::char_traits<char>::to_char_type(b->sbumpc());
    } else {
        int const n = engine_.LexerInput(&c, 1);
        if (n < 0) engine_.LexerError("input in flex scanner failed");
        if (n <= 0) return false;
    }
    buffer_.take(&c, 1);
    return true;
}

// Reads available characters up to the first that is in `set`. False if none was found.
bool cStreamChars::take_run(unsigned set) {
    std::streambuf *const b = ready();
    if (!b) return false;
    char const *const first = scan::cGetArea::begin(*b);
    char const *stop = first;
    while (stop != scan::cGetArea::end(*b) && !scan::stops(scan::look_at(stop), set)) ++stop;
    if (stop == first) return false;
    buffer_.take(first, static_cast<std::size_t>(stop - first));
    scan::cGetArea::go_to(*b, stop);
    return true;
}

int cStreamChars::run(std::size_t &i, unsigned set) {
    for (;;) {
        for (; i < buffer_.ahead.size(); ++i) {
            int const c = scan::look_at(buffer_.ahead.data() + i);
            if (scan::stops(c, set)) return c;
        }
        if (take_run(set))
            i = buffer_.ahead.size();
        else if (!more())
            return -1;
    }
}

FlexLexer::~FlexLexer() = default;

attrFlexLexer::attrFlexLexer(std::istream *in, std::ostream *out)
    : buffer_(new yy_buffer_state(in)), out_(out) {}

attrFlexLexer::~attrFlexLexer() { delete buffer_; }

void attrFlexLexer::yy_switch_to_buffer(yy_buffer_state *buffer) {
    if (buffer == buffer_) return;
    if (made_) delete buffer_;
    buffer_ = buffer;
    made_ = false;
}

yy_buffer_state *attrFlexLexer::yy_create_buffer(std::istream *in, int size) {
    auto buffer = std::make_unique<yy_buffer_state>(in);
    if (size > 0) buffer->reserve(static_cast<std::size_t>(size));
    return buffer.release();
}

void attrFlexLexer::yy_delete_buffer(yy_buffer_state *buffer) {
    if (buffer == buffer_) buffer_ = nullptr;
    delete buffer;
}

void attrFlexLexer::yyrestart(std::istream *in) {
    if (!buffer_) {
        buffer_ = yy_create_buffer(in, 0);
        made_ = true;
    }
    buffer_->drop();
    buffer_->change_stream(in);
}

int attrFlexLexer::yylex() {
    LexerError("yyFlexLexer::yylex invoked but %option yyclass used");
    return 0;
}

void attrFlexLexer::switch_streams(std::istream *in, std::ostream *out) {
    if (in) {
        yy_buffer_state *fresh = yy_create_buffer(in, 0);
        delete std::exchange(buffer_, fresh);
        made_ = true;
    }
    if (out) out_ = out;
}

// The stream's state alone marks the end: after it, nothing more is read.
int attrFlexLexer::LexerInput(char *to, int room) {
    std::istream *in = input();
    if (!in || room < 1) return 0;
    if (in->good()) in->get(*to);
    if (in->eof()) return 0;
    if (in->bad()) return -1;
    return in->good() ? 1 : 0;
}

void attrFlexLexer::LexerOutput(char const *text, int size) {
    (out_ ? *out_ : cat::std_out()).write(text, size);
}

void attrFlexLexer::LexerError(char const *text) {
    cat::std_err() << text << std::endl;
    std::exit(2);
}

std::istream *attrFlexLexer::input() const { return buffer_ ? buffer_->in : nullptr; }

std::string_view attrFlexLexer::matched() const {
    return buffer_ ? buffer_->ahead.substr(0, size_) : std::string_view();
}

void attrFlexLexer::consume() {
    if (buffer_) buffer_->consume(size_);
    offset_ += size_;
    size_ = 0;
}

void attrFlexLexer::drop_lookahead() {
    if (buffer_) buffer_->drop();
    size_ = 0;
}

attrFlexLexer::rule attrFlexLexer::match() {
    size_ = 0;
    if (!buffer_) return r_end;
    buffer_->recognise();
    cStreamChars chars(*this);
    scan::cRules<cStreamChars> rules(chars);
    rule const r = rules.match();
    size_ = rules.size();
    return r;
}

bool attrFlexLexer::match_comment() {
    if (!buffer_) return false;
    cStreamChars chars(*this);
    scan::cRules<cStreamChars> rules(chars);
    bool const closed = rules.match_comment(0);
    size_ = rules.size();
    return closed;
}
