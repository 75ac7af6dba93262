#pragma once
// The base of most tests: a fixture that restores the process-wide state and checks the number of
// living objects.
//
//   class Reader : public QrvTest {};
//   TEST_F(Reader, reports_an_unclosed_map) {
//       cErrorLog errors;
//       ...
//       EXPECT_EQ(errors.text(), "0x40000001 Line 1: Map is not closed by '}'\n");
//   }
//
// At the end of each test, after the members of derived fixtures are destroyed: reader and writer
// are idle (depth -1, empty path); error handler, trace rules, layout and limits are restored;
// entries created or changed in cat::gmmap() and cat::constmap() are restored; and the number of
// counted objects is the same as before. A test fails if it changes the state of the reader or the
// writer, or this number.

#include "qrv/core/cobj.h"
#include "qrv/diagnostics/ccout.h"
#include "qrv/diagnostics/cerr.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace test {
// The first sig_idle ends the time in which messages are stored. The core is created here too, so
// that no test counts its objects. Always true.
bool listening();
} // namespace test

// The lines of a string, without line ends; a string that ends in a line feed has no empty last
// line.
std::vector<std::string> lines_of(std::string const &text);

// Collects the message output from its construction on.
class cMessageLog {
  public:
    cMessageLog();
    cMessageLog(cMessageLog const &) = delete;
    cMessageLog &operator=(cMessageLog const &) = delete;
    ~cMessageLog() = default;

    // Everything since the last call, including text not yet flushed.
    std::string take();

  private:
    void keep(char const *piece) { text_ += piece; }

    std::string text_;
    cSlot1<cMessageLog, char const *> slot_;
};

// Collects the errors raised on cat::sig_error(). Until the end of its scope the handler prints and
// throws nothing. Errors of scanners are reported elsewhere: see messages() and cat::ReadReport.
class cErrorLog {
  public:
    struct cEntry {
        unsigned int code;
        std::string text;
        bool operator==(cEntry const &) const = default;
    };

    cErrorLog();
    cErrorLog(cErrorLog const &) = delete;
    cErrorLog &operator=(cErrorLog const &) = delete;
    ~cErrorLog(); // restores the handler's masks

    std::vector<cEntry> const &entries() const { return entries_; }
    std::size_t count() const { return entries_.size(); }
    unsigned int last_code() const { return entries_.empty() ? 0 : entries_.back().code; }
    std::string last_text() const {
        return entries_.empty() ? std::string() : entries_.back().text;
    }
    // One line for each: "0x40000001 text".
    std::string text() const;
    void clear() { entries_.clear(); }

  private:
    void keep(cErr &error);

    cErrHandler before_;
    std::vector<cEntry> entries_;
    cSlot1<cErrorLog, cErr &> slot_;
};

class QrvTest : public ::testing::Test {
  public:
    QrvTest(QrvTest const &) = delete;
    QrvTest &operator=(QrvTest const &) = delete;

  protected:
    QrvTest();
    ~QrvTest() override;

    // The message output since the last call, or since the test began.
    std::string messages() { return messages_.take(); }

  private:
    using cEntries = std::vector<std::pair<objref, objref>>;

    static cEntries entries_of(cMapObj &map);
    static void put_back(cMapObj &map, cEntries const &before);
    void check_idle();
    void put_back();

    cErrHandler handler_;
    int write_indent_;
    int write_indent0_;
    int max_read_depth_;
    cEntries globals_;
    cEntries constants_;
    cMessageLog messages_;
    std::uint32_t census_;
};
