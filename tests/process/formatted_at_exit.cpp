// Numbers with a format in static objects: the first one creates the type, they are used while
// static objects are destroyed, and some outlive the library's core or are stored where only its
// tear-down finds them. No sanitizer reports anything.

#include "process.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/write/cwriter.h"
#include "qrv/util/cintvalf.h"

namespace {

objref early = make<cIntValF>(31, cIntFormat::fmtHEX); // destroyed last, without being used then
int number = 8;
cIntRefF view(number, cIntFormat::fmtOct); // destroyed late, too

struct cUser {
    cUser() { cat::nil(); } // the core is destroyed after this object
    cUser(cUser const &) = delete;
    cUser &operator=(cUser const &) = delete;
    ~cUser() {
        CHECK(cat::as_text(value) == "intf(0x1F)");
        CHECK(value->assign(cat::of("b101")));
        objref more;
        CHECK(cObj::readobj("[intf(017)]", more) == 0 && more);
        CHECK(cat::as_text(value->clone()) == "intf(b 0000 0101)");
        cat::type_hash_ptr()->delitem("intf");
        CHECK(cat::as_text(make<cIntValF>(8, cIntFormat::fmtOct)) == "intf(010)");
        value = nullptr;
        if (failures != 0) _exit(1);
    }
    objref value;
};

} // namespace

int main() {
    CHECK(&early->type() == &cat::find_type("intf"));
    static cUser user;
    early->set_omember("note", make<cIntValF>(1));
    cat::type_intf().set_omember("kept", make<cIntValF>(2));
    cat::type_intf().set_tmember("own", make<cIntValF>(3));
    cat::type_int().set_omember("kept", make<cIntValF>(4));
    cat::typemap().set_omember("kept", early->clone());
    user.value = make<cIntValF>(*static_cast<cIntValF *>(early.get()));
    return failures != 0;
}
