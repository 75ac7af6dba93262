// Destroying objects. An object's destructor releases what it holds, which may be the last count
// of the next object, and so on: a chain of any length must not eat the stack. Up to max_depth
// destructors nest, in the natural order; whatever is released below that waits in a list that
// the outermost release drains.

#include "qrv/core/cobj.h"

#include <memory>
#include <vector>

namespace {

constexpr int max_depth = 1000;

constinit int depth = 0;
constinit std::vector<cObj *> *waiting = nullptr; // exists only while something waits

struct cDepthStep {
    cDepthStep() noexcept { ++depth; }
    ~cDepthStep() { --depth; }
    cDepthStep(cDepthStep const &) = delete;
    cDepthStep &operator=(cDepthStep const &) = delete;
};

void kill(cObj *target) {
    target->incref(); // a destructor may hand out its object, which must not die of that again
    delete target;    // RE-ENTERS: may add to the list
}

void wait(cObj *target) {
    if (!waiting) waiting = new std::vector<cObj *>;
    waiting->push_back(target);
}

void drain() {
    while (waiting && !waiting->empty()) {
        cObj *const target = waiting->back();
        waiting->pop_back();
        kill(target);
    }
    delete std::exchange(waiting, nullptr);
}

} // namespace

void cRefTraits<cObj>::addref(cObj const *target) noexcept { target->incref(); }

bool cRefTraits<cObj>::release(cObj const *target) noexcept { return target->decref(); }

void cRefTraits<cObj>::destroy(cObj *target) {
    if (depth >= max_depth) return wait(target);
    cDepthStep const step;
    kill(target);
    if (depth == 1) drain();
}
