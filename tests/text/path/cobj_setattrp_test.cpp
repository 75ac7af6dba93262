// Writing by a path: the four operators on every kind of object, and edge cases. Failures are in
// cobj_setattrp_failure_test.cpp.

#include "qrv/containers/cattspec.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/diagnostics/ctrace.h"
#include "tests/support/fixture.h"
#include "tests/text/path_support.h"

#include <vector>

using path_test::flat;
using path_test::read;

namespace {

class SetPath : public QrvTest {
  protected:
    // Executes statements on a tree in which the value of a key `c` is const. Returns the result
    // and the tree, and the messages on further lines.
    std::string after(std::string const &tree, std::string const &text, bool force) {
        objref const root = read(tree);
        if (objref const constant = root->getattr(own_key("c")); cObj::is_good(constant))
            constant->setflags(of_const);
        messages();
        bool const result = root->setattrp(text, force);
        std::string const reported = messages();
        return (result ? "true " : "false ") + flat(root) + (reported.empty() ? "" : "\n") +
               reported;
    }
    std::string after(std::string const &tree, std::string const &text) {
        std::string const with = after(tree, text, true);
        EXPECT_EQ(with, after(tree, text, false)) << text;
        return with;
    }
};

class SetPathEdge : public SetPath {};

std::string one_error(std::string const &text) {
    return "\nLine 1: " + text + "\nLine 1: Attributes scanner with *** 1 errors ***\n";
}

std::string missing(std::string const &path) {
    return one_error("Call of setattrp with not existing path: " + path);
}

std::string not_allowed(std::string const &op, std::string const &path) {
    return one_error("Call of setattrp with operator '" + op +
                     "' is not allowed in case of not existing path: " + path);
}

objref number(int n) { return cat::of(n); }

} // namespace

// --- the edge cases

TEST_F(SetPathEdge, a_missing_level_is_created_and_the_value_shared) {
    objref const root = make<cMapObj>();
    objref const value = number(5);
    EXPECT_TRUE(root->setattrp("a/b", value, true));
    EXPECT_EQ(flat(root), "{a={b=5}}");
    EXPECT_EQ(&root->getattrp("a")->type(), &cat::type_map());
    EXPECT_EQ(root->getattrp("a/b").get(), value.get());
    EXPECT_EQ(messages(), "");
}

TEST_F(SetPathEdge, without_force_a_missing_level_is_reported) {
    objref const root = make<cMapObj>();
    EXPECT_FALSE(root->setattrp("a/b", number(5), false));
    EXPECT_EQ(flat(root), "{}");
    EXPECT_EQ("\n" + messages(), missing("/a"));
}

TEST_F(SetPathEdge, semicolons_and_commas_separate_statements) {
    objref const root = read("{ x = 7; y = 8; z = 4 }");
    objref const x = root->getattrp("x"), y = root->getattrp("y"), z = root->getattrp("z");
    EXPECT_TRUE(root->setattrp("x = 1; y &= 2, z += 3", true));
    EXPECT_EQ(flat(root), "{x=1;y=2;z=7}");
    EXPECT_EQ(root->getattrp("x").get(), x.get());
    EXPECT_NE(root->getattrp("y").get(), y.get());
    EXPECT_EQ(root->getattrp("z").get(), z.get());
    EXPECT_EQ(messages(), "");
}

TEST_F(SetPathEdge, appending_to_nothing_is_not_allowed) {
    EXPECT_EQ(after("{}", "v << 1"), "false {}" + not_allowed("<<", "/v"));
}

TEST_F(SetPathEdge, adding_a_map_creates_the_target_map) {
    EXPECT_EQ(after("{}", "m += {a=1}", true), "true {m={a=1}}");
    EXPECT_EQ(after("{}", "m += {a=1}", false), "false {}" + missing("/m"));
}

TEST_F(SetPathEdge, assigning_keeps_the_object_and_replacing_does_not) {
    objref const root = read("{ a = 1; m = {b = 2} }");
    objref const a = root->getattrp("a"), m = root->getattrp("m");
    EXPECT_TRUE(root->setattrp("a = 5; m = {c = 3}", false));
    EXPECT_EQ(flat(a), "5");
    EXPECT_EQ(flat(m), "{c=3}");
    EXPECT_TRUE(root->setattrp("a &= 6; m &= {d = 4}", false));
    EXPECT_EQ(flat(a), "5");
    EXPECT_EQ(flat(m), "{c=3}");
    EXPECT_EQ(flat(root), "{a=6;m={d=4}}");
}

