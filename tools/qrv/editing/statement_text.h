#pragma once
// Prepares the text of statements for reading. Each $NAME outside of quotes is replaced by the
// value of --arg as one string in quotes, so it cannot become several values. A literal that
// reading would change is an error.

#include "tools/qrv/output/messages.h"

#include <map>
#include <set>
#include <string>
#include <vector>

// The values of --arg by name, and the names that statements have used.
struct cNamedValues {
    std::map<std::string, std::string> values;
    std::set<std::string> used;
};

class cStatementText {
  public:
    // Borrows `named` and `messages`, which receives the errors. If `convert`, all literals are
    // accepted.
    cStatementText(std::string const &written, cNamedValues &named, bool convert,
                   cMessages &messages);

    std::string const &text() const { return text_; }
    cPlace written_place(cPlace place) const; // the position in `written` of a position in text()

  private:
    struct cReplaced {
        cPlace begin, end;                 // the string in text()
        cPlace written_begin, written_end; // $NAME
    };

    std::string text_;
    std::vector<cReplaced> replaced_;
};
