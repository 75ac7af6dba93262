// A module with a static object in an inline function. Because of this object g++ would by default
// keep the module in memory; the flag that qrv::module adds prevents that.
#include "qrv/diagnostics/ccout.h"
#include "qrv/modules/cmodule.h"

namespace {
struct Guest {
    Guest() { cprintf("module: hello\n"); }
    Guest(Guest const &) = delete;
    Guest &operator=(Guest const &) = delete;
    ~Guest() { cprintf("module: bye\n"); }
};
} // namespace

struct Host {
    static int &visits() {
        static int count = 0;
        return count;
    }
};

extern "C" QRV_API void quorvantaSetup() {
    static Guest guest;
    cprintf("module: visit %d\n", ++Host::visits());
}