TEST_F(SetPathEdge, dissection_keeps_empty_pieces_except_at_the_end) {
    objref const list = make<cVectorObj>();
    list->append_dissection("a,b,,c,", ',');
    EXPECT_EQ(flat(list), "[a;b;\"\";c]");
    EXPECT_EQ(&list->getattr(own_key(0))->type(), &cat::type_string());
}

TEST_F(SetPathEdge, a_path_without_a_key_writes_nothing) {
    objref const root = read("{ a = 1 }");
    for (char const *path : {"", " ", "/", ";", ";,;", "// a", "/* a */", ",/", "\xe4", ";/\xe4"}) {
        EXPECT_FALSE(root->setattrp(path, number(5), true)) << path;
        EXPECT_TRUE(root->setattrp(path, true)) << path;
    }
    EXPECT_EQ(flat(root), "{a=1}");
    EXPECT_EQ(messages(), "");
}

// --- the operators, at every kind of object

TEST_F(SetPath, assignment_works_on_every_kind_of_object) {
    EXPECT_EQ(after("{m={p=1}}", "m = {q=7}"), "true {m={q=7}}");
    EXPECT_EQ(after("{m={p=1}}", "m = [8]"), "true {m={0=8}}");
    EXPECT_EQ(after("{m={p=1}}", "m = 5"), "false {m={p=1}}");
    EXPECT_EQ(after("{v=[1;2]}", "v = [8]"), "true {v=[8]}");
    EXPECT_EQ(after("{v=[1;2]}", "v = {q=7}"), "true {v=[7]}");
    EXPECT_EQ(after("{v=[1;2]}", "v = 5"), "false {v=[1;2]}");
    EXPECT_EQ(after("{s=<1;2>}", "s = <3;3>"), "true {s=<3>}");
    EXPECT_EQ(after("{s=<1;2>}", "s = 5"), "true {s=<>}");
    EXPECT_EQ(after("{i=3}", "i = 5"), "true {i=5}");
    EXPECT_EQ(after("{i=3}", "i = 5.75"), "true {i=5}");
    EXPECT_EQ(after("{i=3}", "i = word"),
              "false {i=3}\nMethod 'assign', type 'int', without converter from type: string\n");
    EXPECT_EQ(after("{t=text}", "t = word"), "true {t=word}");
    EXPECT_EQ(after("{t=text}", "t = 5"),
              "false {t=text}\nMethod 'assign', type 'string', without converter from type: int\n");
    EXPECT_EQ(after("{c=9}", "c = 5"),
              "false {c=9}\nObject is const. Method 'assign' called from type: int\n");
    EXPECT_EQ(after("{}", "none = 5"), "true {none=5}");
    EXPECT_EQ(after("[1]", "0 = 5"), "true [5]");
    EXPECT_EQ(after("[1]", "1 = 5"), "true [1;5]");
    EXPECT_EQ(after("[1]", "2 = 5"),
              "false [1]\nSetattr in object type 'vector', key '2':   Key is OUT OF RANGE\n");
    EXPECT_EQ(after("<1>", "1 = 5"), "true <1;5>");
    EXPECT_EQ(after("<1>", "1 = 1"), "true <1>");
}

// Nil counts as a good value, and accepts nothing.
TEST_F(SetPath, only_replacing_changes_nil) {
    EXPECT_EQ(after("{n=#nil}", "n = 5"), "false {n=#nil}");
    EXPECT_EQ(after("{n=#nil}", "n += 5"), "false {n=#nil}");
    EXPECT_EQ(after("{n=#nil}", "n << 5"),
              "false {n=#nil}\nAttr value, type 'niltype': Bad call of 'append'. Method does not "
              "exist!\n");
    EXPECT_EQ(after("{n=#nil}", "n &= 5"), "true {n=5}");
    EXPECT_EQ(after("{n=#nil}", "n/k = 5"), "false {n=#nil}");
    EXPECT_EQ(after("{n=#nil}", "n/k &= 5"), "false {n=#nil}");
    EXPECT_EQ(after("{n=#nil}", "n/k/l = 5", true), "false {n=#nil}" + missing("/n/k"));
    EXPECT_EQ(after("{n=#nil}", "n/k/l = 5", false), "false {n=#nil}" + missing("/n/k"));
}

