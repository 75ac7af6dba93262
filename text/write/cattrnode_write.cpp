// One entry on its own.

#include "qrv/core/cattrhash.h"

#include <ostream>

bool cAttrNode::write(std::ostream &os) const {
    os << key_as_string() << '=';
    value().writeobj(os); // RUNS FOREIGN CODE
    os << "; ";
    return os.good();
}
