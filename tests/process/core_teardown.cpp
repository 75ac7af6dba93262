// The core at the end of a process: static objects of a program that hold types, constants and
// maps; objects in every place where the library stores objects, which use everything in their
// destructors; and code that uses the core after its destruction, which creates it again.

#include "process.h"
#include "qrv/containers/cattr.h"
#include "qrv/containers/cattspec.h"
#include "qrv/containers/cchoiceval.h"
#include "qrv/containers/citerobj.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cobjmodifier.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/csignalobj.h"
#include "qrv/containers/ctypeobj_update.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/write/cwriter.h"

#include <sstream>

extern "C" int __cxa_atexit(void (*function)(void *), void *argument, void *library);

namespace {

bool set_true(cObj &flag) { return static_cast<cObjDR<bool> &>(flag).val() = true; }

// Uses every accessor; creates, reads and writes objects; raises an error.
void look_around(char const *who) {
    objref const map = make<cMapObj>();
    map->setattr(own_key(std::string("k")), cat::of(1));
    objref const vector = make<cVectorObj>();
    vector->append(cat::of("x"));
    if (cat::as_text(vector).empty() || cat::as_text(cat::btrue()).empty()) say("[no text]");
    for (cIterObj it = map->begin(); it.valid(); ++it)
        if (it.key_as_string() != "k") say("[wrong key]");
    for (cMapObj *m : {&cat::typemap(), &cat::constmap(), &cat::gmmap(), &cat::dbase()})
        if (m->size() < 0) say("[no map]");
    for (objref const *r :
         {&cat::nil(), &cat::bad(), &cat::badfind(), &cat::btrue(), &cat::bfalse()})
        if (!*r) say("[no constant]");
    if (cat::find_type("int") != cat::type_int()) say("[no int]");
    if (cAttspec::nilspec()->is_default()) say("[a default]");
    objref const copy = map->clone();
    if (!copy->equal(*map)) say("[unequal]");
    cat::errhandler().throw_mask(0);
    objref const number = cat::of(1);
    bool fired = false;
    cObjDR<bool> flag(fired);
    cObjSlot const slot(flag, set_true, number->force_changed_signal());
    number->changed();
    if (!fired || cat::find_type("cSignal") != cat::type_signal()) say("[no signal]");
    number->set_omember("changed", nullptr);
    number->assign(*map);
    if (cObj::is_good(number->call("nowhere"))) say("[a method]");
    std::ostringstream os;
    cObjBase::put_count(os);
    say(std::string("[") + who + "]");
}

class cCurious : public cObjD<int> {
  public:
    explicit cCurious(char const *who) : who_(who) {}
    cCurious(cCurious const &) = delete;
    cCurious &operator=(cCurious const &) = delete;
    ~cCurious() override { look_around(who_); }

  private:
    char const *who_;
};

objref curious(char const *who) { return make<cCurious>(who); }

void setup(cTypeObj &type) {
    type.set_tmember("newobj", make<cExeMember>(+[](objref) { return cat::of(1); }));
}

// Static objects of a program.
cTypeObj &own_type() {
    static typeref const type = make<cTypeObj>("teardown_type", setup);
    return *type;
}
cTypeInsert const inserted(own_type());
objref const held_true = cat::btrue();
objref const held_type = objref::share(&cat::type_vector());
cMapObj map;
cVectorObj const vector;
cSetObj const set;
cIterObj const iterator(map.datamap_ref());
cIterObj const follower(&map, true);
cTypeObj &choice_type() {
    static typeref const type = make<cTypeObj>(&cat::typetype_choice(), "Static", nullptr);
    return *type;
}
cTypeInsert const inserted_choice(choice_type());
cChoiceVal const choice(&choice_type(), true);
cAttr attr = map["a"];
cObjModifier *modifier = nullptr;
cTypeModifier const type_modifier(cat::type_int(), "teardown", cat::of(1));

// Objects that a program destroys after the core is destroyed.
struct cLate {
    objref map;
    objref type;
    objref constant;
    objref dbase;
    hashref hash;
    cIterObj iterator;
    cTypeInsert insert;
    objref choice;   // the last owner of its type
    objref follower; // of the map above, which is destroyed first
    objref object;   // uses the library in its destructor, so that the core is created once more
};
cLate *late = nullptr; // not deleted by the destruction of static objects

// Called after the core is destroyed: registered before the library starts.
void tell_endless();
bool endless();

void after_the_core(void *) {
    if (endless()) tell_endless();
    if (!late) return;
    if (cat::core_state() != cat::cCoreState::none) say("[not gone]");
    delete late;
    look_around("again");
    say(cat::core_state() == cat::cCoreState::ready ? "[ready]" : "[not ready]");
}

void register_last(int, char **, char **) { __cxa_atexit(after_the_core, nullptr, nullptr); }
[[gnu::section(".preinit_array"), gnu::used]] void (*const before_all)(int, char **,
                                                                       char **) = register_last;

void statics() {
    map["a"] = cat::of(1);
    map["b"] = cat::btrue();
    map["self"] = objref::share(&cat::dbase());
    choice_type()["choices"] = objref::share(&map);
    if (choice.key_as_string() != "") say("[a key]"); // the key was undefined
    map.changed();
    modifier = new cObjModifier(attr, cat::of(2));
    delete modifier;
}

// The places where the library stores objects that a program gave it.
void everywhere() {
    cat::dbase()["x"] = curious("dbase");
    cat::gmmap()["x"] = curious("gmmap");
    cat::constmap()["x"] = curious("constmap");
    cat::typemap().datamap().mapitem("x", curious("typemap"));
    cat::type_int().set_tmember("x", curious("tmember"));
    cat::type_string().set_omember("x", curious("type's omember"));
    cat::nil()->set_omember("x", curious("nil's omember"));
    cat::btrue()->set_omember("x", curious("true's omember"));
    cat::dbase().set_omember("x", curious("dbase's omember"));
    cat::gmmap().set_omember("x", curious("gmmap's omember"));
    typeref const type = make<cTypeObj>("curious_type", setup);
    type->set_tmember("x", curious("own type"));
    cat::set_type(*type, true);
    cAttspec::nilspec()->set_omember("x", curious("nilspec"));
}

class cStubborn : public cObjD<int> {
  public:
    explicit cStubborn(int left) : left_(left) {}
    cStubborn(cStubborn const &) = delete;
    cStubborn &operator=(cStubborn const &) = delete;
    ~cStubborn() override {
        say("s");
        if (left_ > 0) cat::dbase()["again"] = make<cStubborn>(left_ - 1);
    }