TEST_F(SetPath, nil_as_a_value_is_stored_but_not_assigned) {
    EXPECT_EQ(after("{a=1}", "a = #nil"), "true {a=1}");
    EXPECT_EQ(after("{a=1}", "a += #nil"), "true {a=1}");
    EXPECT_EQ(after("{a=1}", "a &= #nil"), "true {a=#nil}");
    EXPECT_EQ(after("{}", "a = #nil"), "true {a=#nil}");
    EXPECT_EQ(after("{v=[]}", "v << #nil"), "true {v=[#nil]}");
}

TEST_F(SetPath, replacing_works_on_every_kind_of_object) {
    for (std::string const present : {"{m={p=1}}", "{m=[1;2]}", "{m=<1;2>}", "{m=3}", "{m=text}",
                                      "{m=#nil}", "{m=2.5}", "{}"}) {
        EXPECT_EQ(after(present, "m &= 5"), "true {m=5}") << present;
        EXPECT_EQ(after(present, "m &= {q=7}"), "true {m={q=7}}") << present;
        EXPECT_EQ(after(present, "m &= word"), "true {m=word}") << present;
    }
    EXPECT_EQ(after("{c=9}", "c &= 5"), "true {c=5}");
    EXPECT_EQ(after("[1;2]", "0 &= {q=7}"), "true [{q=7};2]");
    EXPECT_EQ(after("[1;2]", "2 &= x"), "true [1;2;x]");
    EXPECT_EQ(after("[1;2]", "-1 &= x"),
              "false [1;2]\nSetattr in object type 'vector', key '-1':   Key is OUT OF RANGE\n");
    EXPECT_EQ(after("[1;2]", "a &= x"),
              "false [1;2]\nSetattr in object type 'vector', key 'a':   Key of vector or set must "
              "be 'int'\n");
    EXPECT_EQ(after("<1;2>", "0 &= 2"), "true <1;2>");
    EXPECT_EQ(after("<1;2>", "0 &= 3"), "true <3;2>");
}

TEST_F(SetPath, adding_works_on_every_kind_of_object) {
    EXPECT_EQ(after("{m={p=1}}", "m += {p=7; q=8}"), "true {m={p=1;q=8}}");
    EXPECT_EQ(after("{m={p=1}}", "m += [8]"), "true {m={p=1;0=8}}");
    EXPECT_EQ(after("{m={p=1}}", "m += 5"), "true {m={p=1}}");
    EXPECT_EQ(after("{v=[1;2]}", "v += [8; 9]"), "true {v=[1;2;8;9]}");
    EXPECT_EQ(after("{v=[1;2]}", "v += {p=7}"), "true {v=[1;2;7]}");
    EXPECT_EQ(after("{v=[1;2]}", "v += 5"), "true {v=[1;2]}");
    EXPECT_EQ(after("{s=<1;2>}", "s += <2;3>"), "true {s=<1;2;3>}");
    EXPECT_EQ(after("{i=3}", "i += 5"), "true {i=8}");
    EXPECT_EQ(after("{i=3}", "i += [8]"),
              "false {i=3}\nMethod 'add', type 'int', without converter from type: vector\n");
    EXPECT_EQ(after("{t=text}", "t += word"), "true {t=textword}");
    EXPECT_EQ(after("{c=9}", "c += 5"),
              "false {c=9}\nObject is const. Method 'add' called from type: int\n");
    EXPECT_EQ(after("[1;2]", "1 += 5"), "true [1;7]");
}

