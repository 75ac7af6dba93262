// When this module is loaded, it creates the file "loaded" in the working folder. So other
// processes see that it was loaded.
#include "tests/modules/shared/module.h"

#include <fstream>
#include <stdexcept>

namespace {
bool leave() { return static_cast<bool>(std::ofstream("loaded") << "it ran\n"); }
bool const left = leave();
} // namespace

QRV_SET_UP {
    if (!left) throw std::runtime_error("no file could be left");
}
