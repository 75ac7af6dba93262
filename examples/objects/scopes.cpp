// Reads two texts that declare different types of one name, each in a scope.
#include "qrv/qrv.h"

#include <iostream>
#include <string>
#include <vector>

int main() {
    cat::use_console(); // shows what std::cout prints; the library redirects it
    std::vector<std::string> const texts{"{Mode= choice({off= 0; on= 1; }); valve= Mode(on); }",
                                         "{Mode= choice({slow= 1; fast= 2; }); fan= Mode(fast); }"};
    std::vector<objref> results;
    for (std::string const &text : texts) {
        cat::TypeScope const types; // its end removes the types that the text declares
        cObj::readobj(text.c_str(), results.emplace_back());
    }
    for (objref const &result : results) std::cout << cat::as_text(result) << '\n';
    bool const exists = cat::typemap().datamap().find("Mode");
    std::cout << "Mode " << (exists ? "exists" : "does not exist any more") << '\n';
}
