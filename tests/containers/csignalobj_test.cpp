// Signals as values: types, methods, calls by name, force(), slot objects.
#include "tests/containers/signal_objects.h"

#include "qrv/containers/cvectorobj.h"

#include <type_traits>

namespace {

using Signal1 = cSignal1<cObj &>;

class SignalObj : public SignalObjTest {};
class SlotObj : public SignalObjTest {};
class SignalObjEdge : public SignalObjTest {};

static_assert(!std::is_copy_constructible_v<cSignalRef> && !std::is_copy_assignable_v<cSignalRef>);
static_assert(!std::is_copy_constructible_v<cSignalObj> && !std::is_copy_assignable_v<cSignalObj>);
static_assert(!std::is_copy_constructible_v<cSignalRef1>);
static_assert(std::is_constructible_v<cSignalRef1, cSignalRef1 &>);
static_assert(!std::is_copy_assignable_v<cSignalRef1>);
static_assert(!std::is_copy_constructible_v<cSignalObj1>);
static_assert(!std::is_copy_constructible_v<cObjSlot> && !std::is_copy_assignable_v<cObjSlot>);
static_assert(!std::is_copy_constructible_v<cObjSlot1> && !std::is_copy_assignable_v<cObjSlot1>);
static_assert(!std::is_convertible_v<cSignal &, cSignalRef>);

// begin() and end() of the object, not of the slot's ring.
static_assert(std::is_same_v<decltype(std::declval<cObjSlot &>().begin()), cIterObj>);
static_assert(std::is_same_v<decltype(std::declval<cObjSlot const &>().end()), cIterObj>);
static_assert(std::is_same_v<decltype(std::declval<cObjSlot1 &>().begin()), cIterObj>);
static_assert(std::is_same_v<decltype(std::declval<cObjSlot1 const &>().end()), cIterObj>);

// The signals to which each kind of slot can be connected: one without argument to every signal.
template <class Sender, class Slot>
concept connectable = requires(Sender const &signal, Slot const &slot) {
    signal.connect(slot);
};
static_assert(connectable<cSignal, cObjSlot> && connectable<Signal1, cObjSlot>);
static_assert(connectable<Signal1, cObjSlot1> && !connectable<cSignal, cObjSlot1>);

std::string const bad_prototype = "0x44000000 Executable, key '";

} // namespace

// --- types

TEST_F(SignalObj, each_type_has_its_name_is_registered_and_stays_the_same) {
    cTypeObj *const types[] = {&cat::type_signal(), &cat::type_signal1(),
                               &cTypeOf(static_cast<cSigInfo *>(nullptr)), &cat::type_slot1(),
                               &cat::type_slot2()};
    char const *const names[] = {"cSignal", "cSignal1", "cSigInfo", "objslot1", "objslot2"};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(types[i]->name(), names[i]);
        EXPECT_EQ(&cat::find_type(names[i]), types[i]);
        EXPECT_EQ(&types[i]->type(), &cat::typetype());
        EXPECT_EQ(types[i]->obid(), 0u);
    }
    EXPECT_EQ(types[0], &cat::type_signal());
    EXPECT_EQ(types[4], &cat::type_slot2());
}

TEST_F(SignalObj, only_the_two_signal_types_are_executable_and_free) {
    EXPECT_EQ(cat::type_signal().flags_of(tf_exe | tf_free_exe), tf_exe | tf_free_exe);
    EXPECT_EQ(cat::type_signal1().flags_of(tf_exe | tf_free_exe), tf_exe | tf_free_exe);
    for (cTypeObj *type :
         {&cTypeOf(static_cast<cSigInfo *>(nullptr)), &cat::type_slot1(), &cat::type_slot2()})
        EXPECT_EQ(type->flags_of(tf_exe | tf_free_exe), 0);
}

TEST_F(SignalObj, the_method_tables_hold_newobj_and_newref_or_neither) {
    for (cTypeObj *type :
         {&cat::type_signal(), &cat::type_signal1(), &cTypeOf(static_cast<cSigInfo *>(nullptr))}) {
        EXPECT_TRUE(type->method(mid_newobj));
        EXPECT_TRUE(type->method(mid_newref));
        EXPECT_FALSE(type->method(mid_assign));
    }
    for (cTypeObj *type : {&cat::type_slot1(), &cat::type_slot2()}) {
        EXPECT_FALSE(type->method(mid_newobj));
        EXPECT_FALSE(type->method(mid_newref));
        EXPECT_FALSE(type->method(mid_assign));
    }
}

