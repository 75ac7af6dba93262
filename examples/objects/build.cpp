// Builds a tree of maps, a vector and a set, saves it, and shows the file.
#include "qrv/containers/cattr.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/diagnostics/cconsole.h"
#include "qrv/text/file/cfile.h"

#include <iostream>

namespace {
// A map that is written on one line.
objref range(double low, double high) {
    objref const map = make<cMapObj>();
    (*map)["low"] = cat::of(low);
    (*map)["high"] = cat::of(high);
    map->set_omember("wformat", cat::of("s"));
    return map;
}
} // namespace

int main() {
    sig_idle();
    cConsoleDisplay display;

    // make<T> returns the first handle; the tree shares the values that are stored in it.
    objref const plan = make<cMapObj>();
    (*plan)["title"] = cat::of("Cold start");
    (*plan)["runs"] = cat::of(3);
    (*plan)["runs"]->set_comment(" // one a day", true);

    // One object under two keys: the file preserves that, and reading it creates one object again.
    (*plan)["start"] = range(-40, 85);
    (*plan)["stop"] = (*plan)["start"];

    objref const steps = make<cVectorObj>();
    for (char const *step : {"cool down", "wait", "switch on"}) steps->append(cat::of(step));
    (*plan)["steps"] = steps;

    // A set stores equal values once.
    objref const testers = make<cSetObj>();
    for (char const *name : {"Ada", "Grace", "Ada"}) testers->append(cat::of(name));
    (*plan)["testers"] = testers;

    if (!write2file(*plan, "plan.attr", true)) return 1;
    std::cout << cat::file2string("plan.attr") << '\n';
    return 0;
}
