#pragma once
// Reports which rule of a declared type a value breaks, at the position of the offending entry. The
// reader reports only that it cannot read a value of the type, and then the same for the value's
// type and its key. So:
//   - each broken rule of an attribute set is a separate message, with the position of the entry
//     (of the object if the entry is missing), path, key and the position of the declaration
//   - errors of the reader about such a value as a whole are dropped
//   - errors that follow from an error inside are dropped: an attribute with a wrong value is not
//     missing, and a declaration with an error inside counts as absent
//   - errors at objects that follow from an error in their type's declaration are dropped
//   - the message about an unknown type, key or choice suggests the closest known name
//   - no value is lost without an error: an error about a value is dropped only if another error is
//     at the value, inside it, or in its type's declaration
// Beyond a report's limit errors are only counted, and no messages are composed.

#include "qrv/text/read/creadreport.h"
#include "tools/qrv/rules/source.h"

#include <map>
#include <set>

class cRules : public cat::ReadWatch {
  public:
    // Borrows both, and changes errors of the report until it is destroyed. `path` is the path of
    // the outermost value, such as "/a".
    cRules(std::string const &bytes, cat::ReadReport &report, std::string path = "");
    cRules(cRules const &) = delete;
    cRules &operator=(cRules const &) = delete;
    ~cRules() override;

    // Call when reading has ended at `end`: reports the text before that the reader silently
    // ignored.
    void report_ignored(cPlace end);
    // Call after all other errors: reports dropped errors that do not follow from any of them.
    void report_unexplained();

    cTextTokens const &tokens() { return source_.tokens(); }

    void invalid(cObj &object) override;
    void typed_token(cToken const &token) override { source_.tokens().add_typed(token); }
    bool error(cat::ReadError &error) override;

  private:
    bool explain(cat::ReadError &error);
    bool is_reported(cat::ReadError const &error) const;
    bool report_failed(cat::ReadError &error, std::string const &type);
    bool report_unknown_type(cat::ReadError &error, std::string const &name);
    void report_other_metatype(cat::ReadError &error);
    void report_unknown_type_of_key(cat::ReadError &error);
    std::string no_formatted_number(cPlace place) const;
    std::string unknown_choice(cat::ReadError const &error, cTypeObj const &type);
    bool has_error_inside(cPlace value) const;
    void leave_out(cat::ReadError error);

    cSource source_;
    cat::ReadReport &report_;
    std::string const path_;
    objref invalid_; // the invalid object that the next error is about
    cPlace reported_{0,
                     0}; // the value here has an error, so errors about it as a whole are dropped
    std::set<cPlace> mistaken_; // positions of errors
    struct cUnexplained {
        std::string type;
        cat::ReadError error;
    };
    std::vector<cUnexplained> unexplained_;  // dropped without an error at the value or inside it
    std::map<std::string, size_t> left_out_; // number of these by type
};