TEST_F(SignalObj, each_object_has_the_flags_for_its_calls) {
    cSignal plain;
    Signal1 one;
    cSignalRef const ref(plain);
    cSignalObj const obj;
    for (cExeObj const *exe :
         {static_cast<cExeObj const *>(&ref), static_cast<cExeObj const *>(&obj)}) {
        EXPECT_EQ(exe->c(), 0u);
        EXPECT_FALSE(exe->s());
        EXPECT_FALSE(exe->p());
        EXPECT_EQ(&exe->type(), &cat::type_signal());
    }
    for (bool s : {false, true}) {
        cSignalRef1 const ref1(one, s);
        cSignalObj1 const obj1(s);
        for (cExeObj const *exe :
             {static_cast<cExeObj const *>(&ref1), static_cast<cExeObj const *>(&obj1)}) {
            EXPECT_EQ(exe->c(), 1u);
            EXPECT_EQ(exe->s(), s);
            EXPECT_TRUE(exe->p());
            EXPECT_EQ(&exe->type(), &cat::type_signal1());
        }
    }
}

TEST_F(SignalObj, signal_returns_the_wrapped_or_the_own_signal) {
    cSignal plain;
    Signal1 one;
    cSignalRef ref(plain);
    cSignalRef1 ref1(one, false);
    EXPECT_EQ(&ref.signal(), &plain);
    EXPECT_EQ(&std::as_const(ref).signal(), &plain);
    EXPECT_EQ(ref.signal_ptr(), &plain);
    EXPECT_EQ(&ref1.signal(), &one);
    EXPECT_EQ(&std::as_const(ref1).signal(), &one);
    EXPECT_EQ(ref1.signal_ptr(), &one);
    cSignalObj a, b;
    EXPECT_NE(&a.signal(), &b.signal());
    cSignalObj1 c(false), d(true);
    EXPECT_NE(&c.signal(), &d.signal());
}

namespace {
struct cNoSignal : cSignalRef {
    cNoSignal() = default;
    cNoSignal(cNoSignal const &) = delete;
    cNoSignal &operator=(cNoSignal const &) = delete;
    ~cNoSignal() override = default;
};
struct cNoSignal1 : cSignalRef1 {
    cNoSignal1() : cSignalRef1(false) {}
    cNoSignal1(cNoSignal1 const &) = delete;
    cNoSignal1 &operator=(cNoSignal1 const &) = delete;
    ~cNoSignal1() override = default;
};
} // namespace

TEST_F(SignalObj, a_subclass_without_a_signal_fires_nothing_and_is_not_a_signal) {
    objref const none = make<cNoSignal>();
    objref const none1 = make<cNoSignal1>();
    objref const obj = cat::of(1);
    EXPECT_TRUE(obj->set_omember("changed", none));
    EXPECT_EQ(obj->changed_signal(), nullptr);
    EXPECT_TRUE(obj->call("changed") == cat::nil());
    EXPECT_TRUE(obj->set_omember("clicked", none1));
    EXPECT_TRUE(obj->call("clicked", obj) == cat::nil());
    EXPECT_TRUE(none->newref() == cat::bad());
    EXPECT_TRUE(none1->newref() == cat::bad());
    obj->force_changed_signal();
    EXPECT_FALSE(changed_object(*obj) == none);
}

// --- methods

TEST_F(SignalObj, newobj_creates_an_object_with_its_own_signal) {
    objref const a = cat::type_signal().newobj(), b = cat::type_signal().newobj();
    auto *const signal = dynamic_cast<cSignalObj *>(a.get());
    ASSERT_TRUE(signal);
    EXPECT_NE(&signal->signal(), &dynamic_cast<cSignalObj &>(*b).signal());
    objref const one = cat::type_signal1().newobj();
    ASSERT_TRUE(dynamic_cast<cSignalObj1 *>(one.get()));
    EXPECT_FALSE(dynamic_cast<cSignalObj1 &>(*one).s());
    objref const info = cTypeOf(static_cast<cSigInfo *>(nullptr)).newobj();
    auto const *const holder = dynamic_cast<cObjD<cSigInfo> *>(info.get());
    ASSERT_TRUE(holder);
    EXPECT_FALSE(holder->is_ObjDR());
}

