#pragma once
// The text of statements before it is read. Each $NAME outside of quotes becomes one string in
// quotes, so whatever the value contains, it stays one value. Literals that would not be stored as
// they are written are errors.

#include "tools/qrv/output/messages.h"

#include <map>
#include <set>
#include <string>
#include <vector>

// The values of --arg, by name, and those that statements used.
struct cNamedValues {
    std::map<std::string, std::string> values;
    std::set<std::string> used;
};

class cStatementText {
  public:
    // Errors go to messages. Both are borrowed; with `convert` all literals are taken.
    cStatementText(std::string const &written, cNamedValues &named, bool convert,
                   cMessages &messages);

    std::string const &text() const { return text_; }
    cPlace written_place(cPlace place) const; // of a place in text()

  private:
    struct cReplaced {
        cPlace begin, end;                 // of the string in text()
        cPlace written_begin, written_end; // of $NAME
    };

    std::string text_;
    std::vector<cReplaced> replaced_;
};
