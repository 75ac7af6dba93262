#include "qrv/text/read/creadreport.h"

// Existing reports form a list through their owners; the innermost is the head.

#include "text/read/creader_session.h"

namespace {
constinit cat::ReadReport *innermost = nullptr;
}

cat::ReadReport::ReadReport(std::size_t limit) : limit_(limit), before_(innermost) {
    innermost = this;
    cReadSession::report_changed();
}

cat::ReadReport::~ReadReport() {
    innermost = before_;
    cReadSession::report_changed();
}

void cat::ReadReport::clear() {
    entries_.clear();
    dropped_ = 0;
    run_ = 0;
}

void cat::ReadReport::add(ReadError error) {
    if (!watch_ || watch_->error(error)) keep(std::move(error));
}

void cat::ReadReport::add(ReadError error, std::uint64_t run) {
    error.follows = run == run_ ? run_first_ : ReadError::none;
    if (watch_ && !watch_->error(error)) return; // may store others, or clear
    if (run != run_) {
        error.follows = ReadError::none;
        if (entries_.size() < limit_) {
            run_ = run;
            run_first_ = entries_.size();
        }
    }
    keep(std::move(error));
}

void cat::ReadReport::keep(ReadError error) {
    if (error.follows >= entries_.size()) error.follows = ReadError::none;
    if (entries_.size() < limit_)
        entries_.push_back(std::move(error));
    else
        ++dropped_;
}

cat::ReadReport *cat::ReadReport::current() noexcept {
    return innermost && innermost->is_innermost() ? innermost : nullptr;
}

bool cat::ReadReport::any() noexcept { return innermost != nullptr; }

// What is raised during a reading reaches the slot that its session has put ahead of all others.
cat::ErrorTaker::Answer cat::ReadReport::take(cErr const &error, Route route) {
    if (route == Route::signal)
        return cReadSession::current() ? Answer::let_through : Answer::passed_on;
    if (route == Route::line) return Answer::passed_on;
    keep_error_line(*this, error);
    return Answer::taken;
}

cat::ReadWatch::~ReadWatch() = default;

void cat::ReadWatch::invalid(cObj &) {}

bool cat::ReadWatch::error(ReadError &) { return true; }

void cat::ReadWatch::typed_token(cToken const &) {}
