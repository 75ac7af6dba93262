#include "life.h"

#include <cerrno>

namespace watchdog {

void cLife::enter(cState state, cSpan span, cTime now) {
    state_ = state;
    span_ = span;
    deadline_ = now + span;
}

bool cLife::over(int status) {
    state_ = cState::over;
    status_ = status;
    return false;
}

void cLife::started(cTime now) {
    no_life_ = false;
    enter(cState::running, rules_.timeout, now);
    if (is_stopping()) enter(cState::ending, rules_.grace, now);
}

void cLife::sign_of_life(cTime now) {
    if (state_ == cState::running) deadline_ = now + span_;
}

void cLife::stop(int signal, cTime now) {
    if (!is_stopping()) stop_signal_ = signal;
    if (state_ == cState::running) enter(cState::ending, rules_.grace, now);
}

void cLife::slept(cTime now) { deadline_ = now + span_; }

cLife::cStep cLife::look(cTime now) {
    if (state_ == cState::over || now < deadline_) return cStep::none;
    if (now - deadline_ > oversleep) {
        slept(now);
        return cStep::none;
    }
    switch (state_) {
    case cState::running:
        no_life_ = true;
        enter(cState::ending, rules_.grace, now);
        return cStep::terminate;
    case cState::ending:
        enter(cState::killed, rules_.patience, now);
        return cStep::kill;
    default:
        over(status_failure);
        return cStep::give_up;
    }
}

bool cLife::ended(cEnd end) {
    if (is_stopping()) return over(status_signal + stop_signal_);
    if (!no_life_ && end.is_good()) return over(0);
    if (restarts_ == rules_.restarts) return over(no_life_ ? status_no_life : end.status());
    ++restarts_;
    state_ = cState::over; // until the program is started
    return true;
}

void cLife::not_started(int error) {
    bool const of_the_system = error == EAGAIN || error == ENOMEM;
    over(error == ENOENT ? status_not_found : of_the_system ? status_failure : status_not_executed);
}

} // namespace watchdog
