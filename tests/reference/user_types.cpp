#include "tests/reference/user_types.h"

#include "qrv/containers/csignalobj.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/scan/cattrscanner.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tests/reference/transcript.h"
#include "tests/reference/world.h"

#include <algorithm>
#include <array>
#include <optional>
#include <sstream>

namespace reference {

namespace {
std::string text_of(cObj const &value) {
    auto const *const probe = dynamic_cast<cProbe const *>(&value);
    return probe ? probe->text : "";
}

std::istream *input_of(objref const &args) {
    auto const *const holder = dynamic_cast<cInHolder const *>(args.get());
    return holder ? holder->valptr() : nullptr;
}
std::ostream *output_of(objref const &args) {
    auto const *const holder = dynamic_cast<cOutHolder const *>(args.get());
    return holder ? holder->valptr() : nullptr;
}
} // namespace

// --- the classes ---

cProbe::cProbe(cTypeObj *type, std::string t)
    : cObj(type), serial(++world().serial), text(std::move(t)) {}

cProbe::~cProbe() {
    std::string line = "end of " + label(this);
    if (cAttrHash const *const hash = world().watched) {
        // act() must do nothing, since a destructor must not throw.
        cSetTmp<bool> const keep(world().calm, true);
        line += " hash used " + std::to_string(hash->used()) + " slots " +
                std::to_string(hash->slots()) + " vector " + std::to_string(hash->is_vector()) +
                " after " + std::to_string(hash->after_last_index()) + " ring";
        for (cAttrNode const *node = hash->first(); node; node = hash->next(node))
            line += " " + label(node->key());
        line += " finds " + label(hash->getitem("a")) + " " + label(hash->getitem(cat::of(1)));
    }
    say(line);
}

cBag::cBag(cTypeObj *type) : cMapObj(type, false), serial(++world().serial) {
    world().bags.push_back(this);
}

cBag::~cBag() {
    say("end of " + label(this));
    std::erase(world().bags, this);
}

namespace {
// --- methods ---

objref new_value(cTypeObj *type) {
    std::string const &name = type->name();
    if (name == "Bag" || name == "Hoard") return make<cBag>(type);
    if (name == "Loud") {
        objref const map = make<cBag>(&cat::type_map());
        watch_changes(*map);
        return map;
    }
    if (name == "Text") return objref::adopt(new cObjD<std::string>("", type));
    if (name == "Num" || name == "NumKey") return objref::adopt(new cObjD<int>(0, type));
    return make<cProbe>(type, "");
}

objref user_newobj(objref type) {
    auto *const of = dynamic_cast<cTypeObj *>(type.get());
    say("newobj " + of->name());
    act();
    if (of->name() == "Sour") switch (world().user.below(4)) {
        case 0:
            return cat::bad();
        case 1:
            return nullptr;
        case 2:
            return cat::nil();
        default:
            break;
        }
    objref made = new_value(of);
    say("  made " + label(made));
    if (!world().calm && world().user.one_in(12)) give_own_method(*made);
    if (!world().calm && world().user.one_in(16)) watch_changes(*made);
    if (world().user.one_in(6) && world().written.size() < 30) world().written.push_back(made);
    return made;
}

// The result of a method: `good`, or now and then its opposite. May run an action first.
bool decide(bool good) {
    act();
    bool const result = world().calm || !world().user.one_in(14) ? good : !good;
    if (result != good) say(result ? "  is true" : "  is false");
    return result;
}

bool user_assign(cObj &obj, objref &source) {
    say("assign " + label(&obj) + " from " + label(source));
    if (auto *const to = dynamic_cast<cProbe *>(&obj)) {
        auto const *const from = dynamic_cast<cProbe *>(source.get());
        to->text = from ? from->text : "?" + label(source);
        if (from) to->held = from->held;
    }
    return decide(true);
}

bool user_add(cObj &obj, objref &source) {
    say("add " + label(&obj) + " and " + label(source));
    if (auto *const to = dynamic_cast<cProbe *>(&obj)) to->text += "+" + label(source);
    return decide(true);
}

bool user_create(cObj &obj) {
    say("create " + label(&obj));
    return decide(true);
}

bool user_setattr(cObj &obj, objref &key, objref &value) {
    say("setattr " + label(&obj) + " " + label(key) + " = " + label(value));
    act();
    return dynamic_cast<cMapObj *>(&obj) ? cTomMap::setattr(obj, key, value) : decide(true);
}

objref user_getattr(objref obj, objref key) {
    say("getattr " + label(obj) + " " + label(key));
    act();
    if (dynamic_cast<cMapObj *>(obj.get())) return cTomMap::getattr(obj, key);
    auto const *const probe = dynamic_cast<cProbe *>(obj.get());
    return probe && probe->held ? probe->held : cat::badfind();
}

bool user_equal(cObj &obj, objref &other) {
    say("equal " + label(&obj) + " and " + label(other));
    return decide(text_of(obj) == text_of(*other));
}

bool user_less(cObj &obj, objref &other) {
    say("less " + label(&obj) + " and " + label(other));
    return decide(text_of(obj) < text_of(*other));
}

unsigned user_hash(objref const &key) {
    say("hash " + label(key));
    act();
    return key && !text_of(*key).empty() ? static_cast<unsigned char>(text_of(*key)[0]) % 3 : 7;
}

bool user_heq(objref const &a, objref const &b) {
    say("heq " + label(a) + " and " + label(b));
    act();
    return &a->type() == &b->type() && text_of(*a) == text_of(*b);
}

unsigned logged_hash_int(objref const &key) {
    say("hash " + label(key));
    act();
    return cat::hash_int(key);
}

// --- text ---

void say_state(std::istream &is) {
    std::istream::iostate const state = is.rdstate();
    say("  stream at " + std::to_string(static_cast<long>(is.tellg())) + " state " +
        std::to_string(static_cast<int>(state)));
    is.clear(state);
}

std::string some_characters(std::istream &is, int count) {
    std::string text;
    for (int c; count-- > 0 && (c = is.get()) != EOF;) text.push_back(static_cast<char>(c));
    return text;
}

void scan_inside(cObj &obj, std::istream &is) {
    cAttrScan scan(is, false);
    objref value;
    int delim = -99;
    int const code = scan.scan_obj(value, &delim);
    say("  scan " + std::to_string(code) + " delim " + std::to_string(delim) + " " + label(value) +
        " at " + std::to_string(scan.position()) + " " + std::to_string(scan.lineno()) + ":" +
        std::to_string(scan.column()) + " errors " + std::to_string(scan.errcount()));
    auto *const probe = dynamic_cast<cProbe *>(&obj);
    if (probe && code == 0) probe->held = value;
}

void tokens_inside(std::istream &is) {
    cAttrScan scan(is, false);
    std::string line = "  tokens";
    for (int i = 0; i < 4; ++i) {
        cAttrLiteral token;
        if (scan.gettok(token) == 0) break;
        line += " " + std::to_string(token.code) + "'" + shown(token.text) + "'" +
                std::to_string(token.outer_line) + ":" + std::to_string(token.outer_column);
        if (world().user.one_in(5)) scan.ungettoken();
    }
    say(line);
}

bool user_read(cObj &obj, objref &args) {
    say("read " + label(&obj));
    std::istream *const is = input_of(args);
    if (!is) return false;
    auto *const probe = dynamic_cast<cProbe *>(&obj);
    unsigned const way = world().user.below(14);
    switch (way) {
    case 0:
        scan_inside(obj, *is);
        scan_inside(obj, *is);
        break;
    case 1: {
        objref value;
        int const code = cat::scan_container(*is, value, world().user.one_in(2));
        say("  container " + std::to_string(code) + " " + label(value));
        if (probe && value) probe->held = value;
        break;
    }
    case 2:
        return cat::scan_attrset(obj, args);
    case 3:
        return probe ? cat::scan_attrset(obj, args) : cat::scan_attrcopy(obj, args);
    case 4:
        say_state(*is);
        say("  begins '" + shown(some_characters(*is, 3)) + "'");
        say_state(*is);
        scan_inside(obj, *is);
        break;
    case 5:
        tokens_inside(*is);
        break;
    case 6:
        say_state(*is);
        if (probe) {
            std::ostringstream all;
            all << is->rdbuf();
            probe->text = all.str();
            say("  all '" + shown(probe->text) + "'");
        }
        break;
    case 7: {
        cAttrScan scan(*is, false);
        scan.gettok();
        scan.errp(cAttrScan::asrToken) << "user code dislikes it";
        scan.fire();
        break;
    }
    default: // a value, whose label becomes the text; scalars are mostly released again
        scan_inside(obj, *is);
        if (probe) {
            probe->text = label(probe->held);
            if (probe->held && !dynamic_cast<cMapObj *>(probe->held.get()) && way < 12)
                probe->held = nullptr;
        }
        break;
    }
    say_state(*is);
    return decide(true);
}

std::string text_so_far(std::ostream &os) {
    auto const *const text = dynamic_cast<std::ostringstream *>(&os);
    if (!text) return "";
    std::string const all = text->str();
    return std::to_string(all.size()) + " '" +
           shown(all.substr(all.size() - std::min<size_t>(all.size(), 12))) + "'";
}

// `write` of a value may remove an entry of a map that is being written; `write` of a key may not.
void remove_while_writing() {
    auto const &bags = world().bags;
    if (bags.empty() || world().writing_keys) return;
    objref const bag = objref::share(world().user.pick(bags));
    auto &hash = static_cast<cMapObj &>(*bag).datamap();
    cAttrNode const *const node = hash.findpos(world().user.below(hash.used() + 1));
    if (!node) return;
    objref const key = node->key();
    say("  removes " + label(key) + " of " + label(bag));
    hash.delitem(key);
}

bool user_write(cObj &obj, objref &args) {
    cSetTmp<int> const key(world().writing_keys,
                           world().writing_keys + (obj.type().is_keytype() ? 1 : 0));
    std::ostream *const os = output_of(args);
    cWriting const writing;
    say("write " + label(&obj) + (os ? " after " + text_so_far(*os) : " nowhere") +
        (cat::ExactText::active() ? " exact" : ""));
    if (!os) return false;
    say("  flags " + std::to_string(os->flags()) + " precision " + std::to_string(os->precision()) +
        " width " + std::to_string(os->width()) + " tellp " +
        std::to_string(static_cast<long>(os->tellp())));
    auto const *const probe = dynamic_cast<cProbe *>(&obj);
    bool const plain = world().calm || world().writing > 4 || ++world().acts > max_acts;
    switch (plain ? 20 : world().user.below(16)) {
    case 0:
        *os << "plain text" << std::flush;
        break;
    case 1:
        if (!world().written.empty()) world().user.pick(world().written)->writeobj(*os);
        break;
    case 2:
        *os << "{a= 1; ";
        act();
        *os << "}";
        break;
    case 3:
        *os << 1.5 << ' ' << std::hex << 255;
        break;
    case 4:
        os->setstate(std::ios::failbit);
        break;
    case 5: {
        cat::ExactText const exact;
        *os << cat::as_text(cat::of(0.1)) << ' ' << exact.failed();
        break;
    }
    case 7:
        remove_while_writing();
        *os << "removed";
        break;
    case 6:
        if (!world().bags.empty())
            world().user.pick(world().bags)->datamap().write_hash(*os, "sc", nullptr);
        break;
    default:
        if (probe && probe->held)
            probe->held->writeobj(*os);
        else if (auto const *const number = dynamic_cast<cObjDR<int> const *>(&obj))
            *os << number->val();
        else
            *os << cat::as_text(cat::of(text_of(obj)));
        break;
    }
    return decide(true);
}

bool from_any(cObj &obj, objref &source) {
    say("convert to " + label(&obj) + " from " + label(source));
    if (auto *const probe = dynamic_cast<cProbe *>(&obj)) probe->text = "from " + label(source);
    return decide(true);
}

// --- the types ---

void member(cTypeObj &type, char const *name, auto function) {
    type.set_tmember(name, make<cExeMember>(function));
}

void all_methods(cTypeObj &type) {
    member(type, "newobj", cFunction1(user_newobj));
    member(type, "assign", cProcedure2(user_assign));
    member(type, "add", cProcedure2(user_add));
    member(type, "read", cProcedure2(user_read));
    member(type, "write", cProcedure2(user_write));
    member(type, "equal", cProcedure2(user_equal));
    member(type, "less", cProcedure2(user_less));
    member(type, "getattr", cFunction2(user_getattr));
}

void set_up_key(cTypeObj &type) {
    all_methods(type);
    type.set_hash(user_hash, user_heq);
}
void set_up_conv(cTypeObj &type) {
    all_methods(type);
    member(type, "create", cProcedure1(user_create));
    for (cTypeObj *const from : {&cat::type_int(), &cat::type_string(), &cat::type_map()})
        type.set_converter(*from, from_any);
}
void set_up_bare(cTypeObj &type) {
    all_methods(type);
    type.setflags(tf_bare);
}
void set_up_bag(cTypeObj &type) {
    type.inherit(cat::type_map());
    member(type, "newobj", cFunction1(user_newobj));
    member(type, "setattr", cProcedure3(user_setattr));
    type.setflags(tf_container);
}
void set_up_hoard(cTypeObj &type) {
    type.inherit(cat::type_map());
    member(type, "newobj", cFunction1(user_newobj));
    member(type, "read", cProcedure2(user_read));
    member(type, "getattr", cFunction2(user_getattr));
}
void set_up_loud(cTypeObj &type) {
    type.inherit(cat::type_map());
    member(type, "newobj", cFunction1(user_newobj));
}
void set_up_text(cTypeObj &type) {
    type.inherit(cat::type_string());
    member(type, "newobj", cFunction1(user_newobj));
    type.set_hash(cat::hash_string, cat::heq_string);
}
void set_up_num(cTypeObj &type) {
    type.inherit(cat::type_int());
    type.inherit_converters(cat::type_int());
    member(type, "newobj", cFunction1(user_newobj));
    member(type, "write", cProcedure2(user_write));
}
void set_up_num_key(cTypeObj &type) {
    type.inherit(cat::type_int());
    member(type, "newobj", cFunction1(user_newobj));
    type.set_hash(logged_hash_int, cat::heq_int);
}

struct cUserType {
    char const *name;
    cTypeObj::setup_function set_up;
};
constexpr std::array user_types{cUserType{"Box", all_methods},      cUserType{"Key", set_up_key},
                                cUserType{"Conv", set_up_conv},     cUserType{"Bare", set_up_bare},
                                cUserType{"Sour", all_methods},     cUserType{"Bag", set_up_bag},
                                cUserType{"Hoard", set_up_hoard},   cUserType{"Loud", set_up_loud},
                                cUserType{"Text", set_up_text},     cUserType{"Num", set_up_num},
                                cUserType{"NumKey", set_up_num_key}};

std::vector<char const *> names_of_types() {
    std::vector<char const *> names;
    for (cUserType const &type : user_types) names.push_back(type.name);
    return names;
}

} // namespace

std::vector<char const *> const user_type_names = names_of_types();

void make_user_types() {
    for (cUserType const &type : user_types)
        cTypeInsert::insert(make<cTypeObj>(type.name, type.set_up), true);
}

cTypeObj &user_type(std::string const &name) { return cat::find_type(name); }

objref new_user_value(std::string const &name, std::string const &text) {
    objref value = new_value(&user_type(name));
    if (auto *const probe = dynamic_cast<cProbe *>(value.get())) probe->text = text;
    if (auto *const holder = dynamic_cast<cObjDR<std::string> *>(value.get())) holder->val() = text;
    if (auto *const holder = dynamic_cast<cObjDR<int> *>(value.get()))
        holder->val() = static_cast<int>(text.size());
    return value;
}

// --- members of single objects ---

namespace {
bool say_changed(cObj &value) {
    say("changed " + label(&value));
    act();
    return true;
}

template <method_id id> bool logged(cObj &obj, objref &arg) {
    say("own " + cTypeObj::name_of(id) + " of " + label(&obj) + " with " + label(arg));
    act();
    auto const method = reinterpret_cast<cProcedure2>(obj.type().method(id));
    return method && !world().user.one_in(4) ? method(obj, arg) : decide(true);
}
} // namespace

void watch_changes(cObj &value) {
    cSignal &changed = value.force_changed_signal();
    objref const slot = make<cObjSlot>(value, say_changed, changed);
    value.set_omember("slot", slot);
}

void give_own_method(cObj &value) {
    switch (world().user.below(3)) {
    case 0:
        value.set_omember("write", make<cExeMember>(cProcedure2(logged<mid_write>)));
        break;
    case 1:
        value.set_omember("assign", make<cExeMember>(cProcedure2(logged<mid_assign>)));
        break;
    default:
        value.set_omember("add", make<cExeMember>(cProcedure2(logged<mid_add>)));
        break;
    }
}

} // namespace reference
