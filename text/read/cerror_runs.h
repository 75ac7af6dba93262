#pragma once
// Groups the errors of a reading into runs: an error, and those that follow from it. The comment of
// cat::ReadError::follows has the rules.
//
// A run is open while further errors belong to it. The reader calls the functions below at the
// start of each entry, after each delimiter, and at the end of each value, after all errors about
// it. It omits these calls for late entries (cLateEntries): an error enters all late entries, and
// while a run is open no entry is late.

#include "qrv/text/read/creadreport.h"
#include "qrv/text/scan/cattrscanner.h"

class cErrorRuns {
  public:
    // Passes the error to the report, as a part of the open run; otherwise it begins a run. Outside
    // a reading each error is a separate run.
    static void add(cat::ReadReport &report, cat::ReadError error);

    bool is_open() const noexcept { return open_; }
    unsigned errors() const noexcept { return errors_; } // of the reading

    // Call this when a token was consumed: whether it was a delimiter or an opening bracket.
    void delimited(bool on) noexcept { delimited_ = on; }
    // Whether the value that is scanned next is the start of an entry.
    void expect_entry(bool on) noexcept { expected_ = on; }
    // Call these when the first token of an entry, or of a value, was read and isn't a closing
    // bracket.
    void begin_entry() noexcept {
        if (delimited_) open_ = false;
        delimited_ = expected_ = false;
    }
    void begin_value() noexcept {
        if (expected_) begin_entry();
    }
    // Call this at the end of a value. A run that began inside it ends too, unless the text ended
    // before the closing bracket.
    void end_value(cToken const &last) noexcept {
        if (open_ && last.code > tkEof) leave();
    }

    // During its lifetime, errors belong to the run of the last error. It has no effect if the
    // reading had no error since its number of errors was `before`.
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
