// The bootstrap creates the error channel, sentinels, built-in types, constants and maps, one after
// the other. The tear-down destroys them, in another order. Each step of the bootstrap stores its
// pointers at once, since accessors that later steps call need them: so the order matters.
//
// States:  none -> running -> ready -> tearing -> none. In the states running and tearing,
// accessors do not start the bootstrap. After the tear-down, a late accessor starts it again, which
// also registers another tear-down.
//
// The tear-down has two phases. First, while everything is alive, it releases all that programs
// have added to the library's maps, types and constants: user destructors run here, and may use the
// whole library. What these destructors add is released in the next round. Second, it releases the
// core's own objects; from then on nothing reads the type of an object. Each release only drops the
// core's count: an object that a program still owns stays in memory. The program may release it
// later, but not use it.
//
// If destructors add new objects again and again, the first phase ends at a limit of rounds or
// objects. Then the second phase is omitted, and the core stays, with its contents.

#include "containers/cattspec_nil.h"
#include "containers/cglobals.h"
#include "containers/csetup.h"
#include "containers/csignalobj_types.h"
#include "containers/ctype_cycles.h"
#include "core/cregistry.h"
#include "core/cscalar.h"
#include "core/ctext_hooks.h"
#include "modules/ctype_factory.h"
#include "qrv/base/csignal.h"
#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/csetobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "qrv/diagnostics/ccaughterrors.h"
#include "text/read/ctext_methods.h"
#include "text/state/ctext_state.h"
#include "util/cintf_type.h"

#include <cstdlib>
#include <typeinfo>
#include <utility>
#include <vector>

struct cBootstrap {
    static void run();
    static void tear_down();

  private:
    static void make_error_channel();
    static void make_sentinels();
    static void make_first_types();
    static void finish_first_types();
    static void make_bools();
    static void make_types();
    static void insert_types();
    static void set_text_methods();
    static void note_library_methods();
    static void make_maps();
    static bool is_own(cObj const *value);
    static std::size_t remove_present(cAttrHash &hash);
    static std::size_t clear_maps();
    static std::size_t drop_types();
    static std::size_t drop_members();
    static bool release_all();
    static void destroy_core();
};

namespace {

objref *held(cObj *obj) { return new objref(objref::adopt(obj)); }

objref *held_bool(bool value) {
    objref *const holder = held(new cObjD<bool>(value));
    (*holder)->setflags(of_const);
    return holder;
}

template <class T> void destroy(T *&pointer) { delete std::exchange(pointer, nullptr); }

// Drops the core's own count.
template <class T> void drop(T *&pointer) {
    cRef<T> const last = cRef<T>::adopt(std::exchange(pointer, nullptr));
}

// Limits for destructors that add new objects: the number of rounds, and of objects that are
// removed after the first round. If the destructor of each object adds one other, each needs one
// round.
constexpr int max_rounds = 100;
constexpr std::size_t max_latecomers = 10000;

std::size_t drop_ommap(cObj &obj) {
    if (!obj.has_ommap()) return 0;
    std::size_t const members = obj.ommap().used();
    obj.ommap(hashref()); // RE-ENTERS
    return members + 1;
}

// Whether this is a function or a string: the library itself adds only these to its types.
bool is_plain_member(objref const &value) {
    if (!value || value->has_ommap()) return false;
    cObj const &obj = *value;
    return typeid(obj) == typeid(cExeMember) || typeid(obj) == typeid(cObjD<std::string>);
}

template <class Test> std::size_t remove_entries(cAttrHash &hash, Test is_removed) {
    std::vector<objref> keys;
    for (cAttrNode const *node = hash.first(); node; node = hash.next(node))
        if (is_removed(node->valref())) keys.push_back(node->key());
    for (objref const &key : keys) hash.delitem(key); // RE-ENTERS
    return keys.size();
}

} // namespace

void cBootstrap::make_error_channel() {
    core.sig_error = new cErrorSignal;
    core.errhandler = new cErrHandler(0x90000000U, 0, 0);
    core.sig_error->connect(*core.errhandler);
    core.eros = new cErrStream(0);
}

void cBootstrap::make_sentinels() {
    core.nil = held(new cObj(false));
    core.bad = held(new cObj(false));
    core.badfind = held(new cObj(false));
    core.type_hash = new cAttrHash(nullptr);
}

