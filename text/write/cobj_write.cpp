// One object inside larger text: the name of a constant, or the type's name around its `write`.
//
// All nested values pass here, so the stack is checked here. If it is exhausted, the stream is set
// to its fail state: no further output follows, and a caller that writes a file learns that the
// text is invalid. Exact text rejects here the objects that their containers have not rejected
// already.

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
    cComposer out(os);
    return write_constant(*this, out);
}

bool write_constant(cObj const &obj, cComposer &out) {
    cAttrNode const *const constant = cat::find_const(&obj);
    if (!constant) return false;
    out.put('#');
    if (std::string const *const name = string_of(*constant->key())) {
        out.put(*name);
    } else {
        cUserCode const user(out);
        out.stream() << constant->key_as_string();
    }
    return true;
}

bool cObj::is_writable() const {
    cVoidFunction const method = type().method(mid_write);
    if (method && method != reinterpret_cast<cVoidFunction>(cat::write_voiddata)) return true;
    return cat::find_const(this) != nullptr;
}

bool cObj::writeobj(std::ostream &os) const {
    cComposer out(os);
    return write_object(*this, out);
}

bool write_object(cObj const &obj, cComposer &out, bool lone) {
    if (exact_text() && !exact_writable(obj)) {
        cUserCode const user(out);
        report_unwritable();
        return false;
    }
    return write_form(obj, out, lone);
}

bool stack_ends(cComposer &out) {
    if (!cat::stack_low()) return false;
    cUserCode const user(out);
    bool const first = !out.stream().fail();
    out.stream().setstate(std::ios_base::failbit);
    if (first) report_too_deep();
    return true;
}

bool write_form(cObj const &obj, cComposer &out, bool lone) {
    if (stack_ends(out)) return false;
    if (!lone && write_constant(obj, out)) return true;
    bool const wrapped = !obj.typeflags_of(tf_bare);
    if (wrapped) {
        out.put(obj.type().name());
        out.put('(');
    }
    bool const result = write_value(obj, out);
    if (wrapped) {
        out.put(')');
        out.flush();
    }
    return result;
}

bool write_value(cObj const &obj, cComposer &out) {
    cForm const form = form_of(obj);
    if (is_scalar(form)) return write_scalar(obj, form, out);
    if (is_container(form)) return write_container(obj, form, out);
    cUserCode const user(out);
    return obj.write(out.stream()); // RUNS USER CODE
}

cTracer &cTracer::write_object(cObj const *object) {
    return each([object](std::ostream &os) {
        if (object) object->writeobj(os); // RE-ENTERS
    });
}
