#pragma once
// What most tests stand on: a fixture that puts the process-wide state back and checks the census.
//
//   class Reader : public QrvTest {};
//   TEST_F(Reader, tells_an_unclosed_map) {
//       cErrorLog errors;
//       ...
//       EXPECT_EQ(errors.text(), "0x40000001 Line 1: Map is not closed by '}'\n");
//   }
//
// At the end of each test, when the members of derived fixtures are gone too: reader and writer
// are idle (depth -1, empty path), error handler, trace rules, layout and limits are as before,
// entries made or changed in cat::gmmap() and cat::constmap() are as before, and as many counted
// objects live as before. What of this a test left behind in reader, writer or census fails it.

#include "qrv/core/cobj.h"
#include "qrv/diagnostics/ccout.h"
#include "qrv/diagnostics/cerr.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace test {
// The first sig_idle ends the time in which messages are kept back. The core is made here too, so
// that its objects count in no test. Always true.
bool listening();
} // namespace test

// The lines of a text, without their ends; a text that ends in a line feed has no empty last line.
std::vector<std::string> lines_of(std::string const &text);

// Collects what passes the message route from its construction on.
class cMessageLog {
  public:
    cMessageLog();
    cMessageLog(cMessageLog const &) = delete;
    cMessageLog &operator=(cMessageLog const &) = delete;
    ~cMessageLog() = default;

    // All since the last call, with what still waited for a flush.
    std::string take();

  private:
    void keep(char const *piece) { text_ += piece; }

    std::string text_;
    cSlot1<cMessageLog, char const *> slot_;
};

// Collects the errors raised on cat::sig_error(), with the handler silent and throwing nothing as
// long as it lives. Errors of scanners take another road: see messages() and cat::ReadReport.
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
    ~cErrorLog(); // the handler's masks are as before

    std::vector<cEntry> const &entries() const { return entries_; }
    std::size_t count() const { return entries_.size(); }
    unsigned int last_code() const { return entries_.empty() ? 0 : entries_.back().code; }
    std::string last_text() const {
        return entries_.empty() ? std::string() : entries_.back().text;
    }
    // A line for each: "0x40000001 text".
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

    // What passed the message route since the last call, or since the test began.
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
