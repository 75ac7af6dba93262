// Documents: what a change does to the text, separate types, positions, and failures of saving.

#include "qrv/value/document.h"

#include "qrv/base/platform/cfolderlock.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/core/ctypescope.h"
#include "qrv/edit/cfingerprint.h"
#include "tests/edit/generated_text.h"
#include "tests/support/paths.h"
#include "tests/support/sanitized.h"
#include "tests/text/file/save_support.h"

#include <gmock/gmock.h>

#include <limits>

namespace {

using namespace save_test;
using qrv::document, qrv::parse, qrv::position, qrv::value;
using testing::HasSubstr, testing::StartsWith;

std::string const text = "// head\n"
                         "{\n"
                         "  a   = 0x10; // one\n"
                         "  bus = { baud = 4800; parity = even; }; // map\n"
                         "  l = [ 10, 20, 30 ]; // list\n"
                         "\n"
                         "  // the same\n"
                         "  r = #cRef(/l); // ref\n"
                         "}\n"
                         "// end\n";

// The text with one part of it replaced by another.
std::string with(std::string const &part, std::string const &other, std::string in = text) {
    std::size_t const at = in.find(part);
    EXPECT_NE(at, std::string::npos) << part;
    return in.replace(at, part.size(), other);
}

template <class Error> std::string message_of(auto const &act) {
    try {
        act();
    } catch (Error const &error) {
        return error.what();
    }
    return "no such exception";
}

class Documents : public SaveTest {
  protected:
    static void SetUpTestSuite() { cat::find_type("intf"); } // made when it is first named
    ~Documents() override { EXPECT_EQ(log_.take(), ""); }    // nothing is printed

    std::string const file_ = folder_.file("file");

