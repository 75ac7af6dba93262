// Large inputs, in the release build: reading, writing, copying and destroying a tree, and removing
// white space, each take under five seconds of processor time, and the process never uses 1 GiB of
// memory. At these sizes, work that grows faster than the size would take minutes.
#include "tests/support/fixture.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csetobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/file/cfile.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"

#include <malloc.h>

#include <ctime>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr double most_seconds = 5.0;
constexpr long most_kilobytes = 1024 * 1024;

// Resets the peak memory that the kernel records to the present memory.
void begin_memory_peak() {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << 5;
}

long memory_peak() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        long kilobytes = 0;
        if (word == "VmHWM:" && status >> kilobytes) return kilobytes;
    }
    return most_kilobytes; // fails the test if the kernel records no peak
}

// Compares the written text with the expected one, and stores nothing.
class cComparingBuffer : public std::streambuf {
  public:
    explicit cComparingBuffer(std::string const &expected) : expected_(expected) {}
    bool same() const { return same_ && at_ == expected_.size(); }

  protected:
    int overflow(int c) override {
        char const character = static_cast<char>(c);
        return xsputn(&character, 1) == 1 ? c : EOF;
    }
    std::streamsize xsputn(char const *text, std::streamsize size) override {
        auto const count = static_cast<std::size_t>(size);
        same_ = same_ && expected_.compare(at_, count, text, count) == 0;
        at_ += count;
        return size;
    }

  private:
    std::string const &expected_;
    std::size_t at_ = 0;
    bool same_ = true;
};

class Linear : public QrvTest {
  protected:
    static void expect_within_limits(char const *what, std::function<void()> const &work) {
        begin_memory_peak();
        std::clock_t const begin = std::clock();
        work();
        double const seconds = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
        EXPECT_LT(seconds, most_seconds) << what;
        EXPECT_LT(memory_peak(), most_kilobytes) << what;
    }

    // Reads the text, writes the tree, which must give the same text, copies the tree, and destroys
    // both. `size` is the size of the outermost container.
    static void expect_all_within_limits(std::string const &text, int size) {
        objref value;
        expect_within_limits("reading", [&] {
            std::istringstream is(text);
            cAttrScan scan(is, false);
            ASSERT_EQ(scan.scan_obj(value, nullptr), 0);
            ASSERT_EQ(scan.errcount(), 0u);
        });
        ASSERT_TRUE(cObj::is_good(value));
        EXPECT_EQ(static_cast<cMapObj &>(*value).size(), size);
        expect_within_limits("writing", [&] {
            cComparingBuffer buffer(text);
            std::ostream os(&buffer);
            value->writeobj(os);
            EXPECT_TRUE(buffer.same()) << "the text written is not the text read";
        });
        objref copy;
        expect_within_limits("copying", [&] { copy = value->clone(); });
        ASSERT_TRUE(cObj::is_good(copy));
        expect_within_limits("copying all values",
                             [&] { EXPECT_TRUE(static_cast<cMapObj &>(*copy).detach(true)); });
        expect_within_limits("destroying", [&] {
            value = nullptr;
            copy = nullptr;
        });
    }
};

// Entries of a multi-line map or vector in the writer's layout, indented by this many blanks.
std::string entries(int count, bool keys, int blanks) {
    std::string const indent(static_cast<std::size_t>(blanks), ' ');
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += indent;
        if (keys) text += "key" + std::to_string(i) + "= ";
        text += std::to_string(i * 7) + (keys ? ";\n" : ",\n");
    }
    return text;
}

} // namespace

TEST_F(Linear, a_flat_map_of_160000_keys_stays_within_the_limits) {
    expect_all_within_limits("{\n" + entries(160'000, true, 2) + "}", 160'000);
}

TEST_F(Linear, a_vector_of_a_million_ints_stays_within_the_limits) {
    expect_all_within_limits("[\n" + entries(1'000'000, false, 2) + "]", 1'000'000);
}

// Without indentation, which would add 400 MB of blanks at this depth.
TEST_F(Linear, maps_of_5000_ints_nested_200_deep_stay_within_the_limits) {
    constexpr int depth = 200;
    cat::write_indent = cat::write_indent0 = 0;
    std::string text = "{\n";
    for (int level = 1; level < depth; ++level) text += entries(5'000, true, 0) + "next= {\n";
    text += entries(5'000, true, 0);
    for (int level = 1; level < depth; ++level) text += "}; \n";
    expect_all_within_limits(text + "}", 5'001);
}

TEST_F(Linear, a_map_of_200_maps_of_5000_ints_stays_within_the_limits) {
    std::string text = "{\n";
    for (int i = 0; i < 200; ++i)
        text += "  map" + std::to_string(i) + "= {\n" + entries(5'000, true, 6) + "  }; \n";
    expect_all_within_limits(text + "}", 200);
}

TEST_F(Linear, a_hundred_thousand_sets_with_an_index_stay_within_the_limits) {
    std::vector<cRef<cSetObj>> sets(100'000);
    expect_within_limits("appending", [&] {
        for (cRef<cSetObj> &set : sets) {
            set = make<cSetObj>();
            for (int i = 0; i < 10; ++i) ASSERT_TRUE(set->append(cat::of(i)));
        }
    });
    expect_within_limits("destroying", [&] { sets.clear(); });
}

TEST_F(Linear, removing_white_space_from_megabytes_stays_within_the_limits) {
    std::string const blanks(5'000'000, ' ');
    std::string left = blanks + "a", right = "a" + blanks, mixed;
    for (int i = 0; i < 2'000'000; ++i) mixed += "a  ";
    std::string without = mixed;
    expect_within_limits("removing white space", [&] {
        cat::wsp_rmleft(left);
        cat::wsp_rmright(right);
        cat::wsp_normalize(mixed);
        cat::rmchar(without, ' ');
    });
    EXPECT_EQ(left, "a");
    EXPECT_EQ(right, "a");
    EXPECT_EQ(mixed.size(), 3'999'999U);
    EXPECT_EQ(without.size(), 2'000'000U);
}
