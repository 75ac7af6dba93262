#include "tools/qrv/verify/difference.h"

namespace {

// The number of objects, which is the last part of a fingerprint.
size_t objects_in(std::string const &fingerprint) {
    return std::stoul(fingerprint.substr(fingerprint.rfind(':') + 1));
}

} // namespace

std::string what_differs(std::string const &fingerprint, std::string const &again, bool canonical) {
    if (!again.empty() && objects_in(again) > objects_in(fingerprint))
        return "shared values would become copies";
    if (canonical) return "digits, bits or strings would differ";
    return again.empty() ? "it cannot be read"
                         : "types, objects of them or equal values in a set would differ";
}
