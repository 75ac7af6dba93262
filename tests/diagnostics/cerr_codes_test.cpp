// The list of errors: each is provoked once, and has the code and the beginning that the list says.

#include "diagnostics/cerr_codes.h"

#include "qrv/containers/cattr.h"
#include "qrv/containers/cattspec.h"
#include "qrv/containers/cmapobj.h"
#include "qrv/containers/cvectorobj.h"
#include "qrv/core/ceros.h"
#include "qrv/core/cexe.h"
#include "qrv/core/cmodifier.h"
#include "qrv/core/cobjd.h"
#include "qrv/core/ctypes.h"
#include "qrv/text/read/cattrscan.h"
#include "qrv/text/read/creadreport.h"
#include "qrv/text/write/cexacttext.h"
#include "qrv/text/write/cwriter.h"
#include "tests/support/fixture.h"
#include "tests/support/types.h"

#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace {

using cErrors = std::vector<cErrorLog::cEntry>;

// All that is raised, reported by a scanner or thrown during `act`; without place and path.
cErrors errors_of(std::function<void()> const &act) {
    cErrorLog log;
    cat::ReadReport report;
    cErrors all;
    try {
        act();
    } catch (cErr const &error) {
        all.push_back({error.code(), error.as_string()});
    }
    for (cat::ReadError const &error : report.entries()) all.push_back({error.code, error.text});
    all.insert(all.end(), log.entries().begin(), log.entries().end());
    return all;
}

// Is `text` in the message, right after the head?
bool begins_with(std::string const &message, cErrHead head, std::string const &text) {
    char const *const begin = head == cErrHead::object      ? "Attr value, type '"
                              : head == cErrHead::attribute ? "Setattr in object type '"
                                                            : "";
    bool const has_head = *begin != 0;
    if (!has_head) return message.starts_with(text);
    return message.starts_with(begin) && message.find("': " + text) != std::string::npos;
}

bool is_among(cErrors const &errors, cErrText const &wanted) {
    for (cErrorLog::cEntry const &error : errors)
        if (error.code == wanted.code && begins_with(error.text, wanted.head, wanted.text))
            return true;
    return false;
}

objref key(char const *text) { return own_key(std::string(text)); }

objref read(std::string const &text) {
    std::istringstream is(text);
    cAttrScan scan(is, false);
    objref value;
    scan.scan_obj(value, nullptr);
    return value;
}

void read_container(std::string const &text) {
    std::istringstream is(text);
    objref value;
    cat::scan_container(is, value, false);
}

void set_by_path(std::string const &text) { read("{a= {}; n= 1; }")->setattrp(text, false); }

specref spec_with(objref const &value, int flags) {
    return specref::adopt(new cAttspec(value, flags));
}

// A map whose attribute "a" has this specification.
cRef<cMapObj> specified(specref const &spec) {
    cRef<cMapObj> const map = make<cMapObj>();
    map->set_attspec(key("a"), spec);
    return map;
}

// An object `o` of a type that requires `n` and doesn't mind `m`.
objref declared() {
    return read("{ECRec= attlist(n= attspec(flag= #REQUIRED); m= attspec(flag= #IMPLIED)); "
                "o= ECRec(n= 1); }")
        ->getattr(key("o"));
}

cTypeObj &add_type(char const *name, cFunction1 newobj, bool readable = true) {
    typeref const type = make<cTypeObj>(name);
    cTypeInsert::insert(type, false);
    if (newobj) type->set_tmember("newobj", make<cExeMember>(newobj));
    type->set_tmember("read", readable ? make<cExeMember>(cat::scan_attrset) : objref());
    return *type;
}

objref new_bad(objref) { return cat::bad(); }
objref new_throwing(objref) { throw std::runtime_error("no"); }
objref new_const_int(objref) {
    objref const number = cat::of(1);
    number->setflags(of_const);
    return number;
}
bool procedure_1(cObj &) { return true; }
objref no_args() { return cat::nil(); }

cRef<cMapObj> chain(int levels) {
    cRef<cMapObj> level = make<cMapObj>();
    for (int i = 0; i < levels; ++i) {
        cRef<cMapObj> const outer = make<cMapObj>();
        outer->datamap().mapitem("k", level);
        level = outer;
    }
    return level;
}

void set_spec(char const *name, objref const &value) {
    specref const spec = spec_with(cat::of(1), asf_implied);
    spec->setattr(key(name), value);
}

void assign_over_a_locked_node() {
    cRef<cMapObj> const map = make<cMapObj>();
    map->datamap().mapitem("k", cat::of(1));
    cAttrNode *const node = map->datamap().find("k");
    node->cObjBase::flags(2);
    *node = cat::of("text");
}

