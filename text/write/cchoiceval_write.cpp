// The text of choices: a value's text is its key, a type's text is its choices.

#include "qrv/containers/cchoiceval.h"

#include "text/state/cstream_of.h"

#include <ostream>

bool cTomChoiceVal::m_write(cObj &obj, objref &stream) {
    std::ostream *const os = out_of(stream);
    auto const *const value = dynamic_cast<cChoiceVal const *>(&obj);
    if (!os || !value) return false;
    objref const key = value->key();
    if (key) key->writeobj(*os); // RUNS USER CODE
    return true;
}

bool cTomChoice::m_write(cObj &type, objref &stream) {
    std::ostream *const os = out_of(stream);
    auto const *const choice = dynamic_cast<cTypeObj const *>(&type);
    if (!os || !choice) return false;
    objref const choices = choice->tmember(std::string("choices"));
    (cObj::is_void(choices) ? cat::nil() : choices)->writeobj(*os); // RUNS USER CODE
    os->flush();
    return true;
}
