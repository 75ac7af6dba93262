// One mistake in each file of tests/tool/data/mistakes, and the whole output of `check` for it.

#include "tests/tool/tool_run.h"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>

using tool_test::bytes_of;

namespace {

namespace fs = std::filesystem;

std::string const folder = test::source_file("tests/tool/data/mistakes");

std::vector<std::string> names() {
    std::vector<std::string> found;
    for (auto const &file : fs::directory_iterator(folder))
        if (file.path().extension() == ".attr") found.push_back(file.path().filename().string());
    std::sort(found.begin(), found.end());
    return found;
}

// The lines of each file, which begin with its name.
std::map<std::string, std::string> by_file(std::string const &lines) {
    std::map<std::string, std::string> found;
    std::istringstream is(lines);
    for (std::string line; std::getline(is, line);)
        found[line.substr(0, line.find(':'))] += line + "\n";
    return found;
}

size_t count_of(std::string const &text, std::string const &part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++count;
    return count;
}

} // namespace

TEST(ToolMistakes, each_is_reported_once_at_its_position) {
    std::vector<std::string> const files = names();
    EXPECT_GE(files.size(), 80U);
    std::vector<std::string> arguments = files;
    arguments.insert(arguments.begin(), "check");
    tool_test::cRun const run = tool_test::cProcess(folder, arguments, {}).wait();
    EXPECT_EQ(run.out, "");
    std::map<std::string, std::string> const printed = by_file(run.err);
    for (std::string const &file : files) {
        auto const found = printed.find(file);
        std::string const lines = found == printed.end() ? "" : found->second;
        fs::path const expected = fs::path(folder + "/" + file).replace_extension(".expected");
        EXPECT_EQ(lines, bytes_of(expected.string()));
        size_t const errors = count_of(lines, ": error: ");
        EXPECT_EQ(errors == 0 ? count_of(lines, ": warning: ") : errors, 1U) << lines;
    }
}
