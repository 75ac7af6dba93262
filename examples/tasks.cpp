// What most programs do: reading with all errors, values with defaults, changes, iterating,
// building, writing. Usage: tasks FILE NEW_FILE
#include "qrv/value.h"

#include <iostream>

int main(int argc, char **argv) {
    cat::use_console();
    if (argc != 3) return 2;
    std::vector<cat::ReadError> errors;
    qrv::value device = qrv::load(argv[1], errors);
    for (cat::ReadError const &error : errors) std::cout << cat::format(error) << '\n';

    double const high = device.get_or("limits/temperature/high", 100.0);
    int const baud = device.get_or("bus/baud", 0);
    std::optional<std::string> const name = device.get<std::string>("name");
    std::cout << name.value_or("no name") << ": " << high << ", " << baud << '\n';

    device["bus"]["baud"] = 9600;
    device["bus"]["gateway"]["name"] = "rack"; // creates the level
    device["supply"]["phases"].push_back("N");
    device.erase("bus/retries");

    for (auto const &[key, item] : device["limits"].items())
        std::cout << key << ": " << item << '\n';

    qrv::map const plan{{"title", "Cold start"},
                        {"runs", 3},
                        {"range", qrv::map{{"low", -40.0}, {"high", 85.0}}},
                        {"steps", qrv::vector{"cool down", "wait", "switch on"}}};

    qrv::save(device, argv[2]);
    std::cout << plan << '\n';
}
