// Failures of writing by a path: every message with its code and position; handlers that throw;
// truncated text; methods that write by path themselves; cycles, depth and cost.

#include "containers/cmergebudget.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/text/read/creadreport.h"
#include "tests/support/fixture.h"
#include "tests/text/path_support.h"
#include "tests/text/read_support.h"

using path_test::flat;
using path_test::read;
using reader_test::shown;

namespace {

class SetPathFailure : public QrvTest {
  protected:
    SetPathFailure() : root_(read("{ a = {b = 1}; v = [1; 2] }")) {}

    // The messages about a string, collected in each of the possible ways, which must agree.
    std::string reported(std::string const &text, bool force = false) {
        EXPECT_FALSE(root_->setattrp(text, force)) << text;
        std::string const printed = messages();
        EXPECT_EQ(printed, "Line 1: " + thrown(text, force) +
                               "\nLine 1: Attributes scanner with *** 1 errors ***\n");
        cat::ReadReport report;
        EXPECT_FALSE(root_->setattrp(text, force)) << text;
        EXPECT_EQ(messages(), "");
        return shown(report);
    }
    // The same for a path with a value.
    std::string reported_for_path(std::string const &path, bool force = false) {
        cat::ReadReport report;
        EXPECT_FALSE(root_->setattrp(path, cat::of(5), force)) << path;
        EXPECT_EQ(messages(), "");
        return shown(report);
    }
    // The text of the error, without position, when the handler throws the scanner's code.
    std::string thrown(std::string const &text, bool force) {
        cErrHandler const before = cat::errhandler();
        cat::errhandler() = cErrHandler(0x40000000, 0, 0xFFFFFFFF);
        std::string result = "nothing";
        try {
            root_->setattrp(text, force);
        } catch (cErr const &error) {
            EXPECT_EQ(error.code(), 0x40000001u);
            result = error.as_string();
            EXPECT_EQ(result.substr(0, 8), "Line 1: ");
            result = result.substr(8);
        }
        cat::errhandler() = before;
        EXPECT_EQ(messages(), "Line 1: Attributes scanner with *** 1 errors ***\n");
        EXPECT_TRUE(text_state().idle());
        EXPECT_FALSE(cat::is_reading());
        return result;
    }
    objref root_;
};

std::string const bad_key = " 0x40000001 ERROR in setattrp: Bad no-key entry: ";
std::string const no_operator = " 0x40000001 ERROR in setattrp: Operator and value missed ";
std::string const no_separator =
    " 0x40000001 ERROR in setattrp: Separator / or operator expected, bad entry: ";
std::string const double_slash = " 0x40000001 ERROR in setattrp:  Bad final or duplicate /\n";

} // namespace

// --- each message

TEST_F(SetPathFailure, an_invalid_key_is_reported) {
    for (std::string const entry : {"=", "+=", "&=", "<<", "{", "(", "]", "12ab", "true", "#true",
                                    "#nil", "#nosuch", "-", "99999999999", ":", "1e5"}) {
        EXPECT_EQ(reported(entry + " = 1"), "1:1 " + bad_key + entry + "\n");
        EXPECT_EQ(reported("/" + entry + " = 1"), "1:2 " + bad_key + entry + "\n");
        EXPECT_EQ(reported("a/" + entry + " = 1"), "1:3 " + bad_key + entry + "\n");
        EXPECT_EQ(reported_for_path("a/" + entry), "1:3 " + bad_key + entry + "\n");
    }
    EXPECT_EQ(reported("a/; = 1"), "1:3 " + bad_key + ";\n");
    EXPECT_EQ(reported("/ /a = 1"), "1:3 " + bad_key + "/\n");
    EXPECT_EQ(reported("/; = 1"), "1:2 " + bad_key + ";\n");
}

TEST_F(SetPathFailure, one_final_slash_is_an_empty_key) {
    EXPECT_EQ(reported("a/"), "1:3 " + bad_key + "\n");
    EXPECT_EQ(reported("a/b/ "), "1:6 " + bad_key + "\n");
    EXPECT_EQ(reported_for_path("a/"), "1:3 " + bad_key + "\n");
    EXPECT_EQ(reported("a/\xe4 = 1"), "1:3 " + bad_key + "\n");
}

