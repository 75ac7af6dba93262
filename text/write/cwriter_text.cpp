// Converts objects to strings. This is done for keys and paths very often, so scalars are written
// without a stream.

#include "qrv/text/write/cwriter.h"

#include "qrv/core/cattrhash.h"
#include "qrv/core/cobjd.h"
#include "text/state/ctext_state.h"
#include "text/write/cscalar_text.h"
#include "text/write/cwriter_exact.h"
#include "text/write/cwriter_parts.h"
#include "text/write/cwriter_stream.h"

namespace {
// Like writeobj, with a fast path for scalars.
void append_object(std::string &out, cObj const &obj) {
    if (exact_text() && !exact_writable(obj)) return report_unwritable();
    if (cat::find_const(&obj)) {
        cTextStream os(out);
        obj.write_constname(os);
        return;
    }
    bool const wrapped = !obj.typeflags_of(tf_bare);
    if (wrapped) out.append(obj.type().name()).append(1, '(');
    if (!append_scalar(out, obj)) {
        cTextStream os(out);
        cComposer composer(os);
        if (!stack_ends(composer)) write_value(obj, composer); // RUNS USER CODE
    }
    if (wrapped) out += ')';
}
} // namespace

std::string cat::as_text(objref const &ref) {
    std::string text;
    if (ref) append_object(text, *ref);
    return text;
}

std::string cat::as_string(objref const &ref) {
    if (!ref) return {};
    if (std::string const *const text = string_of(*ref)) return *text;
    return as_text(ref);
}

std::string path_text(objref const &key, bool exact) {
    cTextForm const form(exact);
    return cat::as_text(key);
}
