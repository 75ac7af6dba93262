// Executables and calls by name.
#include "qrv/core/cexe.h"

#include "qrv/containers/cmapobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/objects.h"

namespace {

class ExecutableEdge : public QrvTest {};
class Executable : public QrvTest {};

std::string called; // the executables that ran, with their arguments

std::string shown(objref const &ref) { return ref ? cat::as_string(ref) : "null"; }

objref f0() { return called = "f0", cat::of(0); }
objref f1(objref a) { return called = "f1 " + shown(a), cat::of(1); }
objref f2(objref a, objref b) { return called = "f2 " + shown(a) + " " + shown(b), cat::of(2); }
objref f3(objref a, objref b, objref c) {
    return called = "f3 " + shown(a) + " " + shown(b) + " " + shown(c), cat::of(3);
}
bool p1(cObj &a) { return called = "p1 " + shown(objref::share(&a)), true; }
bool p2(cObj &a, objref &b) {
    return called = "p2 " + shown(objref::share(&a)) + " " + shown(b), true;
}
bool p3(cObj &a, objref &b, objref &c) {
    return called = "p3 " + shown(objref::share(&a)) + " " + shown(b) + " " + shown(c), false;
}

struct cSeven {
    objref exes[7] = {make<cExeMember>(f0), make<cExeMember>(f1), make<cExeMember>(f2),
                      make<cExeMember>(f3), make<cExeMember>(p1), make<cExeMember>(p2),
                      make<cExeMember>(p3)};
    cExeFunction const &operator[](int i) const {
        return static_cast<cExeFunction const &>(*exes[i]);
    }
};

// Implements one entry only.
class cSingle : public cExeObj {
  public:
    cSingle() : cExeObj(0, false, false) {}
    cSingle(cSingle const &) = delete;
    cSingle &operator=(cSingle const &) = delete;
    ~cSingle() override = default;
    using cExeObj::oexecute;
    objref oexecute() const override { return cat::of(42); }
};

using test::key;

} // namespace

TEST_F(ExecutableEdge, a_member_with_three_arguments_as_a_procedure) {
    cExeMember const exe(p2);
    EXPECT_EQ(exe.c(), 2u);
    EXPECT_TRUE(exe.s());
    EXPECT_TRUE(exe.p());
}

TEST_F(ExecutableEdge, a_global_or_a_wrong_prototype_under_a_standard_name_is_refused) {
    cTypeObj type("t");
    cErrorLog errors;
    type.set_tmember("assign", make<cExeGlobal>(p2));
    type.set_tmember("assign", make<cExeMember>(p3));
    EXPECT_EQ(errors.text(),
              "0x50000000 Executable, key 'assign', must be cExeMember\n"
              "0x50000000 Standard method 'assign'  has bad prototype in object type: type\n");
    EXPECT_TRUE(type.tmember("assign") == cat::badfind());
}

TEST_F(ExecutableEdge, a_global_is_refused_in_an_object_and_accepted_in_a_type) {
    objref const number = cat::of(5);
    cErrorLog errors;
    EXPECT_FALSE(number->set_omember("my key", make<cExeGlobal>(f0)));
    EXPECT_EQ(errors.text(), "0x44000000 Attr value, type 'int': Inserted executable, key "
                             "'\"my key\"', must be cExeMember\n");
    EXPECT_FALSE(number->has_ommap());
    cTypeObj type("t");
    type.set_tmember("my key", make<cExeGlobal>(f0));
    EXPECT_TRUE(type.tmember("my key")->is_exe());
    EXPECT_EQ(errors.count(), 1u);
}

TEST_F(ExecutableEdge, type_is_found_through_the_global_map) {
    EXPECT_TRUE(cat::of(5)->call("type") == &cat::type_int());
}