TEST_F(SetPathFailure, a_missing_operator_is_reported) {
    EXPECT_EQ(reported("a"), "1:1 " + no_operator + "\n");
    EXPECT_EQ(reported("a/b"), "1:3 " + no_operator + "\n");
    EXPECT_EQ(reported("a/b // = 1"), "1:3 " + no_operator + "\n");
    EXPECT_EQ(reported("a//"), "1:1 " + no_operator + "\n"); // a comment
    EXPECT_EQ(reported("a \xe4 = 1"), "1:1 " + no_operator + "\n");
    EXPECT_TRUE(root_->setattrp("a/b", cat::of(2), false));
    EXPECT_TRUE(root_->setattrp("a/b//", cat::of(3), false));
    EXPECT_EQ(flat(root_), "{a={b=3};v=[1;2]}");
}

TEST_F(SetPathFailure, another_token_after_a_key_is_reported) {
    EXPECT_EQ(reported("a b = 1"), "1:3 " + no_separator + "b\n");
    EXPECT_EQ(reported("a; b = 1"), "1:2 " + no_separator + ";\n");
    EXPECT_EQ(reported("a/b ( = 1"), "1:5 " + no_separator + "(\n");
}

TEST_F(SetPathFailure, two_separate_slashes_are_reported) {
    EXPECT_EQ(reported("a/ /b = 1"), "1:4 " + double_slash);
    EXPECT_EQ(reported("a/ /"), "1:4 " + double_slash);
    EXPECT_EQ(reported("a/b/ / / = 1"), "1:6 " + double_slash);
    EXPECT_EQ(reported_for_path("a/ /b"), "1:4 " + double_slash);
}

TEST_F(SetPathFailure, a_missing_level_is_reported) {
    std::string const missing = " 0x40000001 Call of setattrp with not existing path: ";
    EXPECT_EQ(reported("a/c/d/e = 1"), "1:3 " + missing + "/a/c\n");
    EXPECT_EQ(reported("c/d &= 1"), "1:1 " + missing + "/c\n");
    EXPECT_EQ(reported("v/7/x = 1"), "1:3 " + missing + "/v/7\n");
    EXPECT_EQ(reported("a/'x y' += {}"), "1:3 " + missing + "/a/\"x y\"\n");
    EXPECT_EQ(reported_for_path("a/c/d/e"), "1:3 " + missing + "/a/c\n");
    std::string const not_allowed = "' is not allowed in case of not existing path: ";
    std::string const op = " 0x40000001 Call of setattrp with operator '";
    for (bool force : {false, true}) {
        EXPECT_EQ(reported("a/c += 1", force), "1:3 " + op + "+=" + not_allowed + "/a/c\n");
        EXPECT_EQ(reported("a/c/d << 1", force), "1:3 " + op + "<<" + not_allowed + "/a/c\n");
        EXPECT_EQ(reported("v/2 << 1", force), "1:3 " + op + "<<" + not_allowed + "/v/2\n");
        EXPECT_EQ(reported_for_path("c/d <<", force), "1:1 " + op + "<<" + not_allowed + "/c\n");
    }
}

TEST_F(SetPathFailure, positions_refer_to_the_string) {
    EXPECT_FALSE(root_->setattrp("a/b = 2;\n  none/x = 1;\n\n zz", false));
    EXPECT_EQ(messages(), "Line 2: Call of setattrp with not existing path: /none\n"
                          "Line 4: ERROR in setattrp: Operator and value missed \n"
                          "Line 4: Attributes scanner with *** 2 errors ***\n");
    cat::ReadReport report;
    EXPECT_FALSE(root_->setattrp("a/b = 3;\n  none/x = 1;\n\n zz", false));
    EXPECT_EQ(shown(report),
              "2:3  0x40000001 Call of setattrp with not existing path: /none\n4:2 " + no_operator +
                  "\n");
}

// --- statements after a failure

TEST_F(SetPathFailure, statements_after_a_failed_one_still_run) {
    EXPECT_FALSE(root_->setattrp("a/b = word; none/x = 1; v << 3; v/0 << 4; a/b += 5", false));
    EXPECT_EQ(flat(root_), "{a={b=6};v=[1;2;3]}");
    EXPECT_EQ(messages(), "Method 'assign', type 'int', without converter from type: string\n"
                          "Line 1: Call of setattrp with not existing path: /none\n"
                          "Attr value, type 'int': Bad call of 'append'. Method does not exist!\n"
                          "Line 1: Attributes scanner with *** 1 errors ***\n");
}