  private:
    int left_;
};

// Creates this number of new objects in every place where the library stores objects of programs.
class cEndless : public cObjD<int> {
  public:
    explicit cEndless(int copies) : cObjD<int>(copies) {}
    cEndless(cEndless const &) = delete;
    cEndless &operator=(cEndless const &) = delete;
    ~cEndless() override {
        ++destroyed;
        static int keys = 0;
        for (int i = 0; i < val(); ++i) {
            cat::dbase()[++keys] = make<cEndless>(val());
            cat::gmmap()["again"] = make<cEndless>(0);
            cat::constmap()["again"] = make<cEndless>(0);
            cat::type_int().set_tmember("again", make<cEndless>(0));
            cat::type_string().set_omember("again", make<cEndless>(0));
        }
    }
    static inline int destroyed = 0;
};

bool endless() { return cEndless::destroyed > 0; }

// After the tear-down: objects that were not destroyed still exist and can be used.
void tell_endless() {
    say(cEndless::destroyed >= 100 ? "[many]" : "[few]");
    say(cat::dbase().size() > 0 ? "[left]" : "[nothing left]");
    say(cat::core_state() == cat::cCoreState::ready ? "[ready]" : "[not ready]");
}

int child(std::string const &what) {
    if (what == "statics") statics();
    if (what == "everywhere") everywhere();
    if (what == "stubborn") cat::gmmap()["x"] = make<cStubborn>(3);
    if (what == "endless") cat::dbase()["x"] = make<cEndless>(1);
    if (what == "growing") cat::dbase()["x"] = make<cEndless>(3);
    if (what == "endless type") {
        struct cEndlessType : cTypeObj {
            cEndlessType() : cTypeObj("endless", nullptr) {}
            cEndlessType(cEndlessType const &) = delete;
            cEndlessType &operator=(cEndlessType const &) = delete;
            ~cEndlessType() override { cat::set_type(*make<cEndlessType>(), true); }
        };
        cat::set_type(*make<cEndlessType>(), true);
    }
    if (what == "late") {
        objref const late_map = make<cMapObj>();
        late_map->setattr(cat::of(1), make<cVectorObj>());
        late_map->set_omember("m", cat::of(1));
        typeref const type = make<cTypeObj>("late_type", setup);
        hashref const types = cat::typemap().datamap_ref();
        typeref const modes = make<cTypeObj>(&cat::typetype_choice(), "late_choice", nullptr);
        modes->setattr(own_key(std::string("choices")), late_map->clone());
        late = new cLate{late_map,
                         objref::share(&cat::type_int()),
                         cat::btrue(),
                         objref::share(&cat::dbase()),
                         types,
                         cIterObj(types),
                         cTypeInsert(*type),
                         modes->newobj(),
                         make<cIterObj>(late_map.get(), true),
                         curious("late")};
    }
    return 0;
}

int count(std::string const &text, std::string const &part) {
    int n = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++n;
    return n;
}

} // namespace

int main(int argc, char **argv) {
    if (argc > 1) return child(argv[1]);
    for (char const *what : {"statics", "nothing"}) {
        cResult const result = run_self(what);
        CHECK(result.status == 0);
        CHECK_TEXT(result.output, "");
    }
    cResult const everywhere_result = run_self("everywhere");
    CHECK(everywhere_result.status == 0);
    for (char const *who :
         {"dbase", "gmmap", "constmap", "typemap", "tmember", "type's omember", "nil's omember",
          "true's omember", "dbase's omember", "gmmap's omember", "own type", "nilspec"}) {
        if (count(everywhere_result.output, std::string("[") + who + "]") != 1) {
            CHECK_TEXT(who, "told once");
        }
    }
    CHECK(count(everywhere_result.output, "[no") == 0);
    cResult const stubborn = run_self("stubborn");
    CHECK(stubborn.status == 0);
    CHECK_TEXT(stubborn.output, "ssss");
    for (char const *what : {"endless", "growing"}) {
        cResult const result = run_self(what);
        CHECK(result.status == 0);
        CHECK_TEXT(result.output, "[many][left][ready]");
    }
    cResult const endless_type = run_self("endless type");
    CHECK(endless_type.status == 0);
    CHECK_TEXT(endless_type.output, "");
    cResult const late_result = run_self("late");
    CHECK(late_result.status == 0);
    CHECK_TEXT(late_result.output, "[late][again][ready]");
    return failures != 0;
}
