#pragma once
// The text of statements before it is read. Each $NAME outside of quotes becomes one string in
// quotes, so any value of --arg stays one value. A literal that would be stored with a changed
// value is an error.

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
    // Errors go to messages. Both are borrowed. If `convert`, all literals are accepted.
    cStatementText(std::string const &written, cNamedValues &named, bool convert,
                   cMessages &messages);

    std::string const &text() const { return text_; }
    cPlace written_place(cPlace place) const; // the written position of a position in text()

  private:
    struct cReplaced {
        cPlace begin, end;                 // the string in text()
        cPlace written_begin, written_end; // $NAME
    };

    std::string text_;
    std::vector<cReplaced> replaced_;
};