TEST_F(SignalObj, newref_refers_to_the_signal_of_its_source) {
    cSignalObj own;
    NamedSlot const a("a", own.signal());
    objref const ref = own.newref();
    EXPECT_EQ(ref->refs(), 1u);
    auto &signal = dynamic_cast<cSignalRef &>(*ref);
    EXPECT_FALSE(dynamic_cast<cSignalObj *>(ref.get()));
    EXPECT_EQ(&signal.signal(), &own.signal());
    EXPECT_EQ(&dynamic_cast<cSignalRef &>(*ref->newref()).signal(), &own.signal());
    EXPECT_TRUE(signal.oexecute() == cat::nil());
    EXPECT_EQ(take_calls(), "a;");

    for (bool s : {false, true}) {
        cSignalObj1 one(s);
        objref const ref1 = one.newref();
        EXPECT_EQ(&dynamic_cast<cSignalRef1 &>(*ref1).signal(), &one.signal());
        EXPECT_EQ(dynamic_cast<cSignalRef1 &>(*ref1).s(), s);
    }
}

TEST_F(SignalObj, newref_of_a_signal_with_a_string_refers_to_it) {
    objref const info = make<cObjD<cSigInfo>>();
    objref const ref = info->newref();
    ASSERT_TRUE(dynamic_cast<cObjDR<cSigInfo> *>(ref.get()));
    EXPECT_TRUE(ref->is_ObjDR());
    auto &source = static_cast<cObjDR<cSigInfo> &>(*info);
    auto &other = static_cast<cObjDR<cSigInfo> &>(*ref);
    EXPECT_EQ(other.valptr(), source.valptr());
    struct Reader {
        void take(char const *text) { calls += text; }
    } reader;
    cSlot1<Reader, char const *> const slot(&reader, &Reader::take, source.val());
    other.val()("%i-%s", 7, "x");
    EXPECT_EQ(take_calls(), "7-x");
}

TEST_F(SignalObj, a_copy_of_a_signal_with_a_string_has_no_connections) {
    cFunctionSlot<void (*)()> const slot([] { calls += "f;"; });
    cObjD<cSigInfo> a;
    a.val().connect(slot);
    cObjD<cSigInfo> const b(a);
    EXPECT_TRUE(a.val().isconnected());
    EXPECT_FALSE(b.val().isconnected());
    a.val()("%s", "text");
    b.val()("%s", "text");
    EXPECT_EQ(take_calls(), "f;");
}

TEST_F(SignalObj, newref_of_the_wrong_kind_is_bad_and_raises_nothing) {
    cErrorLog errors;
    cTypeObj &info_type = cTypeOf(static_cast<cSigInfo *>(nullptr));
    cTypeObj *const types[] = {&cat::type_signal(), &cat::type_signal1(), &info_type};
    objref const right[] = {make<cSignalObj>(), make<cSignalObj1>(true), make<cObjD<cSigInfo>>()};
    objref const number = cat::of(1);
    for (int type = 0; type < 3; ++type)
        for (int source = 0; source < 3; ++source) {
            objref const made = call_method(*types[type], "newref", right[source]);
            EXPECT_EQ(made != cat::bad(), type == source) << type << ' ' << source;
        }
    for (cTypeObj *type : types) {
        EXPECT_TRUE(call_method(*type, "newref", number) == cat::bad());
        EXPECT_TRUE(call_method(*type, "newref", objref()) == cat::bad());
        EXPECT_TRUE(call_method(*type, "newref", cat::nil()) == cat::bad());
        cObjD<int> claimed(3); // of the type, but not of the class
        claimed.set_type(type);
        EXPECT_TRUE(claimed.newref() == cat::bad());
    }
    cObjDR<cSigInfo> const empty(&info_type);
    EXPECT_TRUE(call_method(info_type, "newref",
                            objref::share(const_cast<cObjDR<cSigInfo> *>(&empty))) == cat::bad());
    EXPECT_EQ(errors.text(), "");
}

