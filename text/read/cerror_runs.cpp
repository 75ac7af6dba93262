#include "text/read/cerror_runs.h"

#include "text/read/creader_session.h"
#include "text/state/ctext_state.h"

#include <utility>

namespace {
constinit std::uint64_t last_run = 0;
}

void cErrorRuns::add(cat::ReadReport &report, cat::ReadError error) {
    cReadSession *const session = cReadSession::current();
    report.add(std::move(error), session ? session->runs().next() : ++last_run);
}

std::uint64_t cErrorRuns::next() {
    ++errors_;
    if (!open_) {
        open_ = true;
        depth_ = text_state().depth();
        run_ = ++last_run;
    }
    return run_;
}

void cErrorRuns::leave() noexcept {
    if (text_state().depth() < depth_) open_ = false;
}
