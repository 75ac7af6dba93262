// Building: maps, vectors and sets, and C++ types that become values.
#include "qrv/value.h"

#include <iostream>
#include <map>

namespace lab {
enum class Mode { off, slow, fast };
QRV_DESCRIBE_ENUM(Mode, off, slow, fast)

struct Axis {
    std::string name;
    Mode mode = Mode::off;
    std::optional<double> limit;
};
QRV_DESCRIBE(Axis, name, mode, limit)
} // namespace lab

int main() {
    cat::use_console();

    qrv::map const plan{{"title", "Cold start"},
                        {"range", qrv::map{{"low", -40.0}, {"high", 85.0}}},
                        {"steps", qrv::vector{"cool down", 3, true}},
                        {"tags", qrv::set{"cold", "short", "cold"}}};
    std::cout << plan << '\n';

    // Standard containers.
    std::map<std::string, std::vector<int>> const ports{{"north", {80, 443}}, {"south", {}}};
    qrv::value const config = ports;
    std::cout << config << '\n';
    std::cout << (config.get<std::map<std::string, std::vector<int>>>() == ports) << '\n';

    // Described structs and enumerations.
    std::vector<lab::Axis> const axes{{"x", lab::Mode::fast, 2.5}, {"y", lab::Mode::off, {}}};
    qrv::value machine;
    machine["axes"] = axes;
    std::cout << machine << '\n';
    machine.set("axes/1/mode", "slow");
    std::cout << (machine.get<lab::Axis>("axes/1")->mode == lab::Mode::slow) << '\n';

    // An error names the part that does not fit.
    machine.set("axes/1/mode", "medium");
    try {
        machine.get<std::vector<lab::Axis>>("axes");
    } catch (qrv::type_error const &error) {
        std::cout << error.what() << '\n';
    }
}