TEST_F(SetPath, adding_to_nothing_creates_levels_only_for_a_map) {
    EXPECT_EQ(after("{}", "a += 5"), "false {}" + not_allowed("+=", "/a"));
    EXPECT_EQ(after("{}", "a += [1]"), "false {}" + not_allowed("+=", "/a"));
    EXPECT_EQ(after("{}", "a += <1>"), "false {}" + not_allowed("+=", "/a"));
    EXPECT_EQ(after("{}", "a/b += 5"), "false {}" + not_allowed("+=", "/a"));
    EXPECT_EQ(after("{}", "a/b += {x=1}", false), "false {}" + missing("/a"));
    EXPECT_EQ(after("{}", "a/b += {x=1}", true), "true {a={b={x=1}}}");
    EXPECT_EQ(after("[1]", "1 += {x=1}", true), "true [1;{x=1}]");
    EXPECT_EQ(after("[1]", "1 += {x=1}", false), "false [1]" + missing("/1"));
}

TEST_F(SetPath, appending_works_on_every_kind_of_object) {
    EXPECT_EQ(after("{m={p=1}}", "m << 5; m << 6"), "true {m={p=1;0=5;1=6}}");
    EXPECT_EQ(after("{v=[1;2]}", "v << 5"), "true {v=[1;2;5]}");
    EXPECT_EQ(after("{v=[1;2]}", "v << [5]"), "true {v=[1;2;[5]]}");
    EXPECT_EQ(after("{s=<1;2>}", "s << 5"), "true {s=<1;2;5>}");
    std::string const no_method = "Bad call of 'append'. Method does not exist!\n";
    EXPECT_EQ(after("{i=3}", "i << 5"), "false {i=3}\nAttr value, type 'int': " + no_method);
    EXPECT_EQ(after("{t=x}", "t << 5"), "false {t=x}\nAttr value, type 'string': " + no_method);
    EXPECT_EQ(after("{c=9}", "c << 5"), "false {c=9}\nAttr value, type 'int': " + no_method);
    EXPECT_EQ(after("{}", "a/b << 5"), "false {}" + not_allowed("<<", "/a"));
    EXPECT_EQ(after("{a={}}", "a/b << 5"), "false {a={}}" + not_allowed("<<", "/a/b"));
    EXPECT_EQ(after("[1]", "1 << 5"), "false [1]" + not_allowed("<<", "/1"));
}

TEST_F(SetPath, appending_a_member_to_a_set_again_fails_silently) {
    EXPECT_EQ(after("{s=<1;2>}", "s << 2"), "false {s=<1;2>}");
    EXPECT_EQ(after("{s=<1;2>}", "s += <2>"), "true {s=<1;2>}");
    EXPECT_EQ(after("{s=<1;2>}", "s/2 &= 2"), "true {s=<1;2>}");
}

TEST_F(SetPath, every_operator_creates_levels_only_with_force) {
    for (std::string const op : {"=", "&="}) {
        EXPECT_EQ(after("{m={}}", "m/k/l " + op + " 5", true), "true {m={k={l=5}}}");
        EXPECT_EQ(after("{m={}}", "m/k/l " + op + " 5", false), "false {m={}}" + missing("/m/k"));
        EXPECT_EQ(after("{}", "a/b/c/d " + op + " 5", true), "true {a={b={c={d=5}}}}");
        EXPECT_EQ(after("{}", "a/b/c/d " + op + " 5", false), "false {}" + missing("/a"));
        EXPECT_EQ(after("{v=[]}", "v/0/x " + op + " 5", true), "true {v=[{x=5}]}");
    }
    EXPECT_EQ(after("{i=3}", "i/k &= 5"),
              "false {i=3}\nCall of missed standard method 'setattr' in type: int\n");
    EXPECT_EQ(after("{i=3}", "i/k = 5"),
              "false {i=3}\nCall of missed standard method 'getattr' in type: int\n"
              "Call of missed standard method 'setattr' in type: int\n");
}

TEST_F(SetPath, a_level_that_cannot_be_created_stops_the_walk) {
    EXPECT_EQ(after("[1]", "5/x = 2", true),
              "false [1]\nSetattr in object type 'vector', key '5':   Key is OUT OF RANGE" +
                  missing("/5"));
    objref const root = read("{ m = {} }");
    root->getattrp("m")->setflags(of_const_keys);
    EXPECT_FALSE(root->setattrp("m/k/l = 1", true));
    EXPECT_EQ(messages(),
              "Setattr in object type 'map', key 'k':   Flag of const key set offended" +
                  missing("/m/k"));
    EXPECT_EQ(flat(root), "{m={}}");
}

