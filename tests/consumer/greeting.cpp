// A module. Because of the static object in an inline function, g++ would by default keep the
// module in memory.
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