void assign_what_fails() {
    objref const target = declared();
    objref const source = target->clone(false);
    source->setattr(key("m"), cat::of("text"));
    target->setattr(key("m"), make<cMapObj>()); // takes no text
    target->assign(*source);
}

void merge_without_end() {
    std::string text = "{ m = { v = [1; 2] };\n";
    for (int i = 0; i < 60; ++i) text += "m = { v = #cRef(/m/v) };\n";
    read(text + "}");
}

void nest_too_deep() {
    int const before = std::exchange(cat::max_read_depth, 2);
    read("[[[1]]]");
    cat::max_read_depth = before;
}

class ErrorCodes : public QrvTest {
  private:
    cTypesBack types_;
};

// By its name in the list: what raises an error.
std::map<std::string, std::function<void()>> const acts = {
    {"err_type_name_taken", [] { cTypeInsert::insert(make<cTypeObj>("int"), true); }},
    {"err_file_not_opened",
     [] {
         std::ifstream is;
         cAttrScan(is, false).openfile("/no such file", false);
     }},
    {"err_attspec_entry", [] { read("attspec(type= nosuch)"); }},
    {"err_read_not_valid", [] { read("{ECRec= attlist(n= attspec(flag= #REQUIRED)); o= ECRec(x= 1); }"); }},
    {"err_compared_too_deep", [] { chain(60000)->equal(*chain(60000)); }},
    {"err_not_writable",
     [] {
         cat::ExactText const exact;
         cat::as_text(cat::of(std::numeric_limits<double>::infinity()));
     }},
    {"err_setattr",
     [] {
         eros_setattr(*cat::of(1), key("k"));
         raise_eros();
     }},
    {"err_cycle",
     [] {
         objref const inner = make<cMapObj>(), outer = make<cMapObj>();
         outer->setattr(key("inner"), inner);
         inner->setattr(key("outer"), outer);
     }},
    {"err_const_keys",
     [] {
         objref const map = make<cMapObj>();
         map->setflags(of_const_keys);
         map->setattr(key("k"), cat::of(1));
     }},
    {"err_key_not_int", [] { make<cVectorObj>()->setattr(key("k"), cat::of(1)); }},
    {"err_key_out_of_range", [] { make<cVectorObj>()->setattr(cat::of(7), cat::of(1)); }},
    {"err_insertion", [] { cAttr(cat::of(1), key("k")) << cat::of(1); }},
    {"err_attspec_type", [] { set_spec("flag", cat::of(1)); }},
    {"err_attspec_unknown", [] { set_spec("type", cat::of("nosuch")); }},
    {"err_attspec_attribute", [] { set_spec("other", cat::bad()); }},
    {"err_required",
     [] {
         specref const spec = specref::adopt(new cAttspec(asf_required, nullptr));
         (void)specified(spec)->getattr(key("a"));
     }},
    {"err_fixed_ref",
     [] {
         cRef<cMapObj> const map = specified(spec_with(cat::of(9), asf_fixref));
         map->setattr(key("a"), cat::of(1));
         map->setattr(key("a"), cat::of(2));
     }},
    {"err_fixed_type",
     [] { specified(spec_with(cat::of(9), asf_fixtype))->setattr(key("a"), cat::of("text")); }},
    {"err_node_type", assign_over_a_locked_node},
    {"err_assign_other_type", [] { declared()->assign(*make<cMapObj>()); }},
    {"err_assign_not_valid",
     [] {
         objref const object = declared();
         object->assign(*object->type().newobj());
     }},
    {"err_assign_failed", assign_what_fails},
    {"err_object_const", [] { new_const_int(nullptr)->assign(*cat::of(2)); }},
    {"err_no_converter", [] { cat::of(1)->assign(*make<cMapObj>()); }},
    {"err_bad_prototype", [] { (void)make<cExeMember>(procedure_1)->oexecute(); }},
    {"err_bad_call", [] { (void)cat::of(1)->call("nosuch"); }},
    {"err_arg_count", [] { (void)cat::of(1)->call("create", cat::of(1)); }},
    {"err_bad_global_call", [] { (void)cat::call("nosuch"); }},
    {"err_global_arg_count", [] { (void)cat::call("new"); }},
    {"err_not_own_member", [] { cat::of(1)->set_omember("k", make<cExeGlobal>(no_args)); }},
    {"err_missing_method",
     [] {
         cTypeObj type("ECBare");
         cMapObj(&type, true).assign(*cat::of(1));
     }},
    {"err_missing_less", [] { make<cMapObj>()->less(*make<cMapObj>()); }},
    {"err_not_type_member",
     [] {
         cTypeObj type("ECGlobal");
         type.set_tmember("create", make<cExeGlobal>(procedure_1));
     }},
    {"err_method_prototype",
     [] {
         cTypeObj type("ECWrong");
         type.set_tmember("assign", make<cExeMember>(procedure_1));
     }},
    {"err_read_equals", [] { read("= 1"); }},
    {"err_read_key_scalar", [] { read("{ 99999999999 = 1 }"); }},
    {"err_read_scalar", [] { read("99999999999"); }},
    {"err_read_too_deep", nest_too_deep},
    {"err_read_container", [] { read("["); }},
    {"err_read_unclosed_type", [] { read("int(5"); }},
    {"err_read_key", [] { read("{ int(x y) = 1 }"); }},
    {"err_read_value", [] { read("int(x)"); }},
    {"err_read_assign",
     [] {
         add_type("ECConst", new_const_int);
         read("ECConst(5)");
     }},
    {"err_read_convert", [] { read("int([1])"); }},
    {"err_read_key_type", [] { read("{ [1] = 2 }"); }},
    {"err_read_no_key", [] { read("{ 5 }"); }},
    {"err_read_no_value", [] { read("{ a = }"); }},
    {"err_read_unclosed_map", [] { read("{ a = 1"); }},
    {"err_read_unclosed_vector", [] { read("[ 1"); }},
    {"err_read_unclosed_set", [] { read("< 1"); }},
    {"err_read_too_much", merge_without_end},
    {"err_read_no_container", [] { read_container("a = nosuch(1)"); }},
    {"err_read_no_start", [] { read_container("5"); }},
    {"err_path_slash", [] { set_by_path("a/ /b = 1"); }},
    {"err_path_no_key", [] { set_by_path("= 1"); }},
    {"err_path_no_operator", [] { set_by_path("a"); }},
    {"err_path_no_separator", [] { set_by_path("a b = 1"); }},
    {"err_path_absent", [] { set_by_path("x/y = 1"); }},
    {"err_path_operator", [] { set_by_path("x << 1"); }},
    {"err_read_token", [] { read("? 1"); }},
    {"err_read_bad_ident", [] { read("12x"); }},
    {"err_read_no_delimiter", [] { read("{ a = 5 b = 1 }"); }},
    {"err_read_word_end", [] { read("{ a = x y = 1 }"); }},
    {"err_read_ref_bracket", [] { read("{ a = #cRef; }"); }},
    {"err_read_ref", [] { read("{ a = #cRef(/b); }"); }},
    {"err_read_ref_path", [] { read("{ a = nosuch(1); b = #cRef(/a); }"); }},
    {"err_read_constant", [] { read("#nosuch"); }},
    {"err_read_key_unknown", [] { read("{ nosuch(1) = 2 }"); }},
    {"err_read_value_unknown", [] { read("nosuch(1)"); }},
    {"err_read_no_newobj",
     [] {
         add_type("ECNoNew", nullptr);
         read("ECNoNew(1)");
     }},
    {"err_read_no_read",
     [] {
         add_type("ECNoRead", new_bad, false);
         read("ECNoRead(1)");
     }},
    {"err_read_bad_newobj",
     [] {
         add_type("ECBadNew", new_bad);
         read("ECBadNew(1)");
     }},
    {"err_read_type_name", [] { read("{int= attlist(); }"); }},
    {"err_read_separator", [] { read(";; 1"); }},
    {"err_read_exception",
     [] {
         add_type("ECThrows", new_throwing);
         read("ECThrows(1)");
     }},
};

std::vector<std::pair<std::string, cErrText>> const errors = {
#define QRV_ERROR_ENTRY(name, code, head, text) {#name, name},
    QRV_ERRORS(QRV_ERROR_ENTRY)
#undef QRV_ERROR_ENTRY
};

TEST_F(ErrorCodes, each_error_is_raised_with_its_code_and_the_beginning_of_its_text) {
    for (auto const &[name, error] : errors) {
        auto const act = acts.find(name);
        ASSERT_NE(act, acts.end()) << name << ": nothing here raises it";
        cErrors const found = errors_of(act->second);
        EXPECT_TRUE(is_among(found, error))
            << name << "; raised first: " << (found.empty() ? "nothing" : found.front().text);
    }
    EXPECT_EQ(acts.size(), errors.size());
}

TEST_F(ErrorCodes, no_two_errors_begin_alike) {
    std::set<std::tuple<unsigned int, cErrHead, std::string>> seen;
    for (auto const &[name, error] : errors)
        EXPECT_TRUE(seen.emplace(error.code, error.head, error.text).second) << name;
}

} // namespace
