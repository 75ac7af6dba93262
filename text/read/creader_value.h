#pragma once
// The reader of one value: cAttrScan::scan_obj, and the parts of it that the reader of entries
// calls directly.

#include "qrv/text/read/cattrscan.h"
#include "text/read/creader_errors.h"
#include "text/read/creader_session.h"
#include "text/read/csource_recorder.h"

// The object for the text of a token from tkInt to tkIdent; false if it doesn't fit its type.
bool literal_value(int token, std::string_view text, objref &result);

// The steps of one scan_obj. value and end belong to the caller: after an exception they hold what
// is known.
class cValueReader {
  public:
    cValueReader(cAttrScan &scan, objref &value, int &end)
        : scan_(scan), value_(value), end_(end) {}
    cValueReader(cValueReader const &) = delete;
    cValueReader &operator=(cValueReader const &) = delete;
    ~cValueReader() = default;

    static bool ends_container(int token) {
        return token == '}' || token == ']' || token == '>' || token == tkEof;
    }
    // Whether this token can follow a value.
    static bool ends_value(int token) {
        return cat::is_separator(token) || token == '=' || ends_container(token);
    }

    // Runs these steps with everything that belongs to a value: nesting, session, exceptions.
    int run(int (cValueReader::*steps)());
    int read();
    // A literal that began there was read, and also the current token, which doesn't end it.
    static int finish_literal(cAttrScan &scan, objref &value, int &end, cReadSession::cPlace place);
    // The current token opens a container.
    static int finish_container(cAttrScan &scan, objref &value, int &end);

  private:
    int next_token();
    int read_constant();
    int read_reference();
    int read_literal();
    int read_unended();
    int read_word();
    int read_typed(cAttrLiteral const &bracket);
    int read_bracket();
    int read_opened();
    int read_container();
    int read_own_container(cTypeObj &type);
    int read_text(cAttrLiteral const &bracket, std::string const &name);
    bool read_enclosed(std::istream &is, cEnclosedText &enclosed);
    int skip_typed(cat::Brackets const &brackets, int result);
    bool instantiate(cTypeObj const &type);
    bool unmade(cErrText const &error, cTypeObj const &type);
    bool report_depth(int limit);
    bool too_deep();
    bool too_deep_typed();
    template <class... Parts> void report(cErrText const &error, Parts const &...parts);
    int unread_container();
    void expect_end(cErrText const &missing);

    cAttrScan &scan_;
    objref &value_;
    int &end_;
    cat::cSourceRecorder *source_ = nullptr; // null: nothing is recorded
    cAttrLiteral first_;                     // the first token, the subject of errors
};
