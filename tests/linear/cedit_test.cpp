// The time to edit the text of deeply nested maps is proportional to the size of the text, not to
// the size times the depth: each edit of four megabytes takes under two seconds of processor time.
#include "tests/support/fixture.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/edit/cedit.h"
#include "qrv/text/read/creadreport.h"
#include "qrv/text/read/csourcemap.h"

#include <ctime>

namespace {

class EditLinear : public QrvTest {
  protected:
    static std::string set_in_time(std::string const &text, std::string const &statement) {
        std::istringstream in(text);
        cat::SourceMap map;
        objref root;
        EXPECT_EQ(cObj::readobj(in, root), 0);
        std::clock_t const begin = std::clock();
        std::string const result = qrv::edit::apply(
            text, map, root, [&] { EXPECT_TRUE(root->setattrp(statement, true)); });
        EXPECT_LT(static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC, 2.0);
        return result;
    }
};

} // namespace

TEST_F(EditLinear, entries_990_levels_down_are_added_and_changed_in_time) {
    std::string path = "a", opened = "{", closed = "\n}";
    for (int level = 1; level < 990; ++level) {
        path += "/a";
        std::string const indent(static_cast<size_t>(level) * 4, ' ');
        opened += "\n" + indent + "a = {";
        closed.insert(0, "\n" + indent + "};");
    }
    std::string const indent(990UL * 4, ' ');
    auto const with = [&](std::string const &value) {
        return opened + "\n" + indent + "a = " + value + ";" + closed;
    };
    std::string const text = set_in_time("{\n}", path + " = 5");
    EXPECT_TRUE(text == with("5")) << text.substr(0, 200);
    EXPECT_TRUE(set_in_time(text, path + " = 67") == with("67"));
}