TEST_F(SetPathFailure, statements_after_an_invalid_one_do_not_run) {
    EXPECT_FALSE(root_->setattrp("a/b = 2; what is this; v << 3", false));
    EXPECT_EQ(flat(root_), "{a={b=2};v=[1;2]}");
    messages();
}

TEST_F(SetPathFailure, an_unreadable_value_drops_only_its_statement) {
    for (std::string const value :
         {"nosuch(1; 2)", "#none", "99999999999", "#cRef(/a)", "#cRef 1", "int(word)"}) {
        root_ = read("{ a = {b = 1}; v = [1; 2] }");
        messages();
        EXPECT_FALSE(root_->setattrp("a/b = " + value + "; v << 3", false)) << value;
        EXPECT_EQ(flat(root_), "{a={b=1};v=[1;2;3]}") << value;
        EXPECT_NE(messages().find("errors ***"), std::string::npos) << value;
    }
}

// The reader reports errors and continues: such a value is stored.
TEST_F(SetPathFailure, a_value_with_errors_inside_is_stored) {
    EXPECT_TRUE(root_->setattrp("a/b == 5; v << 3 v << {x = nosuch(1); y = 4}", false));
    EXPECT_EQ(flat(root_), "{a={b=5};v=[1;2;3;{y=4}]}");
    EXPECT_EQ(messages(), "Line 1: Wrong placed '=', path : \n"
                          "Line 1: : Missing delimiter after value: 3\n"
                          "Line 1: ( /x ): Value with unknown type='nosuch\n"
                          "Cannot insert key =x\n"
                          "Line 1: Attributes scanner with *** 3 errors ***\n");
}

// --- a living report

TEST_F(SetPathFailure, a_report_also_receives_the_errors_of_the_operations) {
    cat::ReadReport report;
    EXPECT_FALSE(root_->setattrp("a/b = word;\n v/9 &= 1; v << 3", false));
    EXPECT_EQ(shown(report),
              "1:7  0x41800000 Method 'assign', type 'int', without converter from type: string\n"
              "2:9  0x40020000 Setattr in object type 'vector', key '9':   Key is OUT OF RANGE\n");
    EXPECT_EQ(messages(), "");
    EXPECT_EQ(flat(root_), "{a={b=1};v=[1;2;3]}");
}

TEST_F(SetPathFailure, a_report_shortens_long_paths) {
    std::string path = "a/none";
    for (int i = 0; i < 2000; ++i) path = "long/" + path;
    EXPECT_TRUE(root_->setattrp(path + " &= {}", true));
    cat::ReadReport report;
    EXPECT_FALSE(root_->setattrp(path + "/x/y = 1", false));
    ASSERT_EQ(report.count(), 1u);
    EXPECT_LT(report.entries()[0].text.size(), 1100u);
    EXPECT_NE(report.entries()[0].text.find("g/long/long/a/none/x"), std::string::npos);
}

// --- handlers that throw

TEST_F(SetPathFailure, each_kind_of_error_may_throw_in_the_middle) {
    for (std::string const wrong :
         {"= 1", "x", "x y = 1", "x/ /y = 1", "none/x = 1", "none << 1", "a/b = word", "v/9 = 1",
          "v/x = 1", "a/b = nosuch(1)", "a/b = {x = #none}", "a/b = 1 2", "v/0/x = 1", "a/b << 1",
          "x/"}) {
        cErrHandler const before = cat::errhandler();
        root_ = read("{ a = {b = 1}; v = [1; 2] }");
        cat::errhandler() = cErrHandler(0xC0000000, 0, 0);
        EXPECT_THROW(root_->setattrp("a/b = 2; " + wrong + "; v << 3", false), cErr) << wrong;
        EXPECT_TRUE(text_state().idle()) << wrong;
        EXPECT_FALSE(cat::is_reading()) << wrong;
        EXPECT_EQ(cat::cMergeBudget::current(), nullptr) << wrong;
        EXPECT_EQ(flat(root_), "{a={b=2};v=[1;2]}") << wrong;
        cat::errhandler() = before;
        EXPECT_TRUE(root_->setattrp("v << {x = 1; y = #cRef(/x)}", false)) << wrong;
        EXPECT_EQ(flat(root_), "{a={b=2};v=[1;2;{x=1;y=1}]}") << wrong;
        messages();
    }
}