void cBootstrap::make_first_types() {
    core.string = new cTypeObj("string", cat::setup_string);
    core.niltype = new cTypeObj("niltype");
    core.type = new cTypeObj("type");
    core.exe = new cTypeObj("exe");
    core.exe->setflags(tf_exe);
}

void cBootstrap::finish_first_types() {
    core.string->ctor_internal(core.type, cat::setup_string);
    core.niltype->ctor_internal(core.type, nullptr);
    core.type->ctor_internal(core.type, nullptr); // the chain of types ends here
    core.exe->ctor_internal(core.type, nullptr);
    core.core_ready = true;
    for (objref const *sentinel : {core.nil, core.bad, core.badfind})
        (*sentinel)->set_type(core.niltype);
}

void cBootstrap::make_bools() {
    core.boolean = new cTypeObj("bool", cat::setup_bool);
    core.bfalse = held_bool(false);
    core.btrue = held_bool(true);
}

void cBootstrap::make_types() {
    core.integer = new cTypeObj("int", cat::setup_int);
    core.float_number = new cTypeObj("float", cat::setup_float);
    core.double_number = new cTypeObj("double", cat::setup_double);
    core.map = new cTypeObj("map", cat::setup_map);
    core.set = new cTypeObj("set", cat::setup_set);
    core.vector = new cTypeObj("vector", cat::setup_vector);
    core.iterator = new cTypeObj("iterator", cat::setup_iterator);
    core.choice = new cTypeObj("choice", cat::setup_choice);
    core.attspec = new cTypeObj("attspec", cat::setup_attspec);
    core.attlist = new cTypeObj("attlist", cat::setup_attlist);
}

void cBootstrap::insert_types() {
#define QRV_INSERT(name, accessor, text) cTypeInsert::insert(typeref::share(core.name), true);
    QRV_CORE_TYPES(QRV_INSERT)
#undef QRV_INSERT
    for (cTypeObj *bare : {core.integer, core.float_number, core.double_number, core.string,
                           core.boolean, core.map, core.set, core.vector})
        bare->setflags(tf_bare);
}

void cBootstrap::set_text_methods() {
    std::pair<cTypeObj *, cTextMethods> const scalars[] = {
        {core.integer, text_hooks.integer},
        {core.float_number, text_hooks.float_number},
        {core.double_number, text_hooks.double_number},
        {core.string, text_hooks.string},
        {core.boolean, text_hooks.boolean}};
    for (auto const &[type, text] : scalars)
        type->set_tmember("write", make<cExeMember>(text.write));
    for (auto const &[type, text] : scalars) type->set_tmember("read", make<cExeMember>(text.read));
}

void cBootstrap::note_library_methods() {
    core.string->set_library_methods(cObjClass::string);
    core.integer->set_library_methods(cObjClass::integer);
    core.float_number->set_library_methods(cObjClass::float_number);
    core.double_number->set_library_methods(cObjClass::double_number);
    core.boolean->set_library_methods(cObjClass::boolean);
    for (cTypeObj *type : {core.map, core.set, core.vector})
        type->set_library_methods(cObjClass::map);
    core.map_classes[0] = &typeid(cMapObj);
    core.map_classes[1] = &typeid(cVectorObj);
    core.map_classes[2] = &typeid(cSetObj);
}

void cBootstrap::make_maps() {
    core.typemap = new cMapObj(hashref::share(core.type_hash));
    core.constmap = new cMapObj;
    core.gmmap = new cMapObj;
    core.dbase = new cMapObj;
    core.const_hash = &core.constmap->datamap();
    core.global_hash = &core.gmmap->datamap();
    cAttrHash &dbase = core.dbase->datamap();
    dbase.mapitem("typemap", objref::share(core.typemap));
    dbase.mapitem("constmap", objref::share(core.constmap));
    dbase.mapitem("gmmap", objref::share(core.gmmap));
    cat::fill_gmmap(core.gmmap->datamap());
    cat::fill_constmap(core.constmap->datamap());
}

