#include "qrv/value/text.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csignalobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/core/ctypescope.h"
#include "qrv/edit/cfingerprint.h"
#include "qrv/modules/cmodule.h"
#include "qrv/text/state/cwriteindent.h"
#include "qrv/value.h"
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
    static void SetUpTestSuite() { // these types are created on first use
        cat::find_type("intf");
        cat::type_signal();
        cat::type_slot1();
    }

    std::string const file_ = folder_.file("file");

    // Nothing was printed since the last call.
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

TEST_F(ValueText, errors_that_follow_from_another_one_are_counted) {
    try {
        parse("{ a= 1 b= 2;\n c= #what; }");
        FAIL();
    } catch (qrv::parse_error const &error) {
        EXPECT_STREQ(error.what(), "1:6: error: Missing delimiter after value: 1\n"
                                   "2:5: error: Unknown #-value (no defined const): #what\n"
                                   "2:5: note: 1 more error follows from it");
        ASSERT_EQ(error.errors().size(), 3U);
        EXPECT_EQ(error.errors()[1].follows, cat::ReadError::none);
        EXPECT_EQ(error.errors()[2].follows, 1U);
    }
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
    EXPECT_EQ(message_of<qrv::parse_error>([&] { parse("[[[1]]]", {.depth = 2}); }),
              "1:3: error: Nesting is deeper than 2, path : /0/0\n"
              "1:3: note: qrv::options::depth sets this limit\n"
              "1:3: note: 4 more errors follow from it");
    EXPECT_THROW(parse(deep, {.depth = 19}), qrv::parse_error);
    EXPECT_NO_THROW(parse(deep, {.depth = 0}));
    EXPECT_NO_THROW(parse(deep));
    EXPECT_THROW(parse(std::string(2000000, '[')), qrv::parse_error);
    expect_silence();
}

TEST_F(ValueText, a_value_that_is_too_deep_for_the_stack_has_no_text) {
    value deep = 1;
    for (int i = 0; i < 200000; ++i) deep = value(std::vector<value>{deep});
    EXPECT_EQ(message_of<qrv::error>([&] { dump(deep); }), "nesting is too deep to be written");
    EXPECT_EQ(message_of<qrv::error>([&] { save(deep, file_); }),
              file_ + ": nesting is too deep to be written");
    std::ostringstream os;
    os << deep;
    EXPECT_EQ(os.rdstate(), std::ios_base::failbit);
    expect_silence();
}

TEST_F(ValueText, types_that_the_text_declares_stay_registered) {
    cat::TypeScope const scope;
    value const v = parse("{ValueTextMode = choice({off = 0; on = 1}); m = ValueTextMode(on)}");
    EXPECT_EQ(dump(parse("ValueTextMode(off)")), "ValueTextMode(off)");
}

namespace {

// The names of all registered types.
std::string registered() {
    std::string names;
    for (auto const &[key, type] : value(objref::share(&cat::typemap())).items())
        names += key.get<std::string>() + ' ';
    return names;
}

} // namespace

TEST_F(ValueText, faulty_text_registers_no_type) {
    std::string const before = registered();
    std::string const types =
        "{ValueTextMode= choice({off= 0; on= 1}); "
        "ValueTextAxis= attlist(mode= attspec(type= ValueTextMode; flag= #REQUIRED)); "
        "a= ValueTextAxis(mode= ValueTextMode(on)); ";
    for (char const *const rest : {"b= ;}", "b= #what;}", "", "} 5"}) {
        EXPECT_THROW(parse(types + rest), qrv::parse_error) << rest;
        EXPECT_EQ(registered(), before);
    }
    std::vector<cat::ReadError> errors;
    value const v = parse(types + "b= #what;}", errors);
    EXPECT_EQ(errors.size(), 2U);
    EXPECT_EQ(registered(), before);
    EXPECT_EQ(v.at("a").type_name(), "ValueTextAxis"); // the value keeps its type alive
    EXPECT_EQ(v.at("a/mode"), "on");
    put(file_, types + "b= ;}");
    EXPECT_THROW(load(file_), qrv::parse_error);
    EXPECT_EQ(registered(), before);
}

