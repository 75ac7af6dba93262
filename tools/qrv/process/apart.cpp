#include "tools/qrv/process/apart.h"

#include "qrv/core/ctypescope.h"
#include "tools/qrv/output/no_memory.h"
#include "tools/qrv/output/thrown.h"
#include "tools/qrv/process/modules.h"

cReply apart(std::string const &name, std::function<void(cReply &)> const &work) {
    cWorkOn const about(name);
    if (modules_are_loaded()) return in_worker(name, work);
    try {
        cat::TypeScope const types;
        cReply reply;
        work(reply);
        return reply;
    } catch (...) {
        return failed(name, "the work failed: " + thrown());
    }
}