// --- one value

TEST_F(SetPath, an_operator_in_the_path_is_used) {
    objref const root = read("{ a = {b = 3}; v = [1] }");
    objref const b = root->getattrp("a/b");
    EXPECT_TRUE(root->setattrp("a/b += ", number(4), true));
    EXPECT_EQ(flat(b), "7");
    EXPECT_TRUE(root->setattrp("v <<", number(2), false));
    EXPECT_TRUE(root->setattrp("a/b =", number(9), false));
    EXPECT_EQ(flat(b), "9");
    objref const stored = number(1);
    EXPECT_TRUE(root->setattrp("a/b &=", stored, false));
    EXPECT_EQ(root->getattrp("a/b").get(), stored.get());
    EXPECT_EQ(flat(root), "{a={b=1};v=[1;2]}");
    EXPECT_FALSE(root->setattrp("none <<", number(2), true));
    EXPECT_EQ("\n" + messages(), not_allowed("<<", "/none"));
}

TEST_F(SetPath, text_after_the_operator_is_ignored) {
    objref const root = read("{ a = 3 }");
    EXPECT_TRUE(root->setattrp("a = }{ nonsense ((", number(4), false));
    EXPECT_EQ(flat(root), "{a=4}");
    EXPECT_EQ(messages(), "");
}

TEST_F(SetPath, separators_may_also_precede_a_single_path) {
    objref const root = read("{}");
    EXPECT_TRUE(root->setattrp(";,; /a", number(4), false));
    EXPECT_EQ(flat(root), "{a=4}");
}

TEST_F(SetPath, a_null_value_removes_only_by_replacing) {
    objref const root = read("{ a = 3; v = [1; 2] }");
    objref const nothing;
    EXPECT_TRUE(root->setattrp("a", nothing, true)); // assigning null changes nothing
    EXPECT_FALSE(root->setattrp("none", nothing, true));
    EXPECT_TRUE(root->setattrp("a +=", nothing, true));
    EXPECT_FALSE(root->setattrp("v <<", nothing, true));
    EXPECT_EQ(flat(root), "{a=3;v=[1;2]}");
    EXPECT_TRUE(root->setattrp("a &=", nothing, true));
    EXPECT_TRUE(root->setattrp("v/0 &=", nothing, true));
    EXPECT_EQ(flat(root), "{v=[2]}");
    EXPECT_EQ(messages(), "");
}

TEST_F(SetPath, assigning_does_not_store_bad_values) {
    objref const root = read("{ a = 3 }");
    for (objref const &value : {cat::bad(), cat::badfind()}) {
        EXPECT_FALSE(root->setattrp("b", value, true));
        EXPECT_EQ(flat(root), "{a=3}");
    }
}

TEST_F(SetPath, nil_has_no_attributes_to_write) {
    EXPECT_FALSE(cat::nil()->setattrp("a", number(1), true));
    EXPECT_FALSE(cat::nil()->setattrp("a &= 1", true));
    EXPECT_EQ(messages(), "");
    EXPECT_FALSE(cat::nil()->setattrp("a/b", number(1), true));
    EXPECT_EQ("\n" + messages(), missing("/a"));
}

TEST_F(SetPath, an_object_on_the_stack_can_be_written_to) {
    cMapObj map;
    EXPECT_TRUE(map.setattrp("a/b = 1; a/c = 2", true));
    EXPECT_TRUE(map.setattrp("a/d", number(3), true));
    EXPECT_EQ(cat::as_text(map.getattrp("a/d")), "3");
    EXPECT_EQ(map.size(), 1);
}

TEST_F(SetPath, specifications_apply_at_the_end_of_a_path) {
    objref const root = read("{ m = {} }");
    auto &map = dynamic_cast<cMapObj &>(*root->getattrp("m"));
    map.set_attspec("n", specref::adopt(new cAttspec(number(42), asf_fixtype)));
    EXPECT_EQ(flat(root->getattrp("m/n")), "42");
    EXPECT_FALSE(root->setattrp("m/n &= word", true));
    EXPECT_EQ(messages(), "FIXED TYPE attribute, key 'n' in object type 'map'\n");
    EXPECT_TRUE(root->setattrp("m/n &= 6", true));
    EXPECT_EQ(flat(root->getattrp("m/n")), "6");
}

