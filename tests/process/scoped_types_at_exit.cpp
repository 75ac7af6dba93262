// Static objects hold objects of types whose scope has ended. A destructor uses such objects while
// static objects are destroyed, and others are released after it.

#include "process.h"
#include "qrv/containers/cchoiceval.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypescope.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"

#include <optional>

namespace {

char const *const text = "{ C= choice({a= 1; b= 2; }); N= attlist(x= attspec(default= 1)); "
                         "N= attlist(n= attspec(type= N; flag= #IMPLIED); x= attspec(default= 1)); "
                         "v= C(b); p= N(n= N(x= 2)); }";

objref early, early_choice; // destroyed after the static objects of main()

// Uses its value in its destructor, where another scope begins and ends.
struct cUser {
    cUser() { cat::nil(); } // starts the core, so that it is torn down after this object
    cUser(cUser const &) = delete;
    cUser &operator=(cUser const &) = delete;
    ~cUser() {
        cat::TypeScope const inner;
        objref more;
        CHECK(cObj::readobj("{ C= choice({c= 3; }); v= C(c); }", more) == 0);
        CHECK(cat::as_text(more->getattrp("v")) == "C(c)");
        CHECK(cat::as_text(value->getattrp("v")) == "C(b)");
        CHECK(cat::as_text(value->getattrp("p/n/x")) == "2");
        value = nullptr;
        if (failures != 0) _exit(1);
    }
    objref value;
};

} // namespace

int main() {
    static cUser user;
    static std::optional<cat::TypeScope> open; // this scope ends while static objects are destroyed
    {
        cat::TypeScope const scope;
        CHECK(cObj::readobj(text, user.value) == 0);
        early = user.value->getattrp("p");
        early_choice = user.value->getattrp("v");
    }
    open.emplace();
    objref last;
    CHECK(cObj::readobj("{ Open= choice({a= 1; }); v= Open(a); }", last) == 0);
    CHECK(&cat::find_type("C") == &cat::type_nil());
    return failures;
}
