// Documents: files that people write, edited by a program.
#include "qrv/value.h"

#include <filesystem>
#include <fstream>
#include <iostream>

namespace {
void write(char const *name, char const *text) { std::ofstream(name) << text; }
std::string read(char const *name) {
    std::ifstream file(name);
    return {std::istreambuf_iterator<char>(file), {}};
}
} // namespace

int main() {
    cat::use_console();
    // The folder of the files that are written.
    if (std::filesystem::is_directory("build")) std::filesystem::current_path("build");

    write("lamp.attr", "{ // in the hall\n"
                       "  watts  = 7;      // 9 is too bright\n"
                       "  colour = [ 255, 214, 170 ];\n"
                       "\n"
                       "  timer  = { on = 18; off = 23 }   // hours\n"
                       "}\n");

    auto lamp = qrv::document::load("lamp.attr");
    lamp["watts"] = 8;
    lamp["timer"]["days"] = qrv::vector{"Mon", "Tue"};
    lamp["colour"].push_back(0);
    lamp.save();
    std::cout << read("lamp.attr");

    // Where a value is written.
    if (auto const place = lamp.position_of("timer/off"))
        std::cout << place->line << ':' << place->column << '\n';

    // Another program has changed the file meanwhile.
    write("lamp.attr", "{ watts= 1; }\n");
    lamp["watts"] = 9;
    try {
        lamp.save();
    } catch (qrv::save_conflict const &conflict) {
        std::cout << conflict.what() << '\n';
    }
}
