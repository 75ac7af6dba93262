// Files whose characters a program's codecvt converts: the reader reads the converted characters,
// and the codecvt, which is user code, runs with all entries in the table of paths.

#include "qrv/text/file/cfile.h"
#include "qrv/text/read/cattrscan.h"
#include "tests/support/fixture.h"
#include "tests/text/read_support.h"
#include "text/state/ctext_state.h"

#include <filesystem>
#include <fstream>
#include <locale>
#include <unistd.h>

namespace {

unsigned conversions = 0;
bool seen_late = false;

// 'a' becomes 'b', and 'b' becomes 'a'.
struct cSwap : std::codecvt<char, char, std::mbstate_t> {
    result do_in(std::mbstate_t &, char const *from, char const *end, char const *&next, char *to,
                 char *to_end, char *&to_next) const override {
        ++conversions;
        seen_late = seen_late || text_state().is_late();
        for (; from != end && to != to_end; ++from, ++to)
            *to = *from == 'a' ? 'b' : *from == 'b' ? 'a' : *from;
        next = from;
        to_next = to;
        return from == end ? ok : partial;
    }
    bool do_always_noconv() const noexcept override { return false; }
};

std::locale swapping() { return std::locale(std::locale::classic(), new cSwap); }

class cGlobalLocale {
  public:
    explicit cGlobalLocale(std::locale const &now) : before_(std::locale::global(now)) {}
    cGlobalLocale(cGlobalLocale const &) = delete;
    cGlobalLocale &operator=(cGlobalLocale const &) = delete;
    ~cGlobalLocale() { std::locale::global(before_); }

  private:
    std::locale before_;
};

// A file larger than a file buffer, so that conversion also happens while entries are read.
class ReaderConversion : public QrvTest {
  protected:
    ReaderConversion()
        : name_((std::filesystem::temp_directory_path() /
                 ("qrv_conversion_" + std::to_string(::getpid())))
                    .string()) {
        std::ofstream file(name_, std::ios::binary);
        file << "{ a={x=5; rest=[";
        for (int i = 0; i < 20000; ++i) file << i << ";";
        file << "]}; c=#cRef(/a/x); end='a b' }";
        conversions = 0;
        seen_late = false;
    }
    ~ReaderConversion() override { std::filesystem::remove(name_); }

    static void expect_swapped(objref const &tree) {
        EXPECT_EQ(reader_test::written(tree->getattrp("b/x")), "5");
        EXPECT_EQ(reader_test::written(tree->getattrp("c")), "5");
        EXPECT_EQ(reader_test::written(tree->getattrp("end")), "\"b a\"");
        EXPECT_GT(conversions, 2u);
        EXPECT_FALSE(seen_late);
    }

    objref read(std::ifstream &is) const {
        objref tree;
        cAttrScan scan(is, false);
        EXPECT_TRUE(scan.openfile(name_.c_str(), false));
        EXPECT_EQ(scan.scan_obj(tree, nullptr), 0);
        EXPECT_EQ(scan.errcount(), 0u);
        return tree;
    }

    std::string const name_;
};

TEST_F(ReaderConversion, the_conversion_of_the_streams_locale_is_applied) {
    std::ifstream is;
    is.imbue(swapping());
    expect_swapped(read(is));
}

TEST_F(ReaderConversion, the_conversion_of_the_global_locale_is_applied_to_a_new_stream) {
    cGlobalLocale const global(swapping());
    std::ifstream is;
    expect_swapped(read(is));
}

TEST_F(ReaderConversion, is_not_applied_to_a_file_that_the_library_opens) {
    cGlobalLocale const global(swapping());
    objref tree;
    EXPECT_TRUE(file2obj(name_.c_str(), tree));
    EXPECT_EQ(reader_test::written(tree->getattrp("a/x")), "5");
    EXPECT_EQ(cat::file2string(name_.c_str()).substr(0, 10), "{ a={x=5; ");
    EXPECT_EQ(conversions, 0u);
}

} // namespace
