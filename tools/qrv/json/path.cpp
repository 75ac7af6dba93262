#include "tools/qrv/json/path.h"

#include "qrv/core/cobjd.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tools/qrv/output/messages.h"

std::string at_path(cJsonPath const &path) {
    if (path.empty()) return "";
    cat::ExactText const exact;
    std::string text;
    for (objref const &key : path) {
        if (!text.empty()) text += '/';
        text += cat::as_text(key);
    }
    return ", at path '" + shortened(text) + "'";
}
