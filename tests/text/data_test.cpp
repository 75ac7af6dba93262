// Compares files of text with the expected results; a new case needs files only:
//   <case>.attr   read, with its comments
//   <case>.tree   the values then, one a line: PATH TYPE VALUE, see cTree
//   <case>.out    the text written then, byte for byte
//   <case>.err    the errors of reading, one a line: LINE:COLUMN CODE PATH TEXT (optional)
// A case has a tree, an output or both. Each case *grammar_* tests one rule of the grammar in
// docs/format.md. The output must be readable without an error, give the same tree and be written
// the same again. This is not checked for cases whose name begins with "lossy": for these only
// exact text is read again. Every case is also written as exact text, which must read as the same
// tree.
#include "tests/support/fixture.h"
#include "tests/support/paths.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <locale>
#include <map>
#include <set>
#include <sstream>

namespace {

std::vector<std::string> cases() {
    std::vector<std::string> names;
    for (auto const &entry :
         std::filesystem::directory_iterator(test::source_file("tests/text/data")))
        if (entry.path().extension() == ".attr") names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

// Types that text declares stay in the registry; this removes them at the end of a test.
class cNewTypes {
  public:
    cNewTypes() : before_(names()) {}
    cNewTypes(cNewTypes const &) = delete;
    cNewTypes &operator=(cNewTypes const &) = delete;
    ~cNewTypes() {
        for (std::string const &name : names())
            if (!before_.contains(name)) cat::typemap().datamap().delitem(name);
    }

  private:
    static std::set<std::string> names() {
        std::set<std::string> all;
        cAttrHash const &types = cat::typemap().datamap();
        for (cAttrNode const *node = types.first(); node; node = types.next(node))
            all.insert(node->key_as_string());
        return all;
    }
    std::set<std::string> before_;
};

// A line for each value, the outermost first, which is at the path /:
//   /a/0 int 5           string keys are in quotes unless they are names
//   /b string "x y"      without escapes
//   /c map               its entries follow
//   /d constant #nil
//   /e is /c             the same object
// All other values have a line with the type and the written form.
class cTree {
  public:
    static std::string text(objref const &value) {
        cTree tree;
        tree.add("", value);
        return tree.text_;
    }

  private:
    void add(std::string const &path, objref const &value) {
        text_ += (path.empty() ? "/" : path) + ' ' + described(path, value) + '\n';
        if (!inside_) return;
        cAttrHash const &hash = inside_->datamap();
        for (cAttrNode const *node = hash.first(); node; node = hash.next(node))
            add(path + '/' + key(node->key()), node->valref());
    }

    // Sets inside_ to a container whose entries come next.
    std::string described(std::string const &path, objref const &value) {
        inside_ = nullptr;
        if (!value) return "null";
        if (cat::find_const(value.get())) return "constant " + cat::as_text(value);
        auto const [known, is_new] = paths_.try_emplace(value.get(), path.empty() ? "/" : path);
        if (!is_new) return "is " + known->second;
        inside_ = dynamic_cast<cMapObj const *>(value.get());
        std::string const type = value->type().name();
        return inside_ ? type : type + ' ' + scalar(value);
    }

    static std::string key(objref const &key) {
        bool const bare = &key->type() != &cat::type_string() || cat::is_ident(cat::as_string(key));
        return bare ? scalar(key, "") : scalar(key);
    }

    static std::string scalar(objref const &value, char const *quote = "\"") {
        if (&value->type() == &cat::type_string()) return quote + cat::as_string(value) + quote;
        if (auto const *const number = dynamic_cast<cObjDR<double> const *>(value.get()))
            return digits(number->val());
        if (auto const *const number = dynamic_cast<cObjDR<float> const *>(value.get()))
            return digits(number->val());
        return cat::as_text(value);
    }

    template <class T> static std::string digits(T number) {
        char text[64];
        return {text, std::to_chars(text, text + sizeof text, number).ptr};
    }

    std::string text_;
    cMapObj const *inside_ = nullptr;
    std::map<cObj const *, std::string> paths_;
};

class Data : public QrvTest, public ::testing::WithParamInterface<std::string> {
  protected:
    // The bytes of <case>.<extension>; empty if the file does not exist.
    static std::string file(char const *extension) {
        std::ifstream is(test::source_file("tests/text/data/" + GetParam() + '.' + extension),
                         std::ios::binary);
        return {std::istreambuf_iterator<char>(is), std::istreambuf_iterator<char>()};
    }

    static std::string line_of(cat::ReadError const &error) {
        char place[64];
        std::snprintf(place, sizeof place, "%u:%u 0x%08X ", error.line, error.column, error.code);
        return place + (error.path.empty() ? "/" : error.path) + ' ' + error.text + '\n';
    }

    static objref read(std::string const &text, std::string &errors) {
        cat::ReadReport const report;
        std::istringstream is(text);
        objref value;
        cAttrScan scan(is, false);
        scan.return_com(true, nullptr);
        scan.scan_obj(value, nullptr);
        for (cat::ReadError const &error : report.entries()) errors += line_of(error);
        return value;
    }

    static std::string write(objref const &value) {
        std::ostringstream os;
        os.imbue(std::locale::classic());
        EXPECT_TRUE(value->writeobj(os));
        return os.str();
    }

    // Checks that the text is read as an equal value, which is written the same again.
    static void expect_stable(objref const &value, std::string const &text) {
        cNewTypes const types;
        std::string errors;
        objref const again = read(text, errors);
        EXPECT_EQ(errors, "") << text;
        ASSERT_TRUE(again);
        EXPECT_TRUE(again->equal(value)) << text;
        EXPECT_EQ(write(again), text);
    }
};

} // namespace

TEST_P(Data, is_read_and_written_as_in_its_files) {
    std::string errors, plain, exact;
    objref value;
    cNewTypes const types;
    std::string const tree = file("tree"), out = file("out");
    EXPECT_FALSE(tree.empty() && out.empty());
    value = read(file("attr"), errors);
    EXPECT_EQ(errors, file("err"));
    ASSERT_TRUE(value);
    if (!tree.empty()) {
        EXPECT_EQ(cTree::text(value), tree);
    }
    plain = write(value);
    if (!out.empty()) {
        EXPECT_EQ(plain, out);
    }
    if (GetParam().rfind("lossy", 0) != 0) expect_stable(value, plain);
    cat::ExactText const guard;
    exact = write(value);
    EXPECT_EQ(guard.failed(), 0u);
    expect_stable(value, exact);
}

INSTANTIATE_TEST_SUITE_P(Files, Data, ::testing::ValuesIn(cases()),
                         [](auto const &one) { return one.param; });
