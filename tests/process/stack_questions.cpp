// The stack's base is above everything that a program has on it, from before main to its deepest
// frames, on the library as programs load it.

#include "process.h"
#include "qrv/util/cutil.h"

#include <memory>
#include <thread>

namespace {

int static_number = 0;

// Asked while the program's static objects are made, ahead of main.
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

// Of a thread of its own nothing is on the loading thread's stack; asked from there the answers are
// worth nothing, but the base is the same.
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
    CHECK(cIsOnStack(argv)); // what the system put there for main
    CHECK(!cIsOnStack(&static_number));
    CHECK(!cIsOnStack(&of_main));
    CHECK(!cIsOnStack(allocated.get()));
    CHECK(!cIsOnStack(nullptr));
    CHECK(found(2000, &local) == 2000);
    check_other_thread();
    return failures != 0;
}
