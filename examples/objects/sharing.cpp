// Reads a value, changes a part that two places share, and writes it.
#include "qrv/qrv.h"

#include <iostream>

int main() {
    cat::use_console(); // shows what std::cout prints; the library redirects it
    objref pump;
    cObj::readobj("{name= P1; limits= {low= 2; high= 8; }; spare= #cRef(/limits); }", pump);

    (*pump)["limits"]["high"] = cat::of(9);   // by key
    pump->setattrp("spare/unit = bar", true); // by path: spare and limits are one map
    std::cout << cat::as_text(pump->getattrp("spare/high")) << '\n';
    std::cout << cat::as_text(pump) << '\n';
}
