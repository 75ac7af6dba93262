#include "text/write/ccomposer.h"

#include "text/state/cchannels.h"
#include "text/state/ctext_state.h"
#include "text/write/cmet_once.h"
#include "text/write/cwriter_stream.h"

#include <algorithm>
#include <locale>
#include <sstream>
#include <typeinfo>

namespace {
// The stream gets its text in pieces of about this size.
constexpr size_t large = size_t{1} << 16;

// A tied stream is flushed, and an exception thrown, at a moment that could be seen.
bool formats_as_fresh(std::ostream const &os) {
    return os.good() && os.exceptions() == std::ios_base::goodbit && !os.tie() &&
           os.flags() == (std::ios_base::skipws | std::ios_base::dec) && os.precision() == 6 &&
           os.width() == 0 && os.fill() == ' ' && os.getloc() == std::locale::classic();
}
} // namespace

void cComposer::look_again() {
    begun_ = true;
    text_ = nullptr;
    std::streambuf *const buffer = os_->rdbuf();
    if (!buffer || !formats_as_fresh(*os_) || cat::is_on(cat::io_channel)) return;
    if (typeid(*buffer) == typeid(cTextBuffer))
        text_ = &static_cast<cTextBuffer *>(buffer)->text();
    else if (typeid(*buffer) == typeid(std::stringbuf))
        text_ = &own_;
}

void cComposer::hand_over() {
    if (own_.empty()) return;
    os_->write(own_.data(), static_cast<std::streamsize>(own_.size()));
    own_.clear();
}

void cComposer::end_composed_line() {
    text_->push_back('\n');
    if (own_.size() >= large) hand_over();
}

void cComposer::put_unformatted(std::string_view text) {
    if (text_)
        text_->append(text);
    else
        os_->write(text.data(), static_cast<std::streamsize>(text.size()));
}

void cComposer::put_blanks(int count) {
    static constexpr char blanks[] =
        "                                                                ";
    constexpr int most = sizeof blanks - 1;
    if (text_ && count > 0)
        text_->append(static_cast<size_t>(count), ' ');
    else
        for (; count > 0; count -= most) os_->write(blanks, std::min(count, most));
}

cUserCode::cUserCode(cComposer &out) : out_(&out), composing_(out.composing()) {
    text_state().settle();
    enter_written_so_far();
    out.hand_over();
    out.text_ = nullptr;
}

cUserCode::~cUserCode() {
    if (composing_) out_->look_again();
}