TEST_F(SetPathFailure, a_cleared_error_lets_the_operation_continue) {
    root_->getattrp("a/b")->setflags(of_const);
    cat::errhandler() = cErrHandler(0, 0x40000000, 0xFFFFFFFF);
    EXPECT_TRUE(root_->setattrp("a/b = 7", false));
    EXPECT_EQ(flat(root_->getattrp("a/b")), "7");
}

// --- texts cut anywhere

namespace {
std::string const rich = "/*c*/ a/b = 5; // end\n /new/'x y'/-3 &= {p = [1; 2]; q = #cRef(/p)},,"
                         "v << int(7); v += <8; 9>; m += {k = \"t\\\"u\"} n = true "
                         "m/k &= #nil; v/0 += 0x1f; 1.5/2.5f = x; none << 1; v/ /x = 2; a = 3";
}

TEST_F(SetPathFailure, a_string_may_be_truncated_after_every_character) {
    for (size_t length = 0; length <= rich.size(); ++length)
        for (bool force : {false, true}) {
            std::string const text = rich.substr(0, length);
            objref const root = read("{ a = {b = 1}; v = [1; 2] }");
            root->setattrp(text, force);
            ASSERT_TRUE(text_state().idle()) << text;
            ASSERT_FALSE(cat::is_reading()) << text;
            root->setattrp(text, cat::of(1), force);
            (void)root->getattrp(text);
            ASSERT_TRUE(text_state().idle()) << text;
            ASSERT_TRUE(root->setattrp("last = 1", false)) << text;
            ASSERT_EQ(flat(root->getattrp("last")), "1") << text;
        }
    messages();
}

// Every byte at every position of a short string: the work is bounded, and no object is left.
TEST_F(SetPathFailure, any_byte_may_be_at_any_position) {
    std::string const text = "a/b = 5; v << {x = 1}";
    for (size_t place = 0; place <= text.size(); ++place)
        for (int byte = 0; byte < 256; ++byte) {
            std::string changed = text;
            changed.insert(place, 1, static_cast<char>(byte));
            objref const root = read("{ a = {b = 1}; v = [1; 2] }");
            root->setattrp(changed, true);
            ASSERT_TRUE(text_state().idle()) << changed;
        }
    messages();
}

// --- methods that write themselves

namespace {
objref *the_root = nullptr;

class cTheRoot {
  public:
    explicit cTheRoot(objref &root) { the_root = &root; }
    cTheRoot(cTheRoot const &) = delete;
    cTheRoot &operator=(cTheRoot const &) = delete;
    ~cTheRoot() { the_root = nullptr; }
};

objref counting_getattr(objref obj, objref key) {
    (*the_root)->setattrp("log << " + cat::as_text(key) + "; none/x/y = 1", false);
    return cTomMap::getattr(obj, key);
}

bool dropping_setattr(cObj &obj, objref &key, objref &value) {
    *the_root = nullptr;
    return cTomMap::setattr(obj, key, value);
}

objref clearing_getattr(objref obj, objref key) {
    objref const value = cTomMap::getattr(obj, key);
    dynamic_cast<cMapObj &>(**the_root).clear();
    return value;
}

bool is_reading_seen = false;
bool budget_seen = false;
bool inner_budget_seen = false;

bool looking_setattr(cObj &obj, objref &key, objref &value) {
    is_reading_seen = cat::is_reading();
    budget_seen = cat::cMergeBudget::current() != nullptr;
    return cTomMap::setattr(obj, key, value);
}

bool looking_read(cObj &, objref &) {
    inner_budget_seen = cat::cMergeBudget::current() != nullptr;
    return true;
}

bool reading_setattr(cObj &obj, objref &key, objref &value) {
    objref const before = cat::type_int().tmember("read");
    cat::type_int().set_tmember("read", make<cExeMember>(looking_read));
    path_test::read("{ a = int(1) }");
    cat::type_int().set_tmember("read", before);
    return looking_setattr(obj, key, value);
}
} // namespace

