#pragma once
// cat::ReadReport collects what goes wrong while text is read: for programs that show errors to
// people. While one lives, the innermost takes every error of a scan, once, and none is printed or
// thrown: those of the scanners, those raised on cat::sig_error() meanwhile, and the lines that
// would be printed. Results and error counts stay as they are.

#include "qrv/ccomp.h"
#include "qrv/diagnostics/cerrkind.h"
#include "qrv/qrvdefs.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

class cErrorRuns;
struct cToken;

namespace cat {
// The place is that of the first character of the token that the error is about, in the outer
// file, also inside typed values; for an unclosed bracket, where it was opened.
struct QRV_API ReadError {
    std::string file;      // empty if the text has no file name
    unsigned line = 0;     // from 1
    unsigned column = 0;   // from 1, in bytes
    unsigned end_line = 0; // of an unclosed bracket: where its container ended, else 0
    unsigned end_column = 0;
    std::string path;  // of the value, such as "/a/0"; cut in the middle above 1,000 characters
    unsigned code = 0; // 0 for what is printed only
    std::string text;  // without place and path in front

    ErrorKind kind = ErrorKind::other;
    ErrorNames names;
    // One mistake in a text often gives several errors: a run. It ends when the reader begins an
    // entry directly after a delimiter or an opening bracket, or after the closing bracket of the
    // container in which it began; what is reported of that container as a whole belongs to it.
    // "Cannot insert key" belongs to the run of the last error of its value. Each reading has runs
    // of its own. Here: the index in entries() of the first error of the run that the report has
    // kept, none for that one itself. So where the watch or the limit has dropped the first one,
    // the next that is kept takes its part.
    static constexpr std::size_t none = static_cast<std::size_t>(-1);
    std::size_t follows = none;
};

// Looks at errors on their way into a report: for programs that can say more than the library, or
// the same in fewer words. What is called during a reading must not change what is read.
class QRV_API ReadWatch {
  public:
    ReadWatch() = default;
    ReadWatch(ReadWatch const &) = delete;
    ReadWatch &operator=(ReadWatch const &) = delete;
    virtual ~ReadWatch();

    // The attribute set was read, but breaks a rule of its type; the error that says so comes next.
    // It isn't the object that would have taken the values.
    virtual void invalid(cObj &object);
    // True: the error is kept, as it is then. False: it is neither kept nor counted.
    virtual bool error(ReadError &error);
    // The tokens of a typed value whose text is cut out of the input, as those of attlist(...) and
    // intf(...) and of no container: the type's name, the brackets, and all between them without
    // comments, with their places in the outer text. What is typed inside it is not shown again.
    virtual void typed_token(cToken const &token);
};

class QRV_API ReadReport {
  public:
    // Keeps that many entries and counts the rest.
    explicit ReadReport(std::size_t limit = 1000);
    ReadReport(ReadReport const &) = delete;
    ReadReport &operator=(ReadReport const &) = delete;
    ~ReadReport(); // the one before takes over again

    std::vector<ReadError> const &entries() const noexcept { return entries_; }
    std::size_t limit() const noexcept { return limit_; }
    void limit(std::size_t limit) noexcept { limit_ = limit; } // what is kept stays
    std::size_t dropped() const noexcept { return dropped_; }  // beyond the limit
    std::size_t count() const noexcept { return entries_.size() + dropped_; }
    bool empty() const noexcept { return count() == 0; }
    void clear(); // the next entry of a run that continues is then its first one

    // Asks the watch, then keeps the error or counts it; keep() asks nobody.
    // An index in `follows` that isn't an earlier entry's becomes none.
    void add(ReadError error);
    void keep(ReadError error);

    // Borrowed, must live as long as it is set; null, as at first, is none.
    ReadWatch *watch() const noexcept { return watch_; }
    void watch(ReadWatch *watch) noexcept { watch_ = watch; }

    // The innermost living one, or null.
    static ReadReport *current() noexcept;

  private:
    friend class ::cErrorRuns;
    void add(ReadError error, std::uint64_t run);

    std::vector<ReadError> entries_;
    std::size_t limit_;
    std::size_t dropped_ = 0;
    ReadReport *before_;
    ReadWatch *watch_ = nullptr;
    std::uint64_t run_ = 0;     // of the last entry of a reading; 0: none
    std::size_t run_first_ = 0; // the index of its first entry
};
} // namespace cat
