#pragma once
// Which comments of a file are in the text that the writer makes of its value, after a change. As
// comments can have equal texts, each has a mark in the text of its value while that is changed and
// written: a word that no file contains. The marks are removed from what the writer has made.

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
    // Marks the comments of the value. The map is that of the bytes; both must outlive the object.
    cCommentMarks(std::string const &bytes, cat::SourceMap const &map, cReading const &reading);

    // What the writer made of the value, without the marks. They are counted.
    std::string removed_from(std::string const &text);

    // An error for each comment without a mark there. The comment of a shared value is written at
    // each place of the value: what such a place had in the same words before is not lost. The
    // comments before the first token count as written if the head of the file is.
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
    std::vector<size_t> counts_; // of each comment: how often its mark was in the text
    std::unordered_map<std::uint32_t, std::vector<size_t>> by_value_; // comments by obid
};
