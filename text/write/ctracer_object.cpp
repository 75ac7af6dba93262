// Tracing an object: its written form, on every stream of the channel.

#include "qrv/core/cobj.h"
#include "qrv/diagnostics/ctrace.h"

cTracer &cTracer::write_object(cObj const *object) {
    return each([object](std::ostream &os) {
        if (object) object->writeobj(os); // RE-ENTERS
    });
}