TEST_F(ValueText, faulty_text_changes_no_type_of_the_program) {
    cat::TypeScope const scope;
    qrv::declare_choice("ValueTextMode", {"off", "on"});
    qrv::type const axis = qrv::declare("ValueTextAxis").required<int>("x");
    value const mine = axis.make(qrv::map{{"x", 1}});
    std::string const before = registered();
    for (char const *const faulty :
         {"{ValueTextMode= choice({a= 0}); b= ;}", "{ValueTextAxis= attlist(); b= #what}"})
        EXPECT_THROW(parse(faulty), qrv::parse_error) << faulty;
    EXPECT_EQ(message_of<qrv::parse_error>([] {
                  parse("{ValueTextNew= choice({a= 0}); ValueTextMode= attlist(); "
                        "ValueTextAxis= attlist();}");
              }),
              "1:47: error: Type name from input is registered with another type-type!");
    EXPECT_TRUE(mine.conforms_to(axis));
    EXPECT_EQ(axis, qrv::type("ValueTextAxis"));
    EXPECT_EQ(dump(parse("ValueTextMode(on)")), "ValueTextMode(on)");
    EXPECT_EQ(registered(), before);
}

TEST_F(ValueText, text_that_declares_a_type_again_changes_the_registered_one) {
    cat::TypeScope const scope;
    qrv::type const mode = qrv::declare_choice("ValueTextMode", {"off", "on"});
    value const v = parse("{ValueTextMode= choice({on= 1; auto= 2}); m= ValueTextMode(auto); "
                          "ValueTextNew= choice({a= 1}); n= ValueTextNew(a)}");
    EXPECT_EQ(qrv::type("ValueTextMode"), mode);
    EXPECT_EQ(v.at("m").type_name(), "ValueTextMode");
    EXPECT_TRUE(v.at("m").conforms_to(mode));
    EXPECT_TRUE(v.at("n").conforms_to(qrv::type("ValueTextNew")));
    EXPECT_THROW(mode.make("off"), qrv::rule_error);
}

TEST_F(ValueText, declared_types_are_those_of_the_values) {
    cat::TypeScope const scope;
    value const v = parse(
        "{ValueTextA= attlist(x= attspec(type= int; flag= #REQUIRED;)); a= ValueTextA(x= 1)}");
    EXPECT_TRUE(v.at("a").conforms_to(qrv::type("ValueTextA")));
    EXPECT_TRUE(parse("ValueTextA(x= 2)").conforms_to(qrv::type("ValueTextA")));
}

TEST_F(ValueText, types_that_refer_to_themselves_stay_registered) {
    {
        cat::TypeScope const scope;
        parse(
            "{ValueTextNode= attlist(); ValueTextNode= attlist(next= attspec(type= ValueTextNode; "
            "flag= #IMPLIED)); n= ValueTextNode(next= ValueTextNode())}");
        for (int i = 0; i < 40; ++i) cat::TypeScope{}; // destroys types that nothing else refers to
        value const node = parse("ValueTextNode(next= ValueTextNode())");
        EXPECT_TRUE(node.conforms_to(qrv::type("ValueTextNode")));
        EXPECT_EQ(node.at("next").type_name(), "ValueTextNode");
    }
    parse("1"); // the end of its scope destroys the type
}

// A type whose objects want a module.
TEST_F(ValueText, a_filter_is_called_for_modules_only_during_its_reading) {
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
    auto const both = [](std::string const &path) {
        std::vector<cat::ReadError> errors;
        std::string const message = message_of<qrv::error>([&] { load(path); });
        EXPECT_EQ(message_of<qrv::error>([&] { load(path, errors); }), message);
        EXPECT_EQ(message_of<qrv::error>([&] { qrv::document::load(path); }), message);
        EXPECT_EQ(message_of<qrv::error>([&] { qrv::document::load(path, errors); }), message);
        try {
            load(path);
        } catch (qrv::parse_error const &) {
            ADD_FAILURE() << "there is no text";
        } catch (qrv::error const &) {
        }
        return message;
    };
    EXPECT_EQ(both(folder_.file("absent")),
              folder_.file("absent") + ": cannot read: No such file or directory");
    EXPECT_EQ(both(folder_.path()), folder_.path() + ": cannot read: Is a directory");
    EXPECT_EQ(both(""), ": cannot read: No such file or directory");
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

TEST_F(ValueText, a_value_without_text_is_an_error) {
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

TEST_F(ValueText, dumped_text_is_parsed_as_the_same_value) {
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

TEST_F(ValueText, a_value_without_text_leaves_the_file_unchanged) {
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
    EXPECT_EQ(message_of<qrv::error>([&] { save(5, std::string("a\0b", 3)); }),
              "not written: its name has a zero byte");
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
TEST_F(ValueText, a_full_disk_leaves_the_old_file_unchanged) {
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
