#include "qrv/util/cutil.h"

#include "qrv/base/platform/cstack.h"
#include "qrv/cvers.h"
#include "util/cutil_state.h"

namespace {

// Null until the first call of cGetStackBase(). In a program that links the library statically,
// static code may call that before the start-up does.
constinit void const *base = nullptr;

// An array, since callers get a pointer to non-const characters.
constinit char version_text[] = QRV_VERSION_TEXT;

std::uintptr_t number(void const *address) { return reinterpret_cast<std::uintptr_t>(address); }

} // namespace

void const *cGetStackBase() {
    if (!base) base = cat::stack_end();
    return base;
}

// The frame's own address: a sanitizer may put a local variable on the heap, and a compiler may
// return null instead of its address.
void const *cGetStackAddress() { return __builtin_frame_address(0); }

bool cIsOnStack(void const *p) {
    return cat::stack_holds(number(p), number(__builtin_frame_address(0)), number(cGetStackBase()));
}

char *cversionstring() { return version_text; }