TEST_F(ExecutableEdge, calling_a_name_that_does_not_exist_fails) {
    cErrorLog errors;
    EXPECT_TRUE(cat::of(5)->call("nosuch") == cat::bad());
    EXPECT_EQ(errors.text(), "0x44000000 Attr value, type 'int': Bad call of 'nosuch'. Method "
                             "does not exist!\n");
}

TEST_F(ExecutableEdge, procedures_return_nil_or_bad) {
    objref const number = cat::of(5);
    number->set_omember("good", make<cExeMember>(p1));
    number->set_omember("no good", make<cExeMember>(p3));
    EXPECT_TRUE(number->call("good") == cat::nil());
    EXPECT_TRUE(number->call("no good", cat::of(1), cat::of(2)) == cat::bad());
    EXPECT_EQ(called, "p3 5 1 2");
}

TEST_F(ExecutableEdge, new_creates_objects_by_type_name) {
    objref const made = cat::call("new", cat::of("int"));
    EXPECT_EQ(&made->type(), &cat::type_int());
    EXPECT_EQ(cat::as_string(made), "0");
    EXPECT_TRUE(cat::call("new", cat::of("nosuch")) == cat::bad());
    EXPECT_TRUE(cat::call("new", cat::of(5)) == cat::bad());
}

TEST_F(ExecutableEdge, an_entry_that_is_not_overridden_reports_itself) {
    cSingle exe;
    exe.set_name("single");
    EXPECT_EQ(cat::as_string(exe.oexecute()), "42");
    cErrorLog errors;
    EXPECT_TRUE(exe.oexecute(cat::of(1)) == cat::bad());
    EXPECT_EQ(errors.text(), "0x44000000 Executable, key 'single', called with bad prototype\n");
}

TEST_F(Executable, every_entry_runs_only_its_own_prototype) {
    cSeven const seven;
    objref const x = cat::of(7);
    char const *const stories[7] = {"f0",   "f1 7",   "f2 7 7",  "f3 7 7 7",
                                    "p1 7", "p2 7 7", "p3 7 7 7"};
    for (int i = 0; i < 7; ++i) {
        for (int entry = 0; entry < 7; ++entry) {
            objref a = x, b = x;
            called.clear();
            cErrorLog errors;
            switch (entry) {
            case 0:
                EXPECT_EQ(cObj::is_bad(seven[i].oexecute()), i != entry);
                break;
            case 1:
                EXPECT_EQ(cObj::is_bad(seven[i].oexecute(x)), i != entry);
                break;
            case 2:
                EXPECT_EQ(cObj::is_bad(seven[i].oexecute(x, x)), i != entry);
                break;
            case 3:
                EXPECT_EQ(cObj::is_bad(seven[i].oexecute(x, x, x)), i != entry);
                break;
            case 4:
                EXPECT_EQ(seven[i].pexecute(*x), i == entry);
                break;
            case 5:
                EXPECT_EQ(seven[i].pexecute(*x, a), i == entry);
                break;
            default:
                EXPECT_FALSE(seven[i].pexecute(*x, a, b));
                break; // p3 returns false
            }
            EXPECT_EQ(called, i == entry ? stories[i] : "");
            EXPECT_EQ(errors.text(),
                      i == entry ? ""
                                 : "0x44000000 Executable, key '', called with bad prototype\n");
        }
    }
}

TEST_F(Executable, a_forgiven_bad_prototype_is_nil_or_true) {
    cSeven const seven;
    cat::errhandler() = cErrHandler(0, 0x04000000u, 0xFFFFFFFFu);
    EXPECT_TRUE(seven[0].oexecute(cat::of(1)) == cat::nil());
    EXPECT_TRUE(seven[0].pexecute(*cat::of(1)));
}

TEST_F(Executable, the_seven_classes_have_their_flags_and_pointers) {
    cSeven const seven;
    unsigned int const counts[7] = {0, 1, 2, 3, 1, 2, 3};
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(seven[i].c(), counts[i]);
        EXPECT_EQ(seven[i].p(), i > 3);
        EXPECT_EQ(static_cast<int>(seven[i].proto()), i);
    }
    EXPECT_EQ(seven[0].fpt(), reinterpret_cast<void *>(f0));
    cExeGlobal const global(f1);
    EXPECT_FALSE(global.s());
    EXPECT_EQ(&global.type(), &cat::type_exe());
}

