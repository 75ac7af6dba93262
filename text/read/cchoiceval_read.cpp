// Reading choices: a value from its key, a type from its choices.

#include "qrv/containers/cchoiceval.h"

#include "qrv/core/cobjd.h"
#include "qrv/text/read/cattrscan.h"
#include "text/read/creader_session.h"
#include "text/state/cstream_of.h"

#include <istream>

bool cTomChoiceVal::m_read(cObj &obj, objref &stream) {
    std::istream *const is = in_of(stream);
    auto *const value = dynamic_cast<cChoiceVal *>(&obj);
    if (!is || !value) return false;
    objref const keep = objref::share(&obj);
    objref key;
    int const result = cObj::readobj(*is, key); // RUNS USER CODE
    if (result == -1) {
        value->set_undefined();
        return true;
    }
    return result == 0 && key->type().hash_hook() && value->setkey(key);
}

// The session lives until the choices are stored in the type, so that text can't make a type
// contain itself.
bool cTomChoice::m_read(cObj &type, objref &stream) {
    std::istream *const is = in_of(stream);
    if (!is || !type.is_type()) return false;
    objref const keep = objref::share(&type);
    cAttrScan scan(*is, false);
    cReading const reading(scan);
    objref choices;
    if (cObj::readobj(*is, choices) != 0) return false;     // RUNS USER CODE
    type.setattr(own_key(std::string("choices")), choices); // RUNS USER CODE
    return true;
}
