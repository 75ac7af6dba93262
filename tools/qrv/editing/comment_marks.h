#pragma once
// Finds the comments of a file that the writer loses after a change. Since comments can have equal
// texts, each comment gets a mark while the value is changed and written: a word that no file
// contains. The marks are then removed from the written text.

#include "qrv/core/cobj.h"
#include "qrv/text/read/csourcemap.h"
#include "tools/qrv/output/messages.h"
#include "tools/qrv/reading/reading.h"

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

class cCommentMarks {
  public:
    // Marks the comments of the value. `map` belongs to `bytes`; both must outlive the object.
    cCommentMarks(std::string const &bytes, cat::SourceMap const &map, cReading const &reading);

    // Counts the marks in the written text. Returns the text without them.
    std::string removed_from(std::string const &text);

    // Adds an error for each comment whose mark was not written. The comment of a shared value is
    // written at each place of the value, so an equal comment at such a place is not lost. The
    // comments before the first token count as written if the head of the file is written.
    void report_lost(bool head_is_written, cMessages &messages) const;

  private:
    void mark(objref const &root);
    void mark_comment(cObj &value, std::vector<size_t> const &numbers) const;
    std::string text_of(size_t number) const;
    std::unordered_set<size_t> at_references() const;

    std::string const &bytes_;
    cat::SourceMap const &map_;
    size_t text_after_; // the offset of text after the value
    std::string word_;
    std::vector<size_t> counts_; // for each comment, the number of its marks in the text
    std::unordered_map<std::uint32_t, std::vector<size_t>> by_value_; // comments by obid
};
