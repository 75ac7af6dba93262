#include "diagnostics/cerr_names.h"

#include "diagnostics/cerrline.h"

#include <ostream>

std::ostream &operator<<(std::ostream &os, cNamed const &named) {
    auto *const error = cat::error_lines_are_taken() ? dynamic_cast<cErrStream *>(&os) : nullptr;
    if (error) error->set_name(named.role, std::string(named.text));
    return named.said ? os << named.text : os;
}
