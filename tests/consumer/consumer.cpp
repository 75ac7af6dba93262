// A program that uses an installed library: objects, text, an error that crosses the library
// boundary as an exception, and a module from the working folder that is loaded and unloaded.
#include "qrv/qrv.h"

#include <iostream>

int main() {
    sig_idle();
    cConsoleDisplay display;

    std::cout << QRV_VERSION_TEXT << '\n';

    objref plan;
    cObj::readobj("{ runs= 3; steps= [1, 2.5, \"go on\"]; }", plan);
    (*plan)["runs"] = cat::of(4);
    std::cout << cat::as_text(plan->getattrp("runs")) << ' '
              << cat::as_text(plan->getattrp("steps")) << '\n';

    cat::errhandler().silent_mask(0xFFFFFFFF);
    cat::errhandler().throw_mask(0xFFFFFFFF);
    try {
        plan->setflags(of_const_keys);
        (*plan)["colour"] = cat::of("grey");
    } catch (cErr const &error) {
        std::cout << "caught: " << error.as_string() << '\n';
    }

    for (int i = 0; i < 2; ++i) {
        cModule *const module = cModule::load("greeting");
        if (!module) std::cout << cModule::last_error();
        std::cout << (cModule::unload(module) ? "unloaded" : "still there") << '\n';
    }
    return 0;
}
