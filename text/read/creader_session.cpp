#include "text/read/creader_session.h"

// The current session is reached through a plain pointer. Destructors restore all state, so an
// exception leaves nothing changed.

#include "qrv/core/ceros.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"
#include "text/read/creader_errors.h"
#include "text/read/csource_recorder.h"
#include "text/scan/cattrscanner_rules.h"
#include "text/state/ctext_state.h"

namespace {
constinit cReadSession *the_session = nullptr;
constinit cSubText *the_sub_text = nullptr;

// Merging up to this cost is free; beyond it, the permitted cost grows with the text read.
constexpr std::uint64_t free_merges = 1'000'000;

// The report's entry for the error. During a reading it has a position: that of place_now(), or
// else of the current token.
cat::ReadError entry_here(cErr const &error) {
    cat::ReadError entry;
    entry.path = text_state().shown_path(true);
    entry.code = error.code();
    entry.text = error.as_string();
    entry.kind = error.kind();
    entry.names = error.names();
    cReadSession const *const session = cReadSession::current();
    if (!session) return entry;
    cToken const &token = session->scan()->current();
    entry.file = cSubText::file_of(*session->scan());
    cReadSession::cPlace const place = session->place_now();
    entry.line = place.line ? place.line : token.outer_line;
    entry.column = (place.line ? place.column : token.outer_column) + 1;
    return entry;
}
} // namespace

std::string shown_path() { return text_state().shown_path(cat::ReadReport::current() != nullptr); }

void cat::keep_error_line(ReadReport &report, cErr const &error) {
    cErrorRuns::add(report, entry_here(error));
}

// --- the session ---

cReadSession::cReadSession(cAttrScan &outer)
    : cMergeBudget(free_merges), before_(the_session), outer_(&outer), scan_(&outer),
      start_(characters()) {
    the_session = this;
    if (cat::ReadReport::any()) capture_ = std::make_unique<cErrorCapture>();
    auto *const source = cat::cSourceRecorder::current();
    if (source && !before_ && source->start(outer)) source_ = source->shared_from_this();
}

cReadSession::~cReadSession() {
#ifdef QRV_CHECKS
    if (!before_) scan::parsed += characters() - start_;
#endif
    if (source_) source_->finish();
    the_session = before_;
}

cReadSession *cReadSession::current() noexcept { return the_session; }

void cReadSession::report_changed() {
    if (!the_session) return;
    if (!cat::ReadReport::any())
        the_session->capture_.reset();
    else if (!the_session->capture_)
        the_session->capture_ = std::make_unique<cErrorCapture>();
}

std::uint64_t cReadSession::characters() const { // the position counts no line ends
    return std::uint64_t{outer_->position()} + outer_->lineno();
}

void cReadSession::refresh_limit() {
    std::uint64_t const now = characters();
    set_limit(free_merges + (now > start_ ? now - start_ : 0));
}

void cReadSession::left_out(cObj &holder, objref const &key, objref const &) {
    std::string const type = holder.type().name();
    std::string const text = cat::as_text(key); // RUNS USER CODE
    cErrStream &err = scan_->errs();
    err.set_code(err_cycle.code);
    err.set_kind(err_cycle.kind);
    err.set_handled(false);
    scan_->errincr();
    err << "Setattr in object type '" << cNamed::type(type) << "', key '" << cNamed::key(text)
        << "': " << err_cycle.text;
    scan_->about(place_now_.line, place_now_.column);
    scan_->fire();
}

cReading::cReading(cAttrScan &scan)
    : own_(the_session ? nullptr : std::make_unique<cReadSession>(scan)), budget_(the_session),
      before_(std::exchange(the_session->scan_, &scan)) {}

cReading::~cReading() {
    if (the_session) the_session->scan_ = before_;
}

// --- capturing ---

cErrorCapture::cErrorCapture()
    : block_(cat::errhandler().block()), slot_(this, &cErrorCapture::take) {
    cat::sig_error().connect(slot_, false, cat::sig_error().begin());
}

void cErrorCapture::take(cErr &error) {
    if (cat::ReadReport *const report = cat::ReadReport::current())
        cErrorRuns::add(*report, entry_here(error));
    if (error.code() & cat::errhandler().clear_mask()) error.set_code(error.code() & 0x3FFFFFFFu);
}

// --- texts cut from others ---

cSubText::cSubText(std::istream const &is, cAttrScan const &outer)
    : is_(&is), file_(file_of(outer)), before_(the_sub_text) {
    the_sub_text = this;
}

cSubText::~cSubText() { the_sub_text = before_; }

std::string const &cSubText::file_of(cAttrScan const &scan) {
    for (cSubText const *at = the_sub_text; at; at = at->before_)
        if (at->is_ == &scan.is()) return at->file_;
    return scan.filename();
}
