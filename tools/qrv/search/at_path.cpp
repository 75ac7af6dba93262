#include "tools/qrv/search/at_path.h"

#include "qrv/text/read/creadreport.h"
#include "tools/qrv/output/raised.h"

namespace {
constexpr unsigned no_attributes = 0x48000000u; // raised where a path goes into a scalar
}

bool find_at(objref const &top, std::string const &path, objref &value, cMessages &messages) {
    size_t const before = messages.count();
    cRaisedErrors const raised([&](cErr const &error) {
        if (error.code() != no_attributes) messages.error(error.as_string(), error.code());
    });
    cat::ReadReport report;
    value = top->getattrp(path);
    for (cat::ReadError const &error : report.entries())
        messages.error(with_short_path(error.text, path), error.code);
    if (!cObj::is_good(value)) value = nullptr;
    return messages.count() == before;
}

void tell_absent(std::string const &path, cMessages &messages) {
    messages.error("nothing at path '" + shortened(path) + "'");
}
