// Real files through both commands: the JSON of the package iso-codes, with up to thousands of
// entries and strings in many languages.

#include "tests/support/sanitized.h"
#include "tests/tool/tool_run.h"

#include <algorithm>
#include <nlohmann/json.hpp>

using tool_test::cRun;

namespace {

using cOrderedJson = nlohmann::ordered_json; // preserves the order of keys

std::vector<std::filesystem::path> files() {
    std::vector<std::filesystem::path> all;
    for (char const *const folder :
         {"/usr/share/iso-codes/json", "/usr/local/share/iso-codes/json"})
        if (std::filesystem::exists(folder))
            for (auto const &entry : std::filesystem::directory_iterator(folder))
                if (entry.path().extension() == ".json") all.push_back(entry.path());
    std::sort(all.begin(), all.end());
    return all;
}

// A scalar of a document: the last element of the last element, and so on.
struct cScalar {
    std::string path;
    cOrderedJson value;
};

cScalar last_scalar(cOrderedJson const &document) {
    cScalar found{"", document};
    while (found.value.is_structured() && !found.value.empty()) {
        auto const last = std::prev(found.value.end());
        std::string const key = found.value.is_object() ? "\"" + last.key() + "\""
                                                        : std::to_string(found.value.size() - 1);
        found.path += "/" + key;
        found.value = cOrderedJson(*last);
    }
    return found;
}

// The value as `get` prints it.
std::string shown(cOrderedJson const &value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

class ToolJsonFiles : public tool_test::Tool {
  protected:
    std::string json() const {
        EXPECT_EQ(run({"to-json", "f.attr", "-o", "f.json"}), (cRun{0, "", ""}));
        return cOrderedJson::parse(read("f.json")).dump();
    }
    void goes_both_ways(std::filesystem::path const &file) const {
        cOrderedJson document = cOrderedJson::parse(tool_test::bytes_of(file));
        cScalar const scalar = last_scalar(document);
        EXPECT_EQ(run({"from-json", file.string(), "-o", "f.attr"}), (cRun{0, "", ""}));
        EXPECT_EQ(run({"fmt", "--check", "f.attr"}), (cRun{0, "", ""}));
        EXPECT_EQ(run({"check", "f.attr"}), (cRun{0, "", ""}));
        EXPECT_EQ(run({"get", "f.attr", scalar.path}), (cRun{0, shown(scalar.value) + "\n", ""}));
        EXPECT_EQ(json(), document.dump());
        changes(document, scalar.path);
    }
    // Sets one value, which must be the only difference.
    void changes(cOrderedJson &document, std::string const &path) const {
        EXPECT_EQ(run({"set", "-i", "f.attr", path + " &= \"\xC3\xBC ?\""}), (cRun{0, "", ""}));
        cOrderedJson *value = &document;
        while (value->is_structured()) value = &*std::prev(value->end());
        *value = "\xC3\xBC ?";
        EXPECT_EQ(json(), document.dump());
    }
};

// The two largest files take most of the time.
TEST_F(ToolJsonFiles, all_files_of_iso_codes_can_be_converted) {
    std::vector<std::filesystem::path> all = files();
    if (test::sanitized)
        std::erase_if(all,
                      [](auto const &file) { return std::filesystem::file_size(file) > 100000; });
    EXPECT_GE(all.size(), 10u) << "the package iso-codes is missing";
    for (std::filesystem::path const &file : all) {
        SCOPED_TRACE(file.string());
        goes_both_ways(file);
    }
}

} // namespace
