#include "tools/qrv/reading/input.h"

#include "tools/qrv/output/output.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Offsets in a file have 32 bits, and the greatest one means "none".
constexpr std::uint64_t largest_file = 0xFFFFFFFE;

constexpr size_t piece_size = 65536;

} // namespace

cInput::cInput(std::string const &name)
    : descriptor_(name == "-" ? STDIN_FILENO : ::open(name.c_str(), O_RDONLY | O_CLOEXEC)),
      is_standard_(name == "-"), buffer_(piece_size) {
    struct stat status {};
    if (descriptor_ < 0) {
        error_ = reason("cannot read", errno);
    } else if (::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode)) {
        auto const size = static_cast<std::uint64_t>(status.st_size);
        test_size(size);
        if (error_.empty()) size_ = size;
    }
}

cInput::~cInput() {
    if (descriptor_ >= 0 && !is_standard_) ::close(descriptor_);
}

void cInput::test_size(std::uint64_t size) {
    if (size > largest_file)
        error_ = "cannot read: the file is too large; the largest that can be read has " +
                 std::to_string(largest_file) + " bytes";
}

std::string_view cInput::next() {
    while (error_.empty()) {
        ssize_t const count = ::read(descriptor_, buffer_.data(), buffer_.size());
        if (count >= 0) {
            test_size(done_ += static_cast<size_t>(count));
            if (!error_.empty()) break;
            return {buffer_.data(), static_cast<size_t>(count)};
        }
        if (errno != EINTR) error_ = reason("cannot read", errno);
    }
    return {};
}

cPieces::int_type cPieces::underflow() {
    if (gptr() != egptr()) return traits_type::to_int_type(*gptr());
    before_ += egptr() - eback();
    std::string_view const piece = next_();
    char *const first = const_cast<char *>(piece.data()); // nobody writes to it
    setg(first, first, first + piece.size());
    return piece.empty() ? traits_type::eof() : traits_type::to_int_type(*first);
}

cPieces::pos_type cPieces::seekoff(off_type offset, std::ios::seekdir from,
                                   std::ios::openmode which) {
    bool const asks = offset == 0 && from == std::ios::cur && which == std::ios::in;
    return asks ? pos_type(before_ + (gptr() - eback())) : pos_type(off_type(-1));
}