TEST_F(SetPathFailure, a_method_may_write_by_path_itself) {
    cTheRoot const named(root_);
    EXPECT_TRUE(root_->setattrp("log = []; w = {x = {}}", true));
    root_->getattrp("w")->set_omember("getattr", make<cExeMember>(counting_getattr));
    EXPECT_TRUE(root_->setattrp("w/x/p = 1; w/x/q = 2; w/r = 3", true));
    EXPECT_EQ(flat(root_), "{a={b=1};v=[1;2];log=[x;x;r];w={x={p=1;q=2};r=3}}");
    std::string const reported = "Line 1: Call of setattrp with not existing path: /none\n"
                                 "Line 1: Attributes scanner with *** 1 errors ***\n";
    EXPECT_EQ(messages(), reported + reported + reported);
    EXPECT_TRUE(text_state().idle());
}

TEST_F(SetPathFailure, a_method_may_drop_the_root) {
    for (bool in_text : {false, true}) {
        root_ = read("{ w = {}; z = 1 }");
        cTheRoot const named(root_);
        root_->getattrp("w")->set_omember("setattr", make<cExeMember>(dropping_setattr));
        cObj &root = *root_;
        if (in_text)
            EXPECT_TRUE(root.setattrp("w/x = 1; z += 1; y = 3", true));
        else
            EXPECT_TRUE(root.setattrp("w/x", cat::of(1), true));
        EXPECT_EQ(root_, nullptr);
    }
    EXPECT_EQ(messages(), "");
}

TEST_F(SetPathFailure, a_method_may_clear_the_tree_during_the_walk) {
    for (std::string const op : {"=", "&=", "+=", "<<"}) {
        root_ = read("{ w = {x = {y = {}}}; z = 1 }");
        cTheRoot const named(root_);
        root_->getattrp("w")->set_omember("getattr", make<cExeMember>(clearing_getattr));
        EXPECT_TRUE(root_->setattrp("w/x/y " + op + " {k = 1}", true)) << op;
        EXPECT_EQ(flat(root_), "{}") << op;
    }
    EXPECT_EQ(messages(), "");
}

TEST_F(SetPathFailure, operations_of_a_string_have_no_merge_budget) {
    root_->getattrp("a")->set_omember("setattr", make<cExeMember>(reading_setattr));
    EXPECT_TRUE(root_->setattrp("a/c = 1", true));
    EXPECT_TRUE(is_reading_seen);
    EXPECT_FALSE(budget_seen);
    EXPECT_TRUE(inner_budget_seen) << "text that is read during the operation has a budget";
    EXPECT_TRUE(root_->setattrp("a/d", cat::of(1), true));
    EXPECT_FALSE(is_reading_seen);
    EXPECT_FALSE(budget_seen);
}

TEST_F(SetPathFailure, a_list_may_append_the_dissection_of_a_string_in_it) {
    objref list = make<cVectorObj>();
    list->append(cat::of("a,b,c"));
    auto &first = dynamic_cast<cObjD<std::string> &>(*list->getattr(own_key(0)));
    list->append_dissection(first.val(), ',');
    EXPECT_EQ(flat(list), "[\"a,b,c\";a;b;c]");
}

// --- cycles, depth, cost

TEST_F(SetPathFailure, a_program_may_put_an_object_into_itself) {
    EXPECT_TRUE(root_->setattrp("x", root_, true));
    EXPECT_TRUE(root_->setattrp("x/x/x/y = 5; x/x/v << 6", true));
    EXPECT_EQ(flat(root_->getattrp("x/x/y")), "5");
    EXPECT_EQ(flat(root_->getattrp("v")), "[1;2;6]");
    EXPECT_TRUE(root_->setattrp("x", root_, true)); // assigned to itself
    EXPECT_EQ(root_->getattrp("x/y/"), cat::bad());
    messages();
    EXPECT_FALSE(root_->setattrp("a/deep", root_, true));
    EXPECT_EQ(messages(), "Setattr in object type 'map', key 'deep':  Trial to establish cRef in "
                          "cycle\n");
    EXPECT_TRUE(root_->setattrp("v <<", root_->getattrp("v"), true));
    EXPECT_TRUE(root_->setattrp("v/3/3/0 = 7", true));
    EXPECT_EQ(flat(root_->getattrp("v/0")), "7");
    dynamic_cast<cMapObj &>(*root_->getattrp("v")).clear();
    dynamic_cast<cMapObj &>(*root_).clear();
}

