#include "text/scan/cmemory_stream.h"

#include <locale>

// Nothing is ever written to the get area: a buffer without pbackfail refuses to put back a
// different character.
cMemoryBuf::cMemoryBuf(std::string_view text, bool broken) : broken_(broken) {
    char *const first = const_cast<char *>(text.data() ? text.data() : "");
    setg(first, first, first + text.size());
}

cMemoryBuf::~cMemoryBuf() = default;

// An exception here makes the calling stream set its bad bit, as for a file buffer.
cMemoryBuf::int_type cMemoryBuf::underflow() {
    if (gptr() != egptr()) return traits_type::to_int_type(*gptr());
    if (broken_) throw std::ios::failure("cannot read the file any further");
    return traits_type::eof();
}

cMemoryBuf::pos_type cMemoryBuf::go_to(off_type position) {
    if (position < 0 || position > egptr() - eback()) return pos_type(off_type(-1));
    setg(eback(), eback() + position, egptr());
    return pos_type(position);
}

// Like std::stringbuf, it refuses to move a put pointer, which does not exist here.
cMemoryBuf::pos_type cMemoryBuf::seekoff(off_type offset, std::ios::seekdir from,
                                         std::ios::openmode which) {
    if (!(which & std::ios::in) || (which & std::ios::out)) return pos_type(off_type(-1));
    off_type start = 0;
    if (from == std::ios::cur) start = gptr() - eback();
    if (from == std::ios::end) start = egptr() - eback();
    // Rejects positions outside, without overflow of the sum.
    if (offset < -start || offset > egptr() - eback() - start) return pos_type(off_type(-1));
    return go_to(start + offset);
}

cMemoryBuf::pos_type cMemoryBuf::seekpos(pos_type position, std::ios::openmode which) {
    return which & std::ios::in ? go_to(position) : pos_type(off_type(-1));
}

cMemoryStream::cMemoryStream(std::string_view text, bool broken)
    : std::istream(nullptr), buffer_(text, broken) {
    // Skips a needless imbue(), which would be half of the cost of creating the stream.
    if (getloc() != std::locale::classic()) imbue(std::locale::classic());
    rdbuf(&buffer_); // also clears the state
}

cMemoryStream::~cMemoryStream() = default;