// --- strings of statements

TEST_F(SetPath, an_empty_string_succeeds) {
    EXPECT_EQ(after("{a=1}", ""), "true {a=1}");
    EXPECT_EQ(after("{a=1}", " \n ; , // end"), "true {a=1}");
}

TEST_F(SetPath, many_separators_may_be_between_statements) {
    EXPECT_EQ(after("{}", ";;a = 1;;,; b = 2,,"), "true {a=1;b=2}");
    EXPECT_EQ(after("{}", "a = 1\n;\nb = 2"), "true {a=1;b=2}");
    EXPECT_EQ(after("{}", "a = {} b = [] c = <> d = int(4) e = 5"),
              "true {a={};b=[];c=<>;d=4;e=5}"); // a bracket ends a value
}

TEST_F(SetPath, values_end_as_in_files) {
    EXPECT_EQ(after("{}", "a = 1 } b = 2 ] c = 3 > d = 4"), "true {a=1;b=2;c=3;d=4}");
}

TEST_F(SetPath, comments_are_ignored_everywhere) {
    EXPECT_EQ(after("{}", "/*1*/a/*2*//b//3\n = /*5*/ 1 /*6*/; // 7\n /*8*/ c = 2 // 9", true),
              "true {a={b=1};c=2}");
    EXPECT_EQ(after("{}", "a // the rest / b\n = 1"), "true {a=1}");
}

TEST_F(SetPath, keys_follow_the_rules_of_files) {
    EXPECT_EQ(after("{}", "\"a b\" = 1; 'c' = 2; \"d\\\"e\" = 3; f_1 = 4"),
              "true {\"a b\"=1;c=2;\"d\\\"e\"=3;f_1=4}");
    EXPECT_EQ(after("{a=1}", "\"a\" = 2; 'a' += 3"), "true {a=5}");
    EXPECT_EQ(after("{}", "5 = a; -5 = b; 0x10 = c; 3u = d; +7 = e"),
              "true {5=a;-5=b;16=c;3=d;7=e}");
    EXPECT_EQ(after("{}", "1.5 = a; -.25 = b; 2.5f = c"),
              "true {1.50000=a;-0.250000=b;2.50000f=c}");
    EXPECT_EQ(after("{}", "m/1.5/-2 = a", true), "true {m={1.50000={-2=a}}}");
}

TEST_F(SetPath, a_constant_in_a_path_is_replaced_by_its_value) {
    cat::constmap().setattr(own_key("speed"), number(3));
    cat::constmap().setattr(own_key("label"), cat::of("text"));
    EXPECT_EQ(after("{}", "#speed = 1; #label = 2; m/#speed = 3", true),
              "true {3=1;text=2;m={3=3}}");
    EXPECT_EQ(after("[a;b;c;d]", "#speed = e"), "true [a;b;c;e]");
    EXPECT_EQ(flat(read("{3=x}")->getattrp("#speed")), "x");
    EXPECT_EQ(after("{}", "m/#speed = 3", false), "false {}" + missing("/m"));
    EXPECT_EQ(after("{}", "#label/#speed/x = 3", false), "false {}" + missing("/#label"));
}

TEST_F(SetPath, reported_paths_have_keys_as_written_in_files) {
    EXPECT_EQ(after("{'a b'={5={}}}", "'a b'/5/-1/c = 1", false),
              "false {\"a b\"={5={}}}" + missing("/\"a b\"/5/-1"));
    EXPECT_EQ(after("{}", "1.5/c << 1"), "false {}" + not_allowed("<<", "/1.50000"));
}

TEST_F(SetPath, values_follow_the_rules_of_files) {
    EXPECT_EQ(after("{}", "a = {x = {}; y = #cRef(/x)}; b = int(7); c = true; d = #true; e = word"),
              "true {a={x={};y={}};b=7;c=true;d=#true;e=word}");
    objref const root = read("{}");
    EXPECT_TRUE(root->setattrp("a = {x = {}; y = #cRef(/x)}", true));
    EXPECT_EQ(root->getattrp("a/x").get(), root->getattrp("a/y").get());
}