TEST_F(Executable, calls_choose_the_entry_by_s_and_p) {
    objref const self = cat::of(5);
    cTypeObj &type = cat::type_int();
    struct cRow {
        objref exe;
        int given;
        char const *called;
    };
    cRow const rows[] = {
        {make<cExeGlobal>(f0), 0, "f0"},       {make<cExeMember>(f1), 0, "f1 5"},
        {make<cExeMember>(p1), 0, "p1 5"},     {make<cExeGlobal>(f1), 1, "f1 8"},
        {make<cExeGlobal>(p1), 1, "p1 8"},     {make<cExeMember>(f2), 1, "f2 5 8"},
        {make<cExeMember>(p2), 1, "p2 5 8"},   {make<cExeGlobal>(f2), 2, "f2 8 9"},
        {make<cExeGlobal>(p2), 2, "p2 8 9"},   {make<cExeMember>(f3), 2, "f3 5 8 9"},
        {make<cExeMember>(p3), 2, "p3 5 8 9"},
    };
    for (cRow const &row : rows) {
        type.set_tmember("probe", row.exe);
        called.clear();
        objref result;
        if (row.given == 0) result = self->call("probe");
        if (row.given == 1) result = self->call("probe", cat::of(8));
        if (row.given == 2) result = self->call("probe", cat::of(8), cat::of(9));
        EXPECT_EQ(called, row.called);
        EXPECT_NE(result, nullptr);
    }
    type.set_tmember("probe", objref());
}

TEST_F(Executable, the_error_of_a_wrong_count_has_the_number_of_arguments) {
    objref const self = cat::of(5);
    self->set_omember("probe", make<cExeMember>(f2));
    {
        cErrorLog errors;
        EXPECT_TRUE(self->call("probe") == cat::bad());
        EXPECT_TRUE(self->call("probe", cat::of(1), cat::of(2)) == cat::bad());
        EXPECT_EQ(errors.text(),
                  "0x44000000 Attr value, type 'int': Call of 'probe' with bad arg count: 0\n"
                  "0x44000000 Attr value, type 'int': Call of 'probe' with bad arg count: 2\n");
    }
    cat::errhandler() = cErrHandler(0, 0x04000000u, 0xFFFFFFFFu);
    EXPECT_TRUE(self->call("probe") == cat::nil());
    EXPECT_TRUE(self->call("nosuch") == cat::bad()); // only a wrong count is forgiven
}

TEST_F(Executable, an_entry_that_is_not_executable_is_not_called) {
    objref const self = cat::of(5);
    self->set_omember("data", cat::of("x"));
    cErrorLog errors;
    EXPECT_TRUE(self->call("data") == cat::bad());
    EXPECT_TRUE(cat::call("wformat") == cat::bad());
    EXPECT_TRUE(cat::call("nosuch", cat::of(1)) == cat::bad());
    EXPECT_TRUE(cat::call("new") == cat::bad());
    EXPECT_TRUE(cat::call("new", cat::of(1), cat::of(2)) == cat::bad());
    EXPECT_EQ(
        errors.text(),
        "0x44000000 Attr value, type 'int': Bad call of 'data'.  This entry is of type: string\n"
        "0x44000000 Bad call of global method 'wformat'  This entry is not executable, it's of "
        "type: string\n"
        "0x44000000 Bad call of global method 'nosuch'  Executable does not exist\n"
        "0x44000000 Call of global method 'new'  with bad arg count: 0\n"
        "0x44000000 Call of global method 'new'  with bad arg count: 2\n");
}

