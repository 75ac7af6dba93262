#include "qrv/value/text.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/core/ctypescope.h"
#include "qrv/edit/cfingerprint.h"
#include "qrv/modules/cmodule.h"
#include "qrv/text/state/cwriteindent.h"
#include "tests/edit/generated_text.h"
#include "tests/support/paths.h"
#include "tests/support/sanitized.h"
#include "tests/text/file/save_support.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

namespace {

using namespace save_test;
using qrv::dump, qrv::load, qrv::parse, qrv::save, qrv::value;
using testing::HasSubstr;

class ValueText : public SaveTest {
  protected:
    static void SetUpTestSuite() { cat::find_type("intf"); } // made when it is first named

    std::string const file_ = folder_.file("file");

    // Nothing was printed meanwhile.
    void expect_silence() { EXPECT_EQ(log_.take(), ""); }

  private:
    cMessageLog log_;
};

template <class Error> std::string message_of(auto const &act) {
    try {
        act();
    } catch (Error const &error) {
        return error.what();
    }
    return "no such exception";
}

// --- reading

TEST_F(ValueText, a_value_is_parsed_with_its_comments) {
    value const v = parse("{ // all\n  a = 1; // one\n}");
    EXPECT_EQ(v.get<int>("a"), 1);
    EXPECT_THAT(dump(v), HasSubstr("// all"));
    EXPECT_EQ(dump(parse("{ // all\n  a = 1; // one\n}", {.comments = false})), "{\n  a= 1;\n}");
}

TEST_F(ValueText, scalars_and_nil_are_values) {
    EXPECT_EQ(parse("5").get<int>(), 5);
    EXPECT_EQ(parse("\"a b\"").get<std::string>(), "a b");
    EXPECT_TRUE(parse("#nil").is_nil());
}

TEST_F(ValueText, a_byte_order_mark_is_accepted) {
    EXPECT_EQ(parse("\xef\xbb\xbf{a = 1}").get<int>("a"), 1);
    put(file_, "\xef\xbb\xbf{a = 2}");
    EXPECT_EQ(load(file_).get<int>("a"), 2);
}

TEST_F(ValueText, all_errors_are_in_the_exception) {
    char const *const text = "{\n  a = #what;\n  b = nosuch(1);\n  c = 3;\n}";
    try {
        parse(text);
        FAIL();
    } catch (qrv::parse_error const &error) {
        EXPECT_EQ(error.errors().front().line, 2u);
        EXPECT_EQ(error.errors().back().line, 3u);
        EXPECT_THAT(error.what(), HasSubstr("\n3:7: error: "));
        EXPECT_THAT(error.what(), HasSubstr("nosuch"));
    }
    expect_silence();
}

TEST_F(ValueText, errors_are_collected_and_the_rest_is_read) {
    std::vector<cat::ReadError> errors(3);
    value const v = parse("{\n  a = nosuch(1);\n  c = 3;\n}", errors);
    ASSERT_FALSE(errors.empty());
    EXPECT_EQ(errors[0].line, 2u);
    EXPECT_EQ(v.get<int>("c"), 3);
    EXPECT_EQ(parse("1", errors).get<int>(), 1);
    EXPECT_TRUE(errors.empty());
    expect_silence();
}

TEST_F(ValueText, text_without_a_value_and_text_after_one_are_errors) {
    for (char const *const text : {"", " // nothing\n", "}", "{a = 1} {b = 2}", "1 2"})
        EXPECT_THROW(parse(text), qrv::parse_error) << text;
    EXPECT_NO_THROW(parse("{a = 1}; // end\n"));
}

TEST_F(ValueText, the_depth_is_limited) {
    std::string const deep = std::string(20, '[') + std::string(20, ']');
    EXPECT_NO_THROW(parse(deep));
    EXPECT_NO_THROW(parse(deep, {.depth = 20}));
    EXPECT_THROW(parse(deep, {.depth = 19}), qrv::parse_error);
    EXPECT_NO_THROW(parse(deep));
    EXPECT_THROW(parse(std::string(2000000, '[')), qrv::parse_error);
    expect_silence();
}

TEST_F(ValueText, types_that_the_text_declares_stay_registered) {
    cat::TypeScope const scope;
    value const v = parse("{ValueTextMode = choice({off = 0; on = 1}); m = ValueTextMode(on)}");
    EXPECT_EQ(dump(parse("ValueTextMode(off)")), "ValueTextMode(off)");
}

// A type whose objects want a module.
TEST_F(ValueText, a_filter_is_asked_for_modules_during_its_reading_only) {
    typeref const type = make<cTypeObj>("ValueTextLoader");
    type->set_tmember("newobj", make<cExeMember>(+[](objref) -> objref {
                          cModule::load("nosuch");
                          return cat::of(1);
                      }));
    cat::typemap().datamap().mapitem(cat::of(std::string("ValueTextLoader")), type);
    std::string asked;
    qrv::options how;
    how.modules = [&](std::string const &name) {
        asked += name + ' ';
        std::vector<cat::ReadError> ignored;
        if (name == "nosuch") parse("5", ignored); // readings nest
        return false;
    };
    std::vector<cat::ReadError> errors;
    parse("ValueTextLoader(1)", errors);
    EXPECT_EQ(asked, "");
    parse("ValueTextLoader(1)", errors, how);
    EXPECT_THAT(asked, testing::StartsWith("nosuch "));
    asked.clear();
    cModule::load("nosuch");
    EXPECT_EQ(asked, "");
    cat::typemap().datamap().delitem(cat::of(std::string("ValueTextLoader")));
}

TEST_F(ValueText, a_file_that_cannot_be_read_is_an_error_with_its_name) {
    EXPECT_THAT(message_of<qrv::error>([&] { load(folder_.file("absent")); }),
                HasSubstr(folder_.file("absent")));
    EXPECT_THAT(message_of<qrv::error>([&] { load(folder_.path()); }), HasSubstr(folder_.path()));
    EXPECT_THROW(load(""), qrv::error);
    expect_silence();
}

TEST_F(ValueText, handlers_and_masks_stay_as_they_are) {
    cat::errhandler() = cErrHandler(0xFFFFFFFFu, 0x10u, 0x20u);
    EXPECT_THROW(parse("{a = ;}"), qrv::parse_error);
    EXPECT_EQ(cat::errhandler().throw_mask(), 0xFFFFFFFFu);
    EXPECT_EQ(cat::errhandler().clear_mask(), 0x10u);
    EXPECT_EQ(cat::errhandler().silent_mask(), 0x20u);
    expect_silence();
}

TEST_F(ValueText, hostile_texts_end_in_an_error_or_a_value) {
    std::string text = bytes_of(test::source_file("examples/testplan.attr"));
    std::size_t const step = test::sanitized ? 97 : 23;
    for (std::size_t end = 0; end < text.size(); end += step) {
        cat::TypeScope const scope;
        std::vector<cat::ReadError> errors;
        parse(text.substr(0, end), errors);
        EXPECT_FALSE(errors.empty()) << end;
    }
    for (std::size_t at = 0; at < text.size(); at += step) {
        cat::TypeScope const scope;
        std::vector<cat::ReadError> errors;
        char const before = std::exchange(text[at], '\0');
        parse(text, errors);
        text[at] = before;
    }
    expect_silence();
}

// --- writing

TEST_F(ValueText, values_are_dumped_as_in_a_file) {
    EXPECT_EQ(dump(value()), "#nil");
    EXPECT_EQ(dump(1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(dump(parse("{\n  a= [\n  1 ];\n}")), "{\n  a= [\n      1,\n  ]; \n}");
}

TEST_F(ValueText, a_value_is_dumped_on_one_line) {
    EXPECT_EQ(
        dump(parse("{ // c\n  a= [\n  1, // d\n ];\n  b= \"x  // y\";\n}"), {.one_line = true}),
        "{a= [1, ]; b= \"x  // y\"; }");
}

TEST_F(ValueText, the_indent_can_be_chosen) {
    value const v = parse("{\n  a= {\n  b= 1; };\n}");
    EXPECT_EQ(dump(v, {.indent = 2}), "{\n  a= {\n    b= 1;\n  }; \n}");
    EXPECT_EQ(dump(v, {.indent = 0}), "{\na= {\nb= 1;\n}; \n}");
    EXPECT_EQ(cat::write_indent, 4);
    EXPECT_EQ(cat::write_indent0, 2);
}

TEST_F(ValueText, inexact_text_has_six_digits) {
    EXPECT_EQ(dump(0.123456789, {.exact = false}), "0.123457");
    EXPECT_EQ(dump(0.123456789), "0.123456789");
}

TEST_F(ValueText, what_has_no_text_is_an_error) {
    value v = parse("{a = 1}");
    v["b"]["c"] = std::numeric_limits<double>::infinity();
    std::string const why = message_of<qrv::error>([&] { dump(v); });
    EXPECT_THAT(why, HasSubstr("Value cannot be written, path : /b/c"));
    EXPECT_THROW(dump(std::nan("")), qrv::error);
    expect_silence();
}

TEST_F(ValueText, ten_values_without_text_are_named) {
    value v = parse("[]");
    for (int i = 0; i < 10; ++i) v.push_back(std::numeric_limits<float>::infinity());
    auto const lines = [&] {
        std::string const why = message_of<qrv::error>([&] { dump(v); });
        return std::count(why.begin(), why.end(), '\n') + 1;
    };
    EXPECT_EQ(lines(), 10);
    for (int i = 0; i < 5; ++i) v.push_back(std::numeric_limits<float>::infinity());
    EXPECT_EQ(lines(), 11);
    EXPECT_THAT(message_of<qrv::error>([&] { dump(v); }), testing::EndsWith("and 5 more"));
}

TEST_F(ValueText, what_is_dumped_is_parsed_as_the_same_value) {
    unsigned const documents = test::sanitized ? 30 : 150;
    for (unsigned seed = 1; seed <= documents; ++seed) {
        test::Random random(seed);
        std::string const text = test::Writer(random, seed % 4 == 0, seed % 3 == 0).document();
        cat::TypeScope const scope;
        value const v = parse(text);
        std::string const expected = qrv::edit::fingerprint(v.object());
        for (bool const one_line : {false, true}) {
            std::string const written = dump(v, {.one_line = one_line, .indent = 1});
            cat::TypeScope const inner;
            EXPECT_EQ(qrv::edit::fingerprint(parse(written).object()), expected) << written;
        }
    }
}

// --- files

TEST_F(ValueText, a_saved_value_is_loaded_again) {
    value const v = parse("{ // all\n  a = 0.1; // one\n  b = \"x\\\ny\";\n}");
    save(v, file_);
    EXPECT_EQ(bytes_of(file_), dump(v) + "\n");
    EXPECT_EQ(dump(load(file_)), dump(v));
    save(v, file_, {.one_line = true});
    EXPECT_EQ(bytes_of(file_), dump(v, {.one_line = true}) + "\n");
    EXPECT_EQ(folder_.names(), "file");
}

TEST_F(ValueText, mode_and_links_stay) {
    put(file_, "old");
    ::chmod(file_.c_str(), 0640);
    std::filesystem::create_symlink("file", folder_.file("link"));
    save(5, folder_.file("link"));
    EXPECT_EQ(bytes_of(file_), "5\n");
    EXPECT_TRUE(std::filesystem::is_symlink(folder_.file("link")));
    EXPECT_EQ(std::filesystem::status(file_).permissions(), std::filesystem::perms(0640));
}

TEST_F(ValueText, what_has_no_text_leaves_the_file_alone) {
    put(file_, "old");
    value v = parse("{a = 1}");
    v["a"] = std::numeric_limits<double>::infinity();
    EXPECT_THAT(message_of<qrv::error>([&] { save(v, file_); }),
                testing::StartsWith(file_ + ": Value cannot be written, path : /a"));
    EXPECT_EQ(bytes_of(file_), "old");
    EXPECT_EQ(folder_.names(), "file");
}

TEST_F(ValueText, a_file_that_cannot_be_written_is_an_error_with_its_name) {
    std::string const absent = folder_.file("absent/file");
    EXPECT_EQ(message_of<qrv::error>([&] { save(5, absent); }),
              absent + ": not written: cannot write: No such file or directory");
    EXPECT_EQ(message_of<qrv::error>([&] { save(5, folder_.path()); }),
              folder_.path() + ": not written: cannot write: Is a directory");
    EXPECT_THROW(save(5, ""), qrv::error);
    EXPECT_THROW(save(5, std::string("a\0b", 3)), qrv::error);
    expect_silence();
}

TEST_F(ValueText, a_save_without_permission_fails) {
    put(file_, "old");
    EXPECT_EQ(in_child([this] {
                  become_nobody(folder_);
                  ::chmod(file_.c_str(), 0400);
                  ::chmod(folder_.path().c_str(), 0500);
                  EXPECT_EQ(message_of<qrv::error>([this] { save(5, file_); }),
                            file_ + ": not written: cannot write: Permission denied");
                  ::chmod(folder_.path().c_str(), 0700);
                  ::chmod(file_.c_str(), 0000);
                  EXPECT_THROW(load(file_), qrv::error);
              }),
              0);
    EXPECT_EQ(bytes_of(file_), "old");
}

// Each call of the system fails once, with a full disk.
TEST_F(ValueText, a_full_disk_leaves_the_old_file_whole) {
    value const v = parse("{a = 1}");
    int failed = 0;
    for (int n = 0;; ++n) {
        put(file_, "old");
        bool thrown = false;
        {
            cOsFaults const faults(n, ENOSPC);
            thrown = message_of<qrv::error>([&] { save(v, file_); }).starts_with(file_);
            if (faults.hit().empty()) break;
        }
        failed += thrown ? 1 : 0;
        EXPECT_EQ(bytes_of(file_), thrown ? "old" : dump(v) + "\n") << n;
    }
    EXPECT_GT(failed, 1);
}

} // namespace
