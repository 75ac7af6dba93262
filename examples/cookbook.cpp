// The tasks of docs/cookbook.md. Usage: cookbook [TASK]; without one all are run.
#include "qrv/value.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>

namespace {
char const *const lamp_text = R"({ // in the hall
  name   = "Desk lamp";
  watts  = 7;          // 9 is too bright
  colour = [ 255, 214, 170 ];
  timer  = { on = 18; off = 23; };
})";

qrv::value lamp() { return qrv::parse(lamp_text); }

void write_lamp() { std::ofstream("lamp.attr") << lamp_text << '\n'; }

void print_file(char const *name) { std::cout << std::ifstream(name).rdbuf(); }

void read_a_file() {
    qrv::value const v = qrv::load("lamp.attr");
    std::cout << v["name"] << '\n';
}

void read_text() {
    qrv::value const v = qrv::parse("{ a= 1; b= [x, y]; }");
    std::cout << v.at("b/1") << '\n';
}

void list_all_errors() {
    std::vector<cat::ReadError> errors;
    qrv::value const v = qrv::parse("{ a= 1 b= 2; c= 3ms; }", errors);
    for (cat::ReadError const &error : errors) std::cout << cat::format(error) << '\n';
}

void stop_at_errors() {
    try {
        qrv::parse("{ a= 1; ");
    } catch (qrv::parse_error const &error) {
        std::cout << error.what() << '\n';
    }
}

void value_with_default() {
    int const dimmer = lamp().get_or("timer/dimmer", 100);
    std::cout << dimmer << '\n';
}

void optional_value() {
    std::optional<std::string> const owner = lamp().get<std::string>("owner");
    std::cout << (owner ? *owner : "nobody") << '\n';
}

void required_value() {
    int const watts = lamp().at("watts").get<int>(); // throws if it is absent or not an int
    std::cout << watts << '\n';
}

void ask_for_the_kind() {
    for (auto const &[key, item] : lamp().items())
        if (item.is_container()) std::cout << key << " has " << item.size() << " entries\n";
}

void key_with_a_slash() {
    qrv::value const mime = qrv::map{{"text/html", "utf-8"}};
    std::cout << mime["text/html"] << ' ' << mime.at(qrv::path_of("text/html")) << '\n';
}

void integer_keys() {
    qrv::value names;
    names[404] = "not found";
    std::cout << names.at("404") << ' ' << names.contains(404) << '\n';
}

void replace_a_value() {
    qrv::value v = lamp();
    v["watts"] = 8;
    std::cout << v.at("watts") << '\n';
}

void create_levels() {
    qrv::value v;
    v["net"]["hosts"]["alpha"]["port"] = 80;
    std::cout << v.at("net/hosts") << '\n';
}

void remove_an_entry() {
    qrv::value v = lamp();
    std::cout << v.erase("timer/off") << ' ' << v.erase("timer/off") << ' ' << v["timer"] << '\n';
}

void append_and_insert() {
    qrv::value list = qrv::vector{"b", "d"};
    list.push_back("e");
    list.insert(1, "c");
    std::cout << list << '\n';
}

void rename_a_key() {
    qrv::value v = lamp();
    v["timer"].rename("on", "start"); // the order stays
    std::cout << v["timer"] << '\n';
}

void merge_defaults() {
    qrv::value settings = qrv::parse("{ port= 80; log= {level= 1; }; }"); // defaults
    settings.merge(qrv::parse("{ log= {level= 3; }; }"));
    std::cout << settings.at("log/level") << ' ' << settings["port"] << '\n';
}

void copy_a_value() {
    qrv::value const v = lamp();
    qrv::value copy = v.clone(); // `= v` would share
    copy["watts"] = 1;
    std::cout << v.at("watts") << ' ' << copy.at("watts") << '\n';
}

void remove_while_walking() {
    qrv::value stock = qrv::map{{"bolt", 12}, {"nut", 0}, {"washer", 0}};
    for (auto const &[part, count] : stock.items())
        if (count == 0) stock.erase(part);
    std::cout << stock << '\n';
}

void find_in_a_vector() {
    qrv::value const colours = qrv::vector{"red", "green"};
    auto const found = std::find(colours.begin(), colours.end(), "green");
    std::cout << (found != colours.end()) << '\n';
}