  private:
    cMessageLog log_;
};

// --- changes

TEST_F(Documents, without_a_change_the_text_stays) {
    EXPECT_EQ(document::parse(text).text(), text);
    put(file_, text);
    document doc = document::load(file_);
    doc.save();
    EXPECT_EQ(bytes_of(file_), text);
    EXPECT_EQ(doc.path(), file_);
    EXPECT_TRUE(doc.errors().empty());
}

TEST_F(Documents, a_changed_value_changes_its_literal) {
    document doc = document::parse(text);
    doc["bus"]["baud"] = 9600;
    EXPECT_EQ(doc.text(), with("4800", "9600"));
    doc["a"] = 0x20;
    EXPECT_EQ(doc.text(), with("0x10", "0x20", with("4800", "9600")));
}

TEST_F(Documents, copies_of_values_are_of_the_document) {
    document doc = document::parse(text);
    value bus = doc.at("bus");
    bus["baud"] = 9600;
    value const root = doc;
    EXPECT_TRUE(root.is_shared_with(doc));
    EXPECT_EQ(doc.text(), with("4800", "9600"));
}

TEST_F(Documents, entries_are_removed_inserted_moved_and_renamed) {
    document doc = document::parse(text);
    doc.erase("a");
    EXPECT_EQ(doc.text(), with("  a   = 0x10; // one\n", ""));
    doc["bus"]["stop"] = 2;
    EXPECT_EQ(doc.text(), with("even;", "even; stop = 2;", with("  a   = 0x10; // one\n", "")));

    doc = document::parse(text);
    value l = doc.at("l");
    l.insert(0, 5);
    EXPECT_EQ(doc.text(), with("[ 10", "[ 5, 10"));
    l.push_back(40);
    EXPECT_EQ(doc.text(), with("[ 10, 20, 30", "[ 5, 10, 20, 30, 40"));

    doc = document::parse(text);
    doc.rename("l", "list");
    EXPECT_EQ(doc.text(), with("/l", "/list", with("  l = [", "  list = [")));

    doc = document::parse(text);
    value const a = doc.at("a");
    doc.erase("a");
    value bus = doc.at("bus");
    bus["a"] = a;
    std::string const moved = doc.text();
    EXPECT_THAT(moved, HasSubstr("0x10"));
    EXPECT_THAT(moved, HasSubstr("// one"));
    EXPECT_EQ(parse(moved).get<int>("bus/a"), 16);
}

TEST_F(Documents, shared_values_stay_shared) {
    document doc = document::parse(text);
    doc["again"] = doc.at("bus");
    EXPECT_EQ(doc.text(), with("(/l); // ref\n", "(/l); // ref\n  again = #cRef(/bus);\n"));
    doc.erase("l");
    value const read = parse(doc.text());
    EXPECT_EQ(read.at("r").size(), 3u);
    EXPECT_TRUE(read.at("bus").is_shared_with(read.at("again")));
}

TEST_F(Documents, a_scalar_can_be_assigned) {
    document doc = document::parse("// only\n5 // five\n");
    doc.assign(6);
    EXPECT_EQ(doc.text(), "// only\n6 // five\n");
}

TEST_F(Documents, a_new_outermost_value_leaves_the_text_around_it) {
    document doc = document::parse("// only\n#nil // none\n");
    doc["a"] = 1;
    EXPECT_EQ(parse(doc.text()).get<int>("a"), 1);
    EXPECT_THAT(doc.text(), StartsWith("// only\n{"));
    EXPECT_THAT(doc.text(), testing::EndsWith("} // none\n"));
    static_cast<value &>(doc) = parse("[1, 2]");
    EXPECT_EQ(doc.text(), "// only\n[1, 2, ] // none\n");
}

TEST_F(Documents, a_byte_order_mark_and_line_ends_stay) {
    std::string const marked = "\xef\xbb\xbf{\r\n  a = 1; // one\r\n}\r\n";
    put(file_, marked);
    document doc = document::load(file_);
    doc["a"] = 2;
    doc["b"] = 3;
    doc.save();
    EXPECT_EQ(bytes_of(file_), "\xef\xbb\xbf{\r\n  a = 2; // one\r\n  b = 3;\r\n}\r\n");
    EXPECT_EQ(doc.position_of("a"), (position{2, 7}));
}

// --- saving again

TEST_F(Documents, can_be_saved_again_and_again) {
    put(file_, text);
    document doc = document::load(file_);
    doc["a"] = 1;
    doc.save();
    EXPECT_EQ(bytes_of(file_), with("0x10", "0x01"));
    doc.save();
    EXPECT_EQ(bytes_of(file_), with("0x10", "0x01"));
    doc["bus"]["baud"] = 9600;
    doc["new"] = "x";
    doc.save();
    std::string const now = bytes_of(file_);
    EXPECT_EQ(now, with("ref\n", "ref\n  new = x;\n", with("4800", "9600", with("0x10", "0x01"))));
    doc["new"] = "y";
    doc.save();
    EXPECT_EQ(bytes_of(file_), with("new = x", "new = y", now));
    doc.erase("new");
    doc["a"] = 16;
    doc["bus"]["baud"] = 4800;
    doc.save();
    EXPECT_EQ(bytes_of(file_), text);
}

TEST_F(Documents, documents_of_text_are_saved_under_a_name) {
    document doc = document::parse("{ a = 1; }\n");
    EXPECT_EQ(doc.path(), "");
    EXPECT_EQ(message_of<qrv::error>([&] { doc.save(); }),
              "not written: the document has no file; save_as() gives it one");
    doc.save_as(file_);
    EXPECT_EQ(bytes_of(file_), "{ a = 1; }\n");
    EXPECT_EQ(doc.path(), file_);
    doc["a"] = 2;
    doc.save();
    EXPECT_EQ(bytes_of(file_), "{ a = 2; }\n");
    doc.save_as(folder_.file("other"));
    doc["a"] = 3;
    doc.save();
    EXPECT_EQ(bytes_of(file_), "{ a = 2; }\n");
    EXPECT_EQ(bytes_of(folder_.file("other")), "{ a = 3; }\n");
}

TEST_F(Documents, can_be_moved) {
    document doc = document::parse("{a = 1}");
    document &left = doc;
    document other = std::move(doc);
    other["a"] = 2;
    EXPECT_EQ(other.text(), "{a = 2}");
    EXPECT_TRUE(left.is_nil());
    EXPECT_EQ(left.path(), "");
    EXPECT_TRUE(left.errors().empty());
    EXPECT_THROW(left.text(), qrv::error);
    EXPECT_THROW(left.save(), qrv::error);
    EXPECT_THROW(left.read("1"), qrv::error);
    left = std::move(other);
    EXPECT_EQ(left.text(), "{a = 2}");
}

TEST_F(Documents, a_document_moved_into_a_value_cannot_be_saved) {
    document doc = document::parse("{a = 1}");
    value const taken = std::move(static_cast<value &>(doc));
    EXPECT_TRUE(taken.is_map());
    EXPECT_THROW(doc.text(), qrv::error);
    EXPECT_EQ(document::parse("#nil").text(), "#nil");
}

TEST_F(Documents, values_outlive_their_document) {
    value bus;
    {
        document doc = document::parse(text);
        bus = doc.at("bus");
    }
    bus["baud"] = 1;
    EXPECT_EQ(qrv::dump(bus), "{baud= 1; parity= even; }");
}

TEST_F(Documents, end_in_any_order) {
    std::vector<document> docs;
    for (int i = 0; i < 4; ++i) docs.push_back(document::parse("{a = " + std::to_string(i) + "}"));
    docs.erase(docs.begin() + 1);
    docs.push_back(document::parse("{a = 4}"));
    docs.erase(docs.begin());
    for (document &doc : docs) doc["a"] = doc.get_or("a", 0) + 10;
    std::string all;
    for (document const &doc : docs) all += doc.text();
    EXPECT_EQ(all, "{a = 12}{a = 13}{a = 14}");
}

// --- types

std::string const record = "{\n  Axis = attlist(n = attspec(type = int; default = 3));\n"
                           "  x = Axis(n = 4); // x\n}\n";
std::string const choice = "{\n  Axis = choice({a = 0; b = 1});\n  x = Axis(a); // x\n}\n";

bool is_known(char const *name) { return &cat::find_type(name) != &cat::type_nil(); }

TEST_F(Documents, two_declare_one_name_differently) {
    for (bool const first_ends_first : {true, false}) {
        auto one = std::make_unique<document>(document::parse(record));
        auto two = std::make_unique<document>(document::parse(choice));
        EXPECT_FALSE(is_known("Axis"));
        (*one)["x"]["n"] = 5;
        two->at("x").assign("b");
        EXPECT_EQ(one->text(), with("n = 4", "n = 5", record));
        EXPECT_EQ(two->text(), with("Axis(a)", "Axis(b)", choice));
        std::unique_ptr<document> &first = first_ends_first ? one : two;
        first = nullptr;
        document &left = one ? *one : *two;
        left["y"] = left.read(one ? "Axis(n= 7)" : "Axis(b)");
        EXPECT_EQ(
            left.text(),
            one ? with("// x\n", "// x\n  y = Axis(n = 7);\n", with("n = 4", "n = 5", record))
                : with("// x\n", "// x\n  y = Axis(b);\n", with("Axis(a)", "Axis(b)", choice)));
    }
    EXPECT_FALSE(is_known("Axis"));
}

TEST_F(Documents, types_leave_with_the_last_object) {
    std::uint32_t const before = cObjBase::ob_count();
    value x;
    {
        document const doc = document::parse(record);
        x = doc.at("x");
    }
    EXPECT_EQ(qrv::dump(x), "Axis(\n  n= 4;\n)");
    EXPECT_GT(cObjBase::ob_count(), before);
    x = nullptr;
    EXPECT_EQ(cObjBase::ob_count(), before);
}

TEST_F(Documents, a_type_of_the_program_is_hidden_only_while_it_is_read) {
    cat::TypeScope const scope;
    parse("{Axis = choice({program = 0})}");
    document doc = document::parse(record);
    EXPECT_EQ(qrv::dump(parse("Axis(program)")), "Axis(program)");
    doc["y"] = doc.read("Axis(n= 1)");
    EXPECT_THAT(doc.text(), HasSubstr("y = Axis(n = 1);"));
    doc["y"] = parse("Axis(program)");
    EXPECT_THAT(message_of<qrv::error>([&] { doc.text(); }), HasSubstr("not written"));
}

TEST_F(Documents, text_that_is_read_may_declare_a_name_again) {
    document doc = document::parse(record);
    EXPECT_EQ(doc.read("{Axis = choice({z = 0}); v = Axis(z)}").at("v").type_name(), "Axis");
    EXPECT_THROW(doc.read("Axis(nothing)"), qrv::parse_error);
    EXPECT_THROW(doc.read("Other(1)"), qrv::parse_error);
    EXPECT_EQ(doc.text(), record);
}

TEST_F(Documents, a_rule_of_a_type_holds) {
    document doc = document::parse(record);
    EXPECT_THROW(doc["x"]["n"] = "text", qrv::type_error);
    EXPECT_EQ(doc.text(), record);
}

TEST_F(Documents, a_type_of_the_program_is_not_a_declaration_in_the_file) {
    cat::TypeScope const scope;
    parse(record);
    document doc = document::parse(record);
    doc.erase("Axis");
    EXPECT_THROW(doc.text(), qrv::error);
    document undeclared = document::parse("{ x = Axis(n = 4); }");
    undeclared["x"]["n"] = 5;
    EXPECT_EQ(undeclared.text(), "{ x = Axis(n = 5); }");
}

TEST_F(Documents, a_type_that_is_used_cannot_be_removed) {
    put(file_, record);
    document doc = document::load(file_);
    doc.erase("Axis");
    EXPECT_EQ(message_of<qrv::error>([&] { doc.save(); }),
              file_ + ": not written: no text can be read as the changed value");
    EXPECT_EQ(bytes_of(file_), record);
    doc.erase("x");
    doc.save();
    EXPECT_EQ(bytes_of(file_), "{\n}\n");
}

// --- positions

TEST_F(Documents, values_have_positions) {
    document doc = document::parse(text);
    EXPECT_EQ(doc.position_of(""), (position{2, 1}));
    EXPECT_EQ(doc.position_of("a"), (position{3, 9}));
    EXPECT_EQ(doc.position_of("bus/baud"), (position{4, 18}));
    EXPECT_EQ(doc.position_of("l/1"), (position{5, 13}));
    EXPECT_EQ(doc.position_of("r"), (position{8, 7}));
    EXPECT_EQ(doc.position_of("nothing/there"), std::nullopt);
    EXPECT_THROW(doc.position_of("a = 5"), qrv::path_error);
    EXPECT_EQ(doc.position_of(doc.at("bus")), (position{4, 9}));
    EXPECT_EQ(doc.position_of(doc.at("r")), (position{5, 7}));
    EXPECT_EQ(doc.position_of(doc["l"]), (position{5, 7}));
    EXPECT_EQ(doc.position_of(doc), (position{2, 1}));
    EXPECT_EQ(doc.position_of(value(5)), std::nullopt);
    EXPECT_EQ(doc.position_of(value()), std::nullopt);
}

TEST_F(Documents, positions_follow_moved_values) {
    document doc = document::parse(text);
    value l = doc.at("l");
    l.insert(0, 5);
    EXPECT_EQ(doc.position_of("l/0"), std::nullopt);
    EXPECT_EQ(doc.position_of("l/2"), (position{5, 13}));
    doc["new"] = 1;
    EXPECT_EQ(doc.position_of("new"), std::nullopt);
}

// --- errors in the text

TEST_F(Documents, errors_are_thrown_or_stored) {
    char const *const faulty = "{\n  a = nosuch(1);\n  b = 2;\n}\n";
    EXPECT_THROW(document::parse(faulty), qrv::parse_error);
    std::vector<cat::ReadError> errors;
    document doc = document::parse(faulty, errors);
    ASSERT_FALSE(errors.empty());
    EXPECT_EQ(doc.errors().size(), errors.size());
    EXPECT_EQ(doc.get<int>("b"), 2);
    EXPECT_EQ(doc.position_of("b"), (position{3, 7}));
    EXPECT_EQ(message_of<qrv::error>([&] { doc.text(); }), "not written: it was read with errors");
    put(file_, faulty);
    try {
        document::load(file_);
        FAIL();
    } catch (qrv::parse_error const &error) {
        EXPECT_THAT(error.what(), StartsWith(file_ + ":2:"));
    }
    doc = document::load(file_, errors);
    EXPECT_THROW(doc.save(), qrv::error);
    EXPECT_THROW(doc.save_as(folder_.file("other")), qrv::error);
    EXPECT_EQ(bytes_of(file_), faulty);
    EXPECT_EQ(folder_.names(), "file");
}

TEST_F(Documents, a_file_that_cannot_be_read_is_an_error_with_its_name) {
    EXPECT_EQ(message_of<qrv::error>([&] { document::load(folder_.file("absent")); }),
              folder_.file("absent") + ": cannot read: No such file or directory");
    EXPECT_EQ(message_of<qrv::error>([&] { document::load(folder_.path()); }),
              folder_.path() + ": cannot read: Is a directory");
    put(file_, text);
    EXPECT_EQ(in_child([this] {
                  become_nobody(folder_);
                  ::chmod(file_.c_str(), 0000);
                  EXPECT_EQ(message_of<qrv::error>([this] { document::load(file_); }),
                            file_ + ": cannot read: Permission denied");
              }),
              0);
}

// --- failures of saving

TEST_F(Documents, changes_by_another_program_are_not_overwritten) {
    put(file_, text);
    document doc = document::load(file_);
    put(file_, text + "// more\n");
    EXPECT_EQ(message_of<qrv::save_conflict>([&] { doc.save(); }),
              file_ + ": not written: another program has changed the file");
    doc["a"] = 1;
    EXPECT_THROW(doc.save(), qrv::save_conflict);
    EXPECT_EQ(bytes_of(file_), text + "// more\n");
    put(file_, text); // the content counts, not the time
    doc.save();
    EXPECT_EQ(bytes_of(file_), with("0x10", "0x01"));
    put(file_, text);
    EXPECT_THROW(doc.save(), qrv::save_conflict);
    ::unlink(file_.c_str());
    EXPECT_EQ(message_of<qrv::save_conflict>([&] { doc.save(); }),
              file_ + ": not written: the file does not exist any more");
    doc["a"] = 2;
    EXPECT_THROW(doc.save(), qrv::save_conflict);
    doc.save_as(file_);
    EXPECT_EQ(bytes_of(file_), with("0x10", "0x02"));
}

TEST_F(Documents, two_documents_of_a_file_see_each_other) {
    put(file_, text);
    document one = document::load(file_), two = document::load(file_);
    one["a"] = 1;
    one.save();
    two["a"] = 2;
    EXPECT_THROW(two.save(), qrv::save_conflict);
    EXPECT_EQ(bytes_of(file_), with("0x10", "0x01"));
}

TEST_F(Documents, mode_and_links_stay) {
    put(file_, text);
    ::chmod(file_.c_str(), 0640);
    std::filesystem::create_symlink("file", folder_.file("link"));
    document doc = document::load(folder_.file("link"));
    doc["a"] = 1;
    doc.save();
    EXPECT_EQ(bytes_of(file_), with("0x10", "0x01"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder_.file("link")));
    EXPECT_EQ(mode_of(file_), 0640u);
}

TEST_F(Documents, a_file_without_permission_stays) {
    put(file_, text);
    EXPECT_EQ(in_child([this] {
                  become_nobody(folder_);
                  document doc = document::load(file_);
                  doc["a"] = 1;
                  ::chmod(file_.c_str(), 0400);
                  ::chmod(folder_.path().c_str(), 0500);
                  EXPECT_EQ(message_of<qrv::error>([&] { doc.save(); }),
                            file_ + ": not written: cannot write: Permission denied");
              }),
              0);
    EXPECT_EQ(bytes_of(file_), text);
}

TEST_F(Documents, a_full_disk_leaves_the_old_file_unchanged) {
    int failed = 0;
    for (int n = 0;; ++n) {
        put(file_, text);
        document doc = document::load(file_);
        doc["a"] = 1;
        bool thrown = false;
        {
            cOsFaults const faults(n, ENOSPC);
            thrown = message_of<qrv::error>([&] { doc.save(); }).starts_with(file_);
            if (faults.hit().empty()) break;
        }
        failed += thrown ? 1 : 0;
        EXPECT_EQ(bytes_of(file_), thrown ? text : with("0x10", "0x01")) << n;
        if (thrown) doc.save(); // it can be tried again
        EXPECT_EQ(bytes_of(file_), with("0x10", "0x01")) << n;
    }
    EXPECT_GT(failed, 1);
}

TEST_F(Documents, a_value_without_text_leaves_the_file_unchanged) {
    put(file_, text);
    document doc = document::load(file_);
    doc["bus"]["baud"] = std::numeric_limits<double>::infinity();
    EXPECT_THAT(message_of<qrv::error>([&] { doc.save(); }),
                StartsWith(file_ + ": Value cannot be written, path : /bus/baud"));
    EXPECT_EQ(bytes_of(file_), text);
    doc["bus"]["baud"] = 1;
    doc.save();
    EXPECT_EQ(bytes_of(file_), with("4800", "1"));
}

// What the layer refuses, the object system can be made to do.
TEST_F(Documents, a_cycle_has_no_text) {
    put(file_, text);
    document doc = document::load(file_);
    value bus = doc.at("bus");
    EXPECT_THROW(bus["self"] = bus, qrv::error);
    static_cast<cMapObj &>(*bus.object())
        .datamap()
        .mapitem(cat::of(std::string("self")), doc.object());
    EXPECT_THROW(doc.save(), qrv::error);
    EXPECT_THROW(qrv::save(doc, file_), qrv::error);
    EXPECT_EQ(bytes_of(file_), text);
    bus.erase("self");
    doc.save();
}

TEST_F(Documents, a_lock_of_the_folder_is_waited_for) {
    put(file_, text);
    document doc = document::load(file_);
    doc["a"] = 1;
    auto lock = std::make_unique<cat::FileLock>(file_);
    static cat::FileLock *held;
    held = lock.get();
    cat::os.flock = [](int descriptor, int operation) {
        static int tries = 0;
        if (held && ++tries == 3) held = nullptr;
        if (!held) return 0;
        errno = EWOULDBLOCK;
        return ::flock(descriptor, operation);
    };
    doc.save();
    EXPECT_EQ(held, nullptr);
    EXPECT_EQ(bytes_of(file_), with("0x10", "0x01"));
}

// --- many texts

std::string fingerprint(value const &v) { return qrv::edit::fingerprint(v.object()); }

TEST_F(Documents, hostile_texts_are_errors_or_saved_as_they_are) {
    std::string const whole = bytes_of(test::source_file("examples/settings.attr"));
    std::size_t const step = test::sanitized ? 41 : 7;
    for (std::size_t at = 0; at < whole.size(); at += step) {
        std::string broken = whole;
        broken[at] = at % 2 == 0 ? '\0' : '{';
        std::vector<cat::ReadError> errors;
        document const doc = document::parse(broken, errors);
        if (!errors.empty()) continue;
        EXPECT_EQ(doc.text(), broken) << at;
    }
}

TEST_F(Documents, generated_texts_are_preserved_and_accept_new_entries) {
    unsigned const count = test::sanitized ? 40 : 300;
    for (unsigned seed = 1; seed <= count; ++seed) {
        test::Random random(seed);
        std::string const generated = test::Writer(random, seed % 4 == 0, seed % 3 == 0).document();
        document doc = document::parse(generated);
        EXPECT_EQ(doc.text(), generated);
        if (!doc.is_map()) continue;
        doc["put_in"] = seed;
        std::string const now = doc.text();
        EXPECT_EQ(fingerprint(document::parse(now)), fingerprint(doc)) << now;
        doc.erase("put_in");
        EXPECT_EQ(doc.text(), generated);
    }
}

} // namespace
