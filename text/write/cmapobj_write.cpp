// The standard method `write` of the containers: bracket, comment, entries, bracket.

#include "qrv/containers/cmapobj.h"

#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "text/state/cstream_of.h"
#include "text/write/cwriter_exact.h"
#include "text/write/cwriter_parts.h"

#include <optional>
#include <ostream>

namespace {
bool write_container(cObj &obj, objref const &stream, char const *brackets, cTypeObj const &type) {
    std::ostream *const os = out_of(stream);
    auto const *const map = dynamic_cast<cMapObj const *>(&obj);
    if (!os || !map) return false;
    objref const keep = objref::share(&obj); // a `write` below may drop it
    hashref const entries = map->datamap_ref();
    char const format = *cat::wformat(obj);
    *os << brackets[0];
    if (format == 'w') put_comment(*os, obj);
    write_entries(*entries, *os, format, &type, &obj);
    *os << brackets[1] << std::flush;
    return true;
}

bool write_bare(hashref const &hash, cObj &obj, objref const &stream) {
    std::ostream *const os = out_of(stream);
    if (!os) return false;
    objref const keep = objref::share(&obj);
    bool const whole = !hash || write_entries(*hash, *os, *cat::wformat(obj), nullptr, &obj);
    os->flush();
    return whole;
}
} // namespace

bool cTomMap::m_write(cObj &obj, objref &stream) {
    return write_container(obj, stream, "{}", cat::type_map());
}

bool cTomVector::m_write(cObj &obj, objref &stream) {
    return write_container(obj, stream, "[]", cat::type_vector());
}

bool cTomSet::m_write(cObj &obj, objref &stream) {
    return write_container(obj, stream, "<>", cat::type_set());
}

bool cTomMap::m_write0(cObj &obj, objref &stream) {
    auto const *const map = dynamic_cast<cMapObj const *>(&obj);
    return map && write_bare(hashref(map->datamap_ref()), obj, stream);
}

bool cTomOmmap::m_write(cObj &obj, objref &stream) {
    return write_bare(hashref(obj.ommap_ref()), obj, stream);
}
