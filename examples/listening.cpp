// Changes: a callback for each change of a value, and a signal of the program's own.
#include "qrv/value.h"

#include <iostream>

int main() {
    cat::use_console();

    qrv::value limits = qrv::map{{"low", 2}, {"high", 8}};
    {
        qrv::connection const watch = limits.on_change([](qrv::change const &change) {
            std::cout << change.key.value_or("all") << ": " << change.old_value.value_or("none")
                      << " -> " << change.new_value.value_or("none") << '\n';
        });
        limits["high"] = 9;
        limits["unit"] = "bar";
        limits.erase("low");
        limits.clear();
    }
    limits["high"] = 10; // the connection has ended
    std::cout << limits << '\n';
}
