// Values of choice types. A value stores the address and the id of the container with its choices,
// which belongs to the type; a new container at an old address has another id. The value's base
// class holds the hash of that container.
//
// Reading the choices runs user code, which may change them again and update this value meanwhile.
// So each later step first tests whether it is still needed.

#include "qrv/containers/cchoiceval.h"

#include "containers/cmergebudget.h"
#include "qrv/core/cobjd.h"

cChoiceVal::cChoiceVal(cTypeObj *type, bool follow)
    : cIterObj(type ? type : &cat::type_nil()), held_(typeref::share(&this->type())) {
    create();
    update();
    setpos(0);
    if (follow) this->follow(*held_, "updatefromtype");
}

cChoiceVal::cChoiceVal(cChoiceVal const &other)
    : cIterObj(&other.type()), held_(typeref::share(&other.type())) {
    create();
    update();
    setkey(objref(other.key()));
}

cChoiceVal::cChoiceVal(std::string const &type_name, char const *key)
    : cIterObj(&cat::find_type(type_name)), held_(typeref::share(&type())) {
    create();
    update();
    if (key)
        setkey(own_key(std::string(key)));
    else
        setpos(0);
}

cChoiceVal::~cChoiceVal() = default;

cChoiceVal &cChoiceVal::operator=(cChoiceVal const &other) {
    assign(other);
    return *this;
}

cChoiceVal &cChoiceVal::operator=(cObj const &other) {
    assign(other);
    return *this;
}

cChoiceVal &cChoiceVal::operator=(std::string const &key) {
    assign(cat::of(key));
    return *this;
}

cChoiceVal &cChoiceVal::operator=(char const *key) {
    if (key) assign(cat::of(key));
    return *this;
}

cChoiceVal &cChoiceVal::operator=(int key) {
    assign(cat::of(key));
    return *this;
}

objref cChoiceVal::type_choices() const {
    objref const choices = type().tmember(std::string("choices"));
    return is_void(choices) ? objref() : choices;
}

bool cChoiceVal::saw(objref const &choices) const {
    return choices.get() == seen_ && (!choices || choices->obid() == seen_id_);
}

objref cChoiceVal::choices() const {
    objref const choices = type_choices();
    return saw(choices) ? choices : objref();
}

void cChoiceVal::go_to(objref const &choices) {
    objref const former = key();
    cat::merge_charge(); // a file can declare the type again after each of its values
    seen_ = choices.get();
    seen_id_ = choices ? choices->obid() : 0;
    cIterObj const first = choices ? choices->begin() : cIterObj(); // RUNS USER CODE
    if (!saw(choices)) return;                                      // replaced by user code
    take(first);
    if (is_good(former))
        setkey(former); // stays at the first one if this fails. RUNS USER CODE
    else
        setpos(-1);
}

bool cChoiceVal::update() {
    objref const self = objref::share(this);
    objref const choices = type_choices();
    if (!saw(choices)) go_to(choices);
    return cIterObj::update();
} // RE-ENTERS: self