TEST_F(SignalObj, a_copy_of_a_reference_with_an_argument_wraps_the_same_signal) {
    cSignalObj1 own(true);
    cSignalRef1 copy(own), twice(copy);
    EXPECT_EQ(&copy.signal(), &own.signal());
    EXPECT_EQ(&twice.signal(), &own.signal());
    EXPECT_TRUE(copy.s());
    EXPECT_EQ(copy.name(), "");
    Signal1 outside;
    cSignalRef1 first(outside, false);
    cSignalRef1 const second(first);
    EXPECT_FALSE(second.s());
    objref const target = cat::of("t"), argument = cat::of(5);
    cObjSlot1 const slot(*target, note_argument, outside);
    EXPECT_TRUE(second.pexecute(*argument));
    EXPECT_TRUE(first.pexecute(*argument));
    EXPECT_EQ(take_calls(), "t(5);t(5);");
}

TEST_F(SignalObj, signals_and_slots_cannot_be_cloned) {
    cErrorLog errors;
    cSignalObj const signal;
    objref const target = cat::of(1);
    cObjSlot const slot(*target, nullptr);
    cObjSlot1 const slot1(*target, nullptr);
    EXPECT_TRUE(signal.clone() == cat::bad());
    EXPECT_TRUE(slot.clone() == cat::bad());
    EXPECT_TRUE(slot1.clone() == cat::bad());
    EXPECT_EQ(errors.text(),
              "0x48000000 Call of missed standard method 'assign' in type: cSignal\n"
              "0x48000000 Call of missed standard method 'newobj' in type: objslot1\n"
              "0x48000000 Call of missed standard method 'newobj' in type: objslot2\n");
}

// --- calls by name

TEST_F(SignalObjEdge, calling_a_signal_by_name_fires_it_and_returns_nil) {
    objref const obj = cat::of(1);
    NamedSlot const a("a", obj->force_changed_signal()), b("b", *obj->changed_signal());
    EXPECT_TRUE(obj->call("changed") == cat::nil());
    EXPECT_EQ(take_calls(), "a;b;");
}

TEST_F(SignalObj, a_member_under_any_name_is_called_by_it) {
    objref const obj = cat::of(1);
    cRef<cSignalObj> const clicked = make<cSignalObj>();
    EXPECT_TRUE(obj->set_omember("clicked", clicked));
    EXPECT_EQ(clicked->name(), "clicked");
    EXPECT_EQ(obj->changed_signal(), nullptr);
    NamedSlot const a("a", clicked->signal());
    EXPECT_TRUE(obj->call("clicked") == cat::nil());
    EXPECT_EQ(take_calls(), "a;");
    EXPECT_TRUE(obj->set_omember("also", clicked)); // the last key is its name
    EXPECT_EQ(clicked->name(), "also");
    EXPECT_TRUE(obj->call("clicked") == cat::nil());
    EXPECT_TRUE(obj->call("also") == cat::nil());
    EXPECT_EQ(take_calls(), "a;a;");
    obj->changed();
    EXPECT_EQ(take_calls(), "");
}

TEST_F(SignalObj, a_member_with_s_is_fired_with_the_object_it_is_called_on) {
    objref const obj = cat::of(7), target = cat::of("t");
    cRef<cSignalObj1> const signal = make<cSignalObj1>(true);
    cObjSlot1 const slot(*target, note_argument, signal->signal());
    EXPECT_TRUE(obj->set_omember("hit", signal));
    EXPECT_TRUE(obj->call("hit") == cat::nil());
    EXPECT_EQ(take_calls(), "t(7);");
}

TEST_F(SignalObj, a_member_without_s_is_fired_with_the_argument) {
    objref const obj = cat::of(7), target = cat::of("t");
    cRef<cSignalObj1> const signal = make<cSignalObj1>(false);
    cObjSlot1 const slot(*target, note_argument, signal->signal());
    EXPECT_TRUE(obj->set_omember("hit", signal));
    EXPECT_TRUE(obj->call("hit", cat::of("x")) == cat::nil());
    EXPECT_EQ(take_calls(), "t(x);");
    EXPECT_TRUE(obj->call("hit", objref()) == cat::bad()); // no object to fire it with
    EXPECT_EQ(take_calls(), "");
}

