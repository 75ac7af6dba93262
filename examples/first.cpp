// The program at the top of README.md: changes one line of a file that a person wrote.
// Usage: first FILE NEW_FILE
#include "qrv/value.h"

#include <iostream>

int main(int argc, char **argv) {
    cat::use_console(); // shows what std::cout prints; the library redirects it
    if (argc != 3) return 2;
    auto device = qrv::document::load(argv[1]);

    std::cout << "high: " << device.get_or("limits/temperature/high", 100.0) << '\n';
    device["bus"]["baud"] = 9600; // in the file, only this line changes
    for (auto const &[key, item] : device.at("bus/telegram").items())
        std::cout << key << " = " << item << '\n';
    device.save_as(argv[2]);
}
