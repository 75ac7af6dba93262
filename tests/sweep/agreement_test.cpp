// Makes the same edit with and without --reformat, in generated files: both results must read as
// equal trees. QRV_EDITS sets the number of files.

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/core/ctypescope.h"
#include "qrv/edit/cfingerprint.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tests/edit/generated_text.h"
#include "tests/support/fixture.h"
#include "tests/support/sanitized.h"
#include "tests/sweep/in_process.h"
#include "tools/qrv/process/apart.h"
#include "tools/qrv/reading/reading.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace {

using sweep_test::cRun, sweep_test::run;
using test::Random;

unsigned number_of_files() {
    char const *const given = std::getenv("QRV_EDITS");
    return given ? static_cast<unsigned>(std::atoi(given)) : test::sanitized ? 50 : 150;
}

// The fingerprint of the tree that the text reads as; empty if the text has errors.
std::string fingerprint_of(std::string const &text) {
    cReply const reply = apart("", [&](cReply &r) {
        cMessages ignored("", 1);
        cReading const reading = read_value(text, ignored);
        if (reading.clean) r.fingerprint = qrv::edit::fingerprint(reading.value);
    });
    return reply.fingerprint;
}

// Draws random commands with paths of a tree. The commands may succeed or fail.
class Commands {
  public:
    Commands(Random &random, std::string const &text) : random_(random) {
        cat::TypeScope const types;
        cMessages ignored("", 1);
        cReading const reading = read_value(text, ignored);
        if (reading.clean) walk("", reading.value);
    }

    bool has_paths() const { return !paths_.empty(); }

    std::vector<std::string> next() {
        switch (random_.below(7)) {
        case 0:
            return {"del", "@", path()};
        case 1:
            return {"mv", "@", path(), random_.one_in(2) ? path() : beside(path())};
        case 2:
            return random_.one_in(3)
                       ? std::vector<std::string>{"ins", "@", path(), "before", value()}
                       : std::vector<std::string>{"ins", "@", path(), "after", "inserted", value()};
        case 3:
            return {"set", "@", beside(path()) + " = " + value()};
        case 4:
            return {"set", "@", path() + " << " + value()};
        case 5:
            return {"set", "@", path() + " += " + value()};
        }
        static constexpr char const *const operators[] = {" = ", " &= "};
        std::string text = path() + random_.of(operators) + value();
        while (random_.one_in(3)) text += "; " + path() + random_.of(operators) + value();
        return {"set", "@", text};
    }

  private:
    void walk(std::string const &path, objref const &value) {
        if (!path.empty()) paths_.push_back(path);
        auto const *const map = dynamic_cast<cMapObj const *>(value.get());
        if (!map || value->is_type()) return;
        cat::ExactText const exact;
        cAttrHash const &hash = map->datamap();
        for (cAttrNode const *node = hash.first(); node; node = hash.next(node))
            walk(path + (path.empty() ? "" : "/") + cat::as_text(node->key()), node->valref());
    }

    std::string path() { return paths_[random_.below(paths_.size())]; }
    // Another key in the container of a path, or in the container at it.
    std::string beside(std::string path) {
        static constexpr char const *const keys[] = {"new", "x", "0", "'two words'", "k/l"};
        if (random_.one_in(2)) return path + '/' + random_.of(keys);
        size_t const slash = path.rfind('/');
        return (slash == path.npos ? "" : path.substr(0, slash + 1)) + random_.of(keys);
    }
    std::string value() {
        static constexpr char const *const values[] = {
            "7",         "-1.5", "text",      "\"two words\"", "true", "{n=1; m=[1,2]}", "{}",
            "[]",        "#nil", "<p, q>",    "[1]",           "255",  "0.75f",          "0",
            "intf(0x2)", "1",    "\"1\"",     "[{a=1}]",       "<{}>", "{x= {y= 1}}",    "1e30",
            "Mode(on)",  "P()",  "P(n = 17)", "P(list= [3])"};
        return random_.of(values);
    }

    Random &random_;
    std::vector<std::string> paths_;
};

class Agreement : public testing::Test {
  protected:
    static void SetUpTestSuite() { ASSERT_TRUE(test::listening()); }
};

std::string shown(std::vector<std::string> const &command) {
    std::string text;
    for (std::string const &word : command) text += word + ' ';
    return text;
}

TEST_F(Agreement, splicing_and_reformatting_give_equal_trees) {
    unsigned compared = 0, refused = 0;
    for (unsigned seed = 1; seed <= number_of_files(); ++seed) {
        Random random(seed);
        std::string const text = test::Writer(random, seed % 4 == 0, seed % 3 == 0).document();
        Commands commands(random, text);
        if (!commands.has_paths()) continue;
        std::vector<std::string> command = commands.next();
        cRun const spliced = run(command, text);
        command.push_back("--reformat");
        cRun const reformatted = run(command, text);
        std::string const about =
            "seed " + std::to_string(seed) + "\n" + text + "\n--\n" + shown(command);
        if (reformatted.status == 2) {
            // Only reformatting refuses values whose text changes when it is read and written
            // again.
            if (reformatted.err.find("would change") == reformatted.err.npos) {
                EXPECT_EQ(spliced.status, 2) << about << reformatted.err;
            }
            continue;
        }
        ++compared;
        if (spliced.status != 0) {
            EXPECT_NE(spliced.err.find("--reformat"), spliced.err.npos) << about << spliced.err;
            ++refused;
            if (std::getenv("QRV_SHOW")) std::fprintf(stderr, "REFUSED %s\n", about.c_str());
            continue;
        }
        std::string const expected = fingerprint_of(reformatted.out);
        ASSERT_NE(expected, "") << about << "\n" << reformatted.out;
        ASSERT_EQ(fingerprint_of(spliced.out), expected) << about << "\n"
                                                         << spliced.out << "\n"
                                                         << reformatted.out;
    }
    RecordProperty("compared", static_cast<int>(compared));
    if (std::getenv("QRV_SHOW"))
        std::fprintf(stderr, "%u compared, %u refused\n", compared, refused);
    EXPECT_GT(compared, number_of_files() / 4);
    EXPECT_LE(refused, 1 + compared / 200);
}

} // namespace