void cBootstrap::run() {
    core.state = cat::cCoreState::running;
    std::atexit(tear_down);
    cat::install_text();
    core.make_type = cat::make_type;
    core.free_types = cat::free_types;
    make_error_channel();
    make_sentinels();
    make_first_types();
    finish_first_types();
    make_bools();
    make_types();
    insert_types();
    set_text_methods();
    cat::set_scalar_additions();
    core.float_number->set_hash(cat::hash_float, cat::heq_float);
    core.double_number->set_hash(cat::hash_double, cat::heq_double);
    cat::set_scalar_converters();
    note_library_methods();
    make_maps();
    core.state = cat::cCoreState::ready;
}

bool cBootstrap::is_own(cObj const *value) {
#define QRV_SAME(name, accessor, text)                                                             \
    if (value == core.name) return true;
    QRV_CORE_TYPES(QRV_SAME)
#undef QRV_SAME
    return false;
}

// Removes the entries that are in the hash now. Those that destructors add meanwhile stay for the
// next round.
std::size_t cBootstrap::remove_present(cAttrHash &hash) {
    hashref const keep = hashref::share(&hash);
    std::size_t const present = hash.used();
    for (std::size_t i = 0; i < present; ++i)
        if (cAttrNode *const node = hash.first()) hash.remove(node); // RE-ENTERS
    return present;
}

std::size_t cBootstrap::clear_maps() {
    std::size_t removed = 0;
    for (cMapObj *map : {core.dbase, core.constmap, core.gmmap})
        removed += remove_present(map->datamap());
    return removed;
}

std::size_t cBootstrap::drop_types() {
    return remove_entries(*core.type_hash, [](objref const &type) {
        return !is_own(type) && !cat::is_signal_type(type) && !cat::is_intf_type(type);
    });
}

// Removes the members of the core's objects. Functions and strings among the members of types stay,
// so that objects still work.
std::size_t cBootstrap::drop_members() {
    std::size_t removed = 0;
    for (cMapObj *map : {core.typemap, core.dbase, core.constmap, core.gmmap})
        removed += drop_ommap(*map);
    for (objref const *constant : {core.nil, core.bad, core.badfind, core.btrue, core.bfalse})
        removed += drop_ommap(**constant);
#define QRV_DROP(name, accessor, text)                                                             \
    removed += drop_ommap(*core.name);                                                             \
    removed += remove_entries(core.name->tmmap(),                                                  \
                              [](objref const &value) { return !is_plain_member(value); });
    QRV_CORE_TYPES(QRV_DROP)
#undef QRV_DROP
    return removed;
}

// False if new objects are still added.
bool cBootstrap::release_all() {
    std::size_t latecomers = 0;
    for (int round = 0; round < max_rounds && latecomers < max_latecomers; ++round) {
        reset_text_state();
        cat::drop_nilspec();
        cat::drop_attspec_words();
        cat::forget_nil_attr();
        std::size_t removed = clear_maps();
        removed += drop_types();
        removed += drop_members();
        // The objects removed above may be of these types.
        if (removed == 0 && !cat::drop_signal_types() && !cat::drop_intf_type()) return true;
        if (round > 0) latecomers += removed;
    }
    return false;
}

void cBootstrap::destroy_core() {
    core.const_hash = core.global_hash = nullptr;
    drop(core.dbase);
    drop(core.typemap);
    drop(core.constmap);
    drop(core.gmmap);
    core.type_hash->clear();
    drop(core.type_hash);
    for (cTypeObj **type :
         {&core.attlist, &core.attspec, &core.choice, &core.iterator, &core.vector, &core.map,
          &core.set, &core.exe, &core.type, &core.float_number, &core.double_number, &core.boolean,
          &core.integer, &core.niltype, &core.string})
        drop(*type);
    for (objref **constant : {&core.nil, &core.bad, &core.badfind, &core.btrue, &core.bfalse})
        destroy(*constant);
    destroy(core.eros);
    destroy(core.errhandler);
    destroy(core.sig_error);
}

void cBootstrap::tear_down() {
    core.state = cat::cCoreState::tearing;
    if (!release_all()) {
        core.state = cat::cCoreState::ready; // permanently
        return;
    }
    cat::cut_type_cycles();
    core.core_ready = false;
    destroy_core();
    core.state = cat::cCoreState::none;
}

void cat::create_core() { cBootstrap::run(); }
