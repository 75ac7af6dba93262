#pragma once
// Reports the rules of its type that an attribute set breaks, as errors at its entries.

#include "qrv/core/ctypeobj.h"
#include "qrv/edit/crules.h"
#include "qrv/text/read/creadreport.h"
#include "tools/qrv/rules/source.h"

#include <set>

class cBrokenRules {
  public:
    // Borrows all: the object as it was read, the error about the whole object, the positions of
    // known errors, and the report that gets the new ones.
    cBrokenRules(cObj &object, cat::ReadError const &error, cSource &source,
                 std::set<cPlace> const &mistaken, cat::ReadReport &report);
    cBrokenRules(cBrokenRules const &) = delete;
    cBrokenRules &operator=(cBrokenRules const &) = delete;
    ~cBrokenRules() = default;

    void report_all(); // in the order of the file   O(the object's text)

  private:
    void report(qrv::edit::BrokenRule const &broken);
    void report_undeclared(objref const &key);
    void report_void(objref const &key);
    void report_type(qrv::edit::BrokenRule const &broken);
    void report_fixed(qrv::edit::BrokenRule const &broken);
    cSource::cEntry const *entry_of(objref const &key) const;
    bool is_mistaken(objref const &key) const;
    bool has_wrong_default(objref const &key) const;
    void add(cPlace place, objref const &key, std::string const &text,
             std::string const &hint = "");

    cObj &object_;
    cTypeObj &type_;
    cat::ReadError const &error_;
    cPlace const place_; // the position of the object
    cSource &source_;
    std::set<cPlace> const &mistaken_;
    cat::ReadReport &report_;
    std::vector<cSource::cEntry> entries_;
    std::unordered_map<std::string, size_t> by_key_;
    std::vector<cat::ReadError> found_;
    size_t counted_ = 0;      // errors beyond the limit
    bool unreadable_ = false; // an error has said that no object of the type can be read
};

bool has_room(cat::ReadReport const &report); // for one more error
cTypeObj const *
known_type(std::string const &name); // the registered type; null if it does not exist

// Parts of messages: ", declared at 3:5" or "", "; did you mean 'x'?" or "".
std::string declared_at(std::optional<cPlace> place);
std::string known_types(std::string const &unknown);
std::string known_keys(cTypeObj const &type, char const *member, std::string const &unknown);
