#include "text/file/cfile_scan.h"

#include "qrv/base/platform/cplatform.h"

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

cFileScan::cFileScan(char const *name, bool quiet) {
    if (read_whole(name)) {
        scan_.emplace(*memory_, false);
        scan_->set_filename(name);
        opened_ = true;
        return;
    }
    file_.imbue(std::locale::classic());
    scan_.emplace(file_, false);
    opened_ = scan_->openfile(name, quiet);
}

// False if the file is not one to be read at once, or can't be read at all. What fails later is
// read up to there, and the scanner meets the error when it comes to it.
bool cFileScan::read_whole(char const *name) {
    if (!name || !*name || !cat::is_regular(name)) return false;
    std::ifstream in;
    in.imbue(std::locale::classic());
    in.open(name, std::ios::in | std::ios::binary);
    if (!in.is_open()) return false;
    bool const whole = cat::read_rest(in, text_);
    if (!whole && text_.empty()) return false;
    memory_.emplace(text_, !whole);
    return true;
}
