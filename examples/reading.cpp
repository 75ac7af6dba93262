// Reading: kinds of values, typed access by key and by path, and the errors.
#include "qrv/value.h"

#include <iostream>

int main() {
    cat::use_console();

    qrv::value const lamp = qrv::parse(R"({
        name= "Desk lamp";  // as on the box
        watts= 7;
        colour= [255, 214, 170];
        timer= {on= 18; off= 23; days= [Mon, Tue]; };
        spare= #nil;
    })");

    // A string in [] is one key; a string given to get, get_or, at or find is a path.
    std::cout << lamp["name"].get<std::string>() << '\n';
    std::cout << lamp.get_or("timer/on", 0) << '\n';
    std::cout << lamp.get_or("timer/days/1", "none") << '\n';
    std::cout << lamp.get_or("timer/lamp", 12.5) << '\n';

    // An absent entry is different from one that holds #nil.
    if (!lamp.find("dimmer")) std::cout << "no dimmer\n";
    if (lamp.at("spare").is_nil()) std::cout << "no spare\n";

    // Copies a container into a standard one.
    for (int const part : lamp["colour"].get<std::vector<int>>()) std::cout << part << ' ';
    std::cout << '\n';

    // An int has 32 bits, in text and in memory. A larger number is a double, which get converts to
    // an integer if it has no fraction.
    qrv::value const disk = qrv::parse("{ used= 2000000000; free= 5.0e9; }");
    std::cout << disk.get_or("free", 0LL) << ' ' << disk.get_or("used", 0U) << '\n';
    try {
        disk.get<int>("free");
    } catch (qrv::range_error const &error) {
        std::cout << error.what() << '\n';
    }
    try {
        qrv::value const total = 7'000'000'000;
    } catch (qrv::range_error const &error) {
        std::cout << error.what() << '\n';
    }

    // Each failure is an exception that names the path and the reason.
    try {
        lamp.at("timer/days").get<int>();
    } catch (qrv::type_error const &error) {
        std::cout << error.what() << '\n';
    }
    try {
        lamp.get<int>("name");
    } catch (qrv::type_error const &error) {
        std::cout << error.what() << '\n';
    }
    try {
        lamp.at("timer/of");
    } catch (qrv::path_error const &error) {
        std::cout << error.what() << '\n';
    }
    try {
        lamp.get<std::uint8_t>("watt s");
    } catch (qrv::path_error const &error) {
        std::cout << error.what() << '\n';
    }

    // All errors in the text at once.
    try {
        qrv::parse("{ volume= 3 bass= 4;\n  tone= 12dB; }");
    } catch (qrv::parse_error const &error) {
        std::cout << error.what() << '\n';
        std::cout << error.errors().size() << " errors\n";
    }
}