TEST_F(SignalObj, a_wrong_count_of_arguments_is_reported_and_fires_nothing) {
    cErrorLog errors;
    objref const obj = cat::of(7), argument = cat::of(1);
    NamedSlot const a("a", obj->force_changed_signal());
    obj->set_omember("one", make<cSignalObj1>(false));
    obj->set_omember("self", make<cSignalObj1>(true));
    take_calls();
    EXPECT_TRUE(obj->call("changed", argument) == cat::bad());
    EXPECT_TRUE(obj->call("one") == cat::bad());
    EXPECT_TRUE(obj->call("one", argument, argument) == cat::bad());
    EXPECT_TRUE(obj->call("self", argument) == cat::bad());
    EXPECT_EQ(errors.text(),
              "0x44000000 Attr value, type 'int': Call of 'changed' with bad arg count: 1\n"
              "0x44000000 Attr value, type 'int': Call of 'one' with bad arg count: 0\n"
              "0x44000000 Attr value, type 'int': Call of 'one' with bad arg count: 2\n"
              "0x44000000 Attr value, type 'int': Call of 'self' with bad arg count: 1\n");
    EXPECT_EQ(take_calls(), "");
}

TEST_F(SignalObj, a_wrong_entry_reports_its_prototype) {
    cErrorLog errors;
    objref const obj = cat::of(7);
    objref a = cat::of(1), b = cat::of(2);
    cRef<cSignalObj> const plain = make<cSignalObj>();
    cRef<cSignalObj1> const one = make<cSignalObj1>(false);
    obj->set_omember("p", plain);
    obj->set_omember("o", one);
    NamedSlot const slot("a", plain->signal());
    EXPECT_TRUE(plain->oexecute(a) == cat::bad());
    EXPECT_TRUE(plain->oexecute(a, b) == cat::bad());
    EXPECT_TRUE(plain->oexecute(a, b, a) == cat::bad());
    EXPECT_FALSE(plain->pexecute(*obj));
    EXPECT_FALSE(plain->pexecute(*obj, a));
    EXPECT_FALSE(plain->pexecute(*obj, a, b));
    EXPECT_TRUE(one->oexecute() == cat::bad());
    EXPECT_TRUE(one->oexecute(a) == cat::bad());
    EXPECT_FALSE(one->pexecute(*obj, a));
    EXPECT_FALSE(one->pexecute(*obj, a, b));
    std::string const p = bad_prototype + "p', called with bad prototype\n";
    std::string const o = bad_prototype + "o', called with bad prototype\n";
    EXPECT_EQ(errors.text(), p + p + p + p + p + p + o + o + o + o);
    EXPECT_EQ(take_calls(), "");
}

TEST_F(SignalObj, a_signal_under_the_name_of_a_standard_method_is_called_by_dispatch) {
    cErrorLog errors;
    objref const obj = cat::of(7);
    cRef<cSignalObj> const signal = make<cSignalObj>();
    NamedSlot const slot("a", signal->signal());
    EXPECT_TRUE(obj->set_omember("assign", signal));
    EXPECT_FALSE(obj->assign(*cat::of(8)));
    EXPECT_EQ(errors.text(), bad_prototype + "assign', called with bad prototype\n");
    EXPECT_TRUE(cat::is_equal(obj, 7));
    obj->set_omember("assign", objref());
    EXPECT_TRUE(obj->assign(*cat::of(8)));
    EXPECT_EQ(take_calls(), "");
}

TEST_F(SignalObj, a_global_signal_is_called_by_name_with_and_without_an_object) {
    cRef<cSignalObj> const plain = make<cSignalObj>();
    cRef<cSignalObj1> const one = make<cSignalObj1>(false);
    cat::gmmap().datamap().mapitem("saved", plain);
    cat::gmmap().datamap().mapitem("picked", one);
    objref const target = cat::of("t");
    NamedSlot const a("a", plain->signal());
    cObjSlot1 const slot(*target, note_argument, one->signal());
    EXPECT_TRUE(cat::call("saved") == cat::nil());
    EXPECT_TRUE(cat::call("picked", cat::of(3)) == cat::nil());
    EXPECT_TRUE(cat::of(4)->call("saved") == cat::nil());
    EXPECT_EQ(take_calls(), "a;t(3);a;");
}

