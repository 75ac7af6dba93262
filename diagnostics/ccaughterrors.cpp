#include "qrv/diagnostics/ccaughterrors.h"

#include "diagnostics/ccout_state.h"
#include "diagnostics/cerrline.h"
#include "qrv/diagnostics/ccout.h"

#include <ostream>

constinit cat::ErrorTaker *cat::ErrorTaker::innermost_ = nullptr;

bool cat::ErrorTaker::offer(cErr const &error, Route route) {
    for (ErrorTaker *taker = innermost_; taker; taker = taker->outer_) {
        Answer const answer = taker->take(error, route);
        if (answer != Answer::passed_on) return answer == Answer::taken;
    }
    return false;
}

std::vector<cErr> const &cat::CaughtErrors::entries() const noexcept {
    // Never destroyed: errors may be looked at to the end of the process.
    static auto const *const none = new std::vector<cErr>;
    return caught_ ? caught_->entries : *none;
}

std::size_t cat::CaughtErrors::count() const noexcept {
    return caught_ ? caught_->entries.size() + caught_->dropped : 0;
}

cat::ErrorTaker::Answer cat::CaughtErrors::take(cErr const &error, Route) {
    if (!caught_) caught_ = std::make_unique<cCaught>();
    if (caught_->entries.size() < limit)
        caught_->entries.push_back(error);
    else
        ++caught_->dropped;
    return Answer::taken;
}

cErrorSignal::~cErrorSignal() = default;

void cErrorSignal::operator()(cErr &error) const {
    if (!cat::ErrorTaker::offer(error, cat::ErrorTaker::Route::signal)) cSignal1::operator()(error);
}

void cat::error_line(cErr const &error) {
    if (!ErrorTaker::offer(error, ErrorTaker::Route::reading))
        put_message(error.as_string() + '\n');
}

void cat::error_line(std::string const &text) { error_line(cErr(0, text)); }

bool cat::offer_line(std::string const &text) {
    return ErrorTaker::any() && ErrorTaker::offer(cErr(0, text), ErrorTaker::Route::line);
}

void cat::put_error_line(std::string const &text) {
    if (!offer_line(text)) std_err() << text << std::endl;
}
