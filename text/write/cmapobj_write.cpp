// The standard method `write` of the containers: bracket, comment, entries, bracket.

#include "qrv/containers/cmapobj.h"

#include "containers/as_map.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "text/state/cstream_of.h"
#include "text/write/cwriter_exact.h"
#include "text/write/cwriter_parts.h"

#include <ostream>

bool write_container(cObj const &obj, cForm form, cComposer &out) {
    cMapObj const *const map = cat::as_map(&obj);
    if (!map) return false;
    bool const lone = obj.refs() == 1 && map->datamap().refs() == 1;
    // An entry's method `write` may release the container.
    objref const keep = objref::share(const_cast<cObj *>(&obj));
    hashref const entries = map->datamap_ref();
    out.begin();
    char const format = layout_of(obj, out);
    out.put(form == cForm::map ? '{' : form == cForm::vector ? '[' : '<');
    if (format == 'w') put_comment(out, obj);
    cTypeObj const *const type = form == cForm::map      ? core.map
                                 : form == cForm::vector ? core.vector
                                                         : core.set;
    write_entries(*entries, out, format, type, &obj, lone);
    out.put(form == cForm::map ? '}' : form == cForm::vector ? ']' : '>');
    out.flush();
    return true;
}

namespace {
bool write_with_brackets(cObj const &obj, objref const &stream, cForm form) {
    std::ostream *const os = out_of(stream);
    if (!os) return false;
    cComposer out(*os);
    return write_container(obj, form, out);
}

bool write_bare(hashref const &hash, cObj &obj, objref const &stream) {
    std::ostream *const os = out_of(stream);
    if (!os) return false;
    objref const keep = objref::share(&obj);
    cComposer out(*os);
    out.begin();
    bool const whole = !hash || write_entries(*hash, out, layout_of(obj, out), nullptr, &obj);
    out.flush();
    return whole;
}
} // namespace

bool cTomMap::m_write(cObj &obj, objref &stream) {
    return write_with_brackets(obj, stream, cForm::map);
}

bool cTomVector::m_write(cObj &obj, objref &stream) {
    return write_with_brackets(obj, stream, cForm::vector);
}

bool cTomSet::m_write(cObj &obj, objref &stream) {
    return write_with_brackets(obj, stream, cForm::set);
}

bool cTomMap::m_write0(cObj &obj, objref &stream) {
    auto const *const map = dynamic_cast<cMapObj const *>(&obj);
    return map && write_bare(hashref(map->datamap_ref()), obj, stream);
}

bool cTomOmmap::m_write(cObj &obj, objref &stream) {
    return write_bare(hashref(obj.ommap_ref()), obj, stream);
}
