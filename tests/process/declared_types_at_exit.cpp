// Declared types and their values in static objects: they are written and read while static objects
// are destroyed, and are destroyed later without a report of a sanitizer.

#include "process.h"
#include "qrv/containers/cchoiceval.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"

#include <sstream>

namespace {

char const *const text =
    "{ C= choice({a= 1; b= 2; }); v= C(b); "
    "T= attlist(x= attspec(type= C; flag= #IMPLIED); y= attspec(default= [1])); "
    "p= T(x= C(a)); s= attspec(type= choice({q= 1; })); w= #cRef(/v); }";

objref read(char const *source) {
    std::istringstream is(source);
    objref value;
    cObj::readobj(is, value);
    return value;
}

std::string written(objref const &value, char const *path) {
    return cat::as_text(value->getattrp(path));
}

objref early; // destroyed last: only held
typeref type_of_early;

// Uses its value in its destructor, and removes the types there.
struct cUser {
    cUser() { cat::nil(); } // the core is destroyed after this object
    cUser(cUser const &) = delete;
    cUser &operator=(cUser const &) = delete;
    ~cUser() {
        CHECK(written(value, "p") == "T(\n  x= C(a);\n  y= [1, ];\n)");
        CHECK(written(value, "v") == "C(b)");
        objref const more = read("{ C= choice({b= 3; }); z= T(x= C(b)); }");
        CHECK(written(more, "z/x") == "C(b)");
        CHECK(written(value, "p/x") ==
              "C(b)"); // it has the replaced choice, since its own was replaced
        for (char const *name : {"C", "T"}) cat::type_hash_ptr()->delitem(name);
        CHECK(written(value, "v") == "C(b)"); // a choice keeps its type
        value = nullptr;
        if (failures != 0) _exit(1);
    }
    objref value;
};

} // namespace

int main() {
    static cUser user;
    user.value = read(text);
    early = user.value->getattrp("v");
    type_of_early = typeref::share(&early->type());
    CHECK(written(user.value, "w") == "C(b)");
    return failures == 0 ? 0 : 1;
}
