#pragma once
// Groups the errors of a reading into runs, which cat::ReadError::follows shows.
//
// The reader reports the token that it consumed last, the start of each entry, and the end of a
// value after all errors about it. It omits this for late entries (cLateEntries): an error settles
// them, and while a run is open no others become late.

#include "qrv/text/read/creadreport.h"
#include "qrv/text/scan/cattrscanner.h"

class cErrorRuns {
  public:
    // Passes the error to the report, as a part of the open run; otherwise it begins a run. Outside
    // a reading each error is a separate run.
    static void add(cat::ReadReport &report, cat::ReadError error);

    bool is_open() const noexcept { return open_; }
    unsigned errors() const noexcept { return errors_; } // of the reading

    // Whether the last token was consumed as a delimiter or as an opening bracket.
    void delimited(bool on) noexcept { delimited_ = on; }
    // Whether the value that is scanned next is the start of an entry.
    void expect_entry(bool on) noexcept { expected_ = on; }
    // The first token of an entry, or of a value, was read. It isn't a closing bracket.
    void begin_entry() noexcept {
        if (delimited_) open_ = false;
        delimited_ = expected_ = false;
    }
    void begin_value() noexcept {
        if (expected_) begin_entry();
    }
    // A value has ended: a run that began inside it ends too, unless the text ended before the
    // closing bracket.
    void end_value(cToken const &last) noexcept {
        if (open_ && last.code > tkEof) leave();
    }

    // During its lifetime, errors belong to the run of the last error, if the reading had more than
    // `before` errors when this was created.
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

    std::uint64_t run_ = 0; // of the last error; the numbers are unique in the process
    unsigned errors_ = 0;
    int depth_ = 0; // of the container in which the run began
    bool open_ = false;
    bool delimited_ = false;
    bool expected_ = false;
};
