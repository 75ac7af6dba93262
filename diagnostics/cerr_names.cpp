#include "diagnostics/cerr_names.h"

#include "qrv/diagnostics/ccaughterrors.h"

#include <ostream>

std::ostream &operator<<(std::ostream &os, cNamed const &named) {
    auto *const error = cat::ErrorTaker::any() ? dynamic_cast<cErrStream *>(&os) : nullptr;
    if (error) error->set_name(named.role, std::string(named.text));
    return named.said ? os << named.text : os;
}
