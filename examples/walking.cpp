// Iterating over entries, values and whole trees, and removing entries in the loop.
#include "qrv/value.h"

#include <iostream>

namespace {
// Prints each scalar below a value with its path.
void print(qrv::value const &v, std::string const &path) {
    if (!v.is_container()) {
        std::cout << path << " = " << v << '\n';
        return;
    }
    for (auto const &[key, item] : v.items()) print(item, path + "/" + key.get<std::string>());
}
} // namespace

int main() {
    cat::use_console();

    qrv::value stock = qrv::map{{"bolt", 12}, {"nut", 0}, {"washer", 40}};
    for (auto const &[part, count] : stock.items()) std::cout << part << ' ' << count << '\n';

    // The loop may remove the current entry.
    for (auto const &[part, count] : stock.items())
        if (count == 0) stock.erase(part);
    std::cout << stock << '\n';

    // Only the values.
    int sum = 0;
    for (qrv::value const &count : stock) sum += count.get<int>();
    std::cout << sum << '\n';

    // A range shares its container, so the container may be a temporary.
    for (qrv::value const &word : qrv::parse("[one, two]")) std::cout << word << '\n';

    print(qrv::parse("{ a= {b= 1; c= x; }; d= y; }"), "");
}