TEST_F(SetPath, one_separator_before_a_value_is_allowed) {
    EXPECT_EQ(after("{}", "a = ; 1; b = 2"), "true {a=1;b=2}");
    // The separator is skipped, so the next word is the value, even if it begins a statement.
    EXPECT_EQ(after("{}", "a = ; b; = 2"),
              "false {a=b}" + one_error("ERROR in setattrp: Bad no-key entry: ="));
}

TEST_F(SetPath, a_missing_value_ends_the_execution_silently) {
    EXPECT_EQ(after("{}", "a = 1; b ="), "true {a=1}");
    EXPECT_EQ(after("{}", "a = 1; b = ; "), "true {a=1}");
    EXPECT_EQ(after("{}", "a = 1; b = } c = 2"), "true {a=1}");
    EXPECT_EQ(after("{}", "a << 1; b = ] c = 2"), "false {}" + not_allowed("<<", "/a"));
    EXPECT_EQ(after("{}", "a = 1; \xe4 = 2; b = 3"), "true {a=1}");
}

TEST_F(SetPath, a_statement_can_use_results_of_earlier_ones) {
    EXPECT_EQ(after("{}", "v = []; v << 1; v << {a = 2}; v/1/a += 5; m = {}; m/v &= x"),
              "true {v=[1;{a=7}];m={v=x}}");
}

TEST_F(SetPath, the_same_statements_can_be_executed_twice) {
    objref const root = read("{ n = 1; v = [] }");
    for (int i = 0; i < 2; ++i) EXPECT_TRUE(root->setattrp("n += 1; v << n; s = <1>", false));
    EXPECT_EQ(flat(root), "{n=3;v=[n;n];s=<1>}");
}

TEST_F(SetPath, keys_are_written_to_the_trace_channel) {
    objref const root = read("{}");
    cSetTracing("catlex");
    EXPECT_TRUE(root->setattrp("a/'b c'/5 = x; d = 1", true));
    EXPECT_TRUE(root->setattrp("e", number(1), true));
    cSetTracing("");
    EXPECT_EQ(messages(), "a\n\"b c\"\n5\nd\ne\n");
}

// --- append_dissection

TEST_F(SetPath, dissection_splits_short_strings) {
    std::vector<std::pair<std::string, std::string>> const cases = {
        {"", "[]"},
        {",", "[\"\"]"},
        {",,", "[\"\";\"\"]"},
        {"a", "[a]"},
        {"a,", "[a]"},
        {",a", "[\"\";a]"},
        {"a b", "[\"a b\"]"},
        {"a\nb", "[\"a\nb\"]"},
        {std::string("a\0b,c", 5), "[\"a" + std::string(1, '\0') + "b\";c]"}};
    for (auto const &[text, result] : cases) {
        objref const list = make<cVectorObj>();
        list->append_dissection(text, ',');
        EXPECT_EQ(flat(list), result) << text;
    }
    objref const lines = make<cVectorObj>();
    lines->append_dissection("a\n\nb\n", '\n');
    EXPECT_EQ(flat(lines), "[a;\"\";b]");
}

TEST_F(SetPath, dissection_appends_when_it_is_called_again) {
    objref const list = read("[1]");
    list->append_dissection("a,b", ',');
    list->append_dissection("a,b", ',');
    EXPECT_EQ(flat(list), "[1;a;b;a;b]");
    objref const set = make<cSetObj>();
    set->append_dissection("a,b,a", ',');
    EXPECT_EQ(flat(set), "<a;b>");
    objref const map = make<cMapObj>();
    map->append_dissection("a,b", ',');
    EXPECT_EQ(flat(map), "{0=a;1=b}");
}

TEST_F(SetPath, dissection_into_an_object_without_attributes_reports_each_piece) {
    number(1)->append_dissection("a,b", ',');
    std::string const reported =
        "Attr value, type 'int': Bad call of 'append'. Method does not exist!\n";
    EXPECT_EQ(messages(), reported + reported);
    number(1)->append_dissection("", ',');
    EXPECT_EQ(messages(), "");
}
