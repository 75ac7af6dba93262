#pragma once
// What one outermost read has in common for all scans inside it: the budget of merges, the scan
// that works at the moment, and, while a cat::ReadReport lives, the capture of what would be
// printed or thrown.
//
// Rules
//   - A session begins with the first scan_obj, read_hash or scan_container and ends with it. Reads
//     inside, also of other files, join it.
//   - Captured: cat::errhandler() is blocked, a slot ahead of all others on cat::sig_error() takes
//     the errors and then lowers the code as the handler would have done, and scanners made
//     meanwhile are connected to the capture. cAttrScan::fire() goes to the report directly.
//   - The text between the brackets of a typed value is a stream of its own. cSubText tells, for as
//     long as it is read, which file it was cut from.

#include "containers/cmergebudget.h"
#include "qrv/diagnostics/cerr.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"

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
    // Starts or ends capturing, as a report lives or not.
    static void report_changed();

    cAttrScan *scan() const noexcept { return scan_; } // the innermost working one
    cErrorCapture *capture() const noexcept { return capture_.get(); }
    // Where the value began that scan_obj read last, for what becomes of it afterwards.
    struct cPlace {
        unsigned line = 0; // from 1; 0: no place
        unsigned column = 0;
    };
    cPlace value_place() const noexcept { return value_place_; }
    void value_place(cAttrLiteral const &token) noexcept {
        value_place_ = {token.outer_line, token.outer_column};
    }
    void value_place(cPlace place) noexcept { value_place_ = place; }
    // The place of what is reported now, if it isn't the current token's.
    cPlace place_now() const noexcept { return place_now_; }
    void place_now(cPlace place) noexcept { place_now_ = place; }
    // The budget as it stands with the text read so far.
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
    std::unique_ptr<cErrorCapture> capture_;
    std::shared_ptr<cat::cSourceRecorder> source_; // which records this reading
};

// In each function that scans: begins a session if there is none, and is the working scan.
class cReading {
  public:
    explicit cReading(cAttrScan &scan);
    cReading(cReading const &) = delete;
    cReading &operator=(cReading const &) = delete;
    ~cReading();

  private:
    std::unique_ptr<cReadSession> own_;
    cat::cMergeBudgetUse const budget_; // also where a program's act in between goes without
    cAttrScan *before_;
};

// While it lives, what is reported is about the value that was read last.
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

// Takes errors for the living report, see above.
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

// The file that the text of a stream was cut from.
class cSubText {
  public:
    cSubText(std::istream const &is, cAttrScan const &outer);
    cSubText(cSubText const &) = delete;
    cSubText &operator=(cSubText const &) = delete;
    ~cSubText();

    // The file of a scan: that of the text it was cut from, or its own.
    static std::string const &file_of(cAttrScan const &scan);

  private:
    std::istream const *is_;
    std::string file_;
    cSubText *before_;
};

namespace cat {
// The taker of lines that would be printed, while a report lives.
bool keep_error_line(std::string const &text);
} // namespace cat
