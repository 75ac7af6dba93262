#include "value/written_file.h"

#include "qrv/base/platform/cfolderlock.h"
#include "qrv/base/platform/cplatform.h"

#include <array>
#include <cerrno>
#include <fstream>
#include <system_error>

namespace qrv::detail {

namespace {

[[noreturn]] void refuse_changed(std::string const &path) {
    throw save_conflict(path + (cat::file_exists(path)
                                    ? ": not written: another program has changed the file"
                                    : ": not written: the file does not exist any more"));
}

} // namespace

void refuse_to_write(std::string const &path, std::string const &why) {
    throw error((path.empty() ? path : path + ": ") + "not written: " + why);
}

std::string bytes_of(std::string const &path) {
    errno = 0;
    std::ifstream in(path, std::ios::binary);
    std::string bytes;
    std::array<char, 1 << 14> piece;
    while (in) {
        in.read(piece.data(), piece.size());
        bytes.append(piece.data(), static_cast<std::size_t>(in.gcount()));
    }
    if (!in.eof())
        throw error(path + ": " + "cannot read: " + std::generic_category().message(errno));
    return bytes;
}

void replace_file(std::string const &path, std::string_view bytes,
                  std::optional<std::string_view> expected) {
    if (path.find('\0') != path.npos) refuse_to_write("", "its name has a zero byte");
    cat::FileLock const lock(path);
    if (lock.busy())
        refuse_to_write(path, "another program has held the lock of its folder for " +
                                  std::to_string(lock.usual_wait.count()) + " seconds");
    if (expected == bytes) {
        if (!cat::file_exists(path) || bytes_of(path) != bytes) refuse_changed(path);
        return;
    }
    switch (cat::replace_file(path, bytes, {.expected = expected})) {
    case cat::Replaced::done:
        return;
    case cat::Replaced::changed:
        refuse_changed(path);
    default:
        refuse_to_write(path, "cannot write: " + std::generic_category().message(errno));
    }
}

} // namespace qrv::detail
