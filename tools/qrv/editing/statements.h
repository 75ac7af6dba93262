#pragma once
// The text given to `set`, cut into statements:
//   statement = { ";" | "," } path operator value      path = [ "/" ] key { "/" key }
//   operator  = "=" | "&=" | "+=" | "<<"
// It is the language of the library's lists of assignments, read by the same scanner. Text that the
// library silently ignores is an error here: a comment, a statement without value, a bracket or a
// "=" after a value, bytes that end the text, and everything that `check` reports in a value.

#include "qrv/core/cobj.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "tools/qrv/editing/statement_text.h"
#include "tools/qrv/output/messages.h"

#include <sstream>
#include <string>

struct cStatement {
    cPlace place;              // of the path
    cPlace value_place;        // of the value
    std::string path;          // without leading slash and blanks
    std::string operator_text; // "="
    int operation = 0;         // the operator's token
    objref value;
};

class cStatements {
  public:
    // Errors go to messages, with positions in the text. All references are borrowed.
    cStatements(std::string const &text, cNamedValues &named, bool convert, cMessages &messages);
    cStatements(cStatements const &) = delete;
    cStatements &operator=(cStatements const &) = delete;
    ~cStatements() = default;

    // Reads the next statement. Reports and skips a statement that can't be read. False at the end,
    // or if the begin of the next statement can't be found.
    bool next(cStatement &statement);

  private:
    bool report_unread(std::string const &text);
    void report_ignored_values();
    cPlace place_of(cAttrLiteral const &token) const;
    void add_messages(cat::ReadError const &error);
    void add_messages(cat::ReadReport const &report);
    bool read_path(cStatement &statement);
    bool read_key(cAttrLiteral const &token, cStatement &statement);
    bool read_value(cStatement &statement, bool &good);
    bool refuse(cAttrLiteral const &token, std::string const &text, std::string const &advice);

    cMessages &messages_;
    size_t errors_before_;
    cStatementText const text_;
    std::istringstream in_;
    cAttrScan scan_;
    bool readable_;
};
