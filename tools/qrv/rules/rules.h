#pragma once
// Reports which rule of a declared type a value breaks, at the position of the offending entry. The
// reader reports only that it cannot read a value of the type, and then the same for the value's
// type and its key. So:
//   - each broken rule of an attribute set is a separate message, with the position of the entry
//     (of the object if the entry is missing), path, key and the position of the declaration
//   - errors of the reader about such a value as a whole are left out
//   - so are errors that follow from an error inside: an attribute with a wrong value is not
//     missing, and a declaration with an error inside counts as absent
//   - so are errors at each object that follow from an error in its type's declaration
//   - the message about an unknown type, key or choice suggests the closest known name
//   - no value is lost without an error: an error about a value is dropped only if another error is
//     at the value, inside it, or in its type's declaration; else the reader's text is reported
// Beyond a report's limit errors are only counted, and no messages are composed.

#include "qrv/text/read/creadreport.h"
#include "tools/qrv/rules/source.h"

#include <map>
#include <set>

class cRules : public cat::ReadWatch {
  public:
    // Both are borrowed; the report is watched as long as this lives. The path is that of the
    // outermost value, such as "/a".
    cRules(std::string const &bytes, cat::ReadReport &report, std::string path = "");
    cRules(cRules const &) = delete;
    cRules &operator=(cRules const &) = delete;
    ~cRules() override;

    // When reading has ended there: what was passed over before without a word.
    void tell_unheard(cPlace end);
    // After all other errors: reports the dropped errors that follow from none of them.
    void tell_unexplained();

    cTextTokens const &tokens() { return source_.tokens(); }

    void invalid(cObj &object) override;
    void typed_token(cToken const &token) override { source_.tokens().add_typed(token); }
    bool error(cat::ReadError &error) override;

  private:
    bool tell(cat::ReadError &error);
    bool is_told(cat::ReadError const &error) const;
    bool tell_failed(cat::ReadError &error, std::string const &type);
    bool tell_unknown_type(cat::ReadError &error, std::string const &name);
    void tell_other_metatype(cat::ReadError &error);
    void tell_unknown_type_of_key(cat::ReadError &error);
    std::string no_formatted_number(cPlace place) const;
    std::string unknown_choice(cat::ReadError const &error, cTypeObj const &type);
    bool has_error_inside(cPlace value) const;
    void leave_out(cat::ReadError error);

    cSource source_;
    cat::ReadReport &report_;
    std::string const path_;
    objref invalid_;            // the next error says so
    cPlace told_{0, 0};         // what is said of the value there as a whole is left out
    std::set<cPlace> mistaken_; // where errors are
    struct cUnexplained {
        std::string type;
        cat::ReadError error;
    };
    std::vector<cUnexplained> unexplained_;  // no error is at the value or inside it
    std::map<std::string, size_t> left_out_; // number of these by type
};
