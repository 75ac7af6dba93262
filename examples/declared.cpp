// Types: rules for values, declared by the program or by a file.
#include "qrv/value.h"

#include <iostream>

int main() {
    cat::use_console();

    qrv::declare_choice("Mode", {"off", "slow", "fast"});
    qrv::type const axis = qrv::declare("Axis")
                               .required<std::string>("name")
                               .with_default("limit", 10)
                               .choice("mode", "Mode", "off");

    qrv::value x = axis.make(qrv::map{{"name", "X"}, {"mode", "slow"}});
    std::cout << x << '\n';

    // A choice is set, read and compared by its key.
    x["mode"] = "fast";
    std::cout << x["mode"].get<std::string>() << ' ' << (x["mode"] == "off") << '\n';

    // A value that the type refuses changes nothing.
    try {
        x["limit"] = "high";
    } catch (qrv::type_error const &error) {
        std::cout << error.what() << '\n';
    }
    std::cout << x["limit"] << '\n';

    // All rules that a value breaks, as data.
    qrv::value const draft = qrv::map{{"limit", 2.5}, {"mode", "warp"}};
    for (qrv::broken_rule const &broken : qrv::broken_rules(draft, axis))
        std::cout << broken.path << ": " << broken.message << '\n';
    std::cout << draft.conforms_to(axis) << '\n';

    // Text may use the type from now on.
    std::cout << qrv::parse("Axis(name= Y;)")["limit"] << '\n';
}
