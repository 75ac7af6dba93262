#pragma once
// A global locale, of C++ and of C, that groups digits and writes a decimal comma.

#include <clocale>
#include <locale>
#include <string>

namespace test {

struct cHostilePunctuation : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
    std::string do_truename() const override { return "wahr"; }
};

class cHostileLocale {
  public:
    cHostileLocale()
        : before_(std::locale::global(std::locale(std::locale(), new cHostilePunctuation))) {
        std::setlocale(LC_ALL, "de_DE.UTF-8"); // if it is installed
    }
    cHostileLocale(cHostileLocale const &) = delete;
    cHostileLocale &operator=(cHostileLocale const &) = delete;
    ~cHostileLocale() {
        std::locale::global(before_);
        std::setlocale(LC_ALL, "C");
    }

  private:
    std::locale before_;
};

} // namespace test