TEST_F(SignalObj, a_signal_of_a_type_is_called_on_each_of_its_objects) {
    cTypeObj &type = cat::type_int();
    cRef<cSignalObj1> const poked = make<cSignalObj1>(true);
    objref const target = cat::of("t");
    cObjSlot1 const slot(*target, note_argument, poked->signal());
    type.set_tmember("poked", poked);
    EXPECT_TRUE(cat::of(1)->call("poked") == cat::nil());
    EXPECT_TRUE(cat::of(2)->call("poked") == cat::nil());
    type.set_tmember("poked", objref());
    EXPECT_EQ(take_calls(), "t(1);t(2);");
}

// --- attributes

TEST_F(SignalObjEdge, force_on_an_attribute_of_another_type_replaces_it_by_a_signal) {
    objref const map = make<cMapObj>();
    map->setattr(own_key(std::string("k")), cat::of(5));
    cAttr attr = (*map)["k"];
    cSignal &signal = cSignalRef::force(attr);
    objref const stored = (*map)["k"];
    EXPECT_EQ(&stored->type(), &cat::type_signal());
    EXPECT_EQ(dynamic_cast<cSignalObj &>(*stored).signal_ptr(), &signal);
    EXPECT_EQ(dynamic_cast<cSignalObj &>(*stored).name(), "k");
}

TEST_F(SignalObj, force_creates_a_missing_attribute_and_keeps_a_signal) {
    objref const map = make<cMapObj>();
    cAttr attr = (*map)["k"], again = (*map)["k"];
    cSignal &signal = cSignalRef::force(attr);
    EXPECT_EQ(&cSignalRef::force(again), &signal);
    cSignal outside;
    (*map)["r"] = make<cSignalRef>(outside);
    cAttr ref = (*map)["r"];
    EXPECT_EQ(&cSignalRef::force(ref), &outside);
    NamedSlot const a("a", signal);
    EXPECT_TRUE(dynamic_cast<cExeObj const &>(*attr).oexecute() == cat::nil());
    EXPECT_EQ(take_calls(), "a;");
}

TEST_F(SignalObj, each_force_creates_its_own_kind) {
    objref const map = make<cMapObj>();
    cAttr attr = (*map)["k"];
    cSignalRef::force(attr);
    Signal1 &one = cSignalRef1::force(attr);
    EXPECT_EQ(&attr->type(), &cat::type_signal1());
    EXPECT_EQ(dynamic_cast<cSignalObj1 &>(*attr).signal_ptr(), &one);
    EXPECT_FALSE(dynamic_cast<cSignalObj1 &>(*attr).s());
    EXPECT_EQ(&cSignalRef1::force(attr), &one);
    cSignal &plain = cSignalRef::force(attr);
    EXPECT_EQ(dynamic_cast<cSignalObj &>(*attr).signal_ptr(), &plain);
}

TEST_F(SignalObj, a_refused_force_returns_a_scratch_signal_without_connections) {
    cErrorLog errors;
    objref const map = make<cMapObj>();
    map->setflags(of_const_keys);
    objref const nowhere;
    cAttr refused = (*map)["k"], unusable(nowhere, "k"), nil_owner((*cat::nil())["k"]);
    cSignal &scratch = cSignalRef::force(refused);
    EXPECT_EQ(errors.count(), 1u);
    {
        NamedSlot const a("a", scratch);
        scratch();
        EXPECT_EQ(take_calls(), "a;");
        EXPECT_EQ(&cSignalRef::force(unusable), &scratch);
        scratch(); // the second request has disconnected the first one's slot
        EXPECT_EQ(take_calls(), "");
        EXPECT_EQ(&cSignalRef::force(nil_owner), &scratch);
    }
    Signal1 &scratch1 = cSignalRef1::force(refused);
    EXPECT_EQ(&cSignalRef1::force(unusable), &scratch1);
    EXPECT_FALSE(scratch1.isconnected());
    EXPECT_EQ(errors.count(), 2u);
    EXPECT_TRUE(map->getattr(own_key(std::string("k"))) == cat::badfind());
}

