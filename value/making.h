#pragma once
// Creates a value of a declared type from another value, as type::make() describes, or finds every
// rule that prevents it.

#include "qrv/diagnostics/ccaughterrors.h"
#include "qrv/value/declare.h"

#include <string>
#include <utility>
#include <vector>

namespace qrv::edit {
struct BrokenRule;
}

namespace qrv::detail {

// The same number with the wider type `type`; null if the type is not wider.
objref widened(objref const &from, cTypeObj const &type);

class making {
  public:
    // The value, or null if `from` breaks rules. error: any other failure of the library.
    // RUNS USER CODE
    objref make(objref const &from, cTypeObj &type);
    std::vector<broken_rule> broken() && { return std::move(broken_); }

  private:
    struct Step {
        static std::string text(Step const *step); // the path to it

        Step const *outer;
        objref const &key;
    };

    objref of(objref const &from, cTypeObj &type, Step const *step);
    objref attribute_set(objref const &from, cTypeObj &type, Step const *outer);
    objref choice(objref const &from, cTypeObj &type, Step const *step);
    bool attribute(objref &value, cTypeObj &type, Step const &step);
    objref filled(cTypeObj &type, objref const &attributes) const;
    [[noreturn]] void refuse(cTypeObj const &type) const;
    void add(std::vector<edit::BrokenRule> const &rules, Step const *step);

    cat::CaughtErrors caught_;
    std::vector<broken_rule> broken_;
};

} // namespace qrv::detail
