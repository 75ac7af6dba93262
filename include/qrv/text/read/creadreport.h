#pragma once
// cat::ReadReport collects the errors of a reading, for programs that show them to people. The
// innermost existing report receives every error of a scan, once: those of the scanners, those
// raised on cat::sig_error() meanwhile, and the lines that would be printed. None of them is
// printed or thrown. Results and error counts do not change. Errors outside of readings are raised
// as usual; cat::CaughtErrors receives those, too.

#include "qrv/ccomp.h"
#include "qrv/diagnostics/ccaughterrors.h"
#include "qrv/qrvdefs.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

class cErrorRuns;
struct cToken;

namespace cat {
// The position is that of the first character of the token that the error is about, in the outer
// file, also inside typed values; for an unclosed bracket, the position of that bracket.
struct QRV_API ReadError {
    std::string file;      // empty if the text has no file name
    unsigned line = 0;     // from 1
    unsigned column = 0;   // from 1, in bytes
    unsigned end_line = 0; // for an unclosed bracket: the end of its container; else 0
    unsigned end_column = 0;
    std::string path;  // of the value, such as "/a/0"; cut in the middle above 1,000 characters
    unsigned code = 0; // 0 for messages that are only printed
    std::string text;  // without the position and path before it

    ErrorKind kind = ErrorKind::other;
    ErrorNames names;
    // One mistake in text often causes several errors: a run. A run ends when the reader begins an
    // entry directly after a delimiter or an opening bracket, or after the closing bracket of the
    // container in which the run began; errors about that container as a whole belong to the run.
    // "Cannot insert key" belongs to the run of the last error of its value. Each reading has
    // separate runs. `follows` is the index in entries() of the first error of the run that the
    // report has stored, and `none` in that error itself.
    static constexpr std::size_t none = static_cast<std::size_t>(-1);
    std::size_t follows = none;
};

// Examines errors on their way into a report: for programs that can say more than the library, or
// the same in fewer words. These functions must not change the data that is being read.
class QRV_API ReadWatch {
  public:
    ReadWatch() = default;
    ReadWatch(ReadWatch const &) = delete;
    ReadWatch &operator=(ReadWatch const &) = delete;
    virtual ~ReadWatch();

    // Called before the error about an attribute set that was read but violates a rule of its type.
    // `object` has the values as they were read; it is not the object to which they would have been
    // assigned.
    virtual void invalid(cObj &object);
    // May change the error. True: the report stores it. False: the report neither stores nor counts
    // it.
    virtual bool error(ReadError &error);
    // Called for each token of a typed value whose text is extracted from the input, such as
    // attlist(...) or intf(...); the text of containers is not. The tokens are the type's name, the
    // brackets, and all tokens between them except comments, with their positions in the outer
    // text. The tokens of a typed value inside it are passed only once.
    virtual void typed_token(cToken const &token);
};

class QRV_API ReadReport : private ErrorTaker {
  public:
    // Stores at most `limit` entries and counts the rest.
    explicit ReadReport(std::size_t limit = 1000);
    ReadReport(ReadReport const &) = delete;
    ReadReport &operator=(ReadReport const &) = delete;
    ~ReadReport() override; // the next outer report receives errors again

    std::vector<ReadError> const &entries() const noexcept { return entries_; }
    std::size_t limit() const noexcept { return limit_; }
    void limit(std::size_t limit) noexcept { limit_ = limit; } // stored entries stay
    std::size_t dropped() const noexcept { return dropped_; }  // beyond the limit
    std::size_t count() const noexcept { return entries_.size() + dropped_; }
    bool empty() const noexcept { return count() == 0; }
    void clear(); // the next entry of a run that continues counts as its first one

    // add() asks the watch, then stores the error or counts it; keep() does not ask. If `follows`
    // is not the index of an earlier entry, it becomes `none`.
    void add(ReadError error);
    void keep(ReadError error);

    // The watch, which is borrowed and must exist while it is set. Null, the default: there is no
    // watch.
    ReadWatch *watch() const noexcept { return watch_; }
    void watch(ReadWatch *watch) noexcept { watch_ = watch; }

    // The innermost existing report, or null; null also if a cat::CaughtErrors exists that was
    // created later, which receives the errors instead.
    static ReadReport *current() noexcept;
    static bool any() noexcept; // whether a report exists

  private:
    friend class ::cErrorRuns;
    void add(ReadError error, std::uint64_t run);
    Answer take(cErr const &error, Route route) override;

    std::vector<ReadError> entries_;
    std::size_t limit_;
    std::size_t dropped_ = 0;
    ReadReport *before_;
    ReadWatch *watch_ = nullptr;
    std::uint64_t run_ = 0;     // of the last error of a reading that was stored; 0: none
    std::size_t run_first_ = 0; // the index of its first entry
};
} // namespace cat
