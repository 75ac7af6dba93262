// Large trees, in the release build: reading, writing, copying and destroying each take under five
// seconds of processor time, and the process holds no more than 1 GiB meanwhile. A cost that isn't
// linear would take minutes at these sizes.
#include "tests/support/fixture.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/text/cattrscan.h"

#include <malloc.h>

#include <ctime>
#include <fstream>
#include <sstream>
#include <string>

namespace {

constexpr double most_seconds = 5.0;
constexpr long most_kilobytes = 1024 * 1024;

// The most memory that the process has held since the last reset.
long peak_kilobytes() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:")) return std::stol(line.substr(6));
    return -1;
}

void reset_peak() {
    malloc_trim(0); // what earlier tests gave back
    std::ofstream("/proc/self/clear_refs") << "5";
}

class Linear : public QrvTest {
  protected:
    Linear() { reset_peak(); }

    template <class Work> void within_limits(char const *what, Work const &work) {
        std::clock_t const begin = std::clock();
        work();
        double const seconds = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
        EXPECT_LT(seconds, most_seconds) << what;
        long const peak = peak_kilobytes();
        EXPECT_GT(peak, 0) << what;
        EXPECT_LT(peak, most_kilobytes) << what;
        RecordProperty(what, std::to_string(seconds));
    }

    // Reads the text, writes it, compares, copies it and destroys both; `entries` is the size of
    // the outermost container.
    void all_of(std::string const &text, int entries) {
        objref value;
        within_limits("reading", [&] {
            std::istringstream is(text);
            cAttrScan scan(is, false);
            ASSERT_EQ(scan.scan_obj(value, nullptr), 0);
            ASSERT_EQ(scan.errcount(), 0u);
        });
        ASSERT_TRUE(value);
        EXPECT_EQ(static_cast<cMapObj &>(*value).size(), entries);
        within_limits("writing", [&] {
            std::ostringstream os;
            value->writeobj(os);
            EXPECT_TRUE(os.str() == text) << "written otherwise than read";
        });
        objref copy;
        within_limits("copying", [&] { copy = value->clone(); });
        ASSERT_TRUE(copy);
        within_limits("copying all below",
                      [&] { EXPECT_TRUE(static_cast<cMapObj &>(*copy).detach(true)); });
        within_limits("destroying", [&] {
            value = nullptr;
            copy = nullptr;
        });
    }
};

// Entries of a multi-line map or vector, in the writer's layout, at a level.
std::string entries(int count, bool keys, int level) {
    std::string const indent(static_cast<std::size_t>(2 + 4 * level), ' ');
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += indent;
        if (keys) text += "key" + std::to_string(i) + "= ";
        text += std::to_string(i * 7);
        text += keys ? ";\n" : ",\n";
    }
    return text;
}

} // namespace

TEST_F(Linear, a_flat_map_of_160000_keys) {
    all_of("{\n" + entries(160'000, true, 0) + "}", 160'000);
}

TEST_F(Linear, a_vector_of_a_million_ints) {
    all_of("[\n" + entries(1'000'000, false, 0) + "]", 1'000'000);
}

// On one line: indented, the text alone would take most of the memory.
TEST_F(Linear, two_hundred_maps_of_5000_ints_in_each_other) {
    constexpr int depth = 200;
    std::string text;
    for (int level = 0; level < depth; ++level) {
        text += "{";
        for (int i = 0; i < 5'000; ++i)
            text += "key" + std::to_string(i) + "= " + std::to_string(i * 7) + "; ";
        if (level + 1 < depth) text += "next= ";
    }
    for (int level = depth - 1; level > 0; --level) text += "}; ";
    all_of(text + "}", 5'001);
}

TEST_F(Linear, a_map_of_200_maps_of_5000_ints) {
    std::string text = "{\n";
    for (int i = 0; i < 200; ++i)
        text += "  map" + std::to_string(i) + "= {\n" + entries(5'000, true, 1) + "  }; \n";
    all_of(text + "}", 200);
}
