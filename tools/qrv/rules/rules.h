#pragma once
// Which rule of a declared type a value breaks, told where the offending entry stands. The reader
// says only that a value of the type can't be read; and then the same again for the value's type
// and its key. So:
//   - each broken rule of an attribute set is a message of its own, with the place of the entry (of
//     the object where one is missing), path, key and the place of the declaration
//   - what the reader says of such a value as a whole is left out
//   - so is what follows from an error inside: an attribute is not missing whose value is there and
//     was told to be wrong, and a declaration with an error inside is just none
//   - so is what follows at each object from an error in its type's declaration
//   - unknown names of types, keys and choices come with the closest one that is known
//   - no value is lost without an error: an error about a value is dropped only if another error is
//     at the value, inside it, or in its type's declaration; else the reader's text is reported
// Beyond a report's limit errors are counted and nothing is made up for them.

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