TEST_F(SetPathFailure, a_string_cannot_name_the_tree_that_it_changes) {
    EXPECT_TRUE(root_->setattrp("a += {x = #cRef(/a)}", true));
    EXPECT_FALSE(root_->setattrp("v << #cRef(/v)", true));
    EXPECT_FALSE(root_->setattrp("v &= #cRef(/a)", true));
    EXPECT_EQ(flat(root_), "{a={b=1};v=[1;2]}");
    messages();
}

namespace {
std::string nested_text;
std::string nested_result;

// A `read` method. Applies nested_text to a map of two objects that the text being read has already
// created.
bool nested_read(cObj &, objref &) {
    objref v, m;
    cObj::readobj("#cRef(/v)", v);
    cObj::readobj("#cRef(/m)", m);
    objref const holder = make<cMapObj>();
    holder->setattr(own_key("v"), v);
    holder->setattr(own_key("m"), m);
    nested_result = holder->setattrp(nested_text, true) ? "true " : "false ";
    nested_result += flat(holder);
    return true;
}
} // namespace

TEST_F(SetPathFailure, statements_during_another_reading_create_no_cycle) {
    objref const before = cat::type_int().tmember("read");
    cat::type_int().set_tmember("read", make<cExeMember>(nested_read));
    for (std::string const text :
         {"v << #cRef(/v)", "v/0 &= #cRef(/v)", "v/1 = #cRef(/v)", "v << {x = #cRef(/v)}",
          "m/x = #cRef(/m)", "m/x &= #cRef(/m)", "m/k = #cRef(/m)", "m += {x = #cRef(/m)}",
          "m << [[#cRef(/m)]]"}) {
        nested_text = text;
        objref tree;
        EXPECT_EQ(cObj::readobj("{ v = [1]; m = {k = 1}; i = int(1) }", tree), 0);
        EXPECT_EQ(nested_result, "false {v=[1];m={k=1}}") << text;
        EXPECT_NE(messages().find("Trial to establish cRef in cycle"), std::string::npos) << text;
    }
    cat::type_int().set_tmember("read", before);
}

TEST_F(SetPathFailure, a_path_may_have_a_hundred_thousand_levels) {
    std::string path = "a";
    for (int i = 0; i < 100000; ++i) path += "/a";
    objref const root = read("{}");
    EXPECT_FALSE(root->setattrp(path, cat::of(1), false));
    EXPECT_FALSE(root->setattrp(path + " << 1", true));
    EXPECT_EQ(flat(root), "{}");
    messages();
    EXPECT_TRUE(root->setattrp(path, cat::of(1), true));
    EXPECT_EQ(flat(root->getattrp(path)), "1");
    EXPECT_TRUE(root->setattrp(path + " += 2", false));
    EXPECT_EQ(flat(root->getattrp(path)), "3");
    EXPECT_FALSE(root->setattrp(path + "/b/c = 2", false));
    messages();
    EXPECT_TRUE(root->setattrp(path + " &= {}; " + path + "/b/c/d = 4", true));
    EXPECT_EQ(flat(root->getattrp(path)), "{b={c={d=4}}}");
    EXPECT_EQ(messages(), "");
}

// Each of these values doubles a vector repeatedly. All values of one string share one budget.
TEST_F(SetPathFailure, the_values_of_a_string_share_the_merge_budget) {
    std::string value = "{ m = {v = [1; 2]}; ";
    for (int i = 0; i < 25; ++i) value += "m = {v = #cRef(/m/v)}; ";
    value += "}";
    std::string text;
    for (int i = 0; i < 40; ++i) text += "list << " + value + ";\n";
    root_ = read("{ list = [] }");
    cat::ReadReport report;
    EXPECT_TRUE(root_->setattrp(text, false));
    int values = 0;
    for (int i = 0; i < 40; ++i) {
        objref const v = root_->getattrp("list/" + std::to_string(i) + "/m/v");
        values += dynamic_cast<cMapObj &>(*v).size();
    }
    EXPECT_GT(values, 200000);
    EXPECT_LT(values, 1100000);
    ASSERT_GT(report.count(), 500u);
    EXPECT_EQ(report.entries()[0].text, "Too much merged, path : /m");
}
