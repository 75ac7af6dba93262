// One object inside a larger text: the name of a constant, or the type's name around its `write`.
//
// Every nesting of values passes here, so here the stack is asked for. Where it ends the stream is
// set to its fail state: nothing more comes out, and whoever wrote to a file learns that the text
// is no good. Exact text refuses here what isn't refused by its container already.

#include "qrv/core/cobj.h"

#include "qrv/base/platform/cstack.h"
#include "qrv/core/cattrhash.h"
#include "qrv/core/ctypes.h"
#include "qrv/diagnostics/ctrace.h"
#include "qrv/text/write/cwriter.h"
#include "text/write/cwriter_exact.h"
#include "text/write/cwriter_parts.h"

#include <ostream>

bool cObj::write_constname(std::ostream &os) const {
    cAttrNode const *const constant = cat::find_const(this);
    if (!constant) return false;
    os << '#' << constant->key_as_string();
    return true;
}

bool cObj::is_writable() const {
    cVoidFunction const method = type().method(mid_write);
    if (method && method != reinterpret_cast<cVoidFunction>(cat::write_voiddata)) return true;
    return cat::find_const(this) != nullptr;
}

bool cObj::writeobj(std::ostream &os) const {
    if (exact_text() && !exact_writable(*this)) {
        report_unwritable();
        return false;
    }
    return write_form(*this, os);
}

bool stack_ends(std::ostream &os) {
    if (!cat::stack_low()) return false;
    bool const first = !os.fail();
    os.setstate(std::ios_base::failbit);
    if (first) report_too_deep();
    return true;
}

bool write_form(cObj const &obj, std::ostream &os) {
    if (stack_ends(os)) return false;
    if (obj.write_constname(os)) return true;
    bool const wrapped = !obj.typeflags_of(tf_bare);
    if (wrapped) os << obj.type().name() << '(';
    bool const result = obj.write(os); // RUNS FOREIGN CODE
    if (wrapped) os << ')' << std::flush;
    return result;
}

cTracer &cTracer::write_object(cObj const *object) {
    return each([object](std::ostream &os) {
        if (object) object->writeobj(os); // RE-ENTERS
    });
}
