// The stack's base is above all local variables of a program, from before main to its deepest
// frames, with the shared library.

#include "process.h"
#include "qrv/util/cutil.h"

#include <memory>
#include <thread>

namespace {

int static_number = 0;

// Called while the program's static objects are created, before main.
struct cEarly {
    cEarly() : local_found(ask()) {}
    static bool ask() {
        int local = 0;
        return cIsOnStack(&local) && !cIsOnStack(&static_number);
    }
    bool local_found;
} const early;

void const *const early_base = cGetStackBase();

__attribute__((noinline)) int found(int depth, void const *of_main) {
    char volatile block[256];
    block[0] = static_cast<char>(depth);
    int const here = cIsOnStack(const_cast<char const *>(block)) && cIsOnStack(of_main) ? 1 : 0;
    return here + (depth > 1 ? found(depth - 1, of_main) : 0);
}

// No variable of another thread is on the loading thread's stack. Results of calls from there are
// meaningless, but the base is the same.
void check_other_thread() {
    void const *base = nullptr;
    std::thread([&base] { base = cGetStackBase(); }).join();
    CHECK(base == early_base);
}

} // namespace

int main(int, char **argv) {
    int local = 0;
    auto const allocated = std::make_unique<int>(1);
    static int of_main = 0;
    CHECK(early.local_found);
    CHECK(cGetStackBase() == early_base);
    CHECK(cIsOnStack(&local));
    CHECK(cIsOnStack(&argv));
    CHECK(cIsOnStack(argv)); // the system put them there before main
    CHECK(!cIsOnStack(&static_number));
    CHECK(!cIsOnStack(&of_main));
    CHECK(!cIsOnStack(allocated.get()));
    CHECK(!cIsOnStack(nullptr));
    CHECK(found(2000, &local) == 2000);
    check_other_thread();
    return failures != 0;
}
