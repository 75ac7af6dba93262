#include "text/file/cfile_scan.h"

#include "qrv/base/platform/cplatform.h"
#include "qrv/text/file/creadtext.h"

#include <array>
#include <locale>

bool cat::read_rest(std::istream &in, std::string &text) {
    std::array<char, 1 << 14> piece;
    while (in) {
        in.read(piece.data(), piece.size());
        text.append(piece.data(), static_cast<std::size_t>(in.gcount()));
    }
    return in.eof();
}

std::string_view cat::without_mark(std::string_view text) noexcept {
    constexpr std::string_view mark = "\xef\xbb\xbf";
    return text.substr(text.starts_with(mark) ? mark.size() : 0);
}

cFileScan::cFileScan(char const *name, bool quiet) {
    if (name && *name && cat::is_regular(name) && read_whole(name)) {
        start(name, text_);
        return;
    }
    file_.imbue(std::locale::classic());
    scan_.emplace(file_, false);
    opened_ = scan_->openfile(name, quiet);
}

cFileScan::cFileScan(char const *name) {
    if (read_whole(name)) start(name, cat::without_mark(text_));
}

void cFileScan::start(char const *name, std::string_view text) {
    memory_.emplace(text, broken_);
    scan_.emplace(*memory_, false);
    scan_->set_filename(name);
    opened_ = true;
}

// False if nothing can be read. If an error occurs later, the text before it is used, and the
// scanner's stream fails after that text.
bool cFileScan::read_whole(char const *name) {
    std::ifstream in;
    in.imbue(std::locale::classic());
    in.open(name, std::ios::in | std::ios::binary);
    if (!in.is_open()) return false;
    broken_ = !cat::read_rest(in, text_);
    return !broken_ || !text_.empty();
}
