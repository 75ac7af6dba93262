// The table of functions of text/, as it is before the core exists: each function starts the core,
// which replaces the whole table, and calls the new entry.

#include "core/ctext_hooks.h"

#include "qrv/core/ctypes.h"

namespace {

std::string start_as_text(objref const &ref) {
    core_bootstrap();
    return text_hooks.as_text(ref);
}

std::string start_as_string(objref const &ref) {
    core_bootstrap();
    return text_hooks.as_string(ref);
}

bool start_writeobj(cObj const &obj, std::ostream &os) {
    core_bootstrap();
    return text_hooks.writeobj(obj, os);
}

} // namespace

constinit cTextHooks text_hooks{
    .as_text = start_as_text, .as_string = start_as_string, .writeobj = start_writeobj};