void sort_a_vector() {
    auto words = qrv::vector{"pear", "apple", "fig"}.get<std::vector<std::string>>();
    std::sort(words.begin(), words.end());
    std::cout << qrv::value(words) << '\n';
}

void standard_map() {
    auto const timer = lamp().at("timer").get<std::map<std::string, int>>();
    std::cout << timer.at("off") << '\n';
}

void build_a_tree() {
    qrv::map const v{{"title", "Cold start"}, {"limits", qrv::map{{"low", -40}, {"high", 85}}}};
    std::cout << v << '\n';
}

void unique_items() {
    qrv::set tags{"new", "cheap", "new"};
    std::cout << tags << ' ' << tags.push_back("cheap") << ' ' << tags.contains_item("new") << '\n';
}

void edit_a_file() {
    auto document = qrv::document::load("lamp.attr");
    document["watts"] = 8;
    document.save(); // comments and layout stay
    print_file("lamp.attr");
}

void write_a_file() {
    qrv::save(qrv::map{{"a", 1}, {"b", 2.5}}, "new.attr");
    print_file("new.attr");
}

void one_line() { std::cout << qrv::dump(lamp(), {.one_line = true}) << '\n'; }

void comments() {
    qrv::value v = lamp();
    std::cout << v["watts"].comment() << '\n';
    v["watts"].set_comment("7 is enough");
    std::cout << v.at("watts").comment() << '\n';
}

void position_of_a_value() {
    auto const document = qrv::document::load("lamp.attr");
    auto const place = document.position_of("timer/off");
    std::cout << place->line << ':' << place->column << '\n';
}

void save_a_comment() {
    auto document = qrv::document::load("lamp.attr");
    document["name"].set_comment("as on the box");
    document.save();
    print_file("lamp.attr");
}

struct Fan {
    int speed = 3;
    std::string mode = "auto";
};
QRV_DESCRIBE(Fan, speed, mode)

void defaults_for_a_struct() {
    qrv::value v = Fan(); // an entry for each member, with its default
    v.merge(qrv::parse("{ mode= night; }"));
    Fan const fan = v.get<Fan>();
    std::cout << fan.speed << ' ' << fan.mode << '\n';
}

void list_the_keys() {
    for (qrv::value const &key : lamp().keys()) std::cout << key << ' ';
    std::cout << '\n';
}

void shared_parts() {
    qrv::value v = qrv::parse("{ a= {n= 1; }; b= #cRef(/a); }");
    v["a"]["n"] = 2;
    std::cout << v.at("b/n") << ' ' << v.at("a").is_shared_with(v.at("b")) << '\n';
}

void compare_values() {
    qrv::value const a = qrv::parse("[1, {x= y; }]"), b = qrv::parse("[1, {x= y; }]");
    std::cout << (a == b) << ' ' << (a.at("0") == 1) << ' ' << (a.at("0") < 2) << '\n';
}

struct Task {
    char const *name;
    void (*run)();
};
#define TASK(name) {#name, &name},
Task const tasks[] = {
    TASK(read_a_file) TASK(read_text) TASK(list_all_errors) TASK(stop_at_errors)
        TASK(value_with_default) TASK(optional_value) TASK(required_value) TASK(ask_for_the_kind)
            TASK(key_with_a_slash) TASK(integer_keys) TASK(replace_a_value) TASK(create_levels)
                TASK(remove_an_entry) TASK(append_and_insert) TASK(rename_a_key)
                    TASK(merge_defaults) TASK(copy_a_value) TASK(remove_while_walking)
                        TASK(find_in_a_vector) TASK(sort_a_vector) TASK(standard_map)
                            TASK(build_a_tree) TASK(unique_items) TASK(edit_a_file)
                                TASK(write_a_file) TASK(one_line) TASK(comments)
                                    TASK(position_of_a_value) TASK(save_a_comment)
                                        TASK(defaults_for_a_struct) TASK(list_the_keys)
                                            TASK(shared_parts) TASK(compare_values)};
} // namespace

int main(int argc, char **argv) {
    cat::use_console();
    // In the project's folder, the files are written to its build folder.
    if (std::filesystem::is_directory("build")) std::filesystem::current_path("build");
    for (Task const &task : tasks) {
        if (argc > 1 && std::string_view(argv[1]) != task.name) continue;
        if (argc == 1) std::cout << "--- " << task.name << '\n';
        write_lamp();
        task.run();
    }
}
