// Counts how often the matcher compares a character, in builds that count it.

#include "tests/text/scan_support.h"

#include "text/scan/cattrscanner_rules.h"

#include <gtest/gtest.h>

#ifdef QRV_CHECKS
TEST(ScannerWork, compares_each_character_at_most_2_2_times_on_average) {
    std::string text = "{\n";
    for (int i = 0; i < 1000; ++i)
        text += "      key" + std::to_string(i) + "= " + std::to_string(i * 77) + ";\n" +
                "    list= [1, 22, -333, ];\n    word= true;\n    text= \"some words\";\n" +
                "    real= -0.0625;\n";
    text += "}\n";
    std::istringstream in(text);
    test::Scan scan(in);
    scan.return_com(true);
    scan::compared = 0;
    while (scan.gettoken() != tkEof) continue;
    EXPECT_GE(scan::compared, text.size());
    EXPECT_LE(static_cast<double>(scan::compared), 2.2 * static_cast<double>(text.size()));
}
#endif