TEST_F(Executable, calls_on_null_return_bad) {
    EXPECT_TRUE(cObj::call(nullptr, "type") == cat::bad());
    EXPECT_TRUE(cObj::call(nullptr, "type", cat::of(1)) == cat::bad());
    cat::type_int().set_tmember("probe", make<cExeGlobal>(p1));
    EXPECT_TRUE(cat::of(5)->call("probe", objref()) == cat::bad());
    cat::type_int().set_tmember("probe", objref());
}

TEST_F(Executable, a_global_member_function_reports_itself) {
    cErrorLog errors;
    // "type" has the flag s: it needs one argument more than its entry receives.
    EXPECT_TRUE(cat::call("type") == cat::bad());
    EXPECT_EQ(errors.text(), "0x44000000 Executable, key 'type', called with bad prototype\n");
}

TEST_F(Executable, the_last_key_is_the_name) {
    objref const exe = make<cExeMember>(f1);
    objref const a = cat::of(1), b = cat::of(2);
    a->set_omember("first", exe);
    b->set_omember(own_key(3), exe);
    EXPECT_EQ(static_cast<cExeObj &>(*exe).name(), "3");
}

TEST_F(Executable, storing_in_a_map_names_and_validates) {
    cMapObj map;
    objref const exe = make<cExeGlobal>(p1);
    cErrorLog errors;
    EXPECT_FALSE(map.datamap().mapitem("assign", exe));
    EXPECT_EQ(errors.text(),
              "0x50000000 Standard method 'assign'  has bad prototype in object type: map\n");
    EXPECT_TRUE(map.datamap().mapitem("other", exe));
    EXPECT_EQ(static_cast<cExeObj &>(*exe).name(), "other");
}

namespace {

bool remove_probe(cObj &obj) { return obj.set_omember("probe", objref()); }

} // namespace

TEST_F(Executable, an_executable_may_remove_itself_while_it_runs) {
    objref const self = cat::of(5);
    self->set_omember("probe", make<cExeMember>(remove_probe));
    EXPECT_TRUE(self->call("probe") == cat::nil());
    EXPECT_TRUE(self->omember("probe") == cat::badfind());
}

TEST_F(Executable, a_call_by_name_creates_no_key_object) {
    objref const self = cat::of(5);
    self->set_omember("probe", make<cExeMember>(+[](cObj &) { return true; }));
    std::uint32_t const before = cObjBase::ob_lstid();
    EXPECT_TRUE(self->call("probe") == cat::nil());
    EXPECT_EQ(cObjBase::ob_lstid(), before);
}

TEST_F(Executable, global_members_can_be_called_on_any_object) {
    objref const number = cat::of(5);
    number->setflags(of_const_keys);
    EXPECT_TRUE(cat::is_equal(number->call("flags"), static_cast<int>(of_const_keys)));
    EXPECT_TRUE(cat::is_equal(number->call("flags_of", cat::of(0x300)), 0x200));
    EXPECT_TRUE(number->call("flags_of", cat::of("x")) == cat::bad());
    EXPECT_TRUE(number->call("iterobj") == cat::bad());
    EXPECT_TRUE(number->call("ommap") == cat::badfind());
    number->set_omember("m", cat::of(1));
    objref const members = number->call("ommap");
    members->setattr(key("n"), cat::of(2));
    EXPECT_TRUE(cat::is_equal(number->omember("n"), 2));
    EXPECT_EQ(number->ommap().father(), number.get());
    EXPECT_TRUE(number->call("entrytype") == cat::bad());
    EXPECT_TRUE(number->call("set_const_keys", objref()) == cat::bad());
    EXPECT_TRUE(number->call("set_const_flag", objref()) == cat::nil());
    EXPECT_TRUE(number->flags_of(of_const));
    EXPECT_TRUE(number->call("set_const_flag", cat::of(false)) == cat::nil());
    EXPECT_FALSE(number->flags_of(of_const));
    EXPECT_TRUE(number->call("set_const_flag", cat::of("x")) == cat::bad());
}
