#pragma once
// Which errors of a reading belong together: the runs that cat::ReadError::follows shows.
//
// The reader says what it has consumed last, where an entry begins and where a value has ended with
// all that is reported of it. It doesn't say so of late entries (cLateEntries): an error settles
// them, and as long as a run is open no others become late.

#include "qrv/text/read/creadreport.h"
#include "qrv/text/scan/cattrscanner.h"

class cErrorRuns {
  public:
    // Gives the error to the report, as one of the run that is open; else it begins one. Outside of
    // a reading each error is a run by itself.
    static void add(cat::ReadReport &report, cat::ReadError error);

    bool is_open() const noexcept { return open_; }
    unsigned errors() const noexcept { return errors_; } // of the reading

    // Was the last token consumed as a delimiter or as an opening bracket?
    void delimited(bool on) noexcept { delimited_ = on; }
    // Is the value that is scanned next the beginning of an entry?
    void expect_entry(bool on) noexcept { expected_ = on; }
    // The first token of an entry, or of a value, is there. It isn't a closing bracket.
    void begin_entry() noexcept {
        if (delimited_) open_ = false;
        delimited_ = expected_ = false;
    }
    void begin_value() noexcept {
        if (expected_) begin_entry();
    }
    // A value has ended: if the run began inside of it, so has the run. Not where the text has
    // ended before the closing bracket.
    void end_value(cToken const &last) noexcept {
        if (open_ && last.code > tkEof) leave();
    }

    // While it lives, errors belong to the run of the last one, if the reading had more than
    // `before` when this began.
    class cSameRun {
      public:
        cSameRun(cErrorRuns &runs, unsigned before) noexcept
            : runs_(runs), ends_(!runs.open_ && runs.errors_ != before) {
            if (ends_) runs_.open_ = true;
        }
        cSameRun(cSameRun const &) = delete;
        cSameRun &operator=(cSameRun const &) = delete;
        ~cSameRun() {
            if (ends_) runs_.open_ = false;
        }

      private:
        cErrorRuns &runs_;
        bool const ends_;
    };

  private:
    std::uint64_t next();
    void leave() noexcept;

    std::uint64_t run_ = 0; // of the last error; no two runs of the process have one number
    unsigned errors_ = 0;
    int depth_ = 0; // of the container in which the run began
    bool open_ = false;
    bool delimited_ = false;
    bool expected_ = false;
};