TEST_F(SignalObj, an_attribute_that_only_claims_the_type_is_not_a_signal) {
    objref const map = make<cMapObj>();
    objref const no_signal = make<cObjD<std::string>>("x");
    (*map)["k"] = no_signal;
    no_signal->set_type(&cat::type_signal());
    cAttr attr = (*map)["k"];
    cSignal &scratch = cSignalRef::force(attr);
    EXPECT_FALSE(scratch.isconnected());
    no_signal->set_type(&cat::type_signal1());
    EXPECT_FALSE(cSignalRef1::force(attr).isconnected());
    EXPECT_TRUE(map->getattr(own_key(std::string("k"))) == no_signal);
    no_signal->set_type(&cat::type_string());
}

// --- slot objects

TEST_F(SignalObjEdge, a_slot_with_a_null_function_does_nothing) {
    cSignal signal;
    Signal1 signal1;
    objref const target = cat::of("t"), argument = cat::of(1);
    cObjSlot const slot(*target, nullptr, signal);
    cObjSlot1 const slot1(*target, nullptr, signal1);
    signal();
    signal1(*argument);
    slot();
    slot1(*argument);
    EXPECT_EQ(take_calls(), "");
    EXPECT_EQ(argument->refs(), 1u);
}

TEST_F(SlotObj, a_slot_object_has_its_type_and_a_replaceable_function) {
    objref const target = cat::of("t"), argument = cat::of(1);
    cObjSlot slot(*target, nullptr);
    EXPECT_EQ(&slot.type(), &cat::type_slot1());
    EXPECT_EQ(slot.function(), nullptr);
    slot.function(note);
    EXPECT_EQ(slot.function(), note);
    slot();
    cObjSlot1 slot1(*target, nullptr);
    EXPECT_EQ(&slot1.type(), &cat::type_slot2());
    EXPECT_EQ(slot1.function(), nullptr);
    slot1.function(note_argument);
    EXPECT_EQ(slot1.function(), note_argument);
    slot1(*argument);
    EXPECT_EQ(take_calls(), "t;t(1);");
    EXPECT_EQ(target->refs(), 1u);
}

TEST_F(SlotObj, each_signal_calls_a_slot_object_and_a_plain_slot_drops_the_argument) {
    cSignal first, second;
    Signal1 with_argument;
    objref const argument = cat::of(1);
    NamedSlot const a("a", first);
    second.connect(*a);
    with_argument.connect(*a);
    first();
    second();
    with_argument(*argument);
    EXPECT_EQ(take_calls(), "a;a;a;");
}

TEST_F(SlotObj, a_map_can_store_a_slot_object) {
    cSignal signal;
    objref const map = make<cMapObj>(), target = cat::of("t");
    (*map)["slot"] = make<cObjSlot>(*target, note, signal);
    signal();
    EXPECT_EQ(take_calls(), "t;");
    (*map)["slot"] = objref();
    signal();
    EXPECT_EQ(take_calls(), "");
    EXPECT_FALSE(signal.isconnected());
}

TEST_F(SlotObj, a_blocked_slot_object_is_not_called) {
    cSignal signal;
    NamedSlot const a("a", signal), b("b", signal);
    {
        auto const block = a->block();
        signal();
        (*a)();
    }
    EXPECT_EQ(take_calls(), "b;");
    plans["a"] = [&] { (*a)(); };
    a->blockoncall(true);
    signal();
    EXPECT_EQ(take_calls(), "a;b;");
    EXPECT_FALSE(a->isblocked());
}

TEST_F(SlotObj, the_argument_is_held_for_the_length_of_the_call) {
    Signal1 signal;
    objref const target = cat::of("t");
    objref argument = cat::of(42);
    cObjSlot1 const slot(*target, note_argument, signal);
    cObjSlot1 const after(*target, [](cObj &, objref &held) {
        calls += std::to_string(held->refs()) + ";";
        return true;
    });
    after(*argument);
    EXPECT_EQ(take_calls(), "2;");
    plans["t"] = [&] { argument = nullptr; };
    signal(*argument);
    EXPECT_EQ(take_calls(), "t(42);");
}

TEST_F(SlotObj, the_function_may_change_its_reference) {
    objref const target = cat::of("t"), argument = cat::of(1);
    cObjSlot1 const slot(*target, [](cObj &, objref &held) {
        held = cat::of(2);
        return true;
    });
    slot(*argument);
    EXPECT_EQ(argument->refs(), 1u);
    EXPECT_TRUE(cat::is_equal(argument, 1));
}
