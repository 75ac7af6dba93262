// The functions that write and read the objects of each kind of type, in one table.

#include "text/read/ctext_methods.h"

#include "core/ctext_hooks.h"
#include "qrv/containers/cattrset.h"
#include "qrv/containers/cchoiceval.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"

namespace {

bool writeobj(cObj const &obj, std::ostream &os) { return obj.writeobj(os); }

constexpr cTextHooks all_hooks{
    .as_text = cat::as_text,
    .as_string = cat::as_string,
    .writeobj = writeobj,
    .voiddata = {cat::write_voiddata, cat::read_voiddata},
    .integer = {cat::write_int, cat::scan_attrset},
    .float_number = {cat::write_float, cat::scan_attrset},
    .double_number = {cat::write_double, cat::scan_attrset},
    .string = {cat::write_string, cat::scan_attrset},
    .boolean = {cat::write_bool, cat::scan_attrset},
    .map = {cTomMap::m_write, cTomMap::m_read},
    .vector = {cTomVector::m_write, cTomVector::m_read},
    .set = {cTomSet::m_write, cTomSet::m_read},
    .attspec = {cTomAttspec::m_write, cTomAttspec::m_read},
    .attlist = {cTomAttlist::m_write, cTomAttlist::m_read},
    .attrset = {cTomMap::m_write0, cTomAttrset::m_read},
    .choice = {cTomChoice::m_write, cTomChoice::m_read},
    .choiceval = {cTomChoiceVal::m_write, cTomChoiceVal::m_read},
};

} // namespace

void cat::install_text() noexcept { text_hooks = all_hooks; }

constinit cProcedure2 cat::read_intf = nullptr;

bool cat::is_read_by_library(cTypeObj const &type) noexcept {
    cVoidFunction const read = type.method(mid_read);
    auto const is_it = [read](cProcedure2 function) {
        return read == reinterpret_cast<cVoidFunction>(function);
    };
    return is_it(scan_attrset) || is_it(cTomAttspec::m_read) || is_it(cTomAttlist::m_read) ||
           is_it(cTomChoice::m_read) || is_it(cTomChoiceVal::m_read) || is_it(read_voiddata) ||
           (read_intf && is_it(read_intf));
}
