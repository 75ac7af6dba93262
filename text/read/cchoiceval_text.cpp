// The text of choices: that of a value is its key, that of a type its choices.

#include "qrv/containers/cchoiceval.h"

#include "qrv/core/cobjd.h"
#include "qrv/text/read/cattrscan.h"
#include "text/read/creader_session.h"
#include "text/state/cstream_of.h"

#include <ostream>

bool cTomChoiceVal::m_write(cObj &obj, objref &stream) {
    std::ostream *const os = out_of(stream);
    auto const *const value = dynamic_cast<cChoiceVal const *>(&obj);
    if (!os || !value) return false;
    objref const key = value->key();
    if (key) key->writeobj(*os); // RUNS FOREIGN CODE
    return true;
}

bool cTomChoiceVal::m_read(cObj &obj, objref &stream) {
    std::istream *const is = in_of(stream);
    auto *const value = dynamic_cast<cChoiceVal *>(&obj);
    if (!is || !value) return false;
    objref const keep = objref::share(&obj);
    objref key;
    int const result = cObj::readobj(*is, key); // RUNS FOREIGN CODE
    if (result == -1) {
        value->set_undefined();
        return true;
    }
    return result == 0 && key->type().hash_hook() && value->setkey(key);
}

bool cTomChoice::m_write(cObj &type, objref &stream) {
    std::ostream *const os = out_of(stream);
    auto const *const choice = dynamic_cast<cTypeObj const *>(&type);
    if (!os || !choice) return false;
    objref const choices = choice->tmember(std::string("choices"));
    (cObj::is_void(choices) ? cat::nil() : choices)->writeobj(*os); // RUNS FOREIGN CODE
    os->flush();
    return true;
}

// The session lives until the choices stand in the type, so that a text can't make a type hold
// itself.
bool cTomChoice::m_read(cObj &type, objref &stream) {
    std::istream *const is = in_of(stream);
    if (!is || !type.is_type()) return false;
    objref const keep = objref::share(&type);
    cAttrScan scan(*is, false);
    cReading const reading(scan);
    objref choices;
    if (cObj::readobj(*is, choices) != 0) return false;     // RUNS FOREIGN CODE
    type.setattr(own_key(std::string("choices")), choices); // RUNS FOREIGN CODE
    return true;
}
