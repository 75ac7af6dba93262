// Changing: what is replaced, what is changed in place, and who sees it.
#include "qrv/value.h"

#include <iostream>

int main() {
    cat::use_console();

    qrv::value site = qrv::parse("{ name= Lindenau; hosts= [alpha, beta]; }");

    site["name"] = "Plagwitz";        // replaces
    site["rack"]["unit"] = 12;        // creates the map rack
    site.set("rack/power/feed", "A"); // the same by a path
    site["hosts"].push_back("gamma");
    site.at("hosts").insert(0, "gate");
    site.erase("hosts/1"); // alpha; the others move down
    site["rack"].rename("unit", "height");
    std::cout << site << '\n';

    // Copies share. clone() returns a separate copy.
    qrv::value const same = site;
    qrv::value const own = site.clone();
    site["name"] = "Connewitz";
    std::cout << same["name"] << ' ' << own["name"] << '\n';

    // Assigning to a variable replaces what the variable refers to, so nobody else sees it.
    // assign() changes the object itself.
    qrv::value height = site.at("rack/height");
    height = 13;
    std::cout << site.at("rack/height") << '\n';
    height = site.at("rack/height");
    height.assign(14);
    std::cout << site.at("rack/height") << '\n';

    // Containers with the same key are merged, other values are added or replaced.
    site.merge(qrv::parse("{ rack= {row= 3; }; hosts= [delta]; }"));
    std::cout << site.at("rack/row") << ' ' << site["hosts"] << '\n';
}
