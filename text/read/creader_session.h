#pragma once
// Shared state of all scans inside one outermost read: the budget of merges, the active scan, and,
// while a cat::ReadReport exists, the capture of everything that would be printed or thrown.
//
// Rules
//   - A session begins with the first scan_obj, read_hash or scan_container and ends with it.
//     Nested reads, also of other files, join it.
//   - Captured: cat::errhandler() is blocked, a slot before all others on cat::sig_error() receives
//     the errors and then lowers the code as the handler would have done, and scanners created
//     meanwhile are connected to the capture. cAttrScan::fire() uses the report directly.
//   - The text between the brackets of a typed value is a separate stream. While it is read,
//     cSubText knows the file from which it was extracted.

#include "containers/cmergebudget.h"
#include "qrv/diagnostics/cerr.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "text/read/cerror_runs.h"

#include <memory>
#include <optional>

class cErrorCapture;
namespace cat {
class cSourceRecorder;
}

class cReadSession final : public cat::cMergeBudget {
  public:
    explicit cReadSession(cAttrScan &outer);
    cReadSession(cReadSession const &) = delete;
    cReadSession &operator=(cReadSession const &) = delete;
    ~cReadSession() override;

    static cReadSession *current() noexcept;
    // Starts or ends capturing. Called after a report is created or destroyed.
    static void report_changed();

    cAttrScan *scan() const noexcept { return scan_; } // the innermost active one
    cErrorCapture *capture() const noexcept { return capture_.get(); }
    // The start of the value that scan_obj read last, for errors about it afterwards.
    struct cPlace {
        unsigned line = 0; // from 1; 0: no place
        unsigned column = 0;
    };
    cPlace value_place() const noexcept { return value_place_; }
    void value_place(cAttrLiteral const &token) noexcept {
        value_place_ = {token.outer_line, token.outer_column};
    }
    void value_place(cPlace place) noexcept { value_place_ = place; }
    // The position for reports, if it isn't the current token's.
    cPlace place_now() const noexcept { return place_now_; }
    void place_now(cPlace place) noexcept { place_now_ = place; }
    cErrorRuns &runs() noexcept { return runs_; }
    // Adjusts the budget to the text read so far.
    void refresh_limit();
    void left_out(cObj &holder, objref const &key, objref const &value) override;

  private:
    friend class cReading;
    std::uint64_t characters() const;

    cReadSession *before_;
    cAttrScan *outer_;
    cAttrScan *scan_;
    std::uint64_t start_;
    cPlace value_place_;
    cPlace place_now_;
    cErrorRuns runs_;
    std::unique_ptr<cErrorCapture> capture_;
    std::shared_ptr<cat::cSourceRecorder> source_; // records this reading
};

// Used in each function that scans: begins a session if necessary, and makes its scan the active
// one.
class cReading {
  public:
    explicit cReading(cAttrScan &scan);
    cReading(cReading const &) = delete;
    cReading &operator=(cReading const &) = delete;
    ~cReading();

  private:
    std::unique_ptr<cReadSession> own_;
    cat::cMergeBudgetUse const budget_; // installs it again: setattrp may have removed it
    cAttrScan *before_;
};

// During its lifetime, errors are reported at the start of the value that was read last.
class cAboutValue {
  public:
    explicit cAboutValue(cReadSession &session) : session_(session), before_(session.place_now()) {
        session_.place_now(session_.value_place());
    }
    cAboutValue(cAboutValue const &) = delete;
    cAboutValue &operator=(cAboutValue const &) = delete;
    ~cAboutValue() { session_.place_now(before_); }

  private:
    cReadSession &session_;
    cReadSession::cPlace before_;
};

// Receives errors for the existing report, see above.
class cErrorCapture {
  public:
    cErrorCapture();
    cErrorCapture(cErrorCapture const &) = delete;
    cErrorCapture &operator=(cErrorCapture const &) = delete;
    ~cErrorCapture() = default;

    cSSBase1<cErr &> const &slot() const noexcept { return slot_; }

  private:
    void take(cErr &error);

    cRef<cShared> block_; // of the handler
    cSlot1<cErrorCapture, cErr &> slot_;
};

// The file from which the text of a stream was extracted.
class cSubText {
  public:
    cSubText(std::istream const &is, cAttrScan const &outer);
    cSubText(cSubText const &) = delete;
    cSubText &operator=(cSubText const &) = delete;
    ~cSubText();

    // The file of a scan: that from which its text was extracted, or its own.
    static std::string const &file_of(cAttrScan const &scan);

  private:
    std::istream const *is_;
    std::string file_;
    cSubText *before_;
};

namespace cat {
// Adds an error, which would otherwise be printed as a line, to the report.
void keep_error_line(ReadReport &report, cErr const &error);
} // namespace cat
