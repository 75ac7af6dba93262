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
constexpr size_t buffer_size = 2 * cComposer::most_space;

// False if a flush of a tied stream or an exception could be observed.
bool formats_as_fresh(std::ostream const &os) {
    return os.good() && os.exceptions() == std::ios_base::goodbit && !os.tie() &&
           os.flags() == (std::ios_base::skipws | std::ios_base::dec) && os.precision() == 6 &&
           os.width() == 0 && os.fill() == ' ' && os.getloc() == std::locale::classic();
}
} // namespace

void cComposer::look_again() {
    begun_ = true;
    hand_over();
    at_ = end_ = nullptr;
    std::streambuf const *const buffer = os_->rdbuf();
    if (!buffer || !formats_as_fresh(*os_) || cat::is_on(cat::io_channel)) return;
    if (typeid(*buffer) != typeid(cTextBuffer) && typeid(*buffer) != typeid(std::stringbuf)) return;
    if (!buffer_) buffer_.reset(new char[buffer_size]);
    at_ = buffer_.get();
    end_ = at_ + buffer_size;
}

void cComposer::hand_over() {
    if (!composing() || at_ == buffer_.get()) return;
    os_->write(buffer_.get(), at_ - buffer_.get());
    at_ = buffer_.get();
    // A buffer that accepts nothing: writing several pieces would set this bit from the second on.
    if (os_->bad()) os_->setstate(std::ios_base::failbit);
}

void cComposer::put_slowly(char c) {
    if (composing())
        put(std::string_view(&c, 1));
    else
        *os_ << c;
}

void cComposer::put_slowly(std::string_view text) {
    if (!composing()) {
        *os_ << text;
        return;
    }
    hand_over();
    if (text.size() < buffer_size)
        at_ = std::copy(text.begin(), text.end(), at_);
    else
        os_->write(text.data(), static_cast<std::streamsize>(text.size()));
}

void cComposer::put_unformatted(std::string_view text) {
    if (composing())
        put(text);
    else
        os_->write(text.data(), static_cast<std::streamsize>(text.size()));
}

void cComposer::put_blanks(int count) {
    static constexpr char blanks[] =
        "                                                                ";
    constexpr int most = sizeof blanks - 1;
    for (; count > 0; count -= most)
        put_unformatted(std::string_view(blanks, static_cast<size_t>(std::min(count, most))));
}

cUserCode::cUserCode(cComposer &out) : out_(&out), composing_(out.composing()) {
    text_state().settle();
    enter_written_so_far();
    out.hand_over();
    out.at_ = out.end_ = nullptr;
}

cUserCode::~cUserCode() {
    if (composing_) out_->look_again();
}
